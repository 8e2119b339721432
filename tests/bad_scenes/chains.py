#!/usr/bin/env python3
"""Exports scenes that are right but very long in one direction: chains of parents, links, instances, and single things
with a great many parts. Each must end well on a stack of 1 MiB. Prints what each took; exits with 1 when one didn't.

    tests/bad_scenes/chains.py build/release/bin/vornel --length 100000
"""
import argparse
import fnmatch
import pathlib
import resource
import subprocess
import sys
import tempfile

import scenes

STACK = 1 << 20


def listed(count, item):
    return ",".join(item(place) for place in range(count))


def chain(count, key, more=""):
    return scenes.items(listed(count, lambda i: f'{{"id": "i{i}"{more}' + (f', "{key}": "i{i - 1}"' if i else "") + "}"))


def linked(count, channel, more=""):
    owner = "i{}.position" if channel == "pos.X" else "i{}"
    links = listed(count - 1, lambda i: f'{{"from": ["{owner.format(i)}", "{channel}"], "to": ["{owner.format(i + 1)}", "{channel}"]}}')
    return ('{"orvo": 1, "time": {"end": 0.1}, "items": [' + listed(count, lambda i: f'{{"id": "i{i}", "position": [1, 0, 0]{more}}}') +
            f'], "links": [{links}]}}')


# A scene of so many, by name.
CHAINS = {
    "parents": lambda n: chain(n, "parent", ', "position": [0, 1, 0]'),
    "parents from below": lambda n: scenes.items(listed(n, lambda i: f'{{"id": "i{i}"' + (f', "parent": "i{i + 1}"' if i < n - 1 else "") + "}")),
    "moving parents": lambda n: '{"orvo": 1, "time": {"end": 0.04}, ' + chain(n, "parent", ', "rotation": {"keys": [[0, 0, 0, 0], [1, 90, 0, 0]]}')[12:],
    "IK joints": lambda n: chain(n, "parent", ', "packages": ["ik.joint"]').replace('{"id": "i1"', '{"type": "ikFullBody", "parent": "i0"}, {"id": "i1"', 1),
    "masks": lambda n: chain(n, "parent", ', "type": "mask", "channels": {"ptag": "W", "ptyp": "Material"}').replace("]}", ', {"mesh": {"box": [1,1,1], "material": "W"}}]}'),
    "instances": lambda n: chain(n, "source", ', "type": "meshInst"').replace('"type": "meshInst"', '"mesh": {"box": [1, 1, 1]}', 1),
    "inverses": lambda n: scenes.items(listed(n, lambda i: f'{{"id": "i{i}", "type": "transform"' + (f', "inverseOf": "i{i - 1}"' if i else f', "matrix": [{scenes.MATRIX}]') + "}") +
                                       f', {{"id": "L", "transforms": ["i{n - 1}"]}}'),
    "links of numbers": lambda n: linked(n, "pos.X"),
    "links of matrices": lambda n: linked(n, "worldMatrix"),
    "links of parents' matrices": lambda n: linked(n, "parentMatrix"),
    "joints": lambda n: chain(n, "joint", ', "type": "deformer"'),
    "deformers of a mesh": lambda n: scenes.items('{"id": "J"}, {"mesh": {"box": [1,1,1], "maps": [{"type": "WGHT", "name": "w", "values": [1], "points": [0,0,0,0,0,0,0,0]}]}, "deformers": [' +
                                                  listed(n, lambda i: '{"type": "genInfluence", "joint": "J", "channels": {"type": 1, "name": "w"}}') + "]}"),
    "deformers of a group": lambda n: scenes.items('{"id": "J"}, {"id": "M", "mesh": {"box": [1,1,1]}}, {"type": "deformGroup", "deformGroup": {"meshes": ["M"], "deformers": [' +
                                                   listed(n, lambda i: '{"type": "deformer", "joint": "J"}') + "]}}"),
    "deformers of deformers": lambda n: '{"orvo": 1, "items": [' + listed(n, lambda i: f'{{"id": "i{i}", "type": "deformer"}}') + '], "graphs": {"deformers": [' +
                                        listed(n - 1, lambda i: f'["i{i}", "i{i + 1}"]') + "]}}",
    "texture locators": lambda n: chain(n, "textureLocator", ', "type": "imageMap"'),
    "transforms": lambda n: scenes.items('{"transforms": [' + listed(n, lambda i: '{"type": "rotation", "value": [0, 1, 0]}') + "]}"),
    "types of items": lambda n: '{"orvo": 1, "types": {' + listed(256, lambda i: f'"t{i}": "' + (f"t{i - 1}" if i % 16 else "locator") + '"') + '}, "items": [' +
                                listed(n, lambda i: f'{{"type": "t{i % 256}"}}') + "]}",
    "groups": lambda n: scenes.items(listed(n, lambda i: f'{{"id": "i{i}", "type": "group", "group": {{"items": ["i{max(i - 1, 0)}"]}}}}')),
    "actors": lambda n: '{"orvo": 1, "userValues": {"sceneio.gltf.save.exportActionType": 1}, "items": [' + listed(n, lambda i: f'{{"id": "i{i}", "type": "group", "actor": true}}') + "]}",
    "clips": lambda n: scenes.items('{"id": "A"}, ' + listed(n, lambda i: f'{{"id": "i{i}", "type": "actionclip", "clip": {{"channels": [{{"channel": ["A", 0], "value": {i}}}]}}}}')),
    "channels": lambda n: scenes.items('{"channels": {' + listed(min(n, 4096 - 6), lambda i: f'"c{i}": {i}') + "}}"),
    "channels of a list": lambda n: scenes.items('{"channels": [' + listed(min(n, 4096), lambda i: f'"c{i}"') + "]}"),
    "children": lambda n: scenes.items('{"children": [' + listed(n, lambda i: "{}") + "]}"),
    "items of one name": lambda n: scenes.items(listed(n, lambda i: '{"name": "a"}')),
    "keys": lambda n: scenes.items('{"channels": {"a": {"keys": [' + listed(n, lambda i: f"[{i}, 0]") + "]}}}"),
    "maps": lambda n: scenes.mesh(scenes.TRIANGLE + ', "maps": [' + listed(n, lambda i: f'{{"type": "TXUV", "name": "m{i % 50}", "per": "point", "values": [0,0,0,0,0,0]}}') + "]"),
    "materials": lambda n: scenes.mesh(scenes.POINTS + ', "polygons": [' + listed(n, lambda i: "[0,1,2]") + '], "material": [' + listed(n, lambda i: f'"m{i}"') + "]"),
    "images": lambda n: scenes.items('{"type": "polyRender", "children": [' + listed(n, lambda i: f'{{"type": "imageMap", "image": "no{i}.png"}}') + "]}"),
    "tags": lambda n: scenes.items('{"tags": {' + listed(n, lambda i: f'"0x{i:08x}": "a"') + "}}"),
    "user values": lambda n: '{"orvo": 1, "userValues": {' + listed(n, lambda i: f'"v{i}": {i}') + "}}",
    "graphs": lambda n: '{"orvo": 1, "graphs": {' + listed(n, lambda i: f'"g{i}": []') + "}}",
    "selection": lambda n: '{"orvo": 1, "userValues": {"sceneio.gltf.save.exportType": 1}, "items": [{"id": "a"}], "selection": [' + listed(n, lambda i: '"a"') + "]}",
}


def export(command, folder, name, scene, most):
    (folder / "a.orvo").write_text(scene)

    def limit():
        resource.setrlimit(resource.RLIMIT_STACK, (STACK, STACK))
        resource.setrlimit(resource.RLIMIT_CPU, (most, most))

    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    ended = subprocess.run([command, "export", "a.orvo", "-o", "a.glb", "-q"], cwd=folder, preexec_fn=limit, capture_output=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    print(f"| {name} | {len(scene) / 1e6:.1f} MB | {seconds:.2f} s | {ended.returncode} |", flush=True)
    if ended.returncode != 0:
        print(f"BROKEN {name}: {ended.returncode}: {ended.stderr[-300:].decode('utf-8', 'replace').strip()}")
    return ended.returncode == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", type=lambda text: str(pathlib.Path(text).resolve()))
    parser.add_argument("--length", type=int, default=100_000)
    parser.add_argument("--only", default="*", help="chains whose names are like this")
    parser.add_argument("--most", type=int, default=60, help="seconds of processor time for each")
    parsed = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="chains-") as folder:
        ended = [export(parsed.command, pathlib.Path(folder), name, make(parsed.length), parsed.most)
                 for name, make in CHAINS.items() if fnmatch.fnmatch(name, parsed.only)]
    return 0 if ended and all(ended) else 1


if __name__ == "__main__":
    sys.exit(main())
