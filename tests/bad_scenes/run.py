#!/usr/bin/env python3
"""Exports several hundred bad scenes and holds the command to its promises: it ends with the right exit code, says in one
line which file and which place in it is wrong, leaves all files as they were, and takes less than a second and 64 MiB.
Prints each broken promise and the figures; exits with 1 when there was one.

    tests/bad_scenes/run.py build/release/bin/vornel
    tests/bad_scenes/run.py build/release/bin/vornel --only 'parents*' --show
"""
import argparse
import collections
import fnmatch
import multiprocessing.pool
import os
import pathlib
import resource
import shutil
import stat
import subprocess
import sys
import tempfile
import threading

import files
import limits
import scenes

PREFIX = "vornel: error: "
PATIENCE = 60  # seconds, after which a run counts as hanging
SECONDS = 1  # of processor time
MEBIBYTES = 64
LARGE = 1 << 20  # files of more bytes are not compared

Outcome = collections.namedtuple("Outcome", "name code text seconds memory faults")

options = None


def snapshot(folder):
    """What stands in the folder: for each name its kind and what is in it."""
    found = {}
    for path in folder.rglob("*"):
        mode = path.lstat().st_mode
        content = path.read_bytes()if stat.S_ISREG(mode) and path.stat().st_size < LARGE else None
        found[str(path.relative_to(folder))] = (stat.S_IFMT(mode), os.readlink(path) if path.is_symlink() else content)
    return found


def run_command(case, folder):
    """Returns the exit code (negative for a signal), what it said, processor seconds and MiB."""
    with tempfile.TemporaryFile() as said:
        process = subprocess.Popen([options.command, *case.arguments], cwd=folder, stdout=said, stderr=said,
                                   stdin=subprocess.DEVNULL)
        alarm = threading.Timer(PATIENCE, process.kill)
        alarm.start()
        _, status, usage = os.wait4(process.pid, 0)
        alarm.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        said.seek(0)
        text = said.read()
    return process.returncode, text, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def check_text(case, code, said):
    """Whether it says what is wrong and where, in one line that does a terminal no harm."""
    text = said.decode("utf-8", "replace")
    if any(byte < 0x20 and byte != 0x0A or byte == 0x7F for byte in said):
        yield "control characters among the messages"
    lines = text.split("\n")
    if code != 0:
        lines = [line[len(PREFIX):] for line in lines if line.startswith(PREFIX)]
        if case.alone and (len(lines) != 1 or text.count("\n") != 1):
            yield f"{text.count(chr(10))} lines instead of one"
    for wanted in case.says:
        if not any(wanted in line for line in lines):
            yield f"it doesn't say {wanted!r}"


def check_files(case, code, before, after):
    changed = {name for name in before.keys() | after.keys() if before.get(name) != after.get(name)}
    if code == 0:
        changed -= set(case.written)
        missing = [name for name in case.written if name not in after]
        if missing:
            yield f"{missing} weren't written"
    if changed:
        yield f"it changed {sorted(changed)}"


def check_costs(seconds, memory):
    if options.sanitized:
        return
    if seconds > SECONDS:
        yield f"it took {seconds:.1f} s"
    if memory > MEBIBYTES:
        yield f"it took {memory:.0f} MiB"


def run_case(case):
    folder = pathlib.Path(tempfile.mkdtemp(dir=options.root))
    try:
        case.prepare(folder)
        before = snapshot(folder)
        code, said, seconds, memory = run_command(case, folder)
        faults = [f"exit code {code} instead of {case.code}"] if code != case.code else []
        faults += [*check_text(case, code, said), *check_files(case, code, before, snapshot(folder)),
                   *check_costs(seconds, memory)]
        return Outcome(case.name, code, said.decode("utf-8", "replace"), seconds, memory, faults)
    finally:
        shutil.rmtree(folder)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", type=lambda text: str(pathlib.Path(text).resolve()))
    parser.add_argument("--only", default="*", help="cases whose names are like this")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--show", action="store_true", help="show what is said")
    parser.add_argument("--sanitized", action="store_true", help="the command is a sanitizer's build: costs are free")
    global options
    options = parsed = parser.parse_args()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    cases = [*scenes.cases(), *files.cases(), *limits.cases()]
    names = collections.Counter(case.name for case in cases)
    assert max(names.values()) == 1, [name for name, count in names.items() if count > 1]
    cases = [case for case in cases if fnmatch.fnmatch(case.name, parsed.only)
             and (case.sanitizable or not parsed.sanitized)]
    outcomes = []
    with tempfile.TemporaryDirectory(prefix="bad-scenes-") as parsed.root:
        with multiprocessing.pool.ThreadPool(parsed.jobs) as pool:
            for outcome in pool.imap(run_case, cases):
                outcomes.append(outcome)
                for fault in outcome.faults:
                    print(f"BROKEN {outcome.name}: {fault}")
                if parsed.show or outcome.faults:
                    print("".join(f"    {line[:300]!r}\n" for line in outcome.text.split("\n")[:6] if line), end="", flush=True)
    codes = ", ".join(f"{count} end with {code}" for code, count in
                      sorted(collections.Counter(outcome.code for outcome in outcomes).items()))
    broken = sum(bool(outcome.faults) for outcome in outcomes)
    print(f"{len(outcomes)} bad scenes: {codes}; {broken} break a promise; at most "
          f"{max(outcome.seconds for outcome in outcomes):.2f} s, {max(outcome.memory for outcome in outcomes):.0f} MiB")
    return 1 if broken or not outcomes else 0


if __name__ == "__main__":
    sys.exit(main())
