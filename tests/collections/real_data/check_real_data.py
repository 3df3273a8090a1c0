#!/usr/bin/env python3
"""Fills histograms of real files twice, with velmorak-run and with independent code, and compares every bin.

usage: check_real_data.py VELMORAK-RUN REPOSITORY

The files lie beside the repository where they are at hand; where they are not, the check passes and says so.
"""

import bisect
import gzip
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml


def root_of(path):
    """The whole file as a tree. Expat never fetches the DTD that the file names."""
    with gzip.open(path) as stream:
        return xml.fromstring(stream.read())


def tuple_columns(path):
    table = root_of(path).find("tuple")
    names = [column.get("name") for column in table.find("columns")]
    rows = [[float(entry.get("value")) for entry in row] for row in table.find("rows")]
    return {name: [row[i] for row in rows] for i, name in enumerate(names)}


def cloud_columns(path, name):
    for cloud in root_of(path).findall("cloud1d"):
        if cloud.get("name") == name:
            entries = cloud.find("entries1d")
            return {
                "x": [float(entry.get("valueX")) for entry in entries],
                "weight": [float(entry.get("weight", "1")) for entry in entries],
            }
    raise SystemExit("no cloud " + name)


def equal_edges(bins, low, high):
    return [low + i * (high - low) / bins for i in range(bins)] + [high]


def filled(values, weights, edges):
    """Cells from underflow to overflow, each as entries, sums of w, w^2, wx and wx^2."""
    cells = [[0, 0.0, 0.0, 0.0, 0.0] for _ in range(len(edges) + 1)]
    for x, w in zip(values, weights):
        cell = cells[bisect.bisect_right(edges, x)]
        cell[0] += 1
        for i, term in enumerate((w, w * w, w * x, w * x * x)):
            cell[1 + i] += term
    return cells


def edges_in(histogram):
    axis = histogram.find("axis")
    low, high = float(axis.get("min")), float(axis.get("max"))
    inner = [float(border.get("value")) for border in axis.findall("binBorder")]
    return [low] + inner + [high] if inner else equal_edges(int(axis.get("numberOfBins")), low, high)


def cells_in(histogram, count):
    cells = [None] * count
    for entry in histogram.find("data1d"):
        number = entry.get("binNum")
        place = {"UNDERFLOW": 0, "OVERFLOW": count - 1}.get(number)
        cells[int(number) + 1 if place is None else place] = entry
    return cells


def close(a, b):
    return math.isclose(a, b, rel_tol=1e-12, abs_tol=1e-12)


def compare_cell(where, expected, found):
    entries, w, ww, wx, wxx = expected
    if found is None:
        assert entries == 0, "%s is missing" % where
        return
    assert int(found.get("entries")) == entries, "%s: %s entries, not %d" % (where, found.get("entries"), entries)
    assert close(float(found.get("height")), w), "%s: height %s, not %r" % (where, found.get("height"), w)
    assert close(float(found.get("error")), math.sqrt(ww)), "%s: error %s" % (where, found.get("error"))
    mean = found.get("weightedMean")
    if mean is not None and w != 0.0:
        assert math.isclose(float(mean), wx / w, rel_tol=1e-9), "%s: mean %s, not %r" % (where, mean, wx / w)
        spread = found.get("weightedRms")
        square = wxx / w - (wx / w) ** 2
        if spread is not None and square > 1e-6:
            assert math.isclose(float(spread), math.sqrt(square), rel_tol=1e-6), "%s: rms %s" % (where, spread)


def compare(result, name, values, weights, edges):
    for histogram in xml.parse(result).getroot().findall("histogram1d"):
        if histogram.get("name") != name:
            continue
        assert edges_in(histogram) == edges, "%s: other edges" % name
        expected = filled(values, weights, edges)
        assert sum(cell[0] for cell in expected) == len(values)
        for i, found in enumerate(cells_in(histogram, len(expected))):
            compare_cell("%s, cell %d" % (name, i), expected[i], found)
        print("%s: %d fills in %d cells are identical" % (name, len(values), len(expected)))
        return
    raise SystemExit("no histogram " + name)


def results_of(runner, document, data, folder):
    shutil.copy(document, folder)
    copy = pathlib.Path(folder) / document.name
    subprocess.run([runner, str(copy), "-a", str(data)], check=True, cwd=folder)
    return copy.with_suffix(".results") / "histograms.aida"


def check(runner, data, documents):
    columns = tuple_columns(data / "tuple.xml.gz")
    cloud = cloud_columns(data / "clouds.xml.gz", "21")
    with tempfile.TemporaryDirectory() as folder:
        result = results_of(runner, documents / "tuple.zedra", data / "tuple.xml.gz", folder)
        ones = [1.0] * len(columns["gauss"])
        compare(result, "Gauss", columns["gauss"], ones, equal_edges(37, -20.0, 21.5))
        compare(result, "Flat", columns["flat"], columns["sin"], [0.0, 1.0, 2.5, 7.0, 10.0, 20.0, 33.25, 45.0])
        result = results_of(runner, documents / "clouds.zedra", data / "clouds.xml.gz", folder)
        compare(result, "Cloud", cloud["x"], cloud["weight"], equal_edges(25, 0.0, 50.0))


def main():
    runner, repository = str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(sys.argv[2])
    data = repository.resolve().parent / "shared" / "data" / "aida" / "others"
    if not (data / "tuple.xml.gz").exists() or not (data / "clouds.xml.gz").exists():
        print("No real data in %s: nothing was compared." % data)
        return
    check(runner, data, pathlib.Path(__file__).resolve().parent)


if __name__ == "__main__":
    main()
