#!/usr/bin/env python3
"""Exports models cut off and with bytes changed, and holds the command to its promises: it doesn't crash, it ends in
time, it keeps to its memory, it exits with 0 or 3, and nothing half-written stays. Prints a table; exits with 1 when a
promise was broken, and with 77 where there are no models.

    scripts/corrupt_models.py build/release/bin/vornel            # every model, 200 cuts and 1,000 changes each
    scripts/corrupt_models.py build/release/bin/vornel --only '*.fbx' --cuts 5 --changes 20 --keep faults
"""
import argparse
import collections
import fnmatch
import multiprocessing
import os
import pathlib
import random
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time

EXTENSIONS = {".dae", ".fbx", ".gltf", ".glb", ".obj", ".ply", ".stl", ".3ds"}
SKIPPED = 77
CHUNK = 20
OLD = b"what stood there before"
# Beyond the limit of reading: what the export takes itself, on a machine that does other things too.
SPARE_SECONDS = 20

Case = collections.namedtuple("Case", "model kind number")
Outcome = collections.namedtuple("Outcome", "case result seconds memory faults")


def corrupt(data, case, options):
    """The model's bytes, cut off or with 1 to 16 bytes changed; the same ones in every run."""
    if case.kind == "cut":
        return data[: len(data) * case.number // options.cuts]
    source = random.Random(f"{options.seed}/{case.model.name}/{case.number}")
    changed = bytearray(data)
    for _ in range(1 << case.number % 5):
        changed[source.randrange(len(changed))] ^= source.randrange(1, 256)
    return bytes(changed)


class Workplace:
    """A worker's own copy of the model's folder, with room for the output and for temporary files."""

    def __init__(self, root):
        self.root = pathlib.Path(tempfile.mkdtemp(dir=root))
        self.model = None

    def enter(self, model):
        if self.model == model:
            return
        self.model = model
        shutil.rmtree(self.root)
        for folder in ("in", "out", "temporary"):
            (self.root / folder).mkdir(parents=True)
        for file in model.parent.iterdir():
            if file.is_file() and file.suffix.lower() not in EXTENSIONS:
                shutil.copyfile(file, self.root / "in" / file.name)
        self.data = model.read_bytes()


workplace = None
options = None


def start_worker(parsed):
    global workplace, options
    signal.signal(signal.SIGTERM, signal.SIG_DFL)
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    options = parsed
    workplace = Workplace(options.root)
    # A command that takes far too much fails instead of taking the machine with it.
    if not options.sanitized:
        most = 4 * options.memory << 20
        resource.setrlimit(resource.RLIMIT_AS, (most, most))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_command(input_file, output):
    """Returns the exit code (negative for a signal), the errors, seconds and MiB. The importer's memory counts too."""
    arguments = [options.command, "export", input_file, "-o", output, "--import-timeout", str(options.timeout),
                 "--import-memory", str(options.memory)]
    environment = {**os.environ, "TMPDIR": str(workplace.root / "temporary")}
    start = time.monotonic()
    with open(workplace.root / "errors", "wb") as errors:
        process = subprocess.Popen(arguments, stdout=errors, stderr=errors, stdin=subprocess.DEVNULL, env=environment)
    alarm = threading.Timer(options.timeout + SPARE_SECONDS, process.kill)
    alarm.start()
    _, status, usage = os.wait4(process.pid, 0)
    alarm.cancel()
    process.returncode = os.waitstatus_to_exitcode(status)
    text = (workplace.root / "errors").read_text("utf-8", "replace")
    return process.returncode, text, time.monotonic() - start, usage.ru_maxrss / 1024


def find_faults(code, errors, seconds, memory, output):
    faults = []
    if code not in (0, 3):
        faults.append(f"exit code {code}: {errors[-300:].strip()}")
    if seconds > options.timeout + SPARE_SECONDS:
        faults.append(f"took {seconds:.0f} s")
    if memory > options.memory and not options.sanitized:
        faults.append(f"took {memory:.0f} MiB")
    written = output.read_bytes()
    if code == 0 and (written[:4] != b"glTF" or struct.unpack_from("<I", written, 8)[0] != len(written)):
        faults.append("exit code 0, but the output isn't sound")
    if code != 0 and written != OLD:
        faults.append("the old output was touched")
    lines = [line for line in errors.splitlines() if line.startswith("vornel: error: ")]
    if code == 3 and len(lines) != 1:
        faults.append(f"{len(lines)} error lines instead of one")
    left = [*output.parent.iterdir(), *(workplace.root / "temporary").iterdir()]
    if left != [output]:
        faults.append(f"left behind: {left}")
    return faults


def sort_result(code, errors):
    if code == 0:
        return "read"
    if "the importer crashed" in errors:
        return "parser crashed"
    return "over a limit" if " its limit of " in errors else "refused"


def run_case(case):
    workplace.enter(case.model)
    input_file = workplace.root / "in" / case.model.name
    data = corrupt(workplace.data, case, options)
    input_file.write_bytes(data)
    output = workplace.root / "out" / "out.glb"
    output.write_bytes(OLD)
    code, errors, seconds, memory = run_command(input_file, output)
    faults = find_faults(code, errors, seconds, memory, output)
    if faults:
        shutil.rmtree(output.parent)
        output.parent.mkdir()
        if options.keep:
            options.keep.mkdir(parents=True, exist_ok=True)
            (options.keep / f"{case.kind}-{case.number}-{case.model.name}").write_bytes(data)
    return Outcome(case, sort_result(code, errors), seconds, memory, faults)


def print_table(outcomes):
    columns = ("read", "refused", "parser crashed", "over a limit")
    print("| format | models | runs | " + " | ".join(columns) + " | broken promises | longest | most memory |")
    print("|---|" + "---|" * (len(columns) + 5))
    for extension in sorted({outcome.case.model.suffix.lower() for outcome in outcomes}):
        rows = [outcome for outcome in outcomes if outcome.case.model.suffix.lower() == extension]
        counts = collections.Counter(row.result for row in rows)
        models = len({row.case.model for row in rows})
        print(f"| {extension} | {models} | {len(rows)} | " + " | ".join(str(counts[column]) for column in columns) +
              f" | {sum(bool(row.faults) for row in rows)} | {max(row.seconds for row in rows):.1f} s"
              f" | {max(row.memory for row in rows):.0f} MiB |")


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", type=lambda text: str(pathlib.Path(text).resolve()))
    models = pathlib.Path(__file__).resolve().parent.parent.parent / "shared" / "models"
    parser.add_argument("--models", type=pathlib.Path, default=models)
    parser.add_argument("--only", default="*", help="models whose names are like this")
    parser.add_argument("--cuts", type=int, default=200)
    parser.add_argument("--changes", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--timeout", type=int, default=3, help="seconds that reading may take")
    parser.add_argument("--memory", type=int, default=512, help="MiB that reading may take")
    parser.add_argument("--keep", type=pathlib.Path, help="folder for the inputs that broke a promise")
    parser.add_argument("--sanitized", action="store_true", help="the command is a sanitizer's build: no memory limit")
    return parser.parse_args()


def run(parsed):
    if not parsed.models.is_dir():
        print(f"SKIPPED, NOTHING WAS TESTED: there is no folder {parsed.models}")
        return SKIPPED
    models = sorted(file for file in parsed.models.rglob("*")
                    if file.suffix.lower() in EXTENSIONS and fnmatch.fnmatch(file.name, parsed.only))
    cases = [Case(model, kind, number) for model in models
             for kind, count in (("cut", parsed.cuts), ("change", parsed.changes)) for number in range(count)]
    # A run that is broken off has looked at all models about as much.
    cases.sort(key=lambda case: (case.number // CHUNK, case.model, case.kind))
    outcomes = []
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    with multiprocessing.Pool(parsed.jobs, start_worker, (parsed,)) as pool:
        try:
            for outcome in pool.imap_unordered(run_case, cases, chunksize=CHUNK):
                outcomes.append(outcome)
                for fault in outcome.faults:
                    case = outcome.case
                    print(f"BROKEN {case.model.name} {case.kind} {case.number}: {fault}", flush=True)
            pool.close()
            pool.join()
        except KeyboardInterrupt:
            signal.signal(signal.SIGTERM, signal.SIG_IGN)
            print(f"BROKEN OFF after {len(outcomes)} of {len(cases)} runs")
    print_table(outcomes)
    return 1 if not outcomes or any(outcome.faults for outcome in outcomes) else 0


def main():
    parsed = parse_options()
    with tempfile.TemporaryDirectory(prefix="corrupt-") as parsed.root:
        return run(parsed)


if __name__ == "__main__":
    sys.exit(main())
