#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The package qorview: datasets are those of netCDF files, whether in memory or read by blocks, values are those of
JSON Lines, Dask over many logs equals the loop, and what is wrong is said as an exception."""
import glob
import json
import os
import pathlib
import pickle
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import warnings

SKIPPED = 77
try:
    import dask
    import netCDF4  # by which xarray opens what is compared
    import numpy
    import xarray
except ImportError as missing:
    print(f"package_test: skipped, {missing.name} is not installed (see script/packages.txt)")
    sys.exit(SKIPPED)
import qorview
from qorview import _blocks

CLI, ROOT, BUILD = (os.path.abspath(argument) for argument in sys.argv[1:4])
EXAMPLES = os.path.join(ROOT, "examples")
PROFILER, RADIOMETER = (os.path.join(EXAMPLES, name) for name in ("profiler.cal", "radiometer.cal"))
OF_THE_CALL = ("history", "date_created", "qorview_call")


def call(*arguments):
    result = subprocess.run([CLI, *arguments], capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise AssertionError(result.stderr)
    return result.stdout


def simulate(path, frames, *definitions):
    named = [word for definition in definitions for word in ("-d", definition)]
    call("simulate", *named, "--raw-log", "--rate", "max", "--frames", str(frames), "-o", path)


def without_call(data):
    return data.assign_attrs({name: "" for name in OF_THE_CALL})


class Package(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.cast = self.path("cast.raw")
        simulate(self.cast, 300, PROFILER, RADIOMETER)

    def path(self, name):
        return os.path.join(self.folder, name)

    def from_netcdf(self, raw, definitions, *options):
        """By instrument name, as datasets in memory."""
        folder = tempfile.mkdtemp(dir=self.folder)
        named = [word for definition in definitions for word in ("-d", definition)]
        call("decode", "--quiet", *named, *options, "--format", "netcdf", "-o", folder, raw)
        found = {}
        for path in glob.glob(folder + "/*.nc"):
            with xarray.open_dataset(path) as data:
                found[data.attrs["instrument"]] = without_call(data.load())
        return found

    def opened(self, raw, definitions, name, **options):
        data = xarray.open_dataset(raw, engine="qorview", definitions=definitions, instrument=name, **options)
        return without_call(data)

    def assert_same(self, raw, definitions, derived=False, **options):
        expected = self.from_netcdf(raw, definitions, *(["--derived"] if derived else []),
                                    *(["--wet"] if options.get("wet") else []))
        log = qorview.open(raw, definitions, **options)
        self.assertEqual(sorted(log.instruments), sorted(expected))
        for name, data in expected.items():
            xarray.testing.assert_identical(without_call(log.to_xarray(name, derived)), data)
            xarray.testing.assert_identical(self.opened(raw, definitions, name, derived=derived, **options), data)
        return expected

    def test_datasets_are_those_of_netcdf_files(self):
        both = [PROFILER, RADIOMETER]
        expected = self.assert_same(self.cast, both)
        self.assertTrue(all(data.sizes["time"] > 100 for data in expected.values()))
        self.assert_same(self.cast, both, derived=True)
        self.assert_same(self.cast, both, wet=True)
        subprocess.run(["gzip", "-k", self.cast], check=True)
        self.assert_same(self.cast + ".gz", both)

    def test_odd_logs_too(self):
        """Texts of any length and of a width, frames that end early, damage, recordings of every kind."""
        definition = self.path("odd.tdf")
        with open(definition, "w", encoding="latin-1") as file:
            file.write("VLF_INSTRUMENT $ODD '' 4 AS 0 NONE\nFIELD NONE ',' 1 AS 0 DELIMITER\n"
                       "NOTE NONE '' V AS 0 NONE\nFIELD NONE ',' 1 AS 0 DELIMITER\n"
                       "DEPTH NONE '\xb0' V AF 1 POLYU\n0 1\nTERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n")
        raw = self.path("odd.bin")
        with open(raw, "wb") as file:
            file.write(b"$ODD,a\xe9,1.5\r\n$ODD,,x\r\nlost$ODD,b\r\n$ODD,c,1e400\r\n$ODD,d,0.1\r\n")
        self.assert_same(raw, [definition])
        compared = 0
        for case in sorted(glob.glob(os.path.join(ROOT, "tests", "golden", "*", "input.*"))):
            folder = os.path.dirname(case)
            with open(os.path.join(folder, "case.txt"), encoding="utf-8") as file:
                files = re.findall(r"(?<= -[dp] )\S+", file.read())
            with self.subTest(case), warnings.catch_warnings():
                warnings.simplefilter("ignore")
                self.assert_same(case, [os.path.join(folder, name) for name in files])
            compared += 1
        self.assertGreater(compared, 5)

    def test_any_part_of_it_is_read_by_blocks(self):
        whole = without_call(qorview.open(self.cast, PROFILER).to_xarray("QORPRO042"))
        before, _blocks.BLOCK_BYTES = _blocks.BLOCK_BYTES, 5000
        self.addCleanup(setattr, _blocks, "BLOCK_BYTES", before)
        os.utime(self.cast)  # so that nothing of it is kept
        lazy = self.opened(self.cast, PROFILER, "QORPRO042", chunks={})
        self.assertGreater(len(lazy["frame"].chunks[0]) if lazy["frame"].chunks else 0, 3)
        frames = whole.sizes["time"]
        for part in (slice(5, 120, 7), slice(None, None, -1), slice(9, 9), 17, -1, [3, 100, 4], slice(frames - 3, None)):
            direct = self.opened(self.cast, PROFILER, "QORPRO042").isel(time=part)
            xarray.testing.assert_identical(direct.load(), whole.isel(time=part))
        xarray.testing.assert_identical(lazy.compute(scheduler="threads"), whole)

    def test_values_are_those_of_the_lines(self):
        lines = [json.loads(line) for line in call("decode", "--quiet", "-d", PROFILER, "--format", "jsonl",
                                                   self.cast).splitlines()]
        definition = qorview.Definition(PROFILER)
        table = qorview.open(self.cast, [PROFILER]).frame_table(definition.name)
        self.assertEqual([str(time) for time in table["time"]], [line["time"] for line in lines])
        compared = 0
        for sensor in definition.sensors:
            column = table.get("_".join(filter(None, (sensor.type, sensor.id))))
            if column is not None and column.dtype == numpy.float64:
                self.assertEqual(column.tolist(), [line["values"][sensor.index] for line in lines])
                compared += 1
        self.assertGreater(compared, 5)
        with open(self.cast, "rb") as file:
            file.seek(lines[7]["offset"])
            self.assertEqual(definition.convert(file.read(definition.frame_size)), lines[7]["values"])

    def test_dask_over_many_logs_equals_the_loop(self):
        logs = [self.path(f"log{number}.raw") for number in range(4)]
        for number, raw in enumerate(logs):
            simulate(raw, 50 + number, PROFILER)
        options = {"engine": "qorview", "definitions": [PROFILER], "combine": "nested", "concat_dim": "time"}
        with dask.config.set(scheduler="processes", num_workers=2):
            many = xarray.open_mfdataset(logs, parallel=True, **options).compute()
        loop = xarray.concat([qorview.open(raw, PROFILER).to_xarray("QORPRO042") for raw in logs], "time",
                             combine_attrs="override")
        self.assertEqual(many.sizes["time"], 50 + 51 + 52 + 53)
        xarray.testing.assert_equal(many, loop)

    def test_a_log_can_be_sent_and_its_arrays_outlive_it(self):
        log = pickle.loads(pickle.dumps(qorview.open(self.cast, [PROFILER])))
        table = log.frame_table("QORPRO042")
        pressure = next(values for values in table.values() if values.dtype == numpy.float64 and len(values) > 9)
        kept, copy = pressure[3:], pressure[3:].copy()
        del table, log, pressure
        numpy.testing.assert_array_equal(kept, copy)

    def test_verify_is_that_of_the_command(self):
        with open(self.cast, "r+b") as file:
            file.seek(60000)
            file.write(b"\0" * 500)
        said = subprocess.run([CLI, "verify", "--json", "-d", PROFILER, "-d", RADIOMETER, self.cast],
                              capture_output=True, text=True, check=False).stdout
        verdict = qorview.open(self.cast, [PROFILER, RADIOMETER]).verify()
        self.assertEqual(verdict, json.loads(said))
        self.assertFalse(verdict["ok"])

    def test_a_log_that_changed_is_no_data(self):
        other, definition = self.path("other.raw"), shutil.copy(PROFILER, self.path("own.cal"))
        simulate(other, 300, PROFILER, RADIOMETER)
        with open(definition, encoding="ascii") as file:
            edited = file.read().replace("-12.482 ", "-11.482 ")
        for change in (lambda: pathlib.Path(definition).write_text(edited, encoding="ascii"),
                       lambda: os.replace(other, self.cast), lambda: os.truncate(self.cast, 5000)):
            before = self.opened(self.cast, [definition], "QORPRO042").load()
            before["frame"].values[:] = 0
            data = self.opened(self.cast, [definition], "QORPRO042", cache=False)
            self.assertTrue(data["frame"].all())
            change()
            with self.assertRaisesRegex(qorview.FileError, "changed since it was opened"):
                data.load()
            after = self.opened(self.cast, [definition], "QORPRO042").load()
            self.assertFalse(after["PRES"].equals(before["PRES"]))
            xarray.testing.assert_identical(after, without_call(qorview.open(self.cast, definition).to_xarray("QORPRO042")))

    def test_what_is_wrong_is_a_sentence(self):
        log = qorview.open(self.cast, [PROFILER, RADIOMETER])
        read = lambda **options: xarray.open_dataset(self.cast, engine="qorview", **options)  # noqa: E731
        cases = [(lambda: qorview.open(self.folder, [PROFILER]), OSError, "is a folder"),
                 (lambda: qorview.open(self.path("no.raw"), [PROFILER]), OSError, "no.raw: cannot be read"),
                 (lambda: qorview.open(self.cast, self.path("no.cal")), OSError, "no.cal"),
                 (lambda: qorview.open(self.cast), ValueError, "give definitions="),
                 (lambda: qorview.open(self.cast, session=self.path("no.qor")), OSError, "no.qor"),
                 (lambda: qorview.open(self.cast, [PROFILER], wet=["X"]), ValueError, "no instrument of that name"),
                 (lambda: log.to_xarray("QORPRO04"), ValueError, "QORPRO042"),
                 (lambda: log.to_xarray("QORPRO042", derived="most"), ValueError, "derived='most'"),
                 (lambda: read(definitions=[PROFILER, RADIOMETER]), ValueError, "instrument=, one of"),
                 (lambda: read(definitions=[PROFILER], instrument="X"), ValueError, "\"X\""),
                 (lambda: qorview.Definition(self.path("no.cal")), OSError, "no.cal: could not be loaded"),
                 (lambda: qorview.Definition(PROFILER).convert(b"12"), ValueError, "bytes, not 2")]
        for number, (wrong, kind, text) in enumerate(cases):
            with self.subTest(number), self.assertRaisesRegex(qorview.Error, text) as caught:
                wrong()
            self.assertIsInstance(caught.exception, kind)

    def test_the_page_says_what_runs(self):
        """The examples of docs/python.md, one after another as they are printed, and the first plot."""
        shutil.copy(PROFILER, self.folder)
        shutil.copy(RADIOMETER, self.folder)
        os.mkdir(self.path("logs"))
        for number in range(2):
            simulate(self.path(f"logs/{number}.raw"), 50, PROFILER)
        with open(os.path.join(ROOT, "docs", "python.md"), encoding="utf-8") as file:
            blocks = re.findall(r"```python\n(.*?)```", file.read(), re.DOTALL)
        self.assertGreater(len(blocks), 3)
        calls = [["-c", "\n".join(blocks)], [os.path.join(EXAMPLES, "python", "first_plot.py"), self.path("cast.png")]]
        for words in calls:
            result = subprocess.run([sys.executable, *words], cwd=self.folder, capture_output=True, text=True, check=False)
            self.assertEqual(result.returncode, 0, result.stderr)
        self.assertGreater(os.path.getsize(self.path("cast.png")), 10000)

    def test_installed_it_is_found(self):
        """By its files below a prefix alone, with nothing of the build folder."""
        subprocess.run(["cmake", "--install", BUILD, "--component", "python", "--prefix", self.path("usr")], check=True,
                       capture_output=True)
        [package] = glob.glob(self.path("usr/lib/*/dist-packages"))
        said = subprocess.run([sys.executable, "-c", "import qorview, xarray, importlib.metadata as metadata\n"
                               "print(qorview.__file__, 'qorview' in xarray.backends.list_engines(),"
                               "metadata.version('qorview') == qorview.__version__)"],
                              env={"PYTHONPATH": package}, capture_output=True, text=True, check=True).stdout
        self.assertEqual(said.split(), [os.path.join(package, "qorview", "__init__.py"), "True", "True"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
