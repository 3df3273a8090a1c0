#!/usr/bin/env python3
"""A scan ends in a table, a picture and a page: each value, each number with its error, how each run ended.

usage: check_scan.py VELMORAK-RUN
"""

import csv
import html.parser
import re
import signal
import subprocess
import sys
import xml.etree.ElementTree

from pipelines import Place, plugin, table


def rows_of(place, folder="test.results"):
    with open(place.folder / folder / "scan.csv", newline="") as file:
        return list(csv.DictReader(file))


def texts_of(place, folder="test.results"):
    """The texts of the picture and of the page, whose elements are all closed."""
    picture = xml.etree.ElementTree.parse(place.folder / folder / "scan.svg")
    page = (place.folder / folder / "scan.html").read_text()
    reader = Reader()
    reader.feed(page)
    reader.close()
    assert reader.open == [], reader.open
    assert "<script" not in page and "http://" not in page.replace("http://www.w3.org/2000/svg", "") and "https://" not in page
    return " ".join(picture.getroot().itertext()), " ".join(reader.texts)


class Reader(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.open, self.texts, self.links = [], [], []

    def handle_starttag(self, tag, attributes):
        self.links += [value for name, value in attributes if name == "href"]
        if tag not in ("meta", "img"):
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        pass

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        self.texts.append(data)


def fit(rows="20000"):
    """A number, a fit with errors, and one number that no value changes."""
    return [
        plugin("Rows", "RandomTable", rows=rows, columns="x: gauss(0, 1)", seed="7"),
        plugin("All", "Statistics", data=["Rows", "table"], expression="x"),
        plugin("cuts", "Filter", table=["Rows", "table"], condition="x > threshold", threshold="0"),
        plugin("Yield", "Statistics", data=["cuts", "table"], expression="x"),
        plugin("Upper", "Histogram1D", table=["cuts", "table"], expression="x", bins="40", low="-4", high="4"),
        plugin("Peak", "Fit", data=["Upper", "histogram"], model="gauss"),
        plugin("Picture", "Plot", object=["Upper", "histogram"]),
    ]


def check_table(place):
    done = place.run("--scan", "cuts.threshold=-3:-1:1", place.document(*fit()))
    assert done.returncode == 0, done.stderr
    assert "scan.csv, scan.svg and scan.html in " in done.stderr, done.stderr
    rows = rows_of(place)
    assert [row["cuts.threshold"] for row in rows] == ["-3", "-2", "-1"], rows
    assert {row["status"] for row in rows} == {"done"} and {row["reason"] for row in rows} == {""}
    for row in rows:
        assert row["folder"] == "cuts.threshold=" + row["cuts.threshold"]
        record = place.record("test.results/" + row["folder"])
        for each in record["plugins"]:
            for output in each["outputs"]:
                if "value" in output:
                    column = "%s.%s" % (each["name"], output["name"])
                    assert float(row[column]) == float(output["value"]), (column, row[column], output)
    assert float(rows[0]["Peak.sigma_error"]) > 0 and list(rows[0]).count("Peak.sigma_error") == 1
    picture, page = texts_of(place)
    assert "Peak.mean" in picture and "All.mean" not in picture and "cuts.threshold" in picture, picture
    assert "3 runs, 3 done" in page and "\u00b1" in page and "The same in every run" in page, page
    reader = Reader()
    reader.feed((place.folder / "test.results" / "scan.html").read_text())
    for link in reader.links:
        assert (place.folder / "test.results" / link.replace("%3D", "=")).exists(), link
    assert any(link.endswith("/Picture.png") for link in reader.links), reader.links


def check_same_bits(place):
    document = place.document(*fit())
    contents = set()
    for threads, folder in (("1", "one"), ("3", "three")):
        done = place.run("-j", threads, "--results", folder, "--scan", "cuts.threshold=-1,0", document)
        assert done.returncode == 0, done.stderr
        contents.add(tuple((place.folder / folder / ("scan." + ending)).read_bytes() for ending in ("csv", "svg", "html")))
        place.environment["XDG_CACHE_HOME"] += "2"
    assert len(contents) == 1, "a scan has the same bits for any number of threads"


def check_commas(place):
    """A list with semicolons, or values in quotes, may have commas."""
    document = place.document(*fit("1000"))
    place.run("--set", "cuts.threshold=0", document)
    for values in ('max(x, 0) > 0.5;min(x, 0) < -0.5', '"max(x, 0) > 0.5","min(x, 0) < -0.5"'):
        done = place.run("--scan", "Yield.expression=x", "--scan", "cuts.condition=" + values, document)
        assert done.returncode == 0, done.stderr
        rows = rows_of(place)
        assert [row["cuts.condition"] for row in rows] == ["max(x, 0) > 0.5", "min(x, 0) < -0.5"], rows
        assert rows[0]["folder"] == "Yield.expression=x,cuts.condition=max(x, 0) > 0.5", rows[0]
        assert float(rows[0]["Yield.mean"]) > 0.5 > -0.5 > float(rows[1]["Yield.mean"]), rows
        assert "max(x, 0) > 0.5" in texts_of(place)[1]
    done = place.run("--scan", 'Upper.title="the ""first"", x",second', document)
    assert done.returncode == 0, done.stderr
    assert [row["Upper.title"] for row in rows_of(place)] == ['the "first", x', "second"]
    wrong = place.run("--scan", 'cuts.condition="x > 1,x > 2', document)
    assert wrong.returncode == 1 and "has a quote without its end" in wrong.stderr, wrong.stderr
    wrong = place.run("--scan", "cuts.condition=x/2 > 1,x_2 > 1", document)
    assert wrong.returncode == 1 and "two runs whose results would be in" in wrong.stderr, wrong.stderr


def check_failures(place):
    """A run that fails has its numbers so far, its status and the reason; texts stay texts."""
    document = place.document(*fit("1000"), plugin("<b>", "Formula", table=["Rows", "table"], column="y", expression="x"))
    done = place.run("--scan", "<b>.expression=x;2 * q;2 * x", "--scan", "Upper.title=<i>", document)
    assert done.returncode == 2, done.stderr
    rows = rows_of(place)
    assert [row["status"] for row in rows] == ["done", "failed", "done"], rows
    assert 'Formula "<b>": ' in rows[1]["reason"] and rows[1]["Yield.mean"] == rows[0]["Yield.mean"], rows[1]
    page = (place.folder / "test.results" / "scan.html").read_text()
    assert "<b>" not in page and "<i>" not in page and "&lt;i&gt;" in page
    assert "3 runs, 2 done, 1 failed" in texts_of(place)[1]
    long = " + ".join(["x"] * 200)
    done = place.run("--scan", "<b>.expression=%s,%s + x" % (long, long), document)
    assert done.returncode == 0, done.stderr
    assert len({row["folder"] for row in rows_of(place)}) == 2


def check_product(place):
    """Two scanned inputs: lines for one, the axis for the one with more values."""
    done = place.run("--scan", "cuts.threshold=-2:1:1", "--scan", "Rows.seed=1,2", place.document(*fit("2000")))
    assert done.returncode == 0, done.stderr
    assert len(rows_of(place)) == 8
    picture = texts_of(place)[0]
    assert "Rows.seed = 1" in picture and "Rows.seed = 2" in picture and "cuts.threshold = " not in picture, picture


def check_extremes(place):
    """Numbers that no axis can show well: the picture is there all the same."""
    document = place.document(plugin("In", "Number"))
    for values in ("1e308,-1e308,1", "NaN,1,Infinity", "1e20,100000000000000016384,1e20", "5e-324,0,1e-323", "1,1", "0"):
        done = place.run("--scan", "In.value=" + values, document)
        assert done.returncode == 0, done.stderr
        texts_of(place)
        picture = (place.folder / "test.results" / "scan.svg").read_text()
        assert not re.search(r'="[^"]*(nan|inf)', picture, re.IGNORECASE), picture
        assert [row["In.number"] for row in rows_of(place)].count("") == 0


def check_stop(place):
    """What was not run is in the table, too, and nothing of an earlier scan."""
    document = place.document(*table(1000))
    assert place.run("--scan", "Upper.bins=5,10", document).returncode == 0
    assert [row["status"] for row in rows_of(place)] == ["done", "done"]
    run = subprocess.Popen([place.runner, "--scan", "Rows.rows=100,1000000000,200", document], cwd=place.folder,
                           env=place.environment, stderr=subprocess.PIPE, text=True)
    for line in run.stderr:
        if line.startswith("Scan: Rows.rows=1000000000"):
            run.send_signal(signal.SIGINT)
            break
    errors = run.stderr.read()
    run.stderr.close()
    assert run.wait() == 3, errors
    rows = rows_of(place)
    assert [row["Rows.rows"] for row in rows] == ["100", "1000000000", "200"], rows
    assert rows[0]["status"] == "done" and rows[1]["status"] in ("stopped", "not run") and rows[2]["status"] == "not run", rows


def check_refusal(place):
    """A table that cannot be written is no success."""
    (place.folder / "taken").mkdir()
    (place.folder / "taken" / "scan.csv").mkdir()
    done = place.run("--results", "taken", "--scan", "Upper.bins=5,10", place.document(*table(100)))
    assert done.returncode == 1 and "taken/scan.csv" in done.stderr and "cannot be written" in done.stderr, done.stderr
    assert (place.folder / "taken" / "Upper.bins=10" / "upper.aida").exists(), "the runs are done all the same"


def main(runner):
    for check in (check_table, check_same_bits, check_commas, check_failures, check_product, check_extremes, check_stop, check_refusal):
        with Place(runner) as place:
            check(place)


if __name__ == "__main__":
    main(*sys.argv[1:])
