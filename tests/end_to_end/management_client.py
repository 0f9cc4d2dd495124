#!/usr/bin/env python3
"""The exchange of a WBEM client library with a server that it meets for the first time, message by message: it looks for
the interop namespace, the server's brand, the profiles and what keeps to them, reads the adapters in several answers, and
takes out a subscription, in the order and form in which pywbem does so.

usage: management_client.py URL LISTENER COMMAND...

LISTENER is the URL of a running `cimhost listen`. COMMAND is run once the subscription stands; it has to make something
happen that an alert tells of. Prints one line for each check that fails, and their count."""

import http.client
import re
import subprocess
import sys
import urllib.parse
import xml.etree.ElementTree as xml
from xml.sax.saxutils import escape, quoteattr

FILTER, DESTINATION, SUBSCRIPTION = (
    "CIM_IndicationFilter", "CIM_ListenerDestinationCIMXML", "CIM_IndicationSubscription")
INTEROP_NAMES = ["interop", "root/interop", "root/PG_Interop"]


class CimError(Exception):
    def __init__(self, code, text):
        super().__init__(f"{code}: {text}")
        self.code = code


class Connection:
    def __init__(self, url):
        self.address = urllib.parse.urlsplit(url).netloc

    def call(self, namespace, method, parameters=""):
        """The elements inside IRETURNVALUE. parameters are IPARAMVALUE elements."""
        value = self.response(namespace, method, parameters).find("IRETURNVALUE")
        return [] if value is None else list(value)

    def pull(self, namespace, method, parameters):
        """The elements, and the context of the next request: None behind the last element."""
        response = self.response(namespace, method, parameters)
        output = {element.get("NAME"): element.findtext("VALUE") for element in response.findall("PARAMVALUE")}
        is_end = {"true": True, "false": False}[output["EndOfSequence"].lower()]
        return list(response.find("IRETURNVALUE")), None if is_end else output["EnumerationContext"]

    def response(self, namespace, method, parameters):
        message = (
            '<?xml version="1.0" encoding="utf-8" ?>\n<CIM CIMVERSION="2.0" DTDVERSION="2.0">'
            '<MESSAGE ID="1001" PROTOCOLVERSION="1.0"><SIMPLEREQ>'
            f'<IMETHODCALL NAME="{method}">{local_namespace(namespace)}{parameters}</IMETHODCALL>'
            "</SIMPLEREQ></MESSAGE></CIM>")
        connection = http.client.HTTPConnection(self.address, timeout=60)
        connection.request("POST", "/cimom", message.encode(), {
            "Content-Type": 'application/xml; charset="utf-8"',
            "CIMOperation": "MethodCall", "CIMMethod": method, "CIMObject": urllib.parse.quote(namespace)})
        response = connection.getresponse()
        text = response.read()
        connection.close()
        if response.status != 200:
            raise AssertionError(f"{method}: HTTP status {response.status}")
        answer = xml.fromstring(text).find("MESSAGE/SIMPLERSP/IMETHODRESPONSE")
        error = answer.find("ERROR")
        if error is not None:
            raise CimError(int(error.get("CODE")), error.get("DESCRIPTION", ""))
        return answer

    def enumerate(self, namespace, class_name):
        found = self.call(namespace, "EnumerateInstances", class_parameter("ClassName", class_name))
        return [(element.find("INSTANCENAME"), element.find("INSTANCE")) for element in found]


def local_namespace(name):
    parts = "".join(f'<NAMESPACE NAME="{part}"/>' for part in name.split("/"))
    return f"<LOCALNAMESPACEPATH>{parts}</LOCALNAMESPACEPATH>"


def parameter(name, value):
    return f'<IPARAMVALUE NAME="{name}">{value}</IPARAMVALUE>'


def number_parameter(name, number):
    return parameter(name, f"<VALUE>{number}</VALUE>")


def class_parameter(name, class_name):
    return parameter(name, f'<CLASSNAME NAME="{class_name}"/>')


def name_parameter(name, element):
    return parameter(name, xml.tostring(element, encoding="unicode"))


def text_property(name, text):
    return f'<PROPERTY NAME="{name}" TYPE="string"><VALUE>{escape(text)}</VALUE></PROPERTY>'


def reference_property(name, class_name, namespace, path):
    inner = local_namespace(namespace) + xml.tostring(path, encoding="unicode")
    return (f'<PROPERTY.REFERENCE NAME="{name}" REFERENCECLASS="{class_name}"><VALUE.REFERENCE>'
            f"<LOCALINSTANCEPATH>{inner}</LOCALINSTANCEPATH></VALUE.REFERENCE></PROPERTY.REFERENCE>")


def instance(class_name, properties):
    return parameter("NewInstance", f"<INSTANCE CLASSNAME={quoteattr(class_name)}>{properties}</INSTANCE>")


def value_of(element, name):
    for child in element:
        if child.get("NAME") == name:
            return child.findtext("VALUE")
    return None


def namespace_of(path):
    return "/".join(part.get("NAME") for part in path.iter("NAMESPACE"))


def canonical(element):
    return xml.canonicalize(xml.tostring(element, encoding="unicode"), strip_text=True)


class Checks:
    def __init__(self):
        self.passed = self.failed = 0

    def equal(self, what, expected, actual):
        if expected == actual:
            self.passed += 1
            return
        self.failed += 1
        print(f"FAILED {what}\n  expected: {expected!r}\n  actual:   {actual!r}")

    def true(self, what, condition):
        self.equal(what, True, bool(condition))

    def refused(self, what, code, call):
        try:
            call()
        except CimError as error:
            self.equal(what, code, error.code)
        else:
            self.equal(what, code, "no error")


def find_interop(server, checks):
    """The first name under which the server has an interop namespace, as a client library takes it."""
    for name in INTEROP_NAMES:
        try:
            names = server.call(name, "EnumerateInstanceNames", class_parameter("ClassName", "CIM_Namespace"))
        except CimError as error:
            checks.equal(f"{name}: status of a namespace that is not there", 3, error.code)
            continue
        listed = [key.findtext("KEYVALUE") for path in names for key in path if key.get("NAME") == "Name"]
        checks.true(f"{name} is among the namespaces {listed}", name in listed)
        return name
    raise AssertionError("no interop namespace")


def look_around(server, interop, checks):
    checks.equal("the interop namespace is found at once", INTEROP_NAMES[0], interop)
    spaces = [value_of(body, "Name") for _, body in server.enumerate(interop, "CIM_Namespace")]
    checks.equal("the namespaces", ["interop", "root/merolt_cmpi"], sorted(spaces))
    for other in ("root/interop", "root/PG_InterOp"):
        names = [value_of(body, "Name") for _, body in server.enumerate(other, "CIM_Namespace")]
        checks.true(f"{other} is the same namespace under another name", other in names and len(names) == 2)
    managers = server.enumerate(interop, "CIM_ObjectManager")
    checks.equal("one object manager", 1, len(managers))
    checks.equal("its brand", "cimhost", value_of(managers[0][1], "ElementName"))
    checks.true("its version", re.search(r" version *[0-9.]+$", value_of(managers[0][1], "Description")))
    qualifiers = server.call(interop, "EnumerateQualifiers")
    checks.true("Key is among the qualifiers", "Key" in [element.get("NAME") for element in qualifiers])
    checks.equal("one qualifier", 1,
                 len(server.call(interop, "GetQualifier", parameter("QualifierName", "<VALUE>Key</VALUE>"))))
    checks.refused("pulled queries", 7, lambda: server.call(
        interop, "OpenQueryInstances",
        parameter("FilterQueryLanguage", "<VALUE>DMTF:CQL</VALUE>") +
        parameter("FilterQuery", "<VALUE>SELECT * FROM CIM_Namespace</VALUE>") + number_parameter("MaxObjectCount", 10)))
    return value_of(managers[0][1], "SystemName")


def iterate(server, namespace, opening, source, most):
    """What an iterator over an enumeration yields; `most` elements come with each answer."""
    pulling = "PullInstancePaths" if opening.endswith("Paths") else "PullInstancesWithPath"
    found, context = server.pull(namespace, opening, source + number_parameter("MaxObjectCount", most))
    while context is not None:
        more, context = server.pull(
            namespace, pulling,
            parameter("EnumerationContext", f"<VALUE>{context}</VALUE>") + number_parameter("MaxObjectCount", most))
        found += more
    return found


def read_in_pieces(server, checks):
    """Each iterator yields what the plain operation does, whatever comes with one answer."""
    namespace, ports = "root/merolt_cmpi", class_parameter("ClassName", "CIM_NetworkPort")
    port = server.call(namespace, "EnumerateInstanceNames", ports)[0]
    source, plain_source = name_parameter("InstanceName", port), name_parameter("ObjectName", port)
    for opening, plain, parameters, plain_parameters in (
            ("OpenEnumerateInstances", "EnumerateInstances", ports, ports),
            ("OpenEnumerateInstancePaths", "EnumerateInstanceNames", ports, ports),
            ("OpenAssociatorInstances", "Associators", source, plain_source),
            ("OpenAssociatorInstancePaths", "AssociatorNames", source, plain_source),
            ("OpenReferenceInstances", "References", source, plain_source),
            ("OpenReferenceInstancePaths", "ReferenceNames", source, plain_source)):
        expected = [canonical(next(element.iter("INSTANCENAME")))
                    for element in server.call(namespace, plain, plain_parameters)]
        checks.true(f"{plain} finds several objects", len(expected) > 2)
        for most in (1, 2, 1000):
            found = iterate(server, namespace, opening, parameters, most)
            checks.equal(f"element of {opening}",
                         {"INSTANCEPATH"} if opening.endswith("Paths") else {"VALUE.INSTANCEWITHPATH"},
                         {element.tag for element in found})
            checks.equal(f"{opening}, {most} with each answer", expected,
                         [canonical(next(element.iter("INSTANCENAME"))) for element in found])


def stop_reading(server, checks):
    """An iterator that is given up closes its enumeration; a context goes with one request, one user, one namespace."""
    namespace = "root/merolt_cmpi"
    found, context = server.pull(
        namespace, "OpenEnumerateInstances",
        class_parameter("ClassName", "CIM_NetworkPort") + parameter("DeepInheritance", "<VALUE>FALSE</VALUE>") +
        parameter("IncludeClassOrigin", "<VALUE>TRUE</VALUE>") +
        parameter("PropertyList", "<VALUE.ARRAY><VALUE>Speed</VALUE></VALUE.ARRAY>") +
        number_parameter("OperationTimeout", 20) + parameter("ContinueOnError", "<VALUE>FALSE</VALUE>") +
        number_parameter("MaxObjectCount", 1))
    shown = [(property.get("NAME"), property.get("CLASSORIGIN")) for property in found[0].find("INSTANCE")]
    checks.equal("the properties of an instance in a list of properties", [("Speed", "CIM_LogicalPort")], shown)
    given = parameter("EnumerationContext", f"<VALUE>{context}</VALUE>")
    one_more = given + number_parameter("MaxObjectCount", 1)
    checks.refused("a context in another namespace", 21, lambda: server.call("interop", "CloseEnumeration", given))
    checks.refused("instances for paths", 21, lambda: server.call(namespace, "PullInstancePaths", one_more))
    server.call(namespace, "CloseEnumeration", given)
    checks.refused("a closed enumeration", 21, lambda: server.call(namespace, "PullInstancesWithPath", one_more))
    checks.refused("what is closed already", 21, lambda: server.call(namespace, "CloseEnumeration", given))
    for name, value, code in (("OperationTimeout", "0", 22), ("OperationTimeout", "100000", 22),
                              ("ContinueOnError", "TRUE", 26), ("FilterQuery", "Speed = 1", 25)):
        checks.refused(f"{name} {value}", code, lambda: server.call(  # noqa: B023
            namespace, "OpenEnumerateInstances",
            class_parameter("ClassName", "CIM_NetworkPort") + parameter(name, f"<VALUE>{value}</VALUE>")))


def central_instances(server, interop, checks):
    central = {}
    for path, body in server.enumerate(interop, "CIM_RegisteredProfile"):
        found = server.call(interop, "AssociatorNames", name_parameter("ObjectName", path) +
                            class_parameter("AssocClass", "CIM_ElementConformsToProfile") +
                            parameter("ResultRole", "<VALUE>ManagedElement</VALUE>"))
        central[value_of(body, "RegisteredName")] = len(found)
        for element in found:
            inner = element.find("INSTANCEPATH")
            server.call(namespace_of(inner), "GetInstance",
                        name_parameter("InstanceName", inner.find("INSTANCENAME")))
    for name in ("Ethernet Port", "Host LAN Network Port", "IP Interface"):
        checks.true(f"profile {name} has central instances, of {central}", central.get(name, 0) > 0)


class Subscriber:
    def __init__(self, server, interop, system, checks):
        self.server, self.interop, self.system, self.checks = server, interop, system, checks

    def create(self, class_name, properties):
        path, = self.server.call(self.interop, "CreateInstance", instance(class_name, properties))
        body, = self.server.call(self.interop, "GetInstance", name_parameter("InstanceName", path))
        self.checks.equal(f"class of the new {class_name}", class_name, body.get("CLASSNAME"))
        return path, body

    def element(self, class_name, name, properties):
        keys = {"CreationClassName": class_name, "SystemCreationClassName": "CIM_ComputerSystem",
                "SystemName": self.system, "Name": name}
        return self.create(class_name, "".join(text_property(*key) for key in keys.items()) + properties)

    def subscribe(self, listener):
        for class_name in (DESTINATION, FILTER, SUBSCRIPTION):
            self.checks.equal(f"{class_name} before", 0, len(self.server.enumerate(self.interop, class_name)))
        self.destination, _ = self.element(
            DESTINATION, "pywbemdestination:test:d",
            '<PROPERTY NAME="PersistenceType" TYPE="uint16"><VALUE>3</VALUE></PROPERTY>' +
            text_property("Destination", listener))
        self.filter, body = self.element(
            FILTER, "pywbemfilter:test:f",
            '<PROPERTY.ARRAY NAME="SourceNamespaces" TYPE="string"><VALUE.ARRAY><VALUE>root/merolt_cmpi</VALUE>'
            "</VALUE.ARRAY></PROPERTY.ARRAY>" +
            text_property("Query", "SELECT * FROM CIM_AlertIndication") + text_property("QueryLanguage", "WQL"))
        self.checks.equal("the older form of the source namespace", "root/merolt_cmpi",
                          value_of(body, "SourceNamespace"))
        self.subscription, _ = self.create(
            SUBSCRIPTION, reference_property("Filter", FILTER, self.interop, self.filter) +
            reference_property("Handler", DESTINATION, self.interop, self.destination))

    def recover(self):
        """What a second manager does, to find the subscriptions of a first one by the paths of filters."""
        (path, _), = self.server.enumerate(self.interop, SUBSCRIPTION)
        ends = {key.get("NAME"): key.find("VALUE.REFERENCE/LOCALINSTANCEPATH") for key in path}
        self.checks.equal("the filter's namespace in the subscription", self.interop, namespace_of(ends["Filter"]))
        (listed, _), = self.server.enumerate(self.interop, FILTER)
        self.checks.equal("the filter in the subscription", canonical(listed),
                          canonical(ends["Filter"].find("INSTANCENAME")))

    def references(self, path):
        return len(self.server.call(self.interop, "ReferenceNames", name_parameter("ObjectName", path) +
                                    class_parameter("ResultClass", SUBSCRIPTION)))

    def delete(self, path):
        self.server.call(self.interop, "DeleteInstance", name_parameter("InstanceName", path))

    def remove(self):
        self.checks.equal("subscriptions of the destination", 1, self.references(self.destination))
        self.checks.refused("a filter in use", 1, lambda: self.delete(self.filter))
        self.delete(self.subscription)
        for path in (self.filter, self.destination):
            self.checks.equal("subscriptions that are left", 0, self.references(path))
            self.delete(path)
        for class_name in (DESTINATION, FILTER, SUBSCRIPTION):
            self.checks.equal(f"{class_name} behind", 0, len(self.server.enumerate(self.interop, class_name)))


def main(url, listener, *command):
    checks = Checks()
    server = Connection(url)
    interop = find_interop(server, checks)
    system = look_around(server, interop, checks)
    central_instances(server, interop, checks)
    read_in_pieces(server, checks)
    stop_reading(server, checks)
    subscriber = Subscriber(server, interop, system, checks)
    subscriber.subscribe(listener)
    subscriber.recover()
    checks.equal("what is to happen", 0, subprocess.run(command, check=False).returncode)
    subscriber.remove()
    print(f"{checks.passed} passed, {checks.failed} failed")
    return 1 if checks.failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
