#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Replays a recording through the finished program and compares what comes out with what is kept.
    replay.py QORVIEW-CLI CASE-FOLDER [--rebuild]
(script/golden calls it.) A case's folder holds input.bin (bytes as they come from a line) or input.raw (a raw log), frames.jsonl
(what decode must give), session.log (what a live run must tell, without time and place) and case.txt: what
it shows, an empty line, then
    options: instruments and their settings, for decode and log
    decode: further options of decode
    live: further options of log (no: not replayed live)
    input: a log elsewhere;    every: only every so many frames are kept
    before the log: frames that wait on the line; the log begins behind them
    header: records of the raw log's header that are kept, in session.log
    logs: number of logs, each of which gets its share of the input
Live, the bytes go through a pseudo-terminal into `log`; decode of its raw logs must give the same frames."""
import difflib
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "cli"))
from harness import TAG, Line, behind_header, wait_for  # noqa: E402

CLI = str(pathlib.Path(sys.argv[1]).resolve())
FOLDER = pathlib.Path(sys.argv[2]).resolve()


class Case:
    def __init__(self):
        self.shows, _, rest = (FOLDER / "case.txt").read_text("ascii").partition("\n\n")
        self.settings = dict(line.split(": ", 1) for line in rest.splitlines())
        self.options = self.words("options")
        self.input = self.settings.get("input") or next(p.name for p in sorted(FOLDER.glob("input.*")))

    def words(self, name):
        return self.settings.get(name, "").split()

    def number(self, name, default):
        return int(self.settings.get(name, default))


def decode(case, *files, chunk=()):
    """The frames of the logs; what a faulty input makes decode say is not the matter here."""
    done = subprocess.run([CLI, "decode", "--format", "jsonl", *case.options, *case.words("decode"), *chunk, *files],
                          cwd=FOLDER, capture_output=True, timeout=300)
    if done.returncode not in (0, 1):
        raise SystemExit(f"decode ended with {done.returncode}: {done.stderr.decode()}")
    return [json.loads(line) for line in done.stdout.decode().splitlines()]


def without_place(frame):
    return {key: value for key, value in frame.items() if key not in ("file", "frame", "offset", "time")}


def shown(frames):
    return [json.dumps(frame, ensure_ascii=False) for frame in frames]


def wire(case, frames):
    """The pieces in which the input goes over the line: as captured, cut at the frames; of a raw log its frames."""
    data = (FOLDER / case.input).read_bytes()
    if case.input.endswith(".raw"):
        return [data[frame["offset"]:frame["offset"] + frame["length"]] for frame in frames]
    ends = [frame["offset"] + frame["length"] for frame in frames[:-1]] + [len(data)]
    return [data[begin:end] for begin, end in zip([0] + ends, ends)]


class LiveRun:
    """One run of `log` on a pseudo-terminal."""

    def __init__(self, case, folder, waiting):
        self.folder, self.line = folder, Line()
        self.line.send(waiting)
        name = ["--name", "run.raw"] if case.number("logs", 1) == 1 else []
        self.process = subprocess.Popen([CLI, "log", "-o", str(folder), *name, "--port", self.line.name, *case.options,
                                         *case.words("live")], cwd=FOLDER, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.await_log("connection successful", 1)

    def session_log(self):
        path = self.folder / "QorView.log"
        return path.read_text("latin-1") if path.exists() else ""

    def await_log(self, text, count):
        wait_for(lambda: self.session_log().count(text) >= count or self.process.poll() is not None, text, 60)
        if self.process.poll() is not None:
            raise SystemExit(f"log ended: {self.process.stdout.read().decode()}")

    def await_bytes(self, size):
        wait_for(lambda: sum(len(behind_header(path.read_bytes())) for path in self.logs()) >= size, "the last frame", 60)

    def send(self, data):
        """In pieces of all sizes, so that frames and headers come torn."""
        size = 1
        while data:
            self.line.send(data[:size])
            data, size = data[size:], size % 61 + 7

    def logs(self):
        return sorted(self.folder.glob("*.raw"))

    def end(self):
        self.process.send_signal(signal.SIGINT)
        output = self.process.communicate(timeout=60)[0].decode()
        if self.process.returncode != 0:
            raise SystemExit(f"log ended with {self.process.returncode}: {output}")

    def told(self):
        """The session log without what differs from run to run: times, the port's name, folders, pauses."""
        entries = self.session_log().replace(self.line.name, "PORT").replace(str(self.folder), "FOLDER")
        entries = entries.replace(str(FOLDER.parents[2]), "TREE")
        for number, path in enumerate(self.logs(), 1):
            entries = entries.replace(path.name, f"LOG{number}")
        lines = [line.split("> ", 1)[-1] for line in entries.splitlines()]
        lines = [line for line in lines if line and not line.startswith("Beginning new session")
                 and not line.endswith((" waiting for telemetry.", " reading telemetry."))]
        return [line for i, line in enumerate(lines) if " found on " not in line or line not in lines[:i]]


def live(case, frames):
    """(frames of the raw logs, what the session log told)"""
    pieces, early, count = wire(case, frames), case.number("before the log", 0), case.number("logs", 1)
    untagged = [name.split("=")[1] for name in case.options if name.startswith("--role=") and name.endswith("=gps")]
    sizes = [frame["length"] + (0 if frame["instrument"] in untagged else TAG) for frame in frames]
    with tempfile.TemporaryDirectory() as name:
        run = LiveRun(case, pathlib.Path(name), b"".join(pieces[:early]))
        try:
            shares = [early + (len(pieces) - early) * i // count for i in range(count + 1)]
            for i in range(count):
                run.await_log("Begin log file", i + 1)
                run.send(b"".join(pieces[shares[i]:shares[i + 1]]))
                run.await_bytes(sum(sizes[early:shares[i + 1]]))
            run.end()
        finally:
            run.process.kill()
            run.process.communicate()
        told = run.told()
        wanted = case.words("header")
        for path in run.logs() if wanted else []:
            facts = json.loads(subprocess.run([CLI, "info", "--json", str(path)], capture_output=True).stdout)
            told += [f"header {tag}: {value}" for tag, value in facts["header"] if tag in wanted]
        return [frame for path in run.logs() for frame in decode(case, str(path))], told


def near(kept, now):
    """The same but for the last digits, which a machine's logarithm may round its own way."""
    if isinstance(kept, dict) and isinstance(now, dict):
        return list(kept) == list(now) and all(near(kept[key], now[key]) for key in kept)
    if isinstance(kept, list) and isinstance(now, list):
        return len(kept) == len(now) and all(map(near, kept, now))
    if isinstance(kept, float) or isinstance(now, float):
        numbers = isinstance(kept, (int, float)) and isinstance(now, (int, float))
        return numbers and abs(kept - now) <= 1e-12 * max(1.0, abs(kept))
    return kept == now


def differences(name, expected, got):
    return list(difflib.unified_diff(expected, got, f"{name} (kept)", f"{name} (now)", lineterm="", n=1))


def main():
    case = Case()
    every, rebuild = case.number("every", 1), "--rebuild" in sys.argv[3:]
    frames = decode(case, case.input)
    faults = [] if frames else ["no frames"]
    for size in ("1", "7", "128", "1000000"):
        faults += differences(f"read by {size} bytes", shown(frames), shown(decode(case, case.input, chunk=("--chunk", size)))) \
            if every == 1 else []
    kept = {"frames.jsonl": shown(frames[::every])}
    if case.settings.get("live") != "no":
        logged, kept["session.log"] = live(case, frames)
        early = case.number("before the log", 0)
        faults += differences("logged live", shown(map(without_place, frames[early:])), shown(map(without_place, logged)))
    for name, lines in kept.items():
        if rebuild and not faults:
            (FOLDER / name).write_text("".join(line + "\n" for line in lines), "utf-8")
        before = (FOLDER / name).read_text("utf-8").splitlines() if (FOLDER / name).exists() else []
        if name == "session.log":  # two threads tell it what they see: the order among them is nobody's
            before, lines = sorted(before), sorted(lines)
        else:
            before = [now if near(json.loads(old), json.loads(now)) else old for old, now in zip(before, lines)] \
                + before[len(lines):]
        faults += differences(name, before, lines)
    print("\n".join(faults) or f"{FOLDER.name}: {len(frames)} frames as kept")
    return 1 if faults else 0


sys.exit(main())
