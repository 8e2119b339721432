#!/usr/bin/env python3
"""Writes figure.orvo: a sprout-headed walker, one skinned mesh over a skeleton, an actor with two clips.

Metres, Y up, the figure faces +Z and stands in a T pose. Rotations are degrees, X applied first.
"""
import json
import math
import pathlib

# name: (parent, position in the bind pose)
JOINTS = {
    "Hips": (None, (0, 0.95, 0)),
    "Spine": ("Hips", (0, 1.10, 0)),
    "Chest": ("Spine", (0, 1.28, 0)),
    "Neck": ("Chest", (0, 1.48, 0)),
    "Head": ("Neck", (0, 1.58, 0)),
    "Stalk": ("Head", (0, 1.86, 0)),
    "Leaf": ("Stalk", (0, 1.98, -0.02)),
}
for side, sign in (("L", 1), ("R", -1)):
    JOINTS.update({
        f"Clavicle{side}": ("Chest", (sign * 0.05, 1.42, 0)),
        f"UpperArm{side}": (f"Clavicle{side}", (sign * 0.18, 1.42, 0)),
        f"Forearm{side}": (f"UpperArm{side}", (sign * 0.44, 1.42, 0)),
        f"Hand{side}": (f"Forearm{side}", (sign * 0.68, 1.42, 0)),
        f"Thigh{side}": ("Hips", (sign * 0.10, 0.92, 0)),
        f"Shin{side}": (f"Thigh{side}", (sign * 0.10, 0.50, 0.01)),
        f"Foot{side}": (f"Shin{side}", (sign * 0.10, 0.09, 0)),
        f"Toe{side}": (f"Foot{side}", (sign * 0.10, 0.05, 0.13)),
    })

SIDES = 12  # points of a ring


class Mesh:
    def __init__(self):
        self.points, self.polygons, self.tags, self.weights = [], [], [], []

    def tube(self, rings, tags, joints, blend):
        """Rings of (center, half width u, half height v, axis u, axis v); a ring's weights come from its place
        along the axis between the joints (joint, place); `blend` is the length over which two joints share."""
        first = len(self.points)
        for (center, width, height, u, v), place in rings:
            for side in range(SIDES):
                angle = 2 * math.pi * side / SIDES
                across, up = width * math.cos(angle), height * math.sin(angle)
                self.points.append([round(c + across * a + up * b, 5) for c, a, b in zip(center, u, v)])
                self.weights.append(weights_at(place, joints, blend))
        for ring in range(len(rings) - 1):
            low = first + ring * SIDES
            for side in range(SIDES):
                after = (side + 1) % SIDES
                self.add([low + side, low + after, low + SIDES + after, low + SIDES + side], tags[ring])
        self.add([first + side for side in reversed(range(SIDES))], tags[0])
        last = first + (len(rings) - 1) * SIDES
        self.add([last + side for side in range(SIDES)], tags[-1])

    def add(self, polygon, tag):
        self.polygons.append(polygon)
        self.tags.append(tag)


def weights_at(place, joints, blend):
    """Weights by joint, adding up to 1: each joint takes over from the one before around its own place."""
    weights = {joints[0][0]: 1.0}
    for joint, start in joints[1:]:
        share = min(1.0, max(0.0, (place - start) / blend + 0.5))
        share = share * share * (3 - 2 * share)
        if share == 0:
            continue
        weights = {name: weight * (1 - share) for name, weight in weights.items() if share < 1}
        weights[joint] = weights.get(joint, 0) + share
    return {name: round(weight, 4) for name, weight in weights.items()}


X, Y, Z = (1, 0, 0), (0, 1, 0), (0, 0, 1)
BACK = (0, 0, -1)


def build_mesh():
    mesh = Mesh()
    trunk = [(0.84, 0.07, 0.06), (0.88, 0.15, 0.11), (0.95, 0.17, 0.12), (1.02, 0.15, 0.11), (1.10, 0.13, 0.10),
             (1.19, 0.14, 0.10), (1.28, 0.17, 0.12), (1.36, 0.18, 0.12), (1.43, 0.14, 0.10), (1.48, 0.06, 0.06),
             (1.53, 0.05, 0.05), (1.58, 0.05, 0.05)]
    mesh.tube([(((0, y, 0), w, h, X, BACK), y) for y, w, h in trunk],
              ["Trousers"] * 3 + ["Shirt"] * 6 + ["Skin"] * 2,
              [("Hips", 0), ("Spine", 1.10), ("Chest", 1.28), ("Neck", 1.48), ("Head", 1.58)], 0.12)

    head = []
    for step in range(9):
        angle = math.pi * (step + 0.5) / 9
        head.append((1.71 - 0.15 * math.cos(angle), 0.14 * math.sin(angle)))
    mesh.tube([(((0, y, 0.01), r, r, X, BACK), y) for y, r in head], ["Skin"] * 8, [("Head", 0)], 0.1)
    for sign in (-1, 1):
        mesh.tube([(((sign * 0.05, 1.73, 0.125 + 0.012 * k), r, r, X, Y), 0) for k, r in ((0, 0.022), (2, 0.02),
                                                                                         (2.6, 0.008))],
                  ["Eyes"] * 2, [("Head", 0)], 0.1)

    leaf = [(1.84, 0.012, 0.012), (1.90, 0.01, 0.01), (1.96, 0.012, 0.01), (2.00, 0.05, 0.012), (2.05, 0.075, 0.012),
            (2.11, 0.055, 0.01), (2.16, 0.01, 0.006)]
    mesh.tube([(((0, y, -0.6 * max(0, y - 1.96)), w, h, X, BACK), y) for y, w, h in leaf], ["Leaf"] * 6,
              [("Head", 0), ("Stalk", 1.86), ("Leaf", 1.98)], 0.06)

    arm = [(0.08, 0.07), (0.14, 0.066), (0.18, 0.062), (0.24, 0.058), (0.34, 0.052), (0.40, 0.05), (0.44, 0.05),
           (0.48, 0.048), (0.58, 0.042), (0.65, 0.038), (0.68, 0.038), (0.72, 0.048), (0.78, 0.046), (0.83, 0.02)]
    leg = [(0.86, 0.085), (0.78, 0.085), (0.66, 0.078), (0.56, 0.07), (0.50, 0.068), (0.44, 0.064), (0.32, 0.056),
           (0.20, 0.046), (0.12, 0.044), (0.08, 0.044)]
    foot = [(-0.07, 0.035, 0.03), (-0.03, 0.05, 0.045), (0.05, 0.052, 0.045), (0.13, 0.052, 0.034), (0.18, 0.046, 0.028),
            (0.215, 0.025, 0.018)]
    for side, sign in (("L", 1), ("R", -1)):
        frame = (BACK, Y) if sign > 0 else (Z, Y)
        mesh.tube([(((sign * x, 1.42, 0), r, r * 0.9, *frame), x) for x, r in arm],
                  ["Shirt"] * 7 + ["Skin"] * 6,
                  [(f"Clavicle{side}", 0), (f"UpperArm{side}", 0.18), (f"Forearm{side}", 0.44),
                   (f"Hand{side}", 0.68)], 0.1)
        mesh.tube([(((sign * 0.10, y, 0.005), r, r, X, Z), -y) for y, r in leg], ["Trousers"] * 9,
                  [("Hips", -9), (f"Thigh{side}", -0.84), (f"Shin{side}", -0.50), (f"Foot{side}", -0.09)], 0.12)
        mesh.tube([(((sign * 0.10, h, z), w, h, X, Y), z) for z, w, h in foot], ["Shoes"] * 5,
                  [(f"Foot{side}", -9), (f"Toe{side}", 0.13)], 0.08)
    return mesh


def keys(motion, length, rate=12):
    """Keys of three numbers over one cycle."""
    count = round(length * rate)
    return [[round(step / rate, 6)] + [round(number, 4) for number in motion(2 * math.pi * step / count)]
            for step in range(count + 1)]


def walk():
    motion = {"Hips": {"position": lambda p: (0.012 * math.sin(p), 0.93 + 0.022 * math.cos(2 * p), 0),
                       "rotation": lambda p: (2, 7 * math.sin(p), 2 * math.cos(p))},
              "Spine": {"rotation": lambda p: (3, -6 * math.sin(p), 0)},
              "Chest": {"rotation": lambda p: (2, -6 * math.sin(p), -2 * math.cos(p))},
              "Head": {"rotation": lambda p: (-5 + 2 * math.cos(2 * p), 5 * math.sin(p), 0)},
              "Stalk": {"rotation": lambda p: (9 * math.cos(2 * p + 0.8), 0, 6 * math.sin(p))},
              "Leaf": {"rotation": lambda p: (14 * math.cos(2 * p + 1.6), 0, 9 * math.sin(p - 0.6))}}
    for side, sign in (("L", 1), ("R", -1)):
        def swing(p, s=sign):
            return s * math.sin(p)

        def lift(p, s=sign):
            return max(0.0, s * math.cos(p))

        motion[f"Thigh{side}"] = {"rotation": lambda p, f=swing: (-26 * f(p) - 4, 0, 0)}
        motion[f"Shin{side}"] = {"rotation": lambda p, f=lift: (8 + 46 * f(p), 0, 0)}
        motion[f"Foot{side}"] = {"rotation": lambda p, f=swing, g=lift: (6 * f(p) - 10 * g(p), 0, 0)}
        motion[f"Toe{side}"] = {"rotation": lambda p, f=swing: (-22 * max(0.0, -f(p)), 0, 0)}
        motion[f"UpperArm{side}"] = {"rotation": lambda p, s=sign, f=swing: (0, s * 26 * f(p), -s * 74)}
        motion[f"Forearm{side}"] = {"rotation": lambda p, s=sign, f=swing: (0, -s * (22 - 12 * f(p)), 0)}
        motion[f"Hand{side}"] = {"rotation": lambda p, s=sign: (0, -s * 8, -s * 4)}
    return motion


def wave():
    motion = {"Hips": {"position": lambda p: (0.02 * math.sin(p), 0.94, 0),
                       "rotation": lambda p: (0, 0, 2 * math.sin(p))},
              "Chest": {"rotation": lambda p: (0, 0, -3 * math.sin(p))},
              "Head": {"rotation": lambda p: (-4, -8, 6 * math.sin(2 * p))},
              "Stalk": {"rotation": lambda p: (0, 0, 12 * math.sin(2 * p - 0.8))},
              "Leaf": {"rotation": lambda p: (6 * math.sin(p), 0, 18 * math.sin(2 * p - 1.6))},
              "UpperArmL": {"rotation": lambda p: (0, 0, -72 + 2 * math.sin(p))},
              "ForearmL": {"rotation": lambda p: (0, -18, 0)},
              "ClavicleR": {"rotation": lambda p: (0, 0, -12)},
              "UpperArmR": {"rotation": lambda p: (0, 12, -38 + 4 * math.sin(2 * p))},
              "ForearmR": {"rotation": lambda p: (0, 10, -38 + 24 * math.sin(2 * p))},
              "HandR": {"rotation": lambda p: (0, 0, 16 * math.sin(2 * p - 0.7))}}
    return motion


def clip(name, motion, length, tag):
    curves = {joint: {path: {"keys": keys(function, length), "after": "repeat"} for path, function in paths.items()}
              for joint, paths in motion.items()}
    return {"type": "actionclip", "id": name, "name": name, "clip": {"exportTag": tag, "motion": curves}}


def joint_item(name):
    parent, place = JOINTS[name]
    base = JOINTS[parent][1] if parent else (0, 0, 0)
    children = [joint_item(child) for child, (of, _) in JOINTS.items() if of == name]
    item = {"type": "locator", "id": name, "name": name,
            "position": [round(a - b, 5) for a, b in zip(place, base)], "rotation": [0, 0, 0]}
    return {**item, "children": children} if children else item


COLORS = {"Skin": (0.85, 0.58, 0.42), "Shirt": (0.16, 0.42, 0.62), "Trousers": (0.24, 0.2, 0.32),
          "Shoes": (0.5, 0.16, 0.1), "Leaf": (0.24, 0.58, 0.16), "Eyes": (0.02, 0.02, 0.03)}


def material(tag):
    red, green, blue = COLORS[tag]
    shader = {"type": "glTFShader", "name": f"{tag} shader",
              "channels": {"baseColor.R": red, "baseColor.G": green, "baseColor.B": blue, "metallic": 0.0,
                           "roughness": 0.75}}
    return {"type": "mask", "name": tag, "channels": {"ptag": tag, "ptyp": "Material"}, "children": [shader]}


def main():
    mesh = build_mesh()
    body = {"type": "mesh", "id": "body", "name": "Body",
            "mesh": {"points": mesh.points, "polygons": mesh.polygons, "material": mesh.tags, "smoothingAngle": 60,
                     "maps": [{"type": "WGHT", "name": joint, "per": "point",
                               "values": [weights.get(joint) for weights in mesh.weights]} for joint in JOINTS]}}
    group = {"type": "deformGroup", "name": "Figure",
             "deformGroup": {"meshes": ["body"],
                             "deformers": [{"type": "genInfluence", "name": f"{joint} influence", "joint": joint,
                                            "weightMap": joint} for joint in JOINTS]}}
    clips = [clip("Walk", walk(), 1.0, "loop_"), clip("Wave", wave(), 2.0, "")]
    actor = {"type": "group", "name": "Figure", "actor": True,
             "group": {"items": [item["id"] for item in clips] + list(JOINTS)}}
    scene = {"orvo": 1, "comment": "A walker of 23 joints; made by make_figure.py.",
             "userValues": {"sceneio.gltf.save.exportType": 0, "sceneio.gltf.save.exportActionType": 1},
             "time": {"start": 0, "end": 2, "fps": 24},
             "items": [body, joint_item("Hips"), group, actor] + clips + [material(tag) for tag in COLORS]}
    lines = ",\n".join(f"  {json.dumps(key)}: {json.dumps(value)}" for key, value in scene.items() if key != "items")
    items = ",\n".join("    " + json.dumps(item) for item in scene["items"])
    text = f'{{\n{lines},\n  "items": [\n{items}\n  ]\n}}\n'
    json.loads(text)
    pathlib.Path(__file__).with_name("figure.orvo").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
