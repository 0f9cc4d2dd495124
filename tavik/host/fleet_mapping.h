// Brings the facts of the host into the plain description of adapters that the library serves.
#pragma once

#include <cstdint>
#include <vector>

#include "tavik/host/host_facts.h"
#include "tavik/host/pci_names.h"
#include "tavik/model.h"

namespace tavik::host {

/** All cards. What is absent stays empty or zero, as callers of the library expect it. */
Fleet describeFleet(const HostFacts& facts, const PciNames& names);

// Single answers, for calls that speak of the host as it is now.

Link describeLink(const HostLink& link);
PortProperty describePortProperty(const FibreChannelLink& link, bool hasTransceiver);
/** Counters of 32 bits, as the records have them: the low bits, so that differences hold over the wrap. */
Statistics describeStatistics(const Counters& counters);
/** The linkage of a Fibre Channel function that runs over an interface of this current address. */
FCoELinkage describeLinkage(const Attribute<WorldWideName>& portName, const Attribute<std::uint32_t>& portId,
                            const Attribute<MacAddress>& interfaceAddress);

/** Handle of a Fibre Channel function, never 0; its inverse gives the number of the host. */
constexpr std::uint32_t handleOfHost(std::uint32_t number) { return number + 1; }
constexpr std::uint32_t hostOfHandle(std::uint32_t handle) { return handle - 1; }

} // namespace tavik::host
