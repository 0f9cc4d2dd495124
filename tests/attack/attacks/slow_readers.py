import socket

from attack import Attack, Limits
from support import Crowd, connect, enumerate_names, post


class SlowReaders(Attack):
    """70 clients that ask for everything again and again and take no answer."""

    # Each of them is a client that asked a whole request: for a moment nothing tells it from a well-behaved one of the
    # same address, so some others lose their turn, but the server is not theirs alone.
    limits = Limits(refused_share=0.25, lost_idle=1000, p99_allowance=2.0)

    def attack(self, server, stopping):
        request = post(server, enumerate_names("CIM_ManagedElement")) * 20

        def begin():
            connection = connect(server)
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            connection.sendall(request)
            return connection

        # Nothing is read here: a connection that the server has closed is found by sending.
        Crowd(70, begin, lambda connection: connection.send(b"\r\n")).run(stopping)
