#!/usr/bin/env python3
"""Checks that ParquetTable and ArrowTable read random tables to the last bit: missing values, NaN, lists, empty tables, none
to three row groups or batches. The files are written here, by the layouts that the formats document.

usage: check_columnar.py VELMORAK-RUN
"""

import gzip
import math
import pathlib
import random
import struct
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "examples"))
from make_data import Compact, Flat, numbers  # noqa: E402

from roundtrip import Reader, compare

TYPES = {  # Name, numbers of the types in Parquet and Arrow, and how a value is stored.
    "real": (5, 3, "d"), "single": (4, 3, "f"), "long": (2, 2, "q"), "short": (1, 2, "i"), "truth": (0, 6, None),
    "text": (6, 5, None),
}
WORDS = ["", "a", "äöü", "two words", "\U0001f600"]


def single(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def value_of(generator, kind):
    if kind in ("real", "single"):
        value = generator.choice([math.nan, 0.0, -0.0, math.inf, -math.inf, generator.gauss(0.0, 1e3), 1e-40])
        return single(value) if kind == "single" else value
    if kind in ("long", "short"):
        bits = 63 if kind == "long" else 31
        return generator.choice([0, -2**bits, 2**bits - 1, generator.randrange(-99, 99)])
    return generator.random() < 0.5 if kind == "truth" else generator.choice(WORDS)


class Column:
    """Values of a random type: None for a missing one, lists of values in a column of lists."""

    def __init__(self, generator, name):
        self.name = name
        self.kind = generator.choice(list(TYPES))
        self.is_list = generator.random() < 0.3
        self.is_optional = generator.random() < 0.5

    def values(self, generator, rows):
        def one():
            return None if self.is_optional and generator.random() < 0.3 else value_of(generator, self.kind)
        if not self.is_list:
            return [one() for _ in range(rows)]
        return [[one() for _ in range(generator.choice([0, 0, 1, 2, 5]))] for _ in range(rows)]

    def expected(self, values, has_missing):
        """As the table has them: where any value is missing, integers and truths are reals."""
        is_real = self.kind in ("real", "single") or (has_missing and self.kind != "text")

        def one(value):
            if value is None:
                return math.nan if is_real else ""
            return float(value) if is_real else value
        return [[one(each) for each in value] if self.is_list else one(value) for value in values]


def flat(values, is_list):
    return [each for value in values for each in value] if is_list else values


def plain(kind, values):
    """Values that are there, one after the other."""
    if kind == "truth":
        return bits(values)
    if kind == "text":
        return b"".join(numbers("I", [len(value.encode())]) + value.encode() for value in values)
    return numbers(TYPES[kind][2], values)


def bits(truths):
    out = bytearray((len(truths) + 7) // 8)
    for i, truth in enumerate(truths):
        out[i // 8] |= bool(truth) << i % 8
    return bytes(out)


class Parquet(Compact):
    def levels(self, values, most):
        """As runs of equal levels."""
        runs = b""
        last, count = None, 0
        for value in values + [None]:
            if value == last:
                count += 1
                continue
            if count:
                runs += self.varint(2 * count) + bytes([last])
            last, count = value, 1
        return runs if most else b""

    def page(self, column, values, generator):
        """@return the header and the bytes of a page."""
        definition, repetition = [], []
        top = int(column.is_optional) + int(column.is_list)
        for value in values:
            items = value if column.is_list else [value]
            for i, item in enumerate(items):
                repetition.append(int(i > 0))
                definition.append(top - int(item is None))
            if not items:
                repetition.append(0)
                definition.append(0)
        there = [item for item in flat(values, column.is_list) if item is not None]
        parts = [self.levels(repetition, int(column.is_list)), self.levels(definition, top)]
        data = plain(column.kind, there)
        codec = generator.choice([0, 2])
        pack = (lambda content: gzip.compress(content, mtime=0)) if codec else (lambda content: content)
        count = len(definition)
        if generator.random() < 0.5:
            body = b"".join(numbers("I", [len(part)]) + part for part, most in zip(parts, (column.is_list, top)) if most)
            body += data
            packed = pack(body)
            about = [(1, self.INT, count), (2, self.INT, 0), (3, self.INT, 3), (4, self.INT, 3)]
            head = [(1, self.INT, 0), (2, self.INT, len(body)), (3, self.INT, len(packed)), (5, self.STRUCT, about)]
            return codec, count, self.struct(head) + packed, len(self.struct(head)) + len(body)
        levels = b"".join(parts)
        packed = levels + pack(data)
        about = [(1, self.INT, count), (2, self.INT, count - len(there)), (3, self.INT, len(values)), (4, self.INT, 0),
                 (5, self.INT, len(parts[1])), (6, self.INT, len(parts[0]))]
        head = [(1, self.INT, 3), (2, self.INT, len(levels + data)), (3, self.INT, len(packed)), (8, self.STRUCT, about)]
        return codec, count, self.struct(head) + packed, len(self.struct(head)) + len(levels + data)

    def elements(self, column):
        kind = TYPES[column.kind][0]
        leaf = [(1, self.INT, kind), (3, self.INT, int(column.is_optional))]
        text = [(6, self.INT, 0)] if column.kind == "text" else []
        if not column.is_list:
            return [leaf + [(4, self.TEXT, column.name)] + text]
        return [[(3, self.INT, 0), (4, self.TEXT, column.name), (5, self.INT, 1), (6, self.INT, 3)],
                [(3, self.INT, 2), (4, self.TEXT, "list"), (5, self.INT, 1)], leaf + [(4, self.TEXT, "element")] + text]

    def chunk(self, column, values, generator, content):
        codec, count, page, whole = self.page(column, values, generator)
        path = [column.name, "list", "element"] if column.is_list else [column.name]
        place = len(content)
        content += page
        about = [(1, self.INT, TYPES[column.kind][0]), (2, self.LIST, (self.INT, [0, 3])), (3, self.LIST, (self.TEXT, path)),
                 (4, self.INT, codec), (5, self.LONG, count), (6, self.LONG, whole), (7, self.LONG, len(page)),
                 (9, self.LONG, place)]
        missing = sum(item is None for item in flat(values, column.is_list))
        if generator.random() < 0.5:
            about.append((12, self.STRUCT, [(3, self.LONG, missing)]))
        return [(2, self.LONG, place), (3, self.STRUCT, about)]

    def file(self, columns, groups, generator):
        """@param groups values by column of each row group."""
        content = bytearray(b"PAR1")
        written = []
        for values in groups:
            begin, rows = len(content), len(values[columns[0].name])
            chunks = [self.chunk(column, values[column.name], generator, content) for column in columns]
            written.append([(1, self.LIST, (self.STRUCT, chunks)), (2, self.LONG, len(content) - begin), (3, self.LONG, rows)])
        elements = [[(4, self.TEXT, "schema"), (5, self.INT, len(columns))]]
        for column in columns:
            elements += self.elements(column)
        rows = sum(len(values[columns[0].name]) for values in groups)
        footer = self.struct([(1, self.INT, 2), (2, self.LIST, (self.STRUCT, elements)), (3, self.LONG, rows),
                              (4, self.LIST, (self.STRUCT, written))])
        return bytes(content) + footer + numbers("I", [len(footer)]) + b"PAR1"

    def value(self, kind, value):
        if kind == self.LIST and len(value[1]) >= 15:
            item, values = value
            return bytes([0xF0 | item]) + self.varint(len(values)) + b"".join(self.value(item, each) for each in values)
        if kind in (self.INT, self.LONG):
            return self.varint((value << 1) ^ (value >> 63))
        if kind == self.TEXT:
            return self.varint(len(value.encode())) + value.encode()
        return super().value(kind, value)


def arrow_type(kind):
    number = TYPES[kind][1]
    about = {"real": {0: ("h", 2)}, "single": {0: ("h", 1)}, "long": {0: ("i", 64), 1: ("?", True)},
             "short": {0: ("i", 32), 1: ("?", True)}}
    return number, about.get(kind, {})


def arrow_field(column):
    def field(name, kind, about, nullable, children):
        return {0: name, 1: ("?", nullable), 2: ("B", kind), 3: about, 5: children}
    number, about = arrow_type(column.kind)
    leaf = field("item" if column.is_list else column.name, number, about, column.is_optional, [])
    return field(column.name, 12, {}, False, [leaf]) if column.is_list else leaf


class Body:
    def __init__(self):
        self.content, self.buffers, self.nodes = b"", [], []

    def add(self, content):
        self.buffers.append((len(self.content), len(content)))
        self.content += content + bytes(-len(content) % 8)

    def offsets(self, lengths):
        ends = [0]
        for length in lengths:
            ends.append(ends[-1] + length)
        self.add(numbers("i", ends))

    def leaf(self, kind, values, generator):
        missing = sum(value is None for value in values)
        self.nodes.append((len(values), missing))
        has_map = missing or generator.random() < 0.5
        self.add(bits([value is not None for value in values]) if has_map else b"")
        filled = [(("" if kind == "text" else 0) if value is None else value) for value in values]
        if kind == "text":
            self.offsets([len(value.encode()) for value in filled])
            self.add("".join(filled).encode())
        else:
            self.add(plain(kind, filled))

    def column(self, column, values, generator):
        if column.is_list:
            self.nodes.append((len(values), 0))
            self.add(b"")
            self.offsets([len(value) for value in values])
        self.leaf(column.kind, flat(values, column.is_list), generator)


def arrow_message(kind, header, body):
    content = Flat({0: ("h", 4), 1: ("B", kind), 2: header, 3: ("q", len(body))}).out
    return b"\xff\xff\xff\xff" + numbers("I", [len(content)]) + bytes(content) + body


def arrow_stream(columns, batches, generator):
    out = arrow_message(1, {0: ("h", 0), 1: [arrow_field(column) for column in columns]}, b"")
    for values in batches:
        body = Body()
        for column in columns:
            body.column(column, values[column.name], generator)
        rows = len(values[columns[0].name])
        out += arrow_message(3, {0: ("q", rows), 1: body.nodes, 2: body.buffers}, body.content)
    return out + b"\xff\xff\xff\xff\0\0\0\0"


def random_table(generator):
    columns = [Column(generator, "c%d" % i) for i in range(generator.randrange(1, 9))]
    groups = [{column.name: column.values(generator, rows) for column in columns}
              for rows in (generator.choice([0, 1, 3, 40, 1000]) for _ in range(generator.randrange(4)))]
    return columns, groups


def check_parquet(reader, generator):
    for _ in range(25):
        columns, groups = random_table(generator)
        writer = Parquet()
        (reader.folder / "t.parquet").write_bytes(writer.file(columns, groups, generator))
        wanted = {}
        for column in columns:
            values = [value for group in groups for value in group[column.name]]
            wanted[column.name] = (column, values, any(each is None for each in flat(values, column.is_list)))
        found = reader.columns(reader.folder / "t.parquet")
        assert list(found) == [column.name for column in columns], list(found)
        compare_loosely(found, wanted)


def check_arrow(reader, generator):
    for _ in range(25):
        columns, batches = random_table(generator)
        (reader.folder / "t.arrow").write_bytes(arrow_stream(columns, batches, generator))
        wanted = {}
        for column in columns:
            values = [value for batch in batches for value in batch[column.name]]
            wanted[column.name] = (column, values, any(each is None for each in flat(values, column.is_list)))
        compare_loosely(reader.columns(reader.folder / "t.arrow"), wanted)


def compare_loosely(found, wanted):
    """An integer or truth in a column where one may be missing is a real; which columns these are, the reader may decide
    by what the file says, but not between rows."""
    for name, (column, values, has_missing) in wanted.items():
        is_numeric = column.kind in ("long", "short", "truth")
        words = [word for text in found[name] for word in (text.split(" ") if column.is_list else [text]) if word]
        is_real = has_missing or (is_numeric and column.is_optional and any("." in word or word == "NaN" for word in words))
        if column.kind == "text" and column.is_list:
            continue  # Words with blanks cannot be distinguished in the text file.
        compare({name: found[name]}, {name: column.expected(values, is_real)})


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = random.Random(seed)
    with Reader(runner, "ParquetTable") as reader:
        check_parquet(reader, generator)
    with Reader(runner, "ArrowTable") as reader:
        check_arrow(reader, generator)


if __name__ == "__main__":
    main(*sys.argv[1:])
