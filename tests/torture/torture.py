# SPDX-License-Identifier: GPL-3.0-or-later
"""What the torture programs share: numbered frames whose every byte is known, instruments at pseudo-terminals,
the program at their other ends, and raw logs taken apart by a reader of their own."""
import argparse
import concurrent.futures
import functools
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "cli"))
from harness import TAG, Line, behind_header, wait_for  # noqa: E402 F401

FRAME = 32


def write_definition(folder, port=0):
    path = folder / f"numbers{port}.cal"
    path.write_text(f"INSTRUMENT QORNU{port} '' 6 AS 0 NONE\nSALT NONE '' 1 BU 0 COUNT\n"
                    "NUMBER NONE '' 3 BU 0 COUNT\n"
                    + "".join(f"LOAD {i} '' 4 BU 0 COUNT\n" for i in range(5))
                    + "FRAMECOUNTER NONE '' 1 BU 0 COUNT\nCHECKSUM NONE '' 1 BU 0 COUNT\n")
    return path


@functools.lru_cache(maxsize=100000)
def frame(number, port=0):
    """Frame of a number: 6 bytes of header, one of chance, 3 of number, 20 that follow from it, counter, sum. No
    beginning of it sums up to zero, so that one whose end has become zeros never passes as whole."""
    dice = random.Random(number * 8 + port)
    while True:
        data = b"QORNU%d" % port + dice.randbytes(1) + number.to_bytes(3, "big") + dice.randbytes(20) + bytes([number & 255])
        if all(sum(data[:length]) & 255 for length in range(6, len(data) + 1)) and b"QOR" not in data[6:]:
            return data + bytes([-sum(data) & 255])


def records(data):
    """(port, number) of each record of a raw log, and what is wrong with it: nothing when it is whole."""
    found, body = [], behind_header(data)
    for at in range(0, len(body), FRAME + TAG):
        record = body[at:at + FRAME + TAG]
        if len(record) < FRAME + TAG:
            return found, f"{len(record)} bytes of a torn record or header"
        port, number = record[5] - ord("0"), int.from_bytes(record[7:10], "big")
        if not 0 <= port <= 7 or record[:FRAME] != frame(number, port):
            return found, f"no frame at {at} behind the header"
        found.append((port, number))
    return found, ""


class Run:
    """qorview-cli log on pseudo-terminals, in a folder that is gone with it; {} in options and environment is it."""

    def __init__(self, cli, ports=1, options=("--name", "run.raw"), folders=(), **environment):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="torture"))
        for name in folders:
            (self.folder / name).mkdir()
        self.lines = [Line() for _ in range(ports)]
        self.call = [cli, "log", "--quiet", "-o", str(self.folder)]
        for port, line in enumerate(self.lines):
            self.call += ["--port", line.name, "-d", str(write_definition(self.folder, port))]
        self.start(options, **environment)

    def start(self, options, **environment):
        self.process = subprocess.Popen([*self.call, *(word.format(self.folder) for word in options)],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        env=os.environ | {key: value.format(self.folder)
                                                          for key, value in environment.items()})

    def logs(self):
        """In the order of their names, a second log of one name ("run-2.raw") behind the first."""
        def place(path):
            stem, _, number = path.stem.rpartition("-")
            again = number.isdigit() and path.with_name(stem + ".raw").exists()
            return (path.parent, stem, int(number)) if again else (path.parent, path.stem, 1)
        return sorted(self.folder.rglob("*.raw"), key=place)

    def stored(self):
        return sum(len(records(path.read_bytes())[0]) for path in self.logs())

    def end(self, number=signal.SIGINT, seconds=30):
        """Exit status and messages; a program that does not end is killed, and its status is None."""
        if self.process.poll() is None:
            self.process.send_signal(number)
        try:
            _, errors = self.process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
            return None, self.process.communicate()[1].decode("latin-1")
        return self.process.returncode, errors.decode("latin-1")

    def remove(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()
        for line in self.lines:
            line.unplug()
        shutil.rmtree(self.folder, ignore_errors=True)


def arguments(summary, *more, **own):
    """The options that the programs share; `more` are names of further positional arguments, `own` texts of options."""
    parser = argparse.ArgumentParser(description=summary)
    parser.add_argument("cli")
    for name in more:
        parser.add_argument(name)
    for name, text in own.items():
        parser.add_argument(f"--{name}", help=text)
    parser.add_argument("--minutes", type=float, help="the long form, for so long")
    parser.add_argument("--rounds", type=int, help="so many rounds, whatever the time")
    parser.add_argument("--seed", type=int, help="only the round of this seed")
    parser.add_argument("--limit", type=float, help="seconds that may be missing")
    parser.add_argument("--jobs", type=int, default=4, help="runs side by side")
    return parser.parse_args()


def play(kind, cases, play_one, options, short_seconds, tally=lambda: ""):
    """Plays the cases side by side until they or the time are at their end. play_one returns what was wrong with
    one, or nothing; None when there was nothing to play. Ends the program with the summary's status."""
    deadline = time.monotonic() + (options.minutes * 60 if options.minutes else short_seconds)
    if options.rounds or options.seed is not None:
        deadline = float("inf")
    done, faults = 0, []

    def guarded(case):
        if time.monotonic() >= deadline:
            return None
        try:
            fault = play_one(case)
            return None if fault is None else (case, fault)
        except Exception as error:  # a program of ours that breaks must not pass for a good run
            return case, f"{type(error).__name__}: {error}"
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for result in pool.map(guarded, cases):
            if result is None:
                continue
            done += 1
            if result[1]:
                faults.append(result)
                print(f"{kind}: {result[0]}: {result[1]}", flush=True)
    print(f"{kind}: {done} rounds{tally()}, {len(faults)} failed", flush=True)
    sys.exit(1 if faults or done == 0 else 0)
