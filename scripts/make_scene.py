#!/usr/bin/env python3
"""Makes a scene of one wavy surface with normals and a UV map, for measurements.

    make_scene.py TRIANGLES OUTPUT.orvo [--quads] [--obj] [--amplitude A]

writes OUTPUT.orvo with OUTPUT.bin beside it, and with --obj OUTPUT.obj, the same surface as text. The same arguments give
the same bytes."""

import argparse
import json
import math
import sys
from array import array
from pathlib import Path


def surface(cells, columns, amplitude):
    """Points, normals and UVs of a grid of that many cells, row by row."""
    rows = -(-cells // columns)
    points, normals, uvs = array("f"), array("f"), array("f")
    waves = 6 * math.pi
    across = [(x / columns, math.sin(waves * x / columns), math.cos(waves * x / columns)) for x in range(columns + 1)]
    for y in range(rows + 1):
        v = y / rows
        sin_v, cos_v = math.sin(waves * v), math.cos(waves * v)
        for u, sin_u, cos_u in across:
            dx, dz = amplitude * waves * cos_u * sin_v, amplitude * waves * sin_u * cos_v
            length = math.sqrt(dx * dx + dz * dz + 1)
            points.extend((u, amplitude * sin_u * sin_v, v))
            normals.extend((-dx / length, 1 / length, -dz / length))
            uvs.extend((u, 1 - v))
    return points, normals, uvs


def corners(triangles, columns, quads):
    """Point indices of the polygons, counter-clockwise as seen from above."""
    indices = array("I")
    for cell in range(-(-triangles // 2)):
        first = cell // columns * (columns + 1) + cell % columns
        below = first + columns + 1
        if quads:
            indices.extend((first, below, below + 1, first + 1))
        elif 2 * cell + 1 < triangles:
            indices.extend((first, below, below + 1, first, below + 1, first + 1))
        else:
            indices.extend((first, below, below + 1))
    return indices


def write_binary(path, arrays):
    """Writes the arrays one after the other and returns how the scene refers to each."""
    references, offset = [], 0
    with open(path, "wb") as file:
        for values in arrays:
            if sys.byteorder != "little":
                values.byteswap()
            values.tofile(file)
            references.append({"file": path.name, "offset": offset, "count": len(values)})
            offset += len(values) * values.itemsize
    return references


def write_obj(path, points, normals, uvs, indices, sides):
    def lines(keyword, values, size):
        for i in range(0, len(values), size):
            yield keyword + "".join(f" {value:.6f}" for value in values[i:i + size]) + "\n"

    with open(path, "w", encoding="ascii") as file:
        file.write("o Surface\n")
        for keyword, values, size in (("v", points, 3), ("vt", uvs, 2), ("vn", normals, 3)):
            file.writelines(lines(keyword, values, size))
        file.write("usemtl Default\n")
        for i in range(0, len(indices), sides):
            file.write("f" + "".join(f" {p + 1}/{p + 1}/{p + 1}" for p in indices[i:i + sides]) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("triangles", type=int)
    parser.add_argument("output", type=Path)
    parser.add_argument("--quads", action="store_true", help="polygons of four corners, two triangles each")
    parser.add_argument("--obj", action="store_true", help="write the surface as .obj too")
    parser.add_argument("--amplitude", type=float, default=0.02, help="height of the waves, of a surface one metre wide")
    arguments = parser.parse_args()
    if arguments.triangles < 1:
        parser.error("TRIANGLES must be above 0")

    cells = -(-arguments.triangles // 2)
    columns = max(1, math.isqrt(cells))
    points, normals, uvs = surface(cells, columns, arguments.amplitude)
    indices = corners(arguments.triangles, columns, arguments.quads)
    sides = 4 if arguments.quads else 3
    if arguments.obj:
        write_obj(arguments.output.with_suffix(".obj"), points, normals, uvs, indices, sides)
    at_points, at_normals, at_uvs, at_indices = write_binary(
        arguments.output.with_suffix(".bin"), (points, normals, uvs, indices))
    mesh = {
        "points": at_points,
        "polygons": {"points": at_indices, "sides": sides},
        "material": "Default",
        "maps": [
            {"type": "NORM", "values": at_normals, "corners": at_indices},
            {"type": "TXUV", "values": at_uvs, "corners": at_indices},
        ],
    }
    scene = {"orvo": 1, "items": [{"type": "mesh", "name": "Surface", "mesh": mesh}]}
    arguments.output.write_text(json.dumps(scene, indent=2) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
