#!/usr/bin/env python3
"""Makes a scene whose materials use large images, for measurements.

    make_images.py MEBIBYTES OUTPUT.orvo [--images N]

One quad a material, each with a base colour image of its own beside the scene. An image begins like a PNG and goes on
with arbitrary bytes, since nothing looks into it. The same arguments give the same bytes."""

import argparse
import json
import random
from pathlib import Path

BEGINNING = b"\x89PNG\r\n\x1a\n"
MEBIBYTE = 1 << 20


def write_image(path, mebibytes, seed):
    """Bytes that don't repeat from one mebibyte to the next, and that no file system stores for less."""
    noise = random.Random(seed)
    with open(path, "wb") as file:
        for piece in range(mebibytes):
            block = noise.randbytes(MEBIBYTE)
            file.write(BEGINNING + block[len(BEGINNING):] if piece == 0 else block)


def quad(index):
    return {
        "name": f"Quad{index}",
        "mesh": {
            "points": [[index, 0, 0], [index + 1, 0, 0], [index + 1, 0, -1], [index, 0, -1]],
            "polygons": [[0, 1, 2, 3]], "material": f"Material{index}",
            "maps": [{"type": "TXUV", "per": "point", "values": [[0, 0], [1, 0], [1, 1], [0, 1]]}],
        },
    }


def mask(index, image):
    place = {"projType": 6, "uvMap": "Texture", "tileU": 0, "tileV": 0, "wrapU": 1.0, "wrapV": 1.0}
    layers = [
        {"type": "glTFShader", "name": f"Shader{index}"},
        {
            "type": "imageMap", "name": f"Image{index} (Image)", "image": image,
            "channels": {"effect": "baseColorGLTF", "swizzling": 1, "rgba": 0},
            "textureLocator": {"type": "txtrLocator", "name": f"Place{index}", "channels": place},
        },
    ]
    channels = {"ptag": f"Material{index}", "ptyp": "Material"}
    return {"type": "mask", "name": f"Mask{index}", "channels": channels, "children": layers}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mebibytes", type=int, help="of all images together")
    parser.add_argument("output", type=Path)
    parser.add_argument("--images", type=int, default=16)
    arguments = parser.parse_args()
    if not 1 <= arguments.images <= arguments.mebibytes:
        parser.error("an image takes at least a mebibyte")

    names = [f"{arguments.output.stem}-{index}.png" for index in range(arguments.images)]
    for index, name in enumerate(names):
        mebibytes = arguments.mebibytes // arguments.images + (index < arguments.mebibytes % arguments.images)
        write_image(arguments.output.with_name(name), mebibytes, index)
    items = [quad(index) for index in range(arguments.images)]
    items.append({"type": "polyRender", "name": "Render",
                  "children": [mask(index, name) for index, name in enumerate(names)]})
    arguments.output.write_text(json.dumps({"orvo": 1, "items": items}, indent=1) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
