"""Files that are not what they seem, in the place of the input, an array file, an output or an image."""
import os
import socket

from case import CUBE, OLD, Case

ARRAY = '{"orvo": 1, "items": [{"mesh": {"points": {"file": "@", "count": 9}, "polygons": [[0, 1, 2]]}}]}'
PNG = b"\x89PNG\r\n\x1a\n" + bytes(24)
JPEG = b"\xff\xd8\xff\xe0\0\x10JFIF\0" + bytes(16)


def make_socket(path):
    # A socket's name must be short.
    here = os.open(path.parent, os.O_RDONLY)
    with socket.socket(socket.AF_UNIX) as made:
        made.bind(f"/proc/self/fd/{here}/{path.name}")
    os.close(here)


def make_hard_link(path):
    (path.parent / "other").write_bytes(OLD)
    os.link(path.parent / "other", path)


def make_linked_file(path):
    (path.parent / "other").write_bytes(OLD)
    path.symlink_to("other")


# What stands in the place of a file: how it is made, and what is said of it as an input, an array and an image.
STRANGE = [
    ("directory", os.mkdir, "Is a directory", "is not a file", "it is a folder"),
    ("FIFO", os.mkfifo, "Invalid argument", "is not a file", "it isn't a regular file"),
    ("socket", make_socket, "No such device or address", "is not a file", "it isn't a regular file"),
    ("link to a device", lambda path: path.symlink_to("/dev/zero"), "Invalid argument", "leads out of the scene's directory",
     "it isn't a regular file"),
    ("link to nothing", lambda path: path.symlink_to("nothing"), "No such file", "No such file", "doesn't exist!"),
    ("link to itself", lambda path: path.symlink_to(path.name), "Too many levels of symbolic links",
     "Too many levels of symbolic links", "doesn't exist!"),
    ("link to a folder", lambda path: path.symlink_to("."), "Is a directory", "is not a file", "it is a folder"),
    ("file of another", lambda path: path.symlink_to("/proc/self/mem"), "Input/output error", "leads out", "begin like an image"),
    ("name of nothing", lambda path: None, "No such file", "No such file", "doesn't exist!"),
]


def inputs():
    for name, make, said, _, _ in STRANGE:
        if name == "file of another":
            continue
        for extension in ("orvo", "obj", "fbx"):
            yield Case(f"{name} as {extension}", [f"in.{extension}: {said}"], None,
                       make=lambda folder, make=make, extension=extension: make(folder / f"in.{extension}"),
                       arguments=("export", f"in.{extension}", "-o", "out/a.glb"))
        yield Case(f"{name} to record", [f"in.orvo: {said}"], None, make=lambda folder, make=make: make(folder / "in.orvo"),
                   arguments=("record", "in.orvo", "-o", "out/a.orvo"))
    yield Case("path through a file", ["a.orvo/b.orvo: Not a directory"], arguments=("export", "a.orvo/b.orvo", "-o", "out/a.glb"))
    yield Case("name too long", ["x.orvo: File name too long"], arguments=("export", "x" * 300 + ".orvo", "-o", "out/a.glb"))
    yield Case("path of 5,000 bytes", ["a.orvo: File name too long"],
               arguments=("export", "./" * 2500 + "a.orvo", "-o", "out/a.glb"))
    yield Case("control characters in the name", [".orvo: No such file"], arguments=("export", "a\x1b[2J\n\x07.orvo", "-o", "out/a.glb"))
    yield Case("broken UTF-8 in the name", [".orvo: No such file"], arguments=("export", b"\xff\xfe.orvo", "-o", "out/a.glb"))
    yield Case("empty name", [], arguments=("export", "", "-o", "out/a.glb"))
    yield Case("name of an option", ["--a.orvo: No such file"], arguments=("export", "-o", "out/a.glb", "--", "--a.orvo"))


def arrays():
    place = "a.orvo: /items/0/mesh/points"
    for name, make, _, said, _ in STRANGE:
        yield Case(f"{name} as array", [f"{place}/file: ", said], ARRAY.replace("@", "in.bin"),
                   make=lambda folder, make=make: make(folder / "in.bin"))
    for name, size in (("empty", 0), ("one byte short", 35)):
        yield Case(f"array file {name}", [f'{place}: "in.bin" has {size} bytes, too few for 9 numbers from byte 0'],
                   ARRAY.replace("@", "in.bin"), files={"in.bin": bytes(size)})
    for name, path, said in (
            ("absolute", "/in.bin", "is not a path below"), ("above", "../in.bin", "is not a path below"),
            ("above and back", "b/../in.bin", "is not a path below"), ("folder alone", ".", "is not a file"),
            ("with backslashes", "..\\\\in.bin", "can't read"), ("with a drive", "C:\\\\in.bin", "can't read"),
            ("of a share", "\\\\\\\\host\\\\in.bin", "can't read"), ("as address", "file:///in.bin", "can't read"),
            ("percent-encoded", "%2e%2e/in.bin", "can't read"), ("with a control character", "\\u0001", "can't read"),
            ("with a line end", "a\\nb", "can't read"), ("of 4,096 bytes", "x" * 4096, "File name too long"),
            ("through a link out", "link/passwd", "leads out of the scene's directory")):
        yield Case(f"array path {name}", [f"{place}/file: ", said], ARRAY.replace("@", path),
                   make=lambda folder: (folder / "link").symlink_to("/etc"))
    # These are as good as any other.
    yield Case("hard link as array", [], ARRAY.replace("@", "in.bin"), code=0, files={"other": bytes(36)},
               make=lambda folder: os.link(folder / "other", folder / "in.bin"))
    yield Case("link within the folder as array", [], ARRAY.replace("@", "b/in.bin"), code=0, files={"other": bytes(36), "b/x": b""},
               make=lambda folder: (folder / "b" / "in.bin").symlink_to("../other"))
    yield Case("array at an odd offset", [], ARRAY.replace('"@"', '"in.bin", "offset": 3'), code=0, files={"in.bin": bytes(39)})


def outputs():
    fault = {"code": 4}
    for name, make, *_ in STRANGE:
        # An output is replaced, not written into or through.
        refused = name in ("directory", "link to a folder")
        yield Case(f"{name} as output", ["out/b.glb: is a directory"] if refused else [], code=4 if refused else 0,
                   make=lambda folder, make=make: make(folder / "out" / "b.glb"), arguments=("export", "a.orvo", "-o", "out/b.glb"),
                   written=["out/b.glb"])
    for name, make in (("hard link", make_hard_link), ("link to a file", make_linked_file)):
        yield Case(f"{name} as output", [], code=0, make=lambda folder, make=make: make(folder / "out" / "b.glb"),
                   arguments=("export", "a.orvo", "-o", "out/b.glb"), written=["out/b.glb"])
    for name, output, said in (
            ("in no folder", "no/a.glb", "no/a.glb: there is no folder no"), ("in a file", "a.orvo/a.glb", "a.orvo/a.glb: there is no folder"),
            ("with a name too long", "out/" + "x" * 300 + ".glb", "x.glb: "), ("with a backslash", "out/b\\a.glb", "a path with a backslash"),
            ("of 5,000 bytes", "./" * 2500 + "a.glb", "a.glb: ")):
        yield Case(f"output {name}", [said], arguments=("export", "a.orvo", "-o", output), **fault)
    for name, output in (("without extension", "out/a"), ("of another kind", "out/a.obj"), ("empty", ""), ("that ends with a slash", "out/a.glb/"),
                         ("of a dot alone", ".glb"), ("with a zero in place of o", "out/a.gl0")):
        yield Case(f"output {name}", ["--output"], code=2, arguments=("export", "a.orvo", "-o", output))
    for name, flag in (("log", "--log"), ("report", "--report")):
        yield Case(f"{name} in no folder", [f"no/x: "], arguments=("export", "a.orvo", "-o", "out/a.glb", flag, "no/x"), **fault)
        for how, target in (("the output", "out/a.glb"), ("the output by another road", "out/../out/./a.glb")):
            yield Case(f"{name} in place of {how}", [flag], code=2, arguments=("export", "a.orvo", "-o", "out/a.glb", flag, target))


def link(old, new, make=os.symlink):
    return lambda folder: make(folder / old, folder / new)


def overlaps():
    """An output that is the input, or what it is read with, by any other name."""
    refused = {"code": 4}
    said = "would be written over, but the scene is read from it"
    for name, make in (("link", os.symlink), ("hard link", os.link)):
        yield Case(f"output is the input by a {name}", [f"out/b.glb: {said}"], **refused, make=link("a.orvo", "out/b.glb", make),
                   arguments=("export", "a.orvo", "-o", "out/b.glb"))
        yield Case(f"output is the array by a {name}", [f"out/b.glb: {said}"], ARRAY.replace("@", "in.bin"), **refused,
                   files={"in.bin": bytes(36)}, make=link("in.bin", "out/b.glb", make), arguments=("export", "a.orvo", "-o", "out/b.glb"))
        for flag in ("--log", "--report"):
            yield Case(f"{flag[2:]} is the input by a {name}", [said], **refused, make=link("a.orvo", "out/b", make),
                       arguments=("export", "a.orvo", "-o", "out/a.glb", flag, "out/b"))
    yield Case("output is the input by another road", [f"out/../a.orvo: {said}"], **refused,
               arguments=("record", "a.orvo", "-o", "out/../a.orvo"))
    yield Case("array beside the output", [f"a.bin: {said}"], ARRAY.replace("@", "a.bin"), **refused, files={"a.bin": bytes(36)},
               arguments=("export", "a.orvo", "-o", "a.gltf"))
    yield Case("array beside the output in upper case", [f"a.bin: {said}"], ARRAY.replace("@", "a.bin"), **refused,
               files={"a.bin": bytes(36)}, arguments=("export", "a.orvo", "-o", "a.GLTF"))
    for name, flags in (("output", ["-o", "pic.glb"]), ("output by another road", ["-o", "out/../pic.glb"]), ("log", ["-o", "out/a.glb", "--log", "pic.glb"]),
                        ("report", ["-o", "out/a.glb", "--report", "./pic.glb"])):
        yield Case(f"{name} is an image", [said], textured("pic.glb"), **refused, files={"pic.glb": PNG}, arguments=("export", "a.orvo", *flags))
    yield Case("recorded arrays are an image", [said], textured("b.bin"), **refused, files={"b.bin": PNG},
               arguments=("record", "a.orvo", "-o", "b.orvo", "--binary"))
    yield Case("exported buffer is an image", [said], textured("b.bin"), **refused, files={"b.bin": PNG},
               arguments=("export", "a.orvo", "-o", "b.gltf"))
    yield Case("output is an image by a hard link", [said], textured("pic.png"), **refused, files={"pic.png": PNG},
               make=link("pic.png", "out/b.glb", os.link), arguments=("export", "a.orvo", "-o", "out/b.glb"))
    yield Case("material library is the output", [f"b.bin: {said}"], None, **refused, files={"a.obj": "mtllib b.bin\nv 0 0 0\n", "b.bin": "newmtl a\n"},
               arguments=("export", "a.obj", "-o", "b.gltf"))


def textured(image):
    return ('{"orvo": 1, "items": [{"mesh": {"box": [1, 1, 1], "material": "W"}}, {"type": "polyRender", "children": [{"type": "mask", '
            '"channels": {"ptag": "W", "ptyp": "Material"}, "children": [{"type": "glTFShader"}, {"type": "imageMap", "channels": '
            f'{{"effect": "baseColorGLTF", "swizzling": 1}}, "image": "{image}", "textureLocator": {{"type": "txtrLocator", "channels": '
            '{"projType": 6, "uvMap": "Texture", "tileU": 1, "tileV": 1, "wrapU": 1.0, "wrapV": 1.0}}}]}]}]}')


def images():
    carried = {"code": 0}
    for name, make, _, _, said in STRANGE:
        yield Case(f"{name} as image", [said], textured("in.png"), **carried, make=lambda folder, make=make: make(folder / "in.png"))
    missing = "doesn't exist!"
    for name, path, said in (
            ("above", "../../../../../../etc/passwd", "outside the scene's folder and doesn't begin like an image"),
            ("absolute", "/etc/passwd", "outside the scene's folder and doesn't begin like an image"),
            ("of the system", "/proc/self/environ", "doesn't begin like an image"), ("of memory", "/proc/self/mem", "doesn't begin like an image"),
            ("above with backslashes", "..\\\\..\\\\..\\\\..\\\\etc\\\\passwd", "outside the scene's folder"),
            ("on a drive", "C:\\\\no\\\\a.png", missing), ("on a share", "\\\\\\\\host\\\\share\\\\no.png", missing),
            ("with a device's name", "\\\\\\\\.\\\\PhysicalDrive0", missing), ("as an address of a file", "file:///etc/passwd", missing),
            ("as an address", "http://127.0.0.1/no.png", missing), ("as data", "data:image/png;base64,AAAA", missing),
            ("percent-encoded", "%2e%2e/%2e%2e/etc/passwd", missing), ("of 4,096 bytes", "x" * 4092 + ".png", "Image file path: xxx"),
            ("of 4,096 folders", "x/" * 4096 + "a.png", "Image file path: x"), ("with a control character", "a\\u001b[2Jb.png", missing),
            ("with a line end", "a\\nb.png", missing), ("empty", "", missing), ("of blanks", "   ", missing), ("of dots", "..", "it is a folder"),
            ("with a format", "%s%n%s%n.png", missing), ("with a slash at its end", "in.png/", missing)):
        yield Case(f"image {name}", [said], textured(path), **carried)
    # Images are taken as they stand, whatever is in them.
    for name, content in (("PNG cut in its signature", PNG[:5]), ("PNG without chunks", PNG[:8]), ("PNG with a broken chunk", PNG),
                          ("JPEG cut in its header", JPEG[:3]), ("JPEG with nothing in it", JPEG), ("empty file", b""), ("text", b"no image")):
        yield Case(f"image is a {name}", [], textured("in.png"), **carried, files={"in.png": content})
    for name, content in (("PNG cut in its signature", PNG[:5]), ("JPEG cut in its header", JPEG[:1]), ("empty file", b""), ("text", b"no image")):
        yield Case(f"image elsewhere is a {name}", ["doesn't begin like an image"], None, **carried,
                   files={"elsewhere.png": content, "in/a.orvo": textured("../elsewhere.png")}, arguments=("export", "in/a.orvo", "-o", "out/a.glb"))
    yield Case("image with the name of the export", ["its copy would be in the way of the exported b.bin"], textured("b.bin"), **carried,
               files={"b.bin": PNG}, arguments=("export", "a.orvo", "-o", "out/b.gltf"), written=["out/b.gltf", "out/b.bin"])
    yield Case("image that would overwrite another", ["its copy would overwrite"], None, **carried,
               files={"in/a.orvo": textured("../out/x.png").replace("}]}]}]}", '}, {"type": "imageMap", "channels": {"effect": "normalGLTF"}, "image": "x.png"}]}]}]}'),
                      "in/x.png": PNG, "out/x.png": PNG + b"other"},
               arguments=("export", "in/a.orvo", "-o", "out/b.gltf"), written=["out/b.gltf", "out/b.bin"])


TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\n"
NUMBERS = {"2^31": 2**31, "2^32 - 1": 2**32 - 1, "2^63": 2**63, "-2^63": -2**63, "2^64": 2**64, "2^65": 2**65}


def objects():
    def told(name, text, place, **more):
        return Case(f"OBJ {name}", [place], None, files={"a.obj": text, **more.pop("files", {})},
                    arguments=("export", "a.obj", "-o", "out/a.glb"), **more)

    for name, number in NUMBERS.items():
        for list_name, corner in (("point", f"{number}"), ("texture coordinate", f"3/{number}"), ("normal", f"3//{number}")):
            yield told(f"{list_name} {name}", f"{TRIANGLE}f 1 2 {corner}\n", "a.obj:4: ")
    for name, line, place in (
            ("number 1e999", "v 0 1e999 0", 'a.obj:4: not a finite number "1e999"'), ("number of 1 MiB", "v 0 0 " + "9" * (1 << 20), "a.obj:4: "),
            ("zero byte in a number", "v 0 0 0\0 1", "a.obj:4: "), ("zero byte in a face", "f 1 2 3\0", "a.obj:4: "),
            ("escape sequence in a number", "v 0 0 \x1b[2J", "a.obj:4: "), ("face of a million bad corners", "f" + " 9" * 1_000_000, "a.obj:4: "),
            ("half a million continued lines", [*["f 1 2 \\\n" * 1000] * 500, "x"], "a.obj:")):
        yield told(name, [TRIANGLE, *(line if isinstance(line, list) else [line]), "\n"], place)
    library = TRIANGLE + "vt 0 0\nmtllib @\nusemtl a\nf 1/1 2/1 3/1\n"
    for name, path, said in (
            ("nowhere", "no.mtl", "material library not found: no.mtl"), ("above", "../../../../etc/passwd", "passwd"), ("absolute", "/etc/passwd", "passwd"),
            ("that is a FIFO", "fifo.mtl", "fifo.mtl"), ("that is a folder", "folder.mtl", "folder.mtl"), ("that is a device", "/dev/zero", "zero"),
            ("that is a link out", "link.mtl", "link.mtl"), ("of 4,096 bytes", "x" * 4096, "material library not found"),
            ("with a control character", "a\x1b[2J.mtl", "material library not found")):
        def make(folder):
            os.mkfifo(folder / "fifo.mtl")
            os.mkdir(folder / "folder.mtl")
            (folder / "link.mtl").symlink_to("/etc/passwd")
        yield told(f"library {name}", library.replace("@", path), said, code=0, make=make)
    for name, text, said in (("of binary", bytes(range(256)) * 16, ""), ("with 1e999", "newmtl a\nNs 1e999\n", "a.mtl"), ("with NaN", "newmtl a\nKd nan 0 0\n", "a.mtl"),
                             ("with an image above", "newmtl a\nmap_Kd ../../../../../../etc/passwd\n", "doesn't begin like an image"),
                             ("with a device as image", "newmtl a\nmap_Kd /dev/zero\n", "it isn't a regular file"),
                             ("with an image of 4,096 bytes", "newmtl a\nmap_Kd " + "x" * 4096 + "\n", "Image file path: "),
                             ("with an image on a share", "newmtl a\nmap_Kd \\\\host\\no.png\n", "doesn't exist!")):
        yield told(f"library {name}", library.replace("@", "a.mtl"), said, code=0, files={"a.mtl": text})


def cases():
    for family in (inputs, arrays, outputs, overlaps, images, objects):
        yield from family()
