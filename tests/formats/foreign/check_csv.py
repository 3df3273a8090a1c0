#!/usr/bin/python3
"""Checks that CsvTable reads random text files to the last bit, as pandas does: delimiters, quotes, comments, line ends,
missing values, lists of types, signs of numbers, encodings, compression.

usage: check_csv.py VELMORAK-RUN
"""

import bz2
import csv
import gzip
import io
import math
import random
import sys

try:
    import pandas
except ImportError:
    print("skipped: pandas is not installed")
    sys.exit(77)

from roundtrip import Reader, compare

DELIMITERS = {"comma": ",", "semicolon": ";", "tabulator": "\t", "bar": "|"}
WORDS = ["a", "äöü", "two words", "it's \"quoted\"", "x,y;z|t\tu", "line\nbreak", " blanks ", "# no comment", "1.5e", "-", "NAN?"]
THOUSANDS = {"none": "", "comma": ",", "point": ".", "apostrophe": "'"}


class Dialect:
    def __init__(self, generator):
        self.delimiter = generator.choice(list(DELIMITERS))
        self.decimal = generator.choice(["point", "point", "comma"])
        sign = {"point": ".", "comma": ","}[self.decimal]
        self.thousands = generator.choice([name for name, text in THOUSANDS.items() if text != sign and name != "comma"] or ["none"])
        if generator.random() < 0.6:
            self.thousands = "none"
        self.missing = generator.choice(["NA", "-999", "n/a"])
        self.encoding = generator.choice(["utf-8", "utf-8", "utf-8-sig", "utf-16-le", "iso-8859-1"])
        self.end = generator.choice(["\n", "\n", "\r\n"])
        self.packing = generator.choice([None, None, gzip.compress, bz2.compress])
        self.has_units = generator.random() < 0.2
        self.is_last_line_open = generator.random() < 0.3

    def inputs(self):
        return {"delimiter": self.delimiter, "decimal": self.decimal, "thousands": self.thousands, "missing": self.missing,
                "header": "names and units" if self.has_units else "yes",
                "encoding": {"iso-8859-1": "ISO-8859-1"}.get(self.encoding, "auto")}

    def bytes(self, text):
        mark = b"\xff\xfe" if self.encoding == "utf-16-le" else b""
        content = mark + text.encode(self.encoding)
        return self.packing(content) if self.packing else content


def digits(generator, value, dialect):
    """A number in one of the ways to write it that give it back to the last bit."""
    if isinstance(value, int):
        text = "{:,}".format(value) if dialect.thousands != "none" and generator.random() < 0.5 else str(value)
    else:
        text = generator.choice([repr(value), "%.17e" % value, "%+.17g" % value])
    text = text.replace(",", "\0").replace(".", {"point": ".", "comma": ","}[dialect.decimal])
    return text.replace("\0", THOUSANDS[dialect.thousands])


class Column:
    def __init__(self, generator, name):
        self.name = name
        self.kind = generator.choice(["real", "integer", "boolean", "text"])
        self.has_missing = generator.random() < 0.4 and self.kind in ("real", "integer", "text")

    def value(self, generator):
        if self.has_missing and generator.random() < 0.2:
            return None
        if self.kind == "real":
            return generator.choice([0.0, -0.0, generator.gauss(0, 1), generator.uniform(-1, 1) * 1e300, 5e-324, 0.1,
                                     generator.uniform(-1, 1) * 1e-310, float(generator.randrange(-99, 99))])
        if self.kind == "integer":
            return generator.choice([0, generator.randrange(-99, 99), 2**53 if self.has_missing else 2**63 - 1,
                                     generator.randrange(-2**53, 2**53)])
        return generator.random() < 0.5 if self.kind == "boolean" else generator.choice(WORDS)

    def field(self, generator, value, dialect):
        """The text of a field, and whether it must be in quotes."""
        if value is None:
            return generator.choice(["", dialect.missing]), False
        if self.kind == "boolean":
            return str(value).lower(), False
        if self.kind == "text":
            return value, True
        return digits(generator, value, dialect), False

    def expected(self, values):
        if self.kind == "text":
            return ["" if value is None else value for value in values]
        if self.kind == "integer" and any(value is None for value in values):
            return [math.nan if value is None else float(value) for value in values]
        return [math.nan if value is None else value for value in values]


def quoted(text):
    return '"' + text.replace('"', '""') + '"'


def lines_of(generator, columns, rows, dialect):
    delimiter = DELIMITERS[dialect.delimiter]
    lines = [delimiter.join(column.name for column in columns)]
    if dialect.has_units:
        lines.append(delimiter.join(generator.choice(["GeV", "[cm]", "(s)", ""]) or '""' for _ in columns))
    for row in rows:
        if generator.random() < 0.05:
            lines.append(generator.choice(["# a comment, with \"signs", "#"]))
        fields = []
        for column, value in zip(columns, row):
            text, is_text = column.field(generator, value, dialect)
            needs_quotes = is_text or delimiter in text
            fields.append(quoted(text) if needs_quotes else text)
        lines.append(delimiter.join(fields))
    return lines


def usable(columns, rows):
    """Each column has values that decide its type; a lone empty field would be an empty line."""
    for i, column in enumerate(columns):
        values = [row[i] for row in rows]
        if column.kind == "real" and all(value is None or value == int(value) for value in values if value is None or abs(value) < 1e15):
            return False
        if all(value is None for value in values):
            return False
    return len(columns) > 1


def random_file(generator):
    while True:
        dialect = Dialect(generator)
        columns = [Column(generator, "c%d" % i) for i in range(generator.randrange(2, 7))]
        rows = [[column.value(generator) for column in columns] for _ in range(generator.choice([5, 40, 300]))]
        has_quoted_numbers = DELIMITERS[dialect.delimiter] in (
            {"point": ".", "comma": ","}[dialect.decimal], THOUSANDS[dialect.thousands])
        if usable(columns, rows) and not (has_quoted_numbers and dialect.thousands != "none"):
            return dialect, columns, rows


def pandas_agrees(text, dialect, columns, rows):
    """The oracle itself is held against pandas."""
    frame = pandas.read_csv(io.StringIO("\n".join(text)), sep=DELIMITERS[dialect.delimiter], dtype=str, comment=None,
                            keep_default_na=False, skiprows=[1] if dialect.has_units else [], skip_blank_lines=True)
    frame = frame[[not str(value).startswith("#") for value in frame["c0"]]] if columns[0].kind != "text" else frame
    for i, column in enumerate(columns):
        if column.kind == "real" and dialect.decimal == "point" and columns[0].kind != "text":
            found = [float(value) for value in frame[column.name] if value not in ("", dialect.missing)]
            assert found == [row[i] for row in rows if row[i] is not None], column.name


def check_file(reader, generator):
    dialect, columns, rows = random_file(generator)
    lines = lines_of(generator, columns, rows, dialect)
    if not any(line.startswith("#") for line in lines):
        pandas_agrees(lines, dialect, columns, rows)
    text = dialect.end.join(lines) + ("" if dialect.is_last_line_open else dialect.end)
    file = reader.folder / "t.csv"
    file.write_bytes(dialect.bytes(text))
    found = reader.columns(file, **dialect.inputs())
    try:
        compare(found, {column.name: column.expected([row[i] for row in rows]) for i, column in enumerate(columns)})
    except (AssertionError, ValueError) as failure:
        raise AssertionError(vars(dialect), [vars(column) for column in columns], lines[:6]) from failure


def main(runner):
    csv.field_size_limit(10**7)
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = random.Random(seed)
    with Reader(runner, "CsvTable") as reader:
        for _ in range(60):
            check_file(reader, generator)


if __name__ == "__main__":
    main(*sys.argv[1:])
