#!/usr/bin/env python3
"""Checks that what RootWriter writes of histograms, profiles and points is what the kinds for ROOT files read.

usage: check_root_objects.py VELMORAK-RUN
"""

import csv
import math
import random
import sys

from pipelines import Place, plugin

ROWS = 5000
# Name of the object, kind that fills it, its inputs, kind that reads it, its output.
OBJECTS = [
    ("H1", "Histogram1D", {"expression": "x", "bins": "20", "low": "-2", "high": "2"}, "RootHistogram", "histogram"),
    ("W1", "Histogram1D", {"expression": "x", "weight": "w", "edges": "-3 -1 0 0.5 4"}, "RootHistogram", "histogram"),
    ("H2", "Histogram2D", {"x": "x", "y": "y", "weight": "w", "xbins": "7", "xlow": "-2", "xhigh": "2", "ybins": "5",
                           "ylow": "0", "yhigh": "1"}, "RootHistogram", "histogram"),
    ("H3", "Histogram3D", {"x": "x", "y": "y", "z": "w", "xbins": "4", "xlow": "-2", "xhigh": "2", "ybins": "3", "ylow": "0",
                           "yhigh": "1", "zbins": "3", "zlow": "0", "zhigh": "2"}, "RootHistogram", "histogram"),
    ("P1", "Profile1D", {"x": "x", "y": "y", "weight": "w", "bins": "9", "low": "-2", "high": "2"}, "RootProfile", "profile"),
    ("P2", "Profile2D", {"x": "x", "y": "y", "z": "w", "xbins": "4", "xlow": "-2", "xhigh": "2", "ybins": "3", "ylow": "0",
                         "yhigh": "1"}, "RootProfile", "profile"),
]
# A file of that format has no number of fills for each bin, and sums of the filled quantity for all bins together only.
NOT_IN_THE_FILE = {"entries", "sumwx", "sumwxx"}


def columns_of(place, name):
    with open(place.folder / "test.results" / (name + ".csv"), newline="", encoding="utf-8") as stream:
        rows = list(csv.reader(stream))
    return {column: [row[i] for row in rows[1:]] for i, column in enumerate(rows[0]) if column not in NOT_IN_THE_FILE}


def texts(outputs):
    """A text file of each object."""
    return [plugin("Text of " + name, "CsvWriter", object=[name, output], file=name + ".csv") for name, output in outputs]


def writer(kind, file, **inputs):
    wires = {"object" + (str(i + 1) if i else ""): [name, output] for i, (name, *_, output) in enumerate(OBJECTS)}
    return plugin("File", kind, file=file, objects=str(len(OBJECTS)), **wires, **inputs)


def run(place, plugins):
    done = place.run(place.document(*plugins))
    assert done.returncode == 0, done.stderr


def write(place):
    generator = random.Random(17)
    lines = ["x,y,w"] + ["%r,%r,%r" % (generator.gauss(0, 1), generator.random(), generator.uniform(-0.2, 2))
                         for _ in range(ROWS)]
    (place.folder / "rows.csv").write_text("\n".join(lines) + "\n")
    plugins = [plugin("Rows", "CsvTable", file="rows.csv")]
    for name, kind, inputs, _, _ in OBJECTS:
        plugins.append(plugin(name, kind, table=["Rows", "table"], title="title of " + name, **inputs))
    plugins.append(writer("RootWriter", "all.root", folder="/run1"))
    run(place, plugins + texts([(name, output) for name, _, _, _, output in OBJECTS]))
    written = {name: columns_of(place, name) for name, *_ in OBJECTS}
    (place.folder / "test.results" / "all.root").rename(place.folder / "all.root")
    return written


def is_same(kind, one, other):
    """A file holds the sum of a profile's quantity, from which its mean follows but for the rounding."""
    if one == other or kind != "RootProfile":
        return one == other
    return math.isclose(float(one), float(other), rel_tol=1e-13, abs_tol=1e-15)


def check_read(place, written):
    for name, _, _, kind, output in OBJECTS:
        run(place, [plugin(name, kind, file="all.root", object="run1/" + name)] + texts([(name, output)]))
        found = columns_of(place, name)
        assert list(found) == list(written[name]), (name, list(found))
        for column, values in written[name].items():
            for i, (one, other) in enumerate(zip(found[column], values, strict=True)):
                assert is_same(kind, one, other), (name, column, i, one, other)


def check_written_again(place):
    """The file of what was read has the same objects."""
    first = (place.folder / "all.root").read_bytes()
    plugins = [plugin(name, kind, file="all.root", object=name) for name, _, _, kind, _ in OBJECTS]
    run(place, plugins + [writer("RootWriter", "again.root", folder="/run1")])
    (place.folder / "test.results" / "again.root").rename(place.folder / "all.root")
    assert len((place.folder / "all.root").read_bytes()) > len(first) // 2


def main(runner):
    with Place(runner) as place:
        written = write(place)
        check_read(place, written)
        check_written_again(place)
        check_read(place, written)


if __name__ == "__main__":
    main(*sys.argv[1:])
