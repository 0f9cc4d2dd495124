// Which family answers for which class: the rows that every instance request walks, in their order.
#pragma once

#include "classes/request.h"

#include <array>
#include <cstddef>

namespace merolt {

/// Rows of one chain: the first match ends the chain, and the other chains are walked all the same.
enum Chain { storageChain, storageExtentChain, scsiEndpointChain, ethernetChain, chainCount };

/// The family's three functions. A family without functions answers like a class without a row: with nothing.
struct InstanceFamily {
    EnumInstanceNames enumInstanceNames;
    EnumInstances enumInstances;
    GetInstance getInstance;
};

struct InstanceRow {
    const char* className; ///< tested with classPathIsA, so subclasses match too
    Chain chain;
    void (*refresh)(); ///< brings the family's list up to date before each of its functions; or null
    InstanceFamily family;
};

constexpr std::size_t instanceRowCount = 77;
using InstanceRows = std::array<const InstanceRow*, instanceRowCount>;

/// Rows in the order of enumerations.
const InstanceRows& enumerationRows();
/// Rows in the order of getInstance, which differs in the middle of the Ethernet chain.
const InstanceRows& getInstanceRows();

} // namespace merolt
