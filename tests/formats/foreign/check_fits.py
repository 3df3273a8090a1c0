#!/usr/bin/python3
"""Checks that FitsTable reads what astropy has written, to the last bit.

usage: check_fits.py VELMORAK-RUN
"""

import math
import random
import sys

try:
    import numpy as np
    from astropy.io import fits
except ImportError:
    print("skipped: astropy is not installed")
    sys.exit(77)

from check_numpy import random_array, values_of
from roundtrip import Reader, compare

FORMATS = {"I": "i2", "J": "i4", "K": "i8", "E": "f4", "D": "f8", "B": "u1"}


def check_binary_tables(reader, generator):
    file = reader.folder / "a.fits"
    for rows in (0, 1, 500, 40000):
        columns, expected = [], {}
        for letter, code in FORMATS.items():
            array = random_array(generator, "<" + code, rows)
            columns.append(fits.Column(f"s{letter}", letter, unit="GeV" if letter == "E" else None, array=array))
            expected[f"s{letter}"] = values_of(array)
            matrix = random_array(generator, "<" + code, (rows, 3))
            columns.append(fits.Column(f"v{letter}", "3" + letter, array=matrix))
            expected[f"v{letter}"] = [values_of(row) for row in matrix]
        flags = generator.integers(0, 2, rows) > 0
        words = np.array(["", "mu", "five5"])[generator.integers(0, 3, rows)]
        columns += [fits.Column("flag", "L", array=flags), fits.Column("word", "5A", array=words)]
        expected.update(flag=values_of(flags), word=values_of(words))
        fits.HDUList([fits.PrimaryHDU(), fits.BinTableHDU.from_columns(columns, name="EVENTS")]).writeto(
            file, overwrite=True)
        compare(reader.columns(file), expected)
    compare(reader.columns(file, columns="word, vJ"), {name: expected[name] for name in ("word", "vJ")})
    looked = reader.look(file)["objects"]
    assert [(each["path"], each["type"], each["rows"]) for each in looked] == [("EVENTS", "table", 40000)], looked
    assert [each["unit"] for each in looked[0]["columns"] if each["name"] == "sE"] == ["GeV"], looked


def check_lists_scales_and_nulls(reader, generator):
    file = reader.folder / "b.fits"
    lists = [generator.normal(size=k) for k in (2, 0, 3, 1)]
    unsigned = np.array([0, 1, 40000, 65535], "u2")
    columns = [fits.Column("l", "PD()", array=np.array(lists, dtype=object)),
               fits.Column("n", "J", null=-1, array=np.array([1, -1, 3, 4], "i4")),
               fits.Column("u", "I", bzero=32768, array=unsigned),
               fits.Column("s", "E", bscale=0.5, bzero=10, array=np.array([10, 10.5, 11, 11.5])),
               fits.Column("z", "C", array=np.zeros(4, "c8"))]
    fits.HDUList([fits.PrimaryHDU(), fits.BinTableHDU.from_columns(columns)]).writeto(file)
    compare(reader.columns(file), {"l": [values_of(each) for each in lists], "n": [1.0, math.nan, 3.0, 4.0],
                                   "u": [0, 1, 40000, 65535], "s": [10.0, 10.5, 11.0, 11.5]})
    assert 'the column "z" is left out: complex numbers are not read' in reader.messages, reader.messages


def check_ascii_tables(reader):
    file = reader.folder / "c.fits"
    columns = [fits.Column("n", "I6", ascii=True, array=np.array([1, -20, 300])),
               fits.Column("x", "D25.17", ascii=True, array=np.array([0.5, -1e100, 3.25])),
               fits.Column("w", "A4", ascii=True, array=np.array(["a", "", "word"]))]
    fits.HDUList([fits.PrimaryHDU(), fits.TableHDU.from_columns(columns, name="T")]).writeto(file)
    found = reader.columns(file)
    compare(found, {"n": [1, -20, 300], "x": [0.5, -1e100, 3.25], "w": ["a", "", "word"]})


def check_images(reader, generator):
    file = reader.folder / "d.fits"
    image = generator.normal(size=(3, 4))
    image[1, 2] = np.nan
    second = fits.ImageHDU(np.arange(5, dtype="i2"), name="LINE")
    cube = fits.ImageHDU(np.zeros((2, 2, 2)), name="CUBE")
    packed = fits.CompImageHDU(np.arange(20, dtype="i4").reshape(4, 5), name="PACKED")
    fits.HDUList([fits.PrimaryHDU(image), second, cube, packed]).writeto(file)
    expected = {"x": [1, 2, 3, 4] * 3, "y": [1] * 4 + [2] * 4 + [3] * 4, "value": values_of(image.ravel())}
    compare(reader.columns(file, object="1"), expected)
    compare(reader.columns(file, object="LINE"), {"x": [1, 2, 3, 4, 5], "value": [0.0, 1.0, 2.0, 3.0, 4.0]})
    compare({"value": reader.columns(file, object="PACKED")["value"]}, {"value": [float(i) for i in range(20)]})
    message = reader.failure(file)
    assert 'contains several tables or images; enter the name or number of one: "1", "LINE"' in message, message
    message = reader.failure(file, object="CUBE")
    assert 'd.fits, "CUBE": the image has 3 dimensions; one or two are read' in message, message
    message = reader.failure(file, object="LINES")
    assert 'contains nothing called "LINES"' in message, message


def check_damage(reader):
    file = reader.folder / "e.fits"
    columns = [fits.Column("x", "D", array=np.arange(100000.0))]
    fits.HDUList([fits.PrimaryHDU(), fits.BinTableHDU.from_columns(columns)]).writeto(file)
    whole = file.read_bytes()
    file.write_bytes(whole[:len(whole) // 2])
    message = reader.failure(file)
    assert "e.fits" in message and "column x, rows from " in message, message
    file.write_bytes(b"nothing of the sort")
    message = reader.failure(file)
    assert "e.fits is no FITS file" in message, message
    file.unlink()
    message = reader.failure(file)
    assert "e.fits cannot be opened: No such file or directory" in message, message


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = np.random.default_rng(seed)
    with Reader(runner, "FitsTable") as reader:
        check_binary_tables(reader, generator)
        check_lists_scales_and_nulls(reader, generator)
        check_ascii_tables(reader)
        check_images(reader, generator)
        check_damage(reader)


if __name__ == "__main__":
    main(*sys.argv[1:])
