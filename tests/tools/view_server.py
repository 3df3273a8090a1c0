"""A velmorak-view for the checks: its folders, its process, and requests to it."""

import http.client
import json
import os
import pathlib
import subprocess
import tempfile
import urllib.parse


class View:
    """A server with a runtime folder of its own."""

    def __init__(self, program):
        self.program = str(pathlib.Path(program).resolve())

    def __enter__(self):
        self.held = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.held.name)
        self.runtime = self.folder / "runtime"
        self.runtime.mkdir(mode=0o700)
        self.environment = dict(os.environ, XDG_RUNTIME_DIR=str(self.runtime), LC_ALL="C.UTF-8",
                                XDG_CACHE_HOME=str(self.folder / "cache"))
        self.environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        self.process = None
        return self

    def __exit__(self, *_):
        if self.process:
            self.process.terminate()
            self.process.wait()
            self.process.stdout.close()
        self.held.cleanup()

    def start(self, *arguments):
        self.process = subprocess.Popen([self.program, "--no-open", *map(str, arguments)], cwd=self.folder,
                                        env=self.environment, stdout=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()
        parts = urllib.parse.urlsplit(self.address)
        self.port, self.root = parts.port, parts.path
        return self

    def ask(self, path, method="GET", headers=None, host=None):
        """@return status, headers, body."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.putrequest(method, path, skip_host=True)
        connection.putheader("Host", host or "127.0.0.1:%d" % self.port)
        for name, value in (headers or {}).items():
            connection.putheader(name, value)
        connection.endheaders()
        answer = connection.getresponse()
        body = answer.read()
        connection.close()
        return answer.status, dict(answer.getheaders()), body

    def get(self, path, **others):
        return self.ask(self.root + path, **others)

    def newest_run(self):
        """Name of the file of the run that began last."""
        runs = (self.runtime / "velmorak").glob("run-*.jsonl")
        return max(runs, key=lambda path: json.loads(path.read_text().splitlines()[0])["time"]).name

    def announce(self, number, *events):
        """Writes what a run tells. @return its file."""
        folder = self.runtime / "velmorak"
        folder.mkdir(mode=0o700, exist_ok=True)
        path = folder / ("run-%d-0.jsonl" % number)
        path.write_text("".join(json.dumps(event) + "\n" for event in events))
        return path


def began(document, results, pipeline=(), time=0):
    return {"event": "began", "version": 1, "document": str(document), "settings": [], "results": str(results),
            "plugins": len(pipeline), "threads": 2, "process": 1, "time": time, "pipeline": list(pipeline)}


def ended(outcome="done", former=()):
    return {"event": "ended", "outcome": outcome, "seconds": 1.5, "former": list(former)}
