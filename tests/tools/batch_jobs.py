"""A planned run with two rounds of parts, scripts that do it, and parts that hang or fail, for the checks of
velmorak-batch."""

import os
import pathlib
import shlex
import shutil
import signal
import subprocess
import sys

from check_jobs import analysis, difference, files, fine, tree
from pipelines import Place, plugin

SKIPPED = 77  # For ctest.
PYTHON = "/usr/bin/python3"  # The one for which the packages of Debian are installed.


def need(*programs):
    """Ends the check as skipped, with the reason, if a program is not installed."""
    missing = [each for each in programs if not shutil.which(each, path=os.environ["PATH"] + ":/usr/sbin:/sbin")]
    if missing:
        print("skipped: not installed: %s" % ", ".join(missing))
        sys.exit(SKIPPED)


def need_topology():
    """Ends the check as skipped where slurmd cannot start: it reads the processors from /sys."""
    if not os.path.isdir("/sys/devices/system/cpu/cpu0/topology"):
        print("skipped: /sys is not mounted")
        sys.exit(SKIPPED)


def watch(seconds=1700):
    """Too long a wait, or the end of the check from outside, raises, so that everything that was started is ended."""
    def give_up(number, _):
        raise TimeoutError(signal.Signals(number).name)
    signal.signal(signal.SIGALRM, give_up)
    signal.signal(signal.SIGTERM, give_up)
    signal.alarm(seconds)


def parent(pid):
    return int(pathlib.Path("/proc/%d/stat" % pid).read_text().rpartition(")")[2].split()[1])


def kill(pid):
    try:
        os.kill(pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


# Simulates the runner. When a part is done for the first time, it may hang, stopped in the middle, or fail.
WRAPPER = """#!/bin/bash
cd {folder}
runner={runner}
part=0
if [ "$1" = --part ]; then
    part=${{2/auto/$SGE_TASK_ID}}
fi
if [ "$part" -eq {hanging} ] && mkdir "hung" 2>/dev/null; then
    "$runner" "${{@}}" &
    kill -STOP $!
    echo "$$ $!" >hangs
    wait $!
    exit
fi
if [ "$part" -eq {failing} ] && mkdir "failed" 2>/dev/null; then
    echo "This node has a problem." >&2
    exit 2
fi
exec "$runner" "$@"
"""


class BatchPlace(Place):
    """A place with a planned run of 12 parts, numbers 7 to 12 in a second round, whose names need quotes."""

    def __enter__(self):
        super().__enter__()
        self.held_pids = []
        self.program = pathlib.Path(self.runner).with_name("velmorak-batch")
        self.environment["VELMORAK_CACHE_LIMIT"] = "0"
        self.environment["XDG_STATE_HOME"] = str(self.folder / "state")
        self.environment["TMPDIR"] = str(self.folder / "temporary")  # Killed programs leave files there.
        (self.folder / "temporary").mkdir()
        files(self, 9, 400)
        document = self.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
        fine(self.run("-j", "1", "--results", "plain", document))
        self.expected = tree(self.folder / "plain")
        self.job = self.folder / "it's 100% the job"
        fine(self.run("--plan", str(self.job), "--parts", "6", "--results", "merged", document))
        return self

    def __exit__(self, *details):
        for pid in self.held_pids:
            kill(pid)
        super().__exit__(*details)

    def batch(self, *arguments):
        return subprocess.run([str(self.program), *arguments], cwd=self.folder, env=self.environment,
                              capture_output=True, text=True)

    def write(self, engine, *arguments):
        return fine(self.batch(engine, *arguments, str(self.job)))

    def wrapper(self, hanging=-1, failing=-1):
        """@return the path of a runner whose part hangs, or fails, when it is done for the first time."""
        path = self.folder / "the runner"
        path.write_text(WRAPPER.format(folder=shlex.quote(str(self.folder)), runner=shlex.quote(self.runner),
                                       hanging=hanging, failing=failing))
        path.chmod(0o755)
        os.mkfifo(self.folder / "hangs")
        return str(path)

    def hanging(self):
        """Waits until the part hangs. @return the processes of wrapper and runner."""
        wrapper, runner = map(int, (self.folder / "hangs").read_text().split())
        self.held_pids += [wrapper, runner]
        return wrapper, runner

    def execute(self, *command, **more):
        return subprocess.run(command, cwd=self.folder, env=dict(self.environment, **more), capture_output=True,
                              text=True)

    def forget_part(self, number):
        shutil.rmtree(self.folder / "merged")
        (self.job / "parts" / ("%05d.part" % number)).unlink()

    def check_merged(self):
        merged = tree(self.folder / "merged")
        assert merged == self.expected, difference(self.expected, merged)[:2000]
