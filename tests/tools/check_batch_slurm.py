#!/usr/bin/env python3
"""Checks that a Slurm of this check's own does the parts of a planned run with the scripts of velmorak-batch, although
a node dies while it does a part, and leaves what one run leaves.

usage: check_batch_slurm.py VELMORAK-RUN
"""

import sys

from batch_jobs import BatchPlace, fine, kill, need, need_topology, parent, watch
from slurm_cluster import SLURM, SlurmCluster


def submit(place, cluster):
    said = fine(place.execute("bash", str(place.job / "slurm" / "submit.sh"))).stdout
    return cluster.submitted(said), said


def log_of(place, part):
    return (place.job / "slurm" / "logs" / ("part-%d.txt" % part)).read_text()


def check_dead_node(place, cluster):
    """Part 2 is on a node that dies, and part 9, which is in the second round, fails once."""
    place.write("slurm", "--runner", place.wrapper(hanging=2, failing=9), "--time", "1h", "--memory", "500M",
                "--partition", "all", "--setup", "true")
    (first, second, merge), said = submit(place, cluster)
    wrapper, runner = place.hanging()
    node = cluster.node_of(first + "_2")
    script = parent(wrapper)
    step = parent(script)
    cluster.kill_node(node)
    for pid in (step, script, wrapper, runner):
        kill(pid)
    states = cluster.until_ended(merge)
    assert states[merge] == "COMPLETED", (states, cluster.log("slurmctld"))
    parts = ["%s_%d" % (first if part < 7 else second, part) for part in range(1, 13)]
    assert {states[part] for part in parts} == {"COMPLETED"}, states
    tries = [line.split() for line in log_of(place, 2).splitlines() if line.startswith("Part 2 on ")]
    assert len(tries) == 2 and tries[0][3] == node + "," and tries[1][3] != node + ",", tries
    tries = log_of(place, 9)
    assert "try 1\nThis node has a problem.\n" in tries and ", try 2\n" in tries, tries
    assert cluster.run("sinfo", "--noheader", "--nodes=" + node, "--format=%T").strip() == "down*"
    place.check_merged()


def check_missing_part(place, cluster):
    place.forget_part(3)
    (part, merge), said = submit(place, cluster)
    assert "Round 1" in said and "Round 2" not in said, said
    states = cluster.until_ended(merge)
    assert states[merge] == "COMPLETED", states
    assert [key for key in states if key.startswith(part + "_")] == [part + "_3"], states
    place.check_merged()


def check_hopeless_part(place, cluster):
    """A part that fails for good is tried again as often as was asked for; then the merge is cancelled."""
    place.forget_part(3)
    with (place.folder / "data" / "run_003.csv").open("a") as file:
        file.write("1,2,3\n")
    place.write("slurm", "--force", "--retries", "1")
    (part, merge), _ = submit(place, cluster)
    states = cluster.until_ended(merge)
    assert (states[part + "_3"], states[merge]) == ("FAILED", "CANCELLED"), states
    said = log_of(place, 3)
    assert said.count("has changed since the job was planned") == 2, said
    assert "part 3 failed: the file" in fine(place.run("--status", str(place.job)), 6).stdout


def main(runner):
    need(*SLURM)
    need_topology()
    watch()
    with BatchPlace(runner) as place, SlurmCluster() as cluster:
        place.environment.update(SLURM_CONF=cluster.environment["SLURM_CONF"])
        check_dead_node(place, cluster)
        check_missing_part(place, cluster)
        check_hopeless_part(place, cluster)
    assert cluster.processes() == [], cluster.processes()


if __name__ == "__main__":
    main(*sys.argv[1:])
