// A fact that the provider knows, as a row of fact_table.h.
#pragma once

#include "inventory/fact_calls.h"

#include <cstddef>
#include <string_view>

namespace merolt {

/// Classes that show facts, as bits.
enum FactClass : unsigned {
    FactOfFCPort = 1U << 0,
    FactOfEthernetPort = 1U << 1,
    FactOfNetworkPort = 1U << 2,
    FactOfStorageController = 1U << 3,
    FactOfNicController = 1U << 4,
    FactOfFCPortStatistics = 1U << 5,
};

enum class FactCount { one, list };

struct FactRow {
    std::string_view name; ///< in an answer of the library, and in a fleet file
    const char* property;
    TavikFactType type; ///< string, uint64 or boolean
    FactCount count;
    const char* unit; ///< of a number, as PUnit writes it; null where it has none
    TavikFactGroup group;
    unsigned classes; ///< FactClass bits
};

/// What storage functions tell, and what Ethernet functions tell.
constexpr unsigned factsOfStorage = FactOfFCPort | FactOfStorageController | FactOfFCPortStatistics;
constexpr unsigned factsOfEthernet = FactOfEthernetPort | FactOfNetworkPort | FactOfNicController;

/// The largest text of a fact, and the most values of a list.
constexpr std::size_t longestFact = 1024;
constexpr std::size_t mostFactValues = 8192;

} // namespace merolt
