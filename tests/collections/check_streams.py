#!/usr/bin/env python3
"""Runs a table of several chunks through the kinds: rows keep their order into a file, what is accumulated is right, a
cut comes by wire from statistics of the same table, and nothing depends on the number of threads.

usage: check_streams.py VELMORAK-RUN
"""

import json
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

ROWS = 100000


def value(row):
    return (row * 7919 % 10007) / 8.0


def write_table(path):
    with open(path, "w", encoding="utf-8") as out:
        out.write('<aida version="3.2.1"><tuple name="t" path="/"><columns><column name="x" type="double"/>')
        out.write('<column name="n" type="int"/></columns><rows>\n')
        for row in range(ROWS):
            out.write('<row><entry value="%r"/><entry value="%d"/></row>\n' % (value(row), row))
        out.write("</rows></tuple></aida>\n")


def plugin(name, kind, **inputs):
    """A wire is a pair of plug-in and output, anything else a value."""
    listed = []
    for port, given in inputs.items():
        listed.append({"name": port, "from" if isinstance(given, list) else "value": given})
    return {"name": name, "kind": kind, "inputs": listed}


def document():
    return {
        "zedra": 1,
        "plugins": [
            plugin("Rows", "AidaTable", file="rows.aida"),
            plugin("Twice", "Formula", table=["Rows", "table"], column="y", expression="2 * x"),
            plugin("Mean", "Statistics", data=["Twice", "table"], expression="x"),
            plugin("Above", "Filter", table=["Twice", "table"], mean=["Mean", "mean"],
                   condition="x > mean"),
            plugin("All", "Histogram1D", table=["Twice", "table"], expression="y", bins="100", low="0", high="2600"),
            plugin("Upper", "Histogram1D", table=["Above", "table"], expression="y", bins="100", low="0", high="2600"),
            plugin("Writer", "AidaWriter", objects="3", file="all.aida", object=["All", "histogram"],
                   object2=["Twice", "table"], object3=["Upper", "histogram"]),
            plugin("Picture", "Plot", objects="2", object=["All", "histogram"], object2=["Upper", "histogram"]),
        ],
    }


def run(runner, folder, threads):
    environment = dict(os.environ, VELMORAK_THREADS=threads)
    done = subprocess.run([runner, "pipeline.zedra"], cwd=folder, env=environment, stderr=subprocess.PIPE)
    assert done.returncode == 0, done.stderr.decode()
    results = pathlib.Path(folder) / "pipeline.results"
    return {file.name: file.read_bytes() for file in results.iterdir() if file.name != "run.json"}


def entries_of(root, name):
    for histogram in root.findall("histogram1d"):
        if histogram.get("name") == name:
            return sum(int(entry.get("entries")) for entry in histogram.find("data1d"))
    raise SystemExit("no histogram " + name)


def check(content):
    root = xml.fromstring(content)
    assert [child.tag for child in root] == ["implementation", "histogram1d", "tuple", "histogram1d"], "other order"
    rows = root.find("tuple").find("rows")
    assert len(rows) == ROWS
    for number, row in enumerate(rows):
        x, n, y = (entry.get("value") for entry in row)
        assert (float(x), int(n), float(y)) == (value(number), number, 2.0 * value(number)), "row %d" % number
    mean = math.fsum(value(row) for row in range(ROWS)) / ROWS
    assert entries_of(root, "All") == ROWS
    assert entries_of(root, "Upper") == sum(value(row) > mean for row in range(ROWS))


def main():
    runner = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        write_table(pathlib.Path(folder) / "rows.aida")
        (pathlib.Path(folder) / "pipeline.zedra").write_text(json.dumps(document()), encoding="utf-8")
        first = run(runner, folder, "1")
        check(first["all.aida"])
        for threads in ("2", "3", "16"):
            assert run(runner, folder, threads) == first, "the results depend on the threads"
        print("%d rows, %d files, identical for any number of threads" % (ROWS, len(first)))


if __name__ == "__main__":
    main()
