#!/usr/bin/env python3
"""Checks that reading a tree of 1.4 GB takes less than 300 MB of memory, on two threads and on eight. Needs 1.5 GB on the disk
of the temporary folder, and some minutes.

usage: check_root_memory.py VELMORAK-RUN [MILLIONS-OF-ROWS]
"""

import os
import subprocess
import sys

from pipelines import Place, plugin

MOST_KILOBYTES = 300_000


def peak_of(place, threads, *plugins):
    """@return kilobytes that the run had in memory at most."""
    environment = dict(place.environment, VELMORAK_CACHE_LIMIT="0")
    process = subprocess.Popen([place.runner, "-j", str(threads), place.document(*plugins)], cwd=place.folder,
                               env=environment, stderr=subprocess.PIPE, text=True)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    assert status == 0, errors
    return usage.ru_maxrss


def make(place, millions):
    """Reals that do not get shorter, and lists of which the lengths are in a branch of their own."""
    rows = plugin("Rows", "RandomTable", rows=str(millions * 1000000), columns="x: gauss(0, 1)\ny: uniform(0, 1)", seed="3")
    formula = plugin("Sum", "Formula", table=["Rows", "table"], column="z", expression="x + y")
    writer = plugin("Tree", "RootWriter", object=["Sum", "table"], file="tree.root", compression="lz4")
    peak = peak_of(place, 2, rows, formula, writer)
    (place.folder / "test.results" / "tree.root").rename(place.folder / "tree.root")
    return peak


def main(runner, millions="60"):
    with Place(runner) as place:
        print("writing: %d kB" % make(place, int(millions)))
        size = (place.folder / "tree.root").stat().st_size
        print("the tree has %.2f GB" % (size / 1e9))
        for threads in (2, 8):
            peak = peak_of(place, threads, plugin("Tree", "RootTable", file="tree.root"),
                           plugin("X", "Histogram1D", table=["Tree", "table"], expression="x", weight="y * z", bins="100",
                                  low="-5", high="5"))
            print("reading on %d threads: %d kB" % (threads, peak))
            assert peak < MOST_KILOBYTES, peak


if __name__ == "__main__":
    main(*sys.argv[1:])
