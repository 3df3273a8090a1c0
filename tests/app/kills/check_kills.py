#!/usr/bin/env python3
"""Kills the editor at random moments, also while it writes, and looks at what velmorak-recover brings back: of the
edits of a session, at most those of the last five seconds are lost.

A hand drags a box to the right again and again, and saves now and then; so the place of the box says which edits a
document contains. An edit counts from when it is seen on the screen. The kill is at a random time, not at one that the
editor or the hand chooses.

usage: check_kills.py VELMORAK VELMORAK-RECOVER KILLS [SEED]
"""

import concurrent.futures
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import threading
import time

SKIPPED = 77
AT_ONCE = 4
STEP = 7  # pixels, which are units of the canvas; two clicks so far apart are no double click
START = {"x": 100, "y": 100}
MOST_LOST = 5.0  # seconds
LONGEST = 12.0  # seconds of editing
STALL = 0.2  # seconds that the machine may withhold its processors in a round that counts
WIDTH = 1000  # of the screen, in pixels
DRAG = 0.04  # seconds between pressing and moving, and between moving and letting go
GRIP = (12, 6)  # from the upper left corner of the box


class Pulse:
    """Finds out whether the machine gave us no processor for a while: then a round says nothing about the editor."""

    WORK = 0.01  # seconds of a processor

    def __init__(self):
        self.worst = 0.0
        self.end = threading.Event()
        self.thread = threading.Thread(target=self.beat)
        self.thread.start()

    def beat(self):
        while not self.end.wait(0.1):
            began = time.monotonic()
            worked = time.thread_time()
            while time.thread_time() - worked < self.WORK:
                pass
            self.worst = max(self.worst, time.monotonic() - began - self.WORK)

    def stop(self):
        self.end.set()
        self.thread.join()
        return self.worst


class Screen:
    """A virtual X server with a hand."""

    def __init__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-noreset", "-screen", "0", f"{WIDTH}x800x24"],
                                       pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.display = ":" + answer.readline().strip()
        assert self.display != ":", "Xvfb does not start"
        self.environment = dict(os.environ, DISPLAY=self.display, GSETTINGS_BACKEND="memory", NO_AT_BRIDGE="1",
                                GDK_BACKEND="x11")

    def act(self, *words):
        subprocess.run(["xdotool", *map(str, words)], env=self.environment, check=True, capture_output=True)

    def windows_of(self, process):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
                               env=self.environment, check=False, capture_output=True, text=True)
        return found.stdout.split()

    def green(self, *region):
        """The pixels of the start plug-in's colours, selected or not, as (x, y) from the region's corner."""
        pixels = subprocess.run(["import", "-window", "root", *region, "-depth", "8", "rgb:-"], env=self.environment,
                                check=True, capture_output=True).stdout
        return [(at % WIDTH, at // WIDTH) for at in range(len(pixels) // 3)
                if pixels[3 * at + 1] > max(pixels[3 * at], pixels[3 * at + 2]) + 40]

    def box(self):
        """The upper left corner of the box; None if there is none on the screen yet."""
        found = self.green()
        return (min(x for x, _ in found), min(y for _, y in found)) if len(found) > 500 else None

    def left_edge(self, y):
        """Of the box, in that row of the screen; None if a menu or a dialog hides it."""
        found = self.green("-crop", f"{WIDTH}x1+0+{y}", "+repage")
        return min(x for x, _ in found) if found else None

    def close(self):
        self.server.terminate()
        self.server.wait()


def document(x):
    return json.dumps({"zedra": 1, "plugins": [{"name": "A", "kind": "Number", "position": [x, START["y"]]}]})


class Session:
    """One editor from its start to its violent end."""

    def __init__(self, editor, screen, folder, dice):
        self.screen = screen
        self.dice = dice
        self.file = folder / "pipe.zedra"
        self.file.write_text(document(START["x"]))
        self.environment = dict(screen.environment, XDG_STATE_HOME=str(folder / "state"), HOME=str(folder))
        self.errors = open(folder / "errors", "w+", encoding="utf-8")
        self.process = subprocess.Popen([editor, self.file], cwd=folder, env=self.environment, stdout=self.errors,
                                        stderr=self.errors)
        self.seen = []  # times, and how far the box was from where it began
        self.grip = None
        self.first_edge = None

    def open(self):
        corner = None
        while corner is None:
            if self.process.poll() is not None:
                self.errors.seek(0)
                raise AssertionError("the editor ended: " + self.errors.read())
            if self.screen.windows_of(self.process):
                corner = self.screen.box()
        self.grip = (corner[0] + GRIP[0], corner[1] + GRIP[1])
        self.first_edge = self.screen.left_edge(self.grip[1])
        self.screen.act("windowfocus", self.screen.windows_of(self.process)[0])
        self.screen.act("mousemove", *self.grip)

    def distance(self):
        return self.seen[-1][1] if self.seen else 0

    def edit(self):
        x, y = self.grip[0] + self.distance(), self.grip[1]
        self.screen.act("mousemove", x, y, "mousedown", 1, "sleep", DRAG, "mousemove", x + STEP, y, "sleep", DRAG,
                        "mouseup", 1)
        for _ in range(20):
            edge = self.screen.left_edge(y)
            if self.process.poll() is not None:
                return
            if edge is not None and edge - self.first_edge != self.distance():
                self.seen.append((time.monotonic(), edge - self.first_edge))
                return

    def work(self, seconds):
        """Edits until a timer kills the editor."""
        killed = []

        def kill():
            killed.append(time.monotonic())
            self.process.kill()

        timer = threading.Timer(seconds, kill)
        timer.start()
        while self.process.poll() is None and self.distance() < 60 * STEP:
            self.edit()
            if self.dice.random() < 0.1:
                self.screen.act("key", "ctrl+s")
            time.sleep(self.dice.choice([0, 0, 0.05, 0.3, 1.2]))
        self.process.wait()
        timer.join()
        self.errors.close()
        assert self.process.returncode == -9, ("the editor ended by itself", self.process.returncode)
        return killed[0]

    def brought_back(self, recover):
        """How far the box is from where it began in the newest document that is left."""
        told = subprocess.run([recover, "1"], env=self.environment, capture_output=True, text=True, check=False)
        file = pathlib.Path(told.stdout.strip()) if told.returncode == 0 else self.file
        assert told.returncode == 0 or "nothing can be brought back" in told.stderr, told
        json.loads(self.file.read_text(encoding="utf-8"))  # is never damaged
        x = json.loads(file.read_text(encoding="utf-8"))["plugins"][0]["position"][0]
        return round(x - START["x"])


def killed(editor, recover, screen, seed):
    """@return edits of one session, those that were lost, and the seconds that they took; None if it did not count."""
    dice = random.Random(seed)
    with tempfile.TemporaryDirectory() as folder:
        session = Session(editor, screen, pathlib.Path(folder), dice)
        session.open()
        pulse = Pulse()
        end = session.work(dice.uniform(0, LONGEST))
        stall = pulse.stop()
        back = session.brought_back(recover)
        assert back <= session.distance() + 2 * STEP, (back, session.seen)
        lost = [when for when, distance in session.seen if distance > back]
        age = end - lost[0] if lost else 0.0
        if age <= MOST_LOST:
            return len(session.seen), len(lost), max(age, 0.0)
        assert stall > STALL, f"seed {seed}: {len(lost)} of {len(session.seen)} edits are lost, from {age:.1f} s on"
        return None


def rounds(editor, recover, screen, seeds):
    done = []
    stalled = 0
    for seed in seeds:
        while (result := killed(editor, recover, screen, seed)) is None:
            stalled += 1
            if stalled > 20:
                return None
        done.append(result)
    return done


def main(editor, recover, kills, seed=None):
    missing = [program for program in ("Xvfb", "xdotool", "import") if not shutil.which(program)]
    if missing:
        print("skipped: there is no", ", ".join(missing))
        return SKIPPED
    first = int(seed) if seed else random.randrange(1 << 30)
    print("seed", first, flush=True)
    seeds = list(range(first, first + int(kills)))
    screens = [Screen() for _ in range(AT_ONCE)]
    try:
        with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as hands:
            each = list(hands.map(lambda part: rounds(editor, recover, screens[part], seeds[part::AT_ONCE]),
                                  range(AT_ONCE)))
    finally:
        for screen in screens:
            screen.close()
    if None in each:
        print("skipped: the machine stood still again and again")
        return SKIPPED
    done = [result for part in each for result in part]
    edits, lost, ages = (list(column) for column in zip(*done))
    print(f"{len(done)} kills, {sum(edits)} edits, {sum(lost)} lost, none older than {max(ages):.2f} s")
    assert len(done) == int(kills)
    assert sum(edits) > sum(lost), "nothing was brought back"
    assert len(done) < 20 or sum(lost) > 0, "nothing was lost, so that no kill came soon after an edit"
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
