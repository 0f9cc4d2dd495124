// Merolt_NIC_NetworkPort: the same ports as Merolt_NIC_EthernetPort2 under another key and with the raw speed. It is
// the element that link indications name.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_NetworkPort(const char* className, const char* nameSpace, CNACard* card, CNAPort* port);
CmpiInstance makeInstance_NetworkPort(const char* className, const char* nameSpace, const char** properties,
                                      CNACard* card, CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(NetworkPort)

/// "%s_%u" of the card's serial number and the port ID.
/// @param buffer at least 256 bytes, or null for one of the module that the next such call overwrites.
const char* calcDeviceID_NetworkPort(const CNACard* card, const CNAPort* port, char* buffer);

/// The port's MAC address as twelve digits. @param buffer at least 13 bytes, or null as above.
const char* calcMACAddress_NetworkPort(const CNACard* card, const CNAPort* port, char* buffer);

} // namespace merolt::ethernet
