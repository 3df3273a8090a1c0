#!/usr/bin/env python3
"""Checks that a library exports exactly the classes and functions that a list names.

A subject is a class with its members, or a function. Usage: check_exports.py LIBRARY LIST
"""
import re
import subprocess
import sys


def subject_of(symbol):
    """velmorak::Axis::Axis(double) and vtable for velmorak::Axis are both velmorak::Axis."""
    symbol = re.sub(r"^(vtable|typeinfo|typeinfo name|VTT|guard variable|(non-)?virtual thunk) (for|to) ", "", symbol)
    name = re.split(r"[(<\[]", symbol, maxsplit=1)[0]
    parts = name.split("::")
    return "::".join(parts[:2] if parts[0] == "velmorak" else parts[:1])


def main():
    library, expected = sys.argv[1:]
    names = subprocess.run(["nm", "--dynamic", "--demangle", "--defined-only", library],
                           check=True, capture_output=True, text=True).stdout
    found = {subject_of(line.split(" ", 2)[2]) for line in names.splitlines()}
    with open(expected, encoding="utf-8") as file:
        wanted = {line.strip() for line in file if line.strip()}
    for name in sorted(found - wanted):
        print(f"{library} exports {name}, which is missing in {expected}")
    for name in sorted(wanted - found):
        print(f"{library} does not export {name}, which is listed in {expected}")
    print(f"{len(names.splitlines())} symbols of {len(found)} subjects")
    return 0 if found == wanted else 1


sys.exit(main())
