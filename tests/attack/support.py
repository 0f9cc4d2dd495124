"""Sockets and messages for attacks and for the probe: nothing here checks anything."""

import base64
import contextlib
import socket
import ssl
import time

USER = "anna"
PASSWORD = "secret"
USERS_FILE = "anna:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n"

NAMESPACE = ("root", "merolt_cmpi")
PROBE_CLASS = "Merolt_FCHBA_SoftwareInstallationService"


def connect(server, timeout=10.0, source=None):
    """A TCP connection; `source` is the address it comes from."""
    return socket.create_connection((server.address, server.port), timeout, (source, 0) if source else None)


def connect_as_client(server, timeout=10.0):
    """A connection as a well-behaved client makes it: with TLS where the server speaks it."""
    connection = connect(server, timeout)
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    if not server.tls:
        return connection
    context = ssl.create_default_context()
    context.check_hostname = False
    context.verify_mode = ssl.CERT_NONE
    return context.wrap_socket(connection)


def authorization(user=USER, password=PASSWORD):
    return "Authorization: Basic " + base64.b64encode(f"{user}:{password}".encode()).decode() + "\r\n"


def header(server, length, fields=""):
    """The header of a CIM operation of `length` bytes. Further `fields` each end in CRLF."""
    known = authorization() if server.users and "Authorization" not in fields else ""
    return (
        f"POST /cimom HTTP/1.1\r\nHost: {server.address}:{server.port}\r\nContent-Type: application/xml\r\n"
        f"CIMOperation: MethodCall\r\n{known}{fields}Content-Length: {length}\r\n\r\n"
    ).encode()


def post(server, body, fields=""):
    """A whole request with this body, a text or bytes."""
    content = body.encode() if isinstance(body, str) else body
    return header(server, len(content), fields) + content


def message(call):
    """A CIM-XML message around an IMETHODCALL or METHODCALL."""
    return (
        '<?xml version="1.0"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0">'
        f"<SIMPLEREQ>{call}</SIMPLEREQ></MESSAGE></CIM>"
    )


def namespace_path():
    parts = "".join(f'<NAMESPACE NAME="{part}"/>' for part in NAMESPACE)
    return f"<LOCALNAMESPACEPATH>{parts}</LOCALNAMESPACEPATH>"


def enumerate_names(class_name):
    """EnumerateInstanceNames of a class."""
    return message(
        f'<IMETHODCALL NAME="EnumerateInstanceNames">{namespace_path()}<IPARAMVALUE NAME="ClassName">'
        f'<CLASSNAME NAME="{class_name}"/></IPARAMVALUE></IMETHODCALL>'
    )


def call_method(class_name, method, parameters=""):
    """A method call at a class; `parameters` are PARAMVALUE elements."""
    return message(
        f'<METHODCALL NAME="{method}"><LOCALCLASSPATH>{namespace_path()}<CLASSNAME NAME="{class_name}"/>'
        f"</LOCALCLASSPATH>{parameters}</METHODCALL>"
    )


class NoAnswer(Exception):
    """The server closed, or sent what is no answer."""


def read_answer(connection):
    """(status, body) of one answer. Raises NoAnswer or OSError."""
    received = b""
    while b"\r\n\r\n" not in received:
        received += _some(connection)
    head, body = received.split(b"\r\n\r\n", 1)
    lines = head.decode("latin-1").split("\r\n")
    fields = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in lines[1:])}
    length = int(fields.get("content-length", "0"))
    while len(body) < length:
        body += _some(connection)
    return int(lines[0].split()[1]), body


def _some(connection):
    received = connection.recv(65536)
    if not received:
        raise NoAnswer("closed")
    return received


def ask(server, body, timeout=60.0, fields=""):
    """(status, body) of one request on a connection of its own."""
    with connect_as_client(server, timeout) as connection:
        connection.sendall(post(server, body, fields))
        return read_answer(connection)


def is_open(connection):
    """False once the server has closed. Drops what the server sent."""
    try:
        connection.setblocking(False)
        while connection.recv(65536):
            pass
        return False
    except (BlockingIOError, ssl.SSLWantReadError):
        return True
    except OSError:
        return False


def stay(connection):
    """Drops what the server sent. Raises OSError once it has closed."""
    if not is_open(connection):
        raise ConnectionError("closed")


class Crowd:
    """Connections that are held open, each made anew when it is gone: `make` returns a connection or raises OSError, and
    `each` is called with every one of them every `pause` seconds and raises OSError where it is gone."""

    def __init__(self, size, make, each=stay, pause=0.05):
        self.size, self.make, self.each, self.pause = size, make, each, pause
        self.members = []

    def run(self, stopping):
        while not stopping.is_set():
            self.members = [member for member in self.members if self._serves(member)]
            while len(self.members) < self.size and not stopping.is_set():
                try:
                    self.members.append(self.make())
                except OSError:
                    break
            time.sleep(self.pause)
        for member in self.members:
            with contextlib.suppress(OSError):
                member.close()

    def _serves(self, member):
        try:
            self.each(member)
            return True
        except OSError:
            member.close()
            return False


def flood(make, stopping, keep=900, pause=0.001):
    """Makes a new connection every `pause` seconds and keeps the last `keep` of them open."""
    held = []
    while not stopping.is_set():
        with contextlib.suppress(OSError):
            held.append(make())
        if len(held) > keep:
            held.pop(0).close()
        time.sleep(pause)
    for connection in held:
        connection.close()
