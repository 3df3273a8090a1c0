"""Random nested types and values, and the columns that a table has for them."""

import math
import struct

WORDS = ["", "a", "äöü", "two words", "\U0001f600"]
KINDS = ["real", "single", "long", "short", "truth", "text"]


def single(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


class Leaf:
    def __init__(self, generator, optional=None):
        self.kind = generator.choice(KINDS)
        self.optional = generator.random() < 0.5 if optional is None else optional

    def value(self, generator):
        if self.kind in ("real", "single"):
            value = generator.choice([math.nan, 0.0, -0.0, math.inf, -math.inf, generator.gauss(0.0, 1e3), 1e-40])
            return single(value) if self.kind == "single" else value
        if self.kind in ("long", "short"):
            bits = 63 if self.kind == "long" else 31
            return generator.choice([0, -2**bits, 2**bits - 1, generator.randrange(-99, 99)])
        return generator.random() < 0.5 if self.kind == "truth" else generator.choice(WORDS)

    def columns(self, name, rows, is_list, reals):
        """@param rows the slots of each row, None for one that is missing.
        @param reals names of the columns of which the file says that values may be missing."""
        is_real = self.kind in ("real", "single") or (self.kind != "text" and name in reals)

        def cell(value):
            if value is None:
                return math.nan if self.kind != "text" else ""
            return float(value) if is_real else value
        cells = [[cell(slot) for slot in slots] for slots in rows]
        return {name: cells if is_list else [each[0] for each in cells]}


class Struct:
    def __init__(self, generator, fields):
        self.fields = fields
        self.optional = generator.random() < 0.5

    def value(self, generator):
        return {name: sample(field, generator) for name, field in self.fields.items()}

    def columns(self, name, rows, is_list, reals):
        found = {}
        for field, kind in self.fields.items():
            inner = [[None if slot is None else slot[field] for slot in slots] for slots in rows]
            found.update(kind.columns(name + "." + field, inner, is_list, reals))
        return found


class Several:
    """What lists and maps share: counts of lists within lists follow the columns of their elements."""

    def levels(self, name, rows):
        depth, inner = 1, self
        while isinstance(inner, List) and isinstance(inner.item, Several):
            depth, inner = depth + 1, inner.item
        base = name + depth * ".count"
        return {base: [[len(slot or []) for slot in slots] for slots in rows],
                base[:-len(".count")] + ".row": [[i for i, slot in enumerate(slots) for _ in slot or []] for slots in rows]}

    def columns(self, name, rows, is_list, reals):
        found = self.inside(name, [[each for slot in slots for each in slot or []] for slots in rows], reals)
        return {**found, **(self.levels(name, rows) if is_list else {})}


class List(Several):
    """@ivar form of Parquet: its usual names, others, the element itself repeated, or that without an annotation.
    @ivar length of a list of fixed length in Arrow, else None.
    @ivar is_wide has offsets of 64 bits in Arrow."""

    def __init__(self, generator, item, has_bare):
        self.item = item
        self.form = generator.choice(["usual", "other"])
        if not item.optional and not isinstance(item, Several) and generator.random() < 0.5:
            self.form = generator.choice(["old", "bare"] if has_bare else ["old"])
        self.length = generator.choice([None, None, None, 1, 3])
        self.is_wide = generator.random() < 0.3
        self.optional = self.form != "bare" and generator.random() < 0.5

    def value(self, generator):
        count = generator.choice([0, 0, 1, 2, 4]) if self.length is None else self.length
        return [sample(self.item, generator) for _ in range(count)]

    def inside(self, name, rows, reals):
        return self.item.columns(name, rows, True, reals)


class Map(Several):
    def __init__(self, generator, item):
        self.key, self.item = Leaf(generator, optional=False), item
        self.names = generator.choice([("key", "value"), ("keys", "values")])
        self.optional = generator.random() < 0.5

    def value(self, generator):
        return [(self.key.value(generator), sample(self.item, generator)) for _ in range(generator.choice([0, 0, 1, 3]))]

    def inside(self, name, rows, reals):
        found = self.key.columns(name + ".key", [[pair[0] for pair in slots] for slots in rows], True, reals)
        found.update(self.item.columns(name + ".value", [[pair[1] for pair in slots] for slots in rows], True, reals))
        return found


def sample(kind, generator):
    return None if kind.optional and generator.random() < 0.3 else kind.value(generator)


def random_type(generator, lists=0, depth=0, is_item=False):
    """@param lists number of lists around, of which there are up to three."""
    choice = generator.random()
    if choice < 0.45 or depth > 4:
        return Leaf(generator)
    if choice < 0.65:
        fields = {"m%d" % i: random_type(generator, lists, depth + 1) for i in range(generator.randrange(1, 4))}
        return Struct(generator, fields)
    if lists > 2 or (lists == 2 and generator.random() < 0.7):
        return Leaf(generator)
    if choice < 0.9:
        return List(generator, random_type(generator, lists + 1, depth + 1, is_item=True), has_bare=not is_item)
    return Map(generator, random_type(generator, lists + 1, depth + 1, is_item=True))


def random_table(generator):
    """@return types by name, and the values of each group of rows by name."""
    types = {"c%d" % i: random_type(generator) for i in range(generator.randrange(1, 6))}
    return types, random_groups(generator, types, [generator.choice([0, 1, 3, 40, 300]) for _ in range(generator.randrange(4))])


def random_groups(generator, types, counts):
    return [{name: [sample(kind, generator) for _ in range(rows)] for name, kind in types.items()} for rows in counts]


def large_table(generator):
    """Lists of lists in more rows than a chunk has."""
    def lists():
        inner = List(generator, Leaf(generator, optional=True), has_bare=False)
        outer = List(generator, inner, has_bare=False)
        outer.length = inner.length = None
        return outer
    types = {"deep": lists(), "wide": lists()}
    return types, random_groups(generator, types, [20000, 30000])


def table_columns(types, groups, reals):
    found = {}
    for name, kind in types.items():
        found.update(kind.columns(name, [[value] for group in groups for value in group[name]], False, reals))
    return found
