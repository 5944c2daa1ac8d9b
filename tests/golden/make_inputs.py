#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the inputs of the recordings from the invented instruments beside it: make_inputs.py [CASE...].
The same call gives the same bytes. What an input must lead to is not known here: see replay.py."""
import pathlib
import struct
import sys
import zipfile

HERE = pathlib.Path(__file__).resolve().parent


def with_sum(frame):
    return frame + bytes([-sum(frame) & 0xFF])


def sphere(n, header=b"QSPH07"):
    """Light that falls with n; the counter wraps from 255 to 0."""
    counts = [2100 + 400000 // (n % 50 + 1), 2050 + 300000 // (n % 50 + 1)]
    return with_sum(header + struct.pack(">H", 128 + n % 3) + b"".join(c.to_bytes(3, "big") for c in counts)
                    + struct.pack(">hfB", 1450 - 3 * n, 11.5 + n / 64, n & 0xFF))


def wave(n):
    return b"QWAV" + b"%07.3f" % (n / 4) + (0x051000 + 997 * n).to_bytes(3, "big") + b"%04X" % (n * 401 & 0xFFFF) \
        + bytes([n == 7]) + b"%03d" % (n % 1000)


def rover(n, state=b"OK"):
    return b"$QROV,0930%05.2f,%.2f,%s,%d\r\n" % (n / 2 % 60, 12.5 + 0.25 * n, state, n)


def gps(n, fix=b"A"):
    position = b"4436.%04d,N,06334.%04d,W" % (1234 + n, 5678 - n) if fix == b"A" else b",,,"
    body = b"GPRMC,0922%05.2f,%s,%s,5.2,123.4,130726,018.2,W" % (n, fix, position)
    total = 0
    for byte in body:
        total ^= byte
    return b"$%s*%02X\r\n" % (body, total)


def three_on_a_line():
    return b"".join(sphere(n) + (wave(n // 2) if n % 2 == 0 else b"") + (rover(n // 4) if n % 4 == 3 else b"")
                    for n in range(12))


def noise_in_text():
    junk = [b"", b"\x00\xff\x80", b"$QRO", b"$$QROV", b"\r\n", b"\r", b"QROV,", b"boot 1.2\r\nready\r\n", b"$QROV"]
    lines = [rover(n, state) for n, state in enumerate([b"OK", b"", b" ", b"A B", b"\xe9\x00x", b"OK"])]
    lines += [b"$QROV,no numbers,here,,\r\n", b"$QROV\r\n", b"$QROV,,,,,,,\r\n", rover(9)[:-1] + b" \n" + rover(10),
              b"$QROV,093015.25,1e2,OK,0011\r\n", b"$QROV," + b"9" * 300 + b",1,OK,12\r\n", rover(13)]
    return b"".join(junk[n % len(junk)] + line for n, line in enumerate(lines)) + rover(14)[:-1]


def split_headers():
    cut = sphere(3)
    return b"".join([b"QSPQSPH0QSPH", sphere(0), b"QQSPH07"[:3], sphere(1), b"QSPH07", sphere(2), cut[:9], sphere(4),
                     b"QWAQWAV", wave(4), wave(5)[:4], wave(6), b"QSPH0" + wave(7), sphere(5), cut[:21], sphere(6),
                     sphere(7), b"QSPH"])


def wrapped_counters():
    numbers = [253, 254, 255, 256, 257, 260, 261, 511, 512, 513]
    digits = [254, 255, 256, 257, 0, 1, 998, 999, 1000, 1]
    return b"".join(sphere(n) + wave(d) for n, d in zip(numbers, digits))


def damaged():
    def with_byte(frame, at, value):
        return frame[:at] + bytes([value]) + frame[at + 1:]
    frames = [sphere(n) for n in range(12)]
    frames[2] = with_byte(frames[2], 9, frames[2][9] ^ 0x10)   # a value: the checksum tells
    frames[4] = with_byte(frames[4], 0, 0x51 ^ 0x01)           # the header: the frame is not found
    frames[8] = with_byte(frames[8], 21, frames[8][21] ^ 0xFF)  # the sum itself
    frames[10] = frames[10][:16] + bytes.fromhex("7fc00000") + frames[10][20:-1]
    frames[10] = with_sum(frames[10])                          # a voltage that is no number, sum right
    waves = [wave(1), wave(2), wave(4), wave(5)[:-3] + b"xyz", wave(6)[:4] + b"  nine " + wave(6)[11:], wave(7)]
    # The sphere's frame 6 and the third wave never come.
    return b"".join(frames[:6] + waves[:3] + frames[7:9] + waves[3:] + frames[9:])


def position():
    return b"".join([gps(1), sphere(0), gps(2, b"V"), sphere(1), gps(3), sphere(2), gps(4), sphere(3)])


def interval():
    return b"".join(sphere(n) + rover(n) for n in range(8))


def package():
    return b"".join(sphere(n) + (wave(n // 2) if n % 2 else b"") for n in range(8))


def tag(milliseconds):
    day, rest = 325 + milliseconds // 86400000, milliseconds % 86400000
    clock = rest // 3600000 * 10000000 + rest // 60000 % 60 * 100000 + rest % 60000
    return (2026000 + day).to_bytes(3, "big") + clock.to_bytes(4, "big")


def raw_log():
    """As a log is on the disk after the power went: over midnight, and torn in its last frame."""
    records = [("HE-612", "CRUISE-ID"), ("N. N.", "OPERATOR"), ("S4", "STATION-ID"), ("2026-325-235958", "TIMESTAMP"),
               ("QSPH07", "PRO-ID")]
    log = b"".join((b"QORHDR %s (%s)\r\n" % (value.encode(), name.encode())).ljust(128, b"\0") for value, name in records)
    log += b"$PCZDA,235958.00,21,11,2026,,\r\n"
    start = 86400000 - 1750
    for n in range(8):
        log += sphere(n) + tag(start + 250 * n)
        if n == 7:
            log += b"$PCZDA,000000.00,22,11,2026,,\r\n"
        if n % 2:
            log += rover(n // 2) + tag(start + 250 * n + 40)
    return log + sphere(8)[:13]


def write_package(path):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, data in (("Properties.txt", b"NAME = Test Frame\r\nBAUDRATE = 57600\r\n"),
                           ("wave.cal", (HERE / "instruments/wave.cal").read_bytes()),
                           ("sphere.cal", (HERE / "instruments/sphere.cal").read_bytes())):
            member = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))
            member.compress_type, member.external_attr = zipfile.ZIP_DEFLATED, 0o644 << 16
            archive.writestr(member, data)


INPUTS = {"three-on-a-line": three_on_a_line, "noise-in-text": noise_in_text, "split-headers": split_headers,
          "wrapped-counters": wrapped_counters, "damaged": damaged, "position": position, "interval": interval,
          "package": package, "raw-log": raw_log}


def main():
    for case in sys.argv[1:] or INPUTS:
        (HERE / case).mkdir(exist_ok=True)
        (HERE / case / ("input.raw" if case == "raw-log" else "input.bin")).write_bytes(INPUTS[case]())
        if case == "package":
            write_package(HERE / case / "frame.sip")


main()
