# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the desktop for Windows under Wine, on a virtual display, as an operator and the system would: a session that
logs and ends by itself, a cable that is pulled and comes back, a log folder that goes away, folders with long and
foreign names, settings in the registry and beside the program, file types.

  desktop.py POSIX_DESKTOP POSIX_CLI WINDOWS_DESKTOP WINE64 DEFINITION FOLDER

DISPLAY names the display; FOLDER is emptied first."""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time
import unittest

import wine
from wine import WAIT_SECONDS, Port, taken_by, wait_for

POSIX_DESKTOP, POSIX_CLI, WINDOWS_DESKTOP, WINE, DEFINITION, FOLDER = map(os.path.abspath, sys.argv[1:7])
PROGRAMS = {"posix": [POSIX_DESKTOP], "windows": [WINE, WINDOWS_DESKTOP]}
FRAMES = 60


class Desktop(subprocess.Popen):
    """A desktop that opens a session of one port, logs and ends by itself."""

    def __init__(self, test, system, port, folder, seconds, program=None, home="settings", logs="logs", **more):
        folder.mkdir(parents=True)
        self.folder = folder
        session = {"qorview-session": 1,
                   "resources": [{"port": port.names[system], "baud": 19200, "format": "8N1", **more,
                                  "instruments": [{"definition": taken_by(system, DEFINITION)}]}],
                   "log": {"directory": logs, "naming": "file", "name": "cast.raw",
                           "duration": f"00:00:{seconds:02}", "session-log": True,
                           "session-log-directory": "."}}
        path = folder / "cast.qor"
        path.write_text(json.dumps(session))
        (folder / "logs").mkdir()
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen" if system == "posix" else "windows",
                       "QORVIEW_HOME": taken_by(system, folder / home) if home else ""}
        program = [WINE, str(program)] if program else PROGRAMS[system]
        self.said = open(folder / "said.txt", "wb")
        super().__init__([*program, taken_by(system, path), "--lognow", "--exitifdone"], cwd=folder,
                         stdout=self.said, stderr=self.said, env=environment)
        test.addCleanup(self.stop)

    def raws(self):
        return sorted(self.folder.rglob("*.raw"), key=lambda path: path.stat().st_mtime)

    def session_log(self):
        return b"".join(path.read_bytes() for path in self.folder.rglob("QorView*.log")).decode("latin-1")

    def until(self, text, count=1):
        wait_for(lambda: self.poll() is not None or self.session_log().count(text) >= count, text, WAIT_SECONDS)
        assert self.poll() is None, f"the program ended before: {text}"
        return self

    def end(self):
        self.wait(timeout=WAIT_SECONDS)
        said = (self.folder / "said.txt").read_text("utf-8", "replace")
        return self.returncode, said + self.session_log()

    def stop(self):
        if self.poll() is None:
            self.kill()
        self.wait()
        self.said.close()


def decoded(raw):
    return wine.decode([POSIX_CLI], "posix", DEFINITION, raw)


def registry(*arguments):
    done = subprocess.run([WINE, "reg", *arguments], capture_output=True, timeout=WAIT_SECONDS, check=False)
    return done.stdout.decode("utf-8", "replace") if done.returncode == 0 else ""


def desktop(*arguments):
    return subprocess.run([*PROGRAMS["windows"], *arguments], capture_output=True, timeout=WAIT_SECONDS, check=False)


class WindowsDesktop(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = wine.emptied(FOLDER)
        stream = cls.folder / "stream.bin"
        wine.run([POSIX_CLI], "posix", "simulate", DEFINITION, "-o", str(stream), "--frames", str(FRAMES),
                 "--rate", "max", "--seed", "7", "--noise", "5", "--drop", "0.05", "--corrupt", "0.05")
        cls.stream = stream.read_bytes()
        cls.frames = decoded(stream)

    def logged(self, system, folder, **more):
        port = Port(12)
        program = Desktop(self, system, port, folder, 12, **more).until("Begin log file")
        port.send(self.stream)
        status, said = program.end()
        port.unplug()
        self.assertEqual(status, 0, said)
        [raw] = program.raws()
        self.assertEqual(raw.stat().st_mode & 0o222, 0, "a finished log is write-protected")
        return raw

    def test_a_session_logs_what_the_desktop_on_linux_logs(self):
        posix, windows = (self.logged(system, self.folder / system) for system in ("posix", "windows"))
        frames = decoded(posix)
        self.assertGreater(len(frames), FRAMES // 2)
        self.assertEqual(wine.without_times(windows, frames), wine.without_times(posix, frames))

    def test_log_off_ends_the_log_as_it_should(self):
        port = Port()
        program = Desktop(self, "windows", port, self.folder / "logoff", 50).until("Begin log file")
        port.send(self.stream)
        wait_for(lambda: program.raws()[0].stat().st_size > len(self.stream), "the stream in the log", WAIT_SECONDS)
        subprocess.run([WINE, "wineboot", "--end-session"], capture_output=True, timeout=WAIT_SECONDS, check=False)
        _status, said = program.end()
        port.unplug()
        self.assertIn("End log file", said)
        [raw] = program.raws()
        self.assertEqual(raw.stat().st_mode & 0o222, 0, "a finished log is write-protected")
        self.assertEqual(len(decoded(raw)), len(self.frames))

    def test_folders_may_have_long_and_foreign_names(self):
        raw = self.logged("windows", self.folder / ("\u00e4" * 100) / ("\u6d77" * 60) / ("\u0436" * 90))
        self.assertGreater(len(taken_by("windows", raw)), 260)
        self.assertGreater(len(decoded(raw)), FRAMES // 2)

    def test_a_cable_that_is_pulled_may_come_back(self):
        port = Port()
        program = Desktop(self, "windows", port, self.folder / "pulled", 25, reconnect=True).until("Begin log file")
        port.send(self.stream)
        time.sleep(2)
        port.unplug()
        program.until("aborted")
        port = Port()
        program.until("connection successful", 2)
        port.send(self.stream)
        _status, said = program.end()
        port.unplug()
        self.assertIn("aborted on COM7", said)
        [raw] = program.raws()
        self.assertEqual(len(decoded(raw)), 2 * len(self.frames), said)

    def test_a_log_folder_on_a_drive_that_goes_away_is_told_and_left(self):
        drive = pathlib.Path(os.environ["WINEPREFIX"], "dosdevices", "n:")
        share = self.folder / "share"
        share.mkdir()
        drive.unlink(missing_ok=True)
        drive.symlink_to(share)
        port = Port()
        program = Desktop(self, "windows", port, self.folder / "drive", 20, logs="N:").until("Begin log file")
        port.send(self.stream)
        time.sleep(2)
        share.rename(self.folder / "gone")
        time.sleep(4)
        share.mkdir()
        program.until("Begin log file", 2)
        port.send(self.stream)
        status, said = program.end()
        port.unplug()
        drive.unlink()
        self.assertEqual(status, 0, said)
        self.assertIn("cast.raw\" was moved away while it was written.", said)
        self.assertIn("Frames wait in memory; it is tried again", said)
        self.assertIn("no frame was lost between", said)
        gone, back = (decoded(self.folder / folder / "cast.raw") for folder in ("gone", "share"))
        self.assertEqual([len(gone), len(back)], [len(self.frames)] * 2, said)

    def test_settings_are_in_the_registry_or_beside_the_program(self):
        registry("delete", r"HKCU\Software\QorView", "/f")
        self.logged("windows", self.folder / "registry", home=None)
        self.assertIn("REG_SZ", registry("query", r"HKCU\Software\QorView", "/s"))
        registry("delete", r"HKCU\Software\QorView", "/f")
        stick = self.folder / "stick"
        stick.mkdir()
        shutil.copy(WINDOWS_DESKTOP, stick)
        (stick / "qorview.ini").touch()
        self.logged("windows", self.folder / "portable", home=None, program=stick / "qorview.exe")
        self.assertIn("[", (stick / "qorview.ini").read_text("utf-8"))
        self.assertEqual(registry("query", r"HKCU\Software\QorView", "/s"), "")

    def test_file_types_are_registered_and_taken_back(self):
        done = desktop("--register")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn("QorView.Session", registry("query", r"HKCU\Software\Classes\.qor", "/ve"))
        command = registry("query", r"HKCU\Software\Classes\QorView.Session\shell\open\command", "/ve")
        self.assertIn('qorview.exe" "%1"', command)
        self.assertEqual(registry("query", r"HKCU\Software\Classes\.raw", "/ve").count("QorView"), 0)
        self.assertEqual(desktop("--unregister").returncode, 0)
        self.assertEqual(registry("query", r"HKCU\Software\Classes\QorView.Session", "/s"), "")

    def test_a_call_is_answered_where_it_was_made(self):
        self.assertRegex(desktop("--version").stdout, rb"^qorview \d+\.\d+\.\d+")
        wrong = desktop("--lognov")
        self.assertEqual(wrong.returncode, 2)
        self.assertIn(b'There is no option "--lognov".', wrong.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
