# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs every call of the command line that README and guides print, as it is printed: with the examples
under the names of the call, and simulated instruments at its ports. Usage: guide_test.py QORVIEW-CLI SOURCE-FOLDER"""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

from harness import wait_for

CLI, SOURCE = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
PAGES = [SOURCE / "README.md", SOURCE / "CONTRIBUTING.md", *sorted((SOURCE / "docs").glob("*.md"))]
START = "2026-06-21T12:00:00"
# What has no end of its own, and is stopped when it has done its work.
ENDLESS = re.compile(r"qorview-cli log|--pty|tail -f")


def printed_calls():
    """The calls in indented blocks, those that go on behind a backslash as one."""
    for page in PAGES:
        text = page.read_text().replace("\\\n", " ")
        for line in re.findall(r"^ {4,}((?:\S+ .*\| )?qorview-cli .*)$", text, re.MULTILINE):
            yield page.name, re.sub(" {2,}", " ", line.split(" #")[0]).strip()


class Guide(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        for name in ("radiometer.cal", "profiler.cal", "gps.tdf", "cast.sip"):
            shutil.copy(SOURCE / "examples" / name, self.folder)
        radiometer = (self.folder / "radiometer.cal").read_bytes()
        for name, serial in (("new.cal", b"NEW001"), ("reference.cal", b"REF001")):
            (self.folder / name).write_bytes(re.sub(rb"(?m)^INSTRUMENT.*$", b"INSTRUMENT %s '' 3 AS 0 NONE" % serial[:3], re.sub(
                rb"(?m)^SN.*$", b"SN %s '' 3 AI 0 COUNT" % serial[3:], radiometer)))
        (self.folder / "cal").mkdir()
        shutil.copy(self.folder / "profiler.cal", self.folder / "cal")
        (self.folder / "logs").mkdir()
        self.simulate("-o", "capture.bin", "-d", "radiometer.cal")
        self.ports = {"/dev/ttyUSB0": self.port("radiometer.cal", "profiler.cal"), "/dev/ttyUSB1": self.port("gps.tdf")}

    def simulate(self, *options):
        subprocess.run([CLI, "simulate", "--overwrite", "--frames", "700", "--start", START, *options],
                       cwd=self.folder, check=True, timeout=60)

    def port(self, *definitions):
        process = subprocess.Popen([CLI, "simulate", "--pty", *(word for name in definitions for word in ("-d", name))],
                                   cwd=self.folder, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.terminate)
        return process.stdout.readline().strip()

    def make_log(self, call):
        """cast.raw of the instruments that the call names; those of its session else."""
        named = re.findall(r"-[dp] ([\w/]+\.(?:cal|tdf|sip))", call) or ["profiler.cal"]
        self.simulate("--raw-log", "-o", "cast.raw", *(word for name in named for word in ("-d", name)),
                      "--quiet")

    def has_done_its_work(self, call, output):
        if "qorview-cli log" in call:  # the head of a table comes before the first frame
            said = "".join(path.read_text("latin-1") for path in self.folder.rglob("QorView.log"))
            return said.count("found on") >= max(1, call.count(" -d "))
        return output.stat().st_size > 0

    def run_call(self, call):
        for name, port in self.ports.items():
            call = call.replace(name, port)
        output, errors = self.folder / "output", self.folder / "errors"
        with output.open("wb") as out, errors.open("wb") as err:
            process = subprocess.Popen(["sh", "-c", call if "|" in call else f"exec {call}"], cwd=self.folder, stdout=out, stderr=err, start_new_session=True,
                                       env=os.environ | {"PATH": f"{CLI.parent}:{os.environ['PATH']}"})
            if ENDLESS.search(call):
                wait_for(lambda: process.poll() is not None or self.has_done_its_work(call, output), call)
                if process.poll() is None:
                    os.killpg(process.pid, signal.SIGINT)
            status = process.wait(timeout=60)
        if "built without libnetcdf" in errors.read_text("latin-1"):
            self.assertEqual((status, ".nc" in call), (2, True), call)
            return
        expected = (0, 130, -signal.SIGINT) if "--pty" in call or "tail -f" in call else (0,)
        self.assertIn(status, expected, f"{call}\n{errors.read_text('latin-1')}")
        self.assertNotIn("error:", errors.read_text("latin-1"), call)
        for path in [*self.folder.rglob("*.raw"), *self.folder.rglob("QorView.log")]:
            path.chmod(0o600)
            path.unlink()

    def test_every_printed_call_runs(self):
        calls = list(printed_calls())
        self.assertGreater(len(calls), 20)
        for page, call in calls:
            with self.subTest(page=page, call=call):
                self.make_log(call)
                self.run_call(call)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
