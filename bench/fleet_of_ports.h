// The fleet that benchmarks of requests serve.
#pragma once

#include <string>

/// The text of a fleet: two-port converged cards, with a storage and an Ethernet function and a module in each port.
/// @param storageFacts, ethernetFacts members of the functions: "facts": {...} and a comma, or nothing
inline std::string fleetOf(int ports, const std::string& storageFacts = {}, const std::string& ethernetFacts = {}) {
    const std::string port = R"({"transceiver": {"serialNumber": "MSR{n}P"}, "ethernet": {)" + ethernetFacts + R"(},
        "storage": {)" + storageFacts +
                             R"("pciDeviceId": "0xA127", "optionRom": {"biosVersion": "3.31", "firmware": "7.2.4"},
        "vpd": {"productIdentifier": "Converged adapter", "readOnly": {"PN": "MC1020-2", "SN": "MC1020S{n}", "MN": "1077",
        "V1": "6.31", "V3": "7.02.04", "V4": "3.31", "RM": "1.2.3", "FN": "49Y3701"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MC1020S{n}", "modelName": "MC1020", "ports": [)" + port + ", " + port + "]}]}";
}

/// The same with what a host knows of its ports beside the contract.
inline std::string fleetWithFactsOf(int ports) {
    const std::string both = R"("pciAddress": "0000:5e:00.0", "pciSlot": "3", "numaNode": 1,
        "adapterMaker": "Example Networks", "driverName": "quadnic", "pcieLanes": 16, "maxPcieLanes": 16,
        "pcieLaneSpeed": 16000000000, "maxPcieLaneSpeed": 16000000000, "linkSpeed": 100000000000,
        "maxLinkSpeed": 100000000000, "supportedLinkSpeeds": [25000000000, 50000000000, 100000000000])";
    const std::string storage = R"("facts": {"interfaceName": "host7", "fabricPortId": "0A0100",
        "fabricName": "1000000533A1B2C3", "remotePorts": ["2100000200000001: FCP Target, Online, 0A0200"], )";
    const std::string ethernet = R"("facts": {"interfaceName": "eth0", "autoNegotiation": true, "duplexMode": "full",
        "totalReceivedBytes": 5000000000000, "totalTransmittedBytes": 4000000000000,
        "totalReceivedPackets": 7000000000, "totalTransmittedPackets": 6000000000, )";
    return fleetOf(ports, storage + both + "}, ", ethernet + both + "}");
}
