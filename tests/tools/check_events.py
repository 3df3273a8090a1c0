#!/usr/bin/env python3
"""Checks that the output of velmorak-run --events and run.json match their schemas, and are true.

usage: check_events.py VELMORAK-RUN DOCS
"""

import copy
import json
import pathlib
import sys

from pipelines import Place, plugin, table
from schema import faults


def check_schema(value, schema):
    found = list(faults(value, schema))
    assert not found, "%s\n%s" % (found[:5], json.dumps(value)[:2000])


def events_of(text, schema):
    events = [json.loads(line) for line in text.splitlines()]
    for event in events:
        check_schema(event, schema)
    return events


def check_order(events, plugins):
    assert events[0]["event"] == "began" and events[-1]["event"] == "ended", events
    assert sorted(event["name"] for event in events if event["event"] == "plugin") == sorted(plugins), events


def check_progress(events):
    """Progress never decreases within a pass and never exceeds the total."""
    last = {}
    for event in events:
        if event["event"] == "progress":
            key = (event["plugin"], event["pass"])
            rows, fraction = last.get(key, (0, 0.0))
            assert event["rows"] >= rows and (event["fraction"] or 0.0) >= fraction, (last, event)
            last[key] = (event["rows"], event["fraction"] or 0.0)
    return last


def check_long_run(place, schemas):
    names = [each["name"] for each in table(1)]
    done = place.run("--events", "-", place.document(*table(300000)))
    assert done.returncode == 0, done.stderr
    events = events_of(done.stdout, schemas["events"])
    check_order(events, names)
    passes = check_progress(events)
    assert {number for _, number in passes} == {1, 2}, passes
    outcomes = {event["name"]: event for event in events if event["event"] == "plugin"}
    assert outcomes["Mean"]["rowsIn"] == 300000 and outcomes["Rows"]["rowsOut"] == 300000, outcomes
    assert 0 < outcomes["Above"]["rowsOut"] < 300000 and outcomes["Upper"]["seconds"] > 0, outcomes
    check_schema(place.record(), schemas["record"])
    again = place.run("--events", "later.jsonl", place.document(*table(300000)))
    assert again.stdout == "", again.stdout
    events = events_of((place.folder / "later.jsonl").read_text(), schemas["events"])
    assert {event["outcome"] for event in events if event["event"] == "plugin"} == {"reused"}, events
    return events


def check_range(place, schemas):
    """The fraction refers to the rows that are needed, not to all rows."""
    done = place.run("--events", "-", place.document(
        plugin("Rows", "RandomTable", rows="1000000000", columns="x: gauss(0, 1)"),
        plugin("Some", "Range", table=["Rows", "table"], last="2999999"),
        plugin("Mean", "Statistics", data=["Some", "table"], expression="x")))
    assert done.returncode == 0, done.stderr
    fractions = [event["fraction"] for event in events_of(done.stdout, schemas["events"])
                 if event["event"] == "progress"]
    assert fractions and max(fractions) > 0.3, fractions


def check_failures(place, schemas):
    done = place.run("--events", "-", "--set", "Mean.expression=y", place.document(*table(1000)))
    assert done.returncode == 2, done.stderr
    events = events_of(done.stdout, schemas["events"])
    outcomes = {event["name"]: event["outcome"] for event in events if event["event"] == "plugin"}
    assert outcomes["Mean"] == "failed" and outcomes["Upper"] == "skipped", outcomes
    assert events[0]["settings"] == ["Mean.expression=y"] and events[-1]["outcome"] == "failed", events
    record = place.record()
    check_schema(record, schemas["record"])
    assert record["settings"] == ["Mean.expression=y"] and record["seed"] == {"Rows": "7"}, record


def check_that_faults_are_found(events, schemas):
    for place, wrong in (("event", "odd"), ("seconds", -1), ("outcome", "fine"), ("more", 1)):
        damaged = dict(events[-1], **{place: wrong})
        assert list(faults(damaged, schemas["events"])), damaged
    for name in events[0]:
        damaged = copy.copy(events[0])
        del damaged[name]
        assert list(faults(damaged, schemas["events"])), damaged


def main(runner, docs):
    schemas = {name: json.loads((pathlib.Path(docs) / ("run-%s.schema.json" % name)).read_text())
               for name in ("events", "record")}
    with Place(runner) as place:
        events = check_long_run(place, schemas)
        check_range(place, schemas)
        check_failures(place, schemas)
        check_that_faults_are_found(events, schemas)
        wrong = place.run("--events", "nowhere/events", place.document(*table(10)))
        assert wrong.returncode == 1 and 'cannot be written to "nowhere/events"' in wrong.stderr, wrong.stderr


if __name__ == "__main__":
    main(*sys.argv[1:])
