#!/usr/bin/env python3
"""Writes mechanism.orvo: one wheel swings to and fro, and channel links make all else follow it.

Metres; the wheels turn about Z.
"""
import json
import math
import pathlib

MODULE = 0.06  # pitch diameter for each tooth
DEPTH = 0.12
WHEEL, PINION = 24, 12  # teeth


def pitch_radius(teeth):
    return teeth * MODULE / 2


def prism(outline):
    """A flat outline, counter-clockwise and as concave as it likes, with a thickness: two n-gons and a rim."""
    count = len(outline)
    points = [[round(x, 5), round(y, 5), z] for z in (DEPTH / 2, -DEPTH / 2) for x, y in outline]
    rim = [[side, count + side, count + (side + 1) % count, (side + 1) % count] for side in range(count)]
    return {"points": points, "smoothingAngle": 20,
            "polygons": [list(range(count)), [count + side for side in reversed(range(count))]] + rim}


def wheel(teeth):
    """Tooth 0 points along +X."""
    outline = []
    for tooth in range(teeth):
        for share, out in ((-0.31, -0.055), (-0.15, 0.05), (0.15, 0.05), (0.31, -0.055)):
            angle = 2 * math.pi * (tooth + share) / teeth
            radius = pitch_radius(teeth) + out
            outline.append((radius * math.cos(angle), radius * math.sin(angle)))
    return prism(outline)


def rack(teeth):
    """Teeth point along +Y, with a gap at the origin; the pitch line is Y = 0."""
    pitch = math.pi * MODULE
    left = -teeth * pitch / 2
    outline = [(left, -0.2), (-left, -0.2)]
    for tooth in reversed(range(teeth)):
        middle = left + (tooth + 0.5) * pitch
        outline += [(middle + pitch * share, out) for share, out in ((0.31, -0.055), (0.15, 0.05), (-0.15, 0.05),
                                                                     (-0.31, -0.055))]
    return prism(outline)


def part(name, mesh, tag, **more):
    return {"type": "mesh", "id": name, "name": name, "mesh": dict(mesh, material=tag), **more}


def material(tag, red, green, blue, metallic):
    shader = {"type": "glTFShader", "name": f"{tag} shader",
              "channels": {"baseColor.R": red, "baseColor.G": green, "baseColor.B": blue, "metallic": metallic,
                           "roughness": 0.4}}
    return {"type": "mask", "name": tag, "channels": {"ptag": tag, "ptyp": "Material"}, "children": [shader]}


def transform(kind, name, **more):
    """A transform item with an id, so that links can name it."""
    return {"type": kind, "id": name, "name": name, **more}


def main():
    big, small = pitch_radius(WHEEL), pitch_radius(PINION)
    swing = {"interpolation": "cubic", "keys": [[0, 0], [2, 2.4], [4, 0]]}  # radians
    driving = part("Wheel", wheel(WHEEL), "Brass",
                   transforms=[transform("rotation", "Wheel turn", channels={"rot.Z": {"keys": swing}})],
                   children=[{"type": "locator", "id": "Pin", "name": "Pin", "position": [0, 0.42, 0.1]},
                             {"type": "locator", "id": "Seat", "name": "Seat", "position": [-0.42, -0.1, 0.16]}])
    driven = part("Pinion", wheel(PINION), "Steel",
                  transforms=[transform("translation", "Pinion place", value=[round(big + small, 5), 0, 0]),
                              transform("rotation", "Pinion turn")])
    sliding = part("Rack", rack(22), "Steel",
                   transforms=[transform("translation", "Rack slide", value=[0, round(-big, 5), 0])])
    scene = {
        "orvo": 1,
        "comment": "Channel links drive all but the wheel; made by make_mechanism.py.",
        "time": {"start": 0, "end": 4, "fps": 24},
        "items": [
            part("Frame", {"box": [4.6, 2.6, 0.06]}, "Frame", position=[0.2, -0.1, -0.2]),
            driving, driven, sliding,
            part("Flag", {"box": [0.1, 0.3, 0.08]}, "Paint"),
            part("Gondola", {"box": [0.22, 0.16, 0.12]}, "Paint"),
            material("Brass", 0.78, 0.57, 0.18, 0.9), material("Steel", 0.5, 0.53, 0.57, 0.9),
            material("Frame", 0.12, 0.14, 0.17, 0.0), material("Paint", 0.75, 0.1, 0.08, 0.0)],
        "links": [
            {"from": ["Wheel turn", "rot.Z"], "to": ["Pinion turn", "rot.Z"], "factor": -WHEEL / PINION,
             "offset": round(math.pi / PINION, 9)},
            {"from": ["Wheel turn", "rot.Z"], "to": ["Rack slide", "pos.X"], "factor": round(big, 9)},
            # The flag goes with the pin in all, the gondola only with the seat's place: it stays upright.
            {"from": ["Pin", "worldMatrix"], "to": ["Flag", "worldMatrix"]},
            {"from": ["Seat", "wposMatrix"], "to": ["Gondola", "wposMatrix"]}]}
    items = ",\n".join("    " + json.dumps(item) for item in scene["items"])
    links = ",\n".join("    " + json.dumps(link) for link in scene["links"])
    head = ",\n".join(f"  {json.dumps(key)}: {json.dumps(scene[key])}" for key in ("orvo", "comment", "time"))
    text = f'{{\n{head},\n  "items": [\n{items}\n  ],\n  "links": [\n{links}\n  ]\n}}\n'
    json.loads(text)
    pathlib.Path(__file__).with_name("mechanism.orvo").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
