"""Runs the kind on two numbers. The build calls it with the program velmorak-kind."""
import pathlib
import subprocess
import sys

told = subprocess.run([sys.argv[1], "try", "Asymmetry", pathlib.Path(__file__).parent, "--set", "a=3", "--set", "b=1"],
                      capture_output=True, text=True, check=True)
assert "asymmetry: 0.5" in told.stdout, told.stdout
