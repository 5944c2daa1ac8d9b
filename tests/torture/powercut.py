# SPDX-License-Identifier: GPL-3.0-or-later
"""Cuts the power at every event of a log's life: from a trace of writes and synchronisations come the states in which the
disk can be left, and each is decoded. What was synchronised is there; of what came after, each block of 512 bytes may
be there or not, and the file may have any length in between. Before every synchronisation all these states are
enumerated, for a log grows at its end alone: those of an earlier cut are among them. In between some are drawn. Nothing
is decoded that was not sent, and nothing is missing that was sent longer before the cut than the limit.
Usage: powercut.py QORVIEW-CLI FAULTS-LIBRARY [--minutes M] [--limit SECONDS]"""
import itertools
import json
import pathlib
import random
import select
import subprocess
import tempfile
import time

from torture import Run, arguments, frame, play, records, wait_for, write_definition

BLOCK = 512
FILES_A_CALL = 100
MOST_BLOCKS = 9  # not synchronised, all of whose states are enumerated
decoded = []  # states, a call each
enumerated = []  # files before a synchronisation: whether their states were enumerated


def record_trace(seconds, bursts, dice):
    """What happened to the logs of a run, and when each frame was sent."""
    run, times = Run(options.cli, options=("--name", "run.raw", "--every", "00:02"), LD_PRELOAD=options.library,
                     TRACE="{}/trace"), []
    try:
        wait_for(run.logs, "the log's begin")
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            for _ in range(dice.choice(bursts)):
                times.append(time.monotonic())
                run.lines[0].send(frame(len(times)))
            select.select([], [], [], dice.uniform(0, 0.05))
        wait_for(lambda: run.stored() >= len(times), "the last frame")
        status, errors = run.end()
        assert status == 0, errors
        assert [number for path in run.logs() for _, number in records(path.read_bytes())[0]] == [*range(1, len(times) + 1)]
        lines = [line.split("\t") for line in (run.folder / "trace").read_text().splitlines()]
        return times, [(float(line[0]), line[1], pathlib.Path(line[2]).name, float(line[3]), bytes.fromhex(line[5]))
                       for line in lines]
    finally:
        run.remove()


class File:
    """A log in memory and what of it is on the disk for sure."""

    def __init__(self):
        self.now, self.durable, self.history = bytearray(), None, []

    def take(self, moment, what, place, data):
        if what == "write":
            place = int(place)
            self.now[place:place + len(data)] = data
        elif what == "truncate":
            del self.now[int(place):]
        elif what == "sync":  # what was there when it began
            self.durable = next((old for at, old in reversed(self.history) if at <= place), b"")
        self.history = [*self.history[-200:], (moment, bytes(self.now))]

    def after_cut(self, dice):
        """One state of the disk; none when the file was never synchronised and its name is lost."""
        durable = self.durable or b""
        shape = dice.choice(("gone", "nothing", "all", "blocks", "blocks", "torn"))
        if shape == "gone" and self.durable is None:
            return None
        if shape in ("gone", "nothing"):
            return durable
        length = len(self.now) if shape == "all" else dice.randint(len(durable), max(len(durable), len(self.now)))
        if shape == "torn":
            return self.now[:max(len(durable), length // BLOCK * BLOCK)]
        return self.without([at for at in self.unsure(length) if shape == "blocks" and dice.random() < 0.5], length)

    def unsure(self, length):
        """Where the blocks begin that may not be on the disk."""
        return range(len(self.durable or b"") // BLOCK * BLOCK, length, BLOCK)

    def without(self, lost, length):
        """The file of this length when these blocks never came to the disk."""
        state = bytearray(self.now[:length])
        for at in lost:
            old = (self.durable or b"")[at:at + BLOCK]
            state[at:at + BLOCK] = old + bytes(min(BLOCK, length - at) - len(old))
        return state

    def all_after_cut(self, dice):
        """Every state of the disk, of the lengths within a block one; empty when there are too many."""
        least = len(self.durable or b"")
        if len(self.unsure(len(self.now))) > MOST_BLOCKS:
            return
        for at in self.unsure(len(self.now)):
            end = min(at + BLOCK, len(self.now))
            for length in {end, dice.randint(max(at, least), end)} - {least}:
                unsure = self.unsure(length)
                for count in range(len(unsure) + 1):
                    for lost in itertools.combinations(unsure, count):
                        yield self.without(lost, length)


def play_one(seed):
    dice = random.Random(seed)
    sparse = options.minutes and dice.random() < 0.5  # so few frames that all states can be enumerated
    times, trace = record_trace(dice.uniform(3, 5), (1, 2) if sparse else (1, 3, 15), dice)
    files, states = {}, []
    for moment, what, name, place, data in trace:
        if sparse and what == "sync" and name in files:
            durable = {known: file.durable for known, file in files.items() if file.durable is not None}
            before = len(states)
            states += [(moment, what, {**durable, name: state}) for state in files[name].all_after_cut(dice)]
            enumerated.append(len(states) > before or len(files[name].now) == len(files[name].durable or b""))
        for _ in range(3):
            states.append((moment, what, {known: state for known, file in files.items()
                                          if (state := file.after_cut(dice)) is not None}))
        files.setdefault(name, File()).take(moment, what, place, data)
    slowest = max(moment - begun for moment, what, _, begun, _ in trace if what == "sync")
    dice.shuffle(states)
    states = states if options.minutes else states[:200]
    for at in range(0, len(states), FILES_A_CALL):
        decoded.append(len(states[at:at + FILES_A_CALL]))
        if fault := decode(states[at:at + FILES_A_CALL], times, limit + slowest):
            return fault
    return ""


def decode(states, times, most):
    with tempfile.TemporaryDirectory(prefix="torture") as holder:
        folder, found = pathlib.Path(holder), [set() for _ in states]
        paths = []
        for index, (_, _, logs) in enumerate(states):
            for name, data in logs.items():
                paths.append(folder / f"{index}.{name}")
                paths[-1].write_bytes(data)
        if not paths:
            return ""
        done = subprocess.run([options.cli, "decode", "-d", str(write_definition(folder)), "--format", "jsonl",
                               *map(str, paths)], capture_output=True, timeout=300)
        if done.returncode not in (0, 1):
            return f"decode ended with {done.returncode}: {done.stderr[-500:]!r}"
        for line in done.stdout.splitlines():
            said = json.loads(line)
            path = pathlib.Path(said["file"])
            data = path.read_bytes()[said["offset"]:said["offset"] + said["length"]]
            number = int.from_bytes(data[7:10], "big")
            if said["checksum_error"]:
                continue
            if not 1 <= number <= len(times) or data != frame(number):
                return f"{path.name}: a frame that was never sent at {said['offset']}"
            found[int(path.name.split(".")[0])].add(number)
        for (moment, what, _), numbers in zip(states, found):
            missing = [moment - sent for number, sent in enumerate(times, 1)
                       if sent < moment - most and number not in numbers]
            if missing:
                return f"cut before a {what}: {len(missing)} frames missing, sent up to {missing[0]:.3f} s before"
    return ""


options = arguments(__doc__, "library")
# A second between two synchronisations and some for the machine; how long the slowest took comes on top.
limit = options.limit or (1.2 if options.minutes else 2.5)
first = int(time.time())
play("power cuts", [options.seed] if options.seed is not None else range(first, first + (
    int(options.minutes * 60) if options.minutes else 2)), play_one, options, 60, lambda: f", {sum(decoded)} states, all of "
                                       f"{sum(enumerated)} of {len(enumerated)} synchronisations of few frames")
