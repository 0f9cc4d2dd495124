import contextlib
import random
import time

from attack import Attack
from support import connect

NOISE = (
    b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n",
    b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n",
    b"POST /cimom HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
    b"POST /cimom HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: gzip\r\n\r\n",
    b"POST /" + b"x" * 20000 + b" HTTP/1.1\r\n\r\n",
    bytes(random.Random(7).randrange(256) for _ in range(4000)) + b"\r\n\r\n",
)


class Noise(Attack):
    """What is no request, on a new connection each, closed at once."""

    def attack(self, server, stopping):
        number = 0
        while not stopping.is_set():
            number += 1
            with contextlib.suppress(OSError), connect(server) as connection:
                connection.sendall(NOISE[number % len(NOISE)])
            time.sleep(0.002)
