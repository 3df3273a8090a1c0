#!/usr/bin/env python3
"""Runs a pipeline with a report, of which one branch fails: the page is written all the same, is well-formed, refers to
nothing outside, names the failure, and has the same bytes for any number of threads and when it is written again. Its PDF has the
pictures of all Plots of the run.

usage: check_report.py VELMORAK-RUN
"""

import hashlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml


def plugin(name, kind, position, **inputs):
    """A wire is a list of plug-in and output, anything else a value."""
    listed = [{"name": port, "from" if isinstance(given, list) else "value": given} for port, given in inputs.items()]
    return {"name": name, "kind": kind, "position": position, "inputs": listed}


def document():
    return {
        "zedra": 1,
        "plugins": [
            plugin("Rows", "CsvTable", [0, 100], file="rows.csv"),
            plugin("Lost & gone", "CsvTable", [0, 0], file="lost.csv"),
            plugin("Times", "Histogram1D", [150, 100], table=["Rows", "table"], expression="x", bins="4", low="0",
                   high="8", title="Times <b>", axis="t [s]"),
            plugin("Never", "Statistics", [150, 0], data=["Lost & gone", "table"], expression="x"),
            plugin("Cuts", "CutFlow", [150, 200], table=["Rows", "table"], cuts="late: x > 2"),
            plugin("Wide", "Plot", [300, 300], object=["Times", "histogram"], file="plots/wide", size="16 8"),
            plugin("High", "Plot", [300, 400], object=["Times", "histogram"], logy="yes", size="8 8", formats="svg pdf"),
            plugin("None", "Plot", [300, 0], object=["Never", "mean"]),
            plugin("Page", "Report", [300, 100], objects="3", object=["Times", "histogram"], object2=["Never", "mean"],
                   object3=["Cuts", "text"], file="pages/Page.html", pdf="run"),
        ],
    }


def page_of(runner, folder, threads, start):
    """@return the page and its PDF."""
    environment = dict(os.environ, VELMORAK_THREADS=threads, SOURCE_DATE_EPOCH="1700000000")
    run = subprocess.run([runner, "--start", start, "page.zedra"], cwd=folder, env=environment, stderr=subprocess.PIPE)
    assert run.returncode == 2, "ended with %d:\n%s" % (run.returncode, run.stderr.decode())
    results = folder / "page.results" / "pages"
    return (results / "Page.html").read_bytes(), (results / "Page.pdf").read_bytes()


def main():
    runner = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        rows = "x\n" + "".join("%d\n" % (i % 8) for i in range(100))
        (folder / "rows.csv").write_text(rows)
        (folder / "page.zedra").write_text(json.dumps(document()))
        both = page, pdf = page_of(runner, folder, "1", "Rows")
        for threads in ("1", "4"):
            assert page_of(runner, folder, threads, "Rows") == both, "not the same bytes with %s threads" % threads
    assert b"/Count 2" in pdf and pdf.count(b"/MediaBox [ 0 0 453 226 ]") == 2, "a page for each Plot, as large as the first"
    root = xml.fromstring(page.decode().replace("<!DOCTYPE html>", ""))
    text = "".join(root.itertext())
    for part in ("page.zedra", "Times <b>", "Lost & gone", "lost.csv", "not run because of \"Lost & gone\"",
                 "Missing in this report: Never mean.", hashlib.sha256(rows.encode()).hexdigest(), "rows.csv", "late",
                 "2 of 9 plug-ins gave no result"):
        assert part in text, "%r is not in the page:\n%s" % (part, text)
    assert len(root.findall(".//svg")) == 2, "pipeline and picture"
    assert b"http" not in page and b"src=" not in page and b"<script" not in page
    print("one page of %d bytes, identical for 1 and 4 threads" % len(page))


main()
