// Merolt_NIC_PortController: one Ethernet controller for each converged card, with or without ports.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

/// @param out 256 bytes, receives the DeviceID. @return out
const char* calcDeviceID_NICPortController(const CNACard* card, char* out);

CmpiObjectPath makePath_PortController(const char* className, const char* nameSpace, CNACard* card);
CmpiInstance makeInstance_PortController(const char* className, const char* nameSpace, const char** properties,
                                         CNACard* card);
DECLARE_REQUEST_FUNCTIONS(PortController)

} // namespace merolt::ethernet
