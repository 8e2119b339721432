#!/usr/bin/env python3
"""Measures whole runs of the command on scenes of several sizes, and prints ratios.

    bench/measure.py COMMAND [TRIANGLES ...]

makes each scene in a temporary folder, runs every command in turn five times and takes the fastest run of each. Prints
user plus system seconds and peak memory a triangle corner, as multiples of those of the first size."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

RUNS = 5
REPOSITORY = Path(__file__).resolve().parent.parent


def run(command):
    """Processor seconds, wall seconds and peak bytes of one run."""
    start = os.times().elapsed
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"failed: {' '.join(command)}")
    return usage.ru_utime + usage.ru_stime, os.times().elapsed - start, usage.ru_maxrss * 1024


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    command = sys.argv[1]
    sizes = [int(size) for size in sys.argv[2:]] or [100_000, 1_000_000, 5_000_000]
    with tempfile.TemporaryDirectory() as folder:
        jobs = {}
        for size in sizes:
            scene = Path(folder) / f"{size}.orvo"
            make = [sys.executable, REPOSITORY / "scripts/make_scene.py", str(size), scene, "--obj"]
            subprocess.run(make, check=True, stdout=subprocess.DEVNULL)
            for kind in ".orvo", ".obj":
                jobs[kind, size] = [command, "export", str(scene.with_suffix(kind)), "-o",
                                    str(scene.with_suffix(".glb")), "--indices", "32", "-q"]
        best = {}
        for _ in range(RUNS):
            for key, job in jobs.items():
                result = run(job)
                best[key] = tuple(map(min, result, best.get(key, result)))
        print(f"{'input':6} {'triangles':>10} {'seconds':>8} {'wall':>8} {'ns/corner':>10} {'ratio':>6} {'bytes/corner':>13} {'ratio':>6}")
        for (kind, size), (seconds, wall, peak) in best.items():
            first = best[kind, sizes[0]]
            time_ratio = seconds / size / (first[0] / sizes[0])
            peak_ratio = peak / size / (first[2] / sizes[0])
            print(f"{kind:6} {size:10} {seconds:8.3f} {wall:8.3f} {seconds / size / 3 * 1e9:10.1f} {time_ratio:6.2f} "
                  f"{peak / size / 3:13.1f} {peak_ratio:6.2f}")


if __name__ == "__main__":
    main()
