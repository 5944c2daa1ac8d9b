# SPDX-License-Identifier: GPL-3.0-or-later
"""What strangers can do to the person and the files behind the command line: bytes of instruments,
definitions, names and calls at a terminal. Usage: strangers_test.py QORVIEW-CLI SOURCE-FOLDER"""
import csv
import io
import json
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import termios
import tty
import unicodedata
import unittest

from harness import wait_for

CLI, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])
GPS, PROFILER = str(SOURCE / "examples/gps.tdf"), str(SOURCE / "examples/profiler.cal")
SENTENCE = b"$GPRMC,092204.00,%s,4436.1234,N,06334.5678,W,5.2,123.4,130705,018.2,W*00\r\n"


def run(*arguments, **options):
    return subprocess.run([CLI, *arguments], capture_output=True, timeout=60, **options)


def shown(*arguments, **options):
    """What a terminal gets that is behind both standard output and standard error."""
    master, slave = pty.openpty()
    tty.setraw(slave)
    process = subprocess.Popen([CLI, *arguments], stdin=slave, stdout=slave, stderr=slave, **options)
    os.close(slave)
    text = b""
    try:
        while data := os.read(master, 65536):
            text += data
    except OSError:  # the other end is closed
        pass
    os.close(master)
    process.wait(30)
    return text


class Folder(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return str(path)


class Terminal(Folder):
    def test_control_characters_reach_a_terminal_as_text_and_a_pipe_as_they_are(self):
        header = b"QORHDR \x1b[2Jgone\x9b1m (COMMENT)\r\n".ljust(128, b"\0")
        log = self.file("log.raw", header)
        line = self.file("line.bin", SENTENCE % b"\x1b]0;mine\x07" * 2)
        bad = self.file("bad.tdf", pathlib.Path(GPS).read_bytes().replace(b"'kn'", b"'\x1b[8m\xc2\x9b'"))
        texts = self.file("texts.cal", b"INSTRUMENT TXT '' 3 AS 0 NONE\nNOTE NONE '' 20 AS 0 COUNT\n")
        note = self.file("note.raw", b"TXTa\nqorview-cli: error: a")
        named = self.file("na\x1b[1m\nqorview-cli: error: all is lost.raw", b"")
        other = self.file("na\x1b[1m.raw", SENTENCE % b"A")
        os.symlink("/dev/stdout", self.folder / "stdout")
        cases = [
            (("info", log), b"\x1b[2J", b"\\x1b[2Jgone\\x9b1m"),
            (("info", named), b"\x1b[1m\nq", b"\\x1b[1m\\x0aqorview-cli: error: all is"),
            (("decode", "-d", GPS, line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
            (("decode", "-d", GPS, "-o", "/dev/stdout", line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
            (("decode", "-d", GPS, "--format", "summary", line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
            (("decode", "-d", texts, "--format", "summary", note), None, b"a\\x0aqorview-cli"),
            (("page", "sensors", "-d", texts, note), None, b"a\\x0aqorview-cli"),
            (("page", "sensors", "-d", bad, line), b"\x1b[8m", b"\\xc2\\x9b"),
            (("check", bad, bad + "\x1b[7m"), b"\x1b[7m", b"\\x1b[7m"),
            (("check", "--json", other), b"\x1b[1m", b"\\x1b[1m"),
            (("decode", "-d", GPS, named), b"\x1b[1m\nq", b"\\x1b[1m\\x0aqorview-cli: error: all"),
            (("decode", "-d", GPS, "--\x1b[5m"), b"\x1b[5m", b"\\x1b[5m"),
            (("frob\x1b[5m\xe2\x80\xae",), b"\x1b[5m", b"\\x1b[5m"),
            (("log", "--port", "/dev/\x1b[5m\n", "-d", GPS, "-o", str(self.folder)), b"\x1b[5m", b"\\x1b[5m"),
        ]
        for call, raw, escaped in cases:
            with self.subTest(call=call):
                seen, done = shown(*call), run(*call)
                self.assertIn(escaped, seen)
                control = [sign for sign in seen.decode() if sign not in "\t\r\n"
                           and unicodedata.category(sign) in ("Cc", "Cf")]
                self.assertEqual(control, [], seen)
                for line_seen in seen.splitlines():
                    self.assertFalse(line_seen.startswith(b"qorview-cli: error: a"), seen)
                if raw is not None:
                    self.assertIn(raw, done.stdout + done.stderr)

    def test_values_that_are_printed_live_are_shown_too(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        tty.setraw(slave)
        screen, output = pty.openpty()
        tty.setraw(output)
        process = subprocess.Popen([CLI, "log", "--port", os.ttyname(slave), "-d", GPS, "--print", "csv",
                                    "-o", str(self.folder)], stdout=output, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait, 30)
        self.addCleanup(process.terminate)
        os.set_blocking(screen, False)
        seen = bytearray()

        def told():
            os.write(master, SENTENCE % b"\x1b[8m")
            try:
                seen.extend(os.read(screen, 65536))
            except BlockingIOError:
                pass
            return b"\\x1b[8m" in seen
        wait_for(told, "a row")
        self.assertNotIn(b"\x1b", seen)


class Numbers(Folder):
    def test_odd_numbers_are_wrong_calls_that_name_option_and_value(self):
        raw = str(self.folder / "log.raw")
        self.assertEqual(run("simulate", "-d", GPS, "--raw-log", "--frames", "1", "-o", raw).returncode, 0)
        simulate = "simulate", "-d", GPS, "-o", str(self.folder / "new")
        one, decode = (*simulate, "--frames", "1"), ("decode", "-d", GPS, "--format", "none")
        log = "log", "--port", "/dev/none", "-d", GPS, "-o", str(self.folder)
        odd = ["nan", "NaN", "inf", "-inf", "0x10", "0x1p3", "1e400", "-1", "", " 1", "1,5", "9" * 40]
        spans, times = [*odd, "0", "0s", "00:00"], ["0000-01-01T00:00:00", "-001-01-01T00:00:00",
                                                   "10000-01-01T00:00:00", "1969-12-31T23:59:59",
                                                   "2026-2-20T00:00:00", " 2026-02-20T00:00:00",
                                                   "2026-02-20T24:00:00", "2026-02-30T00:00:00", "+026-02-20T00:00:00", ""]
        table = [(one, name, "tail", odd) for name in ("--drop", "--corrupt", "--noise", "--cast", "--seed")]
        table += [(one, "--rate", "tail", [*odd, "0"]), (simulate, "--frames", "tail", [*odd, "1.5"]),
                  (one, "--start", "tail", times), (("page", "sensors", "-d", GPS, raw), "--at", "tail", times)]
        table += [(decode, name, raw, odd) for name in
                  ("--digits", "--default-salinity", "--saturation-irradiance", "--attenuation-window")]
        table += [(decode, "--utc-offset", raw, [*odd, "+15:00", "+13:60", "13:00"]), (decode, "--digits", raw, ["0", "18"])]
        table += [(call, "--chunk", raw, [*odd, "0", "67108865", "010 "]) for call in
                  (decode, ("info",), ("page", "sensors", "-d", GPS), ("compare", "-d", GPS, "--dut", "a", "--reference", "b"))]
        table += [(call, name, "tail", spans) for call in (log, ("session", *log[1:5])) for name in ("--duration", "--every")]
        table += [((*log, "--duration", "1m"), "--repeat", "tail", spans)]
        table += [(("log", "-d", GPS, "-o", str(self.folder)), "--port", "tail",
                   ["x:-1", "x:0", "x:99999999999", "x:0:8N1", "x:9N1", "x:nan:8N1"])]
        for call, name, behind, values in table:
            for value in values:
                with self.subTest(call=call[0], option=f"{name}={value}"):
                    done = run(*call, f"{name}={value}", *([] if behind == "tail" else [behind]))
                    said = done.stderr.decode()
                    self.assertEqual((done.returncode, said.count("\n"), done.stdout), (2, 1, b""), said)
                    self.assertTrue(name in said and value in said or name == "--port", said)
        self.assertFalse((self.folder / "new").exists())
        octal, ten = (run("decode", "-d", PROFILER, "--digits", digits, self.cast()).stdout for digits in ("010", "10"))
        self.assertEqual(octal, ten)

    def cast(self):
        path = str(self.folder / "cast.raw")
        run("simulate", "-d", PROFILER, "--raw-log", "--frames", "3", "-o", path)
        return path


class Tables(Folder):
    def test_no_text_of_a_table_is_a_formula(self):
        evil = pathlib.Path(GPS).read_bytes().replace(b"FIXSTATUS", b"=FIX").replace(b"SPEED ", b"@SPEED ")
        definition = self.file("evil.tdf", evil)
        for text in (b"=1+1", b"+1", b"-1", b"@SUM(A1)", b"\t=1", b"\r=1", b'=A"1'):
            line = self.file("line.bin", (SENTENCE % text).replace(b"5.2,123.4", b"-5.2,-123.4"))
            rows = {}
            for option in ((), ("--csv-safe",)):
                done = run("decode", "-d", definition, *option, line)
                self.assertEqual(done.returncode, 0, done.stderr)
                rows[option] = list(csv.reader(io.StringIO(done.stdout.decode(), newline="")))
            with self.subTest(text=text):
                plain, safe = rows[()], rows[("--csv-safe",)]
                cells = [cell for row in safe for cell in row]
                self.assertEqual([cell for cell in cells if cell[:1] in tuple("=+@\t\r")], [])
                self.assertIn("'" + text.decode(), cells)
                self.assertEqual([cell for cell in cells if cell.startswith("-")], ["-5.2", "-123.4"])
                self.assertEqual([[cell[cell.startswith("'"):] for cell in row] for row in safe], plain)
        self.assertIn(b'"\'=FIX', done.stdout)


class Sessions(Folder):
    def test_what_only_reads_a_strangers_session_writes_connects_and_creates_nothing(self):
        raw = str(self.folder / "log.raw")
        self.assertEqual(run("simulate", "-d", GPS, "--raw-log", "--frames", "2", "-o", raw).returncode, 0)
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        before_line = termios.tcgetattr(slave)
        log = {"directory": "..", "naming": "file", "name": "mine.raw", "duration": "00:00:01", "session-log": True,
               "session-log-directory": str(self.folder / "elsewhere")}
        (self.folder / "elsewhere").mkdir()
        resource = {"port": os.ttyname(slave), "reconnect": True,
                    "instruments": [{"definition": GPS, "roles": ["dut", "reference", "gps"]}]}
        session = self.file("evil.qor", json.dumps({"qorview-session": 1, "resources": [resource], "log": log}).encode())
        before = sorted((str(path), path.stat().st_mtime_ns) for path in self.folder.rglob("*") if path.is_file())
        name = "$GPRMC"
        for call in (("check", session), ("decode", "--session", session, raw), ("info", "--session", session, raw),
                     ("page", "gps", "--session", session, raw), ("session", "--session", session),
                     ("compare", "--session", session, "--dut", name, "--reference", name, raw)):
            with self.subTest(call=call[0]):
                done = run(*call, cwd=self.folder)
                self.assertIn(done.returncode, (0, 1), done.stderr)
        after = sorted((str(path), path.stat().st_mtime_ns) for path in self.folder.rglob("*") if path.is_file())
        self.assertEqual(after, before)
        self.assertEqual(termios.tcgetattr(slave), before_line, "the port was touched")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
