from attack import Attack
from support import Crowd, connect, flood


class Silent(Attack):
    """64 connections that never say a word, and come again when they are closed."""

    def attack(self, server, stopping):
        Crowd(64, lambda: connect(server)).run(stopping)


class Flood(Attack):
    """A new connection that says nothing, every millisecond."""

    def attack(self, server, stopping):
        flood(lambda: connect(server), stopping)
