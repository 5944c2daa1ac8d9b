#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""netCDF files, read back by the libraries that scientists use: every value is that of JSON Lines, bit
for bit, every unit is one to UDUNITS, and what cannot be written leaves nothing behind."""
import calendar
import ctypes
import datetime
import hashlib
import json
import math
import os
import re
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zipfile

SKIPPED = 77
try:
    import netCDF4
    import numpy
    import xarray
except ImportError as missing:
    print(f"netcdf_test: skipped, {missing.name} is not installed (see script/packages.txt)")
    sys.exit(SKIPPED)

CLI, ROOT = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
EXAMPLES = os.path.join(ROOT, "examples")
STATUS_NUMBER = 0x3F


def bits(value):
    return struct.pack("<d", value)


def call(*arguments, **more):
    return subprocess.run([CLI, *arguments], capture_output=True, text=True, errors="replace", check=False, **more)


class NetCdf(unittest.TestCase):
    udunits = None  # the library and its units, once read

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        logs = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, logs)
        self.cast = os.path.join(logs, "cast.raw")
        made = call("simulate", "-d", self.example("profiler.cal"), "-d", self.example("radiometer.cal"), "--raw-log",
                    "--rate", "max", "--frames", "200", "-o", self.cast)
        self.assertEqual(made.returncode, 0, made.stderr)

    def path(self, name):
        return os.path.join(self.folder, name)

    def example(self, name):
        return os.path.join(EXAMPLES, name)

    def decode(self, *arguments, status=0):
        result = call("decode", "--quiet", *arguments)
        self.assertEqual(result.returncode, status, result.stderr)
        return result

    def make(self, name, *arguments):
        """Decodes into a netCDF file and into JSON Lines; the open file and the lines."""
        self.decode(*arguments, "-o", self.path(name))
        lines = [json.loads(line) for line in self.decode(*arguments, "--format", "jsonl").stdout.splitlines()]
        file = netCDF4.Dataset(self.path(name))
        self.addCleanup(file.close)
        file.set_auto_mask(False)
        return file, lines

    def sensors(self, definition):
        return json.loads(call("check", "--json", definition).stdout)["sensors"]

    def compare(self, file, lines, sensors):
        """Every sensor's values and statuses are those of the lines; returns how many were compared."""
        compared = 0
        for sensor in sensors:
            variable, column = self.find(file, sensor)
            if variable is None and not sensor["length"] and not sensor["variable"]:
                continue  # it stands in no frame
            if variable is None:
                self.assertTrue(all(line["values"][sensor["index"]] is None for line in lines), sensor)
                continue
            values, states = variable[:], file[variable.name + "_status"][:]
            if column is not None:
                values, states = values[:, column], states[:, column]
            self.assertEqual(len(values), len(lines))
            for value, state, line in zip(values, states, lines):
                expected = line["values"][sensor["index"]]
                if expected is None:
                    code = int(line["status"][str(sensor["index"])], 16)
                    self.assertEqual(state, code & STATUS_NUMBER)
                    self.assertTrue(value == "" or math.isnan(value))
                elif isinstance(expected, str):
                    self.assertEqual(value, expected)
                else:
                    self.assertEqual(bits(value), bits(expected), sensor)
                compared += 1
        return compared

    @staticmethod
    def find(file, sensor):
        """The variable of a sensor, and its column in a spectral one."""
        name = sensor["type"] + ("_" + sensor["id"] if sensor["id"] else "")
        if name in file.variables:
            return file[name], None
        series = file.variables.get(sensor["type"])
        if series is None or series.ndim != 2:
            return None, None
        grid = list(file[series.dimensions[1]][:])
        return series, grid.index(float(sensor["id"]))

    def assert_times(self, file, lines):
        for seconds, line in zip(file["time"][:], lines):
            if line["time"] is None:
                self.assertTrue(math.isnan(seconds))
                continue
            text = line["time"].rstrip("Z")
            moment = datetime.datetime.strptime(text, "%Y-%m-%dT%H:%M:%S.%f")
            milliseconds = calendar.timegm(moment.timetuple()) * 1000 + moment.microsecond // 1000
            self.assertEqual(round(seconds * 1000), milliseconds)

    def test_values_are_those_of_the_lines(self):
        for name in ("profiler", "radiometer"):
            definition = self.example(name + ".cal")
            for options in ([], ["--wet"], ["--raw-counts"]):
                label = name + "".join(options) + ".nc"
                file, lines = self.make(label, "-d", definition, *options, "--utc-offset=+00:00",
                                        self.cast)
                self.assertGreater(self.compare(file, lines, self.sensors(definition)), 1000)
                self.assert_times(file, lines)
                self.assertEqual(list(file["frame"][:]), [line["frame"] for line in lines])
                codes = {False: 0, True: 1, None: 2}
                for flag in ("dropped", "checksum_error", "value_error"):
                    self.assertEqual(list(file[flag][:]), [codes[line[flag]] for line in lines])

    def test_products_are_those_of_the_lines(self):
        file, lines = self.make("cast.nc", "-d", self.example("profiler.cal"), "--derived", self.cast)
        labels = [row[0] for row in lines[0]["derived"]]
        self.assertIn("TILT", labels)
        tilt = file["TILT"][:]
        for value, line in zip(tilt, lines):
            expected = line["derived"][labels.index("TILT")][2]
            self.assertEqual(bits(value), bits(expected))

    def test_what_failed_is_filled_and_says_why(self):
        """Frames that end early, a number that is none, a text with bytes that are no ASCII."""
        definition = self.path("odd.tdf")
        with open(definition, "w", encoding="latin-1") as file:
            file.write("VLF_INSTRUMENT $ODD '' 4 AS 0 NONE\nFIELD NONE ',' 1 AS 0 DELIMITER\n"
                       "NOTE NONE '' V AS 0 NONE\nFIELD NONE ',' 1 AS 0 DELIMITER\n"
                       "DEPTH NONE 'm' V AF 1 POLYU\n0 1\nTERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n")
        raw = self.path("odd.bin")
        with open(raw, "wb") as file:
            file.write(b"$ODD,a\xe9,1.5\r\n$ODD,,x\r\n$ODD,b\r\n$ODD,c,1e400\r\n$ODD,d,0.1\r\n")
        file, lines = self.make("odd.nc", "-d", definition, raw)
        self.assertEqual(len(lines), 5)
        self.compare(file, lines, self.sensors(definition))
        self.assertTrue(any(state != 0 for state in file["DEPTH_status"][:]))
        self.assertIn("\xe9", file["NOTE"][0])
        self.assertTrue(all(math.isnan(time) for time in file["time"][:]))

    def test_blocks_of_many_frames_are_one_file(self):
        """More frames than are written at once, from two logs of which the second is short."""
        definition = self.example("profiler.cal")
        logs = [self.path("one.raw"), self.path("two.raw")]
        for log, frames in zip(logs, ("9000", "10")):
            made = call("simulate", "-d", definition, "--raw-log", "--rate", "max", "--frames", frames, "-o", log)
            self.assertEqual(made.returncode, 0, made.stderr)
        file, lines = self.make("both.nc", "-d", definition, *logs, "--utc-offset=+00:00")
        self.assertEqual(len(lines), 9010)
        self.compare(file, lines, self.sensors(definition))
        self.assertEqual(list(file["log"][:]), [logs.index(line["file"]) + 1 for line in lines])

    def test_units_and_attributes_are_those_of_the_conventions(self):
        for name in ("profiler", "radiometer"):
            file, _ = self.make(name + ".nc", "-d", self.example(name + ".cal"), "--derived", "--utc-offset=+00:00",
                                self.cast)
            self.assertEqual(file.Conventions, "CF-1.8, ACDD-1.3")
            for attribute in ("title", "summary", "source", "history", "date_created", "time_coverage_start",
                              "time_coverage_end", "qorview_definition", "qorview_header"):
                self.assertTrue(getattr(file, attribute), attribute)
            definition = self.example(name + ".cal")
            digest = subprocess.run(["sha256sum", definition], capture_output=True, text=True, check=True).stdout
            self.assertEqual(file.qorview_definition_sha256, digest.split()[0])
            self.assertTrue(file.dimensions["time"].isunlimited())
            for variable in file.variables.values():
                if "units" in variable.ncattrs():
                    self.assert_unit(variable.units)
                for other in getattr(variable, "ancillary_variables", "").split():
                    self.assertIn("flag_meanings", file[other].ncattrs())
        self.assertEqual(file["ED"].standard_name, "downwelling_radiative_flux_per_unit_wavelength_in_air")
        self.assertEqual(file["ED"].units, "uW cm-2 nm-1")
        self.assertTrue(file["ED"].filters()["zlib"])

    def test_files_of_a_package_have_its_members_definitions(self):
        package, folder = self.example("cast.sip"), self.path("members")
        self.decode("-p", package, "--format", "netcdf", "-o", folder, self.example("cast.raw"))
        with zipfile.ZipFile(package) as archive:
            members = {name: archive.read(name) for name in archive.namelist()}
        for name in os.listdir(folder):
            with netCDF4.Dataset(os.path.join(folder, name)) as file:
                definition = members[os.path.basename(file.qorview_definition_file)]
                self.assertEqual(file.qorview_definition_sha256, hashlib.sha256(definition).hexdigest())
                self.assertEqual(file.qorview_definition, definition.decode())

    def unit_of(self, text):
        """What UDUNITS makes of a text; None when it knows no such unit."""
        if not NetCdf.udunits:
            try:
                library = ctypes.CDLL("libudunits2.so.0")
            except OSError:
                self.skipTest("libudunits2 is not installed")
            library.ut_set_error_message_handler(ctypes.cast(library.ut_ignore, ctypes.c_void_p))
            library.ut_read_xml.restype = library.ut_parse.restype = ctypes.c_void_p
            library.ut_parse.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
            library.ut_are_convertible.argtypes = [ctypes.c_void_p, ctypes.c_void_p]
            NetCdf.udunits = library, library.ut_read_xml(None)
        library, system = NetCdf.udunits
        return library.ut_parse(system, text.encode(), 2)

    def assert_unit(self, text, like=None):
        self.assertTrue(self.unit_of(text), text)
        if like:
            convertible = NetCdf.udunits[0].ut_are_convertible(self.unit_of(text), self.unit_of(like))
            self.assertTrue(convertible, (text, like))

    def test_every_unit_is_one_to_udunits(self):
        """All spellings that the program takes, as its table has them, are what UDUNITS takes them for."""
        with open(os.path.join(ROOT, "src/export/UnitText.cpp"), encoding="ascii") as file:
            spellings = re.findall(r'^    {"([^"]+)", "[^"]+", (\w+)},', file.read(), re.M)
        self.assertGreater(len(spellings), 90)
        like = {"Plain": "1", "Length": "m", "Volume": "m3", "Mass": "kg", "Time": "s", "Frequency": "Hz",
                "Current": "A", "Heat": "K", "Amount": "mol", "Molar": "mol m-3", "Angle": "rad", "SolidAngle": "sr",
                "Speed": "m s-1", "Pressure": "Pa", "Power": "W", "Voltage": "V", "Conductance": "S"}
        made = [("uW/cm^2/nm/sr", "W m-3 sr-1"), ("ug/(l*s)", "kg m-3 s-1"), ("1/uMolar", "m3 mol-1"),
                ("mS/cm", "S m-1"), ("\xb5mol/m\xb2/s", None), ("%/furlong", None)]
        expected = [(units, like[kind]) for units, kind in spellings if " " not in units] + made
        definition, raw = self.path("units.cal"), self.path("units.bin")
        with open(definition, "w", encoding="latin-1") as file:
            file.write("INSTRUMENT UNIT '' 4 AS 0 NONE\n")
            for number, (units, _) in enumerate(expected):
                file.write(f"X S{number} '{units}' 1 BU 1 POLYU\n0 1\n")
        with open(raw, "wb") as file:
            file.write(b"UNIT" + bytes(range(1, len(expected) + 1)))
        file, lines = self.make("units.nc", "-d", definition, raw)
        self.assertEqual(len(lines), 1)
        for number, (units, dimension) in enumerate(expected):
            variable = file[f"X_S{number}"]
            self.assertEqual(variable.original_units, units)
            self.assertEqual(bool(dimension), "units" in variable.ncattrs(), units)
            if dimension:
                self.assert_unit(variable.units, dimension)

    def test_layout_is_for_reading_by_time_and_by_wavelength(self):
        """Channels of one wavelength, names that differ in case alone, a sensor that is called as we call ours."""
        definition, raw = self.path("names.cal"), self.path("names.bin")
        channels = [("ED", "412.5"), ("ED", "443"), ("ED", "443.0"), ("LU", "412.5"), ("LU", "443"), ("LI", "443"),
                    ("Time", "NONE"), ("TIME", "1"), ("frame", "NONE"), ("dropped", "NONE"), ("A-B", "1"), ("a.b", "1")]
        with open(definition, "w", encoding="ascii") as file:
            file.write("INSTRUMENT NAMES '' 5 AS 0 NONE\n")
            for kind, name in channels:
                optical = name[0] in "34"
                file.write(f"{kind} {name} 'uW/cm^2/nm' 2 BU 1 {'OPTIC2' if optical else 'POLYU'}\n")
                file.write("0 1 1\n" if optical else "0 1\n")
        frame = b"".join(number.to_bytes(2, "big") for number in range(300, 300 + len(channels)))
        with open(raw, "wb") as file:
            file.write((b"NAMES" + frame) * 3)
        file, lines = self.make("names.nc", "-d", definition, raw)
        self.assertEqual(len(lines), 3)
        names = [name.lower() for name in file.variables]
        self.assertEqual(len(set(names)), len(names))
        values = {float(value) for variable in file.variables.values() if variable.dtype == numpy.float64
                  and variable.ndim for value in variable[:].flatten()}
        self.assertLessEqual(set(range(300, 300 + len(channels))), values, "every sensor has its place")
        self.assertEqual(list(file["wavelength"][:]), [412.5, 443.0])
        for series in ("ED", "LU"):
            self.assertEqual(file[series].dimensions, ("time", "wavelength"))
            self.assertEqual(file[series].chunking()[0], file["time"].chunking()[0])
            self.assertTrue(file[series].filters()["zlib"])
        self.assertEqual(len(file["LI"].dimensions), 2)

    def test_xarray_opens_it(self):
        self.decode("-d", self.example("radiometer.cal"), "-o", self.path("cast.nc"), "--utc-offset=+13:00",
                    self.cast)
        with xarray.open_dataset(self.path("cast.nc")) as data:
            self.assertEqual(data["ED"].dims, ("time", "wavelength"))
            self.assertTrue(numpy.issubdtype(data["time"].dtype, numpy.datetime64))
            self.assertEqual(data["time"].attrs["time_zone"], "UTC")
            self.assertGreater(float(data["ED"].sel(wavelength=490, method="nearest").max()), 0)

    def test_wrong_calls_are_said_and_leave_nothing(self):
        one, two = self.example("profiler.cal"), self.example("radiometer.cal")
        raw = self.cast
        os.mkdir(self.path("there"))
        cases = [(["-d", one, "-d", two, "-o", self.path("both.nc"), raw], 2, "several instruments"),
                 (["-d", one, "--format", "netcdf", raw], 2, "no stream"),
                 (["-d", one, "--format", "netcdf", "-o", "/dev/null", raw], 2, "no stream"),
                 (["-d", one, "-o", self.path("none/cast.nc"), raw], 1, "none/cast.nc: cannot be written."),
                 (["-d", self.path("none.cal"), "-o", self.path("cast.nc"), raw], 1, "none.cal"),
                 (["-d", one, "-o", self.path("cast.nc"), self.path("none.raw")], 1, "none.raw")]
        for arguments, status, text in cases:
            result = self.decode(*arguments, status=status)
            self.assertIn(text, result.stderr)
            self.assertEqual(os.listdir(self.folder), ["there"], arguments)
        self.decode("-d", one, "--format", "netcdf", "-o", self.path("there"), raw)
        self.assertEqual(len(os.listdir(self.path("there"))), 1)

    def test_a_full_disk_leaves_nothing(self):
        """A limit of the file's size stands for the disk's end: in its head, its frames, its very end."""
        definition = self.example("radiometer.cal")
        self.decode("-d", definition, "-o", self.path("cast.nc"), self.cast)
        whole = os.path.getsize(self.path("cast.nc"))
        os.remove(self.path("cast.nc"))
        for limit in (1, 9000, 60000, whole - 1):
            result = call("decode", "--quiet", "-d", definition, "-o", self.path("cast.nc"), self.cast,
                          preexec_fn=lambda limit=limit: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            self.assertEqual(result.returncode, 1, (limit, result.stderr))
            self.assertIn("cast.nc: cannot be written. The file is larger", result.stderr)
            self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
            self.assertEqual(os.listdir(self.folder), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
