#!/usr/bin/env python3
"""Installs below DESTDIR, in a folder with blanks, and uses the result as a plain user: from that place, and beside
another version.

usage: check_staged.py BUILD VERSION
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

NOBODY = 65534
DOCUMENT = '{"zedra": 1, "plugins": [{"name": "A", "kind": "Filter"}]}\n'


class User:
    """Owns nothing but a home folder, and may be somebody else than the one who installed."""

    def __init__(self, home):
        self.home = home
        home.mkdir()
        if os.getuid() == 0:
            os.chown(home, NOBODY, NOBODY)

    def run(self, *command):
        keep = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH") if name in os.environ}
        as_user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.getuid() == 0 else {}
        return subprocess.run([str(each) for each in command], cwd=self.home, env=dict(keep, HOME=str(self.home)),
                              capture_output=True, text=True, check=False, **as_user)

    def write(self, name, text):
        file = self.home / name
        file.write_text(text)
        file.chmod(0o644)
        return file


def staged(build, folder, version):
    """The prefix below DESTDIR, after an installation that has left nothing elsewhere."""
    target = folder / "a stage"
    elsewhere = pathlib.Path(f"/opt/velmorak-{version}")
    assert not elsewhere.exists(), elsewhere
    subprocess.run(["cmake", "--install", build, "--prefix", elsewhere], check=True, capture_output=True,
                   env=dict(os.environ, DESTDIR=str(target)))
    assert not elsewhere.exists(), f"{elsewhere} was written in spite of DESTDIR"
    assert [each.name for each in target.iterdir()] == ["opt"], list(target.iterdir())
    return target / "opt" / elsewhere.name


def runs(user, prefix):
    """Runs an example of the installation, and says where the program found its library."""
    example = prefix / "share/velmorak/examples/Statistics"
    document = sorted(example.glob("*.zedra"))[0]
    results = user.home / f"results of {prefix.name}"
    done = user.run(prefix / "bin/velmorak-run", document, "--results", results)
    assert done.returncode == 0, done
    assert (results / "run.json").is_file(), list(results.iterdir())
    linked = user.run("ldd", prefix / "bin/velmorak-run").stdout
    return [line.split("=> ")[1].split(" (")[0] for line in linked.splitlines() if "QzManager.so" in line][0]


def two_versions(user, first):
    """A second one in another prefix has its own library and its own kinds."""
    second = first.parent / "velmorak-another"
    shutil.copytree(first, second, symlinks=True)
    collections = [each for each in second.rglob("Table.so")]
    assert len(collections) == 1, collections
    collections[0].unlink()
    for prefix in (first, second):
        library = pathlib.Path(runs(user, prefix)).resolve()
        assert library.is_relative_to(prefix.resolve()), (library, prefix)
    document = user.write("filter.zedra", DOCUMENT)
    unknown = "no collection offers its kind"
    for prefix, is_known in ((first, True), (second, False)):
        told = user.run(prefix / "bin/velmorak-run", "--list", document)
        assert (unknown in told.stderr) != is_known, told


def main(build, version):
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        folder.chmod(0o755)
        first = staged(build, folder, version)
        user = User(folder / "home of nobody")
        library = pathlib.Path(runs(user, first)).resolve()
        assert library.is_relative_to(first.resolve()), library
        told = user.run(first / "bin/velmorak-run", "--version")
        assert told.returncode == 0 and version in told.stdout, told
        two_versions(user, first)
        # An installation is only read.
        if os.getuid() == 0:
            owned = [path for path in folder.rglob("*") if path.lstat().st_uid == NOBODY]
            assert all(path.is_relative_to(user.home) for path in owned), owned
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
