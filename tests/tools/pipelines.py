"""Documents and runs for the checks of velmorak-run."""

import json
import os
import pathlib
import subprocess
import tempfile


def plugin(name, kind, **inputs):
    """A wire is a pair of plug-in and output, anything else a value."""
    listed = []
    for port, given in inputs.items():
        listed.append({"name": port, "from" if isinstance(given, list) else "value": given})
    return {"name": name, "kind": kind, "inputs": listed}


class Place:
    """A temporary folder with a document and a cache."""

    def __init__(self, runner):
        self.runner = str(pathlib.Path(runner).resolve())

    def __enter__(self):
        self.held = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.held.name)
        self.environment = dict(os.environ, XDG_CACHE_HOME=str(self.folder / "cache"),
                                SOURCE_DATE_EPOCH="1700000000")  # The date that reports show.
        self.environment.pop("VELMORAK_CACHE_LIMIT", None)
        return self

    def __exit__(self, *_):
        self.held.cleanup()

    def document(self, *plugins):
        path = self.folder / "test.zedra"
        path.write_text(json.dumps({"zedra": 1, "plugins": list(plugins)}))
        return str(path)

    def run(self, *arguments):
        return subprocess.run([self.runner, *arguments], cwd=self.folder, env=self.environment, capture_output=True,
                              text=True, timeout=300)

    def record(self, folder="test.results"):
        return json.loads((self.folder / folder / "run.json").read_text())


def table(rows):
    """A table of random numbers with statistics, a histogram, and a file of the histogram."""
    return [
        plugin("Rows", "RandomTable", rows=str(rows), columns="x: gauss(0, 1)", seed="7"),
        plugin("Mean", "Statistics", data=["Rows", "table"], expression="x"),
        plugin("Above", "Filter", table=["Rows", "table"], condition="x > mean", mean=["Mean", "mean"]),
        plugin("Upper", "Histogram1D", table=["Above", "table"], expression="x", bins="50", low="0", high="5"),
        plugin("Writer", "AidaWriter", object=["Upper", "histogram"], file="upper.aida"),
    ]
