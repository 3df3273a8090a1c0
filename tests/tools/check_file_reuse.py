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


def check_names(place):
    """A file is known again under another name, in another folder, and as a copy with another time; not where its name is
    in a column, or the properties of the name are others."""
    folder = place.folder / "moves"
    folder.mkdir()
    for number in range(3):
        write(place, number, 200 + number)
        (place.folder / ("run_%03d.csv" % number)).rename(folder / ("a_%d.csv" % number))

    def document(**inputs):
        return place.document(
            plugin("Rows", "CsvTable", **inputs),
            plugin("Mean", "Statistics", data=["Rows", "table"], expression="x"),
            plugin("Upper", "Histogram1D", table=["Rows", "table"], expression="x", bins="50", low="-2", high="5"),
            plugin("Writer", "AidaWriter", object=["Upper", "histogram"], file="upper.aida"))
    check(place, document(file="moves/a_*.csv"), [])
    (folder / "a_1.csv").rename(folder / "b_1.csv")
    check(place, document(file="moves/*.csv"), ['CsvTable "Rows": 3 files reused, 0 read'])
    folder.rename(place.folder / "elsewhere")
    check(place, document(file="elsewhere"), ['CsvTable "Rows": 3 files reused, 0 read'])
    folder = place.folder / "elsewhere"
    shutil.copy(folder / "a_0.csv", folder / "copy.csv")
    (folder / "a_0.csv").unlink()
    check(place, document(file="elsewhere"), ['CsvTable "Rows": 3 files reused, 0 read'])
    (place.folder / "list.txt").write_text("elsewhere/a_2.csv\nelsewhere/b_1.csv\n")
    check(place, document(file="@list.txt"), ['CsvTable "Rows": 2 files reused, 0 read'])
    (place.folder / "list.txt").write_text("elsewhere/b_1.csv\nelsewhere/copy.csv\nelsewhere/a_2.csv\n")
    check(place, document(file="@list.txt"), ['CsvTable "Rows": 3 files reused, 0 read'])
    check(place, document(file="@list.txt", file_columns="yes"), [])
    (folder / "copy.csv").rename(folder / "c.csv")
    (place.folder / "list.txt").write_text("elsewhere/b_1.csv\nelsewhere/c.csv\nelsewhere/a_2.csv\n")
    check(place, document(file="@list.txt", file_columns="yes"), ['CsvTable "Rows": 2 files reused, 1 read'])
    samples = place.folder / "samples.csv"
    samples.write_text("file,weight\nelsewhere/b_1.csv,1.5\nelsewhere/c.csv,2\nelsewhere/a_2.csv,1\n")
    check(place, document(file="@samples.csv"), [])
    samples.write_text("file,weight\nelsewhere/b_1.csv,1.5\nelsewhere/c.csv,3\nelsewhere/a_2.csv,1\n")
    check(place, document(file="@samples.csv"), ['CsvTable "Rows": 2 files reused, 1 read'])
    (folder / "b_1.csv").rename(folder / "d.csv")
    samples.write_text("file,weight\nelsewhere/c.csv,3\nelsewhere/d.csv,1.5\nelsewhere/a_2.csv,1\n")
    check(place, document(file="@samples.csv"), ['CsvTable "Rows": 3 files reused, 0 read'])


def check_a_thousand(place):
    """One file is added to 999, in the midst of their order and at its end."""
    folder = place.folder / "thousand"
    folder.mkdir()

    def add(number):
        path = folder / ("%04d.csv" % number)
        path.write_text("x,y\n" + "".join("%r,%r\n" % (0.1 * (number % 37) + row / 3, 1 / (1 + row + number))
                                          for row in range(5)))
        os.utime(path, (1e9 + number, 1e9 + number))
    for number in range(999):
        add(number)
    rows = ["Rows", "table"]
    document = place.document(
        plugin("Rows", "CsvTable", file="thousand"),
        plugin("Mean", "Statistics", data=rows, expression="x", weight="y"),
        plugin("Upper", "Histogram1D", table=rows, expression="x", weight="y", bins="50", low="0", high="5"),
        plugin("Writer", "AidaWriter", object=["Upper", "histogram"], file="upper.aida"))
    check(place, document, [])
    add(5000)
    check(place, document, ['CsvTable "Rows": 999 files reused, 1 read'])
    (folder / "5000.csv").rename(folder / "0500a.csv")
    add(5001)
    check(place, document, ['CsvTable "Rows": 1000 files reused, 1 read'])


def main(runner):
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_FILES_FROM"] = "0"
        check_a_thousand(place)
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
        check_names(place)


if __name__ == "__main__":
    main(*sys.argv[1:])
