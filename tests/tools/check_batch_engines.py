#!/usr/bin/env python3
"""Checks that Snakemake, Dask and mpirun do the parts of a planned run with the scripts of velmorak-batch, although a
part fails or a worker is killed, and leave what one run leaves.

usage: check_batch_engines.py VELMORAK-RUN snakemake|snakemake-slurm|dask|mpi
"""

import re
import shlex
import subprocess
import sys

from batch_jobs import PYTHON, SKIPPED, BatchPlace, fine, kill, need, need_topology, parent, watch
from slurm_cluster import SLURM, SlurmCluster


def check_snakemake(place):
    place.write("snakemake", "--runner", place.wrapper(failing=9), "--retries", "1")
    command = ["snakemake", "-s", str(place.job / "snakemake" / "Snakefile"), "--cores", "2"]
    done = fine(place.execute(*command))
    assert "This node has a problem." in done.stderr and "Trying to restart" in done.stderr, done.stderr
    place.check_merged()
    place.forget_part(3)
    done = fine(place.execute(*command, "-R", "merge"))
    assert done.stderr.count("rule part:") == 1, done.stderr
    assert "Nothing to be done" in fine(place.execute(*command)).stderr
    place.check_merged()


def check_snakemake_slurm(place):
    """With the command that the Snakefile shows."""
    place.write("snakemake", "--runner", place.wrapper(failing=9), "--retries", "1", "--memory", "100M")
    rules = (place.job / "snakemake" / "Snakefile").read_text()
    shown = re.search(r"(?ms)^#   (snakemake [^\n]*--cluster.*?)^#\n", rules)
    command = shlex.split(shown[1].replace("\\\n#", ""))
    with SlurmCluster() as cluster:
        fine(place.execute(*command, SLURM_CONF=cluster.environment["SLURM_CONF"]))
        states, _ = cluster.until_jobs(lambda states: not {"PENDING", "RUNNING", "COMPLETING"} & set(states.values()))
    assert (place.folder / "failed").exists()  # And the part was tried again on the same node.
    assert list(states.values()) == ["COMPLETED"] * 13, states
    place.check_merged()


def check_dask(place):
    place.write("dask", "--runner", place.wrapper(hanging=2, failing=9), "--retries", "1")
    script = [PYTHON, str(place.job / "dask" / "run.py")]
    run = subprocess.Popen(script, cwd=place.folder, env=place.environment, stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT, text=True)
    try:
        wrapper, _ = place.hanging()
        worker = parent(wrapper)
        assert worker != run.pid
        kill(worker)
        said = run.communicate()[0]
    finally:
        run.kill()
        run.wait()
    assert run.returncode == 0, said
    assert said.count("6 of 6 parts of this round are done") == 2, said
    place.check_merged()
    place.forget_part(3)
    with (place.folder / "data" / "run_003.csv").open("a") as file:
        file.write("1,2,3\n")
    failed = fine(place.execute(*script), 6)
    assert "has changed since the job was planned" in failed.stderr, failed.stderr


def check_mpi(place):
    place.environment.update(OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1", OMPI_MCA_plm="isolated",
                             OMPI_MCA_rmaps_base_oversubscribe="1")
    place.write("mpi", "--runner", place.wrapper(failing=9), "--retries", "1")
    done = fine(place.execute("bash", str(place.job / "mpi" / "run.sh")))
    assert "This node has a problem." in done.stderr, done.stderr
    place.check_merged()
    for path in (place.job / "parts").iterdir():
        path.unlink()
    for ranks in ("6", "12"):  # Half of the twelve find their parts done.
        fine(place.execute("mpirun", "-n", ranks, place.runner, "--part", "auto", str(place.job)))
    fine(place.run("--merge", "-j", "1", str(place.job)))
    place.check_merged()


def main(runner, engine):
    needed = {"snakemake": ["snakemake"], "snakemake-slurm": ["snakemake", *SLURM], "mpi": ["mpirun"]}
    need(*needed.get(engine, []))
    if engine == "dask" and subprocess.run([PYTHON, "-c", "import distributed"], capture_output=True).returncode != 0:
        print("skipped: not installed: python3-distributed")
        sys.exit(SKIPPED)
    if engine == "snakemake-slurm":
        need_topology()
    watch()
    with BatchPlace(runner) as place:
        {"snakemake": check_snakemake, "snakemake-slurm": check_snakemake_slurm, "dask": check_dask,
         "mpi": check_mpi}[engine](place)


if __name__ == "__main__":
    main(*sys.argv[1:])
