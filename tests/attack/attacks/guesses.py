import contextlib
import time

from attack import Attack
from support import NoAnswer, authorization, connect, enumerate_names, post, read_answer


class Guesses(Attack):
    """Wrong passwords, for a user that exists and for many that do not, as fast as they are answered."""

    users = True
    processes = 2

    def attack(self, server, stopping):
        number = 0
        while not stopping.is_set():
            number += 1
            user = "anna" if number % 2 else f"nobody{number}"
            with contextlib.suppress(OSError, NoAnswer), connect(server) as connection:
                connection.sendall(post(server, enumerate_names("CIM_Nothing"), authorization(user, str(number))))
                read_answer(connection)
            time.sleep(0.001)


class Unread(Attack):
    """A wrong password every millisecond, from a client that does not wait for the answer."""

    users = True

    def attack(self, server, stopping):
        held = []
        while not stopping.is_set():
            with contextlib.suppress(OSError):
                connection = connect(server)
                connection.sendall(post(server, "<x/>", authorization("anna", str(time.monotonic()))))
                held.append(connection)
            if len(held) > 500:
                held.pop(0).close()
            time.sleep(0.001)
