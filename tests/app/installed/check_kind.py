#!/usr/bin/env python3
"""Checks velmorak-kind and the CMake and pkg-config packages of an installation.

usage: check_kind.py PREFIX
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

KINDS = {"row-wise": "Polar", "accumulator": "Extent", "function": "Asymmetry", "source": "Wave", "file": "Words"}

BROKEN = r"""
#include <velmorak/ShortKinds.h>

#include <atomic>
#include <cstdlib>

std::atomic<int> calls = 0;

VELMORAK_COLLECTION(registry) {
    registry.group("Broken");
    velmorak::rowWise(registry, {"Unordered", "Numbers rows in the order of the calls."}, {{"x", "Anything."}}, {{"n"}},
                      [](double) { return ++calls; });
    velmorak::rowWise(registry, {"Aborting", "Ends the program."}, {{"x", "Anything."}}, {{"n"}}, [](double x) {
        if (x == 0) {
            std::abort();
        }
        return x;
    });
    velmorak::rowWise(registry, {"Silent", "No sentence"}, {{"x", ""}}, {{"n"}}, [](double x) { return x; });
    velmorak::rowWise(registry, {"Outside", "Reads beyond its array."}, {{"x", "Anything."}}, {{"n"}}, [](double x) {
        std::vector<double> values(2);
        return values.data()[x == x && x > 0 && x < 10 ? 2 + static_cast<int>(x) : 0];
    });
}
"""

# A test of a collection, as its author writes it.
TEST = r"""
#include <KindHarness.h>

#include <cstdio>

using namespace velmorak::test;

int main() {
    KindHarness polar("Polar");
    polar.set("x", "a").set("y", "2 * a").wire("table", tableOf({{"a", {3.0, -1.0, 0.0}}}, 2)).run();
    const std::vector<double> radii = polar.table().column("r");
    // Kinds of Velmorak itself are there, to make what the tested one reads.
    KindHarness filter("Filter");
    filter.set("condition", "r > 1").wire("table", polar.table()).run();
    const bool isRight = radii.size() == 3 && radii[2] == 0.0 && filter.table().column("r").size() == 2;
    std::printf("%zu rows, %s\n", radii.size(), polar.set("x", "a +").failure().c_str());
    return isRight ? 0 : 1;
}
"""


class Author:
    def __init__(self, prefix, folder):
        self.bin = prefix / "bin"
        self.prefix = prefix
        self.folder = folder
        self.environment = dict(os.environ, XDG_DATA_HOME=str(folder / "data"), XDG_STATE_HOME=str(folder / "state"),
                                XDG_CACHE_HOME=str(folder / "cache"))
        for name in ("VELMORAK_COLLECTIONS", "CMAKE_PREFIX_PATH"):
            self.environment.pop(name, None)

    def run(self, *command, status=0):
        told = subprocess.run([str(each) for each in command], cwd=self.folder, env=self.environment,
                              capture_output=True, text=True, check=False)
        assert told.returncode == status, (command, told.returncode, told.stdout, told.stderr)
        return told

    def kind(self, *arguments, status=0):
        return self.run(self.bin / "velmorak-kind", *arguments, status=status)


def shapes_build_and_pass_their_tests(author):
    for shape, kind in KINDS.items():
        name = "My" + kind
        author.kind("new", name, "--shape", shape)
        assert kind in author.kind("build", name).stdout
        author.run("ctest", "--test-dir", author.folder / name / "build", "--no-tests=error")
        lines = (author.folder / name / f"{name}.cpp").read_text().splitlines()
        assert len(lines) <= 25, (shape, len(lines))
    assert "exists already" in author.kind("new", "MyPolar", status=1).stderr


def sound_kinds_pass_the_check(author):
    for name in ("MyPolar", "MyExtent"):
        told = author.kind("check", name).stdout
        assert " 0 failed" in told and "note:" not in told, told
    told = author.kind("check", "MyExtent", "--strict").stdout
    assert " 0 failed" in told, told


def broken_kinds_do_not(author):
    author.kind("new", "Broken")
    (author.folder / "Broken" / "Broken.cpp").write_text(BROKEN)
    author.kind("build", "Broken")
    told = author.kind("check", "Broken", status=2).stdout
    assert "Unordered on 100000 random rows: 2 threads give other results than one" in told \
        or "Unordered on 100000 random rows: 16 threads give other results than one" in told, told
    assert "Aborting on NaN, infinities and extreme numbers: ended by signal 6" in told, told
    assert "Silent: the summary is not a sentence" in told and "Silent, x: the description is not a sentence" in told, told
    told = author.kind("check", "Broken", "--strict", status=2).stdout
    assert "FAILED: Outside on 100000 random rows" in told and "heap-buffer-overflow" in told, told


def kinds_are_tested_on_the_bench(author):
    folder = author.folder / "MyPolar"
    (folder / "PolarTest.cpp").write_text(TEST)
    text = (folder / "CMakeLists.txt").read_text()
    (folder / "CMakeLists.txt").write_text(text + "velmorak_add_kind_test(PolarTest PolarTest.cpp)\n")
    author.kind("build", "MyPolar")
    told = author.run("ctest", "--test-dir", folder / "build", "-V", "-R", "^PolarTest$", "--no-tests=error").stdout
    assert "3 rows, " in told and "the expression ends too early" in told, told
    (folder / "CMakeLists.txt").write_text(text)


def outputs_are_printed(author):
    table = author.folder / "table.csv"
    table.write_text("x,y\n3,4\n")
    told = author.kind("try", "Polar", "MyPolar", "--set", "x=2 * x", "--set", "y=0 * y", "--table", table).stdout
    assert told.splitlines()[1].split(",")[2] == "6.0", told
    assert "no input z" in author.kind("try", "Polar", "MyPolar", "--set", "z=1", status=1).stderr
    assert "give one with --table" in author.kind("try", "Polar", "MyPolar", status=1).stderr
    assert "no kind Other" in author.kind("try", "Other", "MyPolar", status=1).stderr
    told = author.kind("try", "Polar", "MyPolar", "--set", "x=x +", "--table", table, status=2).stderr
    assert "^" in told, told


def installed_kinds_are_found(author):
    document = author.folder / "polar.zedra"
    document.write_text('{"zedra": 1, "plugins": [{"name": "P", "kind": "Polar", "position": [0, 0]}]}')
    assert "Polar" in author.run(author.bin / "velmorak-run", "--check", document, status=2).stderr
    author.kind("install", "MyPolar")
    assert "x (text): x" in author.run(author.bin / "velmorak-run", "--list", document).stdout
    page = author.kind("describe", "MyPolar").stdout
    assert "| `x` | text | `x` |" in page, page
    assert "Adds radius and angle" in (author.folder / "MyPolar" / "plugin_summary.txt").read_text()


def pkg_config_knows_the_flags(author):
    if not shutil.which("pkg-config"):
        return
    found = list(author.prefix.rglob("velmorak.pc"))
    assert len(found) == 1, found
    author.environment["PKG_CONFIG_PATH"] = str(found[0].parent)
    flags = author.run("pkg-config", "--cflags", "velmorak").stdout.split()
    source = author.folder / "MyPolar" / "MyPolar.cpp"
    author.run("c++", "-shared", "-fPIC", *flags, source, "-o", author.folder / "Direct.so")
    version = author.run("pkg-config", "--variable=sdkversion", "velmorak").stdout.strip()
    assert version.encode() in (author.folder / "Direct.so").read_bytes()


def mistakes_are_refused(author):
    assert "expected one velmorak_add_collection" not in author.kind("build", "MyPolar").stderr
    assert "is this the folder of a collection?" in author.kind("build", "nowhere", status=1).stderr
    assert "expected a name of letters" in author.kind("new", "a b", status=1).stderr
    assert "see velmorak-kind --help" in author.kind("fly", status=1).stderr
    assert author.kind("--help").stdout.startswith("Usage: velmorak-kind")
    shutil.rmtree(author.folder / "MyWave" / "build")
    assert "build the collection first" in author.kind("check", "MyWave", status=1).stderr


def main(prefix):
    with tempfile.TemporaryDirectory() as folder:
        author = Author(pathlib.Path(prefix).resolve(), pathlib.Path(folder))
        for check in (shapes_build_and_pass_their_tests, kinds_are_tested_on_the_bench, sound_kinds_pass_the_check,
                      broken_kinds_do_not, outputs_are_printed, installed_kinds_are_found,
                      pkg_config_knows_the_flags, mistakes_are_refused):
            check(author)
            print(check.__name__)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
