#!/usr/bin/env python3
"""Checks that a job that is planned, done in parts, and merged leaves what one run leaves.

usage: check_jobs.py VELMORAK-RUN EXAMPLES
"""

import json
import os
import pathlib
import random
import shutil
import subprocess
import sys

from pipelines import Place, plugin, table


def tree(folder):
    """All results with their contents; the record without what depends on the clock."""
    contents = {}
    for path in sorted(folder.rglob("*")):
        if path.is_dir():
            continue
        name = str(path.relative_to(folder))
        contents[name] = path.read_bytes()
        if path.name == "run.json":
            record = json.loads(path.read_text())
            for each in [record, *record["plugins"]]:
                each.pop("seconds", None)
            record.pop("began")
            contents[name] = json.dumps(record, indent=1)
    return contents


def difference(one, other):
    names = [name for name in sorted(one.keys() | other.keys()) if one.get(name) != other.get(name)]
    texts = []
    for name in names[:3]:
        texts.append("%s\n--- %.3000s\n+++ %.3000s" % (name, one.get(name), other.get(name)))
    return "\n".join(texts)


def fine(done, status=0):
    assert done.returncode == status, "%s\n%s\n%s" % (done.args, done.stdout, done.stderr)
    return done


def plan(place, job, parts, *arguments):
    return fine(place.run("--plan", job, "--parts", str(parts), *arguments))


def count_of(place, job):
    return len(json.loads((place.folder / job / "plan.json").read_text())["parts"])


def do_parts(place, job, order=None):
    for number in order or range(1, count_of(place, job) + 1):
        fine(place.run("--part", str(number), "-j", "2", job))


def plain(place, *arguments):
    fine(place.run("-j", "2", "--results", "plain", *arguments))
    return tree(place.folder / "plain")


def clear(place):
    for folder in ("plain", "merged"):
        shutil.rmtree(place.folder / folder, ignore_errors=True)


def check_same(place, expected, parts, *arguments):
    job = "job%d" % parts
    shutil.rmtree(place.folder / job, ignore_errors=True)
    shutil.rmtree(place.folder / "merged", ignore_errors=True)
    planned = plan(place, job, parts, *arguments)
    do_parts(place, job)
    fine(place.run("--merge", "-j", "2", "--results", "merged", job))
    merged = tree(place.folder / "merged")
    assert merged == expected, "%s in %d parts:\n%s" % (arguments, parts, difference(expected, merged))
    return planned.stdout


def check_examples(place, examples):
    streaming = 0
    for document in sorted(pathlib.Path(examples).rglob("*.zedra")):
        shutil.rmtree(place.folder / "plain", ignore_errors=True)
        expected = plain(place, str(document))
        for parts in (1, 2, 3, 7):
            said = check_same(place, expected, parts, str(document))
        streaming += "Round 1" in said
    assert streaming >= 10, streaming


def files(place, count, rows, seed=1):
    generator = random.Random(seed)
    (place.folder / "data").mkdir(exist_ok=True)
    for number in range(count):
        lines = ["x,y,n"] + ["%r,%r,%d" % (generator.gauss(0, 1), generator.random(), generator.randrange(9))
                             for _ in range(rows)]
        (place.folder / "data" / ("run_%03d.csv" % number)).write_text("\n".join(lines) + "\n")


def analysis(source):
    """Two rounds, every order of merging, and a plug-in that cannot be computed in parts."""
    rows = ["Rows", "table"]
    return [
        source,
        plugin("Mean", "Statistics", data=rows, expression="x"),
        plugin("Above", "Filter", table=rows, condition="x > mean", mean=["Mean", "mean"]),
        plugin("Upper", "Histogram1D", table=["Above", "table"], expression="x", weight="y", bins="50", low="0",
               high="5"),
        plugin("Plane", "Histogram2D", table=rows, x="x", y="y", weight="y", xbins="300", xlow="-3", xhigh="3",
               ybins="200", ylow="0", yhigh="1"),
        plugin("Profile", "Profile1D", table=rows, x="x", y="y", bins="10", low="-2", high="2"),
        plugin("Text", "CsvWriter", object=["Above", "table"]),
        plugin("Tuple", "AidaWriter", object=["Above", "table"]),
        plugin("Words", "Print", object=["Above", "table"]),
        plugin("Some", "Range", table=["Above", "table"], first="5", last="4000", every="3"),
        plugin("Few", "Histogram1D", table=["Some", "table"], expression="y", bins="10", low="0", high="1"),
        plugin("Picture", "Plot", object=["Upper", "histogram"]),
        plugin("Page", "Report", objects="1", object=["Upper", "histogram"]),
    ]


def check_files(place):
    files(place, 9, 4000)
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
    expected = plain(place, document)
    for parts in (1, 2, 3, 7, 20):
        said = check_same(place, expected, parts, document)
        assert "While merging: \"Few\", because \"Some\" counts the rows before each row" in said, said
        assert "Round 2" in said, said


def check_threads_of_the_plan(place):
    """A plan does not depend on how many threads look at the files."""
    files(place, 9, 400)
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
    plans = []
    for threads in ("1", "3"):
        plan(place, "job", 5, "-j", threads, document)
        found = json.loads((place.folder / "job" / "plan.json").read_text())
        plans.append({key: value for key, value in found.items() if key not in ("time", "digest")})
        shutil.rmtree(place.folder / "job")
    assert plans[0] == plans[1]


def was_read(file):
    """Whether somebody has read the file since forget_reading."""
    return file.stat().st_atime_ns > 0


def forget_reading(file):
    os.utime(file, ns=(0, file.stat().st_mtime_ns))


def check_own_files(place):
    """A part reads no file of another part, not even to compute its checksum."""
    files(place, 4, 20000)
    document = place.document(plugin("Rows", "CsvTable", file="data/run_*.csv"),
                              plugin("Mean", "Statistics", data=["Rows", "table"], expression="x"))
    plan(place, "own", 4, document)
    inputs = sorted((place.folder / "data").iterdir())
    probe = place.folder / "probe"
    probe.write_text("text")
    for file in [*inputs, probe]:
        forget_reading(file)
    probe.read_text()
    if not was_read(probe):
        print("not checked which files a part reads: no times of access on this file system")
        return
    fine(place.run("--part", "2", "own"))
    assert [was_read(file) for file in inputs] == [False, True, False, False], inputs


def check_cut_file(place):
    """The ranges begin and end inside of a table."""
    document = place.document(*analysis(plugin("Rows", "RandomTable", rows="700000",
                                               columns="x: gauss(0, 1); y: uniform(0, 1)", seed="7")))
    expected = plain(place, document)
    for parts in (2, 3, 7):
        check_same(place, expected, parts, document)


def check_cut_text(place):
    """One text file that is cut. The parts begin in the middle of it: what comes before need not even be readable."""
    generator = random.Random(3)
    lines = ["x,y,n,text"]
    for row in range(200000):
        last = "1.5" if row == 199999 else "%d" % generator.randrange(9)  # Decides on the type of the column.
        text = generator.choice(["plain", '"in, quotes"', '"two\nlines"'])
        lines.append("%r,%r,%s,%s" % (generator.gauss(0, 1), generator.random(), last, text))
        if generator.random() < 0.001:
            lines.append("# no row")
    whole = place.folder / "whole.csv"
    whole.write_text("\n".join(lines) + "\n")
    for more in ({}, {"errors": "skip"}):
        clear(place)
        document = place.document(*analysis(plugin("Rows", "CsvTable", file="whole.csv", **more)))
        expected = plain(place, document)
        for parts in (2, 3, 7):
            check_same(place, expected, parts, document)
            ranges = json.loads((place.folder / ("job%d" % parts) / "plan.json").read_text())["parts"]
            assert all("start" in each for each in ranges if each["begin"][1] > 0) and len(ranges) > parts, ranges
    plan(place, "middle", 3, document)
    shutil.copy(whole, place.folder / "kept.csv")
    said = fine(place.run("--part", "3", "--why", "middle")).stderr
    assert "Part 3 of 6, round 1: file 1 of 1, from chunk " in said and "; begins at row " in said, said
    first = (place.folder / "middle" / "parts" / "00003.part").read_bytes()
    times = whole.stat()
    start = next(each["start"] for each in json.loads((place.folder / "middle" / "plan.json").read_text())["parts"][2:])
    byte = int(start[1].split(":")[0])
    with whole.open("r+b") as file:
        file.seek(len(lines[0]) + 1)
        file.write(b'"' * (byte - len(lines[0]) - 2))
    os.utime(whole, ns=(times.st_atime_ns, times.st_mtime_ns))
    (place.folder / "middle" / "parts" / "00003.part").unlink()
    fine(place.run("--part", "3", "middle"))
    assert (place.folder / "middle" / "parts" / "00003.part").read_bytes() == first
    shutil.copy(place.folder / "kept.csv", whole)


def check_rounds(place):
    """The parts of the first round are merged once for all of the second, whoever comes first."""
    clear(place)
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
    expected = plain(place, document)
    plan(place, "rounds", 4, document)
    do_parts(place, "rounds", [1, 2, 3, 4])
    parts, merged = place.folder / "rounds" / "parts", place.folder / "rounds" / "merged"
    both = [subprocess.Popen([place.runner, "--part", number, "rounds"], cwd=place.folder, env=place.environment,
                             stderr=subprocess.DEVNULL) for number in "56"]
    assert [each.wait() for each in both] == [0, 0]
    kept = list(merged.iterdir())
    assert len(kept) == 1, kept
    parts.rename(place.folder / "set_aside")
    parts.mkdir()
    fine(place.run("--part", "7", "rounds"))
    content = kept[0].read_bytes()
    for damaged in (content[:-1], b"", content.replace(b"VlmPart1", b"VlmPart0")):
        kept[0].write_bytes(damaged)
        assert "needs the results of parts 1-4" in fine(place.run("--part", "8", "rounds"), 6).stderr
    shutil.copy(place.folder / "set_aside" / "00001.part", kept[0])
    assert "needs the results of parts 1-4" in fine(place.run("--part", "8", "rounds"), 6).stderr, "not of all parts"
    for path in (place.folder / "set_aside").iterdir():
        path.rename(parts / path.name)
    fine(place.run("--part", "8", "rounds"))
    assert kept[0].read_bytes() == content, "made again"
    fine(place.run("--merge", "-j", "2", "--results", "merged", "rounds"))
    assert tree(place.folder / "merged") == expected
    shutil.rmtree(merged)
    merged.touch()
    (parts / "00008.part").unlink()
    fine(place.run("--part", "8", "rounds"))
    assert merged.is_file(), "each part merges for itself where the folder cannot be written"


def check_scan(place):
    """Each value has parts of its own. A plain scan computes what does not depend on the value once, as run.json tells."""
    clear(place)
    document = place.document(*table(100000))
    arguments = ("--scan", "Upper.bins=10,20", "--set", "Rows.seed=8", document)
    expected = plain(place, *arguments)
    plan(place, "scan", 3, *arguments)
    do_parts(place, "scan")
    fine(place.run("--merge", "-j", "2", "--results", "merged", "scan"))
    merged = tree(place.folder / "merged")
    assert merged.keys() == expected.keys() and len(merged) == 7 and "scan.csv" in merged, merged.keys()
    for name in merged:
        assert name.endswith("run.json") or merged[name] == expected[name], name


def check_messages(place):
    clear(place)
    document = place.document(*table(300000))
    expected = plain(place, document)
    plan(place, "job", 3, document)
    assert "nothing" in fine(place.run("--plan", "other", "--parts", "2", "--set", "Mean.expression=z", document),
                             2).stderr
    assert "has a plan already" in fine(place.run("--plan", "job", "--parts", "3", document), 1).stderr
    assert "there is no part 7" in fine(place.run("--part", "7", "job"), 1).stderr
    assert "Done: 0 of 6 parts" in fine(place.run("--status", "job"), 6).stdout
    assert "part 4 needs the results of parts 1-3" in fine(place.run("--part", "4", "job"), 6).stderr
    assert "parts 1-6 are not done" in fine(place.run("--merge", "job"), 6).stderr
    do_parts(place, "job", [3, 1, 2])
    assert "is done already" in fine(place.run("--part", "2", "job")).stderr
    assert "Missing: parts 4-6" in fine(place.run("--status", "job"), 6).stdout
    environments = (({"SLURM_ARRAY_TASK_ID": "4", "SLURM_PROCID": "0"}, "4"), ({"OMPI_COMM_WORLD_RANK": "4"}, "5"))
    before = place.environment
    for more, number in environments:
        place.environment = dict(before, **more)
        fine(place.run("--part", "auto", "job"))
        assert (place.folder / "job" / "parts" / ("%05d.part" % int(number))).exists()
    for more in ({"SLURM_ARRAY_TASK_ID": "5"}, {"SGE_TASK_ID": "5"}, {"OMPI_COMM_WORLD_RANK": "4"}, {"PMI_RANK": "4"},
                 {"SLURM_PROCID": "4"}):
        place.environment = dict(before, **more)
        assert fine(place.run("--part", "auto", "job")).stderr == "Part 5 is done already.\n", more
    place.environment = dict(before, SGE_TASK_ID="undefined")
    assert "no batch system" in fine(place.run("--part", "auto", "job"), 1).stderr
    place.environment = before
    fine(place.run("--part", "6", "job"))
    assert "Done: 6 of 6 parts" in fine(place.run("--status", "job")).stdout
    fine(place.run("--merge", "-j", "2", "--results", "merged", "job"))
    assert tree(place.folder / "merged") == expected


def check_partial_marks(place):
    """Everything that leaves a merge without all parts says so: objects, pictures, tables, texts and the report."""
    clear(place)
    shutil.rmtree(place.folder / "job", ignore_errors=True)
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")),
                              plugin("Objects", "AidaWriter", object=["Upper", "histogram"]),
                              plugin("Numbers", "CsvWriter", object=["Plane", "histogram"]))
    plan(place, "job", 3, document)
    do_parts(place, "job", [1, 2, 3, 4, 6])
    fine(place.run("--merge", "--partial", "-j", "2", "--results", "merged", "job"))
    why = "part 5 of 6 is missing"
    marks = {"Objects.aida": 'key="partial" value="%s"' % why, "Tuple.aida": "(partial: %s)" % why,
             "Text.csv": "# partial: " + why, "Numbers.csv": "# partial: " + why, "Words.txt": "Partial: " + why,
             "Page.html": why, "PARTIAL.txt": why, "run.json": '"partial": "%s"' % why, "Picture.gp": "(partial)"}
    for name, mark in marks.items():
        assert mark in (place.folder / "merged" / name).read_text(), (name, os.listdir(place.folder / "merged"))
    again = place.document(plugin("Rows", "CsvTable", file="merged/Text.csv"),
                           plugin("Mean", "Statistics", data=["Rows", "table"], expression="x"))
    fine(place.run("--results", "again", again))
    do_parts(place, "job", [5])
    fine(place.run("--merge", "-j", "2", "--results", "merged", "job"))
    for name, mark in marks.items():
        path = place.folder / "merged" / name
        assert not path.exists() or mark not in path.read_text(), name


def check_bundle(place):
    """Parts on machines that have nothing but the job and the files of the part, in places and with times of their own."""
    clear(place)
    shutil.rmtree(place.folder / "job", ignore_errors=True)
    (place.folder / "samples.csv").write_text("file,weight,sample\ndata/run_00[0-4].csv,2,a\ndata/run_00[5-8].csv,0.5,b\n")
    document = place.document(*analysis(plugin("Rows", "CsvTable", file="@samples.csv", file_columns="yes")),
                              plugin("Sum", "Statistics", data=["Rows", "table"], expression="x", weight="weight"))
    expected = plain(place, document)
    plan(place, "job", 4, "--bundle", document)
    job, away, node = (place.folder / name for name in ("job", "away", "node"))
    away.mkdir()
    for name in ("data", "samples.csv", "test.zedra"):
        (place.folder / name).rename(away / name)

    def send(number, isBeside):
        shutil.rmtree(node, ignore_errors=True)
        shutil.copytree(job, node / "job")
        names = (job / "inputs" / ("%05d.txt" % number)).read_text().splitlines()
        for name in names:
            assert name.startswith("../data/"), name
            target = node / pathlib.Path(name).name if isBeside else node / "data" / pathlib.Path(name).name
            target.parent.mkdir(exist_ok=True)
            shutil.copy(away / "data" / target.name, target)
        return names

    names = send(1, False)
    assert 2 <= len(names) <= 3, names
    changed = node / "data" / pathlib.Path(names[0]).name
    changed.write_text(changed.read_text()[:-2] + "7\n")
    failed = fine(place.run("--part", "1", str(node / "job")), 2)
    assert "has another content than" in failed.stderr, failed.stderr
    changed.unlink()
    failed = fine(place.run("--part", "1", str(node / "job")), 2)
    assert 'run_000.csv" is missing; put it to "../data/run_000.csv" in the folder of the job' in failed.stderr, failed
    for number in range(1, count_of(place, "job") + 1):
        send(number, number % 2)
        fine(place.run("--part", str(number), "-j", "2", str(node / "job")))
        name = "%05d.part" % number
        shutil.copy(node / "job" / "parts" / name, job / "parts" / name)
    shutil.rmtree(node)
    for name in ("data", "samples.csv", "test.zedra"):
        (away / name).rename(place.folder / name)
    fine(place.run("--merge", "-j", "2", "--results", "merged", "job"))
    merged = tree(place.folder / "merged")
    assert merged == expected, difference(expected, merged)


def main(runner, examples):
    os.environ["VELMORAK_CACHE_LIMIT"] = "0"
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        place.environment["XDG_STATE_HOME"] = str(place.folder / "state")
        check_own_files(place)
        check_threads_of_the_plan(place)
        check_files(place)
        shutil.rmtree(place.folder / "plain")
        check_cut_file(place)
        check_cut_text(place)
        check_rounds(place)
        shutil.rmtree(place.folder / "plain")
        check_scan(place)
        shutil.rmtree(place.folder / "plain")
        check_messages(place)
        check_partial_marks(place)
        check_bundle(place)
        check_examples(place, examples)


if __name__ == "__main__":
    main(*sys.argv[1:])
