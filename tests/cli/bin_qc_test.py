#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Means and quality flags of decode beside what plain Python makes of the frames in JSON Lines."""
import csv
import datetime
import io
import json
import math
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import unittest
import unittest.mock

try:
    import netCDF4
except ImportError:
    netCDF4 = None

CLI, ROOT = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
PROFILER, RADIOMETER = (os.path.join(ROOT, "examples", name) for name in ("profiler.cal", "radiometer.cal"))
EPOCH = datetime.datetime(1970, 1, 1)


def call(*arguments):
    return subprocess.run([CLI, *arguments], capture_output=True, text=True, check=False)


def seconds_of(line):
    return (datetime.datetime.fromisoformat(line["time"].rstrip("Z")) - EPOCH) / datetime.timedelta(seconds=1)


class BinQc(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.cast = self.path("cast.raw")
        made = call("simulate", "-d", PROFILER, "-d", RADIOMETER, "--raw-log", "--cast", "20", "--noise", "5", "--rate",
                    "max", "--frames", "900", "--start", "2026-06-21T12:00:00", "-o", self.cast)
        self.assertEqual(made.returncode, 0, made.stderr)

    def path(self, name):
        return os.path.join(self.folder, name)

    def decode(self, *arguments, status=0):
        result = call("decode", "--quiet", *arguments)
        self.assertEqual(result.returncode, status, result.stderr)
        return result

    def lines(self, *arguments):
        return [json.loads(line) for line in self.decode(*arguments, "--format", "jsonl").stdout.splitlines()]

    def index_of(self, definition, kind):
        sensors = json.loads(call("check", "--json", definition).stdout)["sensors"]
        return next(sensor["index"] for sensor in sensors if sensor["type"] == kind)

    def bins_of(self, frames, places, width):
        """Values by sensor of the frames in each bin, as floor(place / width) counts them."""
        bins = {}
        for frame, place in zip(frames, places):
            if place is not None:
                bins.setdefault(math.floor(place / width), []).append(frame["values"])
        return dict(sorted(bins.items()))

    def assert_bins(self, rows, bins, centres):
        self.assertEqual([row["frames"] for row in rows], [len(frames) for frames in bins.values()])
        self.assertGreater(len(rows), 3)
        for row, centre, frames in zip(rows, centres, bins.values()):
            self.assertAlmostEqual(row["centre"], centre, places=6)
            for sensor, mean in enumerate(row["mean"]):
                values = [frame[sensor] for frame in frames if isinstance(frame[sensor], (int, float))]
                self.assertEqual(row["n"][sensor] or 0, len(values))
                self.assert_near(mean, statistics.fmean(values) if values else None)
                self.assert_near(row["sd"][sensor], statistics.stdev(values) if len(values) > 1 else None)

    def assert_near(self, value, expected):
        if expected is None:
            self.assertIsNone(value)
        else:
            self.assertTrue(math.isclose(value, expected, rel_tol=1e-9, abs_tol=1e-9), (value, expected))

    def test_bins_are_an_independent_average(self):
        for span, key, width in (("1 dbar", "pressure", 1.0), ("0.5 m", "depth", 0.5), ("0.7s", "time", 0.7),
                                 ("0.1 min", "time", 6.0)):
            frames = self.lines("-d", PROFILER, self.cast)
            pressure = self.index_of(PROFILER, "PRES")
            places = [seconds_of(frame) if key == "time" else frame["values"][pressure] for frame in frames]
            bins = self.bins_of(frames, places, width)
            rows = self.lines("-d", PROFILER, "--bin", span, self.cast)
            for row in rows:
                row["centre"] = seconds_of(row) if key == "time" else row[key]
            self.assert_bins(rows, bins, [(number + 0.5) * width for number in bins])

    def test_formats_say_the_same(self):
        arguments = ["-d", PROFILER, "--bin", "2 dbar", "--names", "simple"]
        lines = self.lines(*arguments, self.cast)
        table = list(csv.DictReader(io.StringIO(self.decode(*arguments, self.cast).stdout, newline="")))
        temperature = self.index_of(PROFILER, "TEMP")
        for suffix, key in (("", "mean"), ("_sd", "sd"), ("_n", "n")):
            self.assertEqual([float(row["TEMP_WATER" + suffix]) for row in table],
                             [line[key][temperature] for line in lines])
        self.assertEqual([float(row["pressure"]) for row in table], [line["pressure"] for line in lines])
        if not netCDF4:
            self.skipTest("netCDF4 is not installed")
        self.decode(*arguments, "-o", self.path("bins.nc"), self.cast)
        with netCDF4.Dataset(self.path("bins.nc")) as file:
            self.assertEqual(list(file["TEMP_WATER"][:]), [line["mean"][temperature] for line in lines])
            self.assertEqual(list(file["TEMP_WATER_sd"][:]), [line["sd"][temperature] for line in lines])
            self.assertEqual(list(file["TEMP_WATER_n"][:]), [line["n"][temperature] for line in lines])
            self.assertEqual(file["TEMP_WATER"].cell_methods, "pressure: mean")
            edges = file[file["pressure"].bounds][:]
            self.assertEqual([tuple(edge) for edge in edges], [(p - 1, p + 1) for p in file["pressure"][:]])

    def test_bins_of_time_are_utc_where_frames_are(self):
        if not netCDF4:
            self.skipTest("netCDF4 is not installed")
        with open(self.cast, "rb") as file:
            log = file.read()
        self.assertEqual(log.count(b"UTC+00:00 (ZONE)"), 1)
        with open(self.cast, "wb") as file:
            file.write(log.replace(b"UTC+00:00 (ZONE)", b"UTC+13:00 (ZONE)"))
        times = {}
        for name, span in (("bins.nc", ["--bin", "10 s"]), ("frames.nc", [])):
            self.decode("-d", PROFILER, *span, "-o", self.path(name), self.cast)
            with netCDF4.Dataset(self.path(name)) as file:
                times[name] = list(file["time"][:])
        self.assertEqual(times["bins.nc"], sorted({time // 10 * 10 + 5 for time in times["frames.nc"]}))

    def test_tables_are_described_where_it_is_asked_for(self):
        for arguments in ((), ("--bin", "1 dbar"), ("--names", "simple")):
            table = self.path("cast.csv")
            self.decode("-d", PROFILER, self.cast, "--metadata", "-o", table, "--overwrite", *arguments)
            with open(table, encoding="utf-8", newline="") as rows, open(table + ".json", encoding="utf-8") as described:
                head, schema = next(csv.reader(rows)), json.load(described)
            self.assertEqual((schema["@context"], schema["url"]), ("http://www.w3.org/ns/csvw", "cast.csv"))
            columns = schema["tableSchema"]["columns"]
            self.assertEqual([column["name"] for column in columns], head)
            self.assertIn(("dbar", "number"), [(column["units"], column["datatype"]) for column in columns])
        for arguments in (("--format", "csv"), ("-o", self.path("cast.jsonl"))):
            self.assertIn("--metadata", self.decode("-d", PROFILER, self.cast, "--metadata", *arguments, status=2).stderr)

    def test_companions_have_the_profilers_depth(self):
        """A radiometer has no pressure: alone a wrong call, beside a profiler passed over or, by a role, binned."""
        wrong = self.decode("-d", RADIOMETER, "--bin", "1 dbar", self.cast, status=2)
        self.assertIn("--role NAME=profiler", wrong.stderr)
        both = ["-d", PROFILER, "-d", RADIOMETER, "--bin", "1 dbar", "--format", "jsonl", self.cast]
        passed = self.decode(*both)
        self.assertIn("warning", passed.stderr)
        names = {json.loads(line)["instrument"] for line in passed.stdout.splitlines()}
        name, = names
        rows = [json.loads(line) for line in self.decode(*both, "--role", name + "=profiler").stdout.splitlines()]
        radiometer = [row for row in rows if row["instrument"] != name]
        pressure, depth, counts = self.index_of(PROFILER, "PRES"), None, {}
        for frame in self.lines("-d", PROFILER, "-d", RADIOMETER, self.cast):
            if frame["instrument"] == name:
                depth = frame["values"][pressure]
            elif depth is not None:
                counts[math.floor(depth)] = counts.get(math.floor(depth), 0) + 1
        self.assertEqual([row["frames"] for row in radiometer], [count for _, count in sorted(counts.items())])

    def test_flags_are_those_of_the_tests(self):
        limits = self.path("limits.txt")
        with open(limits, "w", encoding="ascii") as file:
            file.write("# limits\nTEMP(WATER) gross 0 18.55\nPRES spike 0.01 0.03\n* gap 1 s\n")
        arguments = ["-d", PROFILER, "--qc", limits]
        plain = self.lines("-d", PROFILER, self.cast)
        flagged = self.lines(*arguments, self.cast)
        pressure, temperature = self.index_of(PROFILER, "PRES"), self.index_of(PROFILER, "TEMP")
        self.assertEqual([line["values"] for line in flagged], [line["values"] for line in plain])
        expected = []
        for i, line in enumerate(plain):
            found = {}
            if not 0 <= line["values"][temperature] <= 18.55:
                found[str(temperature)] = 4
            if 0 < i < len(plain) - 1:
                before, value, after = (one["values"][pressure] for one in plain[i - 1:i + 2])
                step = abs(value - (before + after) / 2)
                if step > 0.01:
                    found[str(pressure)] = 4 if step > 0.03 else 3
            expected.append(found)
        self.assertEqual([line["qc"] for line in flagged], expected)
        flags = {flag for found in expected for flag in found.values()}
        self.assertEqual(flags, {3, 4})
        table = list(csv.DictReader(io.StringIO(self.decode(*arguments, self.cast).stdout, newline="")))
        self.assertEqual([row["qc TEMP(WATER)"] for row in table], [str(found.get(str(temperature), 1)) for found in expected])
        self.assertEqual([row["qc time"] for row in table], ["2"] + ["1"] * (len(table) - 1))
        self.check_good_only(arguments, plain, expected, temperature)

    def check_good_only(self, arguments, plain, expected, temperature):
        good = self.lines(*arguments, "--good-only", self.cast)
        kept = [None if found.get(str(temperature)) == 4 else line["values"][temperature]
                for line, found in zip(plain, expected)]
        self.assertEqual([line["values"][temperature] for line in good], kept)
        mean, = (row["mean"][temperature] for row in self.lines(*arguments, "--good-only", "--bin", "1 h", self.cast))
        self.assert_near(mean, statistics.fmean(value for value in kept if value is not None))
        if not netCDF4:
            return
        self.decode(*arguments, "--good-only", "-o", self.path("good.nc"), self.cast)
        with netCDF4.Dataset(self.path("good.nc")) as file:
            file.set_auto_mask(False)
            values, states = file["TEMP_WATER"][:], file["TEMP_WATER_qc"][:]
            self.assertIn("TEMP_WATER_qc", file["TEMP_WATER"].ancillary_variables.split())
            self.assertEqual([math.isnan(value) for value in values], [state == 4 for state in states])
            self.assertEqual([int(state) for state in states], [found.get(str(temperature), 1) for found in expected])

    def test_a_pressure_that_is_rejected_chooses_no_bin(self):
        limits = self.path("limits.txt")
        with open(limits, "w", encoding="ascii") as file:
            file.write("PRES gross -5 10\n")
        rows = self.lines("-d", PROFILER, "-d", RADIOMETER, "--role", "QORPRO042=profiler", "--bin", "1 dbar", self.cast,
                          "--qc", limits, "--good-only")
        for name in ("QORPRO042", "QORRAD0137"):
            self.assertEqual(max(row["pressure"] for row in rows if row["instrument"] == name), 9.5)

    def test_a_damaged_frame_that_is_left_out_chooses_no_bin(self):
        with open(self.cast, "rb") as file:
            log = bytearray(file.read())
        pressure = log.index(b"QORPRO042", len(log) // 2) + len("QORPRO042") + 10
        log[pressure:pressure + 3] = b"\xff\xff\xff"
        with open(self.cast, "wb") as file:
            file.write(log)
        arguments = ["-d", PROFILER, "-d", RADIOMETER, "--role", "QORPRO042=profiler", "--bin", "1 dbar", self.cast]
        for options, wrong in (((), True), (("--good-only",), False)):
            rows = self.lines(*arguments, *options)
            self.assertEqual(max(row["pressure"] for row in rows if row["instrument"] == "QORRAD0137") > 500, wrong)

    def test_products_are_held_to_ranges_that_are_bad_inside(self):
        home, limits = self.path("home"), self.path("limits.txt")
        os.makedirs(home)
        with open(os.path.join(home, "qorview.ini"), "w", encoding="utf-8") as settings:
            settings.write("[View-ancillary-QORPRO042\\Ancillary]\nTiltWarnings="
                           f"{1.9:09.2f} {90:09.2f} {2:09.2f} {90:09.2f} 1 1\n")
        with open(limits, "w", encoding="utf-8") as file:
            file.write("TILT warning 1.9 90\nTILT alarm 2 90\n")
        for arguments, settings in (((), home), ((limits,), self.path("none"))):
            with unittest.mock.patch.dict(os.environ, QORVIEW_HOME=settings):
                frames = self.lines("-d", PROFILER, "--derived", self.cast, "--qc", *arguments)
            found = set()
            for frame in frames:
                tilt = next(row[2] for row in frame["derived"] if row[0] == "TILT")
                found.add(frame["qc"].get("TILT", 1))
                self.assertEqual(frame["qc"].get("TILT", 1), 4 if tilt > 2 else 3 if tilt > 1.9 else 1, tilt)
            self.assertEqual(found, {1, 3, 4})

    def test_wrong_calls_name_what_is_wrong(self):
        limits = self.path("limits.txt")
        with open(limits, "w", encoding="ascii") as file:
            file.write("TEMPO gross 0 1\n")
        cases = [(["--bin", "0 dbar"], 2, "give a width above 0"), (["--bin", "1 furlong"], 2, "0.5 m"),
                 (["--bin", "1 s", "--format", "summary"], 2, "csv, jsonl or netcdf"),
                 (["--qc", "--format", "seabass"], 2, "csv, jsonl or netcdf"),
                 (["--bin", "1 s", "--qc"], 2, "give --good-only"),
                 (["--bin", "1 s", "--hex"], 2, "leave out --raw-counts and --hex"),
                 (["--bin", "1 s", "-o", self.path("two.nc"), self.cast], 2, "-j 1"),
                 (["--qc", self.path("none.txt")], 1, "none.txt: cannot be read"),
                 (["--qc", limits], 2, "limits.txt:1: there is no sensor TEMPO")]
        for arguments, status, text in cases:
            result = self.decode("-d", PROFILER, *arguments, self.cast, status=status)
            self.assertIn(text, result.stderr)
            self.assertEqual(result.stdout, "")
        good = self.path("good.csv")
        with open(good, "w", encoding="ascii") as file:
            file.write("TEMP(WATER) gross 0 30\n")
        for name in [good, os.path.join(os.path.dirname(good), ".", "good.csv")]:
            result = self.decode("-d", PROFILER, "--qc", good, "--overwrite", "-o", name, self.cast, status=2)
            self.assertIn("good.csv", result.stderr)
        with open(good, encoding="ascii") as file:
            self.assertEqual(file.read(), "TEMP(WATER) gross 0 30\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
