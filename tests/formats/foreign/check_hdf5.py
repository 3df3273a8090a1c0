#!/usr/bin/python3
"""Checks that Hdf5Table reads what h5py and pandas have written, to the last bit.

usage: check_hdf5.py VELMORAK-RUN
"""

import random
import sys
import warnings

try:
    import h5py
    import numpy as np
except ImportError:
    print("skipped: h5py is not installed")
    sys.exit(77)

from check_numpy import NUMBERS, expected_of, random_array, values_of
from roundtrip import Reader, compare

PACKINGS = [
    {},
    {"chunks": (1000,)},
    {"chunks": (777,), "compression": "gzip"},
    {"chunks": (4096,), "compression": "gzip", "shuffle": True},
    {"chunks": (100,), "shuffle": True},
    {"chunks": (5000,), "fletcher32": True},
    {"chunks": (5000,), "compression": "gzip", "fletcher32": True, "shuffle": True},
    {"chunks": (900,), "scaleoffset": 0},
    {"chunks": (900,), "compression": "lzf"},
]


def check_datasets(reader, generator):
    """Numbers of every type, in both byte orders, packed in every way."""
    file = reader.folder / "a.h5"
    for i in range(24):
        code = generator.choice(["<", ">"]) + str(generator.choice(NUMBERS))
        rows = int(generator.choice([1, 7, 1000, 70000]))
        packing = PACKINGS[i % 7]
        with h5py.File(file, "w") as out:
            array = random_array(generator, code, rows)
            out.create_dataset("x", data=array, maxshape=(None,) if packing else None, **packing)
        compare(reader.columns(file), {"value": values_of(array)})
    for i in range(6):
        array = random_array(generator, ">f4" if i % 2 else "<i8", (3000, 3))
        with h5py.File(file, "w") as out:
            dataset = out.create_dataset("x", data=array, chunks=(500, 3 if i < 3 else 2), compression="gzip", shuffle=True)
            if i % 3 == 0:
                dataset.attrs["columns"] = ["px", "py", "pz"]
                dataset.attrs["units"] = ["GeV", "MeV", "keV"]
        names = ["px", "py", "pz"] if i % 3 == 0 else ["c1", "c2", "c3"]
        compare(reader.columns(file, object="x"), {name: values_of(array[:, j]) for j, name in enumerate(names)})
    with h5py.File(file, "w") as out:
        out.create_dataset("x", data=np.arange(10000), **PACKINGS[7])
    compare(reader.columns(file), {"value": list(range(10000))})


def check_empty_and_unwritten(reader):
    file = reader.folder / "e.h5"
    with h5py.File(file, "w") as out:
        out.create_dataset("none", shape=(0,), dtype="f8", maxshape=(None,), chunks=(10,))
        out.create_dataset("fill", shape=(1000,), dtype=">i4", chunks=(100,), fillvalue=-7, compression="gzip")
        out["fill"][250:300] = 5
        out["scalar"] = 3.5
        out.create_dataset("null", data=h5py.Empty("f8"))
    compare(reader.columns(file, object="none"), {"value": []})
    compare(reader.columns(file, object="fill"), {"value": [-7] * 250 + [5] * 50 + [-7] * 700})
    looked = {each["path"]: each for each in reader.look(file)["objects"]}
    assert not looked["scalar"]["table"] and not looked["null"]["table"], looked


def compound(generator, rows):
    records = np.zeros(rows, [("run", "<i4"), ("E", ">f8"), ("ok", "?"), ("name", "S6"), ("p", "<f4", (3,)),
                              ("in", [("a", "u1"), ("b", ">i2")])])
    for name in ("run", "E", "p"):
        records[name] = random_array(generator, records.dtype[name].base.str, records[name].shape)
    records["ok"] = generator.integers(0, 2, rows)
    records["name"] = [[b"", b"mu", b"pi\xb1", b"sixsix"][i] for i in generator.integers(0, 4, rows)]
    records["in"]["b"] = generator.integers(-99, 99, rows)
    return records


def check_compounds(reader, generator):
    file = reader.folder / "c.h5"
    for packing in PACKINGS[:7]:
        records = compound(generator, 6000)
        with h5py.File(file, "w") as out:
            out.create_dataset("run1/events", data=records, **packing)
        compare(reader.columns(file, object="/run1/events"), expected_of(records))
    compare(reader.columns(file, columns="p, run"), {name: expected_of(records)[name] for name in ("p", "run")})
    looked = reader.look(file)["objects"]
    assert [(each["path"], each["rows"]) for each in looked] == [("run1/events", 6000)], looked


def check_groups(reader, generator):
    file = reader.folder / "g.h5"
    rows = 5000
    x, n = generator.normal(size=rows), generator.integers(-5, 5, rows)
    hits = generator.normal(size=(rows, 2))
    lists = [generator.integers(0, 100, k) for k in generator.integers(0, 5, rows)]
    words = ["é" * k for k in generator.integers(0, 4, rows)]
    with h5py.File(file, "w") as out:
        group = out.create_group("data")
        group.create_dataset("x", data=x, chunks=(512,), compression="gzip").attrs["units"] = "GeV"
        group["n"] = n
        group["hits"] = hits
        ragged = group.create_dataset("ragged", (rows,), h5py.vlen_dtype(np.dtype(">i2")))
        for i, each in enumerate(lists):
            ragged[i] = each
        group.create_dataset("word", data=words, dtype=h5py.string_dtype())
        group.create_dataset("flag", data=n > 0)
        out["remark"] = "taken in 2024"
    expected = {"flag": values_of(n > 0), "hits": [values_of(row) for row in hits], "n": values_of(n),
                "ragged": [values_of(each) for each in lists], "word": words, "x": values_of(x)}
    compare(reader.columns(file), expected)
    compare(reader.columns(file, object="data/ragged"), {"value": expected["ragged"]})
    looked = {each["path"]: each for each in reader.look(file)["objects"]}
    assert looked["remark"]["description"] == "a single value", looked["remark"]
    assert (looked["data"]["type"], looked["data"]["rows"]) == ("group", rows), looked["data"]
    assert [each["unit"] for each in looked["data"]["columns"] if each["name"] == "x"] == ["GeV"], looked["data"]
    with h5py.File(file, "a") as out:
        out["data/short"] = [1]
        out["data/linked"] = h5py.SoftLink("/data/x")
        out["data/outside"] = h5py.ExternalLink("other.h5", "x")
    message = reader.failure(file)
    assert 'contains several tables; enter the path of one: "data/flag", "data/hits"' in message, message
    message = reader.failure(file, object="data")
    assert 'contains no table "data"; it contains "data/flag"' in message, message


def check_mixed_compound(reader):
    """Members that are stored apart among others that are not."""
    file = reader.folder / "m.h5"
    kind = np.dtype([("x", ">f8"), ("name", h5py.string_dtype()), ("l", h5py.vlen_dtype("f4")), ("n", "i2")])
    rows = [(0.5, "a", np.array([1, 2], "f4"), 1), (1.5, "", np.array([], "f4"), 2), (2.5, "ccc", np.array([3], "f4"), 3)]
    for chunks in (None, (2,)):
        with h5py.File(file, "w") as out:
            out.create_dataset("t", (3,), kind, chunks=chunks)
            for i, row in enumerate(rows):
                out["t"][i] = row
        compare(reader.columns(file), {"x": [0.5, 1.5, 2.5], "name": ["a", "", "ccc"],
                                       "l": [[1.0, 2.0], [], [3.0]], "n": [1, 2, 3]})


def check_pandas(reader, generator):
    try:
        import pandas
        import tables  # noqa: F401
    except ImportError:
        print("pandas frames are not checked: pandas or PyTables is not installed")
        return
    file = reader.folder / "p.h5"
    rows = 3000
    frame = pandas.DataFrame({"x": generator.normal(size=rows), "n": generator.integers(-9, 9, rows),
                              "y": generator.normal(size=rows), "ok": generator.integers(0, 2, rows) > 0})
    frame.index = frame.index * 2
    expected = {"index": [2 * i for i in range(rows)], **{name: values_of(frame[name].to_numpy()) for name in frame}}
    for settings in ({"format": "fixed"}, {"format": "table"}, {"format": "table", "complevel": 4},
                     {"format": "table", "data_columns": ["n"]}):
        frame.to_hdf(file, "events", mode="w", **settings)
        found = reader.columns(file)
        compare({name: found[name] for name in expected}, expected)
        assert set(found) == set(expected), list(found)
        if settings["format"] == "fixed":
            assert list(found) == list(expected), list(found)
    frame["word"] = ["mu", "e", "τ"] * (rows // 3)
    frame.to_hdf(file, "events", mode="w", format="table")
    assert reader.columns(file)["word"] == list(frame["word"])
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        frame.to_hdf(file, "events", mode="w", format="fixed")
    found = reader.columns(file)
    assert "word" not in found and found["x"], list(found)
    assert 'the column "word" is left out: pandas has stored it as Python objects' in reader.messages, reader.messages


def check_refusals(reader):
    file = reader.folder / "r.h5"
    with h5py.File(file, "w") as out:
        out.create_dataset("x", data=np.arange(1000.0), **PACKINGS[8])
    message = reader.failure(file, object="x")
    assert 'packed by the filter LZF 32000, which is not installed; repack the file with gzip' in message, message
    with h5py.File(file, "w") as out:
        out.create_dataset("x", data=np.arange(5000.0), chunks=(1000,), compression="gzip")
        position = out["x"].id.get_chunk_info(3).byte_offset
    bytes_ = bytearray(file.read_bytes())
    bytes_[position + 300] ^= 0x55
    bytes_[position:position + 2] = b"\0\0"
    file.write_bytes(bytes_)
    message = reader.failure(file)
    assert 'r.h5, dataset "x", rows from 3000: its packed bytes are damaged' in message, message
    file.write_bytes(bytes_[:3000])
    message = reader.failure(file)
    assert "r.h5 cannot be opened: " in message and "truncated" in message, message
    with h5py.File(file, "w") as out:
        out["a"] = np.zeros((2, 3, 4))
    message = reader.failure(file, object="a")
    assert 'it has 3 dimensions; a table has one or two' in message, message


def check_large_chunks(reader):
    """Packed chunks are in memory as a whole: of 1.0 GB at most. Those that are not packed are read in parts."""
    file = reader.folder / "c.h5"
    for packing in {"compression": "gzip"}, {"shuffle": True}, {}:
        with h5py.File(file, "w") as out:
            out.create_dataset("x", shape=(10,), maxshape=(None,), dtype="<f8", chunks=(200_000_000,), **packing)
        if packing:
            message = reader.failure(file, object="x")
            assert "its packed chunks have 1.6 GB each, and 1.0 GB are the most" in message, message
        else:
            compare(reader.columns(file, object="x"), {"value": [0.0] * 10})


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = np.random.default_rng(seed)
    with Reader(runner, "Hdf5Table") as reader:
        check_datasets(reader, generator)
        check_empty_and_unwritten(reader)
        check_compounds(reader, generator)
        check_groups(reader, generator)
        check_mixed_compound(reader)
        check_pandas(reader, generator)
        check_refusals(reader)
        check_large_chunks(reader)
    with Reader(runner, "CsvTable") as reader:
        with h5py.File(reader.folder / "a.h5", "w") as out:
            out["x"] = [1]
        message = reader.failure(reader.folder / "a.h5")
        assert "a.h5 is an HDF5 file; use Hdf5Table or Table" in message, message


if __name__ == "__main__":
    main(*sys.argv[1:])
