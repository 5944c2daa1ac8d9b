# SPDX-License-Identifier: GPL-3.0-or-later
"""Definitions that were changed on purpose, and what diff says of them and of a log's values, beside what
decode makes of both. Usage: diff_test.py QORVIEW-CLI SOURCE-FOLDER"""
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import unittest

CLI, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])


def run(*arguments):
    return subprocess.run([CLI, *map(str, arguments)], capture_output=True, timeout=60)


class Diff(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.before, self.after = self.folder / "before.cal", self.folder / "after.cal"
        self.text = (SOURCE / "examples" / "profiler.cal").read_text()
        self.before.write_text(self.text)

    def changed(self, *replacements):
        text = self.text
        for old, new in replacements:
            self.assertIn(old, text)
            text = text.replace(old, new, 1)
        self.after.write_text(text)

    def test_each_difference_has_its_kind(self):
        cases = (
            ("nothing but a comment", [("# Profiler", "# The profiler")], {}),
            ("a coefficient", [("-12.482", "-12.5")], {"PRES()": ("changed", ["coefficients"])}),
            ("units and fit", [("PRES         NONE    'dbar'       3  BU  1  POLYU\n-12.482  3.18164e-5  1.27e-14",
                                "PRES         NONE    'counts'     3  BU  0  COUNT")],
             {"PRES()": ("changed", ["units", "fit_type", "coefficients"])}),
            ("another name", [("CDOM ", "FDOM ")], {"CDOM()": ("gone", []), "FDOM()": ("added", [])}),
            ("two places exchanged", [("TILT         X ", "TILT         ? "), ("TILT         Y ", "TILT         X "),
                                      ("TILT         ? ", "TILT         Y "), ("0.31  0.01", "-0.18  0.01"),
                                      ("-0.18  0.01\nHEADING", "0.31  0.01\nHEADING")],
             {"TILT(X)": ("moved", ["offset"]), "TILT(Y)": ("moved", ["offset"])}),
        )
        for name, replacements, sensors in cases:
            with self.subTest(name):
                self.changed(*replacements)
                done = run("diff", "--json", self.before, self.after)
                report = json.loads(done.stdout)
                found = {f"{one['type']}({one['id']})": (one["kind"], [field["field"] for field in one["fields"]])
                         for one in report["sensors"]}
                self.assertEqual(found, sensors)
                self.assertEqual((report["alike"], done.returncode), (not sensors, 1 if sensors else 0))
        self.changed(("-12.482", "-12.5"), ("042 ", "043 "))
        self.assertEqual(run("diff", self.before, self.after).stdout.decode().splitlines(), [
            f"{self.before} -> {self.after}: 4 differences", "  instrument: QORPRO042 -> QORPRO043", "  serial: 042 -> 043",
            "  sync_header: QORPRO042 -> QORPRO043",
            "  PRES(): coefficients: -12.482 3.18164e-05 1.27e-14 -> -12.5 3.18164e-05 1.27e-14"])

    def test_values_of_a_log_change_as_decode_says(self):
        self.changed(("-12.482", "-12.5"), ("0.00732  61", "0.0074  61"))
        log = self.folder / "log.raw"
        run("simulate", "-o", log, "--raw-log", "--frames", 200, "-d", self.before)
        values = [[json.loads(line)["values"] for line in run("decode", "--format", "jsonl", "-d", path, log).stdout.splitlines()]
                  for path in (self.before, self.after)]
        sensors = json.loads(run("check", "--json", self.before).stdout)["sensors"]
        report = json.loads(run("diff", "--json", self.before, self.after, log).stdout)
        self.assertEqual(report["frames"], 200)
        found = {(one["type"], one["id"]): one for one in report["values"]}
        for sensor in sensors:
            pairs = [(old[sensor["index"]], new[sensor["index"]]) for old, new in zip(*values)]
            if not isinstance(pairs[0][0], (int, float)):
                continue
            changes = [0.0 if old == new else abs((new - old) / old) for old, new in pairs if old or old == new]
            one = found.pop((sensor["type"], sensor["id"]))
            self.assertAlmostEqual(one["largest"], max(changes), delta=1e-12)
            self.assertAlmostEqual(one["median"], statistics.median(changes), delta=1e-12)
            self.assertEqual(one["largest"] > 0, sensor["type"] in ("PRES", "CHL"), one)
        self.assertEqual(found, {})

    def test_wrong_calls_and_faulty_files_are_said(self):
        self.changed()
        broken = self.folder / "broken.cal"
        broken.write_text("INSTRUMENT\n")
        package = SOURCE / "examples" / "cast.sip"
        for arguments, status, said in (
                ((self.before,), 2, b"AFTER"),
                ((self.before, package), 2, b"it is no definition"),
                ((self.before, self.folder / "none.cal"), 1, b"could not be loaded"),
                ((self.before, broken), 1, b"what is compared was repaired"),
                ((self.before, self.after, self.folder / "none.raw"), 1, b"cannot be read")):
            done = run("diff", *arguments)
            self.assertEqual(done.returncode, status, done.stderr)
            self.assertIn(said, done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
