#!/usr/bin/env python3
"""Requests a second and processor time for each, of one or more builds of the embedded server.

Each request is asked by wrk over several numbers of connections, on fleets of several sizes, the builds in turn, so that
what else the machine does meets all of them. Of several rounds the least processor time and the highest rate count.
The processor time is that of the server's process alone; wrk's own is not in it. The answers of all builds have to be
the same, byte for byte.
"""
import argparse
import http.client
import json
import os
import re
import subprocess
import sys
import tempfile
import threading
import time

NAMESPACE = "root/merolt_cmpi"
HERE = os.path.dirname(os.path.abspath(__file__))


def fleet(ports):
    """Converged cards of two ports, each with a storage and an Ethernet function and a module."""
    port = {
        "transceiver": {"serialNumber": "MSR{n}P"},
        "ethernet": {},
        "storage": {
            "pciDeviceId": "0xA127",
            "optionRom": {"biosVersion": "3.31", "firmware": "7.2.4"},
            "vpd": {
                "productIdentifier": "Converged adapter",
                "readOnly": {"PN": "MC1020-2", "SN": "MC1020S{n}", "MN": "1077", "V1": "6.31", "V3": "7.02.04",
                             "V4": "3.31", "RM": "1.2.3", "FN": "49Y3701"},
            },
        },
    }
    return {"cards": [{"count": ports // 2, "serialNumber": "MC1020S{n}", "modelName": "MC1020", "ports": [port, port]}]}


class Server:
    """A build that serves a fleet on a free port of this host."""

    def __init__(self, build, ports, folder, workers):
        path = os.path.join(folder, f"{ports}.json")
        with open(path, "w", encoding="utf-8") as file:
            json.dump(fleet(ports), file)
        self.process = subprocess.Popen(
            [os.path.join(os.path.abspath(build), "bin", "cimhost"), "--fleet", path, "serve", "--listen", "127.0.0.1:0", "--state", "",
             "--workers", str(workers), "--connections", "256"],  # room for the probe, too
            cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        for line in self.process.stdout:
            found = re.search(r"listening on http://(127\.0\.0\.1:(\d+))", line)
            if found:
                self.address, self.port = found.group(1), int(found.group(2))
                return
        raise SystemExit(f"{build}: the server did not start")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def processor_seconds(self):
        total = 0
        folder = f"/proc/{self.process.pid}/task"
        for thread in os.listdir(folder):
            with open(f"{folder}/{thread}/schedstat", encoding="ascii") as file:
                total += int(file.read().split()[0])
        return total / 1e9

    def ask(self, method, message):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request("POST", "/cimom", message, {
            "Content-Type": 'application/xml; charset="utf-8"', "CIMOperation": "MethodCall", "CIMMethod": method,
            "CIMObject": NAMESPACE, "Host": "localhost"})  # so answers name no port
        answer = connection.getresponse().read().decode()
        connection.close()
        if "<ERROR" in answer:
            raise SystemExit(f"{method} failed: {answer}")
        return answer


def message(method, parameters):
    steps = "".join(f'<NAMESPACE NAME="{step}"/>' for step in NAMESPACE.split("/"))
    return (f'<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" '
            f'PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="{method}"><LOCALNAMESPACEPATH>{steps}'
            f'</LOCALNAMESPACEPATH>{parameters}</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>')


def class_parameter(name, class_name):
    return f'<IPARAMVALUE NAME="{name}"><CLASSNAME NAME="{class_name}"/></IPARAMVALUE>'


def object_parameter(name, path):
    return f'<IPARAMVALUE NAME="{name}">{path}</IPARAMVALUE>'


def requests_of(server):
    """Title, method and message of what is measured."""
    def paths(class_name):
        answer = server.ask("EnumerateInstanceNames",
                            message("EnumerateInstanceNames", class_parameter("ClassName", class_name)))
        return re.findall(r"<INSTANCENAME.*?</INSTANCENAME>", answer, re.S)

    ports = paths("Merolt_FCHBA_FCPort")
    port = ports[len(ports) // 2]
    host = paths("Merolt_Adapter_ComputerSystem")[0]
    asked = [
        ("EnumerateInstances FCPort", "EnumerateInstances", class_parameter("ClassName", "Merolt_FCHBA_FCPort")),
        ("EnumerateInstances EthernetPort2", "EnumerateInstances",
         class_parameter("ClassName", "Merolt_NIC_EthernetPort2")),
        ("EnumerateInstanceNames FCPort", "EnumerateInstanceNames", class_parameter("ClassName", "Merolt_FCHBA_FCPort")),
        ("GetInstance FCPort", "GetInstance", object_parameter("InstanceName", port)),
        ("Associators of a port", "Associators", object_parameter("ObjectName", port)),
        ("Associators of the host, one association class", "Associators",
         object_parameter("ObjectName", host) + class_parameter("AssocClass", "Merolt_FCHBA_ComputerSystemFCPort")),
    ]
    return [(title, method, message(method, parameters)) for title, method, parameters in asked]


class Probe(threading.Thread):
    """One client more, who asks for the host now and then: how long does he wait?"""

    def __init__(self, server):
        super().__init__()
        self.server = server
        self.waits = []
        self.is_over = threading.Event()

    def run(self):
        asked = message("EnumerateInstances", class_parameter("ClassName", "Merolt_Adapter_ComputerSystem"))
        while not self.is_over.wait(0.005):
            start = time.monotonic()
            self.server.ask("EnumerateInstances", asked)
            self.waits.append((time.monotonic() - start) * 1000)

    def milliseconds(self):
        self.is_over.set()
        self.join()
        waits = sorted(self.waits)
        return waits[len(waits) // 2], waits[min(len(waits) - 1, len(waits) * 99 // 100)]


def load(server, method, file, connections, seconds):
    """Requests a second, and milliseconds of the server's processor for each."""
    before = server.processor_seconds()
    told = subprocess.run(
        ["wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "-s", os.path.join(HERE, "request.lua"),
         f"http://{server.address}/cimom", "--", method, file], check=True, capture_output=True, text=True).stdout
    spent = server.processor_seconds() - before
    if "Non-2xx" in told or "Socket errors" in told:
        raise SystemExit(f"wrk met errors:\n{told}")
    count = int(re.search(r"(\d+) requests in", told).group(1))
    rate = float(re.search(r"Requests/sec:\s+([\d.]+)", told).group(1))
    return rate, 1000 * spent / count


def check_answers(names, servers, requests):
    for title, method, asked in requests:
        answers = {server.ask(method, asked) for server in servers}
        if len(answers) > 1:
            raise SystemExit(f"{title}: the answers of {' and '.join(names)} differ")


def numbers(text):
    return [int(number) for number in text.split(",")]


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("builds", nargs="+", metavar="NAME=FOLDER", help="a build folder and what the table calls it")
    parser.add_argument("--ports", type=numbers, default=[8, 64, 128], help="storage ports of each fleet (8,64,128)")
    parser.add_argument("--connections", type=numbers, default=[1, 4, 16, 64], help="(1,4,16,64)")
    parser.add_argument("--seconds", type=int, default=1,
                        help="of each measurement (1); the whole table takes 432 times as long for two builds and three "
                             "rounds, and half a minute more")
    parser.add_argument("--rounds", type=int, default=3, help="of which the best counts (3)")
    parser.add_argument("--only", default="", help="requests whose title contains this")
    parser.add_argument("--workers", type=int, default=4, help="of each server (4)")
    parser.add_argument("--probe", action="store_true", help="how long one client more waits meanwhile")
    given = parser.parse_args()
    given.builds = [build.split("=", 1) for build in given.builds]
    if any(len(build) != 2 for build in given.builds):
        parser.error("a build is NAME=FOLDER")
    return given


def measure(given, server, method, file, connections):
    """Rate, processor time and, with a probe, his median and 99th percentile."""
    probe = Probe(server) if given.probe else None
    if probe:
        probe.start()
    figures = load(server, method, file, connections, given.seconds)
    return figures + (probe.milliseconds() if probe else ())


def cells(found):
    cell = f"{max(one[0] for one in found):.0f}/s {min(one[1] for one in found):.3f} ms"
    if len(found[0]) > 2:
        cell += f", probe {min(one[2] for one in found):.1f} and {min(one[3] for one in found):.1f} ms"
    return cell


def print_row(title, row):
    print("| " + " | ".join([title] + row) + " |", flush=True)


def measure_fleet(given, ports, folder):
    names = [name for name, _ in given.builds]
    servers = [Server(build, ports, folder, given.workers) for _, build in given.builds]
    try:
        requests = requests_of(servers[0])
        check_answers(names, servers, requests)
        print(f"\n{ports} ports: requests a second, processor time of the server for each\n")
        columns = [f"{name}, {count} conn." for count in given.connections for name in names]
        print_row("request", columns)
        print_row("---", ["---"] * len(columns))
        file = os.path.join(folder, "message.xml")
        for title, method, asked in requests:
            if given.only not in title:
                continue
            with open(file, "w", encoding="utf-8") as out:
                out.write(asked)
            row = []
            for connections in given.connections:
                found = [[] for _ in servers]
                for _ in range(given.rounds):
                    for server, figures in zip(servers, found):
                        figures.append(measure(given, server, method, file, connections))
                row += [cells(figures) for figures in found]
            print_row(title, row)
    finally:
        for server in servers:
            server.__exit__()


def main():
    given = parse()
    with tempfile.TemporaryDirectory() as folder:
        for ports in given.ports:
            measure_fleet(given, ports, folder)


if __name__ == "__main__":
    sys.exit(main())
