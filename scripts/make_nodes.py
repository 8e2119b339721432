#!/usr/bin/env python3
"""Makes a scene of many nodes, for measurements.

    make_nodes.py NODES OUTPUT.orvo [--depth D] [--materials M]

Chains of D nodes, each below the one before it, moved, turned, and with a box of its own in one of M materials. The same
arguments give the same bytes."""

import argparse
import json
from pathlib import Path


def node(index, depth, materials):
    made = {
        "name": f"Node{index}",
        "position": [0.5 + index % 7, 0.25, index % 5 * 0.125],
        "rotation": [index % 11, index % 13, 0],
        "mesh": {"box": [1, 0.5 + index % 3, 1], "material": f"Material{index % materials}"},
    }
    if index % depth != 0:
        made["parent"] = f"Node{index - 1}"
    return made


def mask(index):
    shader = {
        "type": "glTFShader", "name": f"Shader{index}",
        "channels": {"baseColor": [index % 10 / 10, index % 100 / 100, 0.5], "metallic": 0.25, "roughness": 0.75},
    }
    return {
        "type": "mask", "name": f"Mask{index}",
        "channels": {"ptag": f"Material{index}", "ptyp": "Material"}, "children": [shader],
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("nodes", type=int)
    parser.add_argument("output", type=Path)
    parser.add_argument("--depth", type=int, default=1000)
    parser.add_argument("--materials", type=int, default=10_000)
    arguments = parser.parse_args()
    if min(arguments.nodes, arguments.depth, arguments.materials) < 1:
        parser.error("all numbers must be above 0")

    items = [node(index, arguments.depth, arguments.materials) for index in range(arguments.nodes)]
    items.append({"type": "polyRender", "name": "Render", "children": [mask(m) for m in range(arguments.materials)]})
    arguments.output.write_text(json.dumps({"orvo": 1, "items": items}) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
