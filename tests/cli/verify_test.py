# SPDX-License-Identifier: GPL-3.0-or-later
"""Logs that were damaged on purpose, and what verify says of them: what is wrong and where, every
byte accounted for. Usage: verify_test.py QORVIEW-CLI SOURCE-FOLDER"""
import gzip
import hashlib
import json
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

from harness import RECORD, TAG, behind_header, wait_for

CLI, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])
RADIOMETER, PROFILER, GPS = (str(SOURCE / "examples" / name) for name in
                             ("radiometer.cal", "profiler.cal", "gps.tdf"))
BEGIN, FRAME = b"QORPRO042", 60


def run(*arguments):
    return subprocess.run([CLI, *arguments], capture_output=True, timeout=60)


class Damage(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.log = self.folder / "log.raw"

    def simulated(self, start, *files, frames=60):
        path = self.folder / "simulated.raw"
        done = run("simulate", "--overwrite", "-o", str(path), "--raw-log", "--frames", str(frames), "--start",
                   "2026-06-21T" + start, *files)
        self.assertEqual(done.returncode, 0, done.stderr)
        return path.read_bytes()

    def verdict(self, content, *files):
        self.log.write_bytes(content)
        done = run("verify", "--json", *files, str(self.log))
        verdict = json.loads(done.stdout)
        self.assertEqual(verdict["size"], len(content))
        self.assertEqual(sum(verdict["bytes"].values()), len(content))
        self.assertEqual(verdict["faults"].pop()["kind"], "no-manifest")
        self.assertEqual(verdict["ok"], not verdict["faults"])
        self.assertEqual(done.returncode, 0 if verdict["ok"] else 1, done.stderr)
        return verdict

    def test_each_damage_has_its_kind_and_its_place(self):
        whole = self.simulated("12:00:00", "-d", PROFILER)
        later = self.simulated("13:00:00", "-d", PROFILER)
        header = len(whole) - len(behind_header(whole))
        size = FRAME + TAG
        self.assertEqual(len(whole), header + 60 * size)

        def at(frame):
            return header + frame * size

        noise = b"\x55" * 500
        changed = bytearray(whole)
        changed[at(10) + 30] ^= 0x20
        cases = (
            ("as it was", whole, []),
            ("a byte changed", bytes(changed), [("checksum", at(10), FRAME)]),
            ("three frames gone", whole[:at(20)] + whole[at(23):], [("missing-frames", at(20), None)]),
            ("thirty frames gone", whole[:at(20)] + whole[at(50):],
             [("missing-frames", at(20), None), ("time-gap", at(20), FRAME)]),
            ("noise between frames", whole[:at(6)] + noise + whole[at(6):], [("discarded", at(6), 500)]),
            ("cut in a frame", whole[:at(59) + 20], [("torn-end", at(59), 20)]),
            ("cut in a tag", whole[:-3], [("torn-end", at(60) - TAG, TAG - 3)]),
            ("cut in the header", whole[:2 * RECORD + 9], [("torn-header", 2 * RECORD, 9)]),
            ("nothing left", b"", [("torn-header", 0, 0)]),
            ("the clock set forward", whole[:at(30)] + later[at(30):], [("time-gap", at(30), FRAME)]),
            ("the clock set back", later[:at(30)] + whole[at(30):], [("time-backwards", at(30), FRAME)]),
        )
        for name, content, faults in cases:
            with self.subTest(name):
                verdict = self.verdict(content, "-d", PROFILER)
                found = [(fault["kind"], fault["offset"], fault["length"]) for fault in verdict["faults"]]
                self.assertEqual(found, faults, verdict["faults"])
        found = self.verdict(whole[:at(20)] + whole[at(23):], "-d", PROFILER)
        self.assertEqual(found["instruments"][BEGIN.decode()], {"frames": 57, "missing": 3, "checksum_errors": 0})
        self.assertEqual(found["bytes"], {"header": header, "frames": 57 * FRAME, "tags": 57 * TAG, "stamps": 0,
                                          "discarded": 0})
        joined = self.verdict(whole + later, "-d", PROFILER)["faults"]
        self.assertIn(("torn-header", len(whole), header),
                      [(fault["kind"], fault["offset"], fault["length"]) for fault in joined])

    def test_clean_logs_of_several_instruments_pass(self):
        files = ("-d", RADIOMETER, "-d", PROFILER, "-d", GPS)
        whole = self.simulated("12:00:00", *files, frames=300)
        verdict = self.verdict(whole, *files)
        self.assertEqual([one["missing"] for one in verdict["instruments"].values()], [0, 0, None])
        packed = self.folder / "packed.raw.gz"
        packed.write_bytes(gzip.compress(whole))
        self.log.write_bytes(whole[:-1])
        done = run("verify", *files, str(packed), str(self.log), str(self.folder / "missing.raw"))
        self.assertEqual(done.returncode, 1)
        lines = done.stdout.decode().splitlines()
        self.assertEqual([line for line in lines if not line.startswith("  ")],
                         [f"{packed}: whole", f"{self.log}: 1 faults",
                          "3 logs: 1 whole, 1 with faults, 1 not read to their end"])
        self.assertEqual([line.split(":")[0].strip() for line in lines if line.startswith("  ")],
                         ["no-manifest", "torn-end", "no-manifest"])
        self.assertIn(b"missing.raw: cannot be read.", done.stderr)
        self.assertEqual(run("verify", str(self.log)).returncode, 2)


    def kinds(self, *arguments):
        done = run("verify", "--json", *arguments, str(self.log))
        faults = json.loads(done.stdout)["faults"]
        self.assertEqual(done.returncode, 1 if faults else 0, done.stderr)
        return [fault["kind"] for fault in faults]

    def test_a_manifest_tells_what_the_log_alone_cannot(self):
        definition = self.folder / "gps.tdf"
        definition.write_bytes(pathlib.Path(GPS).read_bytes())
        whole = self.simulated("12:00:00", "-d", GPS)
        self.log.write_bytes(whole)
        done = run("verify", "--repair", "-d", str(definition), str(self.log))
        self.assertEqual((done.returncode, done.stdout.decode().splitlines()), (0, [f"{self.log}: whole"]), done.stderr)
        manifest = self.folder / "log.raw.json"
        made = json.loads(manifest.read_bytes())
        self.assertEqual((made["sha256"], made["size"], made["repaired"], made["ports"][0]["instruments"][0]["logged"]),
                         (hashlib.sha256(whole).hexdigest(), len(whole), True, 60))
        self.assertEqual(self.kinds(), [], "its definition is found by the manifest")
        untagged = self.kinds("--role", "$GPRMC=gps")
        self.assertTrue(untagged == self.kinds("-d", GPS, "--role", "$GPRMC=gps") != [], untagged)
        for names in (("--wet=NOSUCH",), ("--role", "NOSUCH=gps")):
            for call in (("verify",), ("verify", "-d", GPS), ("info",), ("info", "-d", GPS)):
                done = run(*call, *names, str(self.log))
                self.assertEqual((done.returncode, done.stdout), (2, b""), (call, done.stderr))
        first = whole.index(b"$GPRMC")
        digit = next(i for i in range(first + 7, len(whole)) if whole[i:i + 1].isdigit())
        changed = bytearray(whole)
        changed[digit] ^= 1
        for content, kinds in ((bytes(changed), ["hash"]), (whole[:-70], ["torn-end", "hash"])):
            self.log.write_bytes(content)
            self.assertEqual(self.kinds()[-1:], kinds[-1:])
            self.assertEqual(run("verify", "--repair", str(self.log)).returncode, 1)
            self.assertEqual(json.loads(manifest.read_bytes()), made, "it is there, and stays")
        self.log.write_bytes(whole)
        packed = self.folder / "log.raw.gz"
        packed.write_bytes(gzip.compress(whole))
        self.assertEqual(run("verify", str(packed)).returncode, 0)
        definition.write_bytes(definition.read_bytes() + b"# changed\n")
        self.assertEqual(self.kinds(), ["definition-changed"])
        definition.unlink()
        self.assertIn(b"no manifest that names definitions which are there", run("verify", str(self.log)).stderr)
        self.assertEqual(self.kinds("-d", GPS), [])
        manifest.write_text("nothing")
        self.assertEqual(self.kinds("-d", GPS), ["hash"])

    def test_a_noted_step_of_the_clock_explains_a_step_of_the_tags(self):
        early, late = self.simulated("12:00:00", "-d", PROFILER), self.simulated("13:00:00", "-d", PROFILER)
        header = len(early) - len(behind_header(early))
        half = header + 30 * (FRAME + TAG)
        self.log.write_bytes(late[:half] + early[half:])
        run("verify", "--repair", "-d", PROFILER, str(self.log))
        path = self.folder / "log.raw.json"
        for local, said in (("12:00:05", True), ("12:30:00", False)):
            manifest = json.loads(path.read_bytes())
            manifest["clock-steps"] = [{"local": f"2026-06-21T{local}.100", "seconds": -3600.0, "of": "clock"}]
            path.write_text(json.dumps(manifest))
            text = run("verify", str(self.log)).stdout.decode()
            self.assertIn("time-backwards: ", text)
            self.assertEqual("The system clock was set by -3600.000 s then" in text, said, text)

    @unittest.skipIf(sys.platform == "win32", "needs a virtual port")
    def test_a_run_leaves_logs_whose_manifests_hold(self):
        port = subprocess.Popen([CLI, "simulate", "--pty", "-d", RADIOMETER, "-d", PROFILER], stdout=subprocess.PIPE, text=True)
        self.addCleanup(port.communicate)
        self.addCleanup(port.terminate)
        line = port.stdout.readline().strip()
        for extra in ([], ["--no-manifest"]):
            folder = self.folder / ("logs" + "".join(extra))
            folder.mkdir()
            log = subprocess.Popen([CLI, "log", "--port", line, "-d", RADIOMETER, PROFILER, "-o", str(folder), *extra],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            wait_for(lambda: any(path.stat().st_size > 4000 for path in folder.glob("*.raw")), "a log")
            log.send_signal(signal.SIGINT)
            output, errors = log.communicate(timeout=60)
            self.assertEqual((log.returncode, errors), (0, b""), output)
            logs = list(folder.glob("*.raw"))
            self.assertEqual(len(list(folder.glob("*.json"))), 0 if extra else 1)
            self.assertEqual(list(folder.glob("*.part")), [])
            if not extra:
                done = run("verify", *map(str, logs))
                self.assertEqual((done.returncode, done.stdout.decode().splitlines()), (0, [f"{logs[0]}: whole"]), done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
