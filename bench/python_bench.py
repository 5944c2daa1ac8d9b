#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What Python costs beside the command line: all frames of a log as a dataset, and an archive of logs by Dask beside -j.

    PYTHONPATH=build/release/python bench/python_bench.py build/release/src/qorview-cli . [MEGABYTES]

Each figure is the median of three runs; what it stands beside is measured in the same run.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import qorview

CLI, ROOT = (os.path.abspath(path) for path in sys.argv[1:3])
MEGABYTES = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
DEFINITION = os.path.join(ROOT, "examples", "radiometer.cal")
RUNS = 3


def once(work):
    begin = time.perf_counter()
    work()
    return time.perf_counter() - begin


def seconds(work):
    return statistics.median(once(work) for _ in range(RUNS))


def call(*arguments):
    subprocess.run(arguments, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def make_log(path, megabytes):
    """A simulated log again and again behind its header, until it is as large as wanted."""
    call(CLI, "simulate", "-d", DEFINITION, "--raw-log", "--rate", "max", "--frames", "25600", "--overwrite", "-o", path)
    with open(path, "rb") as file:
        frames = file.read()
    with open(path, "ab") as file:
        for _ in range(max(0, megabytes * 1_000_000 // len(frames) - 1)):
            file.write(frames)


def dataset(folder):
    """Memory that the system gives anew costs more than memory that it has given before, so that what is compared
    is taken in turn."""
    log = os.path.join(folder, "large.raw")
    make_log(log, MEGABYTES)
    opened = qorview.open(log, [DEFINITION])
    rounds = []
    for _ in range(RUNS):
        decode = once(lambda: call(CLI, "decode", "--quiet", "-d", DEFINITION, "--format", "none", log))
        kept = []
        read = once(lambda: kept.append(opened.to_xarray(opened.instruments[0])))
        copy = once(lambda: kept.append(kept[0].copy(deep=True)))
        rounds.append((read / (2 * decode + copy), read, decode, copy))
    ratio, read, decode, copy = (statistics.median(figures) for figures in zip(*rounds))
    print(f"to_xarray of {os.path.getsize(log) / 1e9:.2f} GB: {read:.2f} s; decode --format none {decode:.2f} s, a copy of "
          f"its {kept[0].nbytes / 1e9:.2f} GB {copy:.2f} s; {ratio:.2f} of twice the first and the copy, must be under 1")
    os.remove(log)


def archive(folder):
    logs = [os.path.join(folder, f"log{number}.raw") for number in range(8)]
    make_log(logs[0], 34)
    for log in logs[1:]:
        shutil.copy(logs[0], log)
    name = qorview.open(logs[0], [DEFINITION]).instruments[0]
    store, tables = os.path.join(folder, "archive.nc"), os.path.join(folder, "tables")
    program = os.path.join(ROOT, "examples", "fleet", "fleet.py")

    def verified(*arguments):  # whose times run back where the log begins anew
        subprocess.run(arguments, check=False, capture_output=True)
    fleet = seconds(lambda: verified(sys.executable, program, "-d", DEFINITION, "-i", name, "-o", store, *logs))
    if not os.path.exists(store):
        sys.exit("python_bench: the fleet wrote nothing; run it by itself to see why")

    def jobs():
        verified(CLI, "verify", "-d", DEFINITION, *logs)
        call(CLI, "decode", "--quiet", "--overwrite", "-d", DEFINITION, "-j", "2", "--bin", "1 s", "--format", "netcdf",
             "-o", tables, *logs)
    print(f"eight logs of 34 MB, verified and averaged over seconds: fleet.py with two workers {fleet:.1f} s, verify and "
          f"decode -j 2 --bin {seconds(jobs):.1f} s")


def main():
    folder = tempfile.mkdtemp()
    try:
        dataset(folder)
        archive(folder)
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
