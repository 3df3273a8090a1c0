"""Looks at the first rows of the source. The build calls it with the program velmorak-kind."""
import csv
import pathlib
import subprocess
import sys

told = subprocess.run([sys.argv[1], "try", "Wave", pathlib.Path(__file__).parent, "--set", "rows=11"],
                      capture_output=True, text=True, check=True)
rows = list(csv.DictReader(told.stdout.splitlines()))
assert len(rows) == 11 and float(rows[5]["amplitude"]) == 1 and float(rows[10]["t"]) == 0.01, rows
