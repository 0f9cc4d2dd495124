#include "optics/codes.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace optics {

namespace {

struct Code {
    std::uint8_t value;
    std::string_view name;
};

template <std::size_t size>
std::string_view nameOf(const std::array<Code, size>& codes, std::uint8_t value) {
    const auto found =
        std::find_if(codes.begin(), codes.end(), [value](const Code& code) { return code.value == value; });
    return found == codes.end() ? std::string_view() : found->name;
}

// clang-format off
constexpr std::array<Code, 16> connectors{{
    {0x01, "SC"}, {0x06, "FiberJack"}, {0x07, "LC"}, {0x08, "MT-RJ"}, {0x09, "MU"}, {0x0A, "SG"},
    {0x0B, "optical pigtail"}, {0x0C, "MPO 1x12"}, {0x0D, "MPO 2x16"}, {0x20, "HSSDC II"}, {0x21, "copper pigtail"},
    {0x22, "RJ45"}, {0x23, "no separable connector"}, {0x24, "MXC 2x16"}, {0x25, "CS"}, {0x28, "MPO 1x16"},
}};

constexpr std::array<Code, 25> extendedStandards{{
    {0x01, "100G AOC or 25GAUI C2M AOC"}, {0x02, "100GBASE-SR4 or 25GBASE-SR"}, {0x03, "100GBASE-LR4 or 25GBASE-LR"},
    {0x04, "100GBASE-ER4 or 25GBASE-ER"}, {0x05, "100GBASE-SR10"}, {0x06, "100G CWDM4"}, {0x07, "100G PSM4"},
    {0x08, "100G ACC or 25GAUI C2M ACC"}, {0x0B, "100GBASE-CR4 or 25GBASE-CR CA-L"}, {0x0C, "25GBASE-CR CA-S"},
    {0x0D, "25GBASE-CR CA-N"}, {0x10, "40GBASE-ER4"}, {0x11, "4 x 10GBASE-SR"}, {0x12, "40G PSM4"},
    {0x16, "10GBASE-T"}, {0x17, "100G CLR4"}, {0x18, "100G AOC or 25GAUI C2M AOC"}, {0x19, "100G ACC or 25GAUI C2M ACC"},
    {0x1A, "100GE-DWDM2"}, {0x1C, "10GBASE-T short reach"}, {0x1D, "5GBASE-T"}, {0x1E, "2.5GBASE-T"},
    {0x20, "100G SWDM4"}, {0x25, "100GBASE-DR"}, {0x26, "100G-FR"},
}};

/// A bit of the compliance codes, the fastest standards first.
struct ComplianceBit {
    std::uint8_t byte;
    std::uint8_t bit;
    std::string_view name;
};

constexpr std::array<ComplianceBit, 17> complianceBits{{
    {3, 7, "10GBASE-ER"}, {3, 6, "10GBASE-LRM"}, {3, 5, "10GBASE-LR"}, {3, 4, "10GBASE-SR"},
    {10, 3, "32G Fibre Channel"}, {10, 5, "16G Fibre Channel"}, {10, 7, "12G Fibre Channel"}, {10, 6, "8G Fibre Channel"},
    {10, 4, "4G Fibre Channel"}, {10, 2, "2G Fibre Channel"}, {10, 0, "1G Fibre Channel"},
    {6, 3, "1000BASE-T"}, {6, 2, "1000BASE-CX"}, {6, 1, "1000BASE-LX"}, {6, 0, "1000BASE-SX"},
    {6, 5, "100BASE-FX"}, {6, 4, "100BASE-LX"},
}};

struct Identifier {
    std::uint8_t value;
    Family family;
    std::string_view name;
};

constexpr std::array<Identifier, 18> identifiers{{
    {0x01, Family::Unknown, "GBIC"}, {0x02, Family::Sff8472, "soldered module"}, {0x03, Family::Sff8472, "SFP"},
    {0x05, Family::Unknown, "XENPAK"}, {0x06, Family::Unknown, "XFP"}, {0x0A, Family::Unknown, "X2"},
    {0x0B, Family::Sff8472, "DWDM-SFP"}, {0x0C, Family::Sff8636, "QSFP"}, {0x0D, Family::Sff8636, "QSFP+"},
    {0x0E, Family::Unknown, "CXP"}, {0x11, Family::Sff8636, "QSFP28"}, {0x12, Family::Unknown, "CXP2"},
    {0x18, Family::Cmis, "QSFP-DD"}, {0x19, Family::Cmis, "OSFP"}, {0x1B, Family::Cmis, "DSFP"},
    {0x1E, Family::Cmis, "QSFP+ or later with CMIS"}, {0x1F, Family::Cmis, "SFP-DD"}, {0x20, Family::Cmis, "SFP+ with CMIS"},
}};

constexpr std::array<Code, 5> lengths{{
    {7, "very long distance"}, {4, "long distance"}, {5, "intermediate distance"}, {3, "medium distance"},
    {6, "short distance"},
}};

struct Speed {
    std::uint8_t bit;
    std::uint32_t gigabits;
};

/// Twelve gigabits (bit 7) is a speed of disks and not of adapters.
constexpr std::array<Speed, 6> speeds{{{3, 32}, {5, 16}, {6, 8}, {4, 4}, {2, 2}, {0, 1}}};
// clang-format on

const Identifier* identifierOf(std::uint8_t value) {
    const auto* found = std::find_if(identifiers.begin(), identifiers.end(),
                                     [value](const Identifier& entry) { return entry.value == value; });
    return found == identifiers.end() ? nullptr : found;
}

bool isSet(std::uint8_t code, unsigned bit) { return ((code >> bit) & 1U) != 0; }

} // namespace

std::string_view formFactorName(std::uint8_t identifier) {
    const auto* found = identifierOf(identifier);
    return found ? found->name : std::string_view();
}

Family familyOf(std::uint8_t identifier) {
    const auto* found = identifierOf(identifier);
    return found ? found->family : Family::Unknown;
}

std::string_view connectorName(std::uint8_t code) { return nameOf(connectors, code); }

std::string_view extendedStandardName(std::uint8_t code) { return nameOf(extendedStandards, code); }

std::string_view sfpStandardName(Memory page) {
    const auto extended = extendedStandardName(byteAt(page, 36));
    if (!extended.empty()) return extended;
    const auto found = std::find_if(complianceBits.begin(), complianceBits.end(),
                                    [page](const ComplianceBit& entry) { return bitAt(page, entry.byte, entry.bit); });
    return found == complianceBits.end() ? std::string_view() : found->name;
}

std::string_view fibreChannelLengthName(std::uint8_t code) {
    const auto found =
        std::find_if(lengths.begin(), lengths.end(), [code](const Code& length) { return isSet(code, length.value); });
    return found == lengths.end() ? std::string_view() : found->name;
}

std::optional<std::uint32_t> fastestFibreChannelGigabits(std::uint8_t code) {
    const auto found =
        std::find_if(speeds.begin(), speeds.end(), [code](const Speed& speed) { return isSet(code, speed.bit); });
    if (found == speeds.end()) return std::nullopt;
    return found->gigabits;
}

} // namespace optics
