"""A `cimhost serve` of the test's own: a free port, a fleet of its own, everything in one temporary folder."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time

import support

START_SECONDS = 120.0
SAMPLE_SECONDS = 0.1


class CannotStart(Exception):
    pass


class Server:
    def __init__(self, cimhost, fleet, tls=False, users=False):
        self.cimhost = cimhost
        self.tls, self.users = tls, users
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="attack-"))
        self.fleet = self.folder / "fleet.json"
        self.state = self.folder / "state.json"
        shutil.copy(fleet, self.fleet)
        (self.folder / "meroltcna.properties").write_text("ErrorLog=1\nLinkStatusPollIntervalSeconds=0\n")
        self.options = []
        self.environment = {}
        self.address, self.port, self.process = "127.0.0.1", 0, None
        self.most = {"threads": 0, "descriptors": 0}
        self._sampling = threading.Event()
        if tls:
            self._make_certificate()
        if users:
            self._write_users()

    def _make_certificate(self):
        certificate, key = self.folder / "certificate.pem", self.folder / "key.pem"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=localhost",
             "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout", key, "-out", certificate],
            check=True, capture_output=True)  # fmt: skip
        key.chmod(0o600)
        self.options += ["--certificate", certificate, "--key", key]

    def _write_users(self):
        users = self.folder / "users"
        users.touch(mode=0o600)
        users.write_text(support.USERS_FILE)
        self.options += ["--credentials", users]

    def start(self, patience=START_SECONDS):
        """Returns when the server says where it listens. Raises CannotStart."""
        command = [self.cimhost, "serve", "--fleet", self.fleet, "--listen", "127.0.0.1:0", "--state", self.state]
        self.output = self.folder / "output"
        with open(self.output, "wb") as output, open(self.folder / "errors", "wb") as errors:
            self.process = subprocess.Popen(
                [*map(str, command), *map(str, self.options)],
                cwd=self.folder, env={**os.environ, **self.environment},
                stdin=subprocess.DEVNULL, stdout=output, stderr=errors)  # fmt: skip
        deadline = time.monotonic() + patience
        while not (found := re.search(r"listening on https?://[^ ]*:(\d+),", self.output.read_text())):
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise CannotStart((self.folder / "errors").read_text(errors="replace")[-2000:])
            time.sleep(0.02)
        self.port = int(found[1])
        threading.Thread(target=self._sample, daemon=True).start()

    def is_running(self):
        return self.process is not None and self.process.poll() is None

    def exists(self):
        """The same for processes that did not start the server."""
        return pathlib.Path(f"/proc/{self.process.pid}").exists()

    def errors(self):
        """What the server and the provider wrote to standard error."""
        return (self.folder / "errors").read_text(errors="replace")

    def status(self, field):
        """A number of /proc/PID/status, such as VmRSS in KiB; 0 when the server is gone."""
        try:
            text = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        except OSError:
            return 0
        found = re.search(rf"^{field}:\s*(\d+)", text, re.MULTILINE)
        return int(found[1]) if found else 0

    def descriptors(self):
        try:
            return len(os.listdir(f"/proc/{self.process.pid}/fd"))
        except OSError:
            return 0

    def memory_mib(self):
        """The most that was resident so far."""
        return self.status("VmHWM") / 1024

    def _sample(self):
        while not self._sampling.wait(SAMPLE_SECONDS) and self.is_running():
            self.most["threads"] = max(self.most["threads"], self.status("Threads"))
            self.most["descriptors"] = max(self.most["descriptors"], self.descriptors())

    def stop(self, patience):
        """SIGTERM; seconds until the end. A server that is still there after `patience` seconds is killed."""
        self._sampling.set()
        begin = time.monotonic()
        if self.is_running():
            self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(patience)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        return time.monotonic() - begin

    def remove(self):
        if self.is_running():
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)
