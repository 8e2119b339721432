"""Scenes that ask for more than a glTF can hold, or than the command may take."""
import json

from case import Case
from files import textured

GIBIBYTE = 1 << 30
LIMIT = "takes more memory than its limit of 64 MiB (--max-memory)"
# 100,000,000 numbers, which are converted and so can't be used where they lie in the file.
ARRAY = '{"orvo": 1, "items": [{"mesh": {"points": {"file": "in.bin", "count": 99999999, "type": "f64"}}}]}'
SAMPLES = ('{"orvo": 1, "time": {"end": 3000000, "fps": 1}, "items": '
           '[{"position": {"keys": [[0, 0, 0, 0], [1, 1, 1, 1]]}}]}')


def make_sparse(sizes):
    """Files of these lengths that take no room on the disk."""
    def make(folder):
        for name, size in sizes.items():
            with open(folder / name, "wb") as file:
                file.write(b"\x89PNG\r\n\x1a\n")
                file.truncate(size)
    return make


def lengths():
    two = textured("x.png").replace("}]}]}]}", '}, {"type": "imageMap", "name": "Y", "channels": {"effect": "emisGLTF", "swizzling": 1}, "image": '
                                    '"y.png", "textureLocator": {"type": "txtrLocator", "channels": {"projType": 6, "uvMap": "Texture", '
                                    '"tileU": 1, "tileV": 1, "wrapU": 1.0, "wrapV": 1.0}}}]}]}]}')
    yield Case("images of 5 GiB", ["out/a.glb: not written: Too large for glTF: the data would take 53687"], two, code=4, alone=False,
               make=make_sparse({"x.png": 5 * GIBIBYTE // 2, "y.png": 5 * GIBIBYTE // 2}))
    yield Case("container that just doesn't fit", ["out/a.glb: not written: Too large for glTF: the data would take 429496888"], two, code=4, alone=False,
               make=make_sparse({"x.png": 2 * GIBIBYTE, "y.png": 2 * GIBIBYTE - 1024}))
    yield Case("image of 4 GiB", ['image "in.png" is left out: it takes 4 GiB or more'], textured("in.png"), code=0,
               make=make_sparse({"in.png": 4 * GIBIBYTE}))
    yield Case("array file of 8 EiB", ["a.orvo: /items/0/mesh/points"], ARRAY.replace("99999999", str(2**60)), make=make_sparse({"in.bin": 1 << 40}))


def memory():
    bounded = {"code": 6, "alone": False, "sanitizable": False}
    big = {**bounded, "scene": ARRAY, "make": make_sparse({"in.bin": GIBIBYTE})}
    option = ("--max-memory", "64")
    yield Case("memory of an export", [f"out/a.glb: {LIMIT}"], SAMPLES, **bounded, arguments=("export", "a.orvo", "-o", "out/a.glb", *option))
    yield Case("memory of a reader", [f"out/a.glb: {LIMIT}"], **big, arguments=("export", "a.orvo", "-o", "out/a.glb", *option))
    yield Case("memory of a recording", [f"out/a.orvo: {LIMIT}"], **big, arguments=("record", "a.orvo", "-o", "out/a.orvo", *option))
    yield Case("memory of a list", [f"a.orvo: {LIMIT}"], **big, arguments=("info", "a.orvo", *option))
    line = {"input": "a.orvo", "output": "out/a.glb"}
    told = [f"list:1: out/a.glb: {LIMIT}"]
    yield Case("memory of a batch", told, SAMPLES, **{**bounded, "code": 5}, files={"list": json.dumps(line)}, arguments=("batch", "list", *option))
    yield Case("memory of a line", told, SAMPLES, **{**bounded, "code": 5}, files={"list": json.dumps({**line, "options": {"max-memory": 64}})},
               arguments=("batch", "list", "--max-memory", "4096"))
    for name, value in (("too small", "63"), ("negative", "-1"), ("no number", "1G"), ("2^64", str(2**64))):
        yield Case(f"memory limit that is {name}", ["--max-memory"], code=2, arguments=("export", "a.orvo", "-o", "out/a.glb", "--max-memory", value))


def manifests():
    deep = 300_000
    for name, before, level in (("line", "", "["), ("options", '{"input": "a.orvo", "output": "out/a.glb", "options": ', '{"a":')):
        yield Case(f"manifest with a nested {name}", ["list:1: not JSON"], files={"list": [before, *[level * 1000] * (deep // 1000)]},
                   arguments=("batch", "list"))
    yield Case("manifest with options that end", ["list:1: "], files={"list": ['{"input": "a.orvo", "output": "out/a.glb", "options": {"set": ',
                                                                              *["[" * 1000] * 300, *["]" * 1000] * 300, "}}"]},
               arguments=("batch", "list"))


def cases():
    for family in (lengths, memory, manifests):
        yield from family()
