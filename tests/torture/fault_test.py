# SPDX-License-Identifier: GPL-3.0-or-later
"""Lets the n-th system call of every kind fail, once or from there on, while a log is written: the run ends in time,
no file ends inside a record, and what was sent is in the logs or the run says that it failed.
Usage: fault_test.py QORVIEW-CLI FAULTS-LIBRARY [--minutes M]"""
import itertools
import random
import select
import threading
import time

from torture import Run, arguments, frame, play, records, wait_for

# Kind, and which calls fail in the short form.
KINDS = {"write": (1, 4, 5, 12), "open": (1, 3, 4, 6), "short": (2, 5), "torn": (2, 4, 6), "broken": (4, 6), "sync": (1, 2), "close": (3,), "truncate": (1,),
         "unlink": (1,), "flock": (1, 2, 3), "poll": (2, 9), "read": (1, 5, 9), "thread": (1, 2, 3, 4, 5),
         "memory": (100, 300, 400, 500, 600)}
FRAMES = 40
MOST_CALLS = 2000
passed = {}  # kind and mode: from this call on no run has reached the fault
lock = threading.Lock()


def play_one(case):
    kind, number, mode = case
    with lock:
        if number >= passed.get((kind, mode), MOST_CALLS):
            return None
    spare = ("--spare", "{}/spare") if number % 2 else ()
    run = Run(options.cli, options=("--name", "run.raw", *spare), folders=("spare",), LD_PRELOAD=options.library,
              FAULT="%s:%d:%s" % case, FAULT_REACHED="{}/reached")
    try:
        return judge(run, case)
    finally:
        run.remove()


def pause(run, seconds):
    """Waits, but no longer than the program runs."""
    deadline = time.monotonic() + seconds
    while run.process.poll() is None and time.monotonic() < deadline:
        select.select([], [], [], 0.02)


def judge(run, case):
    kind, number, mode = case
    reached = run.folder / "reached"
    wait_for(lambda: run.logs() or run.process.poll() is not None, "the log's begin, or the program's end")
    sent = 0
    while sent < FRAMES and run.process.poll() is None:
        burst = sent % 5 + 1
        run.lines[0].send(b"".join(frame(sent + i + 1) for i in range(burst)))
        sent += burst
        pause(run, 0.02)
    if run.process.poll() is None and not reached.exists():
        wait_for(lambda: reached.exists() or run.stored() >= sent or run.process.poll() is not None, "the last frame")
    pause(run, 0.3 if reached.exists() else 0)
    status, errors = run.end(seconds=20)
    if not reached.exists():
        with lock:
            passed[kind, mode] = min(number, passed.get((kind, mode), number))
    if status is None:
        return f"it did not end\n{errors}"
    if status < 0:
        return f"it was ended by signal {-status}\n{errors}"
    stored = []
    for path in run.logs():
        found, fault = records(path.read_bytes())
        stored += [number for _, number in found]
        if fault and "may end in a part of a record" not in errors:
            return f"{path.name} ends with {fault}\n{errors}"
    if len(set(stored)) != len(stored) or not set(stored) <= set(range(1, sent + 1)):
        return f"frames stand twice in the logs, or were never sent: {stored}\n{errors}"
    if status == 0 and len(stored) != sent:
        return f"{sent - len(stored)} of {sent} frames are missing without a word\n{errors}"
    if status != 0 and "error: " not in errors:
        return f"it ended with {status} and named no failure\n{errors}"
    # A manifest that cannot be written is warned about and does not change the status.
    if kind == "sync" and reached.exists() and status == 0 and "the manifest could not be written" not in errors:
        return f"a synchronisation failed without a word\n{errors}"
    if kind in ("write", "torn", "sync") and mode == "once" and len(stored) != sent:
        return f"{sent - len(stored)} of {sent} frames are missing although another file could be begun\n{errors}"
    if options.show:
        print(f"{case}: status {status}, {len(stored)} of {sent}, {errors.strip()[:300]!r}", flush=True)
    return ""


def cases():
    if options.only:
        kind, number, mode = options.only.split(":")
        return [(kind, int(number), mode)]
    if not options.minutes:
        return [(kind, number, mode) for kind, numbers in KINDS.items() for number in numbers for mode in ("on", "once")]
    modes = list(itertools.product((kind for kind in KINDS if kind != "memory"), ("on", "once")))
    every = [(kind, number, mode) for number in range(1, 200) for kind, mode in modes]
    # A run asks for memory thousands of times: all of them in an order of chance, as far as the time goes.
    memory = [("memory", number, mode) for number in range(1, MOST_CALLS) for mode in ("on", "once")]
    random.shuffle(memory)
    return every + memory


options = arguments(__doc__, "library", only="KIND:N:once|on, only this one", show="prints what each run said")
play("faults", cases(), play_one, options, 60)
