#!/usr/bin/env python3
"""Checks that a killed run continues where it was, and that a recorded run is repeated and compared.

usage: check_resume.py VELMORAK-RUN
"""

import hashlib
import json
import os
import signal
import subprocess
import sys

from pipelines import Place, plugin, table


def kill_in_the_second_pass(place, document):
    """The mean is complete at that time, and the histogram is not."""
    run = subprocess.Popen([place.runner, "--events", "-", document], cwd=place.folder, env=place.environment,
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    for line in run.stdout:
        event = json.loads(line)
        if event["event"] == "progress" and event["pass"] == 2:
            run.send_signal(signal.SIGKILL)
            break
        assert event["event"] != "ended", "too fast to be killed"
    run.stdout.close()
    assert run.wait() == -signal.SIGKILL


def check_resume(place):
    document = place.document(*table(20000000))
    kill_in_the_second_pass(place, document)
    record = place.record()
    assert record["complete"] is False and {each["outcome"] for each in record["plugins"]} == {"unfinished"}, record
    assert not (place.folder / "test.results" / "upper.aida").exists()
    resumed = place.run("--why", "--start", "Upper", document)
    assert resumed.returncode == 0, resumed.stderr
    assert 'Statistics "Mean": reused, nothing changed' in resumed.stderr, resumed.stderr
    assert 'Histogram1D "Upper": executed, it was not finished in the run before' in resumed.stderr, resumed.stderr
    assert place.record()["complete"] is True
    return document


def check_record(place, document):
    record = place.record()
    outcomes = {each["name"]: each for each in record["plugins"]}
    written = outcomes["Writer"]["results"]
    content = (place.folder / "test.results" / "upper.aida").read_bytes()
    assert written == [{"file": "upper.aida", "sha256": hashlib.sha256(content).hexdigest()}], written
    text = record["document"]["text"]
    assert record["document"]["sha256"] == hashlib.sha256(text.encode()).hexdigest()
    assert record["document"]["file"] == document and record["threads"] >= 1 and record["seconds"] > 0


def check_again(place):
    (place.folder / "in.csv").write_text("a\n1\n2\n")
    document = place.document(plugin("In", "CsvTable", file="in.csv"),
                              plugin("Sum", "Statistics", data=["In", "table"], expression="a"),
                              plugin("Bars", "Histogram1D", table=["In", "table"], expression="a", bins="4", low="0",
                                     high="4"),
                              plugin("Writer", "AidaWriter", object=["Bars", "histogram"], file="out/bars.aida"))
    assert place.run("--set", "Bars.bins=8", document).returncode == 0
    record = place.folder / "test.results" / "run.json"
    before = record.read_text()
    assert json.loads(before)["inputs"] == [
        {"file": "in.csv", "sha256": hashlib.sha256(b"a\n1\n2\n").hexdigest()}], before
    os.remove(document)
    same = place.run("--again", str(record))
    assert same.returncode == 0 and same.stdout.startswith("identical: "), same
    assert record.read_text() == before, "the record that is repeated stays"
    (place.folder / "in.csv").write_text("a\n1\n3\n")
    other = place.run("--again", str(record))
    assert other.returncode == 4, other
    assert 'differs: output "histogram" of "Bars"\n' in other.stdout, other.stdout
    assert 'differs: file "out/bars.aida" of "Writer"\n' in other.stdout, other.stdout
    assert 'entries' not in other.stdout, other.stdout
    assert 'The file "in.csv" has changed since that run.' in other.stderr, other.stderr
    os.remove(place.folder / "in.csv")
    gone = place.run("--again", str(record))
    assert gone.returncode == 4 and 'missing: file "out/bars.aida" of "Writer"\n' in gone.stdout, gone
    for text in ("{}", "[", '{"run": 2}'):
        record.write_text(text)
        wrong = place.run("--again", str(record))
        assert wrong.returncode == 1 and "is not a record of a run" in wrong.stderr and wrong.stdout == "", wrong


def main(runner):
    with Place(runner) as place:
        check_record(place, check_resume(place))
    with Place(runner) as place:
        check_again(place)


if __name__ == "__main__":
    main(*sys.argv[1:])
