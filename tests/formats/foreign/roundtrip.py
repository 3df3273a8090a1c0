"""Reads tables with velmorak-run, so that other libraries can be compared with it to the last bit."""

import csv
import json
import math
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from pipelines import Place, plugin  # noqa: E402


class Reader:
    """Reads files of one kind by way of CsvWriter, which writes reals exactly."""

    def __init__(self, runner, kind):
        self.place = Place(runner)
        self.kind = kind

    def __enter__(self):
        self.place.__enter__()
        self.folder = self.place.folder
        self.place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        return self

    def __exit__(self, *_):
        self.place.__exit__()

    def run(self, file, threads=2, **inputs):
        document = self.place.document(
            plugin("Table", self.kind, file=str(file), **inputs),
            plugin("Rows", "CsvWriter", object=["Table", "table"], file="rows.csv"))
        return self.place.run("-j", str(threads), document)

    def columns(self, file, **inputs):
        """The columns as lists of texts."""
        done = self.run(file, **inputs)
        assert done.returncode == 0, done.stderr
        self.messages = done.stderr
        with open(self.folder / "test.results" / "rows.csv", newline="", encoding="utf-8") as stream:
            rows = list(csv.reader(stream))
        return {name: [row[i] for row in rows[1:]] for i, name in enumerate(rows[0])}

    def failure(self, file, **inputs):
        done = self.run(file, **inputs)
        assert done.returncode == 2, (done.returncode, done.stderr)
        return done.stderr

    def look(self, file):
        done = self.place.run("--look", str(file), "--json")
        assert done.returncode == 0, done.stderr
        return json.loads(done.stdout)


class Copier:
    """Reads a file with one kind and writes its table with another."""

    def __init__(self, runner, reader, writer):
        self.place = Place(runner)
        self.kinds = reader, writer

    def __enter__(self):
        self.place.__enter__()
        self.folder = self.place.folder
        self.place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        return self

    def __exit__(self, *_):
        self.place.__exit__()

    def run(self, source, target, threads=2, **inputs):
        document = self.place.document(
            plugin("Table", self.kinds[0], file=str(self.folder / source)),
            plugin("Copy", self.kinds[1], table=["Table", "table"], file=target, **inputs))
        return self.place.run("-j", str(threads), document)

    def copy(self, source, target, threads=2, **inputs):
        """@return the path of the copy."""
        done = self.run(source, target, threads, **inputs)
        assert done.returncode == 0, done.stderr
        return self.folder / "test.results" / target

    def failure(self, source, target, **inputs):
        done = self.run(source, target, **inputs)
        assert done.returncode == 2, (done.returncode, done.stderr)
        return done.stderr


def same(text, value):
    """Whether a field has the value, to the last bit."""
    if isinstance(value, bool):
        return text == ("true" if value else "false")
    if isinstance(value, float):
        number = float(text)
        return (math.isnan(number) and math.isnan(value)) or (
            number == value and math.copysign(1, number) == math.copysign(1, value))
    if isinstance(value, int):
        return int(text) == value
    if isinstance(value, list):
        words = text.split(" ") if text else []
        return len(words) == len(value) and all(same(word, each) for word, each in zip(words, value))
    return text == value


def compare(found, expected):
    """@param expected lists of Python values by column."""
    assert list(found) == list(expected), (list(found), list(expected))
    for name, values in expected.items():
        assert len(found[name]) == len(values), (name, len(found[name]), len(values))
        for row, value in enumerate(values):
            assert same(found[name][row], value), (name, row, found[name][row], value)
