"""What a process uses, as the kernel counts it."""

import os
import re
import time
from collections import namedtuple

# Kilobytes. What is shared counts for each of its users in `resident`, in parts in `proportional`,
# which therefore moves with what else runs; `anonymous` is the process's own doing.
Memory = namedtuple("Memory", "resident proportional anonymous")
Activity = namedtuple("Activity", "cpu_share wakeups_per_second")

_INTERNET_TABLES = ("tcp", "tcp6", "udp", "udp6", "udplite", "udplite6", "raw", "raw6", "icmp",
                    "icmp6", "packet")


def child(pid, name):
    """The process id of the child of that name; None if there is none."""
    for thread in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{thread}/children") as file:
            for number in map(int, file.read().split()):
                with open(f"/proc/{number}/comm") as comm:
                    if comm.read().strip() == name:
                        return number
    return None


def memory(pid):
    with open(f"/proc/{pid}/smaps_rollup") as file:
        sizes = dict(re.findall(r"^(\w+):\s+(\d+) kB", file.read(), re.MULTILINE))
    return Memory(int(sizes["Rss"]), int(sizes["Pss"]), int(sizes["Anonymous"]))


def peak_memory(pid):
    """The most that was ever resident, in kilobytes."""
    with open(f"/proc/{pid}/status") as file:
        return int(re.search(r"^VmHWM:\s+(\d+) kB", file.read(), re.MULTILINE).group(1))


def _threads(pid, name):
    for thread in os.listdir(f"/proc/{pid}/task"):
        try:
            with open(f"/proc/{pid}/task/{thread}/{name}") as file:
                yield file.read()
        except (FileNotFoundError, ProcessLookupError):
            continue  # ended meanwhile


def cpu_seconds(pid):
    """Processor time of all living threads, to the nanosecond."""
    return sum(int(text.split()[0]) for text in _threads(pid, "schedstat")) / 1e9


def wakeups(pid):
    """How often threads have gone to sleep, which is how often they were woken."""
    return sum(int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", text, re.MULTILINE).group(1))
               for text in _threads(pid, "status"))


def switches(pid):
    """How often each thread was switched away from, for whatever reason, by its number and name."""
    found = {}
    for text in _threads(pid, "status"):
        fields = dict(line.split(":", 1) for line in text.splitlines())
        found[fields["Pid"].strip(), fields["Name"].strip()] = (
            int(fields["voluntary_ctxt_switches"]) + int(fields["nonvoluntary_ctxt_switches"]))
    return found


def activity(pid, seconds):
    """CPU share and wake-ups over a stretch of time, during which nothing else is done."""
    cpu, woken, start = cpu_seconds(pid), wakeups(pid), time.monotonic()
    time.sleep(seconds)
    elapsed = time.monotonic() - start
    return Activity((cpu_seconds(pid) - cpu) / elapsed, (wakeups(pid) - woken) / elapsed)


def descriptors(pid):
    """What each open file descriptor leads to."""
    found = []
    for number in os.listdir(f"/proc/{pid}/fd"):
        try:
            found.append(os.readlink(f"/proc/{pid}/fd/{number}"))
        except FileNotFoundError:
            continue  # closed meanwhile
    return found


def libraries(pid):
    """The file names of the libraries that are loaded."""
    with open(f"/proc/{pid}/maps") as file:
        paths = {line.split(None, 5)[5].strip() for line in file if "/" in line}
    return {os.path.basename(path) for path in paths if ".so" in path}


def network_sockets(pid):
    """The network sockets a process holds, as lines of the kernel's tables."""
    own = {target[len("socket:["):-1] for target in descriptors(pid) if target.startswith("socket:[")}
    found = []
    for table in _INTERNET_TABLES:
        try:
            with open(f"/proc/{pid}/net/{table}") as file:
                lines = file.read().splitlines()[1:]
        except FileNotFoundError:
            continue  # this kernel does not have the protocol
        column = 8 if table == "packet" else 9
        found += [f"{table}: {line}" for line in lines if line.split()[column] in own]
    return found
