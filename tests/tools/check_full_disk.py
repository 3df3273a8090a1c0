#!/usr/bin/env python3
"""Checks that planning a job, doing a part and merging on a full disk end with a sentence and leave nothing half written,
and that all is right when there is room again. The disk is a file system in memory, which nothing else sees.

usage: check_full_disk.py VELMORAK-RUN
"""

import os
import pathlib
import shutil
import subprocess
import sys

from check_jobs import analysis, difference, do_parts, files, fine, plain, plan, tree
from pipelines import Place, plugin

SKIPPED = 77  # For ctest.
ALONE = ["unshare", "--user", "--map-root-user", "--mount"]
FULL = "No space left on device"


class Disk:
    """A disk on which some pages are free."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir()
        self.mount("size=64m")
        (folder / "used").write_text("At least one page, because a size of 0 means no limit.\n")

    def mount(self, size):
        subprocess.run(["mount", "-t", "tmpfs", "-o", size, "tmpfs", str(self.folder)], check=True)

    def used(self):
        status = os.statvfs(self.folder)
        return status.f_blocks - status.f_bfree

    def leave(self, pages):
        self.mount("remount,size=%d" % ((self.used() + pages) * os.statvfs(self.folder).f_frsize))

    def enlarge(self):
        self.mount("remount,size=64m")

    def needed(self, work):
        """@return the pages that the work takes."""
        self.enlarge()
        before = self.used()
        work()
        return self.used() - before


def amounts(needed, count):
    """Some numbers of free pages that are not enough, from none to one too few."""
    return sorted({0, 1, needed - 1} | {needed * i // count for i in range(count)})


def hidden(folder):
    """Files under their temporary names."""
    return [path.name for path in folder.rglob(".*")]


def check_plans(place, disk, document):
    job = disk.folder / "job"
    arguments = ("--plan", str(job), "--parts", "4", "--bundle", document)
    needed = disk.needed(lambda: fine(place.run(*arguments)))
    shutil.rmtree(job)
    for pages in range(needed):
        disk.leave(pages)
        done = fine(place.run(*arguments), 1)
        assert FULL in done.stderr and done.stderr.count("\n") <= 2, done.stderr
        assert not (job / "plan.json").exists() and hidden(job) == [], pages
        shutil.rmtree(job, ignore_errors=True)
    disk.enlarge()
    return job


def check_parts(place, disk, job):
    parts = job / "parts"
    needed = disk.needed(lambda: fine(place.run("--part", "1", str(job))))
    (parts / "00001.part").unlink()
    shutil.rmtree(job / "nodes")
    for pages in amounts(needed, 6):
        disk.leave(pages)
        done = fine(place.run("--part", "1", str(job)), 2)
        assert "00001.part cannot be written: " + FULL in done.stderr, done.stderr
        assert {path.name for path in parts.iterdir()} <= {"00001.failed"}, pages
        disk.enlarge()
        said = fine(place.run("--status", str(job)), 6).stdout
        assert "part 1 failed: " in said and "part 1 failed: \n" not in said and "Done: 0 of" in said, said
        shutil.rmtree(job / "nodes", ignore_errors=True)
        (parts / "00001.failed").unlink()


def check_merges(place, disk, job, expected):
    do_parts(place, str(job))
    parts = tree(job)
    results = disk.folder / "merged"
    arguments = ("--merge", "-j", "2", "--results", str(results), str(job))
    needed = disk.needed(lambda: fine(place.run(*arguments)))
    for pages in amounts(needed, 12):
        shutil.rmtree(results, ignore_errors=True)
        disk.leave(pages)
        done = place.run(*arguments)
        assert FULL in done.stderr, done.stderr
        found = tree(results)
        wrong = [name for name in found if name in ("Text.csv", "Tuple.aida", "Words.txt", "Picture.dat") and
                 found[name] != expected[name]]
        assert wrong == [] and hidden(results) == [], (pages, wrong, hidden(results))
        whole = all(found.get(name) == expected[name] for name in expected if name != "run.json")
        assert done.returncode == (0 if whole else 2), (pages, done)
    disk.enlarge()
    fine(place.run(*arguments))
    merged = tree(results)
    assert merged == expected, difference(expected, merged)
    assert tree(job) == parts, difference(parts, tree(job))


def check(runner):
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        disk = Disk(place.folder / "disk")
        try:
            files(place, 9, 400)
            (place.folder / "samples.csv").write_text("file,weight\ndata/run_*.csv,2\n")
            document = place.document(*analysis(plugin("Rows", "CsvTable", file="@samples.csv")))
            expected = plain(place, document)
            job = check_plans(place, disk, document)
            plan(place, str(job), 4, document)
            check_parts(place, disk, job)
            check_merges(place, disk, job, expected)
        finally:
            subprocess.run(["umount", str(disk.folder)], check=True)


def main(runner, *inside):
    os.environ["VELMORAK_CACHE_LIMIT"] = "0"
    if inside:
        check(runner)
    elif subprocess.run([*ALONE, "true"], capture_output=True).returncode != 0:
        print("skipped: no file system can be mounted here (%s)" % " ".join(ALONE))
        sys.exit(SKIPPED)
    else:
        script = str(pathlib.Path(__file__).resolve())
        sys.exit(subprocess.run([*ALONE, sys.executable, script, runner, "inside"]).returncode)


if __name__ == "__main__":
    main(*sys.argv[1:])
