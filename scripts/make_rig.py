#!/usr/bin/env python3
"""Makes a scene of keyed joints, for measurements.

    make_rig.py JOINTS SAMPLES OUTPUT.orvo

Limbs of ten joints each, every joint keyed in position, rotation and scale, sampled SAMPLES times at 100 a second."""

import json
import math
import sys


def transform(kind, prefix, values):
    return {"type": kind, "main": True, "channels": {f"{prefix}.{axis}": value for axis, value in zip("XYZ", values)}}


def joint(index, seconds):
    """A joint whose nine channels each have a key every tenth of the range."""
    times = [seconds * step / 10 for step in range(11)]

    def keyed(rest, size, phase):
        return {"value": rest, "keys": [[time, rest + size * math.sin(phase + time)] for time in times]}

    phase = index * 0.1
    return {
        "type": "locator", "name": f"Joint{index}",
        "transforms": [
            transform("translation", "pos", [keyed(rest, 0.1, phase) for rest in (0.0, 1.0, 0.0)]),
            transform("rotation", "rot", [keyed(0.0, 0.5, phase + axis) for axis in range(3)]),
            transform("scale", "scl", [keyed(1.0, 0.1, phase + axis) for axis in range(3)]),
        ],
    }


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    joints, samples, output = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
    seconds = (samples - 1) / 100
    roots = []
    for index in range(joints):
        item = joint(index, seconds)
        if index % 10 == 0:
            roots.append(item)
        else:
            parent["children"] = [item]
        parent = item
    scene = {"orvo": 1, "time": {"start": 0.0, "end": seconds, "fps": 100}, "items": roots}
    with open(output, "w", encoding="utf-8") as file:
        json.dump(scene, file)


if __name__ == "__main__":
    main()
