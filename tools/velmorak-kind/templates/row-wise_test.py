"""Runs the kind on a small table. The build calls it with the program velmorak-kind."""
import csv
import math
import pathlib
import subprocess
import sys
import tempfile

with tempfile.TemporaryDirectory() as folder:
    table = pathlib.Path(folder) / "table.csv"
    table.write_text("x,y\n3,4\n0,2\n")
    told = subprocess.run([sys.argv[1], "try", "Polar", pathlib.Path(__file__).parent, "--table", table],
                          capture_output=True, text=True, check=True)
rows = list(csv.DictReader(told.stdout.splitlines()))
assert [float(row["r"]) for row in rows] == [5, 2], rows
assert math.isclose(float(rows[1]["phi"]), math.pi / 2), rows
