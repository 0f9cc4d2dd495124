import fcntl
import os
import random
import time

import fleets
import support
from attack import Attack, Limits

ANYBODY = ("--anonymous-writes",)


def flash_until(server, stopping, expected, slowest):
    """Updates a card again and again; every update is to end with `expected`, in at most so many seconds."""
    image = fleets.make_image(server)
    while not stopping.is_set():
        begin = time.monotonic()
        result = fleets.flash(server, image)
        took = time.monotonic() - begin
        if result != expected or took > slowest:
            raise AssertionError(f"an update ended with {result} after {took:.1f} s")
        time.sleep(0.1)


class HeldFolder(Attack):
    """A user who can read the fleet's folder locks it and the fleet, while a card is updated."""

    serve_options = ANYBODY
    limits = Limits(p99_allowance=0.5)  # an update is written to the disk under the provider's locks

    def attack(self, server, stopping):
        held = [os.open(path, os.O_RDONLY) for path in (server.folder, server.fleet)]
        for descriptor in held:
            fcntl.flock(descriptor, fcntl.LOCK_EX)
        flash_until(server, stopping, expected=0, slowest=4.0)

    def problems(self, server):
        return fleets.damage(server) + fleets.leftovers(server)


class HeldLock(Attack):
    """A writer of the fleet's owner holds the lock and never ends: updates give up and say so."""

    serve_options = ANYBODY
    waits = True
    seconds = fleets.WRITER_SECONDS + 1.5
    idle_clients = 0
    limits = Limits(p99_allowance=fleets.WRITER_SECONDS + 2)  # readers wait with an update

    def attack(self, server, stopping):
        with open(f"{server.fleet}.lock", "w") as lock:
            os.chmod(lock.name, 0o600)
            fcntl.flock(lock, fcntl.LOCK_EX)
            flash_until(server, stopping, expected=2, slowest=fleets.WRITER_SECONDS + 5)

    def problems(self, server):
        told = "somebody else is changing it" in server.errors()
        return fleets.damage(server) + ([] if told else ["nobody is told why an update failed"])


class FifosAndLinks(Attack):
    """FIFOs, links and folders in place of log, settings, lock file and unfinished fleet."""

    serve_options = ANYBODY
    limits = Limits(p99_allowance=0.5)

    def prepare(self, server):
        for name in ("Merolt_CNA_Provider.log", "Merolt_CNA_Provider_prev.log", "meroltcna.properties"):
            (server.folder / name).unlink(missing_ok=True)
            os.mkfifo(server.folder / name)

    def attack(self, server, stopping):
        image = fleets.make_image(server)
        lock, unfinished = (server.folder / f"fleet.json.{end}" for end in ("lock", "unfinished"))
        while not stopping.is_set():
            for make in (os.mkfifo, lambda path: path.symlink_to("/dev/zero"), os.mkdir):
                lock.unlink(missing_ok=True)
                make(lock)
                self.expect(server, image, 2)
                lock.rmdir() if lock.is_dir() else lock.unlink()
            for make in (os.mkfifo, lambda path: path.symlink_to("/dev/zero")):
                make(unfinished)
                self.expect(server, image, 0)

    @staticmethod
    def expect(server, image, result):
        found = fleets.flash(server, image)
        if found != result:
            raise AssertionError(f"an update ended with {found} in place of {result}")

    def problems(self, server):
        return fleets.damage(server)


class KilledWriters(Attack):
    """Operators' commands that are killed while they write the fleet."""

    serve_options = ANYBODY
    limits = Limits(p99_allowance=0.5)

    def attack(self, server, stopping):
        chance = random.Random(13)
        while not stopping.is_set():
            writer = fleets.set_link(server, chance.choice(("up", "down")))
            time.sleep(chance.uniform(0, 0.03))
            writer.kill()
            writer.communicate()
            if problems := fleets.damage(server):
                raise AssertionError(problems)

    def problems(self, server):
        writer = fleets.set_link(server, "up")
        errors = writer.communicate()[1].decode()
        failed = [f"the next change failed: {errors}"] if writer.returncode != 0 else []
        return failed + fleets.damage(server) + fleets.leftovers(server)


class HugeFleets(Attack):
    """The fleet becomes 500,000 empty cards, a card of 160,000 ports, or 150,000 keys, in turn."""

    limits = Limits(p99_allowance=1.0)  # three readings of megabytes a second, on the processors of the clients

    def attack(self, server, stopping):
        keys = b",".join(b'"%d":0' % number for number in range(150000))
        texts = [
            b'{"cards":[' + b",".join([b"{}"] * 500000) + b"]}",
            b'{"cards":[{"ports":[' + b",".join([b"{}"] * 160000) + b',{"unknown":1}]}]}',
            b"{" + keys + b"}",
        ]
        fresh = server.folder / "fresh"
        turn = 0
        while not stopping.is_set():
            fresh.write_bytes(texts[turn % len(texts)])
            fresh.rename(server.fleet)
            turn += 1
            time.sleep(0.3)
        fresh.write_bytes(texts[turn % len(texts)])
        fresh.rename(server.fleet)  # the stop comes while this is read

    def problems(self, server):
        status, answer = support.ask(server, support.enumerate_names("Merolt_FCHBA_FCPort"))
        kept = status == 200 and b"INSTANCENAME" in answer
        return [] if kept else ["the last good fleet is not in force any more"]
