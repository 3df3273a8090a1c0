#!/usr/bin/env python3
"""Without one of the libraries that only the collection Formats needs, the program says so in one line and goes on.

usage: check_missing_library.py VELMORAK-RUN FORMATS-COLLECTION
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

def libraries_of(file):
    listing = subprocess.run(["readelf", "--dynamic", str(file)], capture_output=True, text=True, check=True,
                             env=dict(os.environ, LC_ALL="C")).stdout
    return re.findall(r"\(NEEDED\).*\[(.*)\]", listing)


def loaded_by(program):
    """Also the libraries of its libraries."""
    listing = subprocess.run(["ldd", str(program)], capture_output=True, text=True, check=True).stdout
    return {pathlib.Path(line.split()[0]).name for line in listing.splitlines()}


def document(folder, *plugins):
    file = folder / "pipeline.zedra"
    file.write_text(json.dumps({"zedra": 1, "plugins": list(plugins)}))
    return file


def plugin(name, kind, **values):
    return {"name": name, "kind": kind, "inputs": [
        {"name": key, "from": value} if isinstance(value, list) else {"name": key, "value": value}
        for key, value in values.items()]}


def check(runner, library, folder):
    (folder / "rows.csv").write_text("x\n1\n2\n4\n")
    broken = folder / "libraries"
    broken.mkdir()
    (broken / library).write_bytes(b"")
    environment = dict(os.environ, LD_LIBRARY_PATH=str(broken), VELMORAK_CACHE_LIMIT="0")

    def run(*plugins):
        return subprocess.run([runner, str(document(folder, *plugins))], env=environment, capture_output=True, text=True,
                              check=False)

    rows = plugin("Rows", "CsvTable", file="rows.csv")
    fine = run(rows, plugin("Spread", "Statistics", table=["Rows", "table"], expression="x"))
    assert fine.returncode == 0, fine.stderr
    complaints = [line for line in fine.stderr.splitlines() if library in line]
    assert len(complaints) == 1 and "Formats" in complaints[0] and "is skipped" in complaints[0], fine.stderr
    without = run(plugin("Image", "FitsTable", file="image.fits"))
    assert without.returncode == 2, without.stderr
    assert 'FitsTable "Image" failed: no collection of this build offers the kind "FitsTable"' in without.stderr, \
        without.stderr


def main():
    runner, formats = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    missing = [name for name in libraries_of(formats) if name not in loaded_by(runner)]
    assert len(missing) > 2, missing
    for library in missing:
        with tempfile.TemporaryDirectory() as folder:
            check(str(runner), library, pathlib.Path(folder))
    print("the program works without " + ", ".join(missing))


if __name__ == "__main__":
    main()
