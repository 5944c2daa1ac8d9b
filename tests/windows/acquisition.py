# SPDX-License-Identifier: GPL-3.0-or-later
"""Acquires through real ports with the command line of both systems and compares what they wrote.

The Windows program runs under Wine with COM ports that lead to pseudo-terminals made here; the POSIX
program reads pseudo-terminals directly. Both are fed the same bytes. Shown are: the same raw log but
for its times, the same decoded values and simulated frames, a port above COM9, a port in use, an
unplugged port, and how much of a core an idle connected port costs.

  acquisition.py POSIX_CLI WINDOWS_CLI WINE64 DEFINITION FOLDER

WINEPREFIX names a Wine prefix that exists; FOLDER is emptied first."""
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time
import tty
import unittest

POSIX_CLI, WINDOWS_CLI, WINE, DEFINITION, FOLDER = (os.path.abspath(a) for a in sys.argv[1:6])
TICKS = os.sysconf("SC_CLK_TCK")
WAIT_SECONDS = 60
IDLE_SECONDS = 6
IDLE_LIMIT_PERCENT = 2.0
HEADER_RECORD = 128
TAG = 7


def until(what, condition):
    """Waits for a condition; the longest wait is for a slow machine, not the usual case."""
    end = time.monotonic() + WAIT_SECONDS
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError(f"{what}: not within {WAIT_SECONDS} s")


class Port:
    """A pseudo-terminal, which Wine has as a COM port as well."""

    def __init__(self, number=7):
        self.master, slave = os.openpty()
        tty.setraw(slave)
        self.device = os.ttyname(slave)
        os.close(slave)
        self.com = f"COM{number}"
        link = pathlib.Path(os.environ["WINEPREFIX"], "dosdevices", f"com{number}")
        link.unlink(missing_ok=True)
        link.symlink_to(self.device)

    def send(self, data):
        while data:
            data = data[os.write(self.master, data):]

    def unplug(self):
        if self.master >= 0:
            os.close(self.master)
        self.master = -1


class Program:
    """qorview-cli of one system."""

    def __init__(self, windows):
        self.windows = windows
        self.command = [WINE, WINDOWS_CLI] if windows else [POSIX_CLI]

    def port_name(self, port):
        return port.com if self.windows else port.device

    def path(self, path):
        """A path of this machine as the program takes it."""
        return "Z:" + str(path).replace("/", "\\") if self.windows else str(path)

    def run(self, *arguments):
        return subprocess.run([*self.command, *arguments], capture_output=True, timeout=WAIT_SECONDS, check=False)

    def log(self, test, port, folder, name, seconds):
        folder.mkdir(parents=True, exist_ok=True)
        arguments = ["log", "--port", self.port_name(port) + ":19200", "-d", self.path(DEFINITION),
                     "-o", self.path(folder), "--name", name, "--duration", f"00:00:{seconds:02}"]
        logging = Logging([*self.command, *arguments], folder)
        test.addCleanup(logging.stop)
        return logging


class Logging:
    """A running acquisition."""

    def __init__(self, command, folder):
        self.folder = folder
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def session_log(self):
        text = b""
        for path in sorted(self.folder.glob("QorView*.log")):
            text += path.read_bytes()
        return text.decode("latin-1")

    def until_connected(self):
        until("connection and raw log", lambda: self.process.poll() is not None or
              ("connection successful" in self.session_log() and "Begin log file" in self.session_log()))
        return self

    def end(self):
        output, errors = self.process.communicate(timeout=WAIT_SECONDS)
        return self.process.returncode, output.decode("utf-8", "replace"), errors.decode("utf-8", "replace")

    def stop(self):
        """Leaves nothing running behind a test that failed."""
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()

    def cpu_seconds(self):
        """Processor time of the program and of nothing else (Wine runs it as a process of its own)."""
        stat = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(stat[11]) + int(stat[12])) / TICKS


class Acquisition(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(FOLDER)
        if cls.folder.exists():
            subprocess.run(["chmod", "-R", "u+w", FOLDER], check=True)
            shutil.rmtree(FOLDER)
        cls.folder.mkdir(parents=True)
        cls.programs = {"posix": Program(False), "windows": Program(True)}
        cls.stream = cls.simulate("posix")

    @classmethod
    def simulate(cls, system):
        program, path = cls.programs[system], cls.folder / f"{system}.bin"
        done = program.run("simulate", "-d", program.path(DEFINITION), "-o", program.path(path), "--frames", "60",
                           "--rate", "max", "--seed", "7", "--noise", "5", "--drop", "0.05", "--corrupt", "0.05")
        assert done.returncode == 0, done.stderr
        return path.read_bytes()

    def decode(self, system, raw):
        """Every frame of a raw log as the program shows it, without what a path or a clock decides."""
        program = self.programs[system]
        done = program.run("decode", "-d", program.path(DEFINITION), "--format", "jsonl", "--hex", program.path(raw))
        self.assertEqual(done.returncode, 0, done.stderr)
        frames = [json.loads(line) for line in done.stdout.splitlines()]
        return [{k: v for k, v in frame.items() if k not in ("file", "time")} for frame in frames]

    def without_times(self, raw):
        """A raw log's bytes with the frames' tags and the header's times blotted out."""
        data = bytearray(raw.read_bytes())
        records = 0
        while data[records * HEADER_RECORD:].startswith(b"QORHDR"):
            start = records * HEADER_RECORD
            if re.search(rb"\((TIMETAG2?|TIME-STAMP)\)", data[start:start + HEADER_RECORD]):
                data[start:start + HEADER_RECORD] = bytes(HEADER_RECORD)
            records += 1
        self.assertGreaterEqual(records, 18)
        for frame in self.decode("posix", raw):
            end = frame["offset"] + frame["length"]
            data[end:end + TAG] = bytes(TAG)
        return bytes(data)

    def acquire(self, system):
        """Sends the stream in pieces of many sizes into a port that the program logs."""
        port = Port(12)
        logging = self.programs[system].log(self, port, self.folder / system, "cast.raw", 15).until_connected()
        pieces = random.Random(3)
        sent = 0
        while sent < len(self.stream):
            size = pieces.choice((1, 7, 130, 700, 2000))
            port.send(self.stream[sent:sent + size])
            sent += size
            time.sleep(0.02)
        status, output, errors = logging.end()
        port.unplug()
        self.assertEqual(status, 0, output + errors + logging.session_log())
        return self.folder / system / "cast.raw"

    def test_both_systems_simulate_the_same_bytes(self):
        self.assertEqual(self.simulate("windows"), self.stream)

    def test_both_systems_write_the_same_raw_log(self):
        posix, windows = self.acquire("posix"), self.acquire("windows")
        frames = self.decode("posix", posix)
        self.assertGreater(len(frames), 50)
        self.assertEqual(self.without_times(windows), self.without_times(posix))
        self.assertEqual(self.decode("windows", posix), frames)
        for path in (posix, windows):
            self.assertEqual(path.stat().st_mode & 0o222, 0, f"{path} is not write-protected")

    def test_port_in_use_is_refused_and_its_user_goes_on(self):
        # The user is the POSIX program both times: Wine itself lets a port be opened twice.
        for system in self.programs:
            with self.subTest(system):
                port = Port()
                first = self.programs["posix"].log(self, port, self.folder / f"{system}-first", "a.raw", 10)
                first.until_connected()
                second = self.programs[system].log(self, port, self.folder / f"{system}-second", "a.raw", 4)
                status, output, errors = second.end()
                self.assertEqual(status, 1, output + errors)
                self.assertIn("could not be connected (0x10000008", errors)
                self.assertEqual(first.end()[0], 0)
                port.unplug()

    def test_unplugged_port_aborts_and_the_log_is_closed(self):
        for system in self.programs:
            with self.subTest(system):
                port = Port()
                logging = self.programs[system].log(self, port, self.folder / f"{system}-unplugged", "a.raw", 50)
                logging.until_connected()
                port.send(self.stream[:5000])
                time.sleep(1)
                port.unplug()
                status, output, errors = logging.end()
                self.assertEqual(status, 1, output + errors)
                self.assertIn("aborted on " + self.programs[system].port_name(port), logging.session_log())
                self.assertIn("End log file", logging.session_log())
                self.assertGreater(len(self.decode("posix", logging.folder / "a.raw")), 0)

    def test_idle_connected_port_costs_next_to_nothing(self):
        for system in self.programs:
            with self.subTest(system):
                port = Port()
                folder = self.folder / f"{system}-idle"
                logging = self.programs[system].log(self, port, folder, "a.raw", IDLE_SECONDS + 4)
                logging.until_connected()
                time.sleep(2)
                before = logging.cpu_seconds()
                time.sleep(IDLE_SECONDS)
                percent = 100 * (logging.cpu_seconds() - before) / IDLE_SECONDS
                print(f"idle port, {system}: {percent:.2f} % of a core")
                self.assertLess(percent, IDLE_LIMIT_PERCENT)
                self.assertEqual(logging.end()[0], 0)
                port.unplug()
                self.assertEqual(logging.session_log().count("waiting for telemetry"), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
