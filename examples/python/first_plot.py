#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A cast in one picture: what the profiler measured over depth, and the light that the radiometer saw.

    first_plot.py [PICTURE]
"""
# %% The log, with the definitions of its instruments
import pathlib
import sys

import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

import qorview  # noqa: E402

examples = pathlib.Path(__file__).resolve().parent.parent
log = qorview.open(examples / "cast.raw", definitions=[examples / "cast.sip"])
print(log.instruments)

# %% One dataset an instrument, with units and standard names
sets = {name: log.to_xarray(name, derived=True) for name in log.instruments}
for name, data in sets.items():
    print(name, dict(data.sizes))

# %% Temperature and salinity over depth, and how the light goes at four wavelengths
profiler, light = sets["QORFAL071"], sets["QOREDW118"]
figure, (water, sun) = plt.subplots(1, 2, sharey=True, figsize=(8, 5), layout="constrained")


def draw(axes, data, name, label, **style):
    axes.plot(data[name], data["DEPTH"], label=label, **style)


draw(water, profiler, "T_W", "temperature", color="tab:red")
water.set(xlabel=f"temperature ({profiler['T_W'].attrs['original_units']})", ylabel="depth (dbar)")
salt = water.twiny()
draw(salt, profiler, "SALINITY", "salinity", color="tab:blue")
salt.set(xlabel="salinity (PSU)")
water.legend(handles=[*water.lines, *salt.lines], loc="lower left")

for wavelength in (412, 490, 555, 670):
    channel = light["ED"].sel(wavelength=wavelength, method="nearest")
    sun.plot(channel, light["DEPTH"], label=f"{float(channel['wavelength']):.0f} nm")
sun.set(xscale="log", xlabel=f"downwelling irradiance ({light['ED'].attrs['original_units']})", xlim=(1e-4, None))
sun.legend(loc="lower right")
water.invert_yaxis()

# %% The picture
figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "first_plot.png", dpi=80)
