#!/usr/bin/python3
"""Checks that SqliteTable reads what Python's sqlite3 reads, and that it can do nothing else.

usage: check_sqlite.py VELMORAK-RUN
"""

import math
import random
import sqlite3
import struct
import sys

from roundtrip import Reader, compare

TYPES = {int: "integer", float: "real", str: "text"}


def random_value(generator, kind):
    if kind is int:
        return generator.randrange(-2**63, 2**63)
    if kind is float:
        value = struct.unpack("<d", generator.randbytes(8))[0]
        return value if math.isfinite(value) else 0.5
    return "".join(generator.choice("aé日'\"`, \n\U0001f600") for _ in range(generator.randrange(6)))


def expected_column(values):
    """As the values decide: text, else real if one is real or missing, else integer."""
    kinds = {type(value) for value in values}
    if str in kinds:
        return ["" if value is None else str(value) for value in values]
    if kinds <= {int} and values:
        return values
    return [math.nan if value is None else float(value) for value in values]


def check_tables(reader, generator):
    file = reader.folder / "a.db"
    for _ in range(20):
        file.unlink(missing_ok=True)
        rows = generator.choice([0, 1, 50, 40000])
        columns = []
        for _ in range(generator.randrange(1, 5)):
            kind, missing = generator.choice([int, float, str]), generator.choice([0, 0, 0.2])
            columns.append([None if generator.random() < missing else random_value(generator, kind)
                            for _ in range(rows)])
        names = [f"c {i}`" if i == 1 else f"c{i}" for i in range(len(columns))]
        with sqlite3.connect(file) as database:
            database.execute("CREATE TABLE t (%s)" % ", ".join(f'"{name}"' for name in names))
            database.executemany("INSERT INTO t VALUES (%s)" % ", ".join("?" * len(names)), zip(*columns))
        database.close()
        compare(reader.columns(file), {name: expected_column(values) for name, values in zip(names, columns)})


def fill(file):
    file.unlink(missing_ok=True)
    database = sqlite3.connect(file)
    database.executescript("""
        CREATE TABLE hits (run INTEGER, E REAL, ok BOOLEAN, mixed, picture BLOB);
        INSERT INTO hits VALUES (1, 0.5, 1, 3, x'00ff'), (1, 1.5, 0, 'three', NULL), (2, 2.5, 1, NULL, NULL);
        CREATE TABLE runs (run INTEGER PRIMARY KEY, name TEXT);
        INSERT INTO runs VALUES (1, 'first'), (2, 'second');
        CREATE VIEW named AS SELECT name, E FROM hits JOIN runs USING (run);
        CREATE VIEW broken AS SELECT absent FROM nowhere;""")
    database.commit()
    return database


def check_objects(reader):
    file = reader.folder / "b.db"
    fill(file).close()
    compare(reader.columns(file, object="hits"), {"run": [1, 1, 2], "E": [0.5, 1.5, 2.5], "ok": [True, False, True],
                                                  "mixed": ["3", "three", ""]})
    assert 'the column "picture" is left out: it holds bytes (BLOB)' in reader.messages, reader.messages
    compare(reader.columns(file, object="named"), {"name": ["first", "first", "second"], "E": [0.5, 1.5, 2.5]})
    compare(reader.columns(file, object="hits", columns="ok, run"), {"ok": [True, False, True], "run": [1, 1, 2]})
    compare(reader.columns(file, object="select name, sum(E) AS total from hits join runs using (run) group by name "
                                        "order by total desc;", columns="total"), {"total": [2.5, 2.0]})
    compare(reader.columns(file, object="WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n WHERE i < 5) "
                                        "SELECT i FROM n"), {"i": [1, 2, 3, 4, 5]})
    looked = {each["path"]: each for each in reader.look(file)["objects"]}
    assert looked["hits"]["rows"] == 3 and looked["named"]["type"] == "view", looked
    assert looked["broken"]["description"].startswith("cannot be read: no such table"), looked["broken"]
    for settings, sentence in (
            ({}, 'contains several tables; enter the name of one, or a SELECT: "hits", "runs", "named", "broken"'),
            ({"object": "hit"}, 'contains no table "hit"; it contains "hits"'),
            ({"object": "hits", "columns": "E, F"}, 'there is no column "F"; the columns are "run", "E"'),
            ({"object": "hits", "columns": "picture"}, 'the column "picture" cannot be read: it holds bytes'),
            ({"object": "select absent from hits"}, "no such column: absent")):
        message = reader.failure(file, **settings)
        assert sentence in message, message


def check_nothing_else(reader):
    file, other = reader.folder / "c.db", reader.folder / "other.db"
    fill(file).close()
    before = file.read_bytes()
    for statement in ("select 1; select 2", "select load_extension('x')", "with a as (select 1) delete from hits",
                      "select * from pragma_database_list", "WITH a AS (SELECT 1) INSERT INTO runs VALUES (9, 'x')"):
        message = reader.failure(file, object=statement)
        assert "object: " in message or 'object"' in message or "object" in message, message
    for statement in (f"ATTACH '{other}' AS o", "PRAGMA user_version = 7", "DELETE FROM hits", "VACUUM"):
        message = reader.failure(file, object=statement)
        assert "contains no table" in message, message
    assert file.read_bytes() == before and not other.exists()
    assert sorted(path.name for path in reader.folder.glob("c.db*")) == ["c.db"]


def check_open_databases(reader):
    """One in write-ahead mode that another program has open, with rows in its log only."""
    file = reader.folder / "w.db"
    database = fill(file)
    database.execute("PRAGMA journal_mode=WAL")
    database.execute("INSERT INTO hits VALUES (3, 3.5, 1, 0, NULL)")
    database.commit()
    compare(reader.columns(file, object="select E from hits"), {"E": [0.5, 1.5, 2.5, 3.5]})
    database.close()


def check_limits(reader):
    file = reader.folder / "d.db"
    database = fill(file)
    page = database.execute("SELECT rootpage FROM sqlite_schema WHERE name = 'hits'").fetchone()[0]
    database.close()
    document = reader.run  # An endless query ends with the time limit.
    endless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n WHERE i < 0"
    reader.place.environment["VELMORAK_THREADS"] = "1"
    document(file, object="runs")
    done = reader.place.run("--timeout", "1", "--set", f"Table.object={endless}", str(reader.folder / "test.zedra"))
    assert done.returncode == 3, (done.returncode, done.stderr)
    whole = file.read_bytes()
    file.write_bytes(whole[:(page - 1) * 4096] + b"\x55" * 4096 + whole[page * 4096:])
    message = reader.failure(file, object="hits")
    assert "d.db cannot be read: database disk image is malformed" in message, message
    file.write_bytes(b"SQLite format 3\0" + b"\1" * 100)
    message = reader.failure(file)
    assert "d.db is not an SQLite database, or is encrypted" in message, message


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    with Reader(runner, "SqliteTable") as reader:
        check_tables(reader, random.Random(seed))
        check_objects(reader)
        check_nothing_else(reader)
        check_open_databases(reader)
        check_limits(reader)
    with Reader(runner, "CsvTable") as reader:
        fill(reader.folder / "a.db").close()
        message = reader.failure(reader.folder / "a.db")
        assert "a.db is an SQLite database; use SqliteTable or Table" in message, message


if __name__ == "__main__":
    main(*sys.argv[1:])
