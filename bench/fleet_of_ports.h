// The fleet that benchmarks of requests serve.
#pragma once

#include <string>

/// The text of a fleet: two-port converged cards, with a storage and an Ethernet function and a module in each port.
inline std::string fleetOf(int ports) {
    const std::string port = R"({"transceiver": {"serialNumber": "MSR{n}P"}, "ethernet": {},
        "storage": {"pciDeviceId": "0xA127", "optionRom": {"biosVersion": "3.31", "firmware": "7.2.4"},
        "vpd": {"productIdentifier": "Converged adapter", "readOnly": {"PN": "MC1020-2", "SN": "MC1020S{n}", "MN": "1077",
        "V1": "6.31", "V3": "7.02.04", "V4": "3.31", "RM": "1.2.3", "FN": "49Y3701"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MC1020S{n}", "modelName": "MC1020", "ports": [)" + port + ", " + port + "]}]}";
}
