#!/usr/bin/env python3
"""Checks that docs/environment.md lists exactly the environment variables that the sources read.

usage: check_environment.py SOURCE
"""

import pathlib
import re
import sys

FOLDERS = ["collections", "engine", "formats", "qz", "sdk", "src", "tools"]
NAME = r'"((?:VELMORAK|XDG)_[A-Z_]+|HOME|SOURCE_DATE_EPOCH)"'


def named_in_sources(source):
    files = [file for folder in FOLDERS for file in (source / folder).rglob("*") if file.suffix in (".cpp", ".h")]
    return {name for file in files for name in re.findall(NAME, file.read_text(encoding="utf-8"))
            if name != "VELMORAK_COLLECTION"}


def listed(source):
    page = (source / "docs" / "environment.md").read_text(encoding="utf-8")
    return set(re.findall(r"^\| `([A-Z_]+)`", page, re.MULTILINE))


def main(source):
    source = pathlib.Path(source)
    sources, page = named_in_sources(source), listed(source)
    for name in sorted(sources - page):
        print(f"docs/environment.md does not list {name}, which the sources read")
    for name in sorted(page - sources):
        print(f"docs/environment.md lists {name}, which no source reads")
    return 1 if sources != page else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
