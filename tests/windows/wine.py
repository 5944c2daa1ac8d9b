# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the Windows programs share: COM ports of Wine that lead to pseudo-terminals, paths as either
system takes them, and raw logs as bytes that can be compared. WINEPREFIX names a Wine prefix that exists."""
import json
import os
import pathlib
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from harness import RECORD, TAG, Line, behind_header, wait_for  # noqa: E402,F401

WAIT_SECONDS = 60


class Port(Line):
    """A pseudo-terminal, which Wine has as a COM port as well."""

    def __init__(self, number=7):
        super().__init__()
        link = pathlib.Path(os.environ["WINEPREFIX"], "dosdevices", f"com{number}")
        link.unlink(missing_ok=True)
        link.symlink_to(self.name)
        self.names = {"posix": self.name, "windows": f"COM{number}"}


def taken_by(system, path):
    """A path of this machine as the system's program takes it."""
    return "Z:" + str(path).replace("/", "\\") if system == "windows" else str(path)


def emptied(folder):
    """The folder, new; finished logs are write-protected."""
    if os.path.exists(folder):
        subprocess.run(["chmod", "-R", "u+w", folder], check=True)
        subprocess.run(["rm", "-rf", folder], check=True)
    os.makedirs(folder)
    return pathlib.Path(folder)


def run(program, system, command, definition, *arguments):
    done = subprocess.run([*program, command, "-d", taken_by(system, definition), *arguments],
                          capture_output=True, timeout=WAIT_SECONDS, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


def decode(program, system, definition, raw):
    """Every frame of a raw log as the program shows it, without what a path or a clock decides."""
    rows = run(program, system, "decode", definition, "--format", "jsonl", "--hex", taken_by(system, raw))
    frames = map(json.loads, rows.splitlines())
    return [{k: v for k, v in frame.items() if k not in ("file", "time")} for frame in frames]


def without_times(raw, frames):
    """A raw log's bytes with the frames' tags and the header's times blotted out."""
    data = bytearray(raw.read_bytes())
    for start in range(0, len(data) - len(behind_header(data)), RECORD):
        if re.search(rb"\((TIMETAG2?|TIME-STAMP)\)", data[start:start + RECORD]):
            data[start:start + RECORD] = bytes(RECORD)
    for frame in frames:
        end = frame["offset"] + frame["length"]
        data[end:end + TAG] = bytes(TAG)
    return bytes(data)
