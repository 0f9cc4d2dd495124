"""Well-behaved clients that measure what they get: new connections one after the other, and a few that are kept."""

import contextlib
import dataclasses
import time

import support

ANSWER_SECONDS = 60.0  # what takes longer is no answer
PAUSE_SECONDS = 0.01
IDLE_SECONDS = 1.0  # between two requests of kept connections together


@dataclasses.dataclass
class Measured:
    times: list = dataclasses.field(default_factory=list)  # seconds of each answered request on a new connection
    refusals: list = dataclasses.field(default_factory=list)  # why not, for each other one
    lost_idle: list = dataclasses.field(default_factory=list)

    def percentile(self, share):
        if not self.times:
            return float("inf")
        ordered = sorted(self.times)
        return ordered[min(len(ordered) - 1, int(len(ordered) * share))]

    @property
    def median(self):
        return self.percentile(0.5)

    @property
    def p99(self):
        return self.percentile(0.99)

    @property
    def worst(self):
        return self.percentile(1.0)


class Probe:
    """`idle` clients keep their connections from the start on."""

    def __init__(self, server, idle):
        self.server = server
        self.question = support.enumerate_names(support.PROBE_CLASS)
        self.kept = [support.connect_as_client(server, ANSWER_SECONDS) for _ in range(idle)]
        for connection in self.kept:
            self._ask_on(connection)

    def measure(self, seconds):
        """Asks for that long, and at least once."""
        measured = Measured()
        begin = time.monotonic()
        next_idle = begin + IDLE_SECONDS
        while True:
            self._ask_anew(measured)
            if time.monotonic() >= next_idle:
                self._ask_kept(measured)
                next_idle = time.monotonic() + IDLE_SECONDS
            if time.monotonic() - begin >= seconds:
                return measured
            time.sleep(PAUSE_SECONDS)

    def ask_all_kept(self, measured):
        for _ in range(len(self.kept)):
            self._ask_kept(measured)

    def close(self):
        for connection in self.kept:
            connection.close()

    def _ask_on(self, connection):
        connection.sendall(support.post(self.server, self.question))
        status, _ = support.read_answer(connection)
        if status != 200:
            raise support.NoAnswer(f"status {status}")

    def _ask_anew(self, measured):
        begin = time.monotonic()
        try:
            with support.connect_as_client(self.server, ANSWER_SECONDS) as connection:
                self._ask_on(connection)
            measured.times.append(time.monotonic() - begin)
        except (OSError, support.NoAnswer) as error:
            measured.refusals.append(str(error))

    def _ask_kept(self, measured):
        if not self.kept:
            return
        connection = self.kept.pop(0)
        try:
            self._ask_on(connection)
        except (OSError, support.NoAnswer) as error:
            measured.lost_idle.append(str(error))
            connection.close()
            with contextlib.suppress(OSError, support.NoAnswer):
                connection = support.connect_as_client(self.server, ANSWER_SECONDS)
                self._ask_on(connection)
        self.kept.append(connection)
