"""Makes the seeds of the fuzz targets from the examples and the test data: make_seeds.py SOURCE OUT."""

import hashlib
import io
import json
import pathlib
import shutil
import sqlite3
import struct
import sys
import tempfile
import zipfile

source, out = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
largest = 65536  # Longer files slow down every run and find no more than shorter ones.
counts = {}


def seed(target, content):
    if isinstance(content, str):
        content = content.encode()
    if len(content) > largest:
        return
    folder = out / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / hashlib.sha256(content).hexdigest()[:16]).write_bytes(content)
    counts[target] = counts.get(target, 0) + 1


def files(*patterns):
    for pattern in patterns:
        yield from sorted(source.glob(pattern))


def values(document):
    """Kind, input and value of each plug-in in a document."""
    for plugin in document["plugins"]:
        for port in plugin.get("inputs", []):
            if isinstance(port.get("value"), str):
                yield plugin["kind"], port["name"], port["value"]


def listed(content, each=1):
    """A list, preceded by its length."""
    return struct.pack("<Q", len(content) // each) + content


def reals(*values):
    return struct.pack(f"<{len(values)}d", *values)


def mark(number):
    return struct.pack("<Q", number)


def result(number, text):
    """A stored result of an empty value, a number and a text, without files."""
    outputs = [b"\0", b"\1" + reals(number), b"\2" + listed(text.encode())]
    return b"r" + mark(0x31534552_6B6C6556) + mark(len(outputs)) + b"".join(outputs) + mark(0) * 3


def objects():
    """Small objects as in the result cache, each without its checksum."""
    head = listed(b"name") + listed(b"title") + listed(b"") + mark(1) + listed(b"key") + listed(b"value") + b"\0"
    axis = listed(b"x [GeV]") + listed(reals(0, 1, 4), 8)
    yield b"oh" + mark(0x32443148_6B6C6556) + head + axis + listed(reals(*range(20)), 40) + mark(3)
    for letter, dimensions in (b"i", 2), (b"j", 3):
        cells = 4**dimensions
        numbers = 3 + 2 * dimensions
        sums = listed(reals(*[1.0] * (cells * numbers)), 8 * numbers)
        yield b"o" + letter + mark(0x31446748_6B6C6500 + dimensions) + head + axis * dimensions + sums + mark(0)
    for letter, dimensions in (b"p", 1), (b"q", 2):
        numbers = 5 + 2 * dimensions
        sums = listed(reals(*[1.0] * (4**dimensions * numbers)), 8 * numbers)
        yield b"o" + letter + mark(0x31446650_6B6C6500 + dimensions) + head + axis * dimensions + sums + mark(0) * 2
    points = listed(reals(*range(6)), 24)
    yield b"ox" + mark(0x31746E50_6B6C6556) + head + mark(1) + points + mark(1) + listed(b"x")
    yield (
        b"of" + mark(0x31636E46_6B6C6556) + head + listed(b"codelet:fit:verbatim:jel : 1 : a*x[0] : a : null") + b"\0"
        + mark(1) + listed(b"x0") + listed(reals(0, 1), 16) + mark(1) + listed(b"a") + reals(2)
    )


def npy(descr, shape, content, fortran=False, version=1):
    """A NumPy file."""
    head = repr({"descr": descr, "fortran_order": fortran, "shape": shape}).encode() + b"\n"
    length = struct.pack("<H" if version == 1 else "<I", len(head))
    return b"\x93NUMPY" + bytes([version, 0]) + length + head + content


def npz(packing, **members):
    """An archive of NumPy files."""
    stream = io.BytesIO()
    with zipfile.ZipFile(stream, "w", packing) as archive:
        for name, content in members.items():
            archive.writestr(zipfile.ZipInfo(name + ".npy"), content, packing)
    return stream.getvalue()


def database(script):
    """The bytes of an SQLite database."""
    with tempfile.NamedTemporaryFile(suffix=".db") as file:
        connection = sqlite3.connect(file.name)
        connection.executescript("PRAGMA page_size = 512;" + script)
        connection.close()
        return pathlib.Path(file.name).read_bytes()


def checksum(content):
    total = 0xCBF29CE484222325
    for byte in content:
        total = (total ^ byte) * 0x100000001B3 % 2**64
    return mark(total)


def states():
    """Saved states of statistics, and one with a text, integers and an object."""
    yield b"m" + mark(3) + mark(1) + mark(3) + reals(-1, 2, 0.5, 0, 4.5, 0) + reals(1.5, 0) + reals(3, 0)
    yield b"q" + reals(-1, 2) + b"\0" + mark(2) + reals(1, -1, -1) + reals(0.5, 2, 2)
    # Without numbers of a size that has cells: only below and above.
    yield b"q" + reals(float("inf"), -float("inf")) + b"\1" + mark(3) + reals(1, float("inf"), -float("inf")) * 3
    for kept in objects():
        content = kept[1:] + checksum(kept[2:])
        yield b"a" + struct.pack("<I", 1) + listed(b"text") + listed(struct.pack("<2i", -1, 7), 4) + listed(content)


def facts():
    """What a plan knows of files: a list with a property, and the columns of two files, the second of them skipped."""
    column = listed(b"weight") + listed(b"GeV") + b"\0\0"
    version = struct.pack("<I", 1)
    yield (b"l" + version + mark(1) + listed(b"samples.csv") + mark(2) + listed(b"a.csv") + mark(0) + listed(b"b.csv")
           + mark(1) + mark(1) + column + listed(reals(0.5, 2), 8))
    yield b"c" + version + mark(1) + column + listed(b"\0\1") + mark(1) + listed(b"it is empty") + mark(0)


def plans():
    """Of one pass, and of two rounds in a bundle."""
    file = {"path": "/data/a.csv", "bytes": 100, "modified": 1700000000000000000}
    moved = dict(file, place="../a.csv", sha256="0" * 64)
    one = {"round": 1, "targets": ["Mean"], "needs": [], "files": [file]}
    two = {"round": 2, "targets": ["Upper"], "needs": [0], "files": [moved, moved]}
    run = {"text": "{}", "settings": ["Rows.seed=1"], "folder": "", "passes": [one, two],
           "leftToMerge": [{"plugin": "Few", "reason": "it counts"}], "otherFiles": [moved],
           "listings": [{"listing": "data\0*.csv", "names": ["a.csv"]}],
           "facts": [{"plugin": "Rows", "name": "columns", "value": "00ff"}]}
    plan = {"plan": 2, "velmorak": "1", "time": "2026-01-01T00:00:00Z", "document": "/a.zedra", "aida": "",
            "folder": "/", "results": "", "builds": {"CsvTable": "1"}, "runs": [run]}
    cut = [{"run": 0, "pass": 0, "begin": [0, 0], "end": [0, 7]}, {"run": 0, "pass": 0, "begin": [0, 7], "end": [1, 0]}]
    yield dict(plan, parts=cut)
    yield dict(plan, parts=cut + [{"run": 0, "pass": 1, "begin": [0, 0], "end": [2, 0]}])


def parts():
    """Identity, what precedes a state, and summary of the file of a part."""
    yield b"i" + listed(b"plan") + mark(1) + listed(b"build")
    for form, file, first, level in ((0, 0, 4, 2), (1, 3, 8, 3), (2, 1, 0, 0), (3, 0, 5, 0)):
        yield b"h" + listed(b"Upper") + mark(0) + bytes([form]) + mark(file) + mark(first) + struct.pack("<I", level)
    file = ["a.csv", "0" * 64, 100, 1, 2, "", ""]
    yield b"s" + json.dumps({"operators": [["Upper", 0, 10, 9]], "rows": [10], "files": [file], "skipped": [file],
                             "states": 0}).encode()


shutil.rmtree(out, ignore_errors=True)
for path in files("examples/**/*.zedra", "tests/data/*.zedra"):
    seed("document", path.read_bytes())
    for kind, name, value in values(json.loads(path.read_text())):
        if kind == "Fit" and name == "model":
            seed("function", value + "\nmean=91 [80,100], sigma=2.5 fixed\n")
        elif name in ("columns", "types"):
            seed("columns", value)
        elif name not in ("file", "title", "name"):
            seed("expression", value)
for path in files("examples/**/*.aida", "tests/data/aida/*"):
    seed("aida", path.read_bytes())
for path in files("examples/**/*.csv"):
    seed("csv", path.read_bytes())
for path in files("tests/data/root/*.root"):
    content = path.read_bytes()
    seed("root_file", content)
    seed("root_ntuple" if b"ROOT::RNTuple" in content[:4096] + content[-4096:] else "root_tree", content)
    seed("root_objects", content)
for path in files("examples/**/samples.csv"):
    seed("files", b"2" + path.read_bytes())
for text in ("a.csv", "run_*.csv, b.csv", "data/**/*.csv", "@list.txt\n\"a, b\""):
    seed("files", "0" + text)
    seed("files", "1# list\n" + text)
for path in files("collections/*/plugin_summary.txt"):
    seed("summary", path.read_bytes())
for shape in ("gauss + pol1", "n*exp(-x/tau) + b", "crystalball(x, a, m, s, 1, n) + exponential", "breitwigner*pol9"):
    seed("function", shape + "\nn=2 [0,]\ncodelet:fit:verbatim:jel : 1 : a+b*x[0]^2 : a,b : null")
for codelet in ("codelet:G+P1:catalog", "E*P3", "G"):
    seed("function", "x\n\n" + codelet)
seed("columns", "t: exponential(2.2); m: gauss(91.2, 2.5)\nu: uniform(-1, 1); b: breitwigner(91, 2); n: poisson(50)")
seed("columns", "run: integer, comment: text; ok: boolean\nx: real")
seed("stored", result(1.5, "text"))
for kept in objects():
    seed("stored", kept)
for saved in states():
    seed("state", saved)
plain = npy("<f8", (3,), reals(1, 2, 3))
seed("numpy", plain)
seed("numpy", npy(">i2", (2, 3), bytes(12), fortran=True, version=2))
seed("numpy", npy("<M8[25s]", (2,), bytes(16), version=3))
seed("numpy", npy([("x", "<f4"), ("name", "<U2"), ("l", "|u1", (3,)), ("in", [("b", "|b1"), ("c", "<c8")]), ("", "|V3")],
                  (2,), bytes(2 * (4 + 8 + 3 + 9 + 3))))
for packing in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
    seed("numpy", npz(packing, x=plain, m=npy("<f4", (3, 2), bytes(24), fortran=True)))
seed("sqlite", database("""CREATE TABLE t (n INTEGER, x REAL, ok BOOLEAN, b BLOB);
    INSERT INTO t VALUES (1, 0.5, 1, x'00'), (2, NULL, 0, NULL);
    CREATE VIEW v AS SELECT n, x * 2 AS y FROM t WHERE ok;"""))
seed("sqlite", database("CREATE TABLE `a b` (s TEXT PRIMARY KEY) WITHOUT ROWID; INSERT INTO `a b` VALUES ('x'), ('y');"))
for known in facts():
    seed("facts", known)
for plan in plans():
    seed("plan", json.dumps(plan))
for part in parts():
    seed("part", part)
# Header of a binary AIDA file: an empty <aida version="3.3">.
seed("wbxml", b"\x03\x01\x6a\x00" + bytes([0x85, 0x05, 0x03]) + b"3.3\x00\x01")
# A Parquet file without columns and rows, and the beginning and end of an Arrow stream.
footer = bytes([0x15, 0x04, 0x19, 0x1C, 0x48, 0x01]) + b"s" + bytes([0x15, 0x00, 0x00, 0x16, 0x00, 0x19, 0x0C, 0x00])
seed("parquet", b"PAR1" + footer + struct.pack("<I", len(footer)) + b"PAR1")
seed("arrow", b"\xff\xff\xff\xff\x00\x00\x00\x00")
for path in files("examples/**/*.parquet"):
    seed("parquet", path.read_bytes())

for target in sorted(counts):
    print(target, counts[target])
