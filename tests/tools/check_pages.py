#!/usr/bin/env python3
"""Checks that the manual page, docs/running.md and the completion have exactly the options of --help, and that --help
fits on a screen.

usage: check_pages.py VELMORAK-RUN SOURCE
"""

import pathlib
import re
import subprocess
import sys

OPTION = r"(?<![\w-])(--?[a-z]+)(?![\w-])"


def options(text):
    return set(re.findall(OPTION, text))


def completed(script, *words):
    """The completions of the last word."""
    line = "source %s; COMP_WORDS=(%s); COMP_CWORD=%d; _velmorak_run; printf '%%s\\n' \"${COMPREPLY[@]}\"" % (
        script, " ".join("'%s'" % word for word in words), len(words) - 1)
    done = subprocess.run(["bash", "-c", line], capture_output=True, text=True, check=True)
    return set(done.stdout.split())


def main(runner, source):
    source = pathlib.Path(source)
    text = subprocess.run([runner, "--help"], capture_output=True, text=True, check=True).stdout
    lines = text.splitlines()
    assert len(lines) <= 24 and max(map(len, lines)) <= 80, "%d lines, %d wide" % (len(lines), max(map(len, lines)))
    known = set().union(*(options(line[:28]) for line in lines if line.startswith("  -")))
    assert {"--set", "--scan", "--again", "--events", "-a", "-j", "--version", "--help"} <= known, known
    manual = (source / "packaging/velmorak-run.1").read_text().replace("\\-", "-")
    stated = set()
    for line in manual.splitlines():
        if re.match(r"\.(B|BI|BR) -", line):
            stated |= options(line)
    assert stated == known, (stated ^ known)
    page = (source / "docs/running.md").read_text()
    stated = set()
    for line in page.splitlines():
        if re.match(r"\| `-", line):
            stated |= options(line.split("|")[1])
    assert stated == known, (stated ^ known)
    script = source / "packaging/velmorak-run.bash"
    assert completed(script, "velmorak-run", "-") == known, completed(script, "velmorak-run", "-") ^ known
    assert completed(script, "velmorak-run", "--sc") == {"--scan"}
    assert "-" in completed(script, "velmorak-run", "--events", "")
    statuses = set(re.findall(r"\b([0-9]) [a-z]", text.split("Exit status:")[1]))
    assert set(re.findall(r"(?m)^\.TP\n([0-9])$", manual)) == statuses, statuses
    assert set(re.findall(r"(?m)^\| ([0-9]) \|", page)) == statuses, statuses


if __name__ == "__main__":
    main(*sys.argv[1:])
