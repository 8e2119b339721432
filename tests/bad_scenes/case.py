"""What a case is: files, a command, and what must come of it."""
import dataclasses
import pathlib
import typing

OLD = b"what stood there before"
CUBE = '{"orvo": 1, "items": [{"name": "C", "mesh": {"box": [1, 1, 1]}}]}'


@dataclasses.dataclass
class Case:
    name: str
    says: typing.Sequence[str]  # each in one line; after a failure in the one error line
    scene: typing.Any = CUBE  # a.orvo: a text, bytes, a list of either, or what makes one; None for no such file
    code: int = 3
    files: typing.Dict[str, bytes] = dataclasses.field(default_factory=dict)
    make: typing.Callable[[pathlib.Path], None] = lambda folder: None  # what else stands in the folder
    arguments: typing.Sequence[str] = ("export", "a.orvo", "-o", "out/a.glb")
    alone: bool = True  # the error line is all that is said; the plug-in's own words may not stand before it
    sanitizable: bool = True
    written: typing.Sequence[str] = ("out/a.glb",)

    def prepare(self, folder):
        (folder / "out").mkdir()
        (folder / "out" / "a.glb").write_bytes(OLD)
        scene = self.scene() if callable(self.scene) else self.scene
        contents = dict(self.files)
        if scene is not None:
            contents["a.orvo"] = scene
        for name, content in contents.items():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            with open(folder / name, "wb") as file:  # piece by piece: what this takes counts as the command's
                for piece in content if isinstance(content, list) else [content]:
                    file.write(piece.encode() if isinstance(piece, str) else piece)
        self.make(folder)
