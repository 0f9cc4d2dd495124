// The facts of a port as the management library tells them, if it offers the optional calls and the settings allow it.
#pragma once

#include "inventory/fact_row.h"
#include "inventory/tavik.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace merolt {

/// What an answer holds for one row of the table; a row that is no list has one value. One of the three is filled.
struct FactValues {
    const FactRow* row = nullptr;
    std::vector<std::string> texts;
    std::vector<std::uint64_t> numbers; ///< truths too, as 0 and 1

    bool operator==(const FactValues&) const = default;
};

/// In the order of the table, each row once. What the table does not know is passed over, and so is a value that its
/// row cannot have: of another type, a text that is empty, longer than longestFact or not printable ASCII. Of a row
/// that is no list the first value counts.
/// @return nothing where the bytes are no row of facts from their first to their last: then none of them counts.
std::vector<FactValues> decodeFacts(std::span<const std::uint8_t> answer);

/// Where findFactCalls looks: in the library that has the TAVIK_* calls, unless a test puts something else in its
/// place. Gives null for a function that is not there.
extern void* (*gFindLibraryFunction)(const char* name);

/// Looks the calls up, unless the setting Facts of /etc/merolt/cim-provider.conf is "off"; "on" is the default. Any
/// other value is told in the error log and counts as the default. Calls nothing in the library.
void findFactCalls();

/// Facts for that class among these groups; none where the library has no such call, fails, or tells what cannot be.
/// @param groups TavikFactGroup bits.
std::vector<FactValues> factsOfStoragePort(std::uint32_t handle, FactClass cls, std::uint32_t groups);
std::vector<FactValues> factsOfEthernetPort(const char* deviceName, FactClass cls, std::uint32_t groups);

/// Whether there is anybody to ask. Without the call, records that the library may have taken back are not touched.
bool offersFactsOfStoragePorts();
bool offersFactsOfEthernetPorts();

} // namespace merolt
