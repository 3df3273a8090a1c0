#!/usr/bin/env python3
"""The symbols of glibc that ELF files (64 bits, little-endian) ask for.

usage: glibc.py list VERSION FILE|FOLDER...   lists symbols newer than VERSION, as 2.34; exit status 1 if there is any
       glibc.py lower VERSION FILE...         asks for these functions without a version; prints the files it has changed

Without a version, the loader takes the function that the C library has, the oldest if it has several, or else that of
another library.
"""

import pathlib
import re
import struct
import sys

# Those of NewerFunctions.cpp; those whose oldest version differs by nothing that a bundled library relies on (hypot of
# cairo: it also sets errno).
SUBSTITUTED = {"arc4random", "arc4random_buf", "_dl_find_object"}
OLDER = {"hypot"}
VERSION_OF_SYMBOLS, NEEDED_VERSIONS, DYNAMIC_SYMBOLS = 0x6FFFFFFF, 0x6FFFFFFE, 11
UNVERSIONED = 1


class Refused(Exception):
    """A file that cannot be changed."""


def newer(name, limit):
    found = re.fullmatch(r"GLIBC_(\d+)\.(\d+)(?:\.\d+)?", name)
    return bool(found) and (int(found[1]), int(found[2])) > limit


class Elf:
    """One file with its dynamic symbols and the versions that it needs."""

    def __init__(self, file):
        self.file = file
        self.data = bytearray(file.read_bytes())
        self.sections = {}
        if self.data[:6] != b"\x7fELF\x02\x01":
            raise Refused(f"{file}: no ELF file of 64 bits")
        offset, = struct.unpack_from("<Q", self.data, 0x28)
        size, count = struct.unpack_from("<HH", self.data, 0x3A)
        headers = [struct.unpack_from("<IIQQQQIIQQ", self.data, offset + i * size) for i in range(count)]
        for header in headers:
            self.sections.setdefault(header[1], header)
        self.headers = headers

    def text(self, section, offset):
        start = self.headers[section[6]][4] + offset
        return self.data[start:self.data.index(0, start)].decode()

    def needs(self):
        """(position of the library's record, position of the version's record, the one before or None, index, name)"""
        section = self.sections.get(NEEDED_VERSIONS)
        library = section[4] if section else None
        while library is not None:
            _, _, _, first, following = struct.unpack_from("<HHIII", self.data, library)
            at, before = library + first, None
            while True:
                _, _, index, name, step = struct.unpack_from("<IHHII", self.data, at)
                yield library, at, before, index, self.text(section, name)
                if not step:
                    break
                before, at = at, at + step
            library = library + following if following else None

    def symbols(self, wanted):
        """(position of the version, name) of the symbols with the version of this index."""
        versions, table = self.sections[VERSION_OF_SYMBOLS], self.sections[DYNAMIC_SYMBOLS]
        for i in range(table[5] // 24):
            place = versions[4] + 2 * i
            if struct.unpack_from("<H", self.data, place)[0] & 0x7FFF == wanted:
                yield place, self.text(table, struct.unpack_from("<I", self.data, table[4] + 24 * i)[0])

    def remove(self, library, at, before):
        """Takes the record of a version out of its list."""
        step, = struct.unpack_from("<I", self.data, at + 12)
        if before is not None:
            old, = struct.unpack_from("<I", self.data, before + 12)
            struct.pack_into("<I", self.data, before + 12, old + step if step else 0)
        else:
            first, = struct.unpack_from("<I", self.data, library + 8)
            struct.pack_into("<I", self.data, library + 8, first + step)
        count, = struct.unpack_from("<H", self.data, library + 2)
        if count == 1:
            raise Refused(f"{self.file}: no older version is left")
        struct.pack_into("<H", self.data, library + 2, count - 1)

    def newer_symbols(self, limit):
        """{version: names of its symbols} of newer versions; a version may be asked for without a symbol."""
        return {name: sorted(symbol for _, symbol in self.symbols(index))
                for _, _, _, index, name in self.needs() if newer(name, limit)}

    def lower(self, limit):
        """@return whether anything was changed."""
        is_changed = False
        while record := next((each for each in self.needs() if newer(each[4], limit)), None):
            library, at, before, index, version = record
            for place, name in self.symbols(index):
                if name not in SUBSTITUTED | OLDER:
                    raise Refused(f"{self.file}: {name} of {version} has no substitute")
                struct.pack_into("<H", self.data, place, UNVERSIONED)
            self.remove(library, at, before)
            is_changed = True
        if is_changed:
            self.file.write_bytes(self.data)
        return is_changed


def elf_files(paths):
    for path in map(pathlib.Path, paths):
        for file in sorted(path.rglob("*")) if path.is_dir() else [path]:
            if file.is_file() and not file.is_symlink() and file.open("rb").read(6) == b"\x7fELF\x02\x01":
                yield file


def main(verb, version, *paths):
    limit = tuple(map(int, version.split(".")))
    files = list(elf_files(paths))
    if verb == "lower":
        for file in files:
            if Elf(file).lower(limit):
                print(file)
        return 0
    wrong = 0
    for file in files:
        for name, symbols in Elf(file).newer_symbols(limit).items():
            print(f"{file}: {name}: {', '.join(symbols)}")
            wrong += 1
    print(f"{len(files)} files, {wrong} with symbols of glibc after {version}")
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except (Refused, KeyError, struct.error) as reason:
        sys.exit(f"glibc.py: {reason}")
