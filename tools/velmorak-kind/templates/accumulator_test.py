"""Runs the kind on a small table. The build calls it with the program velmorak-kind."""
import pathlib
import subprocess
import sys
import tempfile

with tempfile.TemporaryDirectory() as folder:
    table = pathlib.Path(folder) / "table.csv"
    table.write_text("x\n3\n-7\n2\n")
    told = subprocess.run([sys.argv[1], "try", "Extent", pathlib.Path(__file__).parent, "--table", table],
                          capture_output=True, text=True, check=True)
assert "lowest: -7" in told.stdout and "highest: 3" in told.stdout, told.stdout
