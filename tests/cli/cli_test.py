# SPDX-License-Identifier: GPL-3.0-or-later
"""The command line from outside: exit statuses, playback at every read size, and real acquisition
over pseudo-terminals. Usage: cli_test.py QORVIEW-CLI SOURCE-FOLDER [STALLED-DISK-LIBRARY]"""
import csv
import datetime
import errno
import fcntl
import gzip
import io
import json
import math
import os
import pathlib
import pty
import resource
import select
import signal
import stat
import subprocess
import sys
import tempfile
import termios
import time
import unittest
import zipfile

from harness import RECORD, TAG, Line, behind_header, wait_for

CLI, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])
STALLED_DISK = sys.argv[3] if sys.argv[3:] and sys.argv[3].endswith(".so") else None
RADIOMETER, PROFILER, GPS = (str(SOURCE / "examples" / name) for name in
                             ("radiometer.cal", "profiler.cal", "gps.tdf"))


def run(*arguments, **options):
    return subprocess.run([CLI, *arguments], capture_output=True, timeout=60, **options)


def decoded(*options):
    done = run("decode", "--format", "jsonl", *options)
    assert done.returncode == 0, done.stderr
    return [json.loads(line) for line in done.stdout.splitlines()]


def definition(path):
    return json.loads(run("check", "--json", path).stdout)


def zstandard(content):
    """A Zstandard frame of blocks that are not compressed."""
    blocks = [content[at:at + 100000] for at in range(0, len(content), 100000)]
    return b"\x28\xb5\x2f\xfd\xa0" + len(content).to_bytes(4, "little") + b"".join(
        (len(block) << 3 | (block is blocks[-1])).to_bytes(3, "little") + block for block in blocks)


class Folder(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def simulated(self, *options):
        path = self.folder / "simulated.raw"
        done = run("simulate", "-o", str(path), *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return path


class Calls(Folder):
    def test_exit_statuses_and_one_line_errors(self):
        (self.folder / "bad.cal").write_text("SENSOR NONE '' 2 BU 0 COUNT\n")
        (self.folder / "empty.raw").write_bytes(b"")
        bad, empty, missing = (str(self.folder / name) for name in ("bad.cal", "empty.raw", "missing"))
        cases = [
            (("--version",), 0), (("--help",), 0), (("decode", "--help"), 0),
            (("simulate", "-d", GPS, "--frames", "-1"), 2),
            ((), 2), (("frobnicate",), 2), (("check",), 2), (("check", "--frobnicate", GPS), 2),
            (("decode", "-d", GPS), 2), (("decode", "-d", GPS, PROFILER), 2), (("decode", "-d", GPS, PROFILER, "--format", "none", empty), 0), (("decode", "-d", GPS, "--chunk", "0", empty), 2),
            (("decode", "-d", GPS, "--format", "0", empty), 2), (("log", "-d", GPS), 2),
            (("log", "--port", "x:0", "-d", GPS), 2),
            (("log", "--port", "x", "-d", GPS, "--name", "a/b.raw"), 2),
            (("log", "--port", "x", "-d", GPS, "--every", "1h", "--duration", "2h"), 2),
            (("log", "--port", "x", "-d", GPS, "--every", "1h", "--duration", "1m", "--repeat", "1m"), 2),
            (("log", "--port", "x", "-d", GPS, "--every", "25h"), 2),
            (("log", "--port", "x", "-d", GPS, PROFILER, "--print", "csv", "-o", str(self.folder)), 2),
            (("log", "--port", "x", "-d", GPS, "--comment", "two\r\nlines"), 2), (("simulate", "-d", GPS, "--rate", "fast"), 2), (("simulate", "--frames", "1"), 2),
            (("simulate", "-d", GPS, "-o", bad), 2), (("decode", "-d", GPS, "--role", "$GPRMC=pilot", empty), 2),
            (("simulate", "-d", GPS, "--start", "2026-02-30T12:00:00", "--frames", "1"), 2),
            (("simulate", "-d", GPS, "--role", "NOBODY=gps", "--frames", "1"), 2),
            (("check", "--quiet", GPS), 0), (("check", bad), 1), (("check", missing), 1), (("check", str(self.folder)), 1),
            (("decode", "-d", GPS, empty), 0), (("decode", "-d", GPS, missing), 1), (("decode", "-d", bad, empty), 1),
            (("decode", "-d", GPS, str(self.folder)), 1), (("decode", empty), 2),
            (("decode", "-d", GPS, "--role", "NOBODY=gps", empty), 2), (("info", empty), 0), (("info", missing), 1),
            (("log", "--port", str(self.folder), "-d", GPS, "-o", str(self.folder)), 1),
            (("log", "--port", missing, "-d", GPS, "-o", missing), 1),
        ]
        for call, status in cases:
            with self.subTest(call=call):
                done = run(*call)
                self.assertEqual(done.returncode, status, done.stderr)
                if status != 0:
                    lines = done.stderr.decode().splitlines()
                    self.assertTrue(lines and all(line.startswith("qorview-cli: ") for line in lines), lines)
        self.assertIn(f"warning: {empty}: ", run("decode", "-d", GPS, empty).stderr.decode())
        refused = run("log", "--port", missing, "-d", GPS, "-o", str(self.folder)).stderr.decode()
        self.assertIn(os.strerror(errno.ENOENT), refused)
        self.assertEqual(pathlib.Path(bad).stat().st_size, 28)  # a wrong call leaves it alone

    def test_a_session_keeps_round_times_and_refuses_those_that_cannot_be(self):
        file = self.folder / "hours.qor"
        made = run("session", "--port", "x", "-d", GPS, "--every", "1h", "-o", str(file))
        self.assertEqual(made.returncode, 0, made.stderr)
        session = json.loads(file.read_text())
        self.assertEqual(session["log"]["every"], "01:00:00")
        for change in ({"every": "25:00:00"}, {"duration": "02:00:00"}, {"duration": "00:01:00", "repeat": "00:01:00"}):
            file.write_text(json.dumps(session | {"log": session["log"] | change}))
            refused = run("log", "--session", str(file), "-o", str(self.folder))
            self.assertEqual(refused.returncode, 1, change)
            self.assertIn("log.every: ", refused.stderr.decode())
        file.write_text(json.dumps(session | {"station": {"station": "S1"}, "log": session["log"] | {"naming": "autocast"}}))
        for call in (("--duration", "2h"), ("--cast", "A/B"), ("--repeat", "1m", "--duration", "1000000h")):
            done = run("log", "--session", str(file), "-o", str(self.folder), *call)
            self.assertEqual(done.returncode, 2, done.stderr)  # the session by itself is good
            self.assertNotIn(f"error: {file}", done.stderr.decode())

    def test_slips_are_refused_with_what_may_have_been_meant(self):
        raw = str(self.simulated("--raw-log", "-d", PROFILER, "-d", RADIOMETER, "--frames", "5"))
        profiler, radiometer = (definition(path)["instrument"] for path in (PROFILER, RADIOMETER))
        slip, both = profiler[:-1] + "x", ("-d", PROFILER, "-d", RADIOMETER)
        port = ("log", "--port", "x", "-d", PROFILER)
        calls = [
            (("decod", raw), '"decode"?'), (("--vresion",), '"--version"?'), ((), '"check"'),
            (("help", "simulat"), '"simulate"?'), (("page", "spectrl", "-d", PROFILER, raw), '"spectral"?'),
            (("decode", "-d", PROFILER, "--flag", raw), "decode has no option --flag."),
            (("info", "--jsno", raw), '"--json"?'), (("check", "--srtict=1"), '"--strict"?'),
            (("decode", "-d", PROFILER, f"--wet={slip}", raw), f'"{profiler}"?'),
            (("decode", "-d", PROFILER, "--wet", slip, raw), f"--wet={slip}?"),
            (("decode", "-d", PROFILER, "--wet", profiler, "-o", "none", raw), f"--wet={profiler}?"),
            (("decode", "-d", PROFILER, "--role", "NOBODY=gps", raw), f'There is "{profiler}".'),
            (("simulate", "-d", PROFILER, "--frames", "1", "--role", slip + "=gps"), f'"{profiler}"?'),
            (("session", *port[1:], f"--wet={slip}"), f'"{profiler}"?'), ((*port, f"--wet={slip}"), f'"{profiler}"?'),
            (("page", "sensors", *both, "--instrument", profiler[:6], raw), f'"{profiler}"?'),
            (("compare", *both, "--dut", slip, "--reference", radiometer, raw), f'--dut {slip}: '),
            (("compare", *both, "--dut", radiometer, "--reference", radiometer, "--sensor", "EZ", raw), '"'),
            ((*port, "--duration", "10"), "--duration 10: Is that 10m or 00:00:10?"),
            ((*port, "--duration", "1h", "--repeat", "ten"), "--repeat ten: Give a time such as 10m"),
        ]
        for call, advice in calls:
            with self.subTest(call=call):
                done = run(*call)
                self.assertEqual((done.returncode, done.stdout, done.stderr.count(b"\n")), (2, b"", 1), done.stderr)
                self.assertIn(advice, done.stderr.decode())
        whole = run("decode", "-d", PROFILER, "--wet", raw)
        self.assertEqual((whole.returncode, whole.stderr), (0, b""))

    def test_help_fits_a_terminal_of_80_columns(self):
        for command in ("", "check", "decode", "compare", "log", "simulate", "info", "verify", "diff", "page", "session"):
            lines = run(*([command] if command else []), "--help").stdout.splitlines()
            self.assertGreater(len(lines), 10, command)
            self.assertEqual([line for line in lines if len(line) > 80], [], command)

    def test_help_and_version_are_given_wherever_they_are_asked_for(self):
        version, decode = run("--version").stdout, run("decode", "--help").stdout
        self.assertIn(b"--overwrite", decode)
        calls = [(("-V",), version), (("decode", "-d", "none", "--version"), version), (("log", "-V", "--x"), version),
                 (("help",), run("--help").stdout), (("help", "decode"), decode), (("--help", "decode"), decode),
                 (("decode", "-d", "none.txt", "--frob", "-h"), decode)]
        for call, text in calls:
            done = run(*call)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, text, b""), call)

    def test_check_names_likely_mistakes_and_refuses_other_files(self):
        good = "INSTRUMENT TEST '' 4 AS 0 NONE\nSN 1 '' 1 AS 0 NONE\nA 1 'V' 2 BU 0 COUNT\n"
        packed = self.folder / "cast.sip"
        texts = {"good.cal": good, "hinted.cal": good + "B 1 'V' 2 BU 0 NONE\n", "repaired.cal": good + "B 1 2 BU\n",
                 "silent.cal": "INSTRUMENT NONE '' 0 AS 0 NONE\nA 1 'V' 2 BU 0 COUNT\n", "bad.cal": "A 1 'V' 2 BU 0 COUNT\n"}
        for name, text in texts.items():
            (self.folder / name).write_text(text)
        with zipfile.ZipFile(packed, "w") as archive:
            archive.writestr("Properties.txt", "NAME = P\nBAUDRATE = 9600\n")
            archive.writestr("hinted.cal", texts["hinted.cal"])
        cases = [("good.cal", 0, 0, []), ("hinted.cal", 0, 1, [4]), ("repaired.cal", 0, 1, []),
                 ("silent.cal", 0, 1, [0]), ("bad.cal", 1, 1, []), ("cast.sip", 0, 1, [4])]
        for name, plain, strict, lines in cases:
            with self.subTest(name):
                done = run("check", "--json", str(self.folder / name))
                found = json.loads(done.stdout)
                hints = (found["instruments"][0] if "instruments" in found else found)["hints"]
                self.assertEqual((done.returncode, [hint["line"] for hint in hints]), (plain, lines))
                self.assertEqual(done.stderr.count(b"qorview-cli: hint: "), len(lines))
                self.assertEqual(run("check", "--strict", str(self.folder / name)).returncode, strict)
        for name in ("cast.raw", "cast.qorx", "notes.txt"):
            done = run("check", str(self.folder / "good.cal"), name)
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertIn(b"is not a Package/Calibration/TDF file.", done.stderr)

    def test_a_definition_is_tried_on_the_bytes_of_files_pipes_and_ports(self):
        capture, wrong = self.folder / "capture.bin", self.folder / "wrong.cal"
        self.assertEqual(run("simulate", "-d", PROFILER, "--frames", "4", "-o", str(capture)).returncode, 0)
        data = capture.read_bytes()
        wrong.write_text("INSTRUMENT NOBODY '' 6 AS 0 NONE\nA 1 '' 2 BU 0 NONE\n")
        damaged = self.folder / "damaged.bin"
        damaged.write_bytes(data[:20] + b"?" + data[21:])
        cases = [((str(capture), "-d", PROFILER), 0, (4, 0, 0)), (("-", PROFILER), 0, (4, 0, 0)),
                 ((str(damaged), "-d", PROFILER), 1, (4, 0, 1)), ((str(capture), "-d", GPS), 1, (0, None, None)),
                 ((str(capture), "-d", str(wrong)), 1, (0, None, None))]
        for arguments, status, figures in cases:
            with self.subTest(arguments):
                done = run("check", "--json", "--frame", *arguments, input=data)
                found = json.loads(done.stdout)
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertEqual(tuple(found[key] for key in ("frames", "dropped", "checksum_errors")), figures)
                self.assertEqual(found["first"] is None, found["nearest"] is not None)
                text = run("check", "--frame", *arguments, input=data)
                self.assertEqual((text.returncode, text.stdout.count(b"Likely cause:")), (status, figures[0] == 0))
        self.assertEqual(done.stderr.count(b"qorview-cli: hint: "), 1)
        frame = decoded("-d", PROFILER, str(capture))[0]
        first = json.loads(run("check", "--json", "--frame", str(capture), "-d", PROFILER).stdout)["first"]
        self.assertEqual([field[4] for field in first["fields"]], [v for v in frame["values"] if v is not None])
        line = Line()
        line.send(data)
        done = run("check", "--json", "--quiet", "--frame", line.name + ":57600:8N1", "-d", PROFILER)
        self.assertEqual((done.returncode, json.loads(done.stdout)["frames"] >= 3), (0, True), done.stderr)
        package = self.folder / "two.sip"
        with zipfile.ZipFile(package, "w") as archive:
            archive.writestr("Properties.txt", "[Package]\r\nName=two\r\n")
            archive.write(PROFILER, "profiler.cal")
            archive.write(GPS, "gps.tdf")
        for name, status, frames in ((str(capture), 0, [4, 0]), ("-", 0, [4, 0]), (str(damaged), 1, [4, 0]),
                                     (str(wrong), 1, [0, 0])):
            done = run("check", "--json", "--frame", name, "-d", str(package), input=data)
            found = sorted((json.loads(row)["frames"] for row in done.stdout.splitlines()), reverse=True)
            self.assertEqual((done.returncode, found), (status, frames), done.stderr)
        for arguments in ((str(capture),), (str(capture), PROFILER, GPS), (str(capture), "-d", "cast.qor")):
            self.assertEqual(run("check", "--frame", *arguments).returncode, 2)
        self.assertEqual(run("check", "--frame", str(self.folder / "missing"), "-d", GPS).returncode, 1)

    def test_a_stopped_simulation_ends_as_interrupted(self):
        command = subprocess.Popen([CLI, "simulate", "--pty", "-d", GPS], stdout=subprocess.PIPE)
        command.stdout.readline()
        command.send_signal(signal.SIGTERM)
        command.communicate(timeout=30)
        self.assertEqual(command.returncode, 130)

    def test_a_reader_that_goes_away_ends_the_command_quietly_and_a_full_disk_does_not(self):
        raw = self.simulated("--raw-log", "-d", RADIOMETER, "--frames", "3000")
        command = subprocess.Popen([CLI, "decode", "-d", RADIOMETER, str(raw)], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        command.stdout.readline()
        command.stdout.close()
        self.assertEqual(command.stderr.read(), b"")
        command.stderr.close()
        self.assertEqual(command.wait(30), 0)
        with open("/dev/full", "wb") as full:
            faulty = subprocess.run([CLI, "decode", "-d", RADIOMETER, str(raw)], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual((faulty.returncode, faulty.stderr.count(b"\n")), (1, 1))


class Playback(Folder):
    OPTIONS = ("-d", RADIOMETER, "-d", PROFILER, "-d", GPS)

    def test_csv_and_json_hold_the_same_numbers(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "20", "--start", "2026-06-21T12:00:00")
        frames = decoded("-d", PROFILER, str(raw))
        table = list(csv.reader(io.StringIO(run("decode", "-d", PROFILER, str(raw)).stdout.decode("latin-1"))))
        self.assertEqual(len(table), 21)
        self.assertEqual(table[0][:2], ["time", "frame"])
        for row, frame in zip(table[1:], frames):
            self.assertEqual(row[0], frame["time"])
            numbers = [value for value in frame["values"] if isinstance(value, (int, float))]
            self.assertEqual([float(cell) for cell in row[2:] if cell], numbers)
        self.assertTrue(table[1][0].startswith("2026-06-21T12:00:00."))
        file = open(raw, "rb")
        self.addCleanup(file.close)
        for name, feed in (("/dev/stdin", {"input": raw.read_bytes()}), ("-", {"input": raw.read_bytes()}),
                           ("-", {"stdin": file})):
            piped = run("decode", "-d", PROFILER, name, **feed).stdout
            self.assertEqual(list(csv.reader(io.StringIO(piped.decode("latin-1")))), table, name)
        facts = json.loads(run("info", "--json", str(raw)).stdout)
        self.assertEqual((facts["first_time_tag"], facts["last_time_tag"]), (frames[0]["time"], frames[-1]["time"]))
        piped = json.loads(run("info", "--json", "-", input=raw.read_bytes()).stdout)
        self.assertEqual(piped, facts | {"file": "-"})
        self.assertEqual(run("check", "-", input=pathlib.Path(PROFILER).read_bytes()).returncode, 0)
        facts = json.loads(run("info", "--json", "-d", PROFILER, "-", stdin=file).stdout)
        self.assertEqual(facts["instruments"][0]["frames"], 20)

    def test_logs_apart_give_what_each_gives_alone(self):
        (self.folder / "more").mkdir()
        raw = self.simulated("--raw-log", "-d", PROFILER, "-d", GPS, "--frames", "300")
        logs = [self.folder / name for name in ("a.raw", "more/A.raw", "c.x.raw.gz", "d.raw")]
        for number, log in enumerate(logs):
            content = raw.read_bytes()[:-1000 * number]
            log.write_bytes(gzip.compress(content) if log.suffix == ".gz" else content)
        stems, paths = ("a", "A_2", "c.x", "d"), [str(log) for log in logs]
        formats = {"csv": ("-d", PROFILER, "--format", "csv"), "jsonl": ("-d", PROFILER, "-d", GPS, "--format", "jsonl"),
                   "txt": ("-d", PROFILER, "--format", "summary")}
        for extension, call in formats.items():
            out = self.folder / extension
            done = run("decode", "-j", "3", *call, "-o", str(out), *paths)
            alone = [run("decode", *call, path) for path in paths]
            self.assertEqual(done.returncode, max(one.returncode for one in alone), done.stderr)
            self.assertEqual(sorted(done.stderr.splitlines()), sorted(b"".join(one.stderr for one in alone).splitlines()))
            self.assertEqual({path.name: path.read_bytes() for path in out.iterdir()},
                             {f"{stem}.{extension}": one.stdout for stem, one in zip(stems, alone)})
        both = self.folder / "both"
        self.assertEqual(run("decode", "-j", "2", "-d", PROFILER, "-d", GPS, "-o", str(both), paths[0]).returncode, 0)
        self.assertEqual(sorted(path.name for path in both.iterdir()), ["a.QORPRO042.csv", "a._GPRMC.csv"])

    def test_what_fails_of_logs_apart_is_that_log_alone(self):
        raw, out = str(self.simulated("--raw-log", "-d", PROFILER, "--frames", "30")), self.folder / "out"
        missing = str(self.folder / "missing.raw")
        for call, status, made in ((("-o", str(out), raw, missing), 1, ["simulated.csv"]),
                                   (("-o", str(out), raw), 2, ["simulated.csv"]),  # it is there
                                   (("-o", raw, raw), 2, ["simulated.csv"]), ((raw,), 2, ["simulated.csv"]),
                                   (("--format", "none", raw, raw), 0, ["simulated.csv"]),
                                   (("-o", str(self.folder / "none"), missing), 1, ["simulated.csv"])):
            done = run("decode", "-j", "2", "-d", PROFILER, *call)
            self.assertEqual((done.returncode, done.stdout), (status, b""), done.stderr)
            self.assertEqual([path.name for path in out.iterdir()], made)
            self.assertEqual(len(done.stderr.splitlines()), 1 if status else 0, done.stderr)
        self.assertFalse((self.folder / "none").exists())
        torn = self.folder / "torn.raw.gz"
        torn.write_bytes(gzip.compress(pathlib.Path(raw).read_bytes())[:-20])
        for format, result in (("csv", "torn.*"), ("jsonl", "torn.jsonl")):
            done = run("decode", "-j", "2", "-d", PROFILER, "--format", format, "-o", str(out), str(torn))
            self.assertEqual(done.returncode, 1)
            self.assertIn(f"{out / result}: not made, because a log could not be read whole.", done.stderr.decode())

    def test_from_and_to_choose_frames_by_the_times_that_are_shown(self):
        capture = self.simulated("-d", GPS, "--frames", "5").rename(self.folder / "gps.bin")
        raw = self.simulated("-d", PROFILER, "--raw-log", "--frames", "80", "--rate", "8", "--start",
                             "2026-06-21T23:59:56")
        all_frames = decoded("-d", PROFILER, str(raw))
        cases = [((), None, None), (("--from=2026-06-21T23:59:58",), "2026-06-21T23:59:58", None),
                 (("--from=2026-06-21T23:59:58", "--to=2026-06-22T00:00:03"), "2026-06-21T23:59:58",
                  "2026-06-22T00:00:03"), (("--to=2026-06-22T00:00:00",), None, "2026-06-22T00:00:00"),
                 (("--utc-offset=+01:00", "--to=2026-06-21T23:00:00"), None, "2026-06-22T00:00:00")]
        for options, start, end in cases:
            expected = [frame["frame"] for frame in all_frames
                        if (not start or frame["time"] >= start) and (not end or frame["time"] < end)]
            self.assertGreater(len(expected), 10)
            self.assertEqual([frame["frame"] for frame in decoded("-d", PROFILER, *options, str(raw))], expected)
        for log, options, status, text in (
                (capture, ("-d", GPS, "--to=2100-01-01T00:00:00"), 0, b"no frame that was played"),
                (raw, ("-d", PROFILER, "--from=2030-01-01T00:00:00"), 0, b"no frame that was played"),
                (raw, ("-d", PROFILER, "--from=2030-01-01T00:00:00", "--to=2030-01-01T00:00:00"), 2, b"not before"),
                (raw, ("-d", PROFILER, "--from=yesterday"), 2, b"give a time such as")):
            done = run("decode", "--format", "jsonl", *options, str(log))
            self.assertEqual((done.returncode, done.stdout), (status, b""), done.stderr)
            self.assertIn(text, done.stderr)

    def test_times_are_utc_by_the_zone_of_each_log(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "3", "--start", "2026-06-21T12:00:00")
        east, none = self.folder / "east.raw", self.folder / "none.raw"
        east.write_bytes(raw.read_bytes().replace(b"UTC+00:00 (ZONE)", b"UTC+13:00 (ZONE)"))
        none.write_bytes(raw.read_bytes().replace(b"UTC+00:00 (ZONE)", b"somewhere (ZONE)"))
        times = [frame["time"] for frame in decoded("-d", PROFILER, "--utc", str(raw), str(east))]
        self.assertEqual((times[0], times[3]), ("2026-06-21T12:00:00.000Z", "2026-06-20T23:00:00.000Z"))
        for call, status in ((("--utc", str(east), str(none)), 1), (("--utc", "--utc-offset=+01:00", str(east)), 2)):
            done = run("decode", "-d", PROFILER, *call)
            self.assertEqual((done.returncode, done.stdout), (status, b""), done.stderr)
            self.assertIn(b"--utc-offset", done.stderr)

    def test_compressed_logs_are_read_as_they_are(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "-d", GPS, "--frames", "400")
        call, content = ("-d", PROFILER, "-d", GPS, "--format", "jsonl"), raw.read_bytes()
        whole = run("decode", *call, str(raw)).stdout.replace(os.fsencode(raw), b"-").splitlines()
        half = len(content) // 2
        gz, zst = gzip.compress(content), zstandard(content)
        cases = [(gz, 0), (gzip.compress(content[:half]) + gzip.compress(content[half:]), 0), (gz + bytes(512), 0),
                 (gz + b"junk", 1), (gz[:-4], 1), (gz[:len(gz) // 2], 1),
                 (gz[:-8] + bytes(4) + gz[-4:], 1)]
        packed = self.folder / "packed"
        packed.write_bytes(zst)
        if b"no .zst" not in run("decode", *call, str(packed)).stderr:
            index = b"\x5e\x2a\x4d\x18\x07\0\0\0indexed"  # a frame without data
            cases += [(zst, 0), (zst + zst[:3], 1), (zst[:-1], 1), (zst + b"junk", 1),
                      (index + zst + index, 0), (zst + index[:-1], 1)]
        for number, (archive, status) in enumerate(cases):
            packed.write_bytes(archive)
            for name, feed in ((str(packed), {}), ("-", {"input": archive})):
                done = run("decode", *call, name, **feed)
                rows = done.stdout.replace(os.fsencode(packed), b"-").splitlines()
                self.assertEqual(done.returncode, status, (number, done.stderr))
                self.assertTrue(rows and rows[:-1] == whole[:len(rows) - 1], number)  # the last tag may be cut
                self.assertTrue(status or rows == whole, number)
        packed.write_bytes(gz)
        facts = json.loads(run("info", "--json", "-d", PROFILER, "-d", GPS, str(packed)).stdout)
        self.assertEqual((facts["size"], facts["bytes_discarded"]), (len(content), 0))

    def test_a_growing_pipe_is_printed_as_frames_come(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "40").read_bytes()
        for form, heads in (("csv", 1), ("jsonl", 0)):
            with subprocess.Popen([CLI, "decode", "-d", PROFILER, "--format", form, "-"], bufsize=0,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE) as decode:
                at = len(raw) - len(behind_header(raw))
                for frames in (1, 3, 2):
                    length = frames * 67
                    decode.stdin.write(raw[:at + length] if at == len(raw) - len(behind_header(raw)) else
                                       raw[at:at + length])
                    at += length
                    seen = b""
                    while seen.count(b"\n") < frames + heads:
                        self.assertTrue(select.select([decode.stdout], [], [], 30)[0], (form, seen))
                        seen += os.read(decode.stdout.fileno(), 65536)
                    heads = 0
                decode.stdin.close()
                self.assertEqual(decode.wait(30), 0)

    def test_info_says_what_is_wrong_with_a_log(self):
        files = ("-d", RADIOMETER, "-d", PROFILER, "-d", GPS)
        whole = self.simulated("--raw-log", *files, "--frames", "60", "--start", "2026-06-21T12:00:00").read_bytes()
        log, records = self.folder / "log.raw", behind_header(whole)
        header, first = whole[:-len(records)], records.index(b"QORPRO042")
        cases = ((whole, files, [], None), (whole[:-3], files, ["torn-end"], None),
                 (whole[:-7], files, ["torn-end"], None), (whole[:-40], files, ["torn-end"], None),
                 (whole + b"QORHDR a (", files, ["torn-end"], None), (whole[:200], (), ["torn-header"], None),
                 (whole[:RECORD], (), ["torn-header"], None), (header, (), [], None),
                 (whole.replace(b"(MODE)\r", b"(MODE)\n"), (), ["torn-header"], None),
                 (header + records[first:] + records[:first], files, ["missing-frames", "time-backwards"], None),
                 (whole, files[:4], ["discarded"], ("$GPRMC", 1.0)),
                 (whole, files[2:], ["discarded"], ("QORRAD0137", 1.0)),
                 (header + os.urandom(5000) + records, files, ["discarded"], None))
        for content, named, kinds, unnamed in cases:
            log.write_bytes(content)
            done = run("info", "--json", *named, str(log))
            facts = json.loads(done.stdout)
            self.assertEqual([fault["kind"] for fault in facts["faults"]], kinds, (done.stderr, len(content)))
            self.assertEqual(done.returncode, 1 if kinds else 0)
            self.assertEqual(done.stderr.count(b"error: %s: " % os.fsencode(log)), len(kinds))
            found = [(one["begins"], one["share"]) for one in facts.get("unnamed", [])]
            self.assertEqual([begins[:10] for begins, share in found], [unnamed[0]] if unnamed else [])
            self.assertEqual(done.stderr.count(b"with -d."), len(found))
            for begins, share in found:
                self.assertAlmostEqual(share, unnamed[1], delta=0.02)

    def test_profile_and_series_show_the_frames_of_a_cast(self):
        package = ("-p", str(SOURCE / "examples/cast.sip"))
        raw = self.simulated("--raw-log", *package, "--cast", "12", "--frames", "900", "--start",
                             "2026-06-21T12:00:00")
        profiler, light, channel = "QORFAL071", "QOREDW118", 5

        def page(*options):
            done = run("page", *options, *package, "--json", str(raw))
            self.assertEqual(done.returncode, 0, done.stderr)
            shown = json.loads(done.stdout)
            return shown, {curve["title"]: curve["points"] for curve in shown["curves"]}

        frames = []  # instrument, time, pressure last heard of, values
        pressure = None
        for frame in decoded(*package, str(raw)):
            pressure = frame["values"][2] if frame["instrument"] == profiler else pressure
            moment = datetime.datetime.fromisoformat(frame["time"] + "+00:00").timestamp()
            frames.append((frame["instrument"], moment, pressure, frame["values"]))
        own = [frame for frame in frames if frame[0] == profiler]
        begin = max(moment for _, moment, depth, _ in own if depth < 1)
        deepest = max(own, key=lambda frame: frame[2])
        self.assertGreater(deepest[2], 9)

        def expect(points, wanted, places):
            self.assertEqual(len(points), len(wanted))
            for point, (x, y) in zip(points, wanted):
                self.assertAlmostEqual(point[0], x, places)
                self.assertEqual(point[1], y)

        shown, curves = page("profile", "--select", "TEMP(WATER)", "--select", light + ": ED(510.4)")
        self.assertEqual(list(curves), ["TEMP(WATER)", light + ": ED(510.4)"])
        cast = [frame for frame in frames if begin - 1e-3 <= frame[1] <= deepest[1] + 1e-3]
        expect(curves["TEMP(WATER)"], [(f[2], f[3][3]) for f in cast if f[0] == profiler], 5)
        expect(curves[light + ": ED(510.4)"], [(f[2], f[3][channel]) for f in cast if f[0] == light], 5)
        for depth, warmth in curves["TEMP(WATER)"]:
            self.assertAlmostEqual(warmth, 18.6 - 7.4 / (1 + math.exp((32 - depth) / 4)) - 0.004 * depth, 2)
        self.assertEqual(shown["leading"], f"TEMP {own[-1][3][3]:.4f}, {own[-1][2]:.1f} m")
        self.assertEqual((shown["axes"][0]["label"], shown["axes"][0]["reversed"]), ("Depth", True))

        shown, curves = page("time-series", "--instrument", light, "--select", "ED(510.4)", "--select", "T (W)")
        expect(curves["ED(510.4)"], [(f[1], f[3][channel]) for f in frames if f[0] == light], 3)
        expect(curves["T (W)"], [(f[1], f[3][3]) for f in own], 3)
        key = shown["axes"][0]
        self.assertAlmostEqual(key["maximum"], max(f[1] for f in frames if f[0] in (profiler, light)), 3)
        self.assertAlmostEqual(key["maximum"] - key["minimum"], 600, 3)
        shown, _ = page("profile")
        self.assertEqual([curve["title"] for curve in shown["curves"]], ["T (W)", "SALINITY", "QORFLU033: CHL"])
        dry = run("page", "profile", "-d", RADIOMETER, str(raw))
        self.assertEqual(dry.returncode, 2)
        self.assertIn(b"has no depth", dry.stderr)
        wrong = run("page", "time-series", *package, "--select", "SALT", str(raw))
        self.assertEqual(wrong.returncode, 2)

    def test_tables_and_lines_hold_the_same_derived_products(self):
        options = ("-p", str(SOURCE / "examples/cast.sip"), "--wet", "--derived")
        raw = self.simulated("--raw-log", *options[:3], "--cast", "30", "--frames", "200")
        self.assertEqual(run("decode", *options, "-o", str(self.folder / "tables"), str(raw)).returncode, 0)
        frames = decoded(*options, str(raw))
        for name in {frame["instrument"] for frame in frames}:
            table = self.folder / "tables" / (name.replace("$", "_") + ".csv")
            rows = list(csv.reader(io.StringIO(table.read_text("latin-1"))))
            lines = [frame["derived"] for frame in frames if frame["instrument"] == name]
            count = len(lines[0])
            self.assertEqual(rows[0][-count:],
                             [f"{label} [{units}]".encode().decode("latin-1") for label, units, _ in lines[0]])
            self.assertEqual([[float(cell) if cell else None for cell in row[-count:]] for row in rows[1:]],
                             [[value for _, _, value in line] for line in lines])

    def test_what_is_said_of_packages_wins_over_the_session(self):
        package = str(SOURCE / "examples/cast.sip")
        raw = str(self.simulated("--raw-log", "-p", package, "--cast", "30", "--frames", "200"))
        session = self.folder / "cast.qor"
        session.write_text(json.dumps({"qorview-session": 1, "resources": [
            {"port": "x", "packages": [{"file": package, "saturation-irradiance": 1e5}]}]}))

        def derived(*options):
            return decoded("--derived", *options, raw)

        said = ("--saturation-irradiance", "300")
        self.assertTrue(derived("--session", str(session), *said) == derived("-p", package, *said)
                        != derived("--session", str(session)))

    def test_pipes_are_waited_for_until_a_signal_comes(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "20")
        fifo = str(self.folder / "fifo")
        os.mkfifo(fifo)
        decode = ("decode", "-d", PROFILER, "--format", "jsonl")
        for call in ((*decode, "-"), (*decode, fifo), ("check", "--json", "-"), ("info", "-"),
                     ("compare", "-d", RADIOMETER, "--dut", "X", "--reference", "Y", "-d", "-", str(raw))):
            command = subprocess.Popen([CLI, *call], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL)
            status = pathlib.Path(f"/proc/{command.pid}/status")
            wait_for(lambda: any(line.startswith("SigBlk:") and int(line[7:], 16) & 2
                                 for line in status.read_text().splitlines()), "the command's start")
            command.send_signal(signal.SIGINT)
            self.assertEqual(command.wait(10), 130, call)
            self.assertEqual(command.stdout.read(), b"", call)
            command.stdout.close(), command.stdin.close()

        command = subprocess.Popen([CLI, *decode, fifo], stdout=subprocess.PIPE)

        def writer():
            try:
                return os.open(fifo, os.O_WRONLY | os.O_NONBLOCK)
            except OSError:
                return None  # nobody reads yet
        with open(wait_for(writer, "the reader"), "wb", buffering=0) as pipe:
            os.set_blocking(pipe.fileno(), True)
            pipe.write(raw.read_bytes())
        expected = run(*decode, str(raw)).stdout.replace(str(raw).encode(), fifo.encode())
        self.assertEqual(command.communicate(timeout=30)[0], expected)

    def test_every_instrument_has_a_table_of_its_own_in_the_folder(self):
        options, raw = [], self.folder / "three.raw"
        for number, name in enumerate(("A_B", "A/B", "a_b")):
            path = self.folder / f"{number}.cal"
            path.write_text(f"INSTRUMENT {name} '' 3 AS 0 NONE\nDAY NONE '' 4 BU 0 DDMMYY\n")
            options += ["-d", str(path)]
        raw.write_bytes(b"".join(name + (10205).to_bytes(4, "big") for name in (b"A_B", b"A/B", b"a_b", b"A/B")))
        for view, shown in (("--quiet", "01/02/05"), ("--raw-counts", "10205")):
            tables = self.folder / view
            self.assertEqual(run("decode", *options, view, "-o", str(tables), str(raw)).returncode, 0)
            got = {path.stem: path.read_text().splitlines()[1:] for path in tables.iterdir()}
            self.assertEqual(got, {"A_B": [f",1,{shown}"], "A_B_2": [f",1,{shown}", f",2,{shown}"],
                                   "a_b_3": [f",1,{shown}"]})

    def test_a_log_cut_anywhere_gives_the_frames_before_the_cut(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "12")
        data = raw.read_bytes()
        whole = decoded("-d", PROFILER, str(raw))
        size = definition(PROFILER)["frame_size"]
        start = data.index(definition(PROFILER)["sync_header"].encode("latin-1"))
        for cut in range(start, len(data), 13):
            raw.write_bytes(data[:cut])
            frames = decoded("-d", PROFILER, str(raw))
            self.assertEqual(len(frames), (cut - start + TAG) // (size + TAG), f"cut at {cut}")
            complete = frames[:-1] if frames and frames[-1]["time"] is None else frames
            self.assertEqual(complete, whole[:len(complete)])



class Outputs(Folder):
    def test_results_never_replace_what_has_to_stay(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "5")
        (self.folder / "own.cal").write_bytes(pathlib.Path(PROFILER).read_bytes())
        (self.folder / "table.csv").write_text("precious")
        os.symlink("table.csv", self.folder / "link")
        os.symlink("table.csv", self.folder / "link.raw")
        own, table, link, hard, file = (str(self.folder / name) for name in
                                        ("own.cal", "table.csv", "link", "hard", "own.qor"))
        os.link(own, hard)
        self.assertEqual(run("session", "--port", "x", "-d", own, "-o", file).returncode, 0)
        held = open(self.folder / "held.raw", "wb")
        self.addCleanup(held.close)
        fcntl.flock(held, fcntl.LOCK_EX)
        calls = [
            (("decode", "-d", PROFILER, "-o", table, str(raw)), "--overwrite"),
            (("decode", "-d", PROFILER, "--overwrite", "-o", link, str(raw)), "symbolic link"),
            (("decode", "-d", PROFILER, "--overwrite", "-o", str(raw), str(raw)), "to read"),
            (("decode", "-d", own, "--overwrite", "-o", f"{self.folder}/./own.cal", str(raw)), "to read"),
            (("decode", "-d", own, "--overwrite", "-o", hard, str(raw)), "to read"),
            (("decode", "--session", file, "--overwrite", "-o", own, str(raw)), "to read"),
            (("decode", "--session", file, "--overwrite", "-o", file, str(raw)), "to read"),
            (("session", "--session", file, "--overwrite", "-o", file), "to read"),
            (("decode", "-d", PROFILER, "-d", GPS, "-o", f"{self.folder}/new.csv", str(raw)), "give a folder"),
            (("compare", "-d", RADIOMETER, *self.names(), "-o", str(self.folder), str(raw)), "folder"),
            (("simulate", "-d", PROFILER, "--frames", "1", "-o", str(raw)), "--overwrite"),
            (("log", *self.line(), "--overwrite", "--name", "link"), "symbolic link"),
            (("log", *self.line(), "--overwrite", "--name", "own.cal"), "to read"),
            (("log", *self.line(), "--overwrite", "--name", "held.raw"), "another program"),
            (("simulate", "-d", own, "--frames", "1", "--overwrite", "-o", own), "to read"),
            (("compare", "-d", RADIOMETER, "-d", PROFILER, *self.names(), "-o", table, str(raw)), "--overwrite"),
        ]
        before = {path: path.read_bytes() for path in self.folder.iterdir()}
        for call, word in calls:
            with self.subTest(call=call):
                done = run(*call)
                self.assertEqual((done.returncode, done.stdout, done.stderr.count(b"\n")), (2, b"", 1), done.stderr)
                self.assertIn(word, done.stderr.decode())
        after = {path: path.read_bytes() for path in self.folder.iterdir() if path.suffix != ".log"}
        self.assertEqual(after, before)
        self.assertEqual(run("decode", "-d", PROFILER, "--overwrite", "-o", table, str(raw)).returncode, 0)
        self.assertEqual(pathlib.Path(table).read_bytes(), run("decode", "-d", PROFILER, "-o", "-", str(raw)).stdout)
        self.simulated("--raw-log", "-d", PROFILER, "--frames", "6", "--overwrite")

    def line(self):
        return "--port", "x", "-d", str(self.folder / "own.cal"), "-o", str(self.folder)

    def names(self):
        name = definition(RADIOMETER)["instrument"]
        return "--dut", name, "--reference", name

    def test_an_interrupted_result_is_not_there(self):
        fifo, result = str(self.folder / "fifo"), self.folder / "result"
        os.mkfifo(fifo)
        pipe = os.open(fifo, os.O_RDWR)
        self.addCleanup(os.close, pipe)
        calls = [(signal.SIGINT, "result", "decode", "-d", PROFILER, "-o", str(result), fifo),
                 (signal.SIGTERM, "result/QORPRO042.csv", "decode", "-d", PROFILER, "-d", GPS, "-o", str(result), fifo),
                 (signal.SIGTERM, "result", "compare", "-d", RADIOMETER, *self.names(), "-o", str(result), fifo),
                 (signal.SIGINT, "result", "simulate", "-d", GPS, "--frames", str(1 << 40), "-o", str(result))]
        for number, name, *call in calls:
            with self.subTest(call=call):
                command = subprocess.Popen([CLI, *call])
                wait_for((self.folder / (name + ".part")).exists, "the output")
                command.send_signal(number)
                self.assertEqual(command.wait(30), 130)
                self.assertEqual([path.name for path in self.folder.iterdir()], ["fifo"])

    def test_a_result_onto_which_standard_output_goes_is_refused(self):
        raw = self.simulated("--raw-log", "-d", PROFILER, "--frames", "5")
        before = raw.read_bytes()
        with open(raw, "ab") as onto, open(raw, "rb") as source:
            for call in (("decode", str(raw)), ("decode", "-"), ("info", str(raw)), ("page", "sensors", str(raw))):
                done = subprocess.run([CLI, *call, "-d", PROFILER], stdin=source, stdout=onto,
                                      stderr=subprocess.PIPE, timeout=60)
                self.assertEqual(done.returncode, 2, (call, done.stderr))
            done = subprocess.run([CLI, "check", "--frame", str(raw), PROFILER], stdout=onto, stderr=subprocess.PIPE)
            self.assertEqual((done.returncode, b"to read" in done.stderr), (2, True), done.stderr)
            done = run("decode", "-d", PROFILER, "--overwrite", "-o", str(raw), "-", stdin=source)
            self.assertEqual((done.returncode, b"to read" in done.stderr), (2, True), done.stderr)
        self.assertEqual(raw.read_bytes(), before)

    def test_a_result_that_lacks_a_log_is_not_there(self):
        raw, table = self.simulated("--raw-log", "-d", PROFILER, "--frames", "5"), self.folder / "table.csv"
        for command in (("decode",), ("compare", *self.names())):
            done = run(*command, "-d", RADIOMETER, "-o", str(table), str(raw), str(self.folder / "none.raw"))
            self.assertEqual((done.returncode, done.stderr.count(b"error: ")), (1, 2), done.stderr)
            self.assertIn(b"table.csv: not made", done.stderr)
            self.assertEqual([path.name for path in self.folder.iterdir()], ["simulated.raw"])
        self.assertEqual(run("compare", *self.names(), "-d", RADIOMETER, "-o", str(table), str(raw)).returncode, 0)
        self.assertTrue(table.read_text().startswith("time,frame,"), "the format of its name")

    def test_a_comparison_says_how_old_its_reference_is_and_refuses_what_nothing_has(self):
        package, dut, reference = ("-p", str(SOURCE / "examples/cast.sip")), "QORLUW119", "QOREDW118"
        raw = self.simulated("--raw-log", *package, "--frames", "80")
        compare = ("compare", *package, "--dut", dut)
        done = run(*compare, "--reference", reference, str(raw))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("unlike units", done.stderr.decode())
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        seen, ages = None, []
        for frame in decoded(*package, str(raw)):
            when = float(frame["time"][17:])
            seen = when if frame["instrument"] == reference else seen
            if frame["instrument"] == dut:
                ages.append(None if seen is None else (when - seen) % 60)
        self.assertGreater(len(ages), 10)
        self.assertEqual(len(lines), len(ages))
        for line, age in zip(lines, ages):
            self.assertEqual(line["reference_age"] is None, age is None)
            self.assertAlmostEqual(line["reference_age"] or 0, age or 0, places=3)
        for option in (("--reference", "NOBODY"), ("--reference", reference, "--sensor", "XYZ")):
            refused = run(*compare, *option, "--format", "csv", str(raw))
            self.assertEqual((refused.returncode, refused.stdout), (2, b""))


class Acquisition(Folder):
    def setUp(self):
        super().setUp()
        self.processes = []
        self.addCleanup(lambda: [process.kill() for process in self.processes if process.poll() is None])

    def frames_of(self, path, count, seed=1):
        target = self.folder / "frames.bin"
        self.assertEqual(run("simulate", "-d", path, "--frames", str(count), "--seed", str(seed), "--overwrite",
                             "-o", str(target)).returncode, 0)
        data, shape = target.read_bytes(), definition(path)
        if shape["frame_type"] == "Variable":
            return data.splitlines(keepends=True)
        return [data[i:i + shape["frame_size"]] for i in range(0, len(data), shape["frame_size"])]

    def start(self, *options, output=subprocess.PIPE, errors=subprocess.PIPE, **environment):
        process = subprocess.Popen([CLI, "log", "-o", str(self.folder), "--name", "run.raw", *options],
                                   stdout=output, stderr=errors, env=os.environ | environment)
        self.processes.append(process)
        self.raw = self.folder / "run.raw"
        wait_for(lambda: self.session_log().count("connection successful") == options.count("--port")
                 or process.poll() is not None, "the connection")
        return process

    def session_log(self, name="QorView.log"):
        path = self.folder / name
        return path.read_text("latin-1") if path.exists() else ""

    def finish(self, process, number=signal.SIGINT):
        process.send_signal(number)
        output, errors = process.communicate(timeout=30)
        return process.returncode, output.decode(), (errors or b"").decode()

    def logged(self):
        return behind_header(self.raw.read_bytes()) if self.raw.exists() else b""

    def test_bursts_and_pauses_inside_frames_are_logged_byte_for_byte(self):
        line = Line()
        process = self.start("--port", line.name, "-d", RADIOMETER, PROFILER)
        radiometer, profiler = self.frames_of(RADIOMETER, 40), self.frames_of(PROFILER, 40)
        sent = [frame for pair in zip(radiometer, profiler) for frame in pair]
        for i, frame in enumerate(sent[:20]):
            middle = len(frame) * (i % 5) // 5
            line.send(b"\x00junk"[:i % 6] + frame[:middle])
            select.select([], [], [], 0.02)  # the instrument pauses
            line.send(frame[middle:])
        line.send(b"".join(sent[20:]))
        size = sum(len(frame) + TAG for frame in sent)
        wait_for(lambda: len(self.logged()) >= size, "the last frame in the log")
        status, output, errors = self.finish(process)
        self.assertEqual((status, errors), (0, ""))
        data, year = self.logged(), time.localtime().tm_year
        for frame in sent:
            self.assertEqual(data[:len(frame)], frame)
            self.assertEqual(int.from_bytes(data[len(frame):len(frame) + 3], "big") // 1000, year)
            data = data[len(frame) + TAG:]
        self.assertEqual(data, b"")
        self.assertIn("40 frames, 40 in the last log, 0 dropped, 0 checksum errors", output)
        self.assertEqual(stat.S_IMODE(self.raw.stat().st_mode) & 0o222, 0)
        log = self.session_log()
        for text in ("Beginning new session.", f"Begin log file: \"{self.raw}\".", f"{line.name} connection successful.",
                     f"found on {line.name}.", f"End log file: \"{self.raw}\"."):
            self.assertIn(text, log)

    def test_a_burst_of_many_times_the_usual_queue_is_in_the_log_of_a_killed_program(self):
        line = Line()
        process = self.start("--port", line.name, "-d", PROFILER)
        frames = self.frames_of(PROFILER, 4000)
        line.send(b"".join(frames))
        wait_for(lambda: len(self.logged()) == sum(len(frame) + TAG for frame in frames), "the last frame")
        process.kill()
        process.communicate()
        kept = decoded("-d", PROFILER, str(self.raw))
        self.assertEqual(len(kept), 4000)
        self.assertFalse(any(frame["dropped"] for frame in kept))

    def assertLogHolds(self, frames):
        size = sum(len(frame) + TAG for frame in frames)
        wait_for(lambda: len(self.logged()) >= size, "the last frame in the log")
        data = self.logged()
        self.assertEqual(len(data), size)
        for number, frame in enumerate(frames):
            at = number * (len(frame) + TAG)
            self.assertEqual(data[at:at + len(frame)], frame, f"frame {number}")

    @unittest.skipUnless(STALLED_DISK, "nothing can be preloaded beside a sanitizer")
    def test_a_disk_that_stalls_costs_no_frame_and_is_said(self):
        line, stalled = Line(), self.folder / "stalled"
        process = self.start("--port", line.name, "-d", PROFILER, LD_PRELOAD=STALLED_DISK, STALLED_WHILE=str(stalled))
        frames = self.frames_of(PROFILER, 3000)
        stalled.touch()
        line.send(b"".join(frames))
        wait_for(lambda: "The disk has taken nothing of" in self.session_log(), "the word about it")
        self.assertLess(len(self.logged()), sum(map(len, frames)))
        stalled.unlink()
        self.assertLogHolds(frames)
        status, output, errors = self.finish(process)
        self.assertEqual(status, 0)
        self.assertRegex(errors, "warning: The disk has taken nothing")
        self.assertIn("3000 frames, 3000 in the last log, 0 dropped", output)

    @unittest.skipUnless(STALLED_DISK, "nothing can be preloaded beside a sanitizer")
    def test_a_disk_that_stalls_over_a_round_time_costs_no_frame_and_is_said(self):
        line, stalled = Line(), self.folder / "stalled"
        process = self.start("--port", line.name, "-d", PROFILER, "--every", "1s",
                             LD_PRELOAD=STALLED_DISK, STALLED_WHILE=str(stalled))
        frames = self.frames_of(PROFILER, 400)
        stalled.touch()
        line.send(b"".join(frames[:200]))
        wait_for(lambda: "The disk has taken nothing of" in self.session_log(), "the word about it")
        line.send(b"".join(frames[200:]))  # they wait for the next log
        process.send_signal(signal.SIGTERM)
        stalled.unlink()
        output, errors = process.communicate(timeout=30)
        stored = sum(len(decoded("-d", PROFILER, str(log))) for log in self.folder.glob("run_*.raw"))
        self.assertEqual((process.returncode, stored), (0, 400), errors)

    def test_a_reader_of_messages_that_never_reads_holds_nothing_up(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        os.set_blocking(writer, False)
        with self.assertRaises(BlockingIOError):
            while True:
                os.write(writer, b"." * 4096)
        os.set_blocking(writer, True)
        line = Line()
        process = self.start("--port", line.name, "-d", PROFILER, errors=writer)
        os.close(writer)
        frames = self.frames_of(PROFILER, 500)
        line.send(b"".join(frames[:200]))
        self.assertLogHolds(frames[:200])
        line.send(b"".join(frames[200:]))
        self.assertLogHolds(frames)
        self.assertEqual(self.finish(process)[0], 0)

    def test_what_a_log_could_not_give_back_is_said_before_it_begins(self):
        for name, kind in (("compass.tdf", "AOS_EZCOMPASS_3"), ("ctd.tdf", "SEABIRD_37SIMCT")):
            header = "CTD '' 3" if name == "ctd.tdf" else "NONE '' 0"
            (self.folder / name).write_text(f"VLF_INSTRUMENT {header} AS 0 NONE\nSPECIAL S '{kind}' 0 AS 0 NONE\n"
                                            "FIELD NONE ',' 1 AS 0 DELIMITER\nA 1 'V' V AF 0 COUNT\n"
                                            "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n")
        lines = [Line(), Line()]
        process = self.start("--port", lines[0].name, "-d", str(self.folder / "compass.tdf"),
                             "--port", lines[1].name, "-d", str(self.folder / "ctd.tdf"))
        status, output, errors = self.finish(process)
        self.assertEqual((status, errors.count("no frame came")), (1, 2), errors)
        self.assertRegex(errors, "warning: CTD: its frames carry no sync header, nor do those of compass.tdf")
        self.assertIn(f"compass.tdf on {lines[0].name}: 0 frames", output)

    def test_bytes_without_a_frame_are_explained_and_kept_for_the_right_definition(self):
        line, wrong = Line(), self.folder / "wrong.cal"
        wrong.write_text(pathlib.Path(PROFILER).read_text().replace("QORPRO", "QORPRX"))
        process = self.start("--port", line.name, "-d", str(wrong))
        sent = b"".join(self.frames_of(PROFILER, 100)) * 180  # a megabyte is worth a word at once
        line.send(sent)
        wait_for(lambda: sum(path.stat().st_size for path in self.folder.glob("2*.bin")) == len(sent), "the capture")
        status, output, errors = self.finish(process)
        kept, = self.folder.glob("2*.bin")
        self.assertEqual((status, kept.read_bytes() == sent), (1, True), errors)
        self.assertRegex(errors, f"warning: {line.name}: [0-9]+ bytes in .* no frame of its instruments. Only the first 5 "
                                 f"of 9 bytes of the sync header are there .*{kept}")
        self.assertRegex(errors, f"error: QORPRX042 on {line.name}: no frame came; the port gave {len(sent)} bytes")
        self.assertIn(f"capture: {kept}\n", output)
        self.assertIn(f"{line.name}: {len(sent)} of {len(sent)} bytes discarded", output)
        self.assertEqual(len(decoded("-d", PROFILER, str(kept))), 18000)

    def test_a_capture_that_was_asked_for_and_fails_is_a_fault_and_says_what_it_lacks(self):
        line, limit = Line(), 20000
        process = self.start("--port", line.name, "-d", PROFILER, "--capture")
        resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (limit, resource.RLIM_INFINITY))
        sent = b"".join(self.frames_of(PROFILER, 100)) + b"x" * 30000
        line.send(sent)
        wait_for(lambda: "takes no more" in self.session_log(), "the capture's end")
        status, output, errors = self.finish(process)
        kept, = self.folder.glob("2*.bin")
        self.assertEqual((status, kept.read_bytes()), (1, sent[:limit]), errors)
        self.assertEqual(errors.count(f'error: The capture "{kept}" takes no more: The disk is full.'), 1, errors)
        self.assertIn(f"capture: {kept}, {len(sent) - limit} bytes not kept\n", output)

    def test_values_are_printed_as_decode_prints_them_and_no_reader_harms_the_log(self):
        line, screen = Line(), pty.openpty()
        frames = self.frames_of(PROFILER, 8000)  # more lines than may wait
        for reader in ("takes", "goes", "stalls", "stalls, a terminal"):
            process = self.start("--overwrite", "--port", line.name, "-d", PROFILER, "--print", "jsonl",
                                 output=screen[1] if "terminal" in reader else subprocess.PIPE)
            sent = frames[:200] if reader == "takes" else frames
            line.send(b"".join(sent[:100]))
            lines = [process.stdout.readline()] if reader in ("takes", "goes") else []
            if reader == "goes":
                process.stdout.close()
            line.send(b"".join(sent[100:]))
            self.assertLogHolds(sent)
            process.send_signal(signal.SIGINT)
            lines += process.stdout.readlines() if reader == "takes" else []
            errors = process.stderr.read().decode()
            self.assertEqual(process.wait(30), 0, errors)
            self.assertIn("QORPRO042 on", errors)
            self.assertEqual("nobody reads standard output any more" in errors, reader == "goes", errors)
            self.assertEqual("frames were not printed" in errors, reader.startswith("stalls"), errors)
            if reader == "takes":
                raw = run("decode", "-d", PROFILER, "--format", "jsonl", str(self.raw)).stdout
                self.assertEqual(b"".join(lines), raw)

    def test_lines_are_drawn_only_on_a_terminal_that_can(self):
        drawn, processes = {}, []
        for kind in ("dumb", "", "xterm"):
            line, screen = Line(), Line()
            process = subprocess.Popen([CLI, "log", "-o", str(self.folder), "--port", line.name, "-d", PROFILER],
                                       stdout=subprocess.DEVNULL, stderr=screen.slave, env=os.environ | {"TERM": kind})
            self.processes.append(process)
            processes.append((kind, process, line, screen))
        wait_for(lambda: select.select([screen.master], [], [], 0)[0], "a status line")
        for kind, process, line, screen in processes:
            process.send_signal(signal.SIGINT)
            process.wait(30)
            drawn[kind] = b"\x1b" in os.read(screen.master, 65536)
        self.assertEqual(drawn, {"dumb": False, "": False, "xterm": True})

    def test_an_unplugged_port_aborts_and_the_others_go_on(self):
        first, second = Line(), Line()
        process = self.start("--port", first.name, "-d", PROFILER, "--port", second.name, "-d", GPS)
        first.unplug()
        wait_for(lambda: "Telemetry acquisition aborted on " + first.name in self.session_log(), "the abort")
        sentences = self.frames_of(GPS, 5)
        second.send(b"".join(sentences))
        wait_for(lambda: self.logged().count(sentences[0][:6]) == 5, "the other port's frames")
        status, output, errors = self.finish(process, signal.SIGTERM)
        self.assertEqual(status, 1)
        self.assertIn(f"qorview-cli: error: {first.name}: telemetry acquisition aborted", errors)

    def test_a_full_disk_ends_the_log_with_a_word_and_another_takes_the_rest(self):
        line, frames = Line(), self.frames_of(PROFILER, 40)
        limit = 18 * RECORD + 1000
        spare = self.folder / "spare"
        spare.mkdir()
        for option in (("--exit-on-error",), ("--spare", str(spare))):
            process = self.start("--port", line.name, "-d", PROFILER, "--overwrite", *option)
            resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (limit, resource.RLIM_INFINITY))
            line.send(b"".join(frames))
            if "--spare" in option:
                wait_for(lambda: (spare / "run.raw").exists(), "the log on the spare folder")
                resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
                status, _, errors = self.finish(process)
            else:
                errors = process.communicate(timeout=30)[1].decode()
                status = process.returncode
            self.assertEqual(status, 1)
            self.assertIn(f"error: {self.raw}: Error writing to log file: ", errors)
            record = definition(PROFILER)["frame_size"] + TAG
            self.assertEqual(len(self.logged()) % record, 0)
        logged = b"".join(behind_header(path.read_bytes()) for path in self.folder.rglob("run*.raw"))
        self.assertEqual(len(logged), len(frames) * record)

    def test_a_log_that_is_taken_away_is_said_and_another_goes_on(self):
        takes = {"deleted": lambda path: path.unlink(),
                 "moved away": lambda path: path.rename(self.folder / "moved"),
                 "another file has its name": lambda path: (path.rename(self.folder / "moved"), path.write_text("x")),
                 "cut off": lambda path: os.truncate(path, RECORD)}
        frames = self.frames_of(PROFILER, 4)
        for what, take in takes.items():
            line = Line()
            process = self.start("--port", line.name, "-d", PROFILER, "--overwrite")
            line.send(frames[0])
            wait_for(self.logged, "the first frame")
            take(self.raw)
            following = self.folder / ("run.raw" if what in ("deleted", "moved away") else "run-2.raw")
            wait_for(lambda: following.exists() and following.stat().st_size >= RECORD, f"another file ({what})")
            line.send(frames[1])
            wait_for(lambda: behind_header(following.read_bytes()).startswith(frames[1]), "the second frame")
            status, _, errors = self.finish(process)
            self.assertEqual(status, 1, errors)
            self.assertIn(what, errors)
            for path in [*self.folder.glob("*.raw"), *self.folder.glob("moved")]:
                path.chmod(0o600)
                path.unlink()

    def test_a_port_is_not_shared_and_is_left_as_it_was(self):
        line = Line()
        before = termios.tcgetattr(line.slave)
        refused = run("log", "--port", line.name + ":4800:8N1.5", "-d", PROFILER, "-o", str(self.folder))
        self.assertIn(f"{line.name}: its driver refuses 4800:8N1.5 (0x10000012: {os.strerror(errno.EINVAL)}).",
                      refused.stderr.decode())
        process = self.start("--port", line.name + ":57600:8E2", "-d", PROFILER)
        other = run("log", "--port", line.name, "-d", PROFILER, "-o", str(self.folder), "--name", "other.raw")
        self.assertEqual(other.returncode, 1)
        self.assertTrue((self.folder / "QorView2.log").exists())
        self.assertEqual(self.finish(process)[0], 1)  # no frame came
        self.assertEqual(termios.tcgetattr(line.slave), before)

    def test_an_existing_log_is_left_alone_without_consent(self):
        line = Line()
        self.folder.joinpath("run.raw").write_bytes(b"precious")
        os.chmod(self.folder / "run.raw", 0o444)
        done = run("log", "-o", str(self.folder), "--name", "run.raw", "--port", line.name, "-d", PROFILER)
        self.assertEqual(done.returncode, 1)
        self.assertIn(f'error: The log file "{self.folder}/run.raw" already exists', done.stderr.decode())
        self.assertEqual((self.folder / "run.raw").read_bytes(), b"precious")
        process = self.start("--overwrite", "--port", line.name, "-d", PROFILER)
        self.assertEqual(self.finish(process)[0], 1)  # no frame came
        self.assertTrue((self.folder / "run.raw").read_bytes().startswith(b"QORHDR "))

    def header_of(self, line, frames, *options):
        """The header records of a run with these frames, but for its time."""
        self.raw = self.folder / "run.raw"
        self.raw.unlink(missing_ok=True)
        process = subprocess.Popen([CLI, "log", *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.processes.append(process)
        wait_for(lambda: self.raw.exists() or process.poll() is not None, "the log")
        line.send(b"".join(frames))
        wait_for(lambda: len(self.logged()) >= sum(len(frame) + TAG for frame in frames), "the frames")
        status, _, errors = self.finish(process)
        self.assertEqual(status, 0, errors)
        data = self.raw.read_bytes()
        records = [data[i:i + RECORD] for i in range(0, len(data) - len(self.logged()), RECORD)]
        return [record for record in records if b"(TIME-STAMP)" not in record]

    def test_a_session_runs_as_the_call_that_it_was_made_of(self):
        line = Line()
        name = definition(PROFILER)["instrument"]
        call = ("--port", f"{line.name}:9600", "-d", PROFILER, "--wet", "--role", f"{name}=profiler",
                "--cruise", "HE-1", "--name", "run.raw")
        file = str(self.folder / "run.qor")
        done = run("session", *call, "--directory", str(self.folder), "-o", file)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        again = run("session", "--session", file, "-o", "-", cwd=self.folder)
        self.assertEqual(again.stdout, pathlib.Path(file).read_bytes())
        checked = json.loads(run("check", "--json", file).stdout)
        self.assertTrue(checked["ok"] and checked["kind"] == "Session File", checked)
        self.assertEqual(checked["resources"][0]["instruments"][0]["roles"], ["profiler"])

        frames = self.frames_of(PROFILER, 5)
        by_call = self.header_of(line, frames, *call, "-o", str(self.folder))
        self.assertEqual(self.header_of(line, frames, "--session", file), by_call)
        self.assertTrue(any(b"QORHDR WET (PROFILER)" in record for record in by_call))
        self.assertEqual(decoded("--session", file, str(self.raw)),
                         decoded("-d", PROFILER, "--wet", str(self.raw)))
        other = self.header_of(line, frames, "--session", file, "--cruise", "HE-2")
        self.assertTrue(any(b"QORHDR HE-2 (CRUISE-ID)" in record for record in other))

    def test_what_a_session_names_in_vain_ends_it_before_it_logs(self):
        file = self.folder / "run.qor"
        instruments = [{"definition": "none.cal"}, {"definition": PROFILER}]
        file.write_text(json.dumps({"qorview-session": 1, "note": 1, "log": {"naming": "file", "name": "run.raw"},
                                    "resources": [{"port": Line().name, "instruments": instruments}]}))
        for call in (("log", "--session", str(file)), ("check", str(file)), ("session", "--session", str(file))):
            done = run(*call, cwd=self.folder)
            self.assertEqual(done.returncode, 1, call)
            self.assertEqual(done.stderr.count(b"unknown members, kept as they are: note."), 1, call)
            self.assertIn(b"none.cal: could not be loaded", done.stderr)
            self.assertFalse((self.folder / "run.raw").exists())
        # What can be used is as if nothing else had been named.
        broken = self.folder / "broken.sip"
        broken.write_bytes(b"PK")
        port, package = ("--port", Line().name), ("-p", str(SOURCE / "examples/cast.sip"))
        partly = run("session", *port, "-p", str(broken), *package, "--partly", "-o", "-", cwd=self.folder)
        whole = run("session", *port, *package, "-o", "-", cwd=self.folder)
        self.assertEqual((partly.returncode, whole.returncode, partly.stdout), (1, 0, whole.stdout), partly.stderr)
        file.write_text('{"qorview-session": 2}')
        for call in (("log", "--session"), ("check",), ("decode", "raw", "--session")):
            done = run(*call, str(file), cwd=self.folder)
            self.assertEqual((done.returncode, done.stderr.count(b"\n")), (1, 1), done.stderr)
            self.assertIn(b"run.qor: qorview-session: 2: written by a newer version", done.stderr)


unittest.main(argv=[sys.argv[0], *sys.argv[3 + bool(STALLED_DISK):]], verbosity=2)
