#!/usr/bin/env python3
"""Checks what CMake makes of builds that are not as usual, without a network where the system allows that; nothing is
compiled but CMake's own probes.

usage: check_configured.py SOURCE COMPILER
"""

import os
import pathlib
import subprocess
import sys
import tempfile


def offline():
    """What a command begins with to be without a network; nothing where that is not allowed."""
    words = ["unshare", "--net"]
    is_allowed = subprocess.run([*words, "true"], capture_output=True, check=False).returncode == 0
    return words if is_allowed else []


class Place:
    def __init__(self, source, compiler, folder):
        self.source = source
        self.compiler = compiler
        self.folder = folder
        self.wrapper = folder / "pkg-config"
        # Does not find what a line of the file "hidden" beside it names.
        self.wrapper.write_text('#!/bin/sh\nwhile read -r name; do\n    case "$*" in *$name*) exit 1 ;; esac\n'
                                'done <"$(dirname "$0")/hidden"\nexec pkg-config "$@"\n')
        self.hide("goocanvas-2.0", "goocanvasmm-2.0")
        self.wrapper.chmod(0o755)

    def hide(self, *names):
        (self.folder / "hidden").write_text("".join(f"{name}\n" for name in names))

    def configure(self, build, *arguments, source=None, status=0, **environment):
        command = [*offline(), "cmake", "-G", "Ninja", "-S", source or self.source, "-B", self.folder / build,
                   f"-DCMAKE_CXX_COMPILER={self.compiler}", "-DVELMORAK_BUILD_TESTS=OFF", *arguments]
        done = subprocess.run([str(each) for each in command], capture_output=True, text=True, check=False,
                              env=dict(os.environ, **environment))
        assert done.returncode == status, (command, done.returncode, done.stdout[-2000:], done.stderr[-2000:])
        return done.stdout + done.stderr

    def cached(self, build, name):
        text = (self.folder / build / "CMakeCache.txt").read_text()
        return next(line.split("=", 1)[1] for line in text.splitlines() if line.startswith(f"{name}:"))

    def targets(self, build):
        done = subprocess.run(["ninja", "-C", self.folder / build, "-t", "targets", "all"], capture_output=True,
                              text=True, check=True)
        return {line.split(":")[0] for line in done.stdout.splitlines()}


def refusals(place):
    told = place.configure("narrow", "-DCMAKE_CXX_FLAGS=-m32", "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY", status=1)
    assert "needs a 64-bit system" in told, told[-1000:]
    told = place.configure("refused", "-DVELMORAK_BUILD_EDITOR=ON", status=1, PKG_CONFIG=str(place.wrapper))
    assert "goocanvas-2.0" in told, told[-1000:]
    told = place.configure("unknown", "-DVELMORAK_CANVAS=other", status=1)
    assert "VELMORAK_CANVAS is other; it can be AUTO, goocanvasmm or own." in told, told[-1000:]


def the_runner_without_the_toolkit(place):
    """No build type, folders with blanks, and a pkg-config that finds every library but those of the canvas."""
    source = place.folder / "a folder" / "sources of it"
    source.parent.mkdir()
    source.symlink_to(place.source)
    told = place.configure("a folder/build of it", source=source, PKG_CONFIG=str(place.wrapper))
    assert "The editor is not built" in told, told[-1000:]
    assert place.cached("a folder/build of it", "CMAKE_BUILD_TYPE") == "Release"
    targets = place.targets("a folder/build of it")
    assert "bin/velmorak-run" in targets and "bin/velmorak" not in targets
    # The page of velmorak-view is the one file that is made of a list of files. As a target, it waits for the library.
    build = place.folder / "a folder" / "build of it"
    commands = subprocess.run(["ninja", "-C", build, "-t", "commands", "tools/Page.cpp"], capture_output=True, text=True,
                              check=True).stdout.splitlines()
    subprocess.run([each for each in commands if "embed.cmake" in each][0], shell=True, check=True)
    page = (build / "tools/Page.cpp").read_text()
    assert '{"index.html", R"page(<!' in page, page[:500]
    assert (build / "options/man/velmorak-run.1").is_file()


def the_editor_when_libraries_are_installed_later(place):
    """With its own wrappers of the canvas library as long as there are no others."""
    def configured(*arguments):
        told = place.configure("a folder/build of it", *arguments, source=place.folder / "a folder" / "sources of it")
        targets = place.targets("a folder/build of it")
        assert "bin/velmorak" in targets
        is_own = "canvas/libvelmorak_canvas.a" in targets
        assert is_own == ("the editor is built with the wrappers in canvas/" in told or "own" in "".join(arguments))
        return is_own

    place.hide("goocanvasmm-2.0")
    assert configured()
    told = place.configure("insisting", "-DVELMORAK_CANVAS=goocanvasmm", status=1, PKG_CONFIG=str(place.wrapper))
    assert "goocanvasmm" in told, told[-1000:]
    place.hide()
    assert not configured()
    assert configured("-DVELMORAK_CANVAS=own")


def main(source, compiler):
    with tempfile.TemporaryDirectory() as folder:
        place = Place(pathlib.Path(source).resolve(), compiler, pathlib.Path(folder))
        for check in (refusals, the_runner_without_the_toolkit, the_editor_when_libraries_are_installed_later):
            check(place)
            print(check.__name__)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
