#!/usr/bin/env python3
"""Checks the statistics and checksums of files that ParquetWriter has written, and that their tables are those that it got.

usage: check_parquet_writer.py VELMORAK-RUN
"""

import math
import random
import struct
import sys
import zlib

from columnar_files import Parquet
from columnar_types import Leaf, List, random_groups, table_columns
from check_columnar import compare
from roundtrip import Copier, Reader

GROUP = 131072


class Thrift:
    """Reads structures as dictionaries of their fields by number."""

    def __init__(self, content, place):
        self.content, self.place = content, place

    def byte(self):
        self.place += 1
        return self.content[self.place - 1]

    def varint(self):
        number = shift = 0
        while True:
            byte = self.byte()
            number |= (byte & 0x7F) << shift
            shift += 7
            if byte < 0x80:
                return number

    def integer(self):
        number = self.varint()
        return (number >> 1) ^ -(number & 1)

    def binary(self):
        length = self.varint()
        self.place += length
        return self.content[self.place - length:self.place]

    def several(self):
        head = self.byte()
        count = head >> 4 if head >> 4 < 15 else self.varint()
        return [self.value(head & 15) for _ in range(count)]

    def value(self, kind):
        if kind in (1, 2):
            return kind == 1
        if kind in (4, 5, 6):
            return self.integer()
        return {8: self.binary, 9: self.several, 12: self.struct}[kind]()

    def struct(self):
        fields, number = {}, 0
        while head := self.byte():
            number = number + (head >> 4) if head >> 4 else self.integer()
            fields[number] = self.value(head & 15)
        return fields


def check_pages(content, chunk):
    place = chunk.get(11, chunk[9])
    end, values = place + chunk[7], 0
    while place < end:
        reader = Thrift(content, place)
        header = reader.struct()
        page = content[reader.place:reader.place + header[3]]
        assert header[4] & 0xFFFFFFFF == zlib.crc32(page), "a checksum is wrong"
        values += header[5][1] if header[1] == 0 else header[8][1] if header[1] == 3 else 0
        place = reader.place + header[3]
    assert place == end and values == chunk[5], (place, end, values, chunk[5])


def limits(chunk):
    def decoded(stored):
        return stored.decode() if chunk[1] == 6 else bool(stored[0]) if chunk[1] == 0 else struct.unpack(
            "<d" if chunk[1] == 5 else "<q", stored)[0]
    statistics = chunk[12]
    return statistics[3], *(decoded(statistics[i]) if i in statistics else None for i in (6, 5))


def check_statistics(chunk, rows, is_list):
    values = [value for row in rows for value in row] if is_list else rows
    numbers = [value for value in values if value == value]
    empty, low, high = limits(chunk)
    assert empty == (sum(not row for row in rows) if is_list else 0), (empty, chunk[3])
    # Texts are in the order of their bytes.
    key = (lambda value: value.encode()) if chunk[1] == 6 else None
    assert (low, high) == (min(numbers, key=key, default=None), max(numbers, key=key, default=None)), (low, high, chunk[3])
    if chunk[1] == 5 and low == 0.0:
        assert math.copysign(1.0, low) < 0.0
    if chunk[1] == 5 and high == 0.0:
        assert math.copysign(1.0, high) > 0.0


def check_file(content, types, columns):
    footer = Thrift(content, len(content) - 8 - struct.unpack("<I", content[-8:-4])[0]).struct()
    first = 0
    assert content[:4] == content[-4:] == b"PAR1"
    for group in footer[4]:
        rows = group[3]
        for (name, kind), chunk in zip(types.items(), group[1]):
            assert chunk[3][3][0].decode() == name and chunk[3][4] == 6, chunk
            check_pages(content, chunk[3])
            check_statistics(chunk[3], columns[name][first:first + rows], isinstance(kind, List))
        first += rows
    assert first == footer[3] == len(next(iter(columns.values())))
    return [group[3] for group in footer[4]]


def leaf(generator, kind):
    made = Leaf(generator, optional=False)
    made.kind = kind
    return made


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = random.Random(seed)
    types = {kind: leaf(generator, kind) for kind in ("real", "long", "truth", "text")}
    types["reals"] = List(generator, leaf(generator, "real"), has_bare=False)
    types["words"] = List(generator, leaf(generator, "text"), has_bare=False)
    for kind in (types["reals"], types["words"]):
        kind.length, kind.optional = None, False
    with Copier(runner, "ParquetTable", "ParquetWriter") as copier, Reader(runner, "ParquetTable") as reader:
        for rows in ([], [7], [GROUP, 9000]):
            groups = random_groups(generator, types, rows)
            (copier.folder / "in.parquet").write_bytes(Parquet(generator).file(types, groups))
            columns = table_columns(types, groups, set())
            copy = copier.copy("in.parquet", "out.parquet")
            assert check_file(copy.read_bytes(), types, columns) == rows
            compare(reader.columns(copy), columns, rows)


if __name__ == "__main__":
    main(*sys.argv[1:])
