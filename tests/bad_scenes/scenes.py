"""Scene files that are wrong in themselves."""
import json
import struct

from case import Case

MATRIX = "1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1"
TRIANGLE = '"points": [0,0,0, 1,0,0, 0,1,0], "polygons": [[0,1,2]]'
POINTS = '"points": [0,0,0, 1,0,0, 0,1,0]'
LIMITS = {"2^31": 2**31, "2^32": 2**32, "2^63": 2**63, "2^64": 2**64}


def items(text):
    return f'{{"orvo": 1, "items": [{text}]}}'


def mesh(text):
    return items(f'{{"name": "M", "mesh": {{{text}}}}}')


def told(name, scene, place, **more):
    return Case(name, [f"a.orvo: {place}"], scene, **more)


def skinned(influences):
    return items(f'{{"id": "m", "mesh": {{{TRIANGLE}}}}}, {{"type": "deformGroup", "deformGroup": {{"meshes": ["m"], '
                 f'"deformers": [{{"type": "deformer"}}], "influences": [{influences}]}}}}')


# A place that takes a count or an index, with the numbers it must refuse.
COUNTS = [
    ("count of an array", mesh('"points": {"file": "a.bin", "count": @}'), "/items/0/mesh/points", "2^31 2^32 2^63 2^64"),
    ("offset of an array", mesh('"points": {"file": "a.bin", "count": 3, "offset": @}'), "/items/0/mesh/points",
     "2^31 2^32 2^63 2^64"),
    ("count of values", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "values": {"file": "a.bin", "count": @}}]'),
     "/items/0/mesh/maps/0/values", "2^31 2^63"),
    ("sides", mesh(POINTS + ', "polygons": {"points": [0,1,2], "sides": @}'), "/items/0/mesh/polygons/sides",
     "2^31 2^32 2^63 2^64"),
    ("dimension", mesh(TRIANGLE + ', "maps": [{"type": "ABCD", "dimension": @, "values": [0]}]'),
     "/items/0/mesh/maps/0/dimension", "2^31 2^32 2^63 2^64"),
    ("recorded links", items('{"channels": {"a": {"links": @}}}'), "/items/0/channels/a/links", "2^32 2^63 2^64"),
    ("version", '{"orvo": 1, "application": {"version": [1, @, 0]}}', "/application/version/1", "2^31 2^63"),
    ("build", '{"orvo": 1, "application": {"build": @}}', "/application/build", "2^31 2^64"),
    ("user value", '{"orvo": 1, "userValues": {"a": @}}', "/userValues/a", "2^31 2^63 2^64"),
    ("channel of a link", '{"orvo": 1, "items": [{"id": "a"}], "links": [{"from": ["a", @], "to": ["a", 0]}]}',
     "/links/0/from/1", "2^31 2^32 2^63 2^64"),
    ("channel of a group", items('{"type": "group", "id": "g", "group": {"channels": [["g", @]]}}'),
     "/items/0/group/channels/0/1", "2^31 2^63"),
    ("channel of a clip", items('{"id": "g", "type": "actionclip", "clip": {"channels": [{"channel": ["g", @], "value": 1}]}}'),
     "/items/0/clip/channels/0/channel/1", "2^31 2^63"),
    ("integer channel", items('{"type": "mask", "channels": {"enable": @}}'), "/items/0/channels/enable", "2^31 2^63"),
    ("version of the format", '{"orvo": @}', "/orvo", "2^31 2^64"),
    ("point of a polygon", mesh(POINTS + ', "polygons": [[0, 1, @]]'), "/items/0/mesh/polygons/0/2",
     "2^31 2^32 2^63 2^64"),
    ("point of flat polygons", mesh(POINTS + ', "polygons": {"points": [0, 1, @], "sides": 3}'), "/items/0/mesh",
     "2^31 2^32 2^63 2^64"),
    ("start of a polygon", mesh(POINTS + ', "polygons": {"points": [0, 1, 2], "starts": [0, @]}'), "/items/0/mesh",
     "2^31 2^32 2^63 2^64"),
    ("tag of a polygon", mesh(TRIANGLE + ', "material": {"texts": ["a"], "polygons": [@]}'), "/items/0/mesh",
     "2^31 2^32 2^63"),
    ("value of a point", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "values": [0, 0], "points": [0, 0, @]}]'),
     "/items/0/mesh", "2^31 2^32 2^63"),
    ("value of a corner", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "values": [0, 0], "corners": [0, 0, @]}]'),
     "/items/0/mesh", "2^31 2^32 2^63"),
    ("point of a triangle", mesh(TRIANGLE + ', "triangles": [[[0, 1, @]]]'), "/items/0/mesh/triangles/0/0/2",
     "2^31 2^32 2^63"),
    ("point of flat triangles", mesh(TRIANGLE + ', "triangles": {"starts": [0, 1], "points": [0, 1, @]}'),
     "/items/0/mesh", "2^31 2^32 2^63"),
    ("start of a triangle", mesh(TRIANGLE + ', "triangles": {"starts": [0, @], "points": [0, 1, 2]}'), "/items/0/mesh",
     "2^31 2^32 2^63"),
    ("id of a point", mesh(TRIANGLE + ', "pointIds": [1, 2, @]'), "/items/0/mesh/pointIds/2", "2^64"),
    ("deformer of an influence", skinned("[[[@, 0.5]]]"), "/items/1/deformGroup/influences/0", "2^31 2^32 2^63 2^64"),
    ("deformer of flat influences", skinned('{"starts": [0, 1, 1, 1], "deformers": [@], "weights": [1]}'),
     "/items/1/deformGroup/influences/0", "2^31 2^32 2^63"),
    ("start of influences", skinned('{"starts": [0, @, 1, 1], "deformers": [0], "weights": [1]}'),
     "/items/1/deformGroup/influences/0", "2^31 2^32 2^63"),
]


MAY_BE_NEGATIVE = {"version", "build", "user value", "integer channel"}


def counts():
    for name, scene, place, limits in COUNTS:
        for limit in limits.split():
            yield told(f"count {name} {limit}", scene.replace("@", str(LIMITS[limit])), place,
                       files={"a.bin": bytes(36)})
        if name not in MAY_BE_NEGATIVE:
            yield told(f"count {name} negative", scene.replace("@", "-2"), place, files={"a.bin": bytes(36)})


DEPTH = 1_000_000
# What opens a level, with what stands before the first and behind the last.
NESTS = [
    ("lists", "", "[", ""),
    ("objects", "", '{"a":', ""),
    ("items", '{"orvo":1,"items":', '[{"children":', ""),
    ("texture locators", '{"orvo":1,"items":[', '{"textureLocator":', ""),
    ("deformers", '{"orvo":1,"items":', '[{"deformers":', ""),
    ("numbers", '{"orvo":1,"items":[{"mesh":{"points":', "[", ""),
    ("numbers that end early", '{"orvo":1,"items":[{"mesh":{"points":', "[", "]}}]}"),
    ("numbers behind others", '{"orvo":1,"items":[{"mesh":{"points":[' + "0," * 200, "[", "]]}}]}"),
    ("polygons", '{"orvo":1,"items":[{"mesh":{"polygons":', "[", ""),
    ("a comment", '{"orvo":1,"comment":', "[", ""),
]


def nests():
    for name, before, level, behind in NESTS:
        yield Case(f"nested {name}", ["a.orvo:1:", "nested deeper than 2000 levels"],
                   lambda before=before, level=level, behind=behind: [before, *[level * 1000] * (DEPTH // 1000), behind])


def ring(count, key="parent", more=""):
    return items(",".join(f'{{"id": "i{i}", "{key}": "i{(i + 1) % count}"{more}}}' for i in range(count)))


def cycles():
    accepted = {"code": 0}
    yield told("circle of itself", ring(1), '/items/0/parent: the parents of "i0" run in a circle')
    yield told("circle of 10,000 parents", lambda: ring(10_000), '/items/0/parent: the parents of "i0" run in a circle')
    yield told("circle of children", items('{"id": "a", "children": ["b"]}, {"id": "b", "children": ["a"]}'),
               '/items/0: the parents of "a" run in a circle')
    yield told("circle of masks", ring(3, more=', "type": "mask"'), '/items/0/parent: the parents of "i0" run in a circle')
    yield told("circle of a type", '{"orvo": 1, "types": {"a": "a"}}', "/types/a: the types run in a circle")
    yield told("circle behind a type", '{"orvo": 1, "types": {"x": "a", "a": "b", "b": "a"}}', "/types/a: the types run in a circle")
    types = '{"orvo": 1, "types": {' + ", ".join(f'"t{i}": "' + (f"t{i - 1}" if i else "locator") + '"' for i in range(300)) + "}}"
    yield told("300 types", types, "/types: 300 types; a scene can add 256")
    yield told("20 types in a row", types.split(', "t20"')[0] + "}}", "/types/t")
    # A host has such circles too and copes with them.
    yield Case("circle of transforms", [], items('{"id": "t", "transforms": ["t"]}'), **accepted)
    yield Case("circle of instances", [], ring(3, "source", ', "type": "meshInst"'), **accepted)
    yield Case("circle of texture locators", [], items('{"type": "imageMap", "id": "i", "textureLocator": "i"}'), **accepted)
    yield Case("circle of inverses", [], ring(3, "inverseOf", ', "type": "transform"'), **accepted)
    yield Case("circle of joints", [], ring(3, "joint", ', "type": "deformer"'), **accepted)
    for graph in ("xfrmCore", "xfrmLocal", "deformers", "targets", "currentGroups", "own"):
        yield Case(f"circle in graph {graph}", [],
                   '{"orvo": 1, "items": [{"id": "a", "mesh": {"box": [1, 1, 1]}}, {"id": "b"}], "graphs": '
                   f'{{"{graph}": [["a", "b"], ["b", "a"], ["a", "a"]]}}}}', **accepted)
    for channel in ("pos.X", "worldMatrix", "localMatrix", "parentMatrix", "wposMatrix", "value"):
        owner = "{}.position" if channel == "pos.X" else "{}"
        ends = [owner.format(name) for name in "ab"]
        yield Case(f"circle of links of {channel}", [],
                   '{"orvo": 1, "time": {"end": 1}, "items": [' +
                   ",".join(f'{{"id": "{name}", "position": [1, 2, 3], "channels": {{"value": 1}}}}' for name in "ab") +
                   '], "links": [' + ",".join(f'{{"from": ["{one}", "{channel}"], "to": ["{other}", "{channel}"]}}'
                                              for one, other in (ends, ends[::-1], ends[:1] * 2)) + "]}", **accepted)
    yield Case("twice the id of a point", [], mesh(TRIANGLE + ', "pointIds": [1, 1, 2]'), **accepted)
    yield Case("circle of groups", [], items('{"id": "a", "type": "group", "actor": true, "group": {"items": ["b", "a"]}}, '
                                             '{"id": "b", "type": "group", "actor": true, "group": {"items": ["a"]}}'), **accepted)


# An object with a place, and a member that stands in it twice.
TWICE = [
    ("root", '{"orvo": 1, @}', "", '"items": []'),
    ("application", '{"orvo": 1, "application": {@}}', "/application", '"name": "a"'),
    ("user values", '{"orvo": 1, "userValues": {@}}', "/userValues", '"a": 1'),
    ("types", '{"orvo": 1, "types": {@}}', "/types", '"a": "mesh"'),
    ("meshes", '{"orvo": 1, "meshes": {@}}', "/meshes", '"a": {}'),
    ("graphs", '{"orvo": 1, "graphs": {@}}', "/graphs", '"a": []'),
    ("links", '{"orvo": 1, "items": [{"id": "a"}], "links": [{"from": ["a", 0], @}]}', "/links/0", '"to": ["a", 1]'),
    ("item", items("{@}"), "/items/0", '"name": "a"'),
    ("channels", items('{"channels": {@}}'), "/items/0/channels", '"a": 1'),
    ("channel", items('{"channels": {"a": {@}}}'), "/items/0/channels/a", '"value": 1'),
    ("channel of a list", items('{"channels": [{"name": "a", @}]}'), "/items/0/channels/0", '"value": 1'),
    ("envelope", items('{"channels": {"a": {"keys": {@}}}}'), "/items/0/channels/a/keys", '"keys": [[0, 0]]'),
    ("vector", items('{"position": {@}}'), "/items/0/position", '"keys": [[0, 0, 0, 0]]'),
    ("transform", items('{"transforms": [{"type": "scale", @}]}'), "/items/0/transforms/0", '"main": true'),
    ("main transforms", items('{"mainTransforms": {@}}'), "/items/0/mainTransforms", '"scale": null'),
    ("world", items('{"world": {@}}'), "/items/0/world", f'"bind": [{MATRIX}]'),
    ("tags", items('{"tags": {@}}'), "/items/0/tags", '"GTYP": "actor"'),
    ("mesh", mesh("@"), "/items/0/mesh", '"box": [1, 1, 1]'),
    ("array", mesh('"points": {"file": "a.bin", @}'), "/items/0/mesh/points", '"count": 3'),
    ("polygons", mesh(POINTS + ', "polygons": {"points": [0, 1, 2], @}'), "/items/0/mesh/polygons", '"sides": 3'),
    ("polygon tags", mesh('"material": {"polygons": [], @}'), "/items/0/mesh/material", '"texts": []'),
    ("map", mesh('"maps": [{"type": "TXUV", @}]'), "/items/0/mesh/maps/0", '"values": []'),
    ("triangles", mesh('"triangles": {"starts": [0], @}'), "/items/0/mesh/triangles", '"points": []'),
    ("deform group", items('{"type": "deformGroup", "deformGroup": {@}}'), "/items/0/deformGroup", '"meshes": []'),
    ("influences", skinned('{"starts": [0, 0, 0, 0], "deformers": [], @}'), "/items/1/deformGroup/influences/0", '"weights": []'),
    ("group", items('{"type": "group", "group": {@}}'), "/items/0/group", '"items": []'),
    ("clip", items('{"type": "actionclip", "clip": {@}}'), "/items/0/clip", '"active": true'),
    ("motion", items('{"id": "a"}, {"type": "actionclip", "clip": {"motion": {@}}}'), "/items/1/clip/motion", '"a": {}'),
]


def duplicates():
    for name, scene, place, member in TWICE:
        key = member.split('"')[1]
        yield told(f"twice in {name}", scene.replace("@", f"{member}, {member}"),
                   f'{place}{": " if place else ""}key "{key}" stands twice')
    yield told("twice by an escape", r'{"orvo": 1, "items": [], "\u0069tems": []}', 'key "items" stands twice')
    yield told("twice the id of a transform", items('{"id": "a.scale"}, {"id": "a.scale", "type": "scale"}'),
               '/items/1/id: "a.scale" is the id of another item already')
    yield told("twice the id of the scene item", items('{"id": "x"}, {"id": "x", "type": "scene"}'), "/items/1/id: ")
    yield told("two scene items", items('{"type": "scene"}, {"type": "scene"}'), "/items/1: a scene has one scene item")
    yield told("twice the name that a link needs",
               '{"orvo": 1, "items": [{"name": "a"}, {"name": "a"}], "links": [{"from": ["a", 0], "to": ["a", 1]}]}',
               '/links/0/from/0: 2 items are named "a": give them ids')
    yield told("one child of two", items('{"id": "a"}, {"children": ["a"]}, {"children": ["a"]}'),
               "/items/2/children/0: the item has another parent")
    yield told("a box with polygons", mesh('"box": [1, 1, 1], "polygons": []'), "/items/0/mesh/box: ")
    yield told("two smoothing angles", mesh('"smoothingAngle": 1, "smoothingRadians": 1'), "/items/0/mesh/smoothing")


def numbers():
    places = [("end of time", '{"orvo": 1, "time": {"end": @}}'), ("position", items('{"position": [0, @, 0]}')),
              ("point", mesh('"points": [0, @, 0]')), ("key", items('{"channels": {"a": {"keys": [[0, @]]}}}')),
              ("matrix", items('{"world": [@]}')), ("link", '{"orvo": 1, "links": [{"factor": @}]}')]
    for place, scene in places:
        for token in ("NaN", "-Infinity", "1e999", "-1e999"):
            column = scene.index("@") + 1
            yield Case(f"{token} as {place}", [f"a.orvo:1:{column}"[:9]], scene.replace("@", token))
    for token in ("inf", "0x10", "01", "1.", ".5", "+1", "1e", "--1", "1_0"):
        yield Case(f"{token} as a number", ["a.orvo:1:"], f'{{"orvo": 1, "time": {{"end": {token}}}}}')
    for name, number in (("NaN", float("nan")), ("infinity", float("inf"))):
        for place, code, scene, told_at in ARRAYS_OF_FLOATS:
            count = scene.split('"count": ')[1].split("}")[0]
            values = struct.pack(f"<{count}{code}", *[1.0] * (int(count) - 1), number)
            yield told(f"{name} in binary {place}", scene, told_at, files={"a.bin": values})
    yield told("f64 too big for f32", mesh('"points": {"file": "a.bin", "count": 3, "type": "f64"}'),
               "/items/0/mesh/points: number 2 is too big for 32 bits", files={"a.bin": struct.pack("<3d", 0, 0, 1e39)})
    yield told("u64 too big for u32", mesh(POINTS + ', "polygons": {"points": {"file": "a.bin", "count": 3, "type": "u64"}, "sides": 3}'),
               "/items/0/mesh/polygons/points: number 2 is too big for 32 bits", files={"a.bin": struct.pack("<3Q", 0, 1, 2**32)})


ARRAYS_OF_FLOATS = [
    ("points", "f", mesh('"points": {"file": "a.bin", "count": 9}, "polygons": [[0, 1, 2]]'), "/items/0/mesh"),
    ("values", "f", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "per": "point", "values": {"file": "a.bin", "count": 6}}]'),
     "/items/0/mesh"),
    ("normals", "d", mesh(TRIANGLE + ', "cornerNormals": {"file": "a.bin", "count": 9}'), "/items/0/mesh"),
    ("matrices", "d", items('{"world": {"times": [0], "matrices": {"file": "a.bin", "count": 16}}}'), "/items/0/world/matrices"),
    ("times", "d", items(f'{{"world": {{"times": {{"file": "a.bin", "count": 1}}, "matrices": [{MATRIX}]}}}}'), "/items/0/world/times"),
    ("weights", "f", skinned('{"starts": [0, 1, 1, 1], "deformers": [0], "weights": {"file": "a.bin", "count": 1}}'),
     "/items/1/deformGroup/influences/0"),
]


def overflows():
    """Numbers that are right each, but nothing that a glTF can hold comes of them."""
    keys = '{"keys": [[0, 0, 0, 0], [1, 1, 1, 1]]}'
    moving = f'{{"position": {keys}}}'
    yield Case("matrix beyond f32", ['out/a.glb: not written: a number that is infinite or not a number: the matrix of "A"'],
               items('{"name": "A", "position": [1e300, 0, 0]}'), code=4)
    yield Case("keys beyond f32", ['out/a.glb: not written: an infinite value: the sampled translation of "A"'],
               '{"orvo": 1, "time": {"end": 1}, "items": [{"name": "A", "position": {"keys": [[0, 0, 0, 0], [1, 1e300, 0, 0]]}}]}',
               code=4)
    for name, start, end, fps in (("a range without end", 0, 1e300, 24), ("a rate without end", 0, 1, 1e300),
                                  ("a range just too long", 0, 2**28, 1)):
        yield Case(f"time of {name}", ["a.orvo: /time: "],
                   json.dumps({"orvo": 1, "time": {"start": start, "end": end, "fps": fps}})[:-1] + f', "items": [{moving}]}}')
    for name, time in (("a negative rate", '"end": 10, "fps": -24'), ("steps that are lost", '"start": 1e17, "end": 1.00000000000000064e17')):
        yield Case(f"time of {name}", [], f'{{"orvo": 1, "time": {{{time}}}, "items": [{moving}]}}', code=0)
    yield Case("time that nothing samples", [], '{"orvo": 1, "time": {"end": 1e300}, "items": [{"name": "A"}]}', code=0)


def encodings():
    broken = {"a lone continuation": b"\x80", "a cut sequence": b"\xe2\x82", "an overlong slash": b"\xc0\xaf",
              "an overlong zero": b"\xc0\x80", "a surrogate": b"\xed\xa0\x80", "beyond U+10FFFF": b"\xf4\x90\x80\x80",
              "byte FE": b"\xfe", "Latin-1": b"M\xfcller"}
    for name, text in broken.items():
        yield Case(f"UTF-8 with {name}", ["a.orvo:1:"], b'{"orvo": 1, "items": [{"name": "' + text + b'"}]}')
    yield Case("UTF-8 broken in a key", ["a.orvo:1:"], b'{"orvo": 1, "userValues": {"\xff": 1}}')
    yield Case("UTF-8 broken outside a text", ["a.orvo:1:"], b'{"orvo": 1, \xff}')
    yield Case("UTF-8 broken in a path", ["a.orvo:1:"], b'{"orvo": 1, "items": [{"type": "imageMap", "image": "\xff.png"}]}')
    for name in ("utf-16", "utf-16-be", "utf-32"):
        yield Case(f"a scene in {name}", ["a.orvo:1:1: "], '{"orvo": 1}'.encode(name))
    yield Case("two byte order marks", ["a.orvo:1:"], b"\xef\xbb\xbf\xef\xbb\xbf" + b'{"orvo": 1}')
    for name, escape in (("high", r"\ud800"), ("low", r"\udc00"), ("pair turned round", r"\udc00\ud800"), ("half a pair", r"\ud800a")):
        yield Case(f"lone surrogate {name}", ["a.orvo:1:"], f'{{"orvo": 1, "comment": "{escape}"}}')
    for name, text in (("zero byte in a text", b'{"orvo": 1, "comment": "a\0b"}'), ("zero byte between", b'{"orvo":\0 1}'),
                       ("zero bytes alone", bytes(100)), ("control character in a text", b'{"orvo": 1, "comment": "\x1b"}'),
                       ("zero character in a key", rb'{"orvo": 1, "userValues": {"a\u0000": 1}}'),
                       ("bad escape", rb'{"orvo": 1, "comment": "\x"}'), ("cut escape", rb'{"orvo": 1, "comment": "\u12"}')):
        yield Case(name, ["a.orvo:1:"], text)
    # Escaped control characters are right in a file; the message must not send them to a terminal.
    yield told("escape sequence in a reference", items(r'{"parent": "\u001b[2J\u0007"}'), "/items/0/parent: no item has the id")
    yield told("line end in a key", items(r'{"a\nb": 1}'), "/items/0/")
    yield told("text of 1 MiB", lambda: items('{"parent": "' + "x" * (1 << 20) + '"}'), "/items/0/parent: no item has the id")
    yield told("key of 1 MiB", lambda: items('{"' + "x" * (1 << 20) + '": 1}'), "/items/0/")


# Lists of references and of numbers, with an entry that leads nowhere.
OUT_OF_RANGE = [
    ("selection", '{"orvo": 1, "selection": ["no"]}', '/selection/0: no item has the id "no"'),
    ("render cameras", '{"orvo": 1, "renderCameras": ["no"]}', "/renderCameras/0: "),
    ("graph", '{"orvo": 1, "items": [{"id": "a"}], "graphs": {"own": [["a", "no"]]}}', "/graphs/own/0/1: "),
    ("link's item", '{"orvo": 1, "items": [{"id": "a"}], "links": [{"from": ["a", 0], "to": ["no", 0]}]}', "/links/0/to/0: "),
    ("children", items('{"children": ["no"]}'), "/items/0/children/0: "),
    ("transforms", items('{"transforms": ["no"]}'), "/items/0/transforms/0: "),
    ("main transform", items('{"mainTransforms": {"scale": "no"}}'), "/items/0/mainTransforms/scale: "),
    ("inverse", items('{"type": "transform", "inverseOf": "no"}'), "/items/0/inverseOf: "),
    ("source", items('{"type": "meshInst", "source": "no"}'), "/items/0/source: "),
    ("texture locator", items('{"type": "imageMap", "textureLocator": "no"}'), "/items/0/textureLocator: "),
    ("joint", items('{"type": "deformer", "joint": "no"}'), "/items/0/joint: "),
    ("deformers", items('{"mesh": {}, "deformers": ["no"]}'), "/items/0/deformers/0: "),
    ("group of deformers", items('{"type": "deformGroup", "deformGroup": {"deformers": ["no"]}}'), "/items/0/deformGroup/deformers/0: "),
    ("deformed meshes", items('{"type": "deformGroup", "deformGroup": {"meshes": ["no"]}}'), "/items/0/deformGroup/meshes/0: "),
    ("influences of one mesh too many", skinned("null, null"), "/items/1/deformGroup/influences"),
    ("influences of one point too many", skinned("[[], [], [], []]"), "/items/1/deformGroup/influences/0"),
    ("starts that fall", skinned('{"starts": [0, 1, 0, 1], "deformers": [0], "weights": [1]}'), "/items/1/deformGroup/influences/0"),
    ("fewer weights", skinned('{"starts": [0, 1, 1, 1], "deformers": [0], "weights": []}'), "/items/1/deformGroup/influences/0"),
    ("weight too big", skinned("[[[0, 1e39]]]"), "/items/1/deformGroup/influences/0"),
    ("group's items", items('{"type": "group", "group": {"items": ["no"]}}'), "/items/0/group/items/0: "),
    ("group's channels", items('{"id": "g", "type": "group", "group": {"channels": [["g", "no"]]}}'), "/items/0/group/channels/0/1: "),
    ("clip's channel", items('{"id": "g", "type": "actionclip", "clip": {"channels": [{"channel": ["no", 0]}]}}'),
     "/items/0/clip/channels/0/channel/0: "),
    ("motion without such a transform", items('{"id": "a"}, {"type": "actionclip", "clip": {"motion": {"a": {"scale": [1, 1, 1]}}}}'),
     "/items/1/clip/motion/a"),
    ("polygon starts that fall", mesh(POINTS + ', "polygons": {"points": [0,1,2,0,1,2], "starts": [0, 4, 3, 6]}'), "/items/0/mesh"),
    ("polygon starts that end early", mesh(POINTS + ', "polygons": {"points": [0,1,2], "starts": [0, 2]}'), "/items/0/mesh"),
    ("polygon starts that begin late", mesh(POINTS + ', "polygons": {"points": [0,1,2], "starts": [1, 3]}'), "/items/0/mesh"),
    ("no polygon starts", mesh(POINTS + ', "polygons": {"points": [0,1,2], "starts": []}'), "/items/0/mesh"),
    ("triangle starts that fall", mesh(TRIANGLE + ', "triangles": {"starts": [1, 0], "points": [0, 1, 2]}'), "/items/0/mesh"),
    ("triangle of another polygon", mesh('"points": [0,0,0, 1,0,0, 0,1,0, 1,1,0], "polygons": [[0,1,2],[1,2,3]], "triangles": [[[1,2,3]],[]]'),
     "/items/0/mesh"),
    ("fewer point ids", mesh(TRIANGLE + ', "pointIds": [1]'), "/items/0/mesh"),
    ("values per corner", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "per": "corner", "values": [0, 0]}]'), "/items/0/mesh/maps/0/values: "),
    ("fewer points of a map", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "values": [0, 0], "points": [0]}]'), "/items/0/mesh"),
    ("half a value", mesh(TRIANGLE + ', "maps": [{"type": "TXUV", "values": [0, 0, 0]}]'), "/items/0/mesh/maps/0/values: "),
    ("world times that fall", items(f'{{"world": {{"times": [1, 0], "matrices": [{MATRIX}, {MATRIX}]}}}}'), "/items/0/world/times"),
    ("world of nothing", items('{"world": {}}'), "/items/0/world"),
    ("shared mesh", '{"orvo": 1, "meshes": {"m": {"polygons": [[0, 0, 0]]}}, "items": [{"mesh": "m"}]}', "/meshes/m/polygons/0/0: "),
    ("keys that stand still", items('{"position": {"keys": [[0, 0, 0, 0], [0, 1, 1, 1]]}}'), "/items/0/position/keys/1: "),
]


def references():
    for name, scene, place in OUT_OF_RANGE:
        yield told(f"out of range: {name}", scene, place)


def cases():
    for family in (counts, nests, cycles, duplicates, numbers, overflows, encodings, references):
        yield from family()
