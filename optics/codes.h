// Names for the codes of SFF-8024 and for the compliance codes of SFF-8472. A view is of a constant; it is empty for a
// code that is reserved, vendor specific or not known here.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "optics/bytes.h"

namespace optics {

/// SFF-8024 table 4-1.
std::string_view formFactorName(std::uint8_t identifier);

/// Which memory map a module with this identifier has: SFF-8472 for the SFP family, SFF-8636 (and SFF-8436 before it)
/// for the QSFP family up to QSFP28, CMIS for QSFP-DD, OSFP and later ones.
Family familyOf(std::uint8_t identifier);

/// SFF-8024 table 4-3.
std::string_view connectorName(std::uint8_t code);

/// Extended specification compliance codes, SFF-8024 table 4-4: those of fibre and cable modules for one and four
/// lanes.
std::string_view extendedStandardName(std::uint8_t code);

/// SFF-8472 bytes 3 to 10 and 36 (table 5-3): the fastest standard that is declared, Ethernet before Fibre Channel.
std::string_view sfpStandardName(Memory page);

/// SFF-8472 byte 7 bits 7 to 3, or SFF-8636 byte 135: the distance class of Fibre Channel.
std::string_view fibreChannelLengthName(std::uint8_t code);

/// SFF-8472 byte 10, SFF-8636 byte 138: the fastest of the declared Fibre Channel speeds, in gigabits per second.
std::optional<std::uint32_t> fastestFibreChannelGigabits(std::uint8_t code);

} // namespace optics
