#!/usr/bin/env python3
"""Checks scripts/prepare on made-up machines: with packages missing, some of which the distribution does not have.

usage: check_prepare.py SOURCE
"""

import os
import pathlib
import subprocess
import sys
import tempfile

LIST = """build g++
build libneeded-dev
optional-build libeditor-dev
optional-build libgoocanvasmm-2.0-dev
run gnuplot-nox
"""
PROGRAMS = {
    "apt-get": 'echo "apt-get $*" >>"$PLACE/log"; [ "$1" != update ] || cp "$PLACE/archive" "$PLACE/known"',
    "apt-cache": 'grep -qx "$2" "$PLACE/known"',
    "dpkg-query": 'for last; do :; done; grep -qx "$last" "$PLACE/installed" && printf installed',
    "id": 'echo "$USER_ID"',
}


def prepared(installed, known, archive, user=0, status=0):
    """What apt-get was asked for, and what was said."""
    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder)
        for name, lines in (("installed", installed), ("known", known), ("archive", archive)):
            (place / name).write_text("".join(f"{line}\n" for line in lines))
        (place / "log").touch()
        (place / "scripts").mkdir()
        (place / "scripts/packages.txt").write_text(LIST)
        (place / "scripts/prepare").write_text((SOURCE / "scripts/prepare").read_text())
        (place / "bin").mkdir()
        for name, text in PROGRAMS.items():
            (place / "bin" / name).write_text(f"#!/bin/sh\n{text}\n")
            (place / "bin" / name).chmod(0o755)
        # No sudo: the programs of the system that prepare calls, and no other.
        for name in ("bash", "sh", "sed", "grep", "env", "dirname", "cp"):
            (place / "bin" / name).symlink_to(subprocess.run(["which", name], capture_output=True, text=True,
                                                             check=True).stdout.strip())
        done = subprocess.run(["bash", place / "scripts/prepare", "build", "run"], capture_output=True, text=True,
                              env={"PATH": str(place / "bin"), "PLACE": folder, "USER_ID": str(user), "HOME": folder},
                              check=False)
        assert done.returncode == status, done
        return (place / "log").read_text().splitlines(), done.stderr


def main():
    every = ["g++", "libneeded-dev", "libeditor-dev", "libgoocanvasmm-2.0-dev", "gnuplot-nox"]
    without = [name for name in every if name != "libeditor-dev"]
    assert prepared(every, every, every) == ([], "")
    calls, _ = prepared([], [], every)
    assert set(calls[1].split()[-5:]) == set(every), calls
    # The distribution does not have the editor's library: before apt's first update, and later.
    calls, said = prepared([], [], without)
    assert set(calls[1].split()[-4:]) == set(without), calls
    assert "libeditor-dev is not installed, and this distribution does not have it; the editor is not built" in said
    calls, said = prepared(without, without, without)
    assert calls == [] and "the editor is not built" in said, (calls, said)
    # Without its wrappers of the canvas library, the editor is built all the same.
    wrapped = [name for name in every if name != "libgoocanvasmm-2.0-dev"]
    calls, said = prepared(wrapped, wrapped, wrapped)
    assert calls == [] and "the editor is built with the wrappers in canvas/" in said, (calls, said)
    assert "the editor is not built" not in said, said
    # Somebody who cannot install goes on without the editor, but not without what the runner needs.
    calls, said = prepared(without, every, every, user=1000)
    assert calls == [] and "installing it needs root; the editor is not built" in said, (calls, said)
    calls, said = prepared(["g++"], every, every, user=1000, status=1)
    assert calls == [] and "please install: libneeded-dev gnuplot-nox" in said, (calls, said)


if __name__ == "__main__":
    SOURCE = pathlib.Path(sys.argv[1]).resolve()
    os.umask(0o022)
    main()
