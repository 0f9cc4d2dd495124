#!/usr/bin/env python3
"""A real Prometheus watches a running cimhost: it takes every metric, sees a link go down, and fires the alert.

usage: watch.py CIMHOST FLEET RULES DASHBOARD HANGING_LIBRARY
Ends with status 77 where Prometheus is not installed.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.parse
import urllib.request

PATIENCE = 90  # seconds for each step; a loaded machine needs some of them
CARD, PORT = "MC1020R4K00317", "1"
OPEN_METRICS = "application/openmetrics-text;version=1.0.0,text/plain;version=0.0.4;q=0.5"
failures = []


def check(what, expected, actual):
    if expected != actual:
        failures.append(what)
        print(f"FAILED {what}\n  expected: {expected}\n  actual:   {actual}")


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    sys.exit(f"FAILED {what}: not within {PATIENCE} seconds")


def get(url, fields=None, method="GET"):
    """Status, content type and text of an answer."""
    request = urllib.request.Request(url, headers=fields or {}, method=method)
    try:
        with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
            return answer.status, answer.headers["Content-Type"], answer.read().decode()
    except urllib.error.HTTPError as error:
        return error.code, error.headers["Content-Type"], error.read().decode()


def samples(text):
    """Values by name with labels."""
    return dict(line.rsplit(" ", 1) for line in text.splitlines() if line and line[0] != "#")


def promtool(*arguments, text=None):
    """What promtool finds wrong; nothing if it is content."""
    done = subprocess.run(["promtool", *arguments], input=text, capture_output=True, text=True)
    return "" if done.returncode == 0 else done.stdout + done.stderr


class Cimhost:
    def __init__(self, program, fleet, more_environment=None):
        with open("meroltcna.properties", "w") as settings:
            settings.write("ErrorLog=1\nLinkStatusPollIntervalSeconds=0\n")
        self.process = subprocess.Popen(
            [program, "serve", "--fleet", fleet, "--listen", "127.0.0.1:0", "--metrics", "127.0.0.1:0",
             "--state", "", "--deadline", "60"],
            stdout=subprocess.PIPE, stderr=open("server_errors", "w"), text=True,
            env={**os.environ, **(more_environment or {})})
        self.metrics = self.url = None
        for line in self.process.stdout:
            if found := re.match(r"cimhost: metrics at (\S+)", line):
                self.metrics = found[1]
            if found := re.match(r"cimhost: listening on ([^, ]+)", line):
                self.url = found[1]
                return
        sys.exit("the server did not say where it listens: " + open("server_errors").read())


class Prometheus:
    def __init__(self, target, rules):
        with open("targets.json", "w") as targets:
            json.dump([{"targets": [target]}], targets)
        with open(rules) as text, open("rules.yml", "w") as quick:
            quick.write(re.sub(r"for: \d+[mh]", "for: 1s", text.read()))
        with open("prometheus.yml", "w") as settings:
            settings.write(
                "global: {scrape_interval: 1s, scrape_timeout: 1s, evaluation_interval: 1s}\n"
                "rule_files: [rules.yml]\n"
                "scrape_configs:\n"
                "  - job_name: merolt-cna\n"
                "    file_sd_configs: [{files: [targets.json]}]\n")
        self.process = subprocess.Popen(
            ["prometheus", "--config.file=prometheus.yml", "--storage.tsdb.path=data",
             "--web.listen-address=127.0.0.1:0"],
            stdout=subprocess.DEVNULL, stderr=open("prometheus_errors", "w"))
        self.url = None

    def is_ready(self):
        """The kernel chose the port, and knows whose it is."""
        if self.process.poll() is not None:
            sys.exit("Prometheus ended: " + open("prometheus_errors").read())
        sockets = subprocess.run(["ss", "-Hltnp"], capture_output=True, text=True).stdout
        found = re.search(rf"127\.0\.0\.1:(\d+) .*pid={self.process.pid},", sockets)
        if not found:
            return False
        self.url = f"http://127.0.0.1:{found[1]}"
        try:
            return get(self.url + "/-/ready")[0] == 200
        except OSError:
            return False

    def ask(self, path):
        return json.loads(get(self.url + path)[2])["data"]

    def value(self, query):
        result = self.ask("/api/v1/query?query=" + urllib.parse.quote(query))["result"]
        return result[0]["value"][1] if result else None

    def firing(self, name):
        """Labels of the alerts that fire, without what Prometheus adds."""
        alerts = self.ask("/api/v1/alerts")["alerts"]
        return sorted((alert["labels"]["serial"], alert["labels"]["port"], alert["labels"]["kind"])
                      for alert in alerts
                      if alert["state"] == "firing" and alert["labels"]["alertname"] == name)


def check_scrapes(server, program, fleet):
    status, kind, text = get(server.metrics)
    check("status of a scrape", 200, status)
    check("its type", "text/plain; version=0.0.4; charset=utf-8", kind)
    check("promtool is content with it", "", promtool("check", "metrics", text=text))
    status, kind, text = get(server.metrics, {"Accept": OPEN_METRICS})
    check("type of OpenMetrics", "application/openmetrics-text; version=1.0.0; charset=utf-8", kind)
    check("its end", "# EOF", text.splitlines()[-1])
    check("another place", 404, get(server.metrics.replace("/metrics", "/"))[0])
    check("another method", 405, get(server.metrics, method="DELETE")[0])
    check("another server's name", 421, get(server.metrics, {"Host": "elsewhere.example"})[0])
    check("a web page", 403, get(server.metrics, {"Origin": "http://elsewhere.example"})[0])
    once = subprocess.run([program, "metrics", "--fleet", fleet], capture_output=True, text=True)
    check("status of cimhost metrics", 0, once.returncode)
    check("promtool is content with that, too", "", promtool("check", "metrics", text=once.stdout))
    check("it shows the same ports",
          {name for name in samples(text) if name.startswith("merolt_cna_port_up")},
          {name for name in samples(once.stdout) if name.startswith("merolt_cna_port_up")})


def check_requests(server):
    """What a CIM client does is counted."""
    name = 'merolt_cna_cim_requests_total{operation="EnumerateInstanceNames",status="ok"}'
    check("a request before there was any", None, samples(get(server.metrics)[2]).get(name))
    subprocess.run(["wbemcli", "ein", server.url + "/root/merolt_cmpi:Merolt_FCHBA_FCPort"], check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run(["wbemcli", "ein", server.url + "/root/merolt_cmpi:No_Class"],
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    after = samples(get(server.metrics)[2])
    check("a request", "1", after.get(name))
    check("a refused one", "1",
          after.get('merolt_cna_cim_requests_total{operation="EnumerateInstanceNames",status="CIM_ERR_INVALID_CLASS"}'))
    check("calls of the provider", "1", after.get("merolt_cna_provider_call_duration_seconds_count"))


def check_new_card(server, fleet):
    """Which port is at which jack is kept between scrapes, but not when there is another card."""
    with open(fleet) as text:
        described = json.load(text)
    card = next(card for card in described["cards"] if card["modelName"] == "MF0401")
    for old, new in (card["serialNumber"], "MF0401NEW"), ("02:4d", "02:5d"):
        card = json.loads(json.dumps(card).replace(old, new))
    described["cards"].append(card)
    with open("with_new_card.json", "w") as text:
        json.dump(described, text)
    os.replace("with_new_card.json", fleet)
    port = 'merolt_cna_port_answers{serial="MF0401NEW",port="1",kind="fibre_channel"}'
    wait_for("the port of a new card, at its jack", lambda: port in samples(get(server.metrics)[2]))


def expressions(dashboard):
    """What a dashboard asks, with every host and a minute in place of its variables."""
    with open(dashboard) as text:
        panels = json.load(text)["panels"]
    asked = [target["expr"] for panel in panels for target in panel.get("targets", [])]
    return [re.sub(r"\$(job|instance)", ".*", text).replace("$__rate_interval", "1m") for text in asked]


def check_names(server, prometheus, rules, dashboard):
    """Rules and dashboard ask for metrics that there are, in expressions that Prometheus understands."""
    known = {re.sub(r"\{.*", "", name) for name in samples(get(server.metrics)[2])}
    with open(rules) as text:
        asked = text.read() + "\n".join(expressions(dashboard))
    asked = set(re.findall(r"merolt_cna_\w+", asked))
    check("metrics that are asked for and not there", set(), asked - known)
    for expression in expressions(dashboard):
        answer = get(prometheus.url + "/api/v1/query?query=" + urllib.parse.quote(expression))
        check(f"status of {expression}", 200, answer[0])


def check_alert(prometheus, program, fleet):
    query = f'sum(merolt_cna_port_up{{serial="{CARD}",port="{PORT}"}})'
    wait_for("Prometheus has seen the links up", lambda: prometheus.value(query) == "2")
    check("alerts before", [], prometheus.firing("MeroltCnaLinkDown"))
    set_link = [program, "fleet", "set-link", CARD, PORT]
    subprocess.run([*set_link, "down", fleet], check=True)
    wait_for("Prometheus has seen them down", lambda: prometheus.value(query) == "0")
    wait_for("the alert of both", lambda: len(prometheus.firing("MeroltCnaLinkDown")) >= 2)
    check("what fires", [(CARD, PORT, "ethernet"), (CARD, PORT, "fibre_channel")],
          prometheus.firing("MeroltCnaLinkDown"))
    subprocess.run([*set_link, "up", fleet], check=True)
    wait_for("the alert is over", lambda: prometheus.firing("MeroltCnaLinkDown") == [])
    check("the server is well", "1", prometheus.value('up{job="merolt-cna"}'))


def check_hanging(program, fleet, library, started):
    """Adapters that do not answer cost a scrape its deadline, and not what the server knows of itself."""
    server = Cimhost(program, fleet, {"LD_PRELOAD": library, "HANG_WHILE": os.path.abspath("hang")})
    started.append(server.process)
    readable = "merolt_cna_adapters_readable"
    check("adapters that answer", "1", samples(get(server.metrics)[2])[readable])
    open("hang", "w").close()
    begun = time.monotonic()
    status, _, text = get(server.metrics, {"X-Prometheus-Scrape-Timeout-Seconds": "1"})
    check("ends at its deadline", True, time.monotonic() - begun < 30)
    check("status of that scrape", 200, status)
    check("adapters that hang", "0", samples(text)[readable])
    check("what the server knows of itself", True, "process_cpu_seconds_total" in samples(text))
    check("and nothing of the adapters", False, "merolt_cna_cards" in samples(text))
    check("promtool is content with it", "", promtool("check", "metrics", text=text))
    os.remove("hang")
    wait_for("the adapters are back",
             lambda: samples(get(server.metrics)[2])[readable] == "1")
    server.process.terminate()
    check("status of that server", 0, server.process.wait(PATIENCE))


def run(program, fleet, rules, dashboard, library, started):
    server = Cimhost(program, fleet)
    started.append(server.process)
    check_scrapes(server, program, fleet)
    check_requests(server)
    check_new_card(server, fleet)
    prometheus = Prometheus(server.metrics.split("/")[2], rules)
    started.append(prometheus.process)
    wait_for("Prometheus is ready", prometheus.is_ready)
    check_names(server, prometheus, rules, dashboard)
    check_alert(prometheus, program, fleet)
    server.process.terminate()
    check("the server's status after SIGTERM", 0, server.process.wait(PATIENCE))
    check_hanging(program, fleet, library, started)


def main():
    program, fleet, rules, dashboard, library = (os.path.abspath(argument) for argument in sys.argv[1:6])
    if not shutil.which("prometheus") or not shutil.which("promtool"):
        print("Prometheus is not installed")
        sys.exit(77)
    started = []
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        shutil.copy(fleet, "fleet.json")
        try:
            run(program, os.path.join(folder, "fleet.json"), rules, dashboard, library, started)
        finally:
            for process in started:
                if process.poll() is None:
                    process.kill()
                    process.wait()
            os.chdir("/")
    sys.exit(1 if failures else 0)


main()
