#!/usr/bin/env python3
"""Complete runs as in a batch system: partial failures, scans, stops, progress on a terminal and in a pipe.

usage: check_runner.py VELMORAK-RUN
"""

import json
import os
import pty
import re
import signal
import subprocess
import sys
import time

from pipelines import Place, plugin, table


def outcomes(record):
    return {each["name"]: each["outcome"] for each in record["plugins"]}


def check_three_failures_of_ten(place):
    """A histogram and a formula of a missing column, and a file outside the results folder."""
    done = place.run(place.document(
        *table(1000),
        plugin("Lost", "Histogram1D", table=["Rows", "table"], expression="y", bins="5", low="0", high="1"),
        plugin("Twice", "Formula", table=["Rows", "table"], column="z", expression="2 * q"),
        plugin("Picture", "Plot", object=["Lost", "histogram"]),
        plugin("All", "Histogram1D", table=["Rows", "table"], expression="x", bins="5", low="-5", high="5"),
        plugin("Outside", "AidaWriter", object=["All", "histogram"], file="../outside.aida")))
    assert done.returncode == 2 and done.stdout == "", done
    record = place.record()
    expected = {"Rows": "done", "Mean": "done", "Above": "done", "Upper": "done", "Writer": "done", "All": "done",
                "Lost": "failed", "Twice": "failed", "Outside": "failed", "Picture": "skipped"}
    assert outcomes(record) == expected, outcomes(record)
    failures = [line for line in done.stderr.splitlines() if " failed: " in line]
    assert len(failures) == 3, done.stderr
    for start in ('Histogram1D "Lost" failed: ', 'Formula "Twice" failed: ', 'AidaWriter "Outside" failed: '):
        assert sum(line.startswith(start) for line in failures) == 1, failures
    assert 'Plot "Picture": not run because of "Lost"' in done.stderr, done.stderr
    assert (place.folder / "test.results" / "upper.aida").exists() and not (place.folder / "outside.aida").exists()
    assert record["complete"] is True


def check_scan(place):
    document = place.document(*table(50000))
    arguments = ("--why", "--results", "scan", "--start", "Upper", "--scan", "Upper.bins=5:100:5", document)
    done = place.run(*arguments)
    assert done.returncode == 0, done.stderr
    folders = sorted(each.name for each in (place.folder / "scan").iterdir() if each.is_dir())
    assert folders == sorted("Upper.bins=%d" % bins for bins in range(5, 101, 5)), folders
    contents = {(place.folder / "scan" / name / "upper.aida").read_bytes() for name in folders}
    assert len(contents) == 20, "each point has a result of its own"
    for name in folders:
        record = place.record("scan/" + name)
        assert record["settings"] == [name] and record["complete"] is True, record["settings"]
    assert done.stderr.count('Statistics "Mean": executed') == 1, "what does not depend on the value is computed once"
    repeated = place.run(*arguments)
    assert repeated.returncode == 0 and ": executed, " not in repeated.stderr, repeated.stderr


def check_product(place):
    done = place.run("--results", "both", "--scan", "Upper.bins=5,10", "--scan", "Rows.seed=1:3:1",
                     place.document(*table(100)))
    assert done.returncode == 0, done.stderr
    folders = sorted(each.name for each in (place.folder / "both").iterdir() if each.is_dir())
    assert folders == sorted("Upper.bins=%d,Rows.seed=%d" % (bins, seed) for bins in (5, 10) for seed in (1, 2, 3))
    assert place.record("both/Upper.bins=10,Rows.seed=3")["seed"] == {"Rows": "3"}
    wrong = place.run("--scan", "Upper.bins=5,10", "--scan", "Upper.bons=1,2", place.document(*table(100)))
    assert wrong.returncode == 1 and 'did you mean "bins"?' in wrong.stderr and wrong.stdout == "", wrong


def check_stop(place, which):
    document = place.document(*table(1000000000))
    run = subprocess.Popen([place.runner, "--events", "-", document], cwd=place.folder, env=place.environment,
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    for line in run.stdout:
        if json.loads(line)["event"] == "progress":
            run.send_signal(which)
            break
    events = [json.loads(line) for line in run.stdout]
    errors = run.stderr.read()
    run.stdout.close()
    run.stderr.close()
    assert run.wait() == 3, errors
    assert events[-1]["outcome"] == "stopped" and "The run was stopped." in errors, errors
    record = place.record()
    assert record["complete"] is False and set(outcomes(record).values()) == {"unfinished"}, outcomes(record)
    left = [each.name for each in (place.folder / "test.results").iterdir()]
    assert left == ["run.json"], left


def on_a_terminal(place, *arguments):
    """The output on standard error if that is a terminal, and the time that the run took."""
    ours, theirs = pty.openpty()
    begin = time.monotonic()
    run = subprocess.Popen([place.runner, *arguments], cwd=place.folder, env=place.environment,
                           stdout=subprocess.PIPE, stderr=theirs)
    os.close(theirs)
    shown = b""
    while True:
        try:
            block = os.read(ours, 65536)
        except OSError:  # The other end is closed.
            break
        if not block:
            break
        shown += block
    os.close(ours)
    output = run.stdout.read()
    run.stdout.close()
    assert run.wait() == 0 and output == b"", (output, shown)
    return shown.decode(), time.monotonic() - begin


def check_terminal(place):
    shown, seconds = on_a_terminal(place, place.document(*table(10000000)))
    drawn = re.findall(r'Reading "Rows"(?:, pass (\d))?: (\d+) %, \d+ rows, \d+ rows/s[^\r\n]*\r\x1b\[K', shown)
    assert 1 <= len(drawn) <= 10 * seconds + 1, (len(drawn), seconds)
    progress = [(int(number or 1), int(percent)) for number, percent in drawn]
    assert progress == sorted(progress) and progress[-1][1] <= 100, progress
    assert 'AidaWriter "Writer": ' in shown.split("\x1b[K")[-1], shown


def check_pipe(place):
    begin = time.monotonic()
    done = place.run("--set", "Rows.seed=8", place.document(*table(10000000)))
    seconds = time.monotonic() - begin
    lines = [line for line in done.stderr.splitlines() if line.startswith("Reading ")]
    assert len(lines) <= seconds / 5, (lines, seconds)
    assert "\r" not in done.stderr and "\x1b" not in done.stderr, done.stderr


def main(runner):
    for check in (check_three_failures_of_ten, check_scan, check_product, check_terminal, check_pipe):
        with Place(runner) as place:
            check(place)
    for which in (signal.SIGINT, signal.SIGTERM):
        with Place(runner) as place:
            check_stop(place, which)


if __name__ == "__main__":
    main(*sys.argv[1:])
