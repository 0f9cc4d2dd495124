import contextlib
import time

import support
from attack import Attack, Limits

HANGING = "Merolt_FCHBA_FCPort"
DEADLINE = 2


class HangingLibrary(Attack):
    """A call of the management library that does not come back, and a stop meanwhile."""

    serve_options = ("--deadline", str(DEADLINE))
    # Every question for objects ends with the error at its deadline: the provider has one lock for all.
    limits = Limits(p99_factor=1.0, p99_allowance=DEADLINE + 1.0)
    waits = True
    idle_clients = 2  # each waits for the deadline once more when the attack is over
    seconds = 2.0 * DEADLINE
    statuses = (3,)

    def prepare(self, server):
        library = server.cimhost.parent / "attack_hanging_library.so"
        if not library.exists():
            raise OSError(f"{library} is missing: build the target attack_hanging_library")
        self.flag = server.folder / "hang"
        server.environment.update({"LD_PRELOAD": str(library), "HANG_WHILE": str(self.flag)})

    def attack(self, server, stopping):
        self.flag.touch()
        while not stopping.is_set():
            with contextlib.suppress(OSError, support.NoAnswer):
                support.ask(server, support.enumerate_names(HANGING))
            time.sleep(0.05)

    def problems(self, server):
        """With more hanging calls than workers, declarations and the server's own objects are still there."""
        found = []
        for what, call in (
            ("a class", support.message(
                f'<IMETHODCALL NAME="GetClass">{support.namespace_path()}<IPARAMVALUE NAME="ClassName">'
                f'<CLASSNAME NAME="{HANGING}"/></IPARAMVALUE></IMETHODCALL>')),
            ("filters", support.message(
                '<IMETHODCALL NAME="EnumerateInstanceNames"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/>'
                '<NAMESPACE NAME="PG_InterOp"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName">'
                '<CLASSNAME NAME="CIM_IndicationFilter"/></IPARAMVALUE></IMETHODCALL>')),
        ):  # fmt: skip
            begin = time.monotonic()
            status, body = support.ask(server, call)
            took = time.monotonic() - begin
            if status != 200 or b"<ERROR" in body:
                found.append(f"{what}: {body[:200]}")
            if took > DEADLINE / 2:
                found.append(f"{what}: {took:.1f} s")
        begin = time.monotonic()
        status, body = support.ask(server, support.enumerate_names(HANGING))
        took = time.monotonic() - begin
        if b'<ERROR CODE="1"' not in body or f"within {DEADLINE} seconds".encode() not in body:
            found.append(f"a request of the provider: {body[:300]}")
        if not DEADLINE - 0.5 < took < DEADLINE + 3:
            found.append(f"its answer came after {took:.1f} s")
        return found
