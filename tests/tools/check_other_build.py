#!/usr/bin/env python3
"""Checks that neither a job nor a part of another build of the program is used.

usage: check_other_build.py VELMORAK-RUN
"""

import pathlib
import sys

from pipelines import Place, plugin

BUILD_ID = b"\x04\0\0\0\x14\0\0\0\x03\0\0\0GNU\0"  # The note of a build id of 20 bytes, up to the id.


def other_library(place):
    """A copy of the library that says that it is another build."""
    library = pathlib.Path(place.runner).parent.parent / "lib" / "velmorak" / "QzManager.so"
    content = bytearray(library.read_bytes())
    content[content.index(BUILD_ID) + len(BUILD_ID)] ^= 0xFF
    folder = place.folder / "other"
    folder.mkdir()
    for each in library.parent.iterdir():  # What the library looks for beside itself.
        (folder / each.name).symlink_to(each)
    (folder / library.name).unlink()
    (folder / library.name).write_bytes(content)
    return folder


def run_with(place, folder, *arguments):
    before = place.environment
    place.environment = dict(before, LD_LIBRARY_PATH=str(folder))
    done = place.run(*arguments)
    place.environment = before
    return done


def main(runner):
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        document = place.document(plugin("Rows", "RandomTable", rows="100000", columns="x: gauss(0, 1)", seed="7"),
                                  plugin("Mean", "Statistics", data=["Rows", "table"], expression="x"))
        other = other_library(place)
        done = run_with(place, other, "--results", "trial", document)
        assert done.returncode == 0, done
        assert place.run("--plan", "job", "--parts", "2", document).returncode == 0
        assert place.run("--part", "1", "job").returncode == 0
        refused = run_with(place, other, "--part", "2", "job")
        assert refused.returncode == 1, refused
        assert "the job was planned with another build of \"" in refused.stderr, refused.stderr
        assert "use that program, or plan the job again" in refused.stderr, refused.stderr
        assert not (place.folder / "job" / "parts" / "00002.part").exists()
        assert place.run("--part", "2", "job").returncode == 0
        assert "the job was planned with another build" in run_with(place, other, "--merge", "job").stderr
        assert place.run("--merge", "job").returncode == 0
        assert run_with(place, other, "--plan", "new", "--parts", "2", document).returncode == 0
        refused = place.run("--part", "1", "new")
        assert refused.returncode == 1 and "another build" in refused.stderr, refused


if __name__ == "__main__":
    main(*sys.argv[1:])
