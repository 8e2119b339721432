#!/usr/bin/env python3
"""Runs commands in turn and prints a table of their medians.

    compare.py TITLE UNIT RUNS [--setup COMMAND] LABEL UNITS COMMAND [LABEL UNITS COMMAND ...]

COMMAND is a shell command; UNITS says how much of UNIT it works on, such as how many corners. All are run once to warm
the files up, and then RUNS times in turn, the SETUP command before each of them. Seconds are those of the clock, CPU
those of the processor; the ratio is of the clock, to the first row."""

import os
import shlex
import statistics
import subprocess
import sys
import time


def run(command):
    """Wall seconds, processor seconds and peak MiB of one run; none when it fails."""
    start = time.monotonic()
    process = subprocess.Popen(shlex.split(command), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        return None
    return time.monotonic() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main():
    arguments = sys.argv[1:]
    if len(arguments) < 3:
        sys.exit(__doc__)
    title, unit, runs = arguments[0], arguments[1], int(arguments[2])
    rest = arguments[3:]
    setup = None
    if rest[:1] == ["--setup"]:
        setup, rest = rest[1], rest[2:]
    rows = [(rest[i], float(rest[i + 1]), rest[i + 2]) for i in range(0, len(rest), 3)]

    results = {label: [] for label, _, _ in rows}
    failed = set()
    for turn in range(runs + 1):
        for label, _, command in rows:
            if label in failed:
                continue
            if setup:
                subprocess.run(shlex.split(setup), check=True)
            result = run(command)
            if result is None:
                failed.add(label)
            elif turn > 0:
                results[label].append(result)

    print(f"\n{title}\n")
    print(f"| | seconds | CPU seconds | ratio | ns per {unit} | peak MiB |")
    print("|---|---:|---:|---:|---:|---:|")
    first = None
    for label, units, _ in rows:
        if label in failed:
            print(f"| {label} | failed | | | | |")
            continue
        wall, cpu, peak = (statistics.median(column) for column in zip(*results[label]))
        first = first or wall
        print(f"| {label} | {wall:.3f} | {cpu:.3f} | {wall / first:.2f} | {wall / units * 1e9:.1f} | {peak:.0f} |", flush=True)


if __name__ == "__main__":
    main()
