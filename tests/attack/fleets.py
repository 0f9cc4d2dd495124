"""Changes of a server's fleet: flash updates as clients make them, link changes as operators make them."""

import json
import re
import subprocess
import time

import support

SERVICE = "Merolt_NIC_SoftwareInstallationService"
CARD = "MC1020R4K00317"
WRITER_SECONDS = 5.0  # a writer gives up after these


def make_image(server, version="2.2.3"):
    """The path of an image for the cards of the demonstration fleet."""
    image = server.folder / f"image-{version}.bin"
    if not image.exists():
        subprocess.run(
            [server.cimhost, "image", "make", image, "--model", "MC1020", "--image-version", version,
             "--date", "2013-04-30", "--firmware", "8.1.0"],
            check=True, capture_output=True)  # fmt: skip
    return image


def flash(server, image, timeout=60.0):
    """The method's return value: 0 where the card was updated. One update runs at a time; this one waits its turn."""
    deadline = time.monotonic() + timeout
    while True:
        status, answer = _install(server, image, timeout)
        found = re.search(rb"<RETURNVALUE[^>]*>\s*<VALUE>(\d+)</VALUE>", answer)
        if status == 200 and found:
            return int(found[1])
        if b"is under way already" not in answer or time.monotonic() > deadline:
            raise support.NoAnswer(f"{status}: {answer[-500:]!r}")
        time.sleep(0.02)


def _install(server, image, timeout):
    """(status, body) of the answer."""
    target = (
        '<PARAMVALUE NAME="Target" PARAMTYPE="reference"><VALUE.REFERENCE><INSTANCENAME '
        'CLASSNAME="Merolt_NIC_PortController"><KEYBINDING NAME="DeviceID"><KEYVALUE VALUETYPE="string">'
        f"{CARD}_NIC</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PARAMVALUE>"
    )
    uri = f'<PARAMVALUE NAME="URI" PARAMTYPE="string"><VALUE>{image}</VALUE></PARAMVALUE>'
    return support.ask(server, support.call_method(SERVICE, "InstallFromURI", uri + target), timeout)


def set_link(server, state):
    """The command's process, just started."""
    return subprocess.Popen(
        [server.cimhost, "fleet", "set-link", "1", "1", state, server.fleet],
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)  # fmt: skip


def damage(server):
    """What is wrong with the fleet and what writers left beside it; texts, or none."""
    problems = []
    try:
        if not json.loads(server.fleet.read_text())["cards"]:
            problems.append("the fleet has lost its cards")
    except (OSError, ValueError, KeyError) as error:
        problems.append(f"the fleet is damaged: {error}")
    return problems


def leftovers(server):
    """Names of files that writers have not finished."""
    return [f"{file.name} is left" for file in server.folder.glob("fleet.json.*") if file.suffix != ".lock"]
