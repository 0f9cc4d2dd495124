// Merolt_NIC_IPProtocolEndpointCapabilities: what the IP endpoint of each Ethernet port can do.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_IPProtocolEndPointCapabilities(const char* className, const char* nameSpace, CNAPort* port);
CmpiInstance makeInstance_IPProtocolEndPointCapabilities(const char* className, const char* nameSpace,
                                                         const char** properties, CNAPort* port);
/// getInstance hands the instance out whatever returnInstance says.
DECLARE_REQUEST_FUNCTIONS(IPProtocolEndPointCapabilities)

} // namespace merolt::ethernet
