#!/usr/bin/env python3
"""Groups and joins random tables and compares every number with pandas and exact sums, on 1, 2, 3 and 16 threads, with
little memory, and in parts; all of them must give the same bytes.

usage: check_groups.py VELMORAK-RUN
"""

import csv
import fractions
import io
import json
import math
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

import numpy
import pandas

ROWS = 100000


def plugin(name, kind, **inputs):
    """A wire is a pair of plug-in and output, anything else a value."""
    listed = [{"name": port.rstrip("_"), "from" if isinstance(given, list) else "value": given}
              for port, given in inputs.items()]
    return {"name": name, "kind": kind, "inputs": listed}


def write_tables(folder):
    generator = random.Random(4)
    with open(folder / "rows.csv", "w", encoding="utf-8") as out:
        out.write("run,side,x,w\n")
        for _ in range(ROWS):
            x = "NA" if generator.random() < 0.01 else repr(generator.gauss(1e5, 3.0))
            out.write("%d,%s,%s,%r\n" % (generator.randrange(1, 301), generator.choice("abc"), x, generator.random()))
    with open(folder / "runs.csv", "w", encoding="utf-8") as out:
        out.write("number,gain\n")
        for run in range(11, 401):
            out.write("%d,%r\n" % (run, generator.random()))
    with open(folder / "periods.csv", "w", encoding="utf-8") as out:
        out.write("side,first,last,offset\n")
        for side in "abc":
            for first in range(1, 291, 10):
                out.write("%s,%d,%d,%r\n" % (side, first, first + 7, generator.random()))


def document():
    return {
        "zedra": 1,
        "plugins": [
            plugin("Rows", "CsvTable", file="rows.csv"),
            plugin("Runs", "CsvTable", file="runs.csv"),
            plugin("Periods", "CsvTable", file="periods.csv"),
            plugin("Groups", "GroupBy", table=["Rows", "table"], keys="run; side",
                   aggregates="count; n: count(x); sum(x); mean(x); spread(x); min(x); max(x); median(x); first(w); last(w)"),
            plugin("Written", "CsvWriter", object=["Groups", "table"], file="groups.csv"),
            plugin("Gain", "Join", table=["Rows", "table"], with_=["Runs", "table"], keys="run = number", columns="gain"),
            plugin("Offset", "Join", table=["Gain", "table"], with_=["Periods", "table"], keys="side", value="run",
                   from_="first", to="last", columns="offset"),
            plugin("All", "CsvWriter", object=["Offset", "table"], file="joined.csv"),
            plugin("Spectrum", "Histogram1D", table=["Offset", "table"], expression="gain * offset", bins="10", low="0",
                   high="1"),
            plugin("Bins", "CsvWriter", object=["Spectrum", "histogram"], file="bins.csv"),
            plugin("Known", "Filter", table=["Offset", "table"], condition="gain * offset >= 0"),
            plugin("Calibrated", "GroupBy", table=["Known", "table"], keys="run", aggregates="c: mean(gain * offset); count"),
            plugin("Values", "GroupBy", table=["Rows", "table"], keys="x", aggregates="count; sum(w); median(w)"),
            plugin("Many", "CsvWriter", object=["Values", "table"], file="values.csv"),
            plugin("Spectra", "GroupedHistogram", table=["Rows", "table"], key="run", expression="x", weight="w",
                   bins="20", low="99990", high="100010"),
            plugin("Texts", "CsvWriter", object=["Spectra", "histograms"], file="spectra.csv"),
            plugin("Means", "CsvWriter", object=["Calibrated", "table"], file="means.csv"),
        ],
    }


def run(runner, folder, name, *options, **settings):
    environment = dict(os.environ, **settings)
    results = folder / name
    done = subprocess.run([runner, "pipeline.zedra", "--results", str(results), *options], cwd=folder, env=environment,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert done.returncode == 0, done.stdout.decode()
    return {file.name: file.read_bytes() for file in results.iterdir() if file.suffix == ".csv"}, done.stdout.decode()


def run_in_parts(runner, folder):
    """The table of constants is read as a whole by every part."""
    def call(*arguments):
        done = subprocess.run([runner, *arguments], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == 0, done.stdout.decode()
        return done.stdout.decode()
    planned = call("--plan", "job", "--parts", "3", "--results", str(folder / "merged"), "pipeline.zedra")
    for part in range(1, 1 + int(re.search(r": (\d+) parts?", planned).group(1))):
        call("--part", str(part), "job")
    call("--merge", "job")
    return {file.name: file.read_bytes() for file in (folder / "merged").iterdir() if file.suffix == ".csv"}


def near(found, expected, tolerance=1e-12):
    found = float(found) if found not in ("", "NaN") else math.nan
    both = math.isnan(found) and math.isnan(expected)
    assert both or abs(found - expected) <= tolerance * max(1.0, abs(expected)), (found, expected)


def table(path):
    """With the numbers nearest to their texts, which is not the default of pandas."""
    return pandas.read_csv(path, na_values="NA", float_precision="round_trip")


def table_of(text):
    return pandas.read_csv(io.BytesIO(text), float_precision="round_trip")


def check_groups(folder, text):
    rows = table(folder / "rows.csv")
    found = list(csv.DictReader(text.decode().splitlines()))
    groups = list(rows.groupby(["run", "side"], sort=True))
    assert len(found) == len(groups), (len(found), len(groups))
    for line, ((number, side), group) in zip(found, groups):
        values = group["x"].dropna()
        exact = [fractions.Fraction(value) for value in values]
        mean = sum(exact) / len(exact)
        spread = math.sqrt(sum((value - mean) ** 2 for value in exact) / len(exact))
        assert (int(line["run"]), line["side"]) == (number, side)
        assert int(line["count"]) == len(group) and int(line["n"]) == len(values)
        near(line["sum_x"], float(sum(exact)), 1e-15)
        near(line["mean_x"], float(mean), 1e-15)
        near(line["spread_x"], spread)
        near(line["mean_x_error"], spread / math.sqrt(len(exact)))
        near(line["median_x"], numpy.median(values), 0.0)
        near(line["min_x"], values.min(), 0.0)
        near(line["max_x"], values.max(), 0.0)
        near(line["first_w"], group["w"].iloc[0], 0.0)
        near(line["last_w"], group["w"].iloc[-1], 0.0)


def check_spectra(folder, text):
    rows = table(folder / "rows.csv").dropna()
    found = table_of(text)
    assert sorted(set(found["run"])) == sorted(set(rows["run"]))
    assert list(found["run"]) == sorted(found["run"])
    edges = numpy.linspace(99990.0, 100010.0, 21)
    for run, lines in found.groupby("run"):
        fills = rows[rows["run"] == run]
        heights, _ = numpy.histogram(fills["x"], edges, weights=fills["w"])
        squares, _ = numpy.histogram(fills["x"], edges, weights=fills["w"] ** 2)
        entries, _ = numpy.histogram(fills["x"], edges)
        inside = lines.iloc[1:-1]
        assert list(inside["entries"]) == list(entries)
        numpy.testing.assert_allclose(inside["height"], heights, rtol=1e-10, atol=1e-10)
        numpy.testing.assert_allclose(inside["error"], numpy.sqrt(squares), rtol=1e-10, atol=1e-10)
        assert lines["entries"].iloc[0] == (fills["x"] < edges[0]).sum()
        assert lines["entries"].iloc[-1] == (fills["x"] >= edges[-1]).sum()


def check_joined(folder, text):
    rows = table(folder / "rows.csv")
    expected = rows.merge(table(folder / "runs.csv"), how="left", left_on="run", right_on="number")
    periods = {(side, first + step): offset
               for side, first, last, offset in table(folder / "periods.csv").itertuples(index=False)
               for step in range(last - first + 1)}
    found = list(csv.DictReader(text.decode().splitlines()))
    assert len(found) == len(rows)
    for line, number, side, gain in zip(found, expected["run"], expected["side"], expected["gain"]):
        near(line["gain"], gain, 0.0)
        near(line["offset"], periods.get((side, number), math.nan), 0.0)
    return expected["gain"].isna().sum()


def check_failures(runner, folder):
    """What needs a table that cannot be read is not run; the rest of the pipeline is."""
    pipeline = {"zedra": 1, "plugins": [
        plugin("Rows", "CsvTable", file="runs.csv"),
        plugin("Missing", "CsvTable", file="missing.csv"),
        plugin("Joined", "Join", table=["Rows", "table"], with_=["Missing", "table"], keys="number"),
        plugin("Lost", "CsvWriter", object=["Joined", "table"], file="lost.csv"),
        plugin("Itself", "Join", table=["Rows", "table"], with_=["Rows", "table"], keys="number", prefix="same_"),
        plugin("Kept", "CsvWriter", object=["Itself", "table"], file="kept.csv"),
    ]}
    (folder / "failing.zedra").write_text(json.dumps(pipeline), encoding="utf-8")
    done = subprocess.run([runner, "failing.zedra", "--results", "failing"], cwd=folder, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    text = done.stdout.decode()
    assert done.returncode != 0 and 'not run because of "Missing"' in text, text
    kept = list(csv.DictReader((folder / "failing" / "kept.csv").read_text(encoding="utf-8").splitlines()))
    assert len(kept) == 390 and all(line["gain"] == line["same_gain"] for line in kept)
    assert not (folder / "failing" / "lost.csv").exists()


def main():
    runner = sys.argv[1]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_tables(folder)
        (folder / "pipeline.zedra").write_text(json.dumps(document()), encoding="utf-8")
        one, messages = run(runner, folder, "one", VELMORAK_THREADS="1")
        check_groups(folder, one["groups.csv"])
        check_spectra(folder, one["spectra.csv"])
        unmatched = check_joined(folder, one["joined.csv"])
        assert "%d of %d rows have no row of the second table" % (unmatched, ROWS) in messages, messages
        for threads in ("2", "3", "16"):
            assert run(runner, folder, "threads" + threads, VELMORAK_THREADS=threads)[0] == one, threads
        assert run(runner, folder, "small", VELMORAK_MEMORY_LIMIT="16MB")[0] == one, "with little memory"
        assert run_in_parts(runner, folder) == one, "in parts"
        check_failures(runner, folder)
        print("%d rows in %d bytes are right" % (ROWS, sum(len(text) for text in one.values())))


main()
