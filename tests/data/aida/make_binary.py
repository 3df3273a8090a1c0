"""Writes binary.aida, which has every element, every attribute and every type of value of the binary form, and
binary_as_text.aida, the same as text. The numbers stand here once more, so that the reader's are compared with them.

    python3 make_binary.py
"""

import pathlib
import struct
from xml.sax.saxutils import quoteattr

ELEMENTS = """
 0 aida          1 implementation  2 histogram1d  3 histogram2d   4 histogram3d  5 axis        6 binBorder
 7 statistics    8 statistic       9 data1d      10 bin1d        11 data2d      12 bin2d      13 data3d
14 bin3d        15 tuple          16 columns     17 column       18 rows        19 row        20 entry
21 entryITuple  22 cloud1d        23 cloud2d     24 cloud3d      25 entries1d   26 entries2d  27 entries3d
28 entry1d      29 entry2d        30 entry3d     31 profile1d    32 profile2d   33 dataPointSet
34 dataPoint    35 measurement    36 annotation  37 item         38 function    39 codelet    40 arguments
41 argument     42 range          43 parameters  44 parameter
"""

# Page and number on it.
ATTRIBUTES = """
0:0 version 0:13 package 0:14 name 0:15 title 0:16 path 0:17 options 0:18 direction 0:19 min 0:20 max
0:21 numberOfBins 0:22 entries 0:23 equivalentBinEntries 0:24 mean 0:25 rms 0:26 skewness 0:27 binNum
0:28 weightedMean 0:29 weightedRms 0:30 height 0:31 error 0:32 error2 0:33 binNumX 0:34 binNumY 0:35 binNumZ
0:36 weightedMeanX 0:37 weightedMeanY 0:38 weightedMeanZ 0:39 weightedRmsX 0:40 weightedRmsY 0:41 weightedRmsZ
0:42 type 0:43 maxEntries 0:44 lowerEdgeX 0:45 lowerEdgeY 0:46 lowerEdgeZ 0:47 upperEdgeX 0:48 upperEdgeY
0:49 upperEdgeZ 0:50 conversionBins 0:51 conversionBinsX 0:52 conversionBinsY 0:53 conversionBinsZ
0:54 conversionLowerEdge 0:55 conversionLowerEdgeX 0:56 conversionLowerEdgeY 0:57 conversionLowerEdgeZ
0:58 conversionUpperEdge 1:0 conversionUpperEdgeX 1:1 conversionUpperEdgeY 1:2 conversionUpperEdgeZ
1:3 valueX 1:4 valueY 1:5 valueZ 1:6 weight 1:7 dimension 1:8 errorPlus 1:9 errorMinus 1:10 key 1:11 sticky
1:12 isNormalized
"""

# The number of an attribute "value" is that of its type.
VALUES = {"boolean": 4, "byte": 5, "char": 6, "double": 7, "float": 8, "int": 9, "long": 10, "short": 11, "text": 12}

TYPES = {"boolean": (0, ">B"), "byte": (1, ">b"), "char": (2, ">H"), "double": (3, ">d"), "float": (4, ">f"),
         "int": (5, ">i"), "long": (6, ">q"), "short": (7, ">h")}

words = ELEMENTS.split()
element_numbers = dict(zip(words[1::2], map(int, words[0::2])))
words = ATTRIBUTES.split()
attribute_numbers = {name: tuple(map(int, place.split(":"))) for place, name in zip(words[0::2], words[1::2])}


class Typed:
    """A value of a type that its Python value does not show."""

    def __init__(self, kind, value):
        self.kind, self.value = kind, value


def kind_of(value):
    if isinstance(value, Typed):
        return value.kind, value.value
    return {bool: "boolean", int: "int", float: "double", str: "text"}[type(value)], value


def bytes_of(kind, value):
    if kind == "text":
        text = value.encode()
        return b"\x08" + struct.pack(">H", len(text)) + text + b"\0"
    number, layout = TYPES[kind]
    return bytes([number]) + struct.pack(layout, ord(value) if kind == "char" else value)


def text_of(kind, value):
    if kind == "boolean":
        return "true" if value else "false"
    if kind == "float":
        value = struct.unpack(">f", struct.pack(">f", value))[0]
    if kind in ("double", "float"):
        words = {"nan": "NaN", "inf": "Infinity", "-inf": "-Infinity"}
        return words.get(repr(value), repr(value).removesuffix(".0"))
    return str(value)


class Writer:
    def __init__(self):
        self.binary, self.text, self.page = bytearray(), [], 0

    def attribute(self, name, value):
        kind, plain = kind_of(value)
        page, number = (0, VALUES[kind]) if name == "value" else attribute_numbers[name]
        # A page that was chosen holds until another one is, also in the next element.
        if page != self.page:
            self.binary += bytes([0, page])
            self.page = page
        data = bytes_of(kind, plain)
        assert len(data) < 128
        self.binary += bytes([5 + number, 0xC3, len(data)]) + data
        self.text.append(f" {name}={quoteattr(text_of(kind, plain))}")

    def element(self, name, attributes=None, *children):
        self.binary.append(5 + element_numbers[name] + (0x80 if attributes else 0) + (0x40 if children else 0))
        self.text.append(f"<{name}")
        for key, value in (attributes or {}).items():
            self.attribute(key, value)
        if attributes:
            self.binary.append(1)
        self.text.append(">")
        for child in children:
            if isinstance(child, str):
                self.binary += b"\x03" + struct.pack(">H", len(child)) + child.encode() + b"\0"
                self.text.append(child)
            else:
                self.element(*child)
        if children:
            self.binary.append(1)
        self.text.append(f"</{name}>\n")


def item(key, value, sticky=True):
    return ("item", {"key": key, "value": value, "sticky": sticky})


def axis(direction, bins, *borders):
    return ("axis", {"direction": direction, "min": 0.0, "max": 4.0, "numberOfBins": bins},
            *[("binBorder", {"value": border}) for border in borders])


def statistics(*directions):
    return ("statistics", {"entries": 5, "equivalentBinEntries": 4.5},
            *[("statistic", {"direction": direction, "mean": 1.5, "rms": 0.75, "skewness": 0.125})
              for direction in directions])


def head(name, title, options=None):
    return {"name": name, "title": title, "path": "/made", **({"options": options} if options else {})}


def bin_of(letters, numbers, **more):
    attributes = {f"binNum{letter}": number for letter, number in zip(letters, numbers)}
    attributes |= {"entries": 5, "height": 4.5, "error": 1.5, "error2": 1.25}
    for place, letter in enumerate(letters):
        attributes |= {f"weightedMean{letter}": 0.5 + place, f"weightedRms{letter}": 0.25 + place}
    return attributes | more


def cloud(dimensions):
    letters = "XYZ"[:dimensions]
    attributes = head(f"cloud{dimensions}", "points", "own=yes") | {"maxEntries": 100}
    for edge, value in (("lowerEdge", -1.5), ("upperEdge", 2.5)):
        attributes |= {f"{edge}{letter}": value for letter in letters}
    for what, value in (("conversionBins", 50), ("conversionLowerEdge", -3.5), ("conversionUpperEdge", 3.5)):
        attributes |= {what + letter: value for letter in (letters if dimensions > 1 else [""])}
    point = {f"value{letter}": 0.5 + place for place, letter in enumerate(letters)} | {"weight": 2.5}
    return (f"cloud{dimensions}d", attributes, ("annotation", None, item("Title", "points")),
            (f"entries{dimensions}d", None, (f"entry{dimensions}d", point), (f"entry{dimensions}d", point)))


COLUMNS = [("flag=false", "boolean"), ("small=1", "byte"), ("letter=-", "char"), ("x=1", "double"), ("y=1", "float"),
           ("n=1", "int"), ("big=1", "long"), ("little=1", "short"), ("tag=none", "string")]

ROWS = [
    [True, Typed("byte", 3), Typed("char", "a"), 2.5, Typed("float", struct.unpack(">f", bytes.fromhex("3d88d2d8"))[0]),
     70000, Typed("long", 0x2AC30D0C8F55F4BC), Typed("short", 15), "muon <2>"],
    [False, Typed("byte", -128), Typed("char", "\u00e9"), float("nan"), Typed("float", -0.5), -2147483648,
     Typed("long", -9223372036854775808), Typed("short", -32768), ""],
    [True, Typed("byte", 127), Typed("char", "<"), float("-inf"), Typed("float", 1e30), 2147483647,
     Typed("long", 9223372036854775807), Typed("short", 32767), "\u00b5 & \u4e2d"],
]


def main():
    columns = ("columns", None, *[("column", {"name": name, "type": kind}) for name, kind in COLUMNS],
               ("column", {"name": "hits", "type": "ITuple"},
                ("columns", None, ("column", {"name": "on", "type": "boolean"}))))
    hits = [("row", None, ("entry", {"value": on})) for on in (True, False, True)]
    rows = [("row", None, *[("entry", {"value": value}) for value in row], ("entryITuple", None, *hits)) for row in ROWS]
    objects = [
        ("implementation", {"package": "by hand", "version": "1"}),
        ("histogram1d", head("h1", "one", "a=b"),
         ("annotation", None, item("Title", "one"), item("Key", "v", False), item("Last", "w")), axis("x", 2, 1.0),
         statistics("x"), ("data1d", None, ("bin1d", bin_of([""], [-2])), ("bin1d", bin_of([""], [1], rms=0.5)))),
        ("histogram2d", head("h2", "two"), axis("x", 2), axis("y", 2), statistics("x", "y"),
         ("data2d", None, ("bin2d", bin_of("XY", [0, 1])))),
        ("histogram3d", head("h3", "three"), axis("x", 2), axis("y", 2), axis("z", 2), statistics("x", "y", "z"),
         ("data3d", None, ("bin3d", bin_of("XYZ", [0, 1, -1])))),
        cloud(1), cloud(2), cloud(3),
        ("profile1d", head("p1", "profile"), axis("x", 2), statistics("x"),
         ("data1d", None, ("bin1d", bin_of([""], [0], rms=0.5)))),
        ("profile2d", head("p2", "profile"), axis("x", 2), axis("y", 2), statistics("x", "y"),
         ("data2d", None, ("bin2d", bin_of("XY", [0, 1], rms=0.5)))),
        ("dataPointSet", head("d", "points") | {"dimension": 2},
         ("dataPoint", None, ("measurement", {"value": 1.5, "errorPlus": 0.5, "errorMinus": 0.25}),
          ("measurement", {"value": 2.5, "errorPlus": 0.75, "errorMinus": 0.125}))),
        ("function", head("f", "line") | {"isNormalized": True}, ("codelet", None, "codelet:P1:catalog"),
         ("arguments", None, ("argument", {"name": "x0"}, ("range", {"min": -1.5, "max": 1.5}))),
         ("parameters", None, ("parameter", {"name": "p0", "value": 0.5}), ("parameter", {"name": "p1", "value": 2.5}))),
        ("tuple", head("values", "all types"), columns, ("rows", None, *rows)),
    ]
    writer = Writer()
    writer.element("aida", {"version": "3.3"}, *objects)
    table = b"\x001aida http://aida.freehep.org/schemas/3.3/aida.dtd\0\0\x0eBinaryAIDA/1.0\0"
    folder = pathlib.Path(__file__).parent
    (folder / "binary.aida").write_bytes(b"\x03\0\0\x6A" + bytes([len(table)]) + table + writer.binary)
    (folder / "binary_as_text.aida").write_text('<?xml version="1.0" encoding="UTF-8"?>\n' + "".join(writer.text),
                                                encoding="utf-8")


main()
