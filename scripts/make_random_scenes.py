#!/usr/bin/env python3
"""Makes scenes of everything at once from seeds: what an export computes, not how it looks.

    make_random_scenes.py COUNT DIRECTORY

writes DIRECTORY/000.orvo, 001.orvo, ... and the images that they name. The same count gives the same bytes."""

import json
import math
import random
import shutil
import sys
from pathlib import Path

IMAGES = Path(__file__).parent.parent / "tests" / "golden" / "images"
WORDS = ("Arm", "İstanbul ılık", "Straße", 'a "b"\\c', "1,5", "Icon", "Pivot of RotPvt", "node.main", "日本")
TAGS = ("Wood", "Iron", "İznik", "Flat")
ORDERS = ("xyz", "xzy", "yxz", "yzx", "zxy", "zyx")
OPTIONS = {"geometry": (1, 1, 1, 0), "materials": (1, 1, 1, 0), "cameras": (1, 0), "animation": (1, 1, 1, 0),
           "skinnedMeshInWS": (0, 1), "tangentsBitangents": (0, 1), "indicesExport": (0, 1),
           "sampleAnimFpsMultiplier": (0, 1), "exportActionType": (0, 0, 1, 2)}
EFFECTS = ("baseColorGLTF", "metallicGLTF", "roughnessGLTF", "normalGLTF", "emisGLTF", "aoGLTF", "dissolve")


class Maker:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.nodes = []  # ids
        self.moving = []  # ids of nodes with all three transform items
        self.meshes = []  # (item, points)

    def chance(self, share):
        return self.random.random() < share

    def number(self):
        """Of any size, with as many digits as fit, or short."""
        kind = self.random.randrange(8)
        if kind == 0:
            return self.random.choice((0, 1, -1, 0.5, 0.1, -0.0, 1e-7, 1234567.5, 1e21, 3e-310))
        if kind == 1:
            return self.random.uniform(-1, 1) * 10.0 ** self.random.randrange(-12, 13)
        return self.random.uniform(-3, 3)

    def vector(self, scale=1.0):
        return [scale * self.random.uniform(-1, 1) for _ in range(3)]

    def times(self):
        count = self.random.randrange(2, 5)
        return sorted({self.random.randrange(0, 1000) / 997 for _ in range(count)} | {0.0})

    def keyed(self, value, size):
        """Three numbers, or keys of three."""
        if self.chance(0.5):
            return value
        keys = [[time] + [at + size * self.random.uniform(-1, 1) for at in value] for time in self.times()]
        for key in keys:
            if self.chance(0.3):
                key.append("step")
        edges = ("constant", "linear", "repeat", "oscillate")
        return {"keys": keys, "before": self.random.choice(edges), "after": self.random.choice(edges), "value": value}

    def curve(self):
        """Keys of one channel, cubic ones among them."""
        kinds = (["linear"], ["step"], ["cubic", self.number(), self.number()])
        return {"keys": [[time, self.random.uniform(-2, 2)] + self.random.choice(kinds) for time in self.times()]}

    def stack(self, node):
        """A transform stack that isn't the usual one."""
        matrix = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]
        matrix[self.random.choice((1, 2, 4, 6, 8, 9))] = self.random.uniform(-1, 1)
        pivot = node["id"] + " pivot"
        return [{"type": "translation", "value": self.vector(), "main": True},
                {"type": "translation", "name": "RotPivot", "id": pivot, "value": self.vector()},
                {"type": "rotation", "value": self.vector(180), "rotationOrder": self.random.choice(ORDERS),
                 "channels": {"rot.Y": self.curve()}},
                {"type": "transform", "name": "RotPivot inverse", "inverseOf": pivot},
                {"type": self.random.choice(("shear", "transform")), "matrix": matrix},
                {"type": "scale", "value": [1 + part for part in self.vector(0.9)]}]

    def node(self, depth):
        item = {"id": f"n{len(self.nodes)}", "name": self.random.choice(WORDS) + str(self.random.randrange(40))}
        self.nodes.append(item["id"])
        if self.chance(0.2):
            item["transforms"] = self.stack(item)
        elif self.chance(0.9):
            item["position"] = self.keyed([self.number() for _ in range(3)] if self.chance(0.3) else self.vector(), 1)
            item["rotation"] = self.keyed(self.vector(180), 120)
            item["scale"] = self.keyed([1 + part for part in self.vector(0.9)], 0.5)
            item["rotationOrder"] = self.random.choice(ORDERS)
            self.moving.append(item["id"])
        kind = self.random.random()
        if kind < 0.4:
            item["mesh"] = self.mesh()
            self.meshes.append((item, len(item["mesh"]["points"])))
        elif kind < 0.5:
            item["type"] = "camera"
        elif kind < 0.6 and self.meshes:
            item.update(type="meshInst", source=self.random.choice(self.meshes)[0]["id"])
        if depth < 4:
            item["children"] = [self.node(depth + 1) for _ in range(self.random.randrange(0, 3 if depth else 4))]
        return item

    def mesh(self):
        """Polygons of points on a bumpy round; many are concave, and what is computed of them is left to the host."""
        count = self.random.randrange(4, 24)
        points = [[math.cos(turn) * radius, math.sin(turn) * radius, self.random.uniform(-0.2, 0.2)]
                  for turn, radius in ((6.2 * place / count, self.random.uniform(0.2, 2)) for place in range(count))]
        polygons = [sorted(self.random.sample(range(count), self.random.randrange(3, min(count, 9) + 1)))
                    for _ in range(self.random.randrange(1, 12))]
        mesh = {"points": points, "polygons": polygons, "smoothingAngle": self.random.uniform(0, 180),
                "material": [self.random.choice(TAGS + (None,)) for _ in polygons], "maps": self.maps(count, polygons)}
        return mesh

    def maps(self, count, polygons):
        corners = sum(map(len, polygons))
        maps = []
        for code, size in (("TXUV", 2), ("TXUV", 2), ("RGBA", 4), ("RGB", 3), ("NORM", 3), ("TBAS", 6)):
            if self.chance(0.4) and not (code == "TXUV" and not maps):
                continue
            values = [[self.random.uniform(-1, 1) for _ in range(size)] for _ in range(6)]
            if code == "TBAS":
                values = [self.basis() for _ in values]
            maps.append({"type": code, "name": "Texture" if not maps else f"{code} {len(maps)}", "values": values,
                         "points": [self.random.randrange(6) for _ in range(count)],
                         "corners": [self.random.choice((0, 1, 2, None, None)) for _ in range(corners)]})
        for name in ("low", "high"):
            maps.append({"type": "WGHT", "name": name, "per": "point",
                         "values": [self.random.choice((None, self.random.random(), 1)) for _ in range(count)]})
        return maps

    def basis(self):
        turn = self.random.uniform(0, 6.28)
        sine, cosine = math.sin(turn), math.cos(turn)
        return [cosine, sine, 0, -sine, cosine, 0]

    def deform(self, items):
        """Skins on some meshes, by links or by a group."""
        for place, (item, count) in enumerate(self.meshes):
            way = self.random.randrange(4)
            joints = [self.random.choice(self.nodes) for _ in range(self.random.randrange(1, 6))]
            if way == 0:
                item["deformers"] = [
                    {"type": "genInfluence", "name": f"Bends {place} {n}", "joint": joint,
                     "channels": {"type": 1, "name": self.random.choice(("low", "high"))}}
                    for n, joint in enumerate(joints)]
            elif way == 1:
                weights = [[[n, self.random.random()] for n in range(len(joints)) if self.chance(0.6)][:count]
                           for _ in range(count)]
                items.append({"type": "deformGroup", "name": f"Limbs {place}", "deformGroup": {
                    "meshes": [item["id"]], "influences": [weights],
                    "deformers": [{"type": "genInfluence", "id": f"d{place} {n}", "name": f"D{n}", "joint": joint}
                                  for n, joint in enumerate(joints)]}})

    def masks(self):
        locator = {"type": "txtrLocator", "channels": {
            "projType": self.random.choice((6, 6, 0)), "uvMap": "Texture", "tileU": self.number(), "tileV": 1.5,
            "m02": self.number(), "m12": 0.3, "uvRotation": self.random.uniform(-7, 7),
            "wrapU": float(self.random.randrange(4)), "wrapV": 1.0}}
        for tag in TAGS:
            layers = [{"type": "glTFShader", "name": tag, "channels": {
                "baseColor": [self.random.random() for _ in range(3)], "metallic": self.random.random(),
                "roughness": self.random.random(), "emissive": [self.random.random() for _ in range(3)],
                "emissivelevel": 0.3, "normalscale": self.random.random(), "shadeModel": int(self.chance(0.2))}}]
            for effect in self.random.sample(EFFECTS, self.random.randrange(4)):
                layers.append({"type": "imageMap", "name": f"{effect} (Image)", "textureLocator": dict(locator),
                               "image": self.random.choice(("red.png", "two.PNG", "dot.jpg", "plain.tga", "gone.png")),
                               "channels": {"effect": effect, "swizzling": self.random.randrange(2),
                                            "rgba": self.random.randrange(6)}})
            self.random.shuffle(layers)
            yield {"type": "mask", "name": f"{tag} mask", "channels": {"ptag": tag, "ptyp": "Material"},
                   "children": layers}

    def actors(self):
        clips = [{"id": f"clip{n}", "type": "actionclip", "name": f"Clip {n}", "clip": {
            "active": n == 1, "exportTag": self.random.choice(("", "Run_", "İ")),
            "motion": {node: {"rotation": self.keyed(self.vector(180), 90)}
                       for node in self.random.sample(self.moving, min(2, len(self.moving)))}}} for n in range(3)]
        listed = [node for node in self.moving if self.chance(0.7)] + [clip["id"] for clip in clips]
        return [{"type": "group", "name": "Actor", "actor": True, "group": {"items": listed}}] + clips

    def links(self):
        for target in self.moving:
            source = self.random.choice(self.moving)
            if source != target and self.chance(0.15):
                yield {"from": [source + ".rotation", "rot.Y"], "to": [target + ".position", "pos.Y"],
                       "factor": self.random.uniform(-1, 1), "offset": self.random.uniform(-1, 1)}

    def scene(self):
        items = [self.node(0) for _ in range(self.random.randrange(2, 5))]
        self.deform(items)
        items += [{"type": "polyRender", "name": "Render", "children": list(self.masks())}]
        if self.chance(0.6):
            items += self.actors()
        options = {f"sceneio.gltf.save.{name}": self.random.choice(values) for name, values in OPTIONS.items()}
        options["sceneio.gltf.save.exportType"] = self.random.choice((0, 0, 0, 2))
        return {"orvo": 1, "userValues": options, "items": items, "links": list(self.links()),
                "time": {"current": self.random.random(), "start": self.random.random() / 3, "end": 0.5,
                         "fps": self.random.choice((24, 25, 29.97, 12))},
                "selection": self.random.sample(self.nodes, min(3, len(self.nodes)))}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    directory = Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    for image in IMAGES.iterdir():
        shutil.copy(image, directory)
    for seed in range(int(sys.argv[1])):
        text = json.dumps(Maker(seed).scene(), ensure_ascii=False)
        (directory / f"{seed:03}.orvo").write_text(text, encoding="utf-8")


main()
