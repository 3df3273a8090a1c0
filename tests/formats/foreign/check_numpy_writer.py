#!/usr/bin/python3
"""Checks that NumPy reads what NumpyWriter has written, to the last bit, and that NumpyTable does.

usage: check_numpy_writer.py VELMORAK-RUN
"""

import random
import sys

try:
    import numpy as np
except ImportError:
    print("skipped: NumPy is not installed")
    sys.exit(77)

from roundtrip import Copier, Reader, compare

WORDS = ["", "a", "äöü", "five5", "\U0001f600x", "日本", "it's \\ \"quoted\""]


def random_bits(generator, rows):
    """Reals of any bits: numbers, infinities, NaNs with payloads, zeros with both signs."""
    reals = np.frombuffer(generator.integers(0, 256, 8 * rows, dtype="u1").tobytes(), "<f8").copy()
    special = np.array([0.0, -0.0, np.nan, np.inf, -np.inf, 5e-324, 1.0])
    chosen = generator.random(rows) < 0.5
    reals[chosen] = special[generator.integers(0, len(special), rows)[chosen]]
    return reals


def random_lists(generator, rows, values_of):
    """@return the values and where the list of each row begins."""
    offsets = np.zeros(rows + 1, "<i8")
    offsets[1:] = np.cumsum(generator.integers(0, 5, rows))
    return values_of(int(offsets[-1])), offsets


def random_arrays(generator, rows):
    """Arrays of an archive, as NumpyTable reads and NumpyWriter writes them."""
    arrays = {
        "x": random_bits(generator, rows),
        "n": generator.integers(-2**63, 2**63 - 1, rows, dtype="<i8", endpoint=True),
        "good": generator.integers(0, 2, rows).astype("?"),
        "näme's \\ \"x\"": generator.integers(0, 9, rows).astype("<i8"),
        "word": np.array([WORDS[i] for i in generator.integers(0, len(WORDS), rows)] or [""], "U")[:rows],
    }
    for name, values_of in (
        ("pt", lambda count: random_bits(generator, count)),
        ("layer", lambda count: generator.integers(-9, 9, count).astype("<i8")),
        ("hit", lambda count: generator.integers(0, 2, count).astype("?")),
        ("tag", lambda count: np.array([WORDS[i] for i in generator.integers(0, 6, count)] or [""], "U")[:count]),
    ):
        arrays[name], arrays[name + ".offsets"] = random_lists(generator, rows, values_of)
    return arrays


def same_array(found, expected, name):
    assert found.shape == expected.shape, (name, found.shape, expected.shape)
    if expected.dtype.kind == "U":
        assert found.dtype.kind == "U" and list(found) == list(expected), name
    else:
        assert found.dtype == expected.dtype, (name, found.dtype, expected.dtype)
        assert found.tobytes() == expected.tobytes(), name


def check_archives(copier, generator):
    for rows in (0, 1, 7, 1000, 70000):
        arrays = random_arrays(generator, rows)
        np.savez(copier.folder / "in.npz", **arrays)
        for compression in ("none", "deflate"):
            written = copier.copy("in.npz", "out.npz", compression=compression)
            with np.load(written) as found:
                assert list(found) == list(arrays), list(found)
                for name, array in arrays.items():
                    same_array(found[name], array, name)
            # Ours reads its own file: the copy of the copy has the same bytes.
            first = written.read_bytes()
            written.rename(copier.folder / "again.npz")
            assert copier.copy("again.npz", "out.npz", compression=compression).read_bytes() == first
            for threads in (1, 3):
                assert copier.copy("in.npz", "out.npz", threads, compression=compression).read_bytes() == first


def check_records(copier, generator):
    for rows in (0, 1, 100, 70000):
        records = np.zeros(rows, [("x", "<f8"), ("n", "<i8"), ("good", "?"), ("word", "U25"), ("v", "<f8", (3,)),
                                  ("it's", "<i8"), ("größe", "<i8")])
        records["x"] = random_bits(generator, rows)
        records["n"] = generator.integers(-2**63, 2**63 - 1, rows, endpoint=True)
        records["good"] = generator.integers(0, 2, rows)
        records["word"] = [WORDS[i] for i in generator.integers(0, len(WORDS), rows)]
        records["v"] = random_bits(generator, 3 * rows).reshape(rows, 3)
        np.save(copier.folder / "in.npy", records)
        found = np.load(copier.copy("in.npy", "out.npy"))
        assert found.dtype.names == records.dtype.names, found.dtype
        for name in records.dtype.names:
            if rows > 0 or name != "v":  # Without rows, nothing says how long the lists are.
                same_array(found[name], records[name], name)


def check_lists(reader):
    """Lists by their offsets, stored and packed, alone and beside others."""
    arrays = {"e": np.array([5, 6, 7], ">i4"), "pt": np.array([1.5, 2.5, 3.5, 4.5], "<f4"),
              "pt.offsets": np.array([0, 2, 2, 4], ">i8")}
    for save in (np.savez, np.savez_compressed):
        save(reader.folder / "l.npz", **arrays)
        lists = [[1.5, 2.5], [], [3.5, 4.5]]
        compare(reader.columns(reader.folder / "l.npz"), {"e": [5, 6, 7], "pt": lists})
        compare(reader.columns(reader.folder / "l.npz", columns="pt"), {"pt": lists})
        compare(reader.columns(reader.folder / "l.npz", columns="e"), {"e": [5, 6, 7]})
        compare(reader.columns(reader.folder / "l.npz", object="pt"), {"pt": lists})
        compare(reader.columns(reader.folder / "l.npz", object="pt.offsets"), {"pt.offsets": [0, 2, 2, 4]})
        found = reader.look(reader.folder / "l.npz")["objects"][1]
        assert found["rows"] == 3 and found["columns"][0]["list"], found
    # Lists of which a chunk cannot have as many rows as others.
    values = np.arange(9000000.0)
    np.savez(reader.folder / "long.npz", v=values, **{"v.offsets": np.arange(0, 9000001, 9000, "<i8")})
    found = reader.columns(reader.folder / "long.npz")
    assert len(found["v"]) == 1000 and found["v"][999].split(" ")[8999] == "8999999.0", len(found["v"])


def check_damaged_lists(reader):
    for offsets, sentence in (([0, 3, 2, 4], "a list ends at 2, but begins at 3"),
                              ([0, 2, 2, 5], "a list ends at 5, but begins at 2, and there are 4 values"),
                              ([-1, 2, 2, 4], "a list ends at -1")):
        for save in (np.savez, np.savez_compressed):
            save(reader.folder / "d.npz", pt=np.arange(4.0), **{"pt.offsets": np.array(offsets, "<i8")})
            message = reader.failure(reader.folder / "d.npz")
            assert 'd.npz: the array "pt.offsets" is damaged: ' + sentence in message, message


def check_refusals(copier):
    np.savez(copier.folder / "in.npz", pt=np.arange(4.0), **{"pt.offsets": np.array([0, 1, 4], "<i8")})
    message = copier.failure("in.npz", "refused.npy")
    assert 'the lists of the column "pt" have 1 to 3 values; in an array of records (.npy) all' in message, message
    message = copier.failure("in.npz", "refused.npy", compression="deflate")
    assert "a .npy file cannot be compressed; write an archive (.npz)" in message, message
    message = copier.failure("in.npz", "refused.numpy")
    assert "The name of the file must end with .npy (records) or .npz" in message, message
    np.save(copier.folder / "t.npy", np.array(["x" * 70000]))
    message = copier.failure("t.npy", "refused.npy")
    assert 'a text of the column "value" has 70000 characters' in message, message
    left = list((copier.folder / "test.results").glob("refused*"))
    assert not left, left


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = np.random.default_rng(seed)
    with Copier(runner, "NumpyTable", "NumpyWriter") as copier:
        check_archives(copier, generator)
        check_records(copier, generator)
        check_refusals(copier)
    with Reader(runner, "NumpyTable") as reader:
        check_lists(reader)
        check_damaged_lists(reader)


if __name__ == "__main__":
    main(*sys.argv[1:])
