#!/usr/bin/env python3
"""Checks that a run over many files reads only those that are new or have changed, with the bits of a full run.

usage: check_file_reuse.py VELMORAK-RUN
"""

import os
import random
import shutil
import sys

from pipelines import Place, plugin


def write(place, number, seed):
    """A file that is not young any more."""
    generator = random.Random(seed)
    lines = ["x,y,text"] + ["%r,%r,%s" % (generator.gauss(0, 1), generator.random(), "w" * 60) for _ in range(4000)]
    path = place.folder / ("run_%03d.csv" % number)
    path.write_text("\n".join(lines) + "\n")
    os.utime(path, (1e9 + number + seed, 1e9 + number + seed))


def full_run(place, document):
    """Without anything that is kept."""
    keep = place.environment.get("VELMORAK_CACHE_LIMIT")
    place.environment["VELMORAK_CACHE_LIMIT"] = "0"
    done = place.run("--results", "full", document)
    assert done.returncode == 0, done.stderr
    place.environment.pop("VELMORAK_CACHE_LIMIT")
    if keep:
        place.environment["VELMORAK_CACHE_LIMIT"] = keep
    return results(place, "full")


def results(place, folder):
    plugins = place.record(folder)["plugins"]
    numbers = {each["name"]: (each["outputs"], each["rowsIn"], each["rowsOut"]) for each in plugins}
    return numbers, (place.folder / folder / "upper.aida").read_bytes()


def run(place, document):
    done = place.run("--why", "--results", "kept", document)
    assert done.returncode == 0, done.stderr
    lines = [line for line in done.stderr.splitlines() if " reused, " in line and " read" in line]
    return lines, results(place, "kept")


def check(place, document, expected):
    lines, kept = run(place, document)
    assert lines == expected, (lines, expected)
    assert kept == full_run(place, document)


def main(runner):
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_FILES_FROM"] = "0"
        for number in range(6):
            write(place, number, number)
        rows = ["Rows", "table"]
        document = place.document(
            plugin("Rows", "CsvTable", file="run_*.csv"),
            plugin("Some", "Filter", table=rows, condition="y > 0.25"),
            plugin("Mean", "Statistics", data=["Some", "table"], expression="x"),
            plugin("Plane", "Histogram2D", table=rows, x="x", y="y", xbins="300", xlow="-3", xhigh="3", ybins="200",
                   ylow="0", yhigh="1"),
            plugin("Upper", "Histogram1D", table=["Some", "table"], expression="x", weight="y", bins="50", low="-2",
                   high="5"),
            plugin("Writer", "AidaWriter", object=["Upper", "histogram"], file="upper.aida"))
        check(place, document, [])
        write(place, 3, 100)
        check(place, document, ['CsvTable "Rows": 5 files reused, 1 read'])
        write(place, 10, 10)
        check(place, document, ['CsvTable "Rows": 6 files reused, 1 read'])
        write(place, 5, 55)
        os.rename(place.folder / "run_000.csv", place.folder / "gone")
        check(place, document, ['CsvTable "Rows": 5 files reused, 1 read'])
        shutil.copy(place.folder / "gone", place.folder / "run_000.csv")
        os.utime(place.folder / "run_000.csv", (1.1e9, 1.1e9))
        lines, kept = run(place, document)
        assert len(lines) == 1, lines
        assert kept == full_run(place, document)


if __name__ == "__main__":
    main(*sys.argv[1:])
