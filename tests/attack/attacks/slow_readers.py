import socket

from attack import Attack, Limits
from support import Crowd, connect, enumerate_names, post


class SlowReaders(Attack):
    """70 clients that ask for everything again and again and take no answer."""

    # Each of them is a client that asked a whole request: until it is late with the answer nothing tells it from a
    # well-behaved one of the same address. So others wait for their turn, but idle ones stay and nobody is refused.
    limits = Limits(p99_allowance=2.0)

    def attack(self, server, stopping):
        request = post(server, enumerate_names("CIM_ManagedElement")) * 20

        def begin():
            connection = connect(server)
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            connection.sendall(request)
            return connection

        # Nothing is read here: a connection that the server has closed is found by sending.
        Crowd(70, begin, lambda connection: connection.send(b"\r\n")).run(stopping)
