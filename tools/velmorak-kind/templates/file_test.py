"""Reads a small file. The build calls it with the program velmorak-kind."""
import csv
import pathlib
import subprocess
import sys
import tempfile

with tempfile.TemporaryDirectory() as folder:
    file = pathlib.Path(folder) / "words.txt"
    file.write_text("one 1\ntwo 2\n")
    told = subprocess.run([sys.argv[1], "try", "Words", pathlib.Path(__file__).parent, "--set", f"file={file}"],
                          capture_output=True, text=True, check=True)
rows = list(csv.DictReader(told.stdout.splitlines()))
assert [(row["word"], float(row["number"])) for row in rows] == [("one", 1), ("two", 2)], rows
