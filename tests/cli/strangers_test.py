# SPDX-License-Identifier: GPL-3.0-or-later
"""What strangers can do to the person and the files behind the command line: bytes of instruments,
definitions, names and calls at a terminal. Usage: strangers_test.py QORVIEW-CLI SOURCE-FOLDER"""
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
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
        named = self.file("na\x1b[1m\nqorview-cli: error: all is lost.raw", b"")
        other = self.file("na\x1b[1m.raw", SENTENCE % b"A")
        os.symlink("/dev/stdout", self.folder / "stdout")
        cases = [
            (("info", log), b"\x1b[2J", b"\\x1b[2Jgone\\x9b1m"),
            (("info", named), b"\x1b[1m\nq", b"\\x1b[1m\\x0aqorview-cli: error: all is"),
            (("decode", "-d", GPS, line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
            (("decode", "-d", GPS, "-o", "/dev/stdout", line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
            (("decode", "-d", GPS, "--format", "summary", line), b"\x1b]0;mine\x07", b"\\x1b]0;mine\\x07"),
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
                    self.assertFalse(line_seen.startswith(b"qorview-cli: error: all is"), seen)
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


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
