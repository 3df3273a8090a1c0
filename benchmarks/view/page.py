#!/usr/bin/python3
"""The page of velmorak-view in a headless Chromium, against the limits that it is to keep.

usage: page.py VELMORAK-VIEW VELMORAK-RUN, with tests/tools in PYTHONPATH

Prints a row for each limit, as benchmarks/Row.h does: the time from the start of a run to its first histogram on the page;
the time of a run while the page follows it, and while it is closed; how long a folder of 500 pictures takes to open, and a
frame while one scrolls through it; the memory of the server after all that."""

import pathlib
import shutil
import signal
import statistics
import subprocess
import sys
import time

from check_view import Page, missing_programs
from check_view_live import document_of, filling
from pipelines import plugin, table
from view_server import View

ROUNDS = 7
PICTURES = 500
LONG = "1000000000"
SHORT = "40000000"  # Some seconds.

FIRST_HISTOGRAM = """
    window.firstHistogram = null;
    new MutationObserver((changes, observer) => {
        if (document.querySelector('figure.live')) {
            window.firstHistogram = Date.now();
            observer.disconnect();
        }
    }).observe(document.body, {childList: true, subtree: true});"""

# Runs before the page's own scripts: all pictures have their place, and those in the window are drawn.
OPENED = """
    window.openedAfter = null;
    (function look() {
        const pictures = [...document.querySelectorAll('#pictures img')];
        const isSeen = (box) => box.top < innerHeight && box.bottom > 0;
        if (pictures.length === %d && pictures.every((each) => each.complete || !isSeen(each.getBoundingClientRect()))) {
            window.openedAfter = performance.now();
        } else {
            requestAnimationFrame(look);
        }
    })();""" % PICTURES

# The times between frames while the page moves by 40 pixels in each.
SCROLL = """
    const done = arguments[0];
    const times = [];
    let last = null;
    function step(now) {
        if (last !== null) {
            times.push(now - last);
        }
        last = now;
        scrollBy(0, 40);
        if (times.length < 400) {
            requestAnimationFrame(step);
        } else {
            done(times);
        }
    }
    requestAnimationFrame(step);"""


def print_row(work, peer, unit, ours, others, ratio, limit):
    print("row", work, peer, unit, "%g" % ours, "%g" % others, "%g" % ratio, limit, sep="\t", flush=True)


def print_limit(work, unit, ours, limit):
    print_row(work, "a limit", unit, ours, limit, ours / limit, "<= 1")


def peak_megabytes(view):
    status = pathlib.Path("/proc/%d/status" % view.process.pid).read_text()
    return next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmHWM")) * 1024 / 1e6


def started(view, runner, document):
    return subprocess.Popen([runner, str(document)], cwd=view.folder, env=view.environment, stderr=subprocess.DEVNULL)


def first_histograms(view, runner):
    """@return the times in ms from the start of the program to the first histogram on the page."""
    document = document_of(view, "Long.zedra", filling(LONG))
    times = []
    with Page(view) as page:
        page.wait("page.version > 0")
        for _ in range(ROUNDS):
            page.do(FIRST_HISTOGRAM)
            begin = time.time()
            run = started(view, runner, document)
            page.wait("window.firstHistogram !== null")
            times.append(page.do("return window.firstHistogram") - 1e3 * begin)
            run.send_signal(signal.SIGINT)
            assert run.wait() == 3
            page.wait("document.querySelectorAll('figure.live').length === 0")
    return times


def time_of_run(view, runner, document):
    begin = time.monotonic()
    assert started(view, runner, document).wait() == 0
    return 1e3 * (time.monotonic() - begin)


def times_of_runs(view, runner):
    """@return the medians in ms with the page and without; both take turns, and the first round does not count."""
    document = document_of(view, "Short.zedra", filling(SHORT))
    times = {True: [], False: []}
    with Page(view) as page:
        for number in range(ROUNDS + 1):
            for is_open in (True, False):
                page.driver.get(view.address if is_open else "about:blank")
                if is_open:
                    page.wait("page.version > 0")
                else:
                    (view.runtime / "velmorak" / "look").unlink(missing_ok=True)  # It counts for some seconds more.
                needed = time_of_run(view, runner, document)
                if number > 0:
                    times[is_open].append(needed)
    return statistics.median(times[True]), statistics.median(times[False])


def folder_of_pictures(view, runner):
    """A results folder with many copies of a Plot's picture."""
    document = document_of(view, "One.zedra", table(20000) + [plugin("Picture", "Plot", object=["Upper", "histogram"], formats="png")])
    assert started(view, runner, document).wait() == 0
    results = view.folder / "many.results"
    results.mkdir()
    for number in range(PICTURES):
        shutil.copy(view.folder / "One.results" / "Picture.png", results / ("p%03d.png" % number))
    return results


def opening(view):
    """@return the times in ms in which the page opens, and those of its frames while it scrolls."""
    times = []
    with Page(view) as page:
        page.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": OPENED})
        page.driver.set_script_timeout(300)
        for _ in range(ROUNDS):
            page.driver.get("about:blank")
            page.driver.get(view.address)
            page.wait("window.openedAfter !== null")
            times.append(page.do("return window.openedAfter"))
        frames = page.driver.execute_async_script(SCROLL)
    return times, frames


def main():
    if reason := missing_programs():
        print("velmorak_bench_view is skipped: " + reason)
        return 0
    program, runner = sys.argv[1:3]
    memory = []
    with View(program) as view:
        view.environment["VELMORAK_CACHE_LIMIT"] = "0"  # Each run computes everything.
        view.start()
        print_limit("first histogram on the page after the start of a run", "ms", statistics.median(first_histograms(view, runner)), 500)
        followed, alone = times_of_runs(view, runner)
        print_row("run of 40 M rows with its page open", "without the page", "ms", followed, alone, alone / followed, ">= 0.97")
        memory.append(peak_megabytes(view))
    with View(program) as view:
        view.start(folder_of_pictures(view, runner))
        times, frames = opening(view)
        print_limit("page of a folder with 500 pictures opens", "ms", statistics.median(times), 1000)
        print_limit("frame while it scrolls, 95 % of 400", "ms", sorted(frames)[len(frames) * 95 // 100], 34)
        memory.append(peak_megabytes(view))
    print_limit("memory of velmorak-view, at most", "MB", max(memory), 60)
    return 0


if __name__ == "__main__":
    sys.exit(main())
