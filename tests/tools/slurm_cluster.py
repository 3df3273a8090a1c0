"""A Slurm of its own on this computer: munged, slurmctld, and three slurmd, each a node with one core."""

import datetime
import os
import pathlib
import pwd
import random
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile

SLURM = ("munged", "slurmctld", "slurmd", "sbatch")  # Programs that it needs.
NODES = ("n1", "n2", "n3")
ENDED = {"COMPLETED", "FAILED", "CANCELLED", "TIMEOUT", "NODE_FAIL", "OUT_OF_MEMORY", "BOOT_FAIL", "DEADLINE"}

CONFIGURATION = """ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket={folder}/munge.socket
SlurmctldPort={ports[0]}
SlurmctldPidFile={folder}/slurmctld.pid
SlurmctldLogFile={folder}/slurmctld.log
StateSaveLocation={folder}/state
SlurmdPidFile={folder}/slurmd-%n.pid
SlurmdLogFile={folder}/slurmd-%n.log
SlurmdSpoolDir={folder}/spool-%n
SlurmdParameters=config_overrides
SlurmdTimeout=30
MessageTimeout=60
SchedulerParameters=sched_interval=1,bf_interval=1
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
MpiDefault=none
MailProg=/bin/true
ReturnToService=2
KillWait=1
NodeName=n1 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[1]} CPUs=1 RealMemory=4000
NodeName=n2 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[2]} CPUs=1 RealMemory=4000
NodeName=n3 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[3]} CPUs=1 RealMemory=4000
PartitionName=all Nodes=ALL Default=YES State=UP
"""


def free_ports(count):
    """@return ports below those that the system gives to connections, which could take them before a daemon does."""
    first = int(pathlib.Path("/proc/sys/net/ipv4/ip_local_port_range").read_text().split()[0])
    ports = []
    for port in random.sample(range(min(10000, first // 2), first), 1000):
        with socket.socket() as tried:
            try:
                tried.bind(("127.0.0.1", port))
            except OSError:
                continue  # Another program listens there.
        ports.append(port)
        if len(ports) == count:
            return ports
    raise AssertionError("no free ports below %d" % first)


def wait_for_end(pid, seconds):
    """@return whether the process has ended in this time."""
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return True
    with os.fdopen(descriptor):
        return bool(select.select([descriptor], [], [], seconds)[0])


def is_running(pid):
    try:
        return pathlib.Path("/proc/%d/stat" % pid).read_text().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


class SlurmCluster:
    """Its daemons end with it, whatever happens."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="slurm"))
        self.environment = dict(os.environ, SLURM_CONF=str(self.folder / "slurm.conf"),
                                PATH=os.environ["PATH"] + ":/usr/sbin:/sbin")

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def start(self):
        self.folder.chmod(0o755)  # munged wants its socket to be reachable by all.
        (self.folder / "state").mkdir()
        key = self.folder / "munge.key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        user = pwd.getpwuid(os.getuid()).pw_name
        host = socket.gethostname().partition(".")[0]
        (self.folder / "slurm.conf").write_text(
            CONFIGURATION.format(folder=self.folder, host=host, user=user, ports=free_ports(4)))
        self.run("munged", "--force", "--num-threads=2", *(
            "--%s=%s/munge%s" % (option, self.folder, suffix) for option, suffix in
            (("socket", ".socket"), ("key-file", ".key"), ("pid-file", "d.pid"), ("log-file", "d.log"),
             ("seed-file", ".seed"))))
        self.run("slurmctld", "-c")
        for node in NODES:
            self.run("slurmd", "-N", node)
        self.until(["sinfo", "--Node", "--format=%N %t"], lambda nodes: all(nodes.get(n) == "idle" for n in NODES))

    def __exit__(self, *_):
        pids = [int(path.read_text()) for path in sorted(self.folder.glob("*.pid")) if path.read_text().strip()]
        for pid in pids:
            self.signal(pid, signal.SIGTERM)
        for pid in pids:
            if is_running(pid) and not wait_for_end(pid, 10):
                self.signal(pid, signal.SIGKILL)
        for pid in self.processes():  # Steps of nodes that were killed, and daemons without a file.
            self.signal(pid, signal.SIGKILL)
        shutil.rmtree(self.folder)

    @staticmethod
    def signal(pid, number):
        try:
            os.kill(pid, number)
        except ProcessLookupError:
            pass

    def processes(self):
        """All whose environment names this cluster."""
        mark = ("SLURM_CONF=%s/slurm.conf" % self.folder).encode()
        found = []
        for path in pathlib.Path("/proc").glob("[0-9]*/environ"):
            try:
                if mark in path.read_bytes().split(b"\0"):
                    found.append(int(path.parent.name))
            except OSError:
                pass  # It has ended, or is another user's.
        return found

    def execute(self, *command):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True)

    def run(self, *command):
        done = self.execute(*command)
        assert done.returncode == 0, "%s\n%s\n%s" % (command, done.stdout, done.stderr)
        return done.stdout

    def until(self, command, condition):
        """Asks the daemon again and again, once in a second, for lines of a key and a value.
        @return the values by key, once the condition holds for them."""
        asking = subprocess.Popen(["stdbuf", "-oL", *command, "--noheader", "--iterate=1"], env=self.environment,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        values = {}
        try:
            for line in asking.stdout:
                key, _, value = line.strip().partition(" ")
                if key:
                    values[key] = value
                elif condition(values):
                    return values
                else:  # An empty line ends an answer.
                    values = {}
        finally:
            asking.kill()
            asking.communicate()
        raise AssertionError("%s ended; %s" % (command, self.log("slurmctld")))

    def until_jobs(self, condition):
        """@param condition takes states of jobs by number, or by number_task. @return states, and nodes."""
        def parts(jobs, position):
            return {key: value.split(" ")[position] for key, value in jobs.items()}
        jobs = self.until(["squeue", "--states=all", "--array", "--format=%i %T %N."],
                          lambda jobs: condition(parts(jobs, 0)))
        return parts(jobs, 0), {key: node.rstrip(".") for key, node in parts(jobs, 1).items()}

    def until_ended(self, job):
        """Waits for a job. Those that wait to be tried again need not wait for two minutes, but for two seconds: slurmd
        refuses a job in the second in which it has killed it."""
        def condition(states):
            for key, state in states.items():
                if state == "PENDING" and key in self.delayed():
                    said = self.execute("scontrol", "update", "JobId=" + key, "StartTime=now+2")
                    assert said.returncode == 0 or key not in self.delayed(), said.stderr
            return states.get(job) in ENDED
        return self.until_jobs(condition)[0]

    def delayed(self):
        """@return the jobs that begin later than they could."""
        soon = datetime.datetime.now() + datetime.timedelta(seconds=5)
        waiting = [line.split() for line in self.run(
            "squeue", "--array", "--noheader", "--states=PENDING",
            "--Format=JobArrayID:40,Reason:40,EligibleTime:40").splitlines()]
        return [key for key, reason, *begin in waiting
                if reason == "BeginTime" and datetime.datetime.fromisoformat(begin[0]) > soon]

    def node_of(self, task):
        return self.until_jobs(lambda states: states.get(task) == "RUNNING")[1][task]

    def kill_node(self, node):
        os.kill(int((self.folder / ("slurmd-%s.pid" % node)).read_text()), signal.SIGKILL)

    def log(self, name):
        return (self.folder / (name + ".log")).read_text()[-3000:]

    @staticmethod
    def submitted(said):
        """Numbers of jobs from what submit.sh prints."""
        return re.findall(r"job ([0-9]+)", said)
