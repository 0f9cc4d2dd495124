// Values that the two Ethernet port classes publish alike.
#pragma once

#include "inventory/cna_list.h"

#include "CmpiInstance.h"

namespace merolt::ethernet {

constexpr CMPIUint64 maximumPortSpeed = 10625000000ULL; ///< bits per second
constexpr CMPIUint16 linkTechnologyEthernet = 2;
constexpr CMPIUint16 portTypeEthernet = 105;

/// The port's MAC address as twelve digits, in the buffer that all callers share.
const char* macText(const CNAPort& port);

/// Sets OperationalStatus and StatusDescriptions from the port's link state.
void setLinkStatus(CmpiInstance& instance, const CNAPort& port);

/// The port ID's low 16 bits: what fits the class's PortNumber.
CMPIUint16 portNumber(const CNAPort& port);

} // namespace merolt::ethernet
