#!/usr/bin/env python3
"""No include crosses a boundary that the table "Where things are" in CONTRIBUTING.md does not allow, every folder of
sources has a row there, and engine/ itself holds nothing but its CMakeLists.txt.

usage: check_includes.py SOURCE
"""

import os
import pathlib
import re
import sys

TREES = ["qz", "src", "canvas", "sdk", "formats", "engine", "collections", "tools", "tests/support/recording"]
ROOTS = ["engine", "formats", "sdk/include", "qz", "collections", "tools/velmorak-run"]
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.MULTILINE)
TOOLKIT = re.compile(r"(gtk|gdk|gio|glib|giomm|atk|cairo|pango|sigc\+\+|goocanvas)")


def table(source):
    """Folder -> what its row says that it knows, in the words of the row."""
    page = (source / "CONTRIBUTING.md").read_text(encoding="utf-8")
    section = page.split("## Where things are", 1)[1].split("\n## ", 1)[0]
    rows = re.findall(r"^\| `([^`]+/)` \| [^|]+ \| ([^|]+) \|$", section, re.MULTILINE)
    return {folder: {word.strip(" `") for word in knows.split(",")} for folder, knows in rows}


def row_of(path, rows):
    """The row of the innermost folder that the file lies in; None without one."""
    return max((folder for folder in rows if path.startswith(folder)), key=len, default=None)


def target(source, file, name):
    """Path of the included header relative to the source tree; None for one of the system or of a library."""
    for folder in [file.parent, *(source / root for root in ROOTS)]:
        if (folder / name).is_file():
            return os.path.relpath((folder / name).resolve(), source)
    return None


def complaint(source, file, bracket, name, rows):
    """The reason why an include is wrong, or an empty text."""
    own = row_of(str(file.relative_to(source)), rows)
    included = target(source, file, name)
    if included is None:
        is_gio = name.startswith("gio/") and "Gio" in rows[own]
        if TOOLKIT.match(name) and "gtkmm" not in rows[own] and not is_gio:
            return f"{own} does not know gtkmm"
        return "" if bracket == "<" else "there is no such header"
    other = row_of(included, rows)
    if other is None:
        return f"the table has no row for {included}"
    return "" if other == own or other in rows[own] else f"{own} does not know {other}"


def main(source):
    source = pathlib.Path(source).resolve()
    rows = table(source)
    wrong = [f"CONTRIBUTING.md has a row for {folder}, which is no folder" for folder in rows
             if not (source / folder).is_dir()]
    wrong += [f"CONTRIBUTING.md: {folder} knows {known}, which has no row" for folder in rows
              for known in sorted(rows[folder]) if known.endswith("/") and known not in rows]
    files = sorted(file for tree in TREES for file in (source / tree).rglob("*") if file.suffix in (".h", ".cpp"))
    for file in files:
        relative = file.relative_to(source)
        if row_of(str(relative), rows) is None:
            wrong.append(f"{relative}: the table in CONTRIBUTING.md has no row for its folder")
            continue
        for bracket, name in INCLUDE.findall(file.read_text(encoding="utf-8")):
            if reason := complaint(source, file, bracket, name, rows):
                wrong.append(f"{relative} includes {name}: {reason}")
    wrong += [f"engine/{file.name}: no file but CMakeLists.txt lies in engine/ itself"
              for file in sorted((source / "engine").iterdir()) if file.is_file() and file.name != "CMakeLists.txt"]
    print("\n".join(wrong) if wrong else f"{len(files)} files respect the {len(rows)} rows")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
