#!/usr/bin/python3
"""Checks that NumpyTable reads what NumPy has written, to the last bit.

usage: check_numpy.py VELMORAK-RUN
"""

import random
import sys

try:
    import numpy as np
except ImportError:
    print("skipped: NumPy is not installed")
    sys.exit(77)

from roundtrip import Reader, compare

NUMBERS = ["f2", "f4", "f8", "i1", "i2", "i4", "i8", "u1", "u2", "u4"]


def values_of(array):
    """Python values of an array with one dimension, as the reader gives them."""
    kind = array.dtype.kind
    if kind in "SU":
        return [value.decode("latin-1") if isinstance(value, bytes) else str(value) for value in array]
    if kind == "f":
        return [float(value) for value in array.astype("f8")]
    if kind == "b":
        return [bool(value) for value in array]
    return [int(value) for value in array]


def random_array(generator, code, shape):
    count = int(np.prod(shape))
    kind = code[-2]
    if kind == "f":
        bits = generator.integers(0, 256, count * int(code[-1]), dtype="u1").tobytes()
        return np.frombuffer(bits, "<" + code[-2:]).astype(code).reshape(shape)
    limits = np.iinfo(code[-2:])
    return generator.integers(limits.min, limits.max, count, dtype=code[-2:], endpoint=True).astype(code).reshape(shape)


def check_arrays(reader, generator):
    """One and two dimensions, both byte orders and both orders of the indices."""
    for i in range(24):
        code = generator.choice(["<", ">"]) + str(generator.choice(NUMBERS))
        rows = int(generator.choice([0, 1, 7, 1000, 70000]))
        array = random_array(generator, code, rows)
        np.save(reader.folder / "a.npy", array)
        compare(reader.columns(reader.folder / "a.npy"), {"value": values_of(array)})
        array = random_array(generator, code, (rows % 5000, int(generator.integers(1, 6))))
        np.save(reader.folder / "b.npy", np.asfortranarray(array) if i % 2 else array)
        compare(reader.columns(reader.folder / "b.npy"),
                {f"c{j + 1}": values_of(array[:, j]) for j in range(array.shape[1])})


def random_records(generator, rows):
    fields = []
    for j in range(int(generator.integers(1, 9))):
        code = generator.choice(["<", ">"]) + str(generator.choice(NUMBERS))
        fields.append((f"x{j}", code) if generator.random() < 0.7 else (f"x{j}", code, (int(generator.integers(1, 4)),)))
    fields += [("flag", "?"), ("name", "U5"), ("bytes", "S4"), ("in", [("a", "<i4"), ("b", ">f8")])]
    records = np.zeros(rows, np.dtype(fields, align=bool(generator.integers(2))))
    for name, *_ in fields[:-4]:
        records[name] = random_array(generator, records.dtype[name].base.str, records[name].shape)
    records["flag"] = generator.integers(0, 2, rows)
    words = ["", "a", "äöü", "five5", "\U0001f600x", "日本"]
    records["name"] = [words[i] for i in generator.integers(0, len(words), rows)]
    records["bytes"] = [words[i].encode("latin-1", "ignore")[:4] for i in generator.integers(0, len(words), rows)]
    records["in"]["a"] = generator.integers(-9, 9, rows)
    records["in"]["b"] = generator.normal(size=rows)
    return records


def expected_of(records):
    expected = {}
    for name in records.dtype.names:
        column = records[name]
        if column.dtype.names:
            expected.update({f"{name}.{inner}": values_of(column[inner]) for inner in column.dtype.names})
        elif column.ndim == 2:
            expected[name] = [values_of(row) for row in column]
        else:
            expected[name] = values_of(column)
    return expected


def check_records(reader, generator):
    for rows in (0, 1, 100, 40000):
        for _ in range(3):
            records = random_records(generator, rows)
            np.save(reader.folder / "r.npy", records)
            compare(reader.columns(reader.folder / "r.npy"), expected_of(records))
    wanted = list(expected_of(records))[::-2]
    found = reader.columns(reader.folder / "r.npy", columns=" ".join(f"`{name}`" for name in wanted))
    compare(found, {name: expected_of(records)[name] for name in wanted})


def check_archives(reader, generator):
    x, n = generator.normal(size=50000), generator.integers(-5, 5, 50000)
    matrix = generator.normal(size=(50000, 2))
    for save in (np.savez, np.savez_compressed):
        for order in (np.asarray, np.asfortranarray):
            save(reader.folder / "a.npz", x=x, n=n, m=order(matrix))
            expected = {"x": values_of(x), "n": values_of(n), "m_1": values_of(matrix[:, 0]),
                        "m_2": values_of(matrix[:, 1])}
            compare(reader.columns(reader.folder / "a.npz"), expected)
            compare(reader.columns(reader.folder / "a.npz", columns="m_2, x"),
                    {"m_2": expected["m_2"], "x": expected["x"]})
            compare(reader.columns(reader.folder / "a.npz", object="m"),
                    {"c1": expected["m_1"], "c2": expected["m_2"]})
    looked = reader.look(reader.folder / "a.npz")
    assert [(each["path"], each["rows"]) for each in looked["objects"]] == [("x", 50000), ("n", 50000), ("m", 50000)]
    np.savez(reader.folder / "b.npz", x=x, y=x[:10])
    message = reader.failure(reader.folder / "b.npz")
    assert 'arrays of different lengths; enter the name of one: "x (50000)", "y (10)"' in message, message
    message = reader.failure(reader.folder / "b.npz", object="z")
    assert 'contains no array "z"; it contains "x", "y"' in message, message


def check_times(reader):
    moments = np.array(["2024-02-29T12:00:00.25", "NaT", "1969-12-31T23:59:59"], "M8[ms]")
    np.save(reader.folder / "t.npy", moments)
    compare(reader.columns(reader.folder / "t.npy"), {"value": [1709208000.25, float("nan"), -1.0]})
    np.save(reader.folder / "t.npy", np.array(["2024-03", "1960-01", "NaT"], ">M8[M]"))
    compare(reader.columns(reader.folder / "t.npy"), {"value": [1709251200.0, -315619200.0, float("nan")]})
    np.save(reader.folder / "t.npy", np.array([3, -1], "m8[25us]"))
    compare(reader.columns(reader.folder / "t.npy"), {"value": [75e-6, -25e-6]})


def check_others(reader):
    np.save(reader.folder / "c.npy", np.array([1 + 2j, -0.5j], ">c8"))
    compare(reader.columns(reader.folder / "c.npy"), {"value.real": [1.0, -0.0], "value.imag": [2.0, -0.5]})
    np.save(reader.folder / "c.npy", np.asfortranarray([[1 + 2j, 3], [4, 5j]]))
    compare(reader.columns(reader.folder / "c.npy"),
            {"c1.real": [1.0, 4.0], "c1.imag": [2.0, 0.0], "c2.real": [3.0, 0.0], "c2.imag": [0.0, 5.0]})
    np.save(reader.folder / "c.npy", np.array(2.5))
    compare(reader.columns(reader.folder / "c.npy"), {"value": [2.5]})
    np.save(reader.folder / "c.npy", np.zeros((2, 3, 4)))
    message = reader.failure(reader.folder / "c.npy")
    assert "c.npy: it has 3 dimensions; a table has one or two" in message, message
    records = np.zeros(3, [("x", "f8"), ("o", "O"), ("l", "f16")])
    np.save(reader.folder / "o.npy", records, allow_pickle=True)
    message = reader.failure(reader.folder / "o.npy")
    assert "it holds Python objects, which are not read" in message, message
    np.save(reader.folder / "o.npy", np.zeros(3, [("x", "f8"), ("l", "f16")]))
    compare(reader.columns(reader.folder / "o.npy"), {"x": [0.0] * 3})
    message = reader.failure(reader.folder / "o.npy", columns="l")
    assert 'the column "l" cannot be read: numbers of 16 bytes are not read' in message, message


def check_many(reader):
    for i in range(3):
        np.save(reader.folder / f"run_{i}.npy", np.arange(3.0) + 10 * i)
    found = reader.columns(reader.folder / "run_*.npy", file_columns="yes")
    compare({"value": found["value"]}, {"value": [0.0, 1.0, 2.0, 10.0, 11.0, 12.0, 20.0, 21.0, 22.0]})
    assert found["file_number"] == ["0"] * 3 + ["1"] * 3 + ["2"] * 3, found


def check_damage(reader):
    np.save(reader.folder / "d.npy", np.arange(100000.0))
    whole = (reader.folder / "d.npy").read_bytes()
    (reader.folder / "d.npy").write_bytes(whole[:-9])
    message = reader.failure(reader.folder / "d.npy")
    assert "the header announces 800000 bytes of data, but there are 799991; it was cut off" in message, message
    np.savez_compressed(reader.folder / "d.npz", x=np.random.default_rng(1).normal(size=100000))
    whole = bytearray((reader.folder / "d.npz").read_bytes())
    whole[len(whole) // 2] ^= 1
    (reader.folder / "d.npz").write_bytes(whole)
    message = reader.failure(reader.folder / "d.npz")
    assert 'd.npz is a damaged archive: ' in message and '"x.npy"' in message, message
    (reader.folder / "d.npz").write_bytes(whole[:-30])
    message = reader.failure(reader.folder / "d.npz")
    assert "its list of contents is missing; it was cut off" in message, message


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = np.random.default_rng(seed)
    with Reader(runner, "NumpyTable") as reader:
        check_arrays(reader, generator)
        check_records(reader, generator)
        check_archives(reader, generator)
        check_times(reader)
        check_others(reader)
        check_many(reader)
        check_damage(reader)
    with Reader(runner, "Table") as reader:
        np.savez(reader.folder / "a.npz", x=np.arange(3))
        compare(reader.columns(reader.folder / "a.npz"), {"x": [0, 1, 2]})
    with Reader(runner, "CsvTable") as reader:
        np.savez(reader.folder / "a.npz", x=np.arange(3))
        message = reader.failure(reader.folder / "a.npz")
        assert "a.npz is a NumPy file; use NumpyTable or Table" in message, message


if __name__ == "__main__":
    main(*sys.argv[1:])
