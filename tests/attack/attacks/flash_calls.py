import contextlib
import os
import subprocess
import threading
import time

import support
from attack import Attack, Limits

SERVICE = "Merolt_FCHBA_SoftwareInstallationService"
LEAVE_SECONDS = 0.05
HOLD_SECONDS = 25  # at most

# The wait of an update under the provider's locks, which every client shares, is the provider's word to its clients.
UPDATE = Limits(p99_allowance=9.0, p99_factor=1.0)


class FlashCalls(Attack):
    """Base of attacks by a user who may update cards."""

    users = True
    limits = UPDATE

    def prepare(self, server):
        self.image = server.folder / "image.bin"
        make = [server.cimhost, "image", "make", self.image, "--model", "MC1020", "--image-version", "2.2.3", "--date",
                "2013-04-30", "--firmware", "8.1.0"]  # fmt: skip
        subprocess.run(make, check=True, capture_output=True)

    def update(self, server):
        """A storage card's update, as a request."""
        target = (
            '<PARAMVALUE NAME="Target" PARAMTYPE="reference"><VALUE.REFERENCE>'
            '<INSTANCENAME CLASSNAME="Merolt_FCHBA_PortController"><KEYBINDING NAME="DeviceID">'
            '<KEYVALUE VALUETYPE="string">MC1020R4K00317</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PARAMVALUE>'
        )
        uri = f'<PARAMVALUE NAME="URI" PARAMTYPE="string"><VALUE>FILE://{self.image}</VALUE></PARAMVALUE>'
        options = '<PARAMVALUE NAME="InstallOptions" PARAMTYPE="uint16"/>'
        return support.post(server, support.call_method(SERVICE, "InstallFromURI", uri + target + options))

    def send(self, server):
        """A connection whose update is under way, or nothing if the server would not have it."""
        with contextlib.suppress(OSError):
            connection = support.connect_as_client(server)
            connection.sendall(self.update(server))
            return connection
        return None


class AbandonedUpdates(FlashCalls):
    """Flash updates whose callers leave at once, eight at a time."""

    waits = True
    seconds = 9.0  # an update takes five, so a second one would have been written

    def prepare(self, server):
        super().prepare(server)
        self.rewrites = 0
        self.begin = time.monotonic()
        threading.Thread(target=self._count, args=(server.fleet,), daemon=True).start()

    def _count(self, fleet):
        last = fleet.stat().st_ino
        while fleet.exists():
            with contextlib.suppress(OSError):
                now = fleet.stat().st_ino
                self.rewrites += now != last
                last = now
            time.sleep(0.05)

    def attack(self, server, stopping):
        connections = [self.send(server) for _ in range(8)]
        time.sleep(LEAVE_SECONDS)
        for connection in connections:
            if connection:
                connection.close()
        stopping.wait()

    def problems(self, server):
        return [f"the fleet was written {self.rewrites} times, although only one update can have begun"] * (
            self.rewrites > 1
        )


class QueuedUpdatesAtTheEnd(FlashCalls):
    """Forty flash updates, and SIGTERM while their callers still wait."""

    waits = True

    def attack(self, server, stopping):
        connections = [self.send(server) for _ in range(40)]
        stopping.wait()
        if os.fork() == 0:  # holds the connections until the server has ended
            deadline = time.monotonic() + HOLD_SECONDS
            while server.exists() and time.monotonic() < deadline:
                time.sleep(0.05)
            os._exit(0 if connections else 1)
