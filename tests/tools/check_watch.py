#!/usr/bin/env python3
"""velmorak-view --watch: notifications on a bus of the test's own, the page on a click, one watcher for each user; and the
script by which the desktop's menu starts the editor.

usage: check_watch.py VELMORAK-VIEW VELMORAK-RUN VELMORAK-DESKTOP
Without dbus-daemon or Gio for Python the check is skipped.
"""

import json
import os
import pathlib
import select
import shutil
import subprocess
import sys

from pipelines import plugin, table
from view_server import View, began, ended

SKIPPED = 77
HERE = pathlib.Path(__file__).resolve().parent


class Bus:
    """A session's bus with a notification service."""

    def __enter__(self):
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.address = self.daemon.stdout.readline().strip()
        self.service = subprocess.Popen([sys.executable, HERE / "fake_notifications.py"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, bufsize=0,  # What was not read can be waited for.
                                        env=dict(os.environ, DBUS_SESSION_BUS_ADDRESS=self.address))
        assert self.service.stdout.readline() == b"ready\n"
        return self

    def __exit__(self, *_):
        self.service.communicate()
        self.daemon.terminate()
        self.daemon.communicate()

    def next(self):
        """Waits for a notification."""
        return json.loads(self.service.stdout.readline())

    def click(self, shown):
        self.service.stdin.write(b"%d %s\n" % (shown["number"], shown["actions"][0].encode()))


class Watch(View):
    """A program that watches; a browser of the test's own writes the address that it is given into a FIFO."""

    def __init__(self, program, bus):
        super().__init__(program)
        self.bus = bus
        self.pings = 0

    def __enter__(self):
        super().__enter__()
        self.opened = self.folder / "opened"
        os.mkfifo(self.opened)
        programs = self.folder / "bin"
        programs.mkdir()
        (programs / "xdg-open").write_text("#!/bin/sh\necho \"$1\" > '%s'\n" % self.opened)
        (programs / "xdg-open").chmod(0o755)
        self.environment["PATH"] = "%s:%s" % (programs, self.environment["PATH"])
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address
        return self

    def start_watching(self):
        self.process = subprocess.Popen([self.program, "--watch"], cwd=self.folder, env=self.environment,
                                        stdout=subprocess.PIPE, text=True)
        self.wait_for_news(self.bus)

    def stop_watching(self):
        self.process.terminate()
        self.process.communicate()

    def wait_for_news(self, bus):
        """Until the program on that bus tells of messages: those before its start are no news. @return what it told."""
        told = []
        first = self.pings + 1
        while not any("ping %d" % number in told for number in range(first, self.pings + 1)):
            self.pings += 1
            self.say("ping %d" % self.pings)
            while select.select([bus.service.stdout], [], [], 0.5)[0]:
                told.append(bus.next()["body"])
        while told[-1] != "ping %d" % self.pings:
            told.append(bus.next()["body"])
        return told

    def say(self, sentence):
        folder = self.runtime / "velmorak"
        folder.mkdir(mode=0o700, exist_ok=True)
        with open(folder / "messages-1.jsonl", "a") as file:
            file.write(json.dumps({"event": "message", "time": 0, "text": sentence}) + "\n")

    def run(self, runner, *arguments):
        return subprocess.run([runner, *map(str, arguments)], cwd=self.folder, env=self.environment, capture_output=True,
                              text=True, timeout=600)


def check_what_is_told(watch, runner):
    document = watch.folder / "Peak.zedra"
    document.write_text(json.dumps({"zedra": 1, "plugins": table(1000) + [
        plugin("Wrong", "Filter", table=["Rows", "table"], condition="nothing > 1 && x < 2")]}))
    assert watch.run(runner, document).returncode == 2
    shown = watch.bus.next()
    assert shown["title"] == "Peak.zedra failed" and shown["program"] == "Velmorak", shown
    assert shown["body"].startswith("Wrong: ") and "nothing" in shown["body"], shown
    assert watch.run(runner, "--set", "Wrong.condition=x > 1", document).returncode == 0, "a short run that is fine is no news"
    watch.announce(7, began("/x/long.zedra", "/x"), dict(ended(), seconds=12.4))
    shown = watch.bus.next()
    assert shown["title"] == "long.zedra is done" and "12 seconds" in shown["body"], shown
    watch.announce(8, began("/x/gone.zedra", "/x"))
    shown = watch.bus.next()
    assert shown["title"] == "gone.zedra ended without a result", shown
    watch.say("<a href='x'>The value</a> & \"so\" was refused")
    shown = watch.bus.next()
    assert "<a" not in shown["body"] and "&lt;a href" in shown["body"] and "&amp;" in shown["body"], shown
    broken = watch.folder / "broken.zedra"
    broken.write_text("{")
    assert watch.run(runner, broken).returncode == 1
    shown = watch.bus.next()
    assert "broken.zedra" in shown["body"], shown
    return shown


def check_click(watch, shown):
    watch.bus.click(shown)
    with open(watch.opened) as file:
        address = file.readline().strip()
    assert address.startswith("http://127.0.0.1:") and len(address.split("/")[3]) >= 32, address
    import urllib.request
    assert b"<title>Velmorak</title>" in urllib.request.urlopen(address).read()


def check_one_for_each_user(watch):
    second = subprocess.run([watch.program, "--watch"], cwd=watch.folder, env=watch.environment, capture_output=True,
                            text=True, timeout=60)
    assert second.returncode == 0 and second.stdout == "" and second.stderr == "", second
    assert watch.process.poll() is None


def check_a_page_beside(watch):
    """A program that shows a page tells what happens only while no other one watches."""
    watch.stop_watching()
    environment = dict(watch.environment)
    with Bus() as second:
        environment["DBUS_SESSION_BUS_ADDRESS"] = second.address
        with subprocess.Popen([watch.program, "--no-open"], cwd=watch.folder, env=environment, stdout=subprocess.PIPE,
                              text=True) as other:
            try:
                assert other.stdout.readline().startswith("http://127.0.0.1:")
                watch.wait_for_news(second)
                watch.start_watching()
                for number in range(10):
                    watch.say("only %d" % number)
                    assert watch.bus.next()["body"] == "only %d" % number
                watch.stop_watching()
                told = watch.wait_for_news(second)
                assert not {"only %d" % number for number in range(5)} & set(told), told
            finally:
                other.terminate()
    watch.start_watching()


def check_desktop_script(watch, desktop):
    """It starts the program that watches, and becomes the editor."""
    installed = watch.folder / "installed with blanks"
    installed.mkdir()
    shutil.copy(desktop, installed / "velmorak-desktop")
    (installed / "velmorak").write_text("#!/bin/sh\necho \"editor $$ $*\"\n")
    (installed / "velmorak-view").write_text("#!/bin/sh\necho \"watching $*\" > '%s'\n" % watch.opened)
    for name in ("velmorak", "velmorak-view", "velmorak-desktop"):
        (installed / name).chmod(0o755)
    (watch.folder / "started").symlink_to(installed / "velmorak-desktop")
    with subprocess.Popen([watch.folder / "started", "a file.zedra"], stdout=subprocess.PIPE, text=True) as script:
        with open(watch.opened) as file:
            assert file.readline() == "watching --watch\n"
        assert script.stdout.read() == "editor %d a file.zedra\n" % script.pid, "the script becomes the editor"
    (installed / "velmorak-view").unlink()
    alone = subprocess.run([installed / "velmorak-desktop"], capture_output=True, text=True, timeout=60)
    assert alone.stdout.startswith("editor ") and alone.stderr == "", alone


def check_without_a_desktop(program):
    """No bus: the program goes on."""
    with View(program) as view:
        view.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"
        view.announce(1, began("x", "/x"), ended("failed"))
        view.start()
        assert view.get("")[0] == 200


def main():
    if not shutil.which("dbus-daemon"):
        print("SKIPPED: dbus-daemon is not installed")
        return SKIPPED
    try:
        import gi  # noqa: F401
    except ImportError:
        print("SKIPPED: python3-gi is not installed")
        return SKIPPED
    view, runner, desktop = (os.path.abspath(each) for each in sys.argv[1:4])
    with Bus() as bus, Watch(view, bus) as watch:
        watch.start_watching()
        shown = check_what_is_told(watch, runner)
        check_click(watch, shown)
        check_one_for_each_user(watch)
        check_a_page_beside(watch)
        check_desktop_script(watch, desktop)
    check_without_a_desktop(view)
    return 0


if __name__ == "__main__":
    sys.exit(main())
