#!/usr/bin/env python3
"""The page of velmorak-view in a headless Chromium while rows pass: histograms that grow, rows on wires, jobs in parts,
tables of files, exports, and sentences that belong to no run.

usage: check_view_live.py VELMORAK-VIEW VELMORAK-RUN [FOLDER]
With a folder, pictures of the page go there. Without Chromium and Selenium the check is skipped.
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import time

from check_view import Page, missing_programs, run
from pipelines import plugin, table
from view_server import View, began, ended

SKIPPED = 77


def document_of(view, name, plugins):
    for position, each in enumerate(plugins):
        each["position"] = [220 * (position % 3), 600 - 110 * (position // 3)]
    path = view.folder / name
    path.write_text(json.dumps({"zedra": 1, "plugins": plugins}))
    return path


def filling(rows):
    return [
        plugin("Rows", "RandomTable", rows=rows, columns="x: gauss(0, 1); y: uniform(0, 1); unused: uniform(0, 1)", seed="7"),
        plugin("Above", "Filter", table=["Rows", "table"], condition="x > 0"),
        plugin("Mass", "Histogram1D", table=["Above", "table"], expression="x", bins="50", low="-1", high="4",
               title="Mass of the pair"),
        plugin("Both", "Histogram2D", table=["Rows", "table"], x="x", y="y", xbins="20", ybins="20", xlow="-3", xhigh="3",
               ylow="0", yhigh="1"),
        plugin("Slope", "Profile1D", table=["Rows", "table"], x="x", y="y", bins="20", low="-3", high="3")]


def check_growing_histograms(view, runner, pictures):
    """From a second after the start on, and until the run is stopped."""
    document = document_of(view, "Long.zedra", filling("1000000000"))
    entries = "Number((document.querySelector('figure.live .quiet') || {textContent: '0'}).textContent.replace(/,/g, '').match(/\\d+/)[0])"
    with Page(view) as page:
        page.wait("page.version > 0")
        begin = time.monotonic()
        process = subprocess.Popen([runner, str(document)], cwd=view.folder, env=view.environment, stderr=subprocess.DEVNULL)
        page.wait("document.querySelectorAll('figure.live').length == 3")
        print("histograms on the page after %.2f s" % (time.monotonic() - begin))
        first = page.do("return " + entries)
        page.wait("%s > %d" % (entries, first))
        chart = "[...charts.values()].map((known) => known.chart).find((chart) => chart.name == 'Mass of the pair')"
        page.do("const c = %s; c.svg.focus(); c.zoomTo(0, 1)" % chart)
        second = page.do("return " + entries)
        page.wait("%s > %d" % (entries, second))
        assert page.do("const c = %s; return [c.scale.x.low, c.scale.x.high, document.activeElement === c.svg]" % chart) == [0, 1, True], \
            "what one does is kept while the picture grows"
        assert "rows so far" in page.text("#results")
        page.do("const c = %s; c.reset()" % chart)
        page.picture(pictures, "view-live.png")
        process.send_signal(signal.SIGINT)
        assert process.wait() == 3
        page.wait("document.querySelectorAll('figure.live').length == 0")
        assert "stopped" in page.text("#summary"), page.text("#summary")
        assert page.complaints() == []


def check_rows_on_wires(view, runner):
    document = document_of(view, "Wires.zedra", filling("5000"))
    assert run(view, runner, document).returncode == 0
    with Page(view) as page:
        from selenium.webdriver.common.keys import Keys
        page.wait("document.querySelectorAll('.tableWire').length == 4")
        page.press('.tableWire[data-name="Above \u2192 Mass: first rows"]', Keys.ENTER)
        page.wait("document.querySelectorAll('#detail table').length == 2")
        rows = page.do("return [...document.querySelectorAll('#detail table:last-of-type tbody tr')].slice(-20).map((row) => row.innerText)")
        assert len(rows) == 20 and all(float(row.split()[0]) > 0 for row in rows), rows
        assert "Not read, because nothing uses them: unused" not in page.text("#detail") or "x" in page.text("#detail")
        page.do("document.querySelector('.tableWire .grip').dispatchEvent(new MouseEvent('click', {bubbles: true}))")
        page.wait("document.querySelector('#detail h2').innerText.startsWith('Rows')")
        assert "Not read, because nothing uses them: unused" in page.text("#detail"), page.text("#detail")
        assert page.complaints() == []
    time_of_first = view.newest_run()
    assert run(view, runner, document).returncode == 0
    assert view.newest_run() != time_of_first
    with Page(view) as page:
        page.wait("document.querySelectorAll('.box.reused').length == 5")
        page.do("choosePlugin('Above')")
        assert "Of the run at" in page.text("#detail"), "nothing passed in a run that reused all: %s" % page.text("#detail")


def planned_job(view, runner):
    document = document_of(view, "Job.zedra", table(200000))
    assert run(view, runner, "--plan", "job", "--parts", "3", document).returncode == 0
    assert run(view, runner, "--part", "1", "job").returncode == 0
    job = view.folder / "job"
    note = json.loads((job / "nodes" / "00001.json").read_text())
    assert note["host"] == os.uname().nodename and note["process"] > 0 and note["time"] > 0, note
    (job / "parts" / "00002.failed").write_text("the file \"<b>x</b>\" is gone\n")
    (job / "nodes" / "00002.json").write_text(json.dumps({"host": "node<b>2", "process": 1, "time": 1}))
    (job / "nodes" / "00003.json").write_text(json.dumps({"host": "node3", "process": 1, "time": int(1000 * time.time())}))
    return job


def check_jobs(view, runner, pictures):
    job = planned_job(view, runner)
    with Page(view, width=500) as page:
        page.wait("jobs.size == 1")
        page.do("document.querySelector('[data-name^=\"job \"]').click()")
        text = page.text("#parts")
        assert "Job.zedra: failed" in text and "1 of 6 parts are done, 3 waiting, 1 running, 1 failed" in text, text
        assert "part 2: failed, node<b>2: the file \"<b>x</b>\" is gone" in text, text
        assert "node3" in text and os.uname().nodename in text, text
        assert page.do("return document.querySelectorAll('#parts b').length") == 0, "markup stays text"
        assert page.do("return [...document.querySelectorAll('.part')].map((part) => part.classList[1])") == \
            ["done", "failed", "running", "waiting", "waiting", "waiting"]
        page.do("document.body.style.width = '400px'")
        assert page.do("return document.documentElement.scrollWidth <= innerWidth"), "no sideways scrolling"
        page.do("document.body.style.width = ''")
        page.picture(pictures, "view-job.png")
        (job / "parts" / "00002.failed").unlink()
        (job / "nodes" / "00002.json").write_text("no note [")
        (job / "nodes" / "00003.json").write_text(json.dumps({"host": os.uname().nodename, "process": 2 ** 22 + 1, "time": 1}))
        page.wait("document.querySelector('#parts').innerText.includes('part 3: died')")
        (job / "nodes" / "00003.json").unlink()
        for part in range(2, 7):
            assert run(view, runner, "--part", part, "job").returncode == 0
        page.wait("document.querySelector('#parts').innerText.includes('6 of 6 parts are done')")
        assert page.complaints() == []
    (job / "plan.json").write_text("{}")
    with Page(view) as page:
        page.wait("jobs.size == 1 && [...jobs.values()][0].error")


def check_tables_of_files(view):
    """Names of fields in quotes, other separators, and only the beginning of a large file."""
    results = view.folder / "tables.results"
    results.mkdir()
    (results / "quoted.csv").write_text('"p, all","he said ""so""",c\n1,2,3\n')
    (results / "semicolons.csv").write_text("a [GeV];b\n1,5;2\n")
    (results / "large.csv").write_text("x,y\n" + "1,2\n" * 3000000)
    view.announce(50, began("/x/tables.zedra", results, time=int(1000 * time.time()) + 5000), ended())
    with Page(view) as page:
        page.wait("document.querySelectorAll('#tables table').length == 3")
        heads = page.do("return [...document.querySelectorAll('#tables table')].map((t) => [...t.querySelectorAll('th')].map((h) => h.innerText))")
        assert heads == [["x", "y"], ["p, all", 'he said "so"', "c"], ["a [GeV]", "b"]], heads
        assert page.do("return document.querySelectorAll('#tables table')[0].querySelectorAll('tbody tr').length") == 10


def check_exports(view, runner):
    """SVG, PNG and CSV of histograms of one and two quantities, a profile and points, by the buttons."""
    efficiency = plugin("Part", "Combine", first=["Mass", "histogram"], second=["Mass", "histogram"], operation="wilson")
    document = document_of(view, "Exports.zedra", filling("3000") + [efficiency])
    assert run(view, runner, document).returncode == 0
    with Page(view) as page:
        page.wait("document.querySelectorAll('#results figure').length == 5")
        page.do("window.saved = []; save = (name, content) => saved.push([name, content instanceof Blob ? content.size : content])")
        for figure in range(5):
            for button in page.do("return [...document.querySelectorAll('#results figure')[arguments[0]].querySelectorAll('button')].map((b) => b.innerText)", figure):
                page.do("[...document.querySelectorAll('#results figure')[arguments[0]].querySelectorAll('button')]"
                        ".find((b) => b.innerText == arguments[1]).click()", figure, button)
        page.wait("saved.length == 15")
        saved = page.do("return saved")
        assert {os.path.splitext(name)[1] for name, _ in saved} == {".svg", ".png", ".csv"}, saved
        for name, content in saved:
            if name.endswith(".png"):
                assert content > 5000, (name, content)
            elif name.endswith(".svg"):
                assert content.startswith("<svg") and "NaN" not in content, name
            else:
                assert content.startswith("x_low,x_high,"), name
        assert page.do("return document.querySelectorAll('#results button[aria-pressed=true]').length") == 9, "all axes are logarithmic"
        check_values_under_the_pointer(page)
        assert page.complaints() == []


def check_values_under_the_pointer(page):
    """Of every picture, at its middle."""
    values = page.do("""return [...charts.values()].map(({chart}) => {
        chart.reset();
        const box = chart.svg.getBoundingClientRect();
        chart.svg.dispatchEvent(new PointerEvent('pointermove', {clientX: box.left + box.width / 2, clientY: box.top + box.height / 2}));
        return chart.under.textContent;
    })""")
    assert len(values) == 5 and all(any(digit in value for digit in "0123456789") for value in values), values


def check_sentences_outside_of_runs(view, runner):
    (view.folder / "broken.zedra").write_text('{"zedra": 1, "plugins": [')
    assert run(view, runner, "broken.zedra").returncode == 1
    with Page(view) as page:
        page.wait("document.querySelector('#messages').innerText.includes('broken.zedra')")


def check_widths(view):
    for width in (500, 800, 1300, 2560):
        with Page(view, width=width, language="de" if width == 800 else "en", is_dark=width == 2560) as page:
            page.wait("document.querySelectorAll('.box').length > 0")
            if width == 500:
                page.do("document.body.style.width = '400px'")
            assert page.do("return document.documentElement.scrollWidth <= innerWidth"), width


def main():
    if reason := missing_programs():
        print("SKIPPED: " + reason)
        return SKIPPED
    pictures = sys.argv[3] if len(sys.argv) > 3 else None
    runner = os.path.abspath(sys.argv[2])
    for check in (check_growing_histograms, check_jobs):
        with View(sys.argv[1]) as view:
            view.start()
            check(view, runner, pictures)
    for check in (check_rows_on_wires, check_exports, check_sentences_outside_of_runs):
        with View(sys.argv[1]) as view:
            view.start()
            check(view, runner)
            if check == check_exports:
                check_widths(view)
    with View(sys.argv[1]) as view:
        view.start()
        check_tables_of_files(view)
    return 0


if __name__ == "__main__":
    sys.exit(main())
