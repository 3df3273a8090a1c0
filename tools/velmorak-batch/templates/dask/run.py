#!/usr/bin/env python3
"""Does the parts of a planned run on the workers of a Dask cluster, and merges them here.

    python3 @script:sh@                       with workers on this computer, one for each core
    python3 @script:sh@ tcp://HOST:8786       with the workers of a running scheduler

Start it again after failures: parts that are done end at once.
Written by velmorak-batch @version@. Edit it as you like.
"""

import os
import subprocess
import sys
import tempfile

from distributed import Client, as_completed

JOB = @job:py@
RUNNER = @runner:py@

# The first and last part of each round. Each round needs all parts of the one before.
ROUNDS = [@rounds_py@]

THREADS = @threads@  # of a part
RETRIES = @retries@  # of a part that fails. Parts of a worker that dies go to another one in any case.


def do_part(part, job, runner, threads):
    """Runs on a worker, which needs nothing but the program and the files. A program that is killed while it starts
    leaves a note in XDG_STATE_HOME, which would stop later ones; so each has a folder of its own."""
    with tempfile.TemporaryDirectory() as private:
        done = subprocess.run([runner, "--part", str(part), "-j", str(threads), job], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env=dict(os.environ, XDG_STATE_HOME=private))
    if done.returncode != 0:
        said = done.stdout.decode(errors="replace").strip()
        raise RuntimeError("part %d ended with exit status %d: %s" % (part, done.returncode, said))
    return part


def do_round(client, first, last):
    """@return whether all parts are done."""
    parts = client.map(do_part, range(first, last + 1), job=JOB, runner=RUNNER, threads=THREADS, retries=RETRIES,
                       pure=False)
    done = 0
    for future in as_completed(parts):
        if future.status == "finished":
            done += 1
            print("%d of %d parts of this round are done" % (done, len(parts)), flush=True)
        else:
            print(future.exception(), file=sys.stderr, flush=True)
    return done == len(parts)


def main(*scheduler):
    with Client(*scheduler) if scheduler else Client(processes=True, threads_per_worker=1) as client:
        if not all(do_round(client, first, last) for first, last in ROUNDS):
            return 6
    # "--results", DIR puts the results elsewhere; "--partial" accepts that parts are missing.
    return subprocess.run([RUNNER, "--merge", "-j", str(THREADS), JOB]).returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
