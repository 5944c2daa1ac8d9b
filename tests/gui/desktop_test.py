# SPDX-License-Identifier: GPL-3.0-or-later
"""The finished desktop without a display and without an operator: runs that a supervisor ends, and runs that cannot be.

  desktop_test.py QORVIEW SOURCE_DIR"""
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from harness import Line, wait_for  # noqa: E402

QORVIEW, SOURCE = map(os.path.abspath, sys.argv[1:3])
WAIT_SECONDS = 60


class Unattended(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def session(self, port, definition=SOURCE + "/examples/radiometer.cal"):
        path = self.folder / "cast.qor"
        path.write_text(json.dumps({
            "qorview-session": 1,
            "resources": [{"port": port, "instruments": [{"definition": definition}]}],
            "log": {"directory": ".", "naming": "file", "name": "cast.raw", "session-log": True}}))
        return path

    def start(self, *arguments):
        home = str(self.folder / "home") + "/"
        program = subprocess.Popen([QORVIEW, *map(str, arguments)], cwd=self.folder, stderr=subprocess.PIPE,
                                   env={**os.environ, "QT_QPA_PLATFORM": "offscreen", "QORVIEW_HOME": home})
        self.addCleanup(program.wait)
        self.addCleanup(program.kill)
        return program

    def session_log(self):
        return "".join(path.read_text("latin-1") for path in self.folder.glob("QorView*.log"))

    def test_a_signal_ends_log_and_program_without_a_question(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            with self.subTest(number.name):
                line = Line()
                program = self.start(self.session(line.name), "--lognow")
                wait_for(lambda: "Begin log file" in self.session_log(), "a log", WAIT_SECONDS)
                program.send_signal(number)
                _, errors = program.communicate(timeout=WAIT_SECONDS)
                self.assertEqual(program.returncode, 0, errors)
                raw = self.folder / "cast.raw"
                self.assertEqual(raw.stat().st_mode & 0o222, 0, "a finished log is write-protected")
                self.assertIn("End log file", self.session_log())
                line.unplug()
                for path in (raw, *self.folder.glob("QorView*.log")):
                    path.unlink()

    def test_what_is_not_opened_is_said_on_standard_error(self):
        line = Line()
        faulty = self.folder / "faulty.qor"
        faulty.write_text('{ "qorview-session": 1, "resources": 5 }')
        rows = ((lambda: faulty, "faulty.qor"), (lambda: self.session(line.name, "none.cal"), "none.cal"),
                (lambda: self.session("/dev/none"), "no port could be opened"))
        for path, named in rows:
            with self.subTest(named):
                program = self.start(path(), "--lognow", "--exitifdone")
                _, errors = program.communicate(timeout=WAIT_SECONDS)
                self.assertEqual(program.returncode, 1, errors)
                self.assertIn(named, errors.decode())
        line.unplug()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
