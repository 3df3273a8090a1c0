#!/usr/bin/env python3
"""What velmorak-view does with its arguments: the results of a document or of a folder, and the browser.

usage: check_view_start.py VELMORAK-VIEW VELMORAK-RUN
"""

import json
import os
import subprocess
import sys

from pipelines import table
from view_server import View


def document_of(view):
    document = view.folder / "My analysis.zedra"
    document.write_text(json.dumps({"zedra": 1, "plugins": table(100)}))
    return document


def run(view, runner, document):
    environment = dict(view.environment)
    environment.pop("XDG_RUNTIME_DIR")  # Nothing is known of the run but what it left.
    done = subprocess.run([runner, str(document)], cwd=view.folder, env=environment, capture_output=True, text=True, timeout=600)
    assert done.returncode == 0, done.stderr


def refusal(view, shown):
    """What the program says of something that it cannot show."""
    done = subprocess.run([view.program, "--no-open", str(shown)], cwd=view.folder, env=view.environment, capture_output=True,
                          text=True, timeout=60)
    assert done.returncode == 1 and done.stdout == "", done
    return done.stderr


def check_refusals(view, document):
    assert refusal(view, "nothing.zedra") == "velmorak-view: nothing.zedra: No such file or directory\n"
    results = view.folder / "My analysis.results"
    expected = "velmorak-view: %s has no results yet: there is no folder %s\n" % (document, results)
    assert refusal(view, document.name) == expected, refusal(view, document.name)


def check_what_is_shown(program, shown):
    with View(program) as view:
        view.start(shown)
        folder = json.loads(view.get("api/start")[2])["folder"]
        assert folder == str(shown.with_suffix(".results")), folder
        status, _, body = view.get("file/folder/run.json")
        assert status == 200 and json.loads(body)["document"]["file"].endswith(shown.stem + ".zedra"), body
        assert "upper.aida" in [each["name"] for each in json.loads(view.get("api/files?run=folder")[2])]


def check_browser(view):
    """The browser gets the address that is printed; without one, the program goes on."""
    opened = view.folder / "opened"
    os.mkfifo(opened)
    programs = view.folder / "bin"
    programs.mkdir()
    environment = dict(view.environment, PATH="%s:%s" % (programs, os.environ["PATH"]))
    (programs / "xdg-open").write_text("#!/bin/sh\necho \"$1\" > '%s'\n" % opened)
    (programs / "xdg-open").chmod(0o755)
    with subprocess.Popen([view.program], cwd=view.folder, env=environment, stdout=subprocess.PIPE, text=True) as process:
        with open(opened) as file:
            address = file.readline()
        assert address.startswith("http://127.0.0.1:") and process.stdout.readline() == address
        process.terminate()
    environment["PATH"] = str(view.folder / "nowhere")
    with subprocess.Popen([view.program], cwd=view.folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True) as process:
        assert process.stdout.readline().startswith("http://127.0.0.1:")
        assert "open the address in a browser" in process.stderr.readline()
        assert process.poll() is None
        process.terminate()


def main():
    program, runner = (os.path.abspath(each) for each in sys.argv[1:3])
    with View(program) as view:
        document = document_of(view)
        check_refusals(view, document)
        run(view, runner, document)
        check_what_is_shown(program, document)
        check_what_is_shown(program, document.with_suffix(".results"))
        check_browser(view)
    return 0


if __name__ == "__main__":
    sys.exit(main())
