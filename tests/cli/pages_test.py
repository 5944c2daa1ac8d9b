# SPDX-License-Identifier: GPL-3.0-or-later
"""Every window's page from outside: what qorview-cli prints against values made here, from the same bytes.
Usage: pages_test.py QORVIEW-CLI SOURCE-FOLDER"""
import datetime
import json
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from harness import TAG, behind_header

CLI, SOURCE = sys.argv[1], pathlib.Path(sys.argv[2])
RADIOMETER, GPS, CAST = (str(SOURCE / "examples" / name) for name in ("radiometer.cal", "gps.tdf", "cast.sip"))
EARTH = 6371008.8

ANEMOMETER = """VLF_INSTRUMENT $WIMWV '' 6 AS 0 NONE
RATE 1 'Hz' 0 BU 0 NONE
FIELD NONE ',' 1 AS 0 DELIMITER
WINDANGLE NONE 'deg' V AF 1 POLYU
0 1
FIELD NONE ',' 1 AS 0 DELIMITER
WINDSPEED NONE 'm/s' V AF 1 POLYU
0 1
FIELD NONE ',' 1 AS 0 DELIMITER
TEMP AIR '\xb0C' V AF 1 POLYU
0 1
FIELD NONE ',' 1 AS 0 DELIMITER
HUMIDITY NONE '%' V AF 1 POLYU
0 1
FIELD NONE ',' 1 AS 0 DELIMITER
BAROMETER NONE 'hPa' V AF 1 POLYU
0 1
TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER
"""
COUNTER = "INSTRUMENT CNT '' 3 AS 0 NONE\nVALUE NONE '' 2 BU 0 COUNT\nFRAME COUNTER '' 1 BU 0 COUNT\n"


def run(*arguments):
    return subprocess.run([CLI, *arguments], capture_output=True, timeout=60, env={**os.environ, "TZ": "UTC"})


def tag(moment):
    """The time behind a frame of a raw log."""
    day = moment.timetuple().tm_yday
    clock = ((moment.hour * 100 + moment.minute) * 100 + moment.second) * 1000 + moment.microsecond // 1000
    return (moment.year * 1000 + day).to_bytes(3, "big") + clock.to_bytes(4, "big")


class Pages(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.raw = self.folder / "log.raw"

    def put(self, name, text):
        (self.folder / name).write_bytes(text.encode("latin-1"))
        return str(self.folder / name)

    def simulated(self, *options):
        done = run("simulate", "--raw-log", *options, "-o", str(self.raw))
        self.assertEqual(done.returncode, 0, done.stderr)
        return behind_header(self.raw.read_bytes())

    def write_log(self, data):
        """A raw log: only behind a header are there times behind frames."""
        body = self.simulated("-d", GPS, "--frames", "1")
        header = self.raw.read_bytes().removesuffix(body)
        self.assertTrue(header)
        self.raw.write_bytes(header + data)

    def page(self, *options):
        done = run("page", *options, "--json", str(self.raw))
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout)

    def rows(self, *options):
        return {row["label"]: row for row in self.page(*options)["rows"]}

    def decoded(self, *options):
        done = run("decode", "--format", "jsonl", *options, str(self.raw))
        self.assertEqual(done.returncode, 0, done.stderr)
        return [json.loads(line) for line in done.stdout.splitlines()]

    def test_a_spectrum_is_what_its_counts_and_coefficients_make(self):
        data = self.simulated("-d", RADIOMETER, "--frames", "40")
        channels, before = [], None
        for line in pathlib.Path(RADIOMETER).read_text().splitlines():
            words = line.split()
            if before:
                channels.append((before, [float(word) for word in words]))
            before = float(words[1]) if words and words[0] == "ED" else None
        size = json.loads(run("check", "--json", RADIOMETER).stdout)["frame_size"] + TAG
        frames = [data[i:i + size] for i in range(0, len(data), size)]
        self.assertEqual((len(frames), len(channels)), (40, 137))

        def spectrum(frame, calibrated=True):
            word = lambda i: int.from_bytes(frame[i:i + 2], "big")
            points = {}
            for i, (nm, (dark, scale, _, time)) in enumerate(channels):
                counts = word(14 + 2 * i)  # behind name, serial number, integration time and delay
                points[nm] = scale * (counts - dark) * time / (word(10) * 0.001) if calibrated else counts
            return points

        def expect(curve, wanted):
            self.assertEqual([x for x, _ in curve["points"]], sorted(wanted))
            for x, y in curve["points"]:
                self.assertAlmostEqual(y, wanted[x], delta=1e-9 * max(1, abs(wanted[x])))

        shown = self.page("spectral", "-d", RADIOMETER)
        expect(shown["curves"][0], spectrum(frames[-1]))
        self.assertEqual(shown["axes"][1]["units"], "uW/cm^2/nm")
        nm, value = min(spectrum(frames[-1]).items(), key=lambda point: abs(point[0] - 443))
        self.assertEqual(shown["leading"], f"{nm:.0f} nm {value:.3g}")
        raw = self.page("spectral", "-d", RADIOMETER, "--select", "Raw Counts")
        expect(raw["curves"][0], spectrum(frames[-1], False))
        mean, least, most = self.page("spectral", "-d", RADIOMETER, "--select", "Mean of 10", "--select",
                                      "Least and Greatest")["curves"]
        last = [spectrum(frame) for frame in frames[-10:]]
        expect(mean, {nm: sum(one[nm] for one in last) / 10 for nm in last[0]})
        expect(least, {nm: min(one[nm] for one in last) for nm in last[0]})
        expect(most, {nm: max(one[nm] for one in last) for nm in last[0]})
        refused = run("page", "spectral", "-d", RADIOMETER, "--select", "XYZ", str(self.raw))
        self.assertEqual((refused.returncode, refused.stdout), (2, b""))

    def sail(self):
        """Ten minutes of a ship and its weather, as a raw log with a second between tags."""
        start = datetime.datetime(2026, 6, 21, 12, 0, 0)
        data, places = b"", []
        for second in range(601):
            moment = start + datetime.timedelta(seconds=second)
            latitude, longitude = 54.0 + second * 1e-4, -7.9 + second * 2e-4
            minutes = lambda degrees: (int(abs(degrees)), (abs(degrees) - int(abs(degrees))) * 60)
            (ns, north), (ew, east) = minutes(latitude), minutes(longitude)
            said = moment - datetime.timedelta(seconds=2)  # the receiver's clock is late
            data += (f"$GPRMC,{said:%H%M%S}.00,A,{ns:02d}{north:07.4f},N,{ew:03d}{east:07.4f},W,9.0,040.0,"
                     f"{said:%d%m%y},,*00\r\n").encode() + tag(moment)
            data += (f"$WIMWV,{350 if second % 2 else 10}.0,8.0,{12 + second / 100:.2f},81.5,"
                     f"{1010 - second / 200:.3f}\r\n").encode() + tag(moment)
            places.append((ns + round(north, 4) / 60, -(ew + round(east, 4) / 60)))
        self.write_log(data)
        return ("-d", GPS, "-d", self.put("weather.tdf", ANEMOMETER)), places

    def test_the_gps_station_knows_where_when_and_how_late(self):
        options, places = self.sail()
        shown = self.page("gps", *options)
        rows = {row["label"]: row for row in shown["rows"]}
        for label, wanted in (("Latitude", places[-1][0]), ("Longitude", places[-1][1]), ("Speed", 9.0),
                              ("Course", 40.0), ("Clock", 2.0), ("Time", 12 * 3600 + 10 * 60 - 2)):
            self.assertAlmostEqual(rows[label]["value"], wanted, 6, label)
        minutes = round((places[-1][0] - 54) * 60, 3)
        self.assertEqual(rows["Latitude"]["text"], f"54 {minutes:06.3f} N")
        self.assertEqual((rows["Date"]["text"], rows["Fix"]["text"]), ("2026-06-21", "fix"))
        track = shown["curves"][0]["points"]
        self.assertEqual(len(track), len(places))
        for (x, y), (latitude, longitude) in zip(track, places):
            middle = math.radians((latitude + places[0][0]) / 2)
            self.assertAlmostEqual(x, EARTH * math.cos(middle) * math.radians(longitude - places[0][1]), 3)
            self.assertAlmostEqual(y, EARTH * math.radians(latitude - places[0][0]), 3)

    def test_the_weather_station_finds_the_true_wind_and_the_trends(self):
        options, _ = self.sail()
        shown = self.page("weather", *options)
        rows = {row["label"]: row for row in shown["rows"]}

        def true_wind(angle):
            ship = 9.0 * 1852 / 3600
            blows = math.radians(40 + angle)
            east = -8.0 * math.sin(blows) + ship * math.sin(math.radians(40))
            north = -8.0 * math.cos(blows) + ship * math.cos(math.radians(40))
            return math.hypot(east, north), math.degrees(math.atan2(-east, -north)) % 360

        speed, direction = true_wind(10)  # of the last second, which is even
        for label, wanted in (("True wind", speed), ("True wind from", direction), ("Relative wind", 8.0),
                              ("Relative wind from", 10.0), ("Air temperature", 18.0), ("Humidity", 81.5),
                              ("Pressure", 1007.0), ("Pressure trend", -3.0), ("Air temperature trend", 6.0)):
            self.assertAlmostEqual(rows[label]["value"], wanted, 6, label)
        shares = [0.0] * 16
        for second in range(601):
            shares[round(true_wind(350 if second % 2 else 10)[1] / 22.5) % 16] += 100 / 601
        blown = [sector for sector in range(16) if shares[sector] > 0]
        petals = shown["curves"][0]["points"]
        self.assertEqual(len(petals), 7 * len(blown))
        for sector, (x, y) in zip(blown, petals[3::7]):  # the middle of each petal's end
            angle = math.radians(22.5 * sector)
            self.assertAlmostEqual(x, shares[sector] * math.sin(angle), delta=0.4)
            self.assertAlmostEqual(y, shares[sector] * math.cos(angle), delta=0.4)
        sensors = run("page", "sensors", *options, "--instrument", "$WIMWV", str(self.raw))
        self.assertIn("TEMP(AIR)                       18.0000 (\u00b0C)", sensors.stdout.decode("utf-8"))

    def test_status_monitor_and_log_count_what_is_in_the_bytes(self):
        start, data, sent = datetime.datetime(2026, 6, 21, 12, 0, 0), b"", []
        for i in [*range(250), 252, 253, 254, 255, 0]:
            frame = b"CNT" + (1000 + i).to_bytes(2, "big") + bytes([i])
            sent.append(frame)
            data += frame + tag(start + datetime.timedelta(milliseconds=250 * len(sent)))
        whole = 50 * (6 + TAG)
        self.write_log(data[:whole] + b"noise" + data[whole:])
        options = ("-d", self.put("counter.cal", COUNTER))
        shown = self.page("status", *options)
        number = lambda row: dict(zip(shown["columns"][2:], row["numbers"]))
        text = lambda row: dict(zip(shown["columns"][2:], row["more"]))
        rows = {row["label"]: row for row in shown["rows"]}
        resource = next(row for label, row in rows.items() if label != "CNT")
        frames = self.decoded(*options)
        self.assertEqual(number(rows["CNT"])["Frames"], len(frames))
        self.assertEqual(number(rows["CNT"])["Dropped"], sum(frame["dropped"] for frame in frames))
        self.assertEqual(number(rows["CNT"])["Dropped"], 1)
        self.assertEqual((text(rows["CNT"])["Rate"], text(rows["CNT"])["Checksum"]), ("4.0/6", "--"))
        self.assertEqual(text(rows["CNT"])["Counter"], "0")
        self.assertGreaterEqual(number(resource)["Discarded"], 5)
        self.assertEqual(rows["CNT"]["sign"], "warning")

        shown = self.page("monitor", *options)
        self.assertEqual(len(shown["rows"]), 200)
        for row, frame in zip(shown["rows"][-100:], sent[-100:]):
            self.assertEqual(row["more"][-1], " ".join(f"{byte:02X}" for byte in frame))
        self.assertEqual([row["label"] for row in self.page("monitor", *options, "--select", "Only Bad Frames")["rows"]],
                         [str(1 + next(i for i, frame in enumerate(frames) if frame["dropped"]))])
        rows = self.rows("log", *options)
        self.assertEqual((rows["State"]["text"], rows["Frames"]["value"]), ("not logging", 0))
        self.assertGreater(rows["Space left"]["value"], 0)

    def test_the_other_windows_show_what_the_frames_say(self):
        self.simulated("-p", CAST, "--frames", "80")
        roles = ("--role", "QORLUW119=dut", "--role", "QOREDW118=reference")
        last = {}
        for which in ("--derived", "--derived=all"):
            for frame in self.decoded("-p", CAST, which):
                last[frame["instrument"]] = frame
            wanted = {label: (units, value) for label, units, value in frame["derived"]}
            rows = self.rows("package", "-p", CAST, which)
            self.assertEqual({label: (row["units"], row["value"]) for label, row in rows.items()
                              if label in wanted and "VELOCITY" not in label},
                             {label: pair for label, pair in wanted.items() if "VELOCITY" not in label})
            self.assertEqual(set(rows), set(wanted))
        self.assertGreater(len(rows), 19)

        profiler = last["QORFAL071"]
        sensors = {(s["type"] + (f"({s['id']})" if s["id"] else "")): i
                   for i, s in enumerate(json.loads(run("check", "--json", CAST).stdout)["instruments"][0]["sensors"])}
        rows = self.rows("sensors", "-p", CAST, "--instrument", "QORFAL071")
        for label in ("PRES", "COND", "TEMP(WATER)"):
            self.assertEqual(rows[label]["value"], profiler["values"][sensors[label]])
        rows = self.rows("ancillary", "-p", CAST, "--instrument", "QORFAL071")
        x, y = (math.tan(math.radians(profiler["values"][sensors[name]])) for name in ("TILT(X)", "TILT(Y)"))
        self.assertAlmostEqual(rows["TILT"]["value"], math.degrees(math.atan(math.hypot(x, y))), 5)

        shown = self.page("reality-check", "-p", CAST, *roles)
        reference, dut, percent = (dict(curve["points"]) for curve in shown["curves"])
        self.assertEqual(shown["title"], "REF: ED [uW/cm^2/nm]")
        self.assertTrue(dut and set(percent) == set(dut))
        for nm, value in percent.items():
            near = [x for x in reference if abs(x - nm) < 1.5]
            self.assertEqual(value is None, not near)
            if near:
                self.assertAlmostEqual(value, 100 * (dut[nm] - reference[near[0]]) / reference[near[0]], 6)

    def test_a_page_is_of_the_moment_asked_for_or_says_of_which(self):
        self.simulated("-d", GPS, "--rate", "1", "--frames", "90", "--start", "2026-06-21T12:00:00")
        raw = self.raw.read_bytes().replace(b"UTC+00:00 (ZONE)", b"UTC+05:30 (ZONE)")
        self.raw.write_bytes(raw)
        at = ("time-series", "-d", GPS, "--instrument", "$GPRMC", "--select", "SPEED", "--at")
        noon = 1782023400  # half past six UTC
        cases = [("12:00:40", 40, b""), ("11:00:00", 0, b"begins later"), ("13:00:00", 90, b"ends before")]
        for time, seconds, warned in cases:
            for chunk in (), ("--chunk", "1"):
                done = run("page", *at, f"2026-06-21T{time}", *chunk, "--json", str(self.raw))
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertIn(warned, done.stderr)
                self.assertEqual(bool(warned), bool(done.stderr), done.stderr)
                latest = json.loads(done.stdout)["curves"][0]["points"][-1][0]
                self.assertAlmostEqual(latest, noon + seconds, delta=1.5)

    def test_calls_that_cannot_be_answered_are_refused_by_name(self):
        self.simulated("-d", RADIOMETER, "--frames", "3")
        calls = [(("gps",), "position"), (("weather",), "weather"), (("package",), "package"),
                 (("reality-check",), "DUT"), (("status", "--instrument", "NOBODY"), "NOBODY"),
                 (("monitor", "--select", "Backwards"), "Hexadecimal"), (("nothing",), "time-series"),
                 (("spectral", "--at", "noon"), "2026-06-21T12:00:00")]
        for call, word in calls:
            done = run("page", *call, "-d", RADIOMETER, str(self.raw))
            self.assertEqual((done.returncode, done.stdout), (2, b""), call)
            self.assertRegex(done.stderr.decode(), re.escape(word))


unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
