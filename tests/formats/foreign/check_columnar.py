#!/usr/bin/env python3
"""Checks that ParquetTable and ArrowTable read random tables to the last bit: lists of lists, maps and structures in each
other, with missing values at every level, NaN, empty lists and tables, none to three row groups or batches.

usage: check_columnar.py VELMORAK-RUN
"""

import random
import resource
import sys

from columnar_files import Arrow, Parquet, endless_arrow, endless_parquet
from columnar_types import large_table, random_table, table_columns
from roundtrip import Reader, same


def is_same(text, value):
    """Texts in a list are compared together, because one may be empty or have blanks."""
    if isinstance(value, list) and any(isinstance(each, str) for each in value):
        return text == " ".join(value)
    return same(text, value)


def compare(found, expected, where):
    assert list(found) == list(expected), (where, list(found), list(expected))
    for name, values in expected.items():
        assert len(found[name]) == len(values), (where, name, len(found[name]), len(values))
        for row, value in enumerate(values):
            assert is_same(found[name][row], value), (where, name, row, found[name][row], value)


def check(reader, generator, ending, write):
    for number in range(40):
        check_table(reader, random_table(generator) if number else large_table(generator), (ending, number), write)


def check_table(reader, table, where, write):
    types, groups = table
    content, reals = write(types, groups)
    file = reader.folder / ("t." + where[0])
    file.write_bytes(content)
    compare(reader.columns(file), table_columns(types, groups, reals), where)


def check_claims(runner):
    """A few bytes say that a list has billions of missing values: it is refused before the memory is taken."""
    for kind, content in (("ParquetTable", endless_parquet()), ("ArrowTable", endless_arrow())):
        with Reader(runner, kind) as reader:
            file = reader.folder / "endless"
            file.write_bytes(content)
            message = reader.failure(file)
            assert "which are too many" in message and "endless" in message, message
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    assert peak < 700_000, peak


def main(runner, seed=None):
    seed = int(seed or random.randrange(2**32))
    print("seed", seed)
    generator = random.Random(seed)

    def parquet(types, groups):
        writer = Parquet(generator)
        return writer.file(types, groups), writer.reals

    def arrow(types, groups):
        writer = Arrow(generator)
        return writer.stream(types, groups), writer.reals

    with Reader(runner, "ParquetTable") as reader:
        check(reader, generator, "parquet", parquet)
    with Reader(runner, "ArrowTable") as reader:
        check(reader, generator, "arrow", arrow)
    check_claims(runner)


if __name__ == "__main__":
    main(*sys.argv[1:])
