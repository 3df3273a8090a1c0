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


def no_build_type_is_release(place):
    place.configure("plain")
    assert place.cached("plain", "CMAKE_BUILD_TYPE") == "Release"
    place.configure("debug", "-DCMAKE_BUILD_TYPE=Debug", "-DVELMORAK_BUILD_EDITOR=OFF")
    assert place.cached("debug", "CMAKE_BUILD_TYPE") == "Debug"


def the_runner_is_built_without_the_toolkit(place):
    """pkg-config that finds every library but goocanvasmm."""
    wrapper = place.folder / "pkg-config"
    wrapper.write_text('#!/bin/sh\ncase "$*" in *goocanvasmm*) exit 1 ;; esac\nexec /usr/bin/pkg-config "$@"\n')
    wrapper.chmod(0o755)
    told = place.configure("without", PKG_CONFIG=str(wrapper))
    assert "The editor is not built" in told, told[-1000:]
    targets = place.targets("without")
    assert "bin/velmorak-run" in targets and "bin/velmorak" not in targets
    told = place.configure("refused", "-DVELMORAK_BUILD_EDITOR=ON", status=1, PKG_CONFIG=str(wrapper))
    assert "goocanvasmm" in told
    # It is found again when it is installed later.
    place.configure("without")
    assert "bin/velmorak" in place.targets("without")


def thirty_two_bits_are_refused(place):
    told = place.configure("narrow", "-DCMAKE_CXX_FLAGS=-m32", "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY", status=1)
    assert "needs a 64-bit system" in told, told[-1000:]


def folders_may_have_blanks(place):
    """The page of velmorak-view is the one file that is made of a list of files."""
    source = place.folder / "a folder" / "sources of it"
    source.parent.mkdir()
    source.symlink_to(place.source)
    place.configure("a folder/build of it", source=source)
    build = place.folder / "a folder" / "build of it"
    subprocess.run(["ninja", "-C", build, "tools/Page.cpp", "velmorak_docs"], capture_output=True, text=True, check=True)
    page = (build / "tools/Page.cpp").read_text()
    assert '{"index.html", R"page(<!' in page, page[:500]
    assert (build / "options/man/velmorak-run.1").is_file()
    assert list(build.rglob("index.html"))


def main(source, compiler):
    with tempfile.TemporaryDirectory() as folder:
        place = Place(pathlib.Path(source).resolve(), compiler, pathlib.Path(folder))
        for check in (no_build_type_is_release, the_runner_is_built_without_the_toolkit, thirty_two_bits_are_refused,
                      folders_may_have_blanks):
            check(place)
            print(check.__name__)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
