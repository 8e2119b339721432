#!/usr/bin/env python3
"""Makes a scene of keyed joints, for measurements.

    make_rig.py JOINTS SAMPLES OUTPUT.orvo [--clips C] [--rate R]

Limbs of ten joints each, every joint keyed in position, rotation and scale, sampled SAMPLES times at R a second (100).
With --clips the keys stand in C action clips of one actor, and every clip is exported."""

import argparse
import json
import math
from pathlib import Path

KEYS = 11  # of each curve
TRANSFORMS = (("translation", "pos"), ("rotation", "rot"), ("scale", "scl"))
RESTS = {"translation": (0.0, 1.0, 0.0), "rotation": (0.0, 0.0, 0.0), "scale": (1.0, 1.0, 1.0)}


def key_times(seconds):
    return [seconds * step / (KEYS - 1) for step in range(KEYS)]


def scene_channels(kind, prefix, seconds, phase):
    """A transform's three channels, each with keys of its own."""
    size = 0.5 if kind == "rotation" else 0.1
    channels = {}
    for axis, rest in enumerate(RESTS[kind]):
        at = phase if kind == "translation" else phase + axis
        keys = [[time, rest + size * math.sin(at + time)] for time in key_times(seconds)]
        channels[f"{prefix}.{'XYZ'[axis]}"] = {"value": rest, "keys": keys}
    return channels


def joint(index, seconds, keyed):
    transforms = []
    for kind, prefix in TRANSFORMS:
        transform = {"type": kind, "main": True}
        if keyed:
            transform["channels"] = scene_channels(kind, prefix, seconds, index * 0.1)
        transforms.append(transform)
    return {"type": "locator", "name": f"Joint{index}", "transforms": transforms}


def clip(index, joints, seconds):
    """An action clip that moves all joints, in a way of its own."""
    motion = {}
    for place in range(joints):
        phase = index + place * 0.1

        def keyed(size, rest):
            return {"keys": [[time] + [rest + size * math.sin(phase + axis + time) for axis in range(3)]
                             for time in key_times(seconds)]}

        motion[f"Joint{place}"] = {"position": keyed(0.1, 0.5), "rotation": keyed(30.0, 0.0), "scale": keyed(0.1, 1.0)}
    return {"type": "actionclip", "name": f"Clip{index}", "clip": {"motion": motion}}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("joints", type=int)
    parser.add_argument("samples", type=int)
    parser.add_argument("output", type=Path)
    parser.add_argument("--clips", type=int, default=0)
    parser.add_argument("--rate", type=int, default=100)
    arguments = parser.parse_args()

    seconds = (arguments.samples - 1) / arguments.rate
    roots = []
    for index in range(arguments.joints):
        item = joint(index, seconds, keyed=arguments.clips == 0)
        if index % 10 == 0:
            roots.append(item)
        else:
            parent["children"] = [item]
        parent = item
    scene = {"orvo": 1, "time": {"start": 0.0, "end": seconds, "fps": arguments.rate}, "items": roots}
    if arguments.clips > 0:
        members = [f"Joint{index}" for index in range(arguments.joints)]
        members += [f"Clip{index}" for index in range(arguments.clips)]
        roots.append({"type": "group", "name": "Actor", "actor": True, "group": {"items": members}})
        roots.extend(clip(index, arguments.joints, seconds) for index in range(arguments.clips))
        scene["userValues"] = {"sceneio.gltf.save.exportActionType": 1}
    arguments.output.write_text(json.dumps(scene), encoding="utf-8")


if __name__ == "__main__":
    main()
