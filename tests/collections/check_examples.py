#!/usr/bin/env python3
"""Runs every example with several numbers of threads: each run succeeds, all write bit-identical files, and the text
files equal the golden results.

usage: check_examples.py VELMORAK-RUN EXAMPLES GOLDEN [--write] [--few-threads]

With --write the golden results are regenerated. With --few-threads each example runs once, on two threads.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

THREADS = ("2",) if "--few-threads" in sys.argv else ("1", "2", "3", "16")
COMPARED = (".aida", ".csv", ".dat", ".gp", ".txt")


def results_of(runner, document, threads):
    """Every file that a run writes, by name."""
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / document.parent.name
        shutil.copytree(document.parent, copy, ignore=shutil.ignore_patterns("*.results"))
        environment = dict(os.environ, VELMORAK_THREADS=threads, SOURCE_DATE_EPOCH="1700000000")
        run = subprocess.run([runner, str(copy / document.name)], cwd=folder, env=environment, stderr=subprocess.PIPE)
        assert run.returncode == 0, "%s ended with %d:\n%s" % (document.name, run.returncode, run.stderr.decode())
        results = copy / (document.stem + ".results")
        return {str(file.relative_to(results)): comparable(file) for file in results.rglob("*")
                if file.is_file() and file.name != "run.json"}


def comparable(file):
    """The content of the file, without the version of the program that wrote it."""
    return re.sub(rb'(<implementation package="Velmorak" version=)"[^"]*"', rb'\1""', file.read_bytes())


def names(files, endings):
    return sorted(name for name in files if name.endswith(endings))


def compare(golden, files, document):
    expected = {file.name: file.read_bytes() for file in golden.iterdir()}
    assert names(files, COMPARED) == sorted(expected), "%s gives %s" % (document.name, sorted(files))
    for name, content in expected.items():
        assert files[name] == content, "%s: %s is not as it was" % (document.name, name)


def write(golden, files):
    shutil.rmtree(golden, ignore_errors=True)
    golden.mkdir(parents=True)
    for name in names(files, COMPARED):
        (golden / name).write_bytes(files[name])


def check(runner, document, golden, is_writing):
    files = results_of(runner, document, THREADS[0])
    for threads in THREADS[1:]:
        assert results_of(runner, document, threads) == files, "%s depends on the threads" % document.name
    assert names(files, (".png",)) and names(files, (".svg",)), "%s draws no picture" % document.name
    if is_writing:
        write(golden, files)
    compare(golden, files, document)
    print("%s: %d files, identical for %s threads" % (document.name, len(files), ", ".join(THREADS)))


def main():
    runner = str(pathlib.Path(sys.argv[1]).resolve())
    examples, goldens = pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    documents = sorted(examples.glob("*/*.zedra"))
    assert documents, "no examples below %s" % examples
    assert sorted(golden.name for golden in goldens.iterdir()) == sorted(d.stem for d in documents) or "--write" in sys.argv
    for document in documents:
        check(runner, document, goldens / document.stem, "--write" in sys.argv)


if __name__ == "__main__":
    main()
