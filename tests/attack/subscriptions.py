"""Subscriptions of listeners in the interop namespace, and a listener."""

import contextlib
import http.server
import threading

import support

INTEROP = '<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="PG_InterOp"/></LOCALNAMESPACEPATH>'
TAKEN = (
    '<?xml version="1.0"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEEXPRSP>'
    '<EXPMETHODRESPONSE NAME="ExportIndication"><IRETURNVALUE></IRETURNVALUE></EXPMETHODRESPONSE></SIMPLEEXPRSP>'
    "</MESSAGE></CIM>"
).encode()


class Refused(Exception):
    """The server made no instance."""


def _text(name, value):
    return f'<PROPERTY NAME="{name}" TYPE="string"><VALUE>{value}</VALUE></PROPERTY>'


def _create(server, class_name, properties):
    """CreateInstance in the interop namespace; the path of what was made."""
    status, body = support.ask(server, support.message(
        f'<IMETHODCALL NAME="CreateInstance">{INTEROP}<IPARAMVALUE NAME="NewInstance"><INSTANCE CLASSNAME="{class_name}">'
        f"{properties}</INSTANCE></IPARAMVALUE></IMETHODCALL>"
    ))  # fmt: skip
    if status != 200 or b"<ERROR" in body:
        raise Refused(f"{status}: {body[-500:]!r}")
    return body.decode().split("<IRETURNVALUE>")[1].split("</IRETURNVALUE>")[0]


def make_filter(server):
    """A filter for every alert; its path."""
    query = _text("Name", "all") + _text("Query", "SELECT * FROM CIM_AlertIndication")
    return _create(server, "CIM_IndicationFilter", query + _text("SourceNamespace", "root/merolt_cmpi"))


def subscribe(server, wanted, name, url):
    """Subscribes a listener for what a filter selects. Raises Refused, as where there are too many for one user."""
    place = _text("Name", name) + _text("Destination", url)
    listener = _create(server, "CIM_ListenerDestinationCIMXML", place)
    ends = "".join(
        f'<PROPERTY.REFERENCE NAME="{name}"><VALUE.REFERENCE>{end}</VALUE.REFERENCE></PROPERTY.REFERENCE>'
        for name, end in (("Filter", wanted), ("Handler", listener))
    )
    _create(server, "CIM_IndicationSubscription", ends)


class Listener:
    """Takes every indication and counts them. Each comes on a connection of its own."""

    def __init__(self):
        self.taken = 0
        listener = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                self.rfile.read(int(self.headers["Content-Length"]))
                self.send_response(200)
                self.send_header("Content-Type", "application/xml")
                self.send_header("Content-Length", str(len(TAKEN)))
                self.end_headers()
                with contextlib.suppress(OSError):  # a server that has closed tries again
                    self.wfile.write(TAKEN)
                    listener.taken += 1

            def log_message(self, *arguments):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self._server.server_port}/"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def close(self):
        self._server.shutdown()
        self._server.server_close()
