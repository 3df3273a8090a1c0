#!/usr/bin/env python3
"""Checks runs over many files: lists, damaged files, new files, progress, records, exit status.

usage: check_many_files.py VELMORAK-RUN DOCS
"""

import gzip
import json
import pathlib
import resource
import subprocess
import sys

from pipelines import Place, plugin
from schema import faults


def write_runs(folder, files, rows=3, first=0):
    folder.mkdir(exist_ok=True)
    for number in range(first, first + files):
        lines = ["%d,%d.25" % (number, row) for row in range(rows)]
        (folder / ("run_%05d.csv" % number)).write_text("run,x\n" + "\n".join(lines) + "\n")


def pipeline(text, **more):
    return [plugin("In", "CsvTable", file=text, **more),
            plugin("Sum", "Statistics", data=["In", "table"], expression="x"),
            plugin("Out", "CsvWriter", object=["In", "table"], file="out.csv")]


def rows_of(place):
    return (place.folder / "test.results" / "out.csv").read_text().splitlines()


def check_files_are_rows(place):
    write_runs(place.folder / "data", 3)
    done = place.run(place.document(*pipeline("data/*.csv", **{"file_columns": "yes"})))
    assert done.returncode == 0, done.stderr
    rows = rows_of(place)
    assert rows[0] == "run,x,file,file_number" and len(rows) == 10, rows
    assert rows[4] == '1,0.25,"data/run_00001.csv",1', rows
    record = place.record()
    source = next(each for each in record["plugins"] if each["name"] == "In")
    assert source["files"] == ["data/run_0000%d.csv" % i for i in range(3)], source
    assert record["skipped"] == [], record


def check_a_new_file_is_read(place):
    document = place.document(*pipeline("data/*.csv"))
    assert place.run(document).returncode == 0
    again = place.run("--why", document)
    assert 'Statistics "Sum": reused, nothing changed' in again.stderr, again.stderr
    write_runs(place.folder / "data", 1, first=7)
    more = place.run("--why", document)
    assert 'the list of files "*.csv" in "data" changed' in more.stderr, more.stderr
    assert len(rows_of(place)) == 1 + 4 * 3
    (place.folder / "data" / "run_00007.csv").unlink()
    assert place.run(document).returncode == 0 and len(rows_of(place)) == 1 + 3 * 3


def check_the_order_of_a_list(place):
    (place.folder / "list.txt").write_text("# first the last one\ndata/run_00002.csv\ndata/run_00000.csv\n")
    document = place.document(*pipeline("@list.txt"))
    assert place.run(document).returncode == 0
    assert [row.split(",")[0] for row in rows_of(place)[1::3]] == ["2", "0"], rows_of(place)
    source = next(each for each in place.record()["plugins"] if each["name"] == "In")
    assert source["files"] == ["list.txt", "data/run_00002.csv", "data/run_00000.csv"], source
    (place.folder / "list.txt").write_text("data/run_00000.csv\ndata/run_00002.csv\n")
    changed = place.run("--why", document)
    assert "file list.txt changed" in changed.stderr, changed.stderr
    assert [row.split(",")[0] for row in rows_of(place)[1::3]] == ["0", "2"], rows_of(place)


def check_samples_have_weights(place):
    (place.folder / "samples.csv").write_text("file,sample,weight\ndata/run_00000.csv,a,0.5\ndata/run_0000[12].csv,b,2\n")
    document = place.document(plugin("In", "CsvTable", file="@samples.csv"),
                              plugin("Out", "CsvWriter", object=["In", "table"], file="out.csv"))
    assert place.run(document).returncode == 0
    assert rows_of(place)[0] == "run,x,sample,weight" and rows_of(place)[4] == '1,0.25,"b",2.0', rows_of(place)


def check_messages(place):
    for text, sentence in (("none_*.csv", 'no file matches "none_*.csv" in the folder "%s' % place.folder),
                           ("data/run_00000.csv, gone.csv", "gone.csv"),
                           ("data/run_00000.csv, data/*.csv", 'the file "data/run_00000.csv" is listed twice'),
                           ("@gone.txt", "gone.txt")):
        failed = place.run(place.document(*pipeline(text)))
        assert failed.returncode == 2 and sentence in failed.stderr, failed.stderr
    (place.folder / "data" / "other.csv").write_text("run,y\n1,2\n")
    failed = place.run(place.document(*pipeline("data/*.csv")))
    assert failed.returncode == 2, failed.stderr
    assert '"data/run_00000.csv" has a column "x"' in failed.stderr and '"data/other.csv"' in failed.stderr, failed.stderr
    (place.folder / "data" / "other.csv").unlink()


def check_damaged_files(place, schema):
    whole = gzip.compress(b"run,x\n" + b"".join(b"%d,0.5\n" % (i * 7919 % 10007) for i in range(200000)))
    data = place.folder / "damaged"
    data.mkdir()
    (data / "a.csv.gz").write_bytes(whole)
    (data / "b.csv.gz").write_bytes(whole[:len(whole) // 2])
    (data / "c.csv.gz").write_bytes(b"")
    (data / "d.csv.gz").symlink_to("gone")
    (data / "e.csv.gz").write_bytes(whole)
    failed = place.run(place.document(*pipeline("damaged")))
    assert failed.returncode == 2 and "damaged/" in failed.stderr, failed.stderr
    results = set()
    for threads in ("1", "2", "5"):
        document = place.document(*pipeline("damaged", **{"damaged_files": "skip"}))
        skipped = place.run("-j", threads, document)
        assert skipped.returncode == 5, (skipped.returncode, skipped.stderr)
        assert "b.csv.gz" in skipped.stderr and "c.csv.gz" in skipped.stderr, skipped.stderr
        record = place.record()
        found = list(faults(record, schema))
        assert not found, found
        assert [pathlib.Path(each["file"]).name[0] for each in record["skipped"]] == ["b", "c", "d"], record["skipped"]
        assert all(each["plugin"] == "In" and each["reason"] for each in record["skipped"]), record["skipped"]
        outputs = [each["outputs"] for each in record["plugins"]]
        results.add(json.dumps([outputs, record["skipped"], rows_of(place)]))
        assert 400000 < len(rows_of(place)) < 600000, len(rows_of(place))
    assert len(results) == 1
    again = place.run(document)
    assert again.returncode == 5, again.stderr
    (data / "b.csv.gz").write_bytes(whole)
    (data / "c.csv.gz").unlink()
    (data / "d.csv.gz").unlink()
    assert place.run(document).returncode == 0 and len(rows_of(place)) == 600001
    (data / "b.csv.gz").write_bytes(b"")


def check_damaged_blocks(place, muons):
    """A block that cannot be decompressed is lost together with its chunk, on any number of threads."""
    data = place.folder / "blocks"
    data.mkdir()
    whole = muons.read_bytes()
    third = len(whole) // 3
    (data / "a.root").write_bytes(whole)
    (data / "b.root").write_bytes(whole[:third] + bytes(3000) + whole[third + 3000:])
    (data / "c.root").write_bytes(whole[:third])
    (data / "d.root").write_bytes(whole)
    document = place.document(plugin("In", "RootTable", file="blocks", damaged_files="skip"),
                              plugin("Sum", "Statistics", data=["In", "table"], expression="nMuon"),
                              plugin("All", "CsvWriter", object=["In", "table"]))  # Without it, one column is read.
    results = set()
    for threads in ("1", "2", "5"):
        assert place.run("-j", threads, document).returncode == 5
        record = place.record()
        assert [pathlib.Path(each["file"]).name for each in record["skipped"]] == ["b.root", "c.root"], record
        results.add(json.dumps([[each["outputs"], each["rowsOut"]] for each in record["plugins"]]))
    assert len(results) == 1 and "2000" in results.pop()


def check_status_of_a_scan(place):
    """A failure at one point counts more than skipped files at another."""
    document = place.document(*pipeline("damaged", **{"damaged_files": "skip"}))
    skipped = place.run("--scan", "Sum.expression=x,2*x", document)
    assert skipped.returncode == 5, skipped.stderr
    failed = place.run("--scan", "In.file=damaged,gone.csv,damaged", document)
    assert failed.returncode == 2, failed.stderr


def check_a_report_lists_damaged_files(place):
    document = place.document(*pipeline("damaged", **{"damaged_files": "skip"}), plugin("Page", "Report", object=["Sum", "mean"]))
    done = place.run(document)
    assert done.returncode == 5, done.stderr
    page = next((place.folder / "test.results").glob("*.html")).read_text()
    assert "Damaged files that were skipped" in page and "b.csv.gz" in page, page[-3000:]


def few_descriptors():
    resource.setrlimit(resource.RLIMIT_NOFILE, (100, 100))


def check_ten_thousand_files(place, schema):
    write_runs(place.folder / "many", 10000)
    document = place.document(*pipeline("many/**/*.csv"))
    run = subprocess.run([place.runner, "-j", "4", "--events", "-", document], cwd=place.folder,
                         env=place.environment, capture_output=True, text=True, preexec_fn=few_descriptors)
    assert run.returncode == 0, run.stderr[-3000:]
    assert len(rows_of(place)) == 30001
    progress = [json.loads(line) for line in run.stdout.splitlines()]
    for event in progress:
        found = list(faults(event, schema))
        assert not found, found
    progress = [event for event in progress if event["event"] == "progress"]
    assert all(event["files"] == 10000 and 1 <= event["file"] <= 10000 for event in progress), progress
    assert [event["file"] for event in progress] == sorted(event["file"] for event in progress), progress
    assert len(progress) >= 1
    record = place.record()
    assert len(record["inputs"]) == 10000


def check_many_tables(place):
    """Tables that Concat joins count as one run: neither 200 of one file each nor lists beside them open more than 64."""
    write_runs(place.folder / "joined", 200, rows=2)
    tables = [plugin("In%d" % i, "CsvTable", file="joined/run_%05d.csv" % i) for i in range(200)]
    tables += [plugin("In%d" % i, "CsvTable", file="joined/*.csv") for i in range(200, 203)]
    names = ["table" if i == 0 else "table%d" % (i + 1) for i in range(len(tables))]
    joined = {name: ["In%d" % i, "table"] for i, name in enumerate(names)}
    document = place.document(*tables, plugin("All", "Concat", tables=str(len(tables)), **joined),
                              plugin("Sum", "Statistics", data=["All", "table"], expression="x"),
                              plugin("Out", "CsvWriter", object=["All", "table"], file="out.csv"))
    run = subprocess.run([place.runner, "-j", "4", document], cwd=place.folder, env=place.environment,
                         capture_output=True, text=True, preexec_fn=few_descriptors)
    assert run.returncode == 0, run.stderr[-3000:]
    expected = ["%d,%d.25" % (number, row) for _ in range(4) for number in range(200) for row in range(2)]
    assert rows_of(place) == ["run,x"] + expected


def main():
    docs = pathlib.Path(sys.argv[2])
    schemas = {name: json.loads((docs / ("run-%s.schema.json" % name)).read_text()) for name in ("record", "events")}
    with Place(sys.argv[1]) as place:
        check_files_are_rows(place)
        check_a_new_file_is_read(place)
        check_the_order_of_a_list(place)
        check_samples_have_weights(place)
        check_messages(place)
        check_damaged_files(place, schemas["record"])
        check_damaged_blocks(place, docs.parent / "examples" / "Particle_physics" / "muons.root")
        check_status_of_a_scan(place)
        check_a_report_lists_damaged_files(place)
        check_ten_thousand_files(place, schemas["events"])
        check_many_tables(place)


main()
