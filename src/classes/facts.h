// The facts beside the contract as properties: what the host really has, where the management library tells it.
#pragma once

#include "inventory/fact_row.h"
#include "inventory/tavik.h"

#include "CmpiInstance.h"

namespace merolt {

/// Sets what the library tells of a storage function, behind everything else of the instance. A class that shows none
/// of the listed properties asks the library for nothing.
/// @param device may be null. It is read only if the library offers facts. @param properties the request's list, or
/// null.
void setStorageFacts(CmpiInstance& instance, FactClass cls, const TAVIK_DeviceRecord* device, const char** properties);

/// The same of an Ethernet function. @param port null sets nothing.
void setEthernetFacts(CmpiInstance& instance, FactClass cls, const TAVIK_PortProperties* port, const char** properties);

} // namespace merolt
