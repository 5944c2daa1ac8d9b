# SPDX-License-Identifier: GPL-3.0-or-later
"""Raw logs of oceanographic instruments as numpy arrays and xarray datasets.

    import qorview
    log = qorview.open("cast.raw", definitions=["profiler.cal"])
    log.instruments
    data = log.to_xarray("PROFILER")

With xarray and Dask by blocks of frames, which are read when they are needed:

    import xarray
    data = xarray.open_dataset("cast.raw", engine="qorview", definitions=["profiler.cal"],
                               instrument="PROFILER", chunks={})
"""
from ._definition import Definition, Sensor
from ._log import Log, open
from ._qorview import Error, FileError, __version__

__all__ = ["Definition", "Error", "FileError", "Log", "Sensor", "__version__", "open"]
