#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""An archive of raw logs into one netCDF file, by Dask: each log is verified, decoded and averaged over bins of time
on whatever worker is free; what comes back is small.

    fleet.py -d profiler.cal -i QORPRO042 --bin 1s -o archive.nc LOGS...
    fleet.py --scheduler tcp://head:8786 ...      # the workers of a cluster, which see the same folders

Without --scheduler there are --workers processes of this machine. A log that cannot be read is said and left out;
one that is not whole is kept and marked in the variable whole. The exit status is then 1.
"""
import argparse
import os
import sys

import numpy
import xarray
from distributed import Client, LocalCluster, as_completed

import qorview


def mean_of(values, starts):
    """The means of stretches of rows, over what has a value; NaN where nothing has."""
    valid = ~numpy.isnan(values)
    counts = numpy.add.reduceat(valid, starts, axis=0, dtype=numpy.int64)
    sums = numpy.add.reduceat(numpy.where(valid, values, 0.0), starts, axis=0)
    return numpy.divide(sums, counts, out=numpy.full(sums.shape, numpy.nan), where=counts > 0)


def bin_log(path, definitions, instrument, width):
    """The means of a log over bins of time, with how many frames each has and whether the log is whole."""
    log = qorview.open(path, definitions)
    whole = log.verify()["ok"]
    data = log.to_xarray(instrument)
    data = data.isel(time=data["time"].notnull().values).sortby("time")
    bins, starts, frames = numpy.unique(data["time"].dt.floor(width).values, return_index=True, return_counts=True)
    means = {name: (("row", *column.dims[1:]), mean_of(column.values, starts) if len(starts) else column.values,
                    column.attrs)
             for name, column in data.data_vars.items() if column.dtype == numpy.float64}
    attributes = {name: text for name, text in data.attrs.items() if name not in ("history", "date_created")}
    grids = {name: data[name] for name in data.coords if name != "time"}
    return xarray.Dataset({**means, "frames": ("row", frames)},
                          {**grids, "time": ("row", bins), "log": ("row", [os.path.basename(path)] * len(bins))},
                          attributes), whole


def store(parts, path):
    """One file of all logs, in the order in which they were named."""
    data = xarray.concat([means.assign(whole=("row", numpy.full(means.sizes["row"], whole, dtype="int8")))
                          for means, whole in parts], "row", combine_attrs="drop_conflicts")
    data["time"].encoding["units"] = "milliseconds since 1970-01-01"
    data.to_netcdf(path)


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("logs", nargs="+", metavar="LOG")
    parser.add_argument("-d", "--definition", action="append", required=True, metavar="FILE")
    parser.add_argument("-i", "--instrument", required=True, metavar="NAME")
    parser.add_argument("-o", "--output", required=True, metavar="FILE.nc")
    parser.add_argument("--bin", default="1s", metavar="WIDTH", help="as pandas writes it: 1s, 500ms, 1min (1s)")
    parser.add_argument("--workers", type=int, default=2, metavar="N")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a cluster that runs")
    return parser.parse_args(arguments)


def main(arguments=None):
    options = parse(arguments)
    cluster = options.scheduler or LocalCluster(n_workers=options.workers, threads_per_worker=1,
                                                dashboard_address=None)
    parts = {}
    with Client(cluster) as client:
        jobs = {client.submit(bin_log, os.path.abspath(path), [os.path.abspath(one) for one in options.definition],
                              options.instrument, options.bin, pure=False): path for path in options.logs}
        for job in as_completed(jobs):
            try:
                parts[jobs[job]] = job.result()
            except qorview.Error as error:
                print(f"fleet: {error}", file=sys.stderr)
            job.release()
    if not options.scheduler:
        cluster.close()
    if not parts:
        print("fleet: no log could be read; nothing is written", file=sys.stderr)
        return 1
    store([parts[path] for path in options.logs if path in parts], options.output)
    whole = sum(one for _, one in parts.values())
    print(f"{len(options.logs)} logs: {whole} whole, {len(parts) - whole} with faults, "
          f"{len(options.logs) - len(parts)} not read")
    return 0 if whole == len(options.logs) else 1


if __name__ == "__main__":
    sys.exit(main())
