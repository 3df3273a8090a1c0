#!/usr/bin/env python3
"""Checks what CMake makes of builds that are not as usual; nothing is compiled but CMake's own probes.

usage: check_configured.py SOURCE COMPILER
"""

import os
import pathlib
import subprocess
import sys
import tempfile


class Place:
    def __init__(self, source, compiler, folder):
        self.source = source
        self.compiler = compiler
        self.folder = folder
        self.wrapper = folder / "pkg-config"
        # Does not find goocanvasmm as long as a file "hidden" is beside it.
        self.wrapper.write_text('#!/bin/sh\ncase "$*" in *goocanvasmm*) [ ! -e "$(dirname "$0")/hidden" ] || exit 1 ;; esac\n'
                                'exec pkg-config "$@"\n')
        (folder / "hidden").touch()
        self.wrapper.chmod(0o755)

    def configure(self, build, *arguments, source=None, status=0, **environment):
        command = ["cmake", "-G", "Ninja", "-S", source or self.source, "-B", self.folder / build,
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
    assert "goocanvasmm" in told, told[-1000:]


def the_runner_without_the_toolkit(place):
    """No build type, folders with blanks, and a pkg-config that finds every library but goocanvasmm."""
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


def the_editor_when_it_is_installed_later(place):
    (place.folder / "hidden").unlink()
    place.configure("a folder/build of it", source=place.folder / "a folder" / "sources of it")
    assert "bin/velmorak" in place.targets("a folder/build of it")


def main(source, compiler):
    with tempfile.TemporaryDirectory() as folder:
        place = Place(pathlib.Path(source).resolve(), compiler, pathlib.Path(folder))
        for check in (refusals, the_runner_without_the_toolkit, the_editor_when_it_is_installed_later):
            check(place)
            print(check.__name__)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
