// Collects the memory of a transceiver module from half pages, which is how the kernel's newer call gives it.
#pragma once

#include <cstdint>
#include <functional>

#include "tavik/host/attribute.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/model.h"

namespace tavik::host {

inline constexpr std::uint8_t halfPageSize = 128;
/** Two-wire addresses as the kernel counts them: A0h and A2h are the same with the direction bit. */
inline constexpr std::uint8_t firstAddress = 0x50;
inline constexpr std::uint8_t secondAddress = 0x51;

/** 128 bytes: the lower half of the memory (offset 0), or the upper half of a page (offset 128). */
struct HalfPage {
    std::uint8_t address = firstAddress;
    std::uint8_t page = 0;
    std::uint8_t offset = 0;

    bool operator==(const HalfPage&) const = default;
};

/** Fewer bytes than were asked for count as absent. */
using HalfPageReader = std::function<Attribute<Bytes>(const HalfPage&)>;

/** Modules of several lanes: SFF-8636 with page 03h, CMIS with pages 01h, 02h and 11h of bank 0, as far as they are
 *  there. Absent for a module that does not answer, or of another family: the kernel's older call reads those as well.
 */
Attribute<ModuleMemory> readSeveralLanes(const HalfPageReader& read);

/** Modules of the SFP family: page A0, and page A2 where the module declares diagnostics and delivers them. */
Attribute<ModuleMemory> readSfp(const HalfPageReader& read);

} // namespace tavik::host
