#!/usr/bin/env python3
"""Regenerates the data of the examples and compares it bit for bit.

usage: check_example_data.py EXAMPLES
"""

import pathlib
import subprocess
import sys
import tempfile

MADE = (".aida", ".arrow", ".csv", ".db", ".fits", ".h5", ".hepmc", ".npy", ".parquet", ".yoda")

examples = pathlib.Path(sys.argv[1])
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.executable, str(examples / "make_data.py"), folder], check=True)
    made = sorted(path.relative_to(folder) for path in pathlib.Path(folder).rglob("*.*"))
    # Other ROOT files come from the program of that name.
    kept = sorted(path.relative_to(examples) for path in examples.rglob("*.*")
                  if path.suffix in MADE or path.name == "run.root")
    assert made == kept, "made %s, kept %s" % (made, kept)
    for path in made:
        assert (pathlib.Path(folder) / path).read_bytes() == (examples / path).read_bytes(), "%s differs" % path
        print("%s is regenerated bit for bit" % path)
