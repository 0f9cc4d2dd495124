// Merolt_NIC_LANEndpoint: the LAN endpoint of each Ethernet port.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_LANEndPoint(const char* className, const char* nameSpace, CNAPort* port);
CmpiInstance makeInstance_LANEndPoint(const char* className, const char* nameSpace, const char** properties,
                                      CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(LANEndPoint)

} // namespace merolt::ethernet
