"""What an attack is, and what its victims may lose."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Limits:
    """What well-behaved clients may lose while an attack runs, and what the server may take. Over it, the attack won."""

    refusals: int = 0  # new connections that got no answer, or another one than 200
    refused_share: float = 0.0  # so many of all new connections besides, where an attack is nothing but many clients
    lost_idle: int = 0  # clients that kept a connection and found it closed
    p99_factor: float = 2.0  # the 99th percentile on new connections, against the one before the attack
    p99_allowance: float = 0.1  # seconds: below the one before plus this much nothing is held against the server
    memory_mib: int = 256  # resident, at most
    threads: int = 64
    descriptors: int = 512
    stop_seconds: float = 10.0  # from SIGTERM to the end


class Attack:
    """One attack. A file in attacks/ has a class like this, and the runner finds it; nothing has to be registered.

    The first line of the class's description tells what is done. The name is that of the file, with the class's behind
    it where the file has more than one.
    """

    seconds = 1.5
    long_seconds = 16.0
    serve_options = ()  # more options of `cimhost serve`
    environment = {}  # more variables for the server
    tls = False  # the server speaks TLS
    users = False  # and wants user and password; the probe clients know them (support.USER, support.PASSWORD)
    processes = 1  # how many run attack() at the same time
    waits = False  # it and its victims wait for seconds: it runs beside others that do, and last
    idle_clients = 4  # well-behaved clients that keep a connection and ask now and then
    limits = Limits()
    statuses = (0,)  # with which the server may end after SIGTERM

    def prepare(self, server):
        """Before the server starts: files in server.folder (its fleet is server.fleet), additions to server.options
        and server.environment."""

    def attack(self, server, stopping):
        """Attacks until the event `stopping` is set, in a process of its own. Must look at it at least every second."""
        raise NotImplementedError

    def problems(self, server):
        """After the attack, with the server still there: texts that say what else is wrong, or none."""
        return []
