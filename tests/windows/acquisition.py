# SPDX-License-Identifier: GPL-3.0-or-later
"""Acquires through real ports with the command line of both systems and compares what they wrote.

The Windows program runs under Wine with COM ports that lead to pseudo-terminals made here; the POSIX
program reads pseudo-terminals directly. Both are fed the same bytes. Shown are: the same raw log but
for its times, the same decoded values and simulated frames, a port above COM9, a port in use, an
unplugged port, and how much of a core an idle connected port costs.

  acquisition.py POSIX_CLI WINDOWS_CLI WINE64 DEFINITION FOLDER

WINEPREFIX names a Wine prefix that exists; FOLDER is emptied first."""
import os
import pathlib
import random
import subprocess
import sys
import time
import unittest

import wine
from wine import WAIT_SECONDS, Port, taken_by, wait_for

POSIX_CLI, WINDOWS_CLI, WINE, DEFINITION, FOLDER = map(os.path.abspath, sys.argv[1:6])
IDLE_SECONDS = 6
IDLE_LIMIT_PERCENT = 2.0
SYSTEMS = {"posix": [POSIX_CLI], "windows": [WINE, WINDOWS_CLI]}


def simulate(system):
    path = pathlib.Path(FOLDER, f"{system}.bin")
    wine.run(SYSTEMS[system], system, "simulate", DEFINITION, "-o", taken_by(system, path), "--frames", "60",
             "--rate", "max", "--seed", "7", "--noise", "5", "--drop", "0.05", "--corrupt", "0.05")
    return path.read_bytes()


def decode(system, raw):
    return wine.decode(SYSTEMS[system], system, DEFINITION, raw)


class Logging(subprocess.Popen):
    """A running acquisition."""

    def __init__(self, test, system, port, name, seconds):
        self.folder = pathlib.Path(FOLDER, name)
        self.folder.mkdir()
        self.raw = self.folder / "cast.raw"
        super().__init__([*SYSTEMS[system], "log", "--port", port.names[system] + ":19200",
                          "-d", taken_by(system, DEFINITION), "-o", taken_by(system, self.folder),
                          "--name", "cast.raw", "--duration", f"00:00:{seconds:02}"],
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        test.addCleanup(self.stop)

    def session_log(self):
        return b"".join(path.read_bytes() for path in self.folder.glob("QorView*.log")).decode("latin-1")

    def until_connected(self):
        wait_for(lambda: self.poll() is not None or ("connection successful" in self.session_log() and
                                                     "Begin log file" in self.session_log()),
                 "connection and raw log", WAIT_SECONDS)
        return self

    def end(self):
        output, errors = self.communicate(timeout=WAIT_SECONDS)
        return self.returncode, (output + errors).decode("utf-8", "replace")

    def stop(self):
        """Leaves nothing running behind a test that failed."""
        if self.poll() is None:
            self.kill()
            self.communicate()

    def cpu_seconds(self):
        """Processor time of the program and of nothing else (Wine runs it as a process of its own)."""
        stat = pathlib.Path(f"/proc/{self.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(stat[11]) + int(stat[12])) / os.sysconf("SC_CLK_TCK")


class Acquisition(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        wine.emptied(FOLDER)
        cls.stream = simulate("posix")

    def acquire(self, system):
        """Sends the stream in pieces of many sizes into a port that the program logs."""
        port = Port(12)
        logging = Logging(self, system, port, system, 15).until_connected()
        pieces, left = random.Random(3), self.stream
        while left:
            size = pieces.choice((1, 7, 130, 700, 2000))
            port.send(left[:size])
            left = left[size:]
            time.sleep(0.02)
        status, said = logging.end()
        port.unplug()
        self.assertEqual(status, 0, said + logging.session_log())
        self.assertEqual(logging.raw.stat().st_mode & 0o222, 0, "a finished log is write-protected")
        return logging.raw

    def test_both_systems_simulate_the_same_bytes(self):
        self.assertEqual(simulate("windows"), self.stream)

    def test_both_systems_write_the_same_raw_log(self):
        posix, windows = self.acquire("posix"), self.acquire("windows")
        frames = decode("posix", posix)
        self.assertGreater(len(frames), 50)
        self.assertEqual(wine.without_times(windows, frames), wine.without_times(posix, frames))
        self.assertEqual(decode("windows", posix), frames)

    def test_port_in_use_is_refused_and_its_user_goes_on(self):
        # The user is the POSIX program both times: Wine itself lets a port be opened twice.
        for system in SYSTEMS:
            with self.subTest(system):
                port = Port()
                first = Logging(self, "posix", port, f"{system}-first", 10).until_connected()
                status, said = Logging(self, system, port, f"{system}-second", 4).end()
                self.assertEqual(status, 1, said)
                self.assertIn("could not be connected (0x10000008", said)
                status, said = first.end()
                self.assertEqual((status, said.count("error: "), said.count("no frame came")), (1, 1, 1), said)
                port.unplug()

    def test_unplugged_port_aborts_and_the_log_is_closed(self):
        for system in SYSTEMS:
            with self.subTest(system):
                port = Port()
                logging = Logging(self, system, port, f"{system}-unplugged", 50).until_connected()
                port.send(self.stream[:5000])
                time.sleep(1)
                port.unplug()
                status, said = logging.end()
                self.assertEqual(status, 1, said)
                self.assertIn("aborted on " + port.names[system], logging.session_log())
                self.assertIn("End log file", logging.session_log())
                self.assertGreater(len(decode("posix", logging.raw)), 0)

    def test_idle_connected_port_costs_next_to_nothing(self):
        for system in SYSTEMS:
            with self.subTest(system):
                port = Port()
                logging = Logging(self, system, port, f"{system}-idle", IDLE_SECONDS + 4).until_connected()
                time.sleep(2)
                before = logging.cpu_seconds()
                time.sleep(IDLE_SECONDS)
                percent = 100 * (logging.cpu_seconds() - before) / IDLE_SECONDS
                print(f"idle port, {system}: {percent:.2f} % of a core")
                self.assertLess(percent, IDLE_LIMIT_PERCENT)
                status, said = logging.end()
                self.assertEqual((status, said.count("no frame came")), (1, 1), said)
                port.unplug()
                self.assertEqual(logging.session_log().count("waiting for telemetry"), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
