#!/usr/bin/env python3
"""Checks that a cut behind a Parquet file leaves out row groups, and changes nothing but the time.

usage: check_row_groups.py VELMORAK-RUN
"""

import sys

from pipelines import Place, plugin

ROWS = 300000
IN_GROUP = 131072


def pipeline(file, condition, reads_all):
    plugins = [
        plugin("Rows", "ParquetTable", file=file),
        plugin("Cut", "Filter", table=["Rows", "table"], condition=condition, limit="260000"),
        plugin("Kept", "Statistics", data=["Cut", "table"], expression="x"),
        plugin("Copy", "CsvWriter", object=["Cut", "table"], file="kept.csv"),
    ]
    # A second reader of the rows needs all of them.
    return plugins + ([plugin("All", "Statistics", data=["Rows", "table"], expression="time")] if reads_all else [])


def run(place, condition, reads_all=False, threads="2", file="rows.parquet"):
    plugins = pipeline(file, condition, reads_all)
    if "limit" not in condition:
        plugins[1]["inputs"] = [given for given in plugins[1]["inputs"] if given["name"] != "limit"]
    done = place.run("-j", threads, place.document(*plugins))
    return done, place.folder / "test.results"


def results(place, *arguments, **options):
    done, folder = run(place, *arguments, **options)
    assert done.returncode == 0, done.stderr
    counts = {each["name"]: (each.get("rowsIn"), each.get("rowsOut")) for each in place.record()["plugins"]
              if each["name"] in ("Rows", "Cut", "Kept")}
    return (folder / "kept.csv").read_bytes(), counts


def make(place):
    table = place.folder / "rows.csv"
    lines = ["time,x\n"] + ["%d,%r\n" % (i, (i * 7919 % 10007) / 7.0) for i in range(ROWS)]
    table.write_text("".join(lines))
    document = place.document(plugin("Text", "CsvTable", file="rows.csv"),
                              plugin("Copy", "ParquetWriter", table=["Text", "table"], file="rows.parquet"))
    done = place.run(document)
    assert done.returncode == 0, done.stderr
    (place.folder / "test.results" / "rows.parquet").rename(place.folder / "rows.parquet")


def check_same(place):
    for condition in ("time > 250000", "time >= limit and x < 800", "140000 < time and time < 150000", "time == 5",
                      "time < -1", "time < 150000 or x > 1400", "time > 250000 and x / x == 1"):
        plain = results(place, condition, reads_all=True)
        assert plain[1]["Rows"][1] == ROWS, plain[1]
        for threads in ("1", "2", "5"):
            assert results(place, condition, threads=threads) == plain, (condition, threads)


def check_left_out(place):
    """Row groups that are damaged do not matter while they are left out."""
    content = bytearray((place.folder / "rows.parquet").read_bytes())
    # Page headers and pages of the first group, which come before those of others.
    content[4:2000] = bytes(1996)
    (place.folder / "damaged.parquet").write_bytes(content)
    for condition, is_left_out in (("time > 250000", True), ("time >= limit and x < 800", True),
                                   ("time > 1000", False), ("x > 5", False), ("time > 250000 or x > 5", False)):
        done, _ = run(place, condition, file="damaged.parquet")
        assert done.returncode == (0 if is_left_out else 2), (condition, done.stderr)
        assert is_left_out or "damaged in row group 0" in done.stderr, done.stderr
    done, _ = run(place, "time > 250000", file="damaged.parquet", reads_all=True)
    assert done.returncode == 2 and "damaged in row group 0" in done.stderr, done.stderr


def main(runner):
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        make(place)
        check_same(place)
        check_left_out(place)


if __name__ == "__main__":
    main(*sys.argv[1:])
