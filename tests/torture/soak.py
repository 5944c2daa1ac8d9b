# SPDX-License-Identifier: GPL-3.0-or-later
"""Logs eight instruments for as long as it is told to: every frame is stored in order, and memory, open files and
threads are at the end what they were when the first file had been changed.
Usage: soak.py QORVIEW-CLI [--minutes M] [--seed S]"""
import pathlib
import random
import select
import time

from torture import Run, arguments, frame, play, records, wait_for

PORTS = 8
MOST_GROWTH = 2048  # kB


def figures(process):
    """Memory in kB, open files, threads."""
    of = pathlib.Path(f"/proc/{process.pid}")
    status = dict(line.split(":", 1) for line in (of / "status").read_text().splitlines())
    return int(status["VmRSS"].split()[0]), len(list((of / "fd").iterdir())), int(status["Threads"])


def play_one(seed):
    dice, sent = random.Random(seed), [0] * PORTS
    # Eight status lines a minute are no load; another file every few minutes is what a mooring does.
    run = Run(options.cli, PORTS, ("--every", "00:05", "--reconnect"))
    begun, measured = time.monotonic(), []
    end = begun + (options.minutes or 0.2) * 60
    try:
        wait_for(run.logs, "the log's begin")
        while time.monotonic() < end:
            for port, line in enumerate(run.lines):
                burst = dice.choice((0, 1, 1, 2))
                line.send(b"".join(frame(sent[port] + i + 1, port) for i in range(burst)))
                sent[port] += burst
            if time.monotonic() - begun > min(60, (end - begun) / 3):
                measured.append(figures(run.process))
            select.select([], [], [], 0.05)
        status, errors = run.end()
        if status:
            return f"it ended with {status}\n{errors}"
        found = [record for path in run.logs() for record in records(path.read_bytes())[0]]
        for port in range(PORTS):
            if [number for of, number in found if of == port] != list(range(1, sent[port] + 1)):
                return f"port {port}: {sent[port]} frames sent are not those of the logs"
        told.append(f", {sum(sent)} frames, memory {measured[0][0]} to {measured[-1][0]} kB (most {max(measured)[0]}), "
                    f"files {measured[0][1]} to {measured[-1][1]}, threads {measured[0][2]} to {measured[-1][2]}")
        if measured[-1][0] - measured[0][0] > MOST_GROWTH or measured[-1][1:] != measured[0][1:]:
            return f"it has grown: {measured[0]} to {measured[-1]}"
        return ""
    finally:
        run.remove()


options, told = arguments(__doc__), []
play("soak", [options.seed or int(time.time())], play_one, options, 600, lambda: "".join(told))
