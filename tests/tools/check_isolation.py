#!/usr/bin/env python3
"""Kinds in helper processes, as users of the runner meet them: failures name plug-in and cause, others go on, what a
kind prints is passed on, and no process is left when the runner is killed.

usage: check_isolation.py VELMORAK-RUN COLLECTIONS

COLLECTIONS is the folder of the collection Trouble.
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import uuid


def plugin(name, kind, **inputs):
    return {"name": name, "kind": kind, "inputs": [{"name": key, "value": value} for key, value in inputs.items()]}


def write(folder, *plugins):
    document = folder / "pipeline.zedra"
    document.write_text(json.dumps({"zedra": 1, "plugins": list(plugins)}))
    return document


def processes_with(mark):
    """The programs, except zombies, whose environment has the mark."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if mark.encode() in (entry / "environ").read_bytes():
                found.append((entry / "comm").read_text().strip())
        except (OSError, ValueError):
            pass  # It belongs to another user, or has ended.
    return found


class Program:
    def __init__(self, runner, collections, folder):
        self.runner = runner
        self.mark = "MARK=" + str(uuid.uuid4())
        name, value = self.mark.split("=")
        self.folder = folder
        self.environment = dict(os.environ, VELMORAK_COLLECTIONS=collections, XDG_CACHE_HOME=str(folder / "cache"),
                                VELMORAK_CACHE_LIMIT="0", **{name: value})
        self.environment.pop("VELMORAK_ISOLATE", None)

    def run(self, document, **more):
        return subprocess.run([self.runner, str(document)], env=dict(self.environment, **more), cwd=self.folder,
                              capture_output=True, text=True, check=False)

    def start_deaf(self, stderr=subprocess.DEVNULL):
        """A run whose plug-in does not stop, and has begun."""
        sign = self.folder / "sign"
        document = write(self.folder, plugin("deaf", "Trouble", how="hang", sign=str(sign)))
        running = subprocess.Popen([self.runner, str(document)], env=self.environment, cwd=self.folder,
                                   stdout=subprocess.DEVNULL, stderr=stderr, text=True)
        while not sign.exists():
            assert running.poll() is None, "the runner has ended"
        sign.unlink()
        return running


def others_go_on(program):
    others = [plugin("bad", "Trouble", how="segfault"), plugin("good", "Trouble"),
              plugin("prints", "Trouble", how="print")]
    for other in others:
        other["inputs"].append({"name": "after", "from": ["first", "number"]})
    document = write(program.folder, plugin("first", "Trouble"), *others)
    run = program.run(document)
    assert 'Trouble "bad" failed: its process crashed (segmentation fault)' in run.stderr, run.stderr
    assert "by a stream\nby the C library\n" in run.stderr, run.stderr
    record = json.loads((document.with_suffix(".results") / "run.json").read_text())
    outcomes = {each["name"]: each["outcome"] for each in record["plugins"]}
    assert outcomes == {"first": "done", "bad": "failed", "good": "done", "prints": "done"}, outcomes


def crash_inside_is_one_of_the_program(program):
    run = program.run(write(program.folder, plugin("bad", "Trouble", how="segfault")), VELMORAK_ISOLATE="0")
    assert run.returncode < 0, run.returncode
    assert 'Trouble "bad" crashed (segmentation fault); the program ends.' in run.stderr, run.stderr


def memory_has_a_limit(program):
    run = program.run(write(program.folder, plugin("bad", "Trouble", how="memory")), VELMORAK_ISOLATE_MEMORY="50MB")
    assert "its process may use 50 MB (VELMORAK_ISOLATE_MEMORY)" in run.stderr, run.stderr


def a_deaf_kind_is_ended(program):
    running = program.start_deaf(subprocess.PIPE)
    running.send_signal(signal.SIGINT)
    _, errors = running.communicate()
    assert 'Trouble "deaf" failed: it did not stop, and its process was ended' in errors, errors
    assert "The run was stopped." in errors and running.returncode == 3, (running.returncode, errors)


def nothing_is_left_of_a_killed_program(program):
    running = program.start_deaf()
    assert len(processes_with(program.mark)) >= 3, "runner, host and helper: %s" % processes_with(program.mark)
    running.kill()
    running.wait()
    while processes_with(program.mark):
        pass


def main(runner, collections):
    for check in (others_go_on, crash_inside_is_one_of_the_program, memory_has_a_limit,
                  a_deaf_kind_is_ended, nothing_is_left_of_a_killed_program):
        with tempfile.TemporaryDirectory() as folder:
            check(Program(runner, collections, pathlib.Path(folder)))


if __name__ == "__main__":
    main(*map(os.path.abspath, sys.argv[1:]))
