"""Writes nested tables as Parquet and Arrow, by the layouts that the formats document."""

import gzip
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "examples"))
from make_data import Compact, Flat, numbers  # noqa: E402

from columnar_types import Leaf, List, Map, Struct

STORED = {  # Numbers of the types in Parquet and Arrow, and how a value is stored.
    "real": (5, 3, "d"), "single": (4, 3, "f"), "long": (2, 2, "q"), "short": (1, 2, "i"), "truth": (0, 6, None),
    "text": (6, 5, None),
}


def bits(truths):
    out = bytearray((len(truths) + 7) // 8)
    for i, truth in enumerate(truths):
        out[i // 8] |= bool(truth) << i % 8
    return bytes(out)


def plain(kind, values):
    """Values that are there, one after the other."""
    if kind == "truth":
        return bits(values)
    if kind == "text":
        return b"".join(numbers("I", [len(value.encode())]) + value.encode() for value in values)
    return numbers(STORED[kind][2], values)


class Slots:
    """The values of a leaf in a row group: repetition and definition levels, and None where there is none."""

    def __init__(self, kind, name, definition, repetition, element):
        self.kind, self.name = kind, name
        self.most = repetition, definition
        self.element = element
        self.slots = []


class Shredder:
    """Takes rows apart."""

    def __init__(self, types):
        self.leaves = []
        for name, kind in types.items():
            self.enter(kind, name, 0, 0, 0)

    def enter(self, kind, name, definition, repetition, element):
        kind.first = len(self.leaves)
        definition += kind.optional
        if isinstance(kind, Leaf):
            self.leaves.append(Slots(kind.kind, name, definition, repetition, element))
        elif isinstance(kind, Struct):
            for field, inner in kind.fields.items():
                self.enter(inner, name + "." + field, definition, repetition, element)
        else:
            inside = (definition + 1, repetition + 1, definition + 1)
            if isinstance(kind, Map):
                self.enter(kind.key, name + ".key", *inside)
                self.enter(kind.item, name + ".value", *inside)
            else:
                self.enter(kind.item, name, *inside)
        kind.last = len(self.leaves)

    def add(self, kind, value, repetition, definition, lists):
        if value is None or (isinstance(kind, (List, Map)) and not value):
            for leaf in self.leaves[kind.first:kind.last]:
                leaf.slots.append((repetition, definition + (kind.optional and value is not None), None))
            return
        definition += kind.optional
        if isinstance(kind, Leaf):
            self.leaves[kind.first].slots.append((repetition, definition, value))
        elif isinstance(kind, Struct):
            for field, inner in kind.fields.items():
                self.add(inner, value[field], repetition, definition, lists)
        else:
            for i, each in enumerate(value):
                parts = zip((kind.key, kind.item), each) if isinstance(kind, Map) else [(kind.item, each)]
                for inner, part in parts:
                    self.add(inner, part, lists + 1 if i else repetition, definition + 1, lists + 1)


class Parquet(Compact):
    """@ivar reals names of the columns in which, as the file says, values may be missing."""

    def __init__(self, generator):
        self.generator, self.reals = generator, set()

    def levels(self, values):
        """As runs of equal levels."""
        runs = b""
        last, count = None, 0
        for value in values + [None]:
            if value == last:
                count += 1
                continue
            if count:
                runs += self.varint(2 * count) + bytes([last])
            last, count = value, 1
        return runs

    def pages(self, slots, is_second):
        """A page of version 2 begins with a row."""
        chance = self.generator.choice([0.0, 0.02, 0.3])
        cuts = [i for i, slot in enumerate(slots)
                if i == 0 or (self.generator.random() < chance and not (is_second and slot[0]))]
        return [slots[first:last] for first, last in zip(cuts, cuts[1:] + [len(slots)])]

    def data(self, kind, values, dictionary):
        """@return the number of the encoding, and the bytes."""
        if dictionary is None:
            return 0, plain(kind, values)
        return 8, bytes([8]) + self.levels([dictionary.index(plain(kind, [value])) for value in values])

    def page(self, leaf, slots, dictionary, codec, is_second):
        """@return the header and the bytes of a page, and the length without compression."""
        pack = (lambda content: gzip.compress(content, mtime=0)) if codec else (lambda content: content)
        there = [value for _, definition, value in slots if definition == leaf.most[1]]
        encoding, data = self.data(leaf.kind, there, dictionary)
        parts = [self.levels([slot[i] for slot in slots]) if leaf.most[i] else b"" for i in range(2)]
        count = len(slots)
        if not is_second:
            body = b"".join(numbers("I", [len(part)]) + part for part, most in zip(parts, leaf.most) if most) + data
            packed = pack(body)
            about = [(1, self.INT, count), (2, self.INT, encoding), (3, self.INT, 3), (4, self.INT, 3)]
            head = self.struct([(1, self.INT, 0), (2, self.INT, len(body)), (3, self.INT, len(packed)),
                                (5, self.STRUCT, about)])
            return head + packed, len(head) + len(body)
        levels = b"".join(parts)
        packed = levels + pack(data)
        rows = sum(slot[0] == 0 for slot in slots)
        about = [(1, self.INT, count), (2, self.INT, count - len(there)), (3, self.INT, rows), (4, self.INT, encoding),
                 (5, self.INT, len(parts[1])), (6, self.INT, len(parts[0]))]
        head = self.struct([(1, self.INT, 3), (2, self.INT, len(levels + data)), (3, self.INT, len(packed)),
                            (8, self.STRUCT, about)])
        return head + packed, len(head) + len(levels + data)

    def dictionary_page(self, leaf, dictionary, codec):
        body = b"".join(dictionary)
        packed = gzip.compress(body, mtime=0) if codec else body
        about = [(1, self.INT, len(dictionary)), (2, self.INT, 0)]
        head = self.struct([(1, self.INT, 2), (2, self.INT, len(body)), (3, self.INT, len(packed)), (7, self.STRUCT, about)])
        return head + packed, len(head) + len(body)

    def dictionary(self, leaf):
        there = [value for _, definition, value in leaf.slots if definition == leaf.most[1]]
        different = list(dict.fromkeys(plain(leaf.kind, [value]) for value in there))
        has_one = leaf.kind != "truth" and 0 < len(different) < 256 and self.generator.random() < 0.4
        return different if has_one else None

    def chunk(self, leaf, content):
        codec, is_second = self.generator.choice([0, 2]), self.generator.random() < 0.5
        dictionary = self.dictionary(leaf)
        begin = place = len(content)
        whole = 0
        pages = [self.dictionary_page(leaf, dictionary, codec)] if dictionary else []
        pages += [self.page(leaf, slots, dictionary, codec, is_second) for slots in self.pages(leaf.slots, is_second)]
        for i, (page, length) in enumerate(pages):
            content += page
            whole += length
            place = len(content) if dictionary and i == 0 else place
        about = [(1, self.INT, STORED[leaf.kind][0]), (2, self.LIST, (self.INT, [0, 3])),
                 (3, self.LIST, (self.TEXT, leaf.path)), (4, self.INT, codec), (5, self.LONG, len(leaf.slots)),
                 (6, self.LONG, whole), (7, self.LONG, len(content) - begin), (9, self.LONG, place)]
        about += [(11, self.LONG, begin)] if dictionary else []
        missing = sum(definition < leaf.most[1] for _, definition, _ in leaf.slots)
        is_told = self.generator.random() < 0.5
        about += [(12, self.STRUCT, [(3, self.LONG, missing)])] if is_told else []
        if leaf.slots and leaf.most[1] > leaf.element and (missing or not is_told):
            self.reals.add(leaf.name)
        return [(2, self.LONG, begin), (3, self.STRUCT, about)]

    def elements(self, kind, name, repetition=None):
        """The elements of the schema's tree, each with the names on the way to it."""
        place = [(3, self.INT, int(kind.optional) if repetition is None else repetition), (4, self.TEXT, name)]
        if isinstance(kind, Leaf):
            text = [(6, self.INT, 0)] if kind.kind == "text" else []
            return [([name], [(1, self.INT, STORED[kind.kind][0])] + place + text)]
        if isinstance(kind, Struct):
            return self.group(name, place + [(5, self.INT, len(kind.fields))],
                              [self.elements(inner, field) for field, inner in kind.fields.items()])
        if isinstance(kind, Map):
            pair = self.group("key_value", [(3, self.INT, 2), (4, self.TEXT, "key_value"), (5, self.INT, 2)],
                              [self.elements(kind.key, kind.names[0]), self.elements(kind.item, kind.names[1])])
            return self.group(name, place + [(5, self.INT, 1), (6, self.INT, 1)], [pair])
        if kind.form == "bare":
            return self.elements(kind.item, name, repetition=2)
        if kind.form == "old":
            inside = self.elements(kind.item, "array", repetition=2)
        else:
            middle, item = ("list", "element") if kind.form == "usual" else ("bag", "array_element")
            inside = self.group(middle, [(3, self.INT, 2), (4, self.TEXT, middle), (5, self.INT, 1)],
                                [self.elements(kind.item, item)])
        return self.group(name, place + [(5, self.INT, 1), (6, self.INT, 3)], [inside])

    def group(self, name, element, children):
        return [([name], element)] + [([name] + path, inner) for child in children for path, inner in child]

    def file(self, types, groups):
        """@param groups values by column of each row group."""
        content = bytearray(b"PAR1")
        tree = [each for name, kind in types.items() for each in self.elements(kind, name)]
        paths = [path for path, element in tree if element[0][0] == 1]
        written = []
        for values in groups:
            begin, rows = len(content), len(next(iter(values.values())))
            shredder = Shredder(types)
            for name, kind in types.items():
                for value in values[name]:
                    shredder.add(kind, value, 0, 0, 0)
            for leaf, path in zip(shredder.leaves, paths):
                leaf.path = path
            chunks = [self.chunk(leaf, content) for leaf in shredder.leaves]
            written.append([(1, self.LIST, (self.STRUCT, chunks)), (2, self.LONG, len(content) - begin), (3, self.LONG, rows)])
        elements = [[(4, self.TEXT, "schema"), (5, self.INT, len(types))]] + [element for _, element in tree]
        rows = sum(len(next(iter(values.values()))) for values in groups)
        footer = self.struct([(1, self.INT, 2), (2, self.LIST, (self.STRUCT, elements)), (3, self.LONG, rows),
                              (4, self.LIST, (self.STRUCT, written))])
        return bytes(content) + footer + numbers("I", [len(footer)]) + b"PAR1"

    def value(self, kind, value):
        if kind == self.LIST and len(value[1]) >= 15:
            item, values = value
            return bytes([0xF0 | item]) + self.varint(len(values)) + b"".join(self.value(item, each) for each in values)
        if kind in (self.INT, self.LONG):
            return self.varint((value << 1) ^ (value >> 63))
        if kind == self.TEXT:
            return self.varint(len(value.encode())) + value.encode()
        return super().value(kind, value)


class Arrow:
    """@ivar reals names of the columns in which, as the file says, values may be missing."""

    def __init__(self, generator):
        self.generator, self.reals = generator, set()

    def field(self, kind, name):
        def row(number, about, children):
            return {0: name, 1: ("?", kind.optional), 2: ("B", number), 3: about, 5: children}
        if isinstance(kind, Leaf):
            about = {"real": {0: ("h", 2)}, "single": {0: ("h", 1)}, "long": {0: ("i", 64), 1: ("?", True)},
                     "short": {0: ("i", 32), 1: ("?", True)}}
            return row(STORED[kind.kind][1], about.get(kind.kind, {}), [])
        if isinstance(kind, Struct):
            return row(13, {}, [self.field(inner, name) for name, inner in kind.fields.items()])
        if isinstance(kind, Map):
            pair = {0: "entries", 1: ("?", False), 2: ("B", 13), 3: {},
                    5: [self.field(kind.key, kind.names[0]), self.field(kind.item, kind.names[1])]}
            return row(17, {0: ("?", False)}, [pair])
        number, about = (16, {0: ("i", kind.length)}) if kind.length else (21 if kind.is_wide else 12, {})
        return row(number, about, [self.field(kind.item, "item")])

    def add(self, content):
        self.buffers.append((len(self.content), len(content)))
        self.content += content + bytes(-len(content) % 8)

    def begin_array(self, values, names):
        missing = sum(value is None for value in values)
        self.nodes.append((len(values), missing))
        has_map = missing or self.generator.random() < 0.5
        self.add(bits([value is not None for value in values]) if has_map else b"")
        self.reals.update(names if missing else [])

    def offsets(self, code, begin, lengths):
        ends = [begin]
        for length in lengths:
            ends.append(ends[-1] + length)
        self.add(numbers(code, ends))

    def leaf(self, kind, values):
        if kind == "text":
            self.offsets("i", 0, [len(value.encode()) for value in values])
            self.add("".join(values).encode())
        else:
            self.add(plain(kind, values))

    def leaves(self, kind, name):
        """Names of the leaves below, not through lists."""
        if isinstance(kind, Leaf):
            return [name]
        fields = kind.fields.items() if isinstance(kind, Struct) else []
        return [leaf for field, inner in fields for leaf in self.leaves(inner, name + "." + field)]

    def array(self, kind, name, values):
        """What a missing value hides may be anything."""
        self.begin_array(values, self.leaves(kind, name))
        filled = [kind.value(self.generator) if value is None else value for value in values]
        if isinstance(kind, Leaf):
            self.leaf(kind.kind, filled)
        elif isinstance(kind, Struct):
            for field, inner in kind.fields.items():
                self.array(inner, name + "." + field, [value[field] for value in filled])
        else:
            self.several(kind, name, filled)

    def several(self, kind, name, lists):
        before = []
        if isinstance(kind, Map) or kind.length is None:
            before = kind.value(self.generator) if self.generator.random() < 0.3 else []
            self.offsets("q" if isinstance(kind, List) and kind.is_wide else "i", len(before), [len(each) for each in lists])
        inside = before + [each for one in lists for each in one]
        if isinstance(kind, List):
            self.array(kind.item, name, inside)
            return
        self.nodes.append((len(inside), 0))
        self.add(b"")
        self.array(kind.key, name + ".key", [pair[0] for pair in inside])
        self.array(kind.item, name + ".value", [pair[1] for pair in inside])

    def message(self, kind, header, body):
        content = Flat({0: ("h", 4), 1: ("B", kind), 2: header, 3: ("q", len(body))}).out
        return b"\xff\xff\xff\xff" + numbers("I", [len(content)]) + bytes(content) + body

    def stream(self, types, batches):
        out = self.message(1, {0: ("h", 0), 1: [self.field(kind, name) for name, kind in types.items()]}, b"")
        for values in batches:
            self.content, self.buffers, self.nodes = b"", [], []
            for name, kind in types.items():
                self.array(kind, name, values[name])
            rows = len(next(iter(values.values())))
            out += self.message(3, {0: ("q", rows), 1: self.nodes, 2: self.buffers}, self.content)
        return out + b"\xff\xff\xff\xff\0\0\0\0"


def endless_parquet():
    """Forty pages, each of which says in a few bytes that one more part of a list has 2^24 missing values."""
    thrift, most = Parquet(None), 1 << 24
    content, place = b"PAR1", 4
    for page in range(40):
        repetition = (thrift.varint(2) + b"\0" + thrift.varint(2 * (most - 1)) if page == 0 else thrift.varint(2 * most)) + b"\1"
        definition = thrift.varint(2 * most) + b"\1"
        body = b"".join(numbers("I", [len(part)]) + part for part in (repetition, definition))
        about = [(1, thrift.INT, most), (2, thrift.INT, 0), (3, thrift.INT, 3), (4, thrift.INT, 3)]
        content += thrift.struct([(1, thrift.INT, 0), (2, thrift.INT, len(body)), (3, thrift.INT, len(body)),
                                  (5, thrift.STRUCT, about)]) + body
    about = [(1, thrift.INT, 5), (2, thrift.LIST, (thrift.INT, [0, 3])), (3, thrift.LIST, (thrift.TEXT, ["x", "list", "item"])),
             (4, thrift.INT, 0), (5, thrift.LONG, 40 * most), (6, thrift.LONG, len(content)), (7, thrift.LONG, len(content)),
             (9, thrift.LONG, place)]
    group = [(1, thrift.LIST, (thrift.STRUCT, [[(2, thrift.LONG, place), (3, thrift.STRUCT, about)]])),
             (2, thrift.LONG, len(content)), (3, thrift.LONG, 1)]
    schema = [[(4, thrift.TEXT, "schema"), (5, thrift.INT, 1)],
              [(3, thrift.INT, 0), (4, thrift.TEXT, "x"), (5, thrift.INT, 1), (6, thrift.INT, 3)],
              [(3, thrift.INT, 2), (4, thrift.TEXT, "list"), (5, thrift.INT, 1)],
              [(1, thrift.INT, 5), (3, thrift.INT, 1), (4, thrift.TEXT, "item")]]
    footer = thrift.struct([(1, thrift.INT, 2), (2, thrift.LIST, (thrift.STRUCT, schema)), (3, thrift.LONG, 1),
                            (4, thrift.LIST, (thrift.STRUCT, [group]))])
    return content + footer + numbers("I", [len(footer)]) + b"PAR1"


def endless_arrow():
    """A list of 2^31 - 1 values of the type that has only missing ones, and needs no bytes for them."""
    writer, most = Arrow(None), 2**31 - 1
    item = {0: "item", 1: ("?", True), 2: ("B", 1), 3: {}, 5: []}
    field = {0: "x", 1: ("?", False), 2: ("B", 12), 3: {}, 5: [item]}
    out = writer.message(1, {0: ("h", 0), 1: [field]}, b"")
    body = numbers("i", [0, most])
    return out + writer.message(3, {0: ("q", 1), 1: [(1, 0), (most, most)], 2: [(0, 0), (0, 8)]}, body)
