#!/usr/bin/env python3
"""Checks packaging/bundle/glibc.py: a program and a library that ask for functions after glibc 2.34 run without.

usage: check_glibc.py SOURCE COMPILER
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
LIBRARY = """
#include <stdexcept>
#include <stdlib.h>
void thrown(int number) {
    if (number > 2) {
        throw std::runtime_error("thrown");
    }
}
unsigned random_number() {
    unsigned numbers[2] = {0, 0};
    do {
        arc4random_buf(numbers, sizeof numbers);
    } while (numbers[0] == 0 || numbers[0] == numbers[1]);
    return numbers[0];
}
"""
PROGRAM = """
#include <cstdio>
#include <stdexcept>
void thrown(int number);
unsigned random_number();
int main(int count, char**) {
    try {
        thrown(count + 2);
    } catch (const std::runtime_error& error) {
        return std::printf("%s %d", error.what(), random_number() != 0) > 0 ? 0 : 1;
    }
    return 2;
}
"""


class Place:
    def __init__(self, source, compiler, folder):
        self.parts = source / "packaging/bundle"
        self.compiler = compiler
        self.folder = folder

    def run(self, *command, status=0, **environment):
        done = subprocess.run([str(each) for each in command], cwd=self.folder, capture_output=True, text=True,
                              env=dict(os.environ, **environment), check=False)
        assert done.returncode == status, (command, done.returncode, done.stdout, done.stderr)
        return done.stdout + done.stderr

    def compile(self, *arguments):
        self.run(self.compiler, "-std=c++20", "-O1", *arguments)

    def glibc(self, *arguments, status=0):
        return self.run(sys.executable, "-B", self.parts / "glibc.py", *arguments, status=status)


def libraries(place):
    """Those of the test, with the compiler's own that ask for newer functions."""
    (place.folder / "library.cpp").write_text(LIBRARY)
    (place.folder / "program.cpp").write_text(PROGRAM)
    place.compile("-fPIC", "-shared", "-o", "libtested.so", "library.cpp")
    place.compile("-o", "program", "program.cpp", "-L.", "-ltested", "-Wl,-rpath,$ORIGIN")
    for name in ("libgcc_s.so.1", "libstdc++.so.6"):
        shutil.copy(pathlib.Path(place.run(place.compiler, f"-print-file-name={name}").strip()).resolve(),
                    place.folder / name)
    place.compile("-fPIC", "-shared", "-fno-exceptions", "-fno-rtti", "-fvisibility=hidden", "-nostartfiles",
                  "-nodefaultlibs", "-Wl,-soname,libnewer.so", "-o", "libnewer.so", place.parts / "NewerFunctions.cpp",
                  "-lc")
    return ["libtested.so", "libgcc_s.so.1", "libstdc++.so.6"]


def main(source, compiler):
    if not shutil.which("patchelf"):
        print("skipped: patchelf is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        place = Place(pathlib.Path(source).resolve(), compiler, pathlib.Path(folder))
        names = libraries(place)
        told = place.glibc("list", "2.34", ".", status=1)
        assert "libtested.so: GLIBC_2.36: arc4random_buf" in told, told
        for name in names:
            # At once, patchelf 0.14 sets a wrong path.
            place.run("patchelf", "--set-rpath", "$ORIGIN", name)
            place.run("patchelf", "--add-needed", "libnewer.so", name)
        assert place.glibc("lower", "2.34", *names).split() == names
        assert place.glibc("lower", "2.34", *names) == ""
        told = place.glibc("list", "2.34", ".")
        assert "5 files, 0 with" in told, told
        assert "arc4random_buf@GLIBC" not in place.run("readelf", "--dyn-syms", "-W", "libtested.so")
        # Here the C library has the functions; preloaded, ours take their place as on a system that lacks them.
        assert "thrown 1" in place.run("./program")
        bound = place.run("./program", LD_PRELOAD="./libnewer.so", LD_DEBUG="bindings", LD_BIND_NOW="1")
        assert "thrown 1" in bound, bound[-300:]
        for symbol in ("arc4random_buf", "_dl_find_object"):
            binding = rf"lib(tested|gcc_s)\.so\S* \[0\] to \S*libnewer\.so \[0\]: normal symbol `{symbol}'"
            assert re.search(binding, bound), [each for each in bound.splitlines() if symbol in each]
        # What has no substitute is refused, and files of other kinds.
        assert "has no substitute" in place.glibc("lower", "2.1", "libtested.so", status=1)
        (place.folder / "text").write_text("no program")
        assert place.glibc("lower", "2.34", "text") == ""
        whole = (place.folder / "libtested.so").read_bytes()
        (place.folder / "cut.so").write_bytes(whole[:len(whole) // 2])
        assert "glibc.py:" in place.glibc("list", "2.34", "cut.so", status=1)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
