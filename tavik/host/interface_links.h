// All network interfaces in one answer of the kernel (RTM_GETLINK of rtnetlink): who they are and whether they are up.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/model.h"

namespace tavik::host {

/** Numbers are the kernel's. Everything but the last two fields is what an interface is, and tells it from another one
 *  in its place. */
struct InterfaceLink {
    std::uint32_t index = 0;
    std::string name;
    std::uint16_t type = 0;  ///< ARPHRD_
    std::uint32_t flags = 0; ///< IFF_
    std::string address;     ///< as in /sys; empty where there is none
    std::uint32_t master = 0;
    std::uint32_t lower = 0;
    std::string portName;              ///< as the switch of a card calls it
    std::uint8_t operationalState = 0; ///< IF_OPER_
    bool carrier = false;

    bool operator==(const InterfaceLink&) const = default;
};

/** The word of /sys for an operational state. */
std::string operationalStateName(std::uint8_t state);

/** Asks the running kernel, without the counters. */
Attribute<std::vector<InterfaceLink>> dumpInterfaceLinks();

/** A line each: INDEX NAME TYPE FLAGS ADDRESS MASTER LOWER STATE CARRIER PORT-NAME, "-" for an empty text. */
std::string formatInterfaceLinks(const std::vector<InterfaceLink>& links);

/** Absent if any line is not of that form, or the last one has no end: a part of the interfaces is not all of them. */
Attribute<std::vector<InterfaceLink>> parseInterfaceLinks(const std::string& lines);

} // namespace tavik::host
