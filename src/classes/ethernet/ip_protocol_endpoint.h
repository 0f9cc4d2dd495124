// Merolt_NIC_IPProtocolEndpoint: the addresses of each Ethernet port, as they were when the list was built.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_IPProtocolEndPoint(const char* className, const char* nameSpace, CNAPort* port);
CmpiInstance makeInstance_IPProtocolEndPoint(const char* className, const char* nameSpace, const char** properties,
                                             CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(IPProtocolEndPoint)

} // namespace merolt::ethernet
