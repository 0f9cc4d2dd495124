// Merolt_NIC_EthernetPort2: each Ethernet port of each converged card.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_EthernetPort(const char* className, const char* nameSpace, CNACard* card, CNAPort* port);
CmpiInstance makeInstance_EthernetPort(const char* className, const char* nameSpace, const char** properties,
                                       CNACard* card, CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(EthernetPort)

} // namespace merolt::ethernet
