#!/usr/bin/env python3
"""Runs every example, and repeats each recorded run as on processors with fewer instructions: no result differs, and the
text files have the same bytes.

VELMORAK_VECTORS limits the instructions of the program's own loops, GLIBC_TUNABLES those of the C library.

With another runner, each recorded run is repeated by that one instead, such as one for another architecture with the
emulator before it.

usage: check_same_bits.py VELMORAK-RUN EXAMPLES [OTHER-RUNNER...]
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

COMPARED = (".aida", ".csv", ".dat", ".gp", ".txt")
HWCAPS = "glibc.cpu.hwcaps="
WITHOUT_AVX512 = "-AVX512F,-AVX512VL,-AVX512BW,-AVX512DQ,-AVX512CD,-AVX512ER,-AVX512PF,-Prefer_No_AVX512_Probing"
PROCESSORS = {
    "without AVX-512": {"VELMORAK_VECTORS": "avx2", "GLIBC_TUNABLES": HWCAPS + WITHOUT_AVX512},
    "without AVX2 and FMA": {"VELMORAK_VECTORS": "none",
                             "GLIBC_TUNABLES": HWCAPS + "-AVX2,-FMA,-FMA4,-AVX512F,-AVX2_Usable,-FMA_Usable"},
}


def run(runner, arguments, folder, changes):
    done = subprocess.run([*runner, *arguments], cwd=folder, env=dict(os.environ, **changes), capture_output=True)
    assert done.returncode == 0, "%s ended with %d:\n%s%s" % (
        " ".join(arguments), done.returncode, done.stdout.decode(), done.stderr.decode())


def texts(results):
    return {str(file.relative_to(results)): file.read_bytes() for file in sorted(results.rglob("*"))
            if file.suffix in COMPARED}


def check(runner, document, others):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / document.parent.name
        shutil.copytree(document.parent, copy, ignore=shutil.ignore_patterns("*.results"))
        results = copy / (document.stem + ".results")
        run(runner, [str(copy / document.name)], folder, {})
        expected = texts(results)
        for processor, (other_runner, changes) in others.items():
            run(other_runner, ["--again", str(results / "run.json")], folder, changes)
            run(other_runner, [str(copy / document.name)], folder, changes)
            other = texts(results)
            assert other.keys() == expected.keys(), "%s writes other files %s" % (document.name, processor)
            for name, content in expected.items():
                assert other[name] == content, "%s: %s has other bytes %s" % (document.name, name, processor)
    print("%s: %d text files, identical %s" % (document.name, len(expected), " and ".join(others)))


def main():
    runner = [str(pathlib.Path(sys.argv[1]).resolve())]
    others = {"by " + sys.argv[-1]: (sys.argv[3:], {})} if len(sys.argv) > 3 else {
        processor: (runner, changes) for processor, changes in PROCESSORS.items()}
    documents = sorted(pathlib.Path(sys.argv[2]).glob("*/*.zedra"))
    assert documents, "no examples below %s" % sys.argv[2]
    for document in documents:
        check(runner, document, others)


if __name__ == "__main__":
    main()
