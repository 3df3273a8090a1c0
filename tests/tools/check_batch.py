#!/usr/bin/env python3
"""Checks the scripts that velmorak-batch writes: their contents, that shells and Python accept them, that they quote
names, and that invalid jobs are refused.

usage: check_batch.py VELMORAK-RUN
"""

import ast
import os
import pathlib
import re
import shutil
import subprocess
import sys

from batch_jobs import BatchPlace, fine
from check_jobs import analysis, difference, files, plain, plan, tree
from pipelines import Place, plugin

ENGINES = ("slurm", "htcondor", "sge", "snakemake", "dask", "mpi")
NAMES = {
    "slurm": {"submit.sh", "part.sbatch", "merge.sbatch"},
    "htcondor": {"job.dag", "part.sub", "merge.sub", "part.sh", "merge.sh"},
    "sge": {"submit.sh", "part.sh", "merge.sh"},
    "snakemake": {"Snakefile"},
    "dask": {"run.py"},
    "mpi": {"run.sh", "rank.sh"},
}


def scripts(place, engine, *options):
    """The texts of the scripts by name."""
    shutil.rmtree(place.job / engine, ignore_errors=True)
    said = place.write(engine, *options).stdout
    assert "12 parts in 2 rounds" in said, said
    texts = {path.name: path.read_text() for path in (place.job / engine).iterdir() if path.is_file()}
    assert set(texts) == NAMES[engine], set(texts)
    for name, text in texts.items():
        assert not re.search(r"@[a-z_]+(:[a-z]+)?(\|[^@]*)?@", text), (engine, name)
        if text.startswith("#!/bin/bash"):
            fine(subprocess.run(["bash", "-n", str(place.job / engine / name)], capture_output=True, text=True))
            assert os.access(place.job / engine / name, os.X_OK)
    return texts


def check_slurm(place):
    texts = scripts(place, "slurm", "--partition", "long", "--time", "90m", "--memory", "2G", "--threads", "4",
                    "--retries", "5", "--setup", "module load gcc", "--setup", "export A='b c'", "--at-once", "50")
    assert "rounds=(1-6 7-12)\n" in texts["submit.sh"] and "at_once=50\n" in texts["submit.sh"], texts["submit.sh"]
    for name in ("part.sbatch", "merge.sbatch"):
        for line in ("#SBATCH --partition=long", "#SBATCH --time=01:30:00", "#SBATCH --mem=2048M",
                     "##SBATCH --account=NAME", "#SBATCH --cpus-per-task=4", "#SBATCH --requeue", "module load gcc",
                     "export A='b c'"):
            assert line in texts[name].splitlines(), (line, texts[name])
    assert "retries=5\n" in texts["part.sbatch"]
    check_arrays(place)


def check_arrays(place):
    """Which arrays are submitted, with a program instead of sbatch that prints what it is given."""
    script = place.job / "slurm" / "submit.sh"
    fake = place.folder / "fake"
    fake.mkdir()
    (fake / "sbatch").write_text('#!/bin/bash\nprintf "<%%s>" "$@" >>"%s/calls"\necho >>"%s/calls"\n'
                                 'echo "$(wc -l <"%s/calls");cluster"\n' % ((fake,) * 3))
    (fake / "sbatch").chmod(0o755)

    def submitted():
        (fake / "calls").unlink(missing_ok=True)
        said = fine(place.execute("bash", str(script), PATH="%s:%s" % (fake, os.environ["PATH"]))).stdout
        lines = (fake / "calls").read_text().splitlines()
        return [(re.search(r"<--array=([^>]*)>", line), re.search(r"<--dependency=([^>]*)>", line),
                 line.split("<")[-1][:-1]) for line in lines], said

    def summary(calls):
        return [(array and array[1], after and after[1], last.rpartition("/")[2]) for array, after, last in calls]

    calls, said = submitted()
    assert summary(calls) == [("1-6%50", None, "0"), ("7-12%50", "afterok:1", "0"),
                              (None, "afterok:2", "merge.sbatch")], calls
    assert "Round 2: job 2, parts 7-12\n" in said, said
    for part in (1, 2, 4, 6, 7, 12):
        (place.job / "parts" / ("%05d.part" % part)).touch()
    calls, _ = submitted()
    assert [array for array, *_ in summary(calls)] == ["3,5%50", "8-11%50", None], calls
    script.write_text(script.read_text().replace("array_size=1000", "array_size=4").replace("at_once=50", "at_once="))
    calls, said = submitted()
    assert summary(calls) == [("3", None, "0"), ("1", None, "4"), ("4", "afterok:1:2", "4"),
                              ("1-3", "afterok:1:2", "8"), (None, "afterok:3:4", "merge.sbatch")], calls
    assert "Round 2: job 4, parts 8+(1-3)\n" in said, said
    for path in (place.job / "parts").iterdir():
        path.unlink()
    (fake / "sbatch").write_text('#!/bin/bash\necho "$0" >>"%s/calls"\necho "No such partition." >&2\nexit 1\n' % fake)
    (fake / "calls").unlink()
    refused = fine(place.execute("bash", str(script), PATH="%s:%s" % (fake, os.environ["PATH"])), 1)
    assert (refused.stdout, refused.stderr) == ("", "No such partition.\n"), refused
    assert len((fake / "calls").read_text().splitlines()) == 1, "nothing is submitted after a refusal"


def check_htcondor(place):
    texts = scripts(place, "htcondor", "--memory", "500M", "--retries", "2", "--at-once", "100", "--account",
                    "group_a.b")
    dag = texts["job.dag"].splitlines()
    for part in range(1, 13):
        before = ["PARENT round1 CHILD part%d" % part] if part > 6 else []
        for line in ["JOB part%d part.sub" % part, 'VARS part%d part="%d"' % (part, part),
                     "RETRY part%d 2 UNLESS-EXIT 1" % part, "PARENT part%d CHILD round%d" % (part, 1 + (part > 6)),
                     *before]:
            assert dag.count(line) == 1, line
    assert len([line for line in dag if line.startswith("JOB ")]) == 15
    assert dag[-1] == "PARENT round2 CHILD merge" and "MAXJOBS parts 100" in dag, dag
    for name in ("part.sub", "merge.sub"):
        lines = texts[name].splitlines()
        assert "request_memory = 500M" in lines and "accounting_group = group_a.b" in lines, lines
        assert "#allowed_job_duration = 3600" in lines and lines[-1] == "queue", lines
    part = str(place.job / "htcondor" / "part.sh")
    assert (place.folder / "state").exists()  # Of programs that were not started by scripts.
    fine(place.execute(part, "1", "1", XDG_STATE_HOME=str(place.folder / "shared")))
    assert not (place.folder / "shared").exists(), "each job has its own notes about loading"
    assert "is done already" in fine(place.execute(part, "1", "1")).stderr
    fine(place.execute(part, "9", "1"), 6)


def check_sending(runner):
    """HTCondor sends the files of a part to machines that see nothing else, and brings one file back: what is submitted is
    done here by hand."""
    with Place(runner) as place:
        place.environment["VELMORAK_CACHE_LIMIT"] = "0"
        files(place, 6, 300)
        document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_*.csv")))
        expected = plain(place, document)
        plan(place, "job", 3, "--bundle", document)
        batch = str(pathlib.Path(place.runner).with_name("velmorak-batch"))

        def write(*arguments, status=0):
            return fine(subprocess.run([batch, "htcondor", *arguments], cwd=place.folder, env=place.environment,
                                       capture_output=True, text=True), status)
        write("job")
        job, node = place.folder / "job", place.folder / "node"
        submit = (job / "htcondor" / "part.sub").read_text().splitlines()
        assert "should_transfer_files = YES" in submit and "transfer_input_files = $(files)" in submit, submit
        assert not [line for line in submit if "should_transfer_files = NO" in line]
        remaps = next(line for line in submit if line.startswith("transfer_output_remaps"))
        found = re.findall(r"^VARS part(\d+) (.*)$", (job / "htcondor" / "job.dag").read_text(), re.MULTILINE)
        parts = {int(number): dict(re.findall(r'(\w+)="([^"]*)"', variables)) for number, variables in found}
        assert sorted(parts) == [1, 2, 3, 4, 5, 6], parts
        (place.folder / "data").rename(place.folder / "away")

        def do(number, status, left_out=None):
            """@return the names of new files."""
            shutil.rmtree(node, ignore_errors=True)
            node.mkdir()
            for name in parts[number]["files"].split(", "):
                path = pathlib.Path(name.replace("/data/", "/away/"))
                if path.is_dir():
                    shutil.copytree(path, node / path.name)
                elif path.name != left_out:
                    shutil.copy(path, node / path.name)
            before = {path.name for path in node.iterdir()}
            script = str(job / "htcondor" / "part.sh")
            fine(subprocess.run(["bash", script, parts[number]["part"], parts[number]["name"], "1"], cwd=node,
                                env=place.environment, capture_output=True, text=True), status)
            new = {path.name for path in node.iterdir() if path.is_file()} - before
            for name in new:
                mapped = re.search(re.escape(name) + r" = ([^;\"]+)", remaps.replace("$(name)", parts[number]["name"]))
                shutil.copy(node / name, mapped[1])
            return new
        assert do(2, 2, "run_002.csv") == {"00002.failed"}
        assert "run_002.csv\" is missing" in fine(place.run("--status", "job"), 6).stdout
        for number in sorted(parts):
            assert do(number, 0) == {"%05d.part" % number}, number
        shutil.rmtree(node)
        (place.folder / "away").rename(place.folder / "data")
        fine(place.run("--merge", "--results", "merged", "job"))
        merged = tree(place.folder / "merged")
        assert merged == expected, difference(expected, merged)
        (place.folder / "more").mkdir()
        shutil.copy(place.folder / "data" / "run_000.csv", place.folder / "more" / "run_000.csv")
        document = place.document(*analysis(plugin("Rows", "CsvTable", file="data/run_000.csv, more/run_000.csv")))
        plan(place, "twins", 1, "--bundle", document)
        assert "part 1 reads two files named \"run_000.csv\"" in write("twins", status=1).stderr
        (place.folder / "more" / "run_000.csv").rename(place.folder / "more" / "run, 1.csv")
        document = place.document(*analysis(plugin("Rows", "CsvTable", file="more/run*.csv")))
        plan(place, "commas", 1, "--bundle", document)
        assert "because of the characters in its name" in write("commas", status=1).stderr


def check_sge(place):
    texts = scripts(place, "sge", "--runner", place.wrapper(failing=2), "--retries", "1", "--time", "2h", "--threads",
                    "2")
    assert "rounds=(1-6 7-12)\n" in texts["submit.sh"], texts["submit.sh"]
    lines = texts["part.sh"].splitlines()
    assert "#$ -l h_rt=02:00:00" in lines and "#$ -pe smp 2" in lines and "##$ -q NAME" in lines, lines
    fake = place.folder / "fake"
    (fake / "qsub").write_text('#!/bin/bash\nprintf "<%%s>" "$@" >>"%s/qsubs"\necho >>"%s/qsubs"\n'
                               'echo "$(wc -l <"%s/qsubs").1-6:1"\n' % ((fake,) * 3))
    (fake / "qsub").chmod(0o755)
    fine(place.execute("bash", str(place.job / "sge" / "submit.sh"), PATH="%s:%s" % (fake, os.environ["PATH"])))
    calls = (fake / "qsubs").read_text().splitlines()
    assert len(calls) == 3 and "<-t><1-6>" in calls[0] and "hold" not in calls[0], calls
    assert "<-t><7-12><-hold_jid><1>" in calls[1] and "<-hold_jid><2>" in calls[2], calls

    def task(number, status):
        script = 'cd "$1" && bash part.sh'
        return fine(place.execute("bash", "-c", script, "-", str(place.job / "sge"), SGE_TASK_ID=str(number)), status)
    task(2, 99)
    task(2, 0)
    task(9, 6)
    (place.folder / "data" / "run_000.csv").rename(place.folder / "kept.csv")
    (place.job / "parts" / "00001.part").unlink()
    task(1, 99)
    task(1, 2)
    (place.folder / "kept.csv").rename(place.folder / "data" / "run_000.csv")
    (place.folder / "hangs").unlink()


def check_python(place):
    program = scripts(place, "dask", "--threads", "3")["run.py"]
    ast.parse(program)
    assert "ROUNDS = [(1, 6), (7, 12)]\n" in program and "THREADS = 3 " in program, program
    assert "JOB = %r\n" % str(place.job) in program, program
    rules = scripts(place, "snakemake", "--time", "2h", "--memory", "1G", "--setup", "export A={x}")["Snakefile"]
    assert "mem_mb=1024," in rules and "runtime=120," in rules and "export A={{x}}\\n')" in rules, rules


def check_mpi(place):
    texts = scripts(place, "mpi", "--ranks", "7", "--retries", "1")
    assert "launch=(mpirun -n 7)\n" in texts["run.sh"] and "rounds=(1-6 7-12)\n" in texts["run.sh"], texts["run.sh"]
    rank = str(place.job / "mpi" / "rank.sh")
    for path in (place.job / "parts").iterdir():
        path.unlink()
    done = []
    for number, environment in enumerate(({"OMPI_COMM_WORLD_RANK": "0", "OMPI_COMM_WORLD_SIZE": "3"},
                                          {"PMI_RANK": "1", "PMI_SIZE": "3"},
                                          {"SLURM_PROCID": "2", "SLURM_NTASKS": "3"})):
        fine(place.execute("bash", rank, "1", "6", **environment))
        done += [number + 1, number + 4]
        assert sorted(int(path.stem) for path in (place.job / "parts").iterdir()) == sorted(done)


def check_refusals(place):
    job = str(place.job)

    def refused(sentence, *arguments):
        done = fine(place.batch(*arguments), 1)
        assert done.stdout == "" and done.stderr.startswith("velmorak-batch: "), done
        assert sentence in done.stderr and done.stderr.count("\n") <= 2, done.stderr
    refused("--ranks is not for slurm, but for mpi", "slurm", "--ranks", "3", job)
    refused("--partition is not for htcondor, but for slurm, sge", "htcondor", job, "--partition", "a")
    refused("ENGINE: \"pbs\" is none of slurm, htcondor, sge, snakemake, dask, mpi", "pbs", job)
    refused("JOB", "slurm")
    refused("expected a time from one minute on", "slurm", "--time", "soon", job)
    refused("expected a time from one minute on", "slurm", "--time", "0m", job)
    refused("expected a size such as 500M or 2G", "slurm", "--memory", "lots", job)
    refused("expected a whole number from 1 to 1024", "slurm", "--threads", "0", job)
    refused("expected a name of letters", "slurm", "--partition", "a b", job)
    refused("expected one line of text", "slurm", "--setup", "a\nb", job)
    refused("plan.json", "slurm", "nothing here")
    refused("exists already; --force replaces it, with all edits", "mpi", job)
    before = (place.job / "mpi" / "run.sh").read_text()
    (place.job / "mpi" / "run.sh").write_text(before + "# Edited.\n")
    fine(place.batch("mpi", job), 1)
    assert (place.job / "mpi" / "run.sh").read_text() == before + "# Edited.\n"
    fine(place.batch("mpi", "--force", "--ranks", "7", "--retries", "1", job))
    assert (place.job / "mpi" / "run.sh").read_text() == before
    fine(place.batch("mpi", "--output", "else where", job))
    assert (place.folder / "else where" / "run.sh").exists()
    (place.folder / "file").touch()
    refused("file/x", "mpi", "--output", "file/x", job)
    plan = (place.job / "plan.json").read_text()
    (place.job / "plan.json").write_text(plan.replace("x > mean", "x < mean"))
    refused("was changed after it was made", "mpi", "--force", job)
    (place.job / "plan.json").write_text(plan)


def check_no_parts(place):
    """A pipeline that reads no rows has nothing to divide."""
    document = place.folder / "empty.zedra"
    document.write_text('{"zedra": 1, "plugins": []}')
    fine(place.run("--plan", "empty", "--parts", "2", str(document)))
    done = fine(place.batch("slurm", "empty"), 1)
    assert "has no parts" in done.stderr, done.stderr


def main(runner):
    with BatchPlace(runner) as place:
        check_slurm(place)
        check_htcondor(place)
        check_sge(place)
        check_python(place)
        check_mpi(place)
        check_refusals(place)
        check_no_parts(place)
    check_sending(runner)


if __name__ == "__main__":
    main(*sys.argv[1:])
