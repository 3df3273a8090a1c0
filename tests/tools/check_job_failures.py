#!/usr/bin/env python3
"""Checks that nothing is lost or wrong when the files of a job are damaged, exchanged or changed, when its parts are done
twice, and when its programs are killed at random.

usage: check_job_failures.py VELMORAK-RUN [--long]
"""

import json
import os
import random
import shutil
import signal
import subprocess
import sys
import time

from check_jobs import analysis, clear, difference, do_parts, files, fine, plain, plan, tree
from pipelines import Place, plugin, table


def check_damage(place):
    document = place.document(*table(300000))
    expected = plain(place, document)
    plan(place, "job", 3, document)
    do_parts(place, "job")
    parts = place.folder / "job" / "parts"
    whole = (parts / "00002.part").read_bytes()
    for damaged in (whole[:-1], whole[:len(whole) // 2], b"", whole[:40]):
        (parts / "00002.part").write_bytes(damaged)
        assert "00002.part\" is damaged or cut off" in fine(place.run("--merge", "job"), 6).stderr
    for at in range(60, len(whole), max(1, len(whole) // 40)):
        changed = whole[:at] + bytes([whole[at] ^ 0x40]) + whole[at + 1:]
        (parts / "00002.part").write_bytes(changed)
        done = place.run("--merge", "--results", "bad", "job")
        assert done.returncode in (2, 6) and done.stderr, (at, done)
    (parts / "00002.part").write_bytes((parts / "00003.part").read_bytes())
    assert "is part 3; it has got the name of another one" in fine(place.run("--merge", "job"), 6).stderr
    plan(place, "twin", 3, document)
    do_parts(place, "twin", [1, 2, 3])
    shutil.copy(place.folder / "twin" / "parts" / "00002.part", parts / "00002.part")
    assert "belongs to another plan" in fine(place.run("--merge", "job"), 6).stderr
    again = fine(place.run("--part", "2", "job"))
    assert "is done again" in again.stderr, again.stderr
    (parts / "00005.part").unlink()
    assert "part 5 is not done" in fine(place.run("--merge", "job"), 6).stderr
    partial = fine(place.run("--merge", "--partial", "--results", "partial", "job"))
    assert "The results are partial: part 5 of 6 is missing" in partial.stderr, partial.stderr
    assert json.loads((place.folder / "partial" / "run.json").read_text())["partial"] == "part 5 of 6 is missing"
    assert "part 5 of 6" in (place.folder / "partial" / "PARTIAL.txt").read_text()
    fine(place.run("--part", "5", "job"))
    fine(place.run("--merge", "-j", "2", "--results", "partial", "job"))
    assert tree(place.folder / "partial") == expected
    text = (place.folder / "job" / "plan.json").read_text()
    (place.folder / "job" / "plan.json").write_text(text.replace("x > mean", "x < mean"))
    assert "was changed after it was made" in fine(place.run("--merge", "job"), 1).stderr
    (place.folder / "job" / "plan.json").write_text(text[:-100])
    assert "is not a plan, or is damaged" in fine(place.run("--part", "1", "job"), 1).stderr


def check_changed_files(place):
    files(place, 9, 4000)
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
    shutil.rmtree(place.folder / "job")
    plan(place, "job", 3, document)
    (place.folder / "data" / "run_0000.csv").write_text("x,y,n\n1,2,3\n")
    do_parts(place, "job", [1])
    with (place.folder / "data" / "run_004.csv").open("a") as file:
        file.write("1,2,3\n")
    failed = fine(place.run("--part", "2", "job"), 2)
    assert "run_004.csv\" has changed since the job was planned" in failed.stderr, failed.stderr
    assert "part 2 failed: the file" in fine(place.run("--status", "job"), 6).stdout


def check_two_at_once(place):
    """Both end well, and one of them leaves its file."""
    clear(place)
    shutil.rmtree(place.folder / "job")
    document = place.document(*table(3000000))
    expected = plain(place, document)
    plan(place, "job", 1, document)
    for number in ("1", "2"):
        both = [subprocess.Popen([place.runner, "--part", number, "job"], cwd=place.folder, env=place.environment,
                                 stderr=subprocess.DEVNULL) for _ in range(2)]
        assert [each.wait() for each in both] == [0, 0]
    left = sorted(path.name for path in (place.folder / "job" / "parts").iterdir())
    assert left == ["00001.part", "00002.part"], left
    fine(place.run("--merge", "-j", "2", "--results", "merged", "job"))
    assert tree(place.folder / "merged") == expected


class Killer:
    """Kills programs at random moments. A program that is killed while it loads a collection leaves a note about it, by
    which later ones refuse it; the notes of these are kept apart."""

    def __init__(self, place, seed):
        self.place = place
        self.generator = random.Random(seed)
        self.killed = 0

    def run(self, seconds, *arguments):
        """@param seconds that the program takes."""
        notes = self.place.folder / "killed"
        run = subprocess.Popen([self.place.runner, *arguments], cwd=self.place.folder, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, env=dict(self.place.environment, XDG_STATE_HOME=str(notes)))
        try:
            run.wait(self.generator.uniform(0, 1.1 * seconds))
        except subprocess.TimeoutExpired:
            run.send_signal(signal.SIGKILL)
            run.wait()
            self.killed += 1
        shutil.rmtree(notes, ignore_errors=True)


def seconds_of(work):
    begin = time.monotonic()
    work()
    return time.monotonic() - begin


def check_killed_parts(place, times):
    """Each part is done in the end, and the results are right."""
    clear(place)
    document = place.document(*table(1000000))
    expected = plain(place, document)
    shutil.rmtree(place.folder / "job")
    plan(place, "job", 3, document)
    whole = seconds_of(lambda: fine(place.run("--part", "1", "-j", "2", "job")))
    killer = Killer(place, 4)
    while killer.killed < times:
        for number in range(1, 7):
            (place.folder / "job" / "parts" / ("%05d.part" % number)).unlink(missing_ok=True)
            killer.run(whole, "--part", str(number), "-j", "2", "job")
            fine(place.run("--part", str(number), "-j", "2", "job"))
    fine(place.run("--merge", "-j", "2", "--results", "merged", "job"))
    assert tree(place.folder / "merged") == expected
    left = sorted(path.name for path in (place.folder / "job" / "parts").iterdir())
    assert left == ["%05d.part" % number for number in range(1, 7)], left


def plan_of(job):
    """The plan, without what depends on the clock."""
    planned = json.loads((job / "plan.json").read_text())
    del planned["time"], planned["digest"]
    return planned


def check_killed_plans_and_merges(place, times):
    """A plan is whole or not there, and so is each result. gnuplot is left out, because it may survive the program."""
    clear(place)
    plugins = analysis(plugin("Rows", "CsvTable", file="data/run_*.csv"))
    document = place.document(*[each for each in plugins if each["kind"] != "Plot"])
    expected = plain(place, document)
    job = place.folder / "job"
    shutil.rmtree(job)
    whole = seconds_of(lambda: plan(place, "job", 3, "--bundle", document))
    planned = plan_of(job)
    killer = Killer(place, 5)
    while killer.killed < times:
        shutil.rmtree(job)
        killer.run(whole, "--plan", "job", "--parts", "3", "--bundle", document)
        if (job / "plan.json").exists():
            assert plan_of(job) == planned
        else:
            plan(place, "job", 3, "--bundle", document)
    do_parts(place, "job")
    parts = tree(job)
    merge = ("--merge", "-j", "2", "--results", "merged", "job")
    whole = seconds_of(lambda: fine(place.run(*merge)))
    killer.killed = 0
    while killer.killed < times:
        if killer.generator.random() < 0.5:
            shutil.rmtree(place.folder / "merged", ignore_errors=True)
        killer.run(whole, *merge)
        for name, content in tree(place.folder / "merged").items():
            is_result = not name.startswith((".", "former/")) and name != "run.json"
            assert not is_result or content == expected[name], name
    fine(place.run(*merge))
    fine(place.run(*merge))  # The former results go with the second good run.
    merged = tree(place.folder / "merged")
    assert merged == expected, difference(expected, merged)
    assert tree(job) == parts, difference(parts, tree(job))


def main(runner, *flags):
    os.environ["VELMORAK_CACHE_LIMIT"] = "0"
    times = 200 if "--long" in flags else 20
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        place.environment["XDG_STATE_HOME"] = str(place.folder / "state")
        check_damage(place)
        check_changed_files(place)
        check_two_at_once(place)
        check_killed_parts(place, times)
        check_killed_plans_and_merges(place, times)


if __name__ == "__main__":
    main(*sys.argv[1:])
