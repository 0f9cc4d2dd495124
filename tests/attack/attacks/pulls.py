import contextlib
import random
import re
import threading
import time

from attack import Attack
from support import NoAnswer, ask, connect_as_client, message, namespace_path, post, read_answer

CLASS = "Merolt_FCHBA_FCPort"
TOO_MANY = 27  # CIM_ERR_SERVER_LIMITS_EXCEEDED
NO_CONTEXT = 21  # CIM_ERR_INVALID_ENUMERATION_CONTEXT
A_THOUSAND = 1000


def call(method, parameters):
    given = "".join(f'<IPARAMVALUE NAME="{name}">{value}</IPARAMVALUE>' for name, value in parameters.items())
    return message(f'<IMETHODCALL NAME="{method}">{namespace_path()}{given}</IMETHODCALL>')


def opening(timeout=300):
    return call("OpenEnumerateInstances", {
        "ClassName": f'<CLASSNAME NAME="{CLASS}"/>', "OperationTimeout": f"<VALUE>{timeout}</VALUE>"})


def pulling(context, count=1):
    return call("PullInstancesWithPath", {
        "EnumerationContext": f"<VALUE>{context}</VALUE>", "MaxObjectCount": f"<VALUE>{count}</VALUE>"})


def closing(context):
    return call("CloseEnumeration", {"EnumerationContext": f"<VALUE>{context}</VALUE>"})


def code_of(answer):
    found = re.search(rb'<ERROR CODE="(\d+)"', answer)
    return int(found[1]) if found else 0


def context_of(answer):
    found = re.search(rb'<PARAMVALUE NAME="EnumerationContext"[^>]*><VALUE>([0-9a-f]{32})<', answer)
    if not found:
        raise AssertionError(f"no context: {answer[:500]}")
    return found[1].decode()


class Client:
    """Asks on one connection, and makes it anew when it is gone."""

    def __init__(self, server):
        self.server, self.connection = server, None

    def ask(self, body):
        """The answer, or None where there is none."""
        try:
            if not self.connection:
                self.connection = connect_as_client(self.server)
            self.connection.sendall(post(self.server, body))
            return read_answer(self.connection)[1]
        except (OSError, NoAnswer):
            self.close()
            return None

    def close(self):
        if self.connection:
            with contextlib.suppress(OSError):
                self.connection.close()
        self.connection = None


class Opened(Attack):
    """Enumerations are opened without end, and none is read or closed; a thousand and more are open."""

    seconds = 5.0

    def attack(self, server, stopping):
        client = Client(server)
        while not stopping.is_set():
            answer = client.ask(opening())
            if answer is not None and code_of(answer) not in (0, TOO_MANY):
                raise AssertionError(answer[:500])
        client.close()

    def problems(self, server):
        """As many as one user may have are open by now, or can be; a plain enumeration never notices."""
        client = Client(server)
        found = []
        for _ in range(2 * A_THOUSAND):
            answer = client.ask(opening())
            if answer is not None and code_of(answer) == TOO_MANY:
                break
        else:
            found.append("no limit for open enumerations")
        answer = client.ask(call("EnumerateInstances", {"ClassName": f'<CLASSNAME NAME="{CLASS}"/>'}))
        if not answer or b"<INSTANCE " not in answer:
            found.append("a plain enumeration is refused while many are open")
        client.close()
        return found


class Forgotten(Attack):
    """A thousand enumerations are opened and forgotten; what they held goes back to the system when they are over."""

    seconds = 3.0
    waits = True
    timeout = 6
    patience = 60.0
    more_mib = 16  # than before may stay with the server

    def attack(self, server, stopping):
        (server.folder / "before").write_text(str(server.status("VmRSS")))
        client = Client(server)
        opened = 0
        while opened < A_THOUSAND and not stopping.is_set():
            answer = client.ask(opening(self.timeout))
            opened += answer is not None and code_of(answer) == 0
        client.close()
        (server.folder / "opened").touch()
        stopping.wait()

    def problems(self, server):
        deadline = time.monotonic() + self.patience
        while not (server.folder / "opened").exists() and time.monotonic() < deadline:
            time.sleep(0.1)
        most = int((server.folder / "before").read_text()) + self.more_mib * 1024
        while server.status("VmRSS") > most:
            if time.monotonic() > deadline:
                return [f"{server.status('VmRSS')} KiB are resident, not {most}"]
            time.sleep(0.1)
        return []


class Guessed(Attack):
    """Contexts of somebody else's enumeration are guessed: at random, and close to the true one."""

    processes = 2

    def attack(self, server, stopping):
        client = Client(server)
        context = context_of(ask(server, opening())[1])
        while not stopping.is_set():
            guess = list(context if random.random() < 0.5 else f"{random.getrandbits(128):032x}")
            guess[random.randrange(32)] = random.choice("0123456789abcdefg")
            guess = "".join(guess)
            if guess == context:
                continue
            for body in (pulling(guess), closing(guess)):
                answer = client.ask(body)
                if answer is not None and code_of(answer) != NO_CONTEXT:
                    raise AssertionError(f"a guess was answered: {answer[:500]}")
        if code_of(ask(server, pulling(context))[1]):
            raise AssertionError("the enumeration was lost to guesses")
        client.close()


class AtOnce(Attack):
    """Eight clients pull from one enumeration at the same moment; just one of them may be answered."""

    clients = 8

    def attack(self, server, stopping):
        clients = [Client(server) for _ in range(self.clients)]
        while not stopping.is_set():
            body = pulling(context_of(ask(server, opening())[1]), 0)
            answers = []
            asking = [threading.Thread(target=lambda client=client: answers.append(client.ask(body)))
                      for client in clients]
            for thread in asking:
                thread.start()
            for thread in asking:
                thread.join()
            given = [answer for answer in answers if answer is not None]
            if sum(code_of(answer) == 0 for answer in given) > 1:
                raise AssertionError("two pulls with one context were answered")
            if any(code_of(answer) not in (0, NO_CONTEXT) for answer in given):
                raise AssertionError(f"{[code_of(answer) for answer in given]}")
            for answer in given:
                if code_of(answer) == 0:
                    ask(server, closing(context_of(answer)))
        for client in clients:
            client.close()
