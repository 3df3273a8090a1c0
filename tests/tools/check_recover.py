#!/usr/bin/env python3
"""Checks velmorak-recover.

usage: check_recover.py VELMORAK-RECOVER
"""

import fcntl
import json
import os
import pathlib
import subprocess
import sys
import tempfile

TEXT = '{"zedra": 1, "plugins": [{"name": "A", "kind": "Number"}]}\n'


class User:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.state = folder / "state" / "velmorak"
        self.environment = dict(os.environ, XDG_STATE_HOME=str(folder / "state"))

    def run(self, *arguments, status=0):
        told = subprocess.run([self.program, *map(str, arguments)], cwd=self.folder, env=self.environment,
                              capture_output=True, text=True, check=False)
        assert told.returncode == status, (arguments, told)
        return told.stdout if status == 0 else told.stderr

    def leave(self, kind, name, text, origin, age):
        file = self.state / kind / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        file.with_suffix(".origin").write_text(str(origin))
        os.utime(file, (1_790_000_000 - age, 1_790_000_000 - age))
        return file


def main(program):
    with tempfile.TemporaryDirectory() as folder:
        user = User(program, pathlib.Path(folder))
        assert user.run() == "Nothing to bring back.\n"
        document = user.folder / "pipe.zedra"
        document.write_text("old")
        left = user.leave("journal", "20260101T000000Z-1-1.zedra", TEXT, document, 10)
        user.leave("removed", "20260101T000000Z-1-0.zedra", "damaged", "", 30)
        user.leave("saving", "00ff.new", TEXT, user.folder / "other.zedra", 20)
        lines = user.run().splitlines()
        assert len(lines) == 3 and "1 plug-in  " + str(document) in lines[0] and "damaged" in lines[2], lines
        assert "not saved" in lines[0] and "interrupted" in lines[1] and "untitled" in lines[2], lines

        made = pathlib.Path(user.run("1").strip())
        assert made == user.folder / "pipe.recovered.zedra" and made.read_text() == TEXT, made
        assert pathlib.Path(user.run("1").strip()).name == "pipe.recovered2.zedra"
        assert document.read_text() == "old"
        assert "File exists" in user.run("1", "--to", document, status=1)
        assert pathlib.Path(user.run("3").strip()) == user.folder / "untitled.recovered.zedra"
        assert "1 to 3" in user.run("4", status=1)

        # What the document has already, and what a running program has open, is not listed.
        document.write_text(TEXT)
        assert len(user.run().splitlines()) == 2
        document.write_text("old")
        with open(left.with_suffix(".origin"), "rb") as origin:
            fcntl.flock(origin, fcntl.LOCK_EX)
            assert len(user.run().splitlines()) == 2
        user.run("--forget", "1")
        assert not left.exists() and not left.with_suffix(".origin").exists()
        user.run("--forget", "all")
        assert user.run() == "Nothing to bring back.\n"
        assert "nothing can be brought back" in user.run("1", status=1)

        record = user.folder / "run.json"
        record.write_text(json.dumps({"document": {"file": str(document), "text": TEXT}}))
        assert pathlib.Path(user.run(record).strip()).read_text() == TEXT
        record.write_text("{}")
        assert "expected the run.json of a run" in user.run(record, status=1)
        assert "No such file" in user.run("missing.json", status=1)
        assert "see velmorak-recover --help" in user.run("--fly", status=1)
        assert user.run("--help").startswith("Usage: velmorak-recover")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
