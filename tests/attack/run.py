#!/usr/bin/env python3
"""Runs attacks against `cimhost serve` and prints, one line for each, what well-behaved clients lost meanwhile."""

import argparse
import importlib.util
import inspect
import multiprocessing
import pathlib
import sys
import time
import traceback

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE))

from attack import Attack  # noqa: E402
from probe import Probe  # noqa: E402
from server import CannotStart, Server  # noqa: E402

BEFORE_SECONDS = 1.0
ENDING_SECONDS = 15.0

HEADINGS = (
    f"{'':34} {'before, ms':>20}   {'during, ms':>22}   {'re-':>7} {'idle':>5} {'memory':>7} {'':>7} {'descrip-':>8} {'stop':>5}",
    f"{'attack':34} {'median':>6} {'p99':>6} {'worst':>6}   {'median':>6} {'p99':>7} {'worst':>7}   "
    f"{'fused':>7} {'lost':>5} {'MiB':>7} {'threads':>7} {'tors':>8} {'s':>5}",
)


def found_attacks():
    """{name: class} of every class in attacks/ that is an Attack."""
    found = {}
    for file in sorted((HERE / "attacks").glob("*.py")):
        specification = importlib.util.spec_from_file_location(f"attacks.{file.stem}", file)
        module = importlib.util.module_from_spec(specification)
        specification.loader.exec_module(module)
        own = [
            value for value in vars(module).values()
            if inspect.isclass(value) and issubclass(value, Attack) and value.__module__ == module.__name__
            and value.attack is not Attack.attack
        ]  # fmt: skip
        for value in own:
            found[file.stem if len(own) == 1 else f"{file.stem}.{value.__name__}"] = value
    return found


class Row:
    """What one attack did."""

    def __init__(self, name):
        self.name = name
        self.problems = []

    def cells(self):
        def times(measured, width):
            return " ".join(
                f"{value * 1000:{width}.{0 if value >= 1 else 1}f}"
                for value in (measured.median, measured.p99, measured.worst)
            )

        asked = len(self.during.times) + len(self.during.refusals)
        return (
            f"{self.name:34} {times(self.before, 6)}   {times(self.during, 7)[1:]}   "
            f"{f'{len(self.during.refusals)}/{asked}':>7} {len(self.during.lost_idle):5} {self.memory:7.0f} "
            f"{self.threads:7} {self.descriptors:8} {self.stop:5.1f}"
        )


def attack_until(attack, server, stopping):
    try:
        attack.attack(server, stopping)
    except KeyboardInterrupt:
        pass
    except Exception:
        traceback.print_exc()
        sys.exit(1)


def measure(attack, server, row, seconds):
    """Before, during, and the state of the server afterwards."""
    probe = Probe(server, attack.idle_clients)
    row.before = probe.measure(BEFORE_SECONDS)
    stopping = multiprocessing.Event()
    attackers = [
        multiprocessing.Process(target=attack_until, args=(attack, server, stopping), daemon=True)
        for _ in range(attack.processes)
    ]
    for attacker in attackers:
        attacker.start()
    row.during = probe.measure(seconds)
    probe.ask_all_kept(row.during)
    row.problems += attack.problems(server)
    stopping.set()
    for attacker in attackers:
        attacker.join(ENDING_SECONDS)
        if attacker.is_alive():
            attacker.kill()
            row.problems.append("the attack did not end when it was told to")
        elif attacker.exitcode != 0:
            row.problems.append("the attack itself failed, see above")
    probe.close()


def judge(attack, row, judges_times):
    """What is over the attack's limits."""
    limits = attack.limits

    def at_most(what, value, limit):
        if value > limit:
            row.problems.append(f"{what}: {value:.4g}, at most {limit:.4g}")

    if row.before.refusals or not row.before.times:
        row.problems.append(f"refused before the attack: {row.before.refusals[:1]}")
    asked = len(row.during.times) + len(row.during.refusals)
    if len(row.during.refusals) > limits.refusals + limits.refused_share * asked:
        row.problems.append(f"{len(row.during.refusals)} new clients refused, the first: {row.during.refusals[0]}")
    if len(row.during.lost_idle) > limits.lost_idle:
        row.problems.append(f"{len(row.during.lost_idle)} kept connections lost: {row.during.lost_idle[0]}")
    if judges_times:
        allowed = max(row.before.p99 * limits.p99_factor, row.before.p99 + limits.p99_allowance)
        at_most("99th percentile in seconds", row.during.p99, allowed)
    at_most("resident MiB", row.memory, limits.memory_mib)
    at_most("threads", row.threads, limits.threads)
    at_most("descriptors", row.descriptors, limits.descriptors)
    at_most("seconds to stop", row.stop, limits.stop_seconds)


def run(name, attack, arguments):
    """True if the attack did not win. Prints what it did."""
    row = Row(name)
    measured = f"{name:34} not measured"
    server = Server(arguments.cimhost, arguments.fleet, attack.tls, attack.users)
    try:
        server.options += attack.serve_options
        server.environment.update(attack.environment)
        attack.prepare(server)
        server.start()
        measure(attack, server, row, attack.long_seconds if arguments.long else attack.seconds)
        row.memory, row.threads = server.memory_mib(), server.most["threads"]
        row.descriptors = server.most["descriptors"]
        if not server.is_running():
            row.problems.append(f"the server ended by itself, status {server.process.returncode}")
        row.stop = server.stop(3 * attack.limits.stop_seconds)
        if server.process.returncode not in attack.statuses:
            row.problems.append(f"status {server.process.returncode} after SIGTERM")
        judge(attack, row, not arguments.no_times)
        measured = row.cells()
    except (CannotStart, OSError) as error:
        row.problems.append(f"{type(error).__name__}: {error}")
    finally:
        server.remove()
    print(*[measured, *(f"    FAILED {problem}" for problem in row.problems)], sep="\n", flush=True)
    return not row.problems


def run_apart(name, attack, arguments):
    sys.exit(0 if run(name, attack, arguments) else 1)


def run_all(chosen, arguments):
    """How many attacks won. Those that wait go beside each other, each of the others alone."""
    won = sum(not run(*attack, arguments) for attack in chosen if not attack[1].waits)
    waiting = [
        multiprocessing.Process(target=run_apart, args=(*attack, arguments)) for attack in chosen if attack[1].waits
    ]
    for process in waiting:
        process.start()
    for process in waiting:
        process.join()
    return won + sum(process.exitcode != 0 for process in waiting)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cimhost", required=True, help="the program")
    parser.add_argument("--fleet", default=HERE.parents[1] / "tavik/fleets/demo.json", help="copied for each attack")
    parser.add_argument("--long", action="store_true", help="each attack for a quarter of a minute, ten minutes for all")
    parser.add_argument("--no-times", action="store_true", help="do not judge how long answers took")
    parser.add_argument("--list", action="store_true", help="say what there is, and end")
    parser.add_argument("attack", nargs="*", help="all of them if left out")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    arguments.cimhost = pathlib.Path(arguments.cimhost).resolve()
    attacks = found_attacks()
    if arguments.list:
        for name, attack in attacks.items():
            print(f"{name:34} {(attack.__doc__ or '').strip().splitlines()[0]}")
        return 0
    unknown = [name for name in arguments.attack if name not in attacks]
    if unknown:
        print(f"no such attack: {', '.join(unknown)}", file=sys.stderr)
        return 2
    multiprocessing.set_start_method("fork")
    print(*HEADINGS, sep="\n", flush=True)
    chosen = arguments.attack or list(attacks)
    begin = time.monotonic()
    won = run_all([(name, attacks[name]()) for name in chosen], arguments)
    print(f"{len(chosen) - won} passed, {won} failed in {time.monotonic() - begin:.0f} s")
    return 1 if won else 0


if __name__ == "__main__":
    sys.exit(main())
