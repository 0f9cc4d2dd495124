import random
import re
import shutil
import subprocess

from attack import Attack, Limits

ERRORS = {"mmap": "ENOMEM", "clone3": "EAGAIN", "openat": "EMFILE", "socket": "EMFILE", "write": "ENOSPC"}
OTHER_ERROR = "EIO"
# What programs do to files, folders, sockets and threads. Calls that cannot fail, and those with which the C library
# ends the process, are left out.
CALLS = (
    "accept4 access bind chdir clone3 close connect dup dup2 epoll_create1 epoll_ctl epoll_wait eventfd2 fchmod fchown "
    "fcntl fsync flock fstatfs ftruncate getcwd getdents64 getpeername getrandom getsockname getsockopt inotify_add_watch "
    "inotify_init1 ioctl link listen lseek madvise mkdir mmap mprotect munmap newfstatat openat pipe2 poll prctl pread64 "
    "prlimit64 read readlink readv recvfrom recvmsg rename sched_getaffinity sendmsg sendto setsockopt socket socketpair "
    "statfs statx sysinfo timerfd_create timerfd_settime uname unlink write writev"
).split()


def strace(output, *options):
    """The command prefix: what follows is the process that is started, and strace watches it from aside."""
    return ["strace", "-D", "-f", "-qq", "-o", str(output), *options]


def failing(call, number):
    """The options that make one call fail: the so-many-th of its name."""
    return f"--trace={call}", f"--inject={call}:error={ERRORS.get(call, OTHER_ERROR)}:when={number}"


MAIN = "rt_sigaction(SIGPIPE, {sa_handler=SIG_IGN"  # the program's own first call; those before are the loader's


def counts_in(trace):
    """{call: how often} in a part of a trace."""
    counts = dict.fromkeys(CALLS, 0)
    for call in re.findall(r"^\d+ +(\w+)\(", trace, re.MULTILINE):
        counts[call] = counts.get(call, 0) + 1
    return counts


def faults_of(trace):
    """[(call, number)] of all calls in a recorded run that can be made to fail, in an order that is always the same."""
    text = trace.read_text(errors="replace")
    loading, all_calls = counts_in(text[: text.index(MAIN)]), counts_in(text)
    faults = [(call, number + 1) for call in CALLS for number in range(loading[call], all_calls[call])]
    random.Random(16).shuffle(faults)
    return faults


def require(fault, condition, text):
    if not condition:
        raise AssertionError(f"{fault[0]} number {fault[1]} failed: {text}")


class OfACommand(Attack):
    """Each system call of `cimhost fleet set-link` fails once: the fleet is the old one or the new one."""

    limits = Limits(p99_allowance=2.0)  # the commands take the processors

    def attack(self, server, stopping):
        folder = server.folder / "command"
        folder.mkdir()
        fleet, trace = folder / "fleet.json", folder / "trace"
        command = [server.cimhost, "fleet", "set-link", "1", "1", "down", fleet]
        shutil.copy(server.fleet, fleet)
        subprocess.run([*strace(trace), *command], check=True)
        changed = fleet.read_bytes()
        for fault in faults_of(trace):
            if stopping.is_set():
                return
            shutil.copy(server.fleet, fleet)
            ended = subprocess.run([*strace("/dev/null", *failing(*fault)), *command], capture_output=True, timeout=30)
            require(fault, ended.returncode >= 0, f"the command crashed, status {ended.returncode}")
            found = fleet.read_bytes()
            require(fault, found in (server.fleet.read_bytes(), changed), "the fleet is damaged")
            require(fault, ended.returncode != 0 or found == changed, "a change that was not made is called done")
            require(fault, ended.returncode == 0 or ended.stderr, "no word says what is wrong")
