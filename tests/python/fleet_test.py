#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The fleet example with two workers: its file is that of a loop over the logs, and logs that cannot be read are said."""
import os
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77
try:
    import distributed  # on which the example stands
    import netCDF4
    import xarray
except ImportError as missing:
    print(f"fleet_test: skipped, {missing.name} is not installed (see script/packages.txt)")
    sys.exit(SKIPPED)

CLI, ROOT = (os.path.abspath(argument) for argument in sys.argv[1:3])
FLEET = os.path.join(ROOT, "examples", "fleet", "fleet.py")
PROFILER = os.path.join(ROOT, "examples", "profiler.cal")
sys.path.insert(0, os.path.dirname(FLEET))
import fleet  # noqa: E402
import qorview  # noqa: E402


class Fleet(unittest.TestCase):
    def test_two_workers_give_what_a_loop_gives(self):
        with tempfile.TemporaryDirectory() as folder:
            logs = [os.path.join(folder, f"log{number}.raw") for number in range(4)]
            for number, log in enumerate(logs[:3]):
                subprocess.run([CLI, "simulate", "-d", PROFILER, "--raw-log", "--rate", "max", "--frames",
                                str(200 + 50 * number), "-o", log], check=True, capture_output=True)
            with open(logs[1], "r+b") as file:
                file.seek(9000)
                file.write(b"\0" * 100)
            many, loop = os.path.join(folder, "many.nc"), os.path.join(folder, "loop.nc")
            result = subprocess.run([sys.executable, FLEET, "-d", PROFILER, "-i", "QORPRO042", "-o", many, *logs],
                                    capture_output=True, text=True, check=False)
            self.assertEqual(result.returncode, 1, result.stderr)
            self.assertIn("log3.raw: cannot be read", result.stderr)
            self.assertIn("4 logs: 2 whole, 1 with faults, 1 not read", result.stdout)
            fleet.store([fleet.bin_log(log, [PROFILER], "QORPRO042", "1s") for log in logs[:3]], loop)
            with xarray.open_dataset(many) as found, xarray.open_dataset(loop) as expected:
                xarray.testing.assert_identical(found.load(), expected.load())
                table = qorview.open(logs[0], [PROFILER]).frame_table("QORPRO042")
                first = table["PRES"][table["time"].astype("datetime64[s]") == found["time"].values[1]]
                self.assertEqual(int(found["frames"][1]), len(first))
                self.assertAlmostEqual(float(found["PRES"][1]), first.mean())
                self.assertGreater(int(found["frames"].sum()), 700)
                self.assertEqual(list(dict.fromkeys(found["log"].values)), ["log0.raw", "log1.raw", "log2.raw"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
