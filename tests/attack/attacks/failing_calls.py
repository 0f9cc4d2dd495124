import collections
import itertools
import pathlib
import random
import re
import shutil
import subprocess
import time
import xml.etree.ElementTree

import fleets
import subscriptions
import support
from attack import Attack, Limits
from server import CannotStart, Server

ERRORS = {"mmap": "ENOMEM", "clone3": "EAGAIN", "openat": "EMFILE", "socket": "EMFILE", "write": "ENOSPC"}
OTHER_ERROR = "EIO"
# What programs do to files, folders, sockets and threads. Calls that cannot fail, and those with which the C library
# ends the process, are left out.
CALLS = (
    "accept4 access bind chdir clone3 close connect dup dup2 epoll_create1 epoll_ctl epoll_wait eventfd2 fchmod fchown "
    "fcntl fsync flock fstatfs ftruncate getcwd getdents64 getpeername getrandom getsockname getsockopt inotify_add_watch "
    "inotify_init1 ioctl link listen lseek madvise mkdir mmap mprotect newfstatat openat pipe2 poll prctl pread64 "
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
    """{call: how often the thread made it that made it most} in a part of a trace. A fault counts in each thread."""
    counts = collections.Counter(re.findall(r"^(\d+) +(\w+)\(", trace, re.MULTILINE))
    most = dict.fromkeys(CALLS, 0)
    for (_, call), count in counts.items():
        most[call] = max(most.get(call, 0), count)
    return most


def faults_of(trace):
    """[(call, number)] of all calls in a recorded run that can be made to fail, in an order that is always the same."""
    text = trace.read_text(errors="replace")
    loading, all_calls = counts_in(text[: text.index(MAIN)]), counts_in(text)
    faults = [(call, number + 1) for call in CALLS for number in range(loading[call], all_calls[call])]
    random.Random(16).shuffle(faults)
    return faults


def first_places(faults, calls):
    """The same, but in front the first places of these calls, the calls in turn."""
    places = {call: sorted(number for name, number in faults if name == call) for call in calls}
    turns = itertools.zip_longest(*([(call, number) for number in places[call]] for call in calls))
    first = [fault for turn in turns for fault in turn if fault]
    return first + [fault for fault in faults if fault not in set(first)]


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


# With which a server begins its threads, files and sockets.
START_CALLS = ("clone3", "eventfd2", "socket", "mmap", "openat", "bind", "listen", "epoll_create1")
# What a running server does for its clients, its listeners and its fleet.
LIFE_CALLS = ("clone3", "accept4", "openat", "fsync", "rename", "socket", "connect", "mmap", "recvmsg",
              "sendmsg", "fcntl", "flock", "fchmod", "newfstatat", "unlink", "mprotect", "ioctl", "setsockopt")  # fmt: skip
# The event loop's own, of which Asio does not say that they failed: no connection is noticed any more, and nobody is
# answered. The system lets them fail only where its memory for them is exhausted. The server ends when it is told.
LOOP_CALLS = ("epoll_ctl", "epoll_wait", "timerfd_settime", "read", "write", "poll")
START_SECONDS = 20.0  # many times what it takes under strace
STOP_SECONDS = 30.0  # under strace, with other programs on the same processors
ANSWER_SECONDS = 60.0
DELIVERY_SECONDS = 90.0
CHANGE_SECONDS = 5.0  # in which a change is told, as a rule
READ_CLASS = "Merolt_FCHBA_FCPort"


def answer_of(server, body):
    """The answer's text. Raises OSError or NoAnswer where there is none, AssertionError where it is garbage."""
    status, answer = support.ask(server, body, ANSWER_SECONDS)
    if status == 200:
        try:
            xml.etree.ElementTree.fromstring(answer)
        except xml.etree.ElementTree.ParseError as error:
            raise AssertionError(f"the answer is garbage: {error}: {answer[:500]!r}") from error
    return answer


class OfAStart(Attack):
    """Single system calls fail while a server starts: it says why it cannot, or it serves."""

    seconds = 6.0
    limits = Limits(p99_allowance=5.0)  # servers start all the time
    idle_clients = 0

    def attack(self, server, stopping):
        trace = server.folder / "trace"
        self.start(server, None, strace(trace))
        faults = [fault for fault in faults_of(trace) if fault[0] not in LOOP_CALLS]
        for fault in first_places(first_places(faults, START_CALLS), ["clone3"]):
            if stopping.is_set():
                return
            self.start(server, fault, strace("/dev/null", "--seccomp-bpf", *failing(*fault)))

    def start(self, server, fault, prefix):
        """A server from its start to its stop. Without a fault all is to go well."""
        traced = Server(server.cimhost, server.fleet)
        wrapper = traced.folder / "traced"
        wrapper.write_text(f'#!/bin/sh\nexec {" ".join(prefix)} "{server.cimhost}" "$@"\n')
        wrapper.chmod(0o700)
        traced.cimhost = wrapper
        try:
            self.live(traced, fault or ("nothing", 0), must_serve=not fault)
        finally:
            traced.remove()

    def live(self, traced, fault, must_serve):
        try:
            traced.start(START_SECONDS)
        except CannotStart as error:
            require(fault, not must_serve, f"it does not start: {error}")
            require(fault, traced.process.poll() is not None, "it neither starts nor ends")
            require(fault, traced.process.returncode > 0, f"it crashed, status {traced.process.returncode}: {error}")
            require(fault, str(error), "no word says why it did not start")
            return
        try:
            answer_of(traced, support.enumerate_names(READ_CLASS))
        except (OSError, support.NoAnswer) as error:
            require(fault, not isinstance(error, TimeoutError) and not must_serve, f"no answer: {error}")
        require(fault, traced.is_running(), f"it crashed: {traced.process.poll()}: {traced.errors()[-500:]}")
        took = traced.stop(STOP_SECONDS)
        require(fault, traced.process.returncode >= 0, f"status {traced.process.returncode} after {took:.0f} s")


class OfAnEventLoop(OfAStart):
    """Single system calls fail of which an event loop does not say so: SIGTERM ends the server all the same."""

    seconds = 4.0

    def attack(self, server, stopping):
        trace = server.folder / "trace"
        self.start(server, None, strace(trace))
        faults = [fault for fault in faults_of(trace) if fault[0] in ("epoll_ctl", "eventfd2", "timerfd_settime", "pipe2")]
        for fault in first_places(faults, ["epoll_ctl"]):
            if stopping.is_set():
                return
            self.start(server, fault, strace("/dev/null", "--seccomp-bpf", *failing(*fault)))

    def live(self, traced, fault, must_serve):
        try:
            traced.start(START_SECONDS)
        except CannotStart as error:
            require(fault, not must_serve and traced.process.poll() is not None, f"it does not start: {error}")
            return
        took = traced.stop(STOP_SECONDS)
        require(fault, traced.process.returncode == 0, f"status {traced.process.returncode} after {took:.0f} s")


class Watched:
    """While it lasts, strace watches a running server, and makes calls fail where the options say so."""

    def __init__(self, server, output, *options):
        self.tasks = pathlib.Path(f"/proc/{server.process.pid}/task")
        self.command = ["strace", "-f", "-qq", "-o", str(output), *options, "-p", str(server.process.pid)]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stderr=subprocess.PIPE)
        deadline = time.monotonic() + START_SECONDS
        while not self._is_attached():
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise CannotStart(f"strace: {self.process.stderr.read().decode()}")
            time.sleep(0.01)

    def _is_attached(self):
        states = [(task / "status").read_text() for task in self.tasks.iterdir()]
        return not any("TracerPid:\t0\n" in state for state in states)

    def __exit__(self, *problem):
        self.process.terminate()
        self.process.communicate()


class OfALife(Attack):
    """Single system calls fail while a server reads its fleet anew, answers, updates a card and tells a listener: it
    goes on, and what was lost is told."""

    seconds = 6.0
    limits = Limits(p99_allowance=5.0)  # the other server takes the processors
    idle_clients = 0

    def attack(self, server, stopping):
        self.images = itertools.cycle(fleets.make_image(server, version) for version in ("2.2.3", "2.2.4"))
        self.states = itertools.cycle(("down", "up"))
        self.listener = subscriptions.Listener()
        other = Server(server.cimhost, server.fleet)
        other.options = ["--anonymous-writes"]
        try:
            other.start()
            self.live(other, stopping)
        finally:
            other.remove()
            self.listener.close()

    def live(self, other, stopping):
        subscriptions.subscribe(other, subscriptions.make_filter(other), "counting", self.listener.url)
        self.names = answer_of(other, support.enumerate_names(READ_CLASS)).count(b"<INSTANCENAME")
        trace = other.folder / "trace"
        with Watched(other, trace):
            self.work(other, ("nothing", 0), must_succeed=True)
        most = counts_in(trace.read_text(errors="replace"))
        faults = [(call, number + 1) for call in LIFE_CALLS for number in range(most[call])]
        for fault in first_places(faults, LIFE_CALLS):
            if stopping.is_set():
                break
            with Watched(other, "/dev/null", *failing(*fault)):
                self.work(other, fault, must_succeed=False)
            self.work(other, fault, must_succeed=True)
        took = other.stop(STOP_SECONDS)
        require(("nothing", 0), other.process.returncode == 0, f"status {other.process.returncode} after {took:.0f} s")

    def work(self, other, fault, must_succeed):
        """A change of the fleet, a read and an update. The change is told to the listener where nothing may go wrong."""
        self.change_link(other, fault)
        try:
            names = answer_of(other, support.enumerate_names(READ_CLASS)).count(b"<INSTANCENAME")
            require(fault, not must_succeed or names == self.names, f"{names} ports where {self.names} were before")
            result = fleets.flash(other, next(self.images), ANSWER_SECONDS)
            require(fault, not must_succeed or result == 0, f"a later update ended with {result}")
        except (OSError, support.NoAnswer) as error:
            require(fault, not isinstance(error, TimeoutError) and not must_succeed, f"no answer: {error}")
        require(fault, not (found := fleets.damage(other)), f"{found}")
        require(fault, other.is_running(), f"it ended, status {other.process.poll()}: {other.errors()[-500:]}")
        if must_succeed:
            self.await_indication(other, fault)

    def change_link(self, other, fault):
        changed = fleets.set_link(other, next(self.states))
        _, words = changed.communicate(timeout=ANSWER_SECONDS)
        require(fault, changed.returncode == 0, f"the fleet cannot be changed: {words}")

    def await_indication(self, other, fault):
        """A change that fell victim to a fault takes the next one along, which only undoes it: so one more may be due."""
        taken, deadline = self.listener.taken, time.monotonic() + DELIVERY_SECONDS
        while self.listener.taken == taken:
            require(fault, time.monotonic() < deadline, "no indication of a later change comes")
            self.change_link(other, fault)
            until = time.monotonic() + CHANGE_SECONDS
            while self.listener.taken == taken and time.monotonic() < until:
                time.sleep(0.02)
