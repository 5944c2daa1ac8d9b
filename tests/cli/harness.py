# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the finished program share: waiting for the world outside, pseudo-terminals in
the place of instruments, and the outer form of raw logs."""
import os
import pty
import select
import time
import tty

TAG = 7
RECORD = 128


def wait_for(condition, what, seconds=15):
    """Polls a condition of the world outside (a file, another process) until it holds."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        select.select([], [], [], 0.02)
    raise AssertionError(f"{what} did not come to pass within {seconds} s")


def behind_header(data):
    """The bytes of a raw log behind its header records."""
    while data.startswith(b"QORHDR "):
        data = data[RECORD:]
    return data


class Line:
    """One end of a pseudo-terminal; the command has the other."""

    def __init__(self):
        self.master, self.slave = pty.openpty()
        tty.setraw(self.slave)
        self.name = os.ttyname(self.slave)

    def send(self, data):
        while data:
            data = data[os.write(self.master, data[:512]):]

    def unplug(self):
        os.close(self.slave)
        os.close(self.master)
