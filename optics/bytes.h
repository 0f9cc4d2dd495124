// Reads values of a module's memory, bounded by what was delivered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "optics/module.h"

namespace optics {

using Memory = std::span<const std::uint8_t>;

/// The part of the memory from there on, cut at its end.
inline Memory partOf(Memory memory, std::size_t offset, std::size_t size) {
    if (offset >= memory.size()) return {};
    return memory.subspan(offset, size < memory.size() - offset ? size : memory.size() - offset);
}

/// Zero where nothing was delivered.
inline std::uint8_t byteAt(Memory memory, std::size_t offset) { return offset < memory.size() ? memory[offset] : 0; }

inline bool bitAt(Memory memory, std::size_t offset, unsigned bit) {
    return ((byteAt(memory, offset) >> bit) & 1U) != 0;
}

inline std::uint16_t wordAt(Memory memory, std::size_t offset) {
    return static_cast<std::uint16_t>(byteAt(memory, offset) << 8 | byteAt(memory, offset + 1));
}

inline std::int16_t signedWordAt(Memory memory, std::size_t offset) {
    return static_cast<std::int16_t>(wordAt(memory, offset));
}

/// Where the texts of a family's serial ID stand; they have the same widths in all, but the revision.
struct IdentityPlaces {
    std::size_t identifier;
    std::size_t vendor;
    std::size_t vendorOui;
    std::size_t partNumber;
    std::size_t revision;
    std::size_t revisionSize;
    std::size_t serialNumber;
    std::size_t dateCode;
};

/// Identifier and texts; everything else of the identity is absent.
Identity textsAt(Memory memory, const IdentityPlaces& places);

ShortText textAt(Memory memory, std::size_t offset, std::size_t size);

/// The low byte of the sum of the bytes from first up to checksum stands at checksum.
bool checksumHolds(Memory memory, std::size_t first, std::size_t checksum);

/// True for no bytes at all, too.
bool consistsOf(Memory memory, std::uint8_t value);

/// Why a memory tells nothing at all: it is empty, of zeros or of ones only, or shorter than its serial ID.
std::optional<Finding> silence(Memory memory, std::size_t serialIdSize);

/// How the 16-bit words of a quantity read: how many steps make one unit of the monitor, and whether they have a sign.
/// Dividing gives the number that is nearest to the decimal one.
struct Scale {
    double stepsPerUnit;
    bool hasSign;
};

constexpr Scale celsiusScale{256, true};
constexpr Scale voltScale{10000, false};
constexpr Scale milliampereScale{500, false};
constexpr Scale milliwattScale{10000, false};

double scaledAt(Memory memory, std::size_t offset, Scale scale);

/// The limits, if they are in order.
std::optional<Thresholds> orderedThresholds(const Thresholds& limits, Findings& findings);

/// Four words in the order high alarm, low alarm, high warning, low warning. Absent where all four are zero or all are
/// FFFFh, which is how modules leave them out, and where they are disordered.
std::optional<Thresholds> thresholdsAt(Memory memory, std::size_t offset, Scale scale, Findings& findings);

/// True where a module has filled the four words of a quantity's limits.
bool hasThresholdsAt(Memory memory, std::size_t offset);

/// Modules that do not measure a quantity leave its reading and its limits at zero.
bool isMeasured(Memory memory, std::size_t reading, std::size_t thresholds);

/// Four bits in the order high alarm, low alarm, high warning, low warning.
/// @param highest the bit of the high alarm; the others follow below it.
Flags flagsAt(Memory memory, std::size_t offset, unsigned highest);

} // namespace optics
