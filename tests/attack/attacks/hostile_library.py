import pathlib
import time

from attack import Attack
from support import ask, enumerate_names

CLASSES = (
    "Merolt_FCHBA_FCPort",
    "Merolt_FCHBA_SCSIProtocolEndpointTarget",
    "Merolt_FCHBA_StorageExtent",
    "Merolt_Adapter_PhysicalPort",
    "Merolt_FCHBA_SoftwareIdentity",
    "Merolt_NIC_EthernetPort2",
    "Merolt_FCHBA_ComputerSystemStorageExtent",
)
LARGEST_ANSWER = 1 << 20


class OverHostileLibrary(Attack):
    """Not run by itself: every request reads a management library that breaks its tree (hostile_library/)."""

    scenario = ""

    def prepare(self, server):
        libraries = pathlib.Path(server.cimhost).parents[1] / "lib" / "hostile"
        if not (libraries / "libtavik.so.1").exists():
            raise OSError(f"{libraries}/libtavik.so.1 is not built")
        server.environment.update(LD_LIBRARY_PATH=str(libraries), TAVIK_HOSTILE=self.scenario)

    def requests(self, server, stopping):
        while not stopping.is_set():
            for name in CLASSES:
                ask(server, enumerate_names(name))
            time.sleep(0.01)

    def problems(self, server):
        found = []
        for name in CLASSES:
            status, body = ask(server, enumerate_names(name))
            if status != 200 or len(body) > LARGEST_ANSWER:
                found.append(f"{name}: status {status}, {len(body)} bytes")
        return found


class Circles(OverHostileLibrary):
    """A management library whose chains all come back to themselves."""

    scenario = "all-circles"

    def attack(self, server, stopping):
        self.requests(server, stopping)


class WildCounts(OverHostileLibrary):
    """A management library that counts four thousand million targets."""

    scenario = "wild-target-counts"

    def attack(self, server, stopping):
        self.requests(server, stopping)


class SharedParts(OverHostileLibrary):
    """A management library whose cards all have the same parts."""

    scenario = "shared-parts"

    def attack(self, server, stopping):
        self.requests(server, stopping)
