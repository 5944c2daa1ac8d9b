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


def bin_log(path, definitions, instrument, width):
    """The means of a log over bins of time, with how many frames each has and whether the log is whole."""
    log = qorview.open(path, definitions)
    verdict = log.verify()
    data = log.to_xarray(instrument)
    numbers = [name for name, values in data.data_vars.items() if values.dtype == numpy.float64]
    data = data[numbers].assign(frames=xarray.ones_like(data["frame"], dtype=numpy.int64))
    data = data.sel(time=data["time"].notnull())
    bins = data["time"].dt.floor(width)
    means = data[numbers].groupby(bins.rename("bin")).mean("time", keep_attrs=True)
    means["frames"] = data["frames"].groupby(bins.rename("bin")).sum("time")
    for name in ("history", "date_created"):  # of the decoding, which is nobody's here
        means.attrs.pop(name, None)
    means = means.rename(bin="time").expand_dims(log=[os.path.basename(path)]).stack(row=("log", "time"))
    return means.reset_index("row"), verdict["ok"]


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
