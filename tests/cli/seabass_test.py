# SPDX-License-Identifier: GPL-3.0-or-later
"""SeaBASS files: the header is complete and says what the data say, and every value is that of JSON Lines.
Usage: seabass_test.py QORVIEW-CLI SOURCE-FOLDER"""
import json
import os
import resource
import subprocess
import sys
import tempfile
import unittest

CLI, ROOT = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
KNOWN = {"investigators": "A. Person", "affiliations": "Somewhere", "contact": "a@example.org", "experiment": "KA26",
         "cruise": "KA2603", "documents": "readme.txt", "data_type": "cast", "north_latitude": "-44.5",
         "south_latitude": "-44.6", "east_longitude": "171.25", "west_longitude": "171"}
GIVEN = [word for key, value in KNOWN.items() for word in ("--seabass", f"{key}={value}")]


def call(*arguments, **more):
    return subprocess.run([CLI, *arguments], capture_output=True, text=True, errors="replace", check=False, **more)


class SeaBass(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = holder.name
        self.profiler, self.gps = (os.path.join(ROOT, "examples", name) for name in ("profiler.cal", "gps.tdf"))
        self.raw = self.simulate("cast.raw", "-d", self.profiler, "-d", self.gps)

    def path(self, name):
        return os.path.join(self.folder, name)

    def simulate(self, name, *options):
        made = call("simulate", "--raw-log", "--frames", "100", "--start", "2026-06-21T23:59:50", "-o", self.path(name),
                    *options)
        self.assertEqual(made.returncode, 0, made.stderr)
        return self.path(name)

    def make(self, *options, warnings=0):
        done = call("decode", "--quiet", "--overwrite", *options, "-o", self.path("cast.sb"), self.raw)
        self.assertEqual((done.returncode, len(done.stderr.splitlines())), (0, warnings), done.stderr)
        with open(self.path("cast.sb"), encoding="ascii") as file:
            lines = file.read().splitlines()
        self.assertEqual((lines[0], os.listdir(self.folder).count("cast.sb.rows.part")), ("/begin_header", 0))
        end = lines.index("/end_header")
        comments = [line for line in lines[:end] if line.startswith("!")]
        header = [line for line in lines[1:end] if not line.startswith("!")]
        for line in header:
            self.assertRegex(line, r"^/[a-z_]+=[!-~]+$")
        header = dict(line[1:].split("=", 1) for line in header)
        fields, units = header["fields"].split(","), header["units"].split(",")
        self.assertEqual(len(fields), len(units))
        self.assertEqual(len({field.lower() for field in fields}), len(fields))
        rows = [dict(zip(fields, line.split(","), strict=True)) for line in lines[end + 1:]]
        frames = call("decode", "--format", "jsonl", *options, self.raw).stdout.splitlines()
        self.assertEqual(len(rows), len(frames))
        return header, dict(zip(fields, units)), comments, rows, [json.loads(frame) for frame in frames]

    def test_values_and_header_are_those_of_the_log(self):
        header, units, comments, rows, frames = self.make("-d", self.profiler, "--utc-offset=+12:00", *GIVEN)
        self.assertEqual({key: header[key] for key in KNOWN}, {
            key: value.replace(" ", "_") + ("[DEG]" if "itude" in key else "") for key, value in KNOWN.items()})
        self.assertEqual((header["missing"], header["delimiter"]), ("-9999", "comma"))
        self.assertEqual((header["data_file_name"], header["original_file_name"], header["calibration_files"]),
                         ("cast.sb", "cast.raw", "profiler.cal"))
        sensors = json.loads(call("check", "--json", self.profiler).stdout)["sensors"]
        index = {(sensor["type"], sensor["id"]): sensor["index"] for sensor in sensors}
        pairs = [("pressure", "dbar", ("PRES", "")), ("Wt", "degreesC", ("TEMP", "WATER")), ("cond", "mmho/cm", ("COND", "")),
                 ("Chl_stimf", "mg/m^3", ("CHL", "")), ("heading", "degrees", ("HEADING", ""))]
        self.assertEqual(list(units), ["date", "time"] + [field for field in units if field not in ("date", "time")])
        for field, unit, sensor in pairs:
            self.assertEqual(units[field], unit)
            column = index.get(sensor, index.get((sensor[0], "NONE")))
            for row, frame in zip(rows, frames):
                self.assertEqual(float(row[field]), frame["values"][column], (field, frame["frame"]))
        for row, frame in zip(rows, frames):
            self.assertEqual(f"{row['date'][:4]}-{row['date'][4:6]}-{row['date'][6:]}T{row['time']}", frame["time"][:19])
        self.assertEqual((header["start_date"], header["start_time"]), (rows[0]["date"], rows[0]["time"] + "[GMT]"))
        self.assertEqual((header["end_date"], header["end_time"]), (rows[-1]["date"], rows[-1]["time"] + "[GMT]"))
        self.assertIn("! Not in this file, without a field: CDOM (ppb)", comments)
        self.assertFalse(any("PRES" in line for line in comments))

    def test_positions_and_what_is_missing(self):
        header, _, _, rows, _ = self.make("-d", self.gps, "--utc-offset=+00:00", warnings=1)
        with open(self.gps, encoding="ascii") as file:
            unclear = file.read().replace("LATITUDE", "GPSLAT")
        with open(self.path("unclear.tdf"), "w", encoding="ascii") as file:
            file.write(unclear)
        _, units, comments, same, _ = self.make("-d", self.path("unclear.tdf"), "--utc-offset=+00:00", warnings=1)
        self.assertEqual(([row["lon"] for row in same], "lat" in units), ([row["lon"] for row in rows], False))
        self.assertIn("! Not in this file, without a field: GPSLAT (dms)", comments)
        for field, key in (("lat", "latitude"), ("lon", "longitude")):
            values = [float(row[field]) for row in rows if row[field] != "-9999"]
            low, high = (("south_", "north_") if field == "lat" else ("west_", "east_"))
            for name, value in ((low, min(values)), (high, max(values))):
                self.assertTrue(header[name + key].endswith("[DEG]"))
                self.assertAlmostEqual(float(header[name + key][:-5]), value, 5)
        self.assertEqual(header["contact"], "NA")
        capture = self.path("cast.bin")
        with open(capture, "wb") as file:
            file.write(b"$GPRMC,,V,,,,,,,210626,,*00\r\n")
        self.raw = capture
        _, _, _, rows, _ = self.make("-d", self.gps, warnings=1)
        self.assertEqual({row[field] for row in rows for field in ("date", "time", "lat", "lon")}, {"-9999"})

    def test_products_are_fields_where_the_archive_has_them(self):
        radiometer = os.path.join(ROOT, "examples", "radiometer.cal")
        self.raw = self.simulate("sky.raw", "-d", radiometer)
        header, units, _, rows, frames = self.make("-d", radiometer, "--derived", "--utc-offset=+00:00", *GIVEN)
        self.assertEqual([units[field] for field in ("Ed348.00", "Ed804.00", "tilt")],
                         ["uW/cm^2/nm", "uW/cm^2/nm", "degrees"])
        labels = [row[0] for row in frames[0]["derived"]]
        for row, frame in zip(rows, frames):
            self.assertEqual(float(row["tilt"]), frame["derived"][labels.index("TILT")][2])
        self.assertEqual(header["fields"].count("Ed"), 137)

    def test_wrong_calls_are_said_and_leave_nothing(self):
        out, offset = self.path("out.sb"), "--utc-offset=+00:00"
        cases = [(["-o", out], 1, "--utc-offset"), ([offset, "--format", "seabass"], 2, "no stream"),
                 ([offset, "-o", out, "--raw-counts"], 2, "calibrated values"),
                 ([offset, "-o", out, "--seabass", "contract=a@b"], 2, "contact"),
                 ([offset, "-o", out, "--seabass", "start_date=20260621"], 2, "says it itself"),
                 ([offset, "-o", out, "--seabass", "north_latitude=91"], 2, "degrees up to 90"),
                 ([offset, "-o", out, "--seabass", "cruise"], 2, "KEY=VALUE"),
                 ([offset, "-o", out, "--seabass", "cruise=caf\xe9"], 2, "ASCII")]
        there = os.listdir(self.folder)
        with open(self.raw, "rb") as file:
            header = file.read().replace(b"UTC+00:00 (ZONE)", b"somewhere (ZONE)")
        with open(self.raw, "wb") as file:
            file.write(header)
        piped = call("decode", "--quiet", "-d", self.profiler, "-o", out, "/dev/stdin", encoding="latin-1",
                     input=header.decode("latin-1"))
        self.assertEqual((piped.returncode, piped.stderr.count("--utc-offset"), os.listdir(self.folder)), (1, 1, there))
        for options, status, text in cases:
            done = call("decode", "--quiet", "-d", self.profiler, *options, self.raw)
            self.assertEqual((done.returncode, done.stdout), (status, ""), done.stderr)
            self.assertIn(text, done.stderr)
            self.assertEqual(os.listdir(self.folder), there, options)
        os.mkdir(out + ".rows")
        done = call("decode", "--quiet", "-d", self.profiler, offset, "-o", out, self.raw)
        self.assertEqual((done.returncode, done.stderr.count("out.sb.rows: ")), (2, 1), done.stderr)
        os.rmdir(out + ".rows")
        for limit in (100, 5000):
            done = call("decode", "--quiet", "-d", self.profiler, offset, "-o", out, self.raw,
                        preexec_fn=lambda limit=limit: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            self.assertEqual((done.returncode, len(done.stderr.splitlines())), (1, 1), done.stderr)
            self.assertEqual(os.listdir(self.folder), there)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
