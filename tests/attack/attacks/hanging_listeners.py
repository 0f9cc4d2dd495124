import contextlib
import itertools
import socket
import subprocess

import subscriptions
from attack import Attack, Limits

LISTENERS = 290


class HangingListeners(Attack):
    """A user subscribes listeners that take connections and never answer, hundreds of them, and a link goes up and
    down."""

    users = True
    seconds = 5.0
    limits = Limits(threads=48, descriptors=400)

    def prepare(self, server):
        settings = server.folder / "meroltcna.properties"
        settings.write_text(settings.read_text().replace("PollIntervalSeconds=0", "PollIntervalSeconds=1"))
        self.deaf = socket.create_server(("127.0.0.1", 0), backlog=1024)

    def attack(self, server, stopping):
        port = self.deaf.getsockname()[1]
        wanted = subscriptions.make_filter(server)
        with contextlib.suppress(subscriptions.Refused):  # there is a limit for each user
            for number in range(LISTENERS):
                if stopping.is_set():
                    return
                subscriptions.subscribe(server, wanted, str(number), f"http://127.0.0.1:{port}/{number}")
        for state in itertools.cycle(("down", "up")):
            if stopping.is_set():
                return
            set_link = [server.cimhost, "fleet", "set-link", "MC1020R4K00317", "1", state, server.fleet]
            subprocess.run(set_link, check=True, capture_output=True)
            stopping.wait(1.0)
