#!/usr/bin/env python3
"""Sorts a table of 2 million rows within a memory limit of 64 MB: the result has the same bytes as without a limit, for
any number of threads; the memory of the process stays small; and no temporary file is left, also by a killed run.

usage: check_memory_limit.py VELMORAK-RUN
"""

import hashlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

ROWS = 2_000_000
# What the program takes beside the rows: libraries, chunks in flight, and the blocks of the runs that are merged.
MOST_BESIDE_ROWS = 200 << 20


def document():
    return {
        "zedra": 1,
        "plugins": [
            {"name": "Rows", "kind": "RandomTable", "inputs": [
                {"name": "rows", "value": str(ROWS)},
                {"name": "columns", "value": "x: gauss(0, 1); y: uniform(0, 1); n: poisson(3); z: exponential(2)"}]},
            {"name": "Sorted", "kind": "Sort", "inputs": [
                {"name": "table", "from": ["Rows", "table"]}, {"name": "by", "value": "n descending; x"}]},
            {"name": "Steps", "kind": "Window", "inputs": [
                {"name": "table", "from": ["Sorted", "table"]}, {"name": "function", "value": "difference"},
                {"name": "expression", "value": "x"}, {"name": "column", "value": "step"},
                {"name": "by", "value": "n"}]},
            {"name": "File", "kind": "ParquetWriter", "inputs": [{"name": "table", "from": ["Steps", "table"]}]},
        ],
    }


def environment(folder, limit, threads):
    (folder / "temporary").mkdir(exist_ok=True)
    return dict(os.environ, VELMORAK_MEMORY_LIMIT=limit, VELMORAK_THREADS=str(threads), VELMORAK_CACHE_LIMIT="0",
                TMPDIR=str(folder / "temporary"), XDG_STATE_HOME=str(folder / "state"))


def command(runner, folder, name):
    return [runner, str(folder / "sort.zedra"), "--results", str(folder / name)]


def sorted_with(runner, folder, limit, threads):
    """Returns the SHA-256 of the sorted rows, and the most memory that the process had in bytes."""
    name = "of-%s-%d" % (limit, threads)
    process = subprocess.Popen(command(runner, folder, name), env=environment(folder, limit, threads),
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    messages = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode == 0, messages
    content = (folder / name / "File.parquet").read_bytes()
    return hashlib.sha256(content).hexdigest(), usage.ru_maxrss << 10


def has_temporary_file(pid):
    """Whether the process has an open file without a name."""
    try:
        links = [os.readlink(entry) for entry in pathlib.Path("/proc/%d/fd" % pid).iterdir()]
    except OSError:
        return False
    return any("velmorak-rows-" in link for link in links)


def kill_while_sorting(runner, folder):
    """Kills a run as soon as it has written to a temporary file."""
    process = subprocess.Popen(command(runner, folder, "killed"), env=environment(folder, "64MB", 2),
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    while process.poll() is None and not has_temporary_file(process.pid):
        pass
    assert process.poll() is None, "the run ended before it wrote to a temporary file"
    process.send_signal(signal.SIGKILL)
    process.wait()


def main(runner):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "sort.zedra").write_text(json.dumps(document()), encoding="utf-8")
        whole, of_whole = sorted_with(runner, folder, "8GB", 2)
        for threads in (1, 2, 3):
            limited, of_limited = sorted_with(runner, folder, "64MB", threads)
            print("%d threads: %d MB, without a limit %d MB" % (threads, of_limited >> 20, of_whole >> 20))
            assert limited == whole, "the limit changes the result"
            assert of_limited < (64 << 20) + MOST_BESIDE_ROWS, "the process takes %d bytes" % of_limited
        assert not list((folder / "temporary").iterdir()), "a temporary file is left"
        kill_while_sorting(runner, folder)
        assert not list((folder / "temporary").iterdir()), "a killed run has left a temporary file"
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
