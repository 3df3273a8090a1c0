#!/usr/bin/env python3
"""Compares power spectra and smoothed histograms with scipy, on 1, 2, 3 and 16 threads and in parts; all of them must
give the same bytes.

usage: check_signals.py VELMORAK-RUN
"""

import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

import numpy
import pandas
import scipy.ndimage
import scipy.signal

STEP = 0.001
# A power of two, a product of small primes, a prime, and an odd number.
LENGTHS = (65536, 90000, 50021, 70001)
WINDOWS = {"none": "boxcar", "Hann": "hann"}
SMOOTHINGS = {"average": {"bins": "7"}, "gaussian": {"sigma": "2.3"}, "savitzky-golay": {"bins": "11", "degree": "4"}}


def plugin(name, kind, **inputs):
    """A wire is a pair of plug-in and output, anything else a value."""
    listed = [{"name": port, "from" if isinstance(given, list) else "value": given} for port, given in inputs.items()]
    return {"name": name, "kind": kind, "inputs": listed}


def write_rows(folder):
    generator = random.Random(9)
    for length in LENGTHS:
        with open(folder / ("rows%d.csv" % length), "w", encoding="utf-8") as out:
            out.write("t,x\n")
            for row in range(length):
                out.write("%.3f,%r\n" % (row * STEP, 1e3 + generator.gauss(0.0, 1.0) + (row % 50 == 0)))


def document(length):
    """Spectra of one table; those of the first also have histograms."""
    plugins = [plugin("Rows", "CsvTable", file="rows%d.csv" % length)]
    for window in WINDOWS:
        for mean in ("subtract", "keep"):
            name = "%s%d%s" % (window, length, mean)
            plugins += [plugin(name, "PowerSpectrum", table=["Rows", "table"], expression="x", time="t", window=window,
                               mean=mean),
                        plugin("Written" + name, "CsvWriter", object=[name, "table"], file=name + ".csv")]
    if length != LENGTHS[0]:
        return {"zedra": 1, "plugins": plugins}
    plugins += [plugin("Filled", "Histogram1D", table=["Rows", "table"], expression="x", bins="120", low="996", high="1006"),
                plugin("Bins", "CsvWriter", object=["Filled", "histogram"], file="filled.csv")]
    for method, values in SMOOTHINGS.items():
        plugins += [plugin(method, "Smooth", histogram=["Filled", "histogram"], method=method, **values),
                    plugin("Written" + method, "CsvWriter", object=[method, "histogram"], file=method + ".csv")]
    return {"zedra": 1, "plugins": plugins}


def call(runner, folder, *arguments, **settings):
    done = subprocess.run([runner, *arguments], cwd=folder, env=dict(os.environ, **settings), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    assert done.returncode == 0, done.stdout.decode()
    return done.stdout.decode()


def texts_in(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir() if file.suffix == ".csv"}


def run(runner, folder, name, length, **settings):
    call(runner, folder, "signals%d.zedra" % length, "--results", str(folder / name), **settings)
    return texts_in(folder / name)


def run_in_parts(runner, folder, length):
    planned = call(runner, folder, "--plan", "job", "--parts", "3", "--results", str(folder / "merged"),
                   "signals%d.zedra" % length)
    for part in range(1, 1 + int(re.search(r": (\d+) parts?", planned).group(1))):
        call(runner, folder, "--part", str(part), "job")
    call(runner, folder, "--merge", "job")
    return texts_in(folder / "merged")


def read(path):
    return pandas.read_csv(path, float_precision="round_trip")


def check_spectrum(folder, results, length, window, mean):
    found = read(results / ("%s%d%s.csv" % (window, length, mean)))
    values = read(folder / ("rows%d.csv" % length))["x"].to_numpy()
    frequencies, density = scipy.signal.periodogram(values, 1.0 / STEP, window=WINDOWS[window], scaling="density",
                                                    detrend="constant" if mean == "subtract" else False)
    numpy.testing.assert_allclose(found["frequency"], frequencies, rtol=1e-9)
    scale = density[1:].max()
    lowest = 1 if mean == "subtract" and window == "none" else 0
    tolerance = 1e-9 * density.max() if mean == "keep" else 1e-9 * scale
    numpy.testing.assert_allclose(found["power"][lowest:], density[lowest:], rtol=1e-8, atol=tolerance)
    if window == "none":
        squares = numpy.mean((values - (values.mean() if mean == "subtract" else 0.0)) ** 2)
        numpy.testing.assert_allclose(found["power"].sum() * frequencies[1], squares, rtol=1e-9)


def check_smoothing(results, method, values):
    before = read(results / "filled.csv").iloc[1:-1]
    after = read(results / (method + ".csv")).iloc[1:-1]

    def smooth(heights):
        if method == "savitzky-golay":
            return scipy.signal.savgol_filter(heights, int(values["bins"]), int(values["degree"]), mode="interp")
        if method == "gaussian":
            return scipy.ndimage.gaussian_filter1d(heights, float(values["sigma"]), mode="constant")
        return scipy.ndimage.uniform_filter1d(heights, int(values["bins"]), mode="constant")
    heights = before["height"].to_numpy(float)
    expected = smooth(heights)
    if method != "savitzky-golay":
        expected = expected / smooth(numpy.ones(len(heights)))
    numpy.testing.assert_allclose(after["height"], expected, rtol=1e-10, atol=1e-9)
    matrix = numpy.array([smooth(row) for row in numpy.eye(len(heights))]).T
    if method != "savitzky-golay":
        matrix = matrix / matrix.sum(axis=1, keepdims=True)
    numpy.testing.assert_allclose(after["error"], numpy.sqrt(matrix ** 2 @ heights), rtol=1e-9)


def main():
    runner = sys.argv[1]
    files = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_rows(folder)
        for length in LENGTHS:
            (folder / ("signals%d.zedra" % length)).write_text(json.dumps(document(length)), encoding="utf-8")
            one = run(runner, folder, "%d-1" % length, length, VELMORAK_THREADS="1")
            for window in WINDOWS:
                for mean in ("subtract", "keep"):
                    check_spectrum(folder, folder / ("%d-1" % length), length, window, mean)
            for threads in ("2", "3", "16"):
                assert run(runner, folder, "%d-%s" % (length, threads), length, VELMORAK_THREADS=threads) == one, threads
            files += len(one)
        first = texts_in(folder / ("%d-1" % LENGTHS[0]))
        for method, values in SMOOTHINGS.items():
            check_smoothing(folder / ("%d-1" % LENGTHS[0]), method, values)
        assert run_in_parts(runner, folder, LENGTHS[0]) == first, "in parts"
        print("%d files agree with scipy" % files)


main()
