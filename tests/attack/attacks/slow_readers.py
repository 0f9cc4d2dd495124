import select
import socket

from attack import Attack, Limits
from support import Crowd, connect, enumerate_names, message, namespace_path, post


def narrow(server, request):
    """A connection that has asked, and takes little of an answer into the system's buffers."""
    connection = connect(server)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    connection.sendall(request)
    return connection


class SlowReaders(Attack):
    """70 clients that ask for everything again and again and take no answer."""

    # Each of them is a client that asked a whole request: until it is late with the answer nothing tells it from a
    # well-behaved one of the same address. So others wait for their turn, but idle ones stay and nobody is refused.
    limits = Limits(p99_allowance=2.0)

    def attack(self, server, stopping):
        request = post(server, enumerate_names("CIM_ManagedElement")) * 20

        # Nothing is read here: a connection that the server has closed is found by sending.
        Crowd(70, lambda: narrow(server, request), lambda connection: connection.send(b"\r\n")).run(stopping)


class InPieces(Attack):
    """8 clients that want every instance in pieces, and take a few bytes at a time while the provider delivers."""

    def attack(self, server, stopping):
        every = message(
            f'<IMETHODCALL NAME="EnumerateInstances">{namespace_path()}<IPARAMVALUE NAME="ClassName">'
            '<CLASSNAME NAME="CIM_ManagedElement"/></IPARAMVALUE></IMETHODCALL>'
        )
        request = post(server, every, "TE: trailers\r\n")

        def take(connection):
            if select.select([connection], [], [], 0)[0] and not connection.recv(64):
                raise ConnectionError("closed")

        Crowd(8, lambda: narrow(server, request), take).run(stopping)
