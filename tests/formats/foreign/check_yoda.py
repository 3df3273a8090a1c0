#!/usr/bin/env python3
"""Checks that YodaObjects and YodaWriter keep every number of random YODA files to the last bit. The files are written here
in versions 1, 2 and 3 of the format, and what YodaWriter makes of them is read here.

usage: check_yoda.py VELMORAK-RUN
"""

import gzip
import math
import pathlib
import random
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
from pipelines import Place, plugin  # noqa: E402


def number(generator):
    return generator.choice([0.0, generator.gauss(0.0, 1e3), generator.uniform(-1e-12, 1e-12), generator.uniform(-1, 1) * 1e80,
                             float(generator.randrange(-9, 9)), generator.random()])


def edges(generator):
    scale = generator.choice([1.0, 1e-6, 1e9])
    return sorted({generator.uniform(-scale, scale) for _ in range(generator.randrange(2, 12))})


class Grid:
    """A histogram or profile: sums for each cell, in the order of version 3, which has those outside of the bins too."""

    def __init__(self, generator, name, version, axes, is_profile):
        self.name, self.version, self.is_profile = name, version, is_profile
        self.axes = [edges(generator) for _ in range(axes)]
        self.cells = []
        quantities = axes + int(is_profile)
        self.products = quantities * (quantities - 1) // 2
        for _ in range(math.prod(len(axis) + 1 for axis in self.axes)):
            count = 2 + 2 * quantities + self.products
            self.cells.append([number(generator) for _ in range(count)] + [float(generator.randrange(10**6))])
        self.title = generator.choice(["", "Mass", "A title: with = signs"])
        self.type = ("PROFILE" if is_profile else "HISTO") + "%dD" % axes
        self.output = "profile" if is_profile else "histogram"

    def has_products(self):
        """Version 3 has the products of all quantities, the others those of the histogram over two."""
        return self.version == 3 or not self.is_profile

    def along(self, cell):
        """The bin along each axis; 0 is the underflow."""
        found = []
        for axis in self.axes:
            found.append(cell % (len(axis) + 1))
            cell //= len(axis) + 1
        return found

    def is_inside(self, cell):
        return all(0 < at < len(axis) for at, axis in zip(self.along(cell), self.axes))

    def row(self, cell):
        sums = self.cells[cell]
        if not self.has_products() and self.products:
            sums = sums[:-1 - self.products] + sums[-1:]
        return "\t".join(map(repr, sums))

    def text(self):
        if self.version == 3:
            lines = ["BEGIN YODA_%s_V3 /A/%s" % (self.type, self.name), "Path: /A/" + self.name, "Title: " + self.title,
                     "Type: " + self.type, "---"]
            lines += ["Edges(A%d): [%s]" % (i + 1, ", ".join(map(repr, axis))) for i, axis in enumerate(self.axes)]
            lines += ["# sums"] + [self.row(cell) for cell in range(len(self.cells))]
            return lines + ["END YODA_%s_V3" % self.type, ""]
        return self.old_text()

    def old_text(self):
        tag = self.type + ("_V2" if self.version == 2 else "")
        if self.version == 2:
            lines = ["BEGIN YODA_%s /A/%s" % (tag, self.name), "Path: /A/" + self.name, "Title: " + self.title, "---"]
        else:
            lines = ["# BEGIN YODA_%s /A/%s" % (tag, self.name), "Path=/A/" + self.name, "Title=" + self.title]
        if len(self.axes) == 1:
            lines += ["Underflow\tUnderflow\t" + self.row(0), "Overflow\tOverflow\t" + self.row(len(self.cells) - 1)]
        for cell in filter(self.is_inside, range(len(self.cells))):
            limits = [limit for at, axis in zip(self.along(cell), self.axes) for limit in (axis[at - 1], axis[at])]
            lines.append("\t".join(map(repr, limits)) + "\t" + self.row(cell))
        return lines + [("" if self.version == 2 else "# ") + "END YODA_" + tag, ""]

    def compare(self, lines):
        """@param lines what was written, in version 3."""
        found = [[float(word) for word in line[line.index("[") + 1:-1].split(",")] for line in lines
                 if line.startswith("Edges(")]
        assert found == self.axes, (self.name, found, self.axes)
        rows = [[float(word) for word in line.split()] for line in lines if line[0] in "-0123456789n" and line != "---"]
        assert len(rows) == len(self.cells), (self.name, len(rows), len(self.cells))
        for cell, row in enumerate(rows):
            wanted = list(self.cells[cell])
            if not self.is_inside(cell) and self.version < 3 and len(self.axes) > 1:
                continue
            if not self.has_products():
                wanted, row = [each[:len(wanted) - 1 - self.products] + each[-1:] for each in (wanted, row)]
            assert row == wanted, (self.name, self.type, self.version, cell, row, wanted)
        assert "Title: " + self.title in lines, (self.name, self.title)


class Scatter:
    output = "points"

    def __init__(self, generator, name, version):
        self.name, self.version = name, version
        self.dimension = generator.randrange(1, 4)
        self.points = [[value for _ in range(self.dimension)
                        for value in (number(generator), abs(number(generator)), abs(number(generator)))]
                       for _ in range(generator.randrange(1, 9))]

    def text(self):
        tag = "SCATTER%dD" % self.dimension + ("" if self.version == 1 else "_V%d" % self.version)
        if self.version == 1:
            lines = ["# BEGIN YODA_%s /A/%s" % (tag, self.name), "Path=/A/" + self.name]
        else:
            lines = ["BEGIN YODA_%s /A/%s" % (tag, self.name), "Path: /A/" + self.name, "---"]
        lines += ["\t".join(map(repr, point)) for point in self.points]
        return lines + [("# " if self.version == 1 else "") + "END YODA_" + tag, ""]

    def compare(self, lines):
        rows = [[float(word) for word in line.split()] for line in lines if line[0] in "-0123456789n" and line != "---"]
        assert rows == self.points, (self.name, rows, self.points)


def random_object(generator, name, version):
    if generator.random() < 0.25:
        return Scatter(generator, name, version)
    return Grid(generator, name, version, generator.choice([1, 1, 2]), generator.random() < 0.4)


def blocks(text):
    """The lines of each object, by its path."""
    found = {}
    for line in text.splitlines():
        if line.startswith("BEGIN "):
            path = line.split()[2]
            found[path] = []
        elif line and not line.startswith("END "):
            found[path].append(line)
    return found


def check_file(place, generator):
    version = generator.choice([1, 2, 3])
    objects = [random_object(generator, "o%d" % i, version) for i in range(generator.randrange(1, 7))]
    text = "\n".join(line for each in objects for line in each.text()).encode()
    packed = generator.random() < 0.3
    (place.folder / "in.yoda").write_bytes(gzip.compress(text) if packed else text)
    readers = [plugin(each.name, "YodaObjects", file="in.yoda", object="/A/" + each.name, type=each.output)
               for each in objects]
    inputs = {"object" + ("" if i == 0 else str(i + 1)): [each.name, each.output] for i, each in enumerate(objects)}
    writer = plugin("Copy", "YodaWriter", file="out.yoda.gz" if packed else "out.yoda", version="3", folder="/B",
                    objects=str(len(objects)), **inputs)
    done = place.run(place.document(*readers, writer))
    assert done.returncode == 0, done.stderr
    written = (place.folder / "test.results" / ("out.yoda.gz" if packed else "out.yoda")).read_bytes()
    found = blocks((gzip.decompress(written) if packed else written).decode())
    assert list(found) == ["/B/" + each.name for each in objects], list(found)
    for each in objects:
        each.compare(found["/B/" + each.name])


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    generator = random.Random(seed)
    with Place(runner) as place:
        for _ in range(25):
            check_file(place, generator)


if __name__ == "__main__":
    main(*sys.argv[1:])
