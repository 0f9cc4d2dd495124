#include "optics/bytes.h"

#include <algorithm>

namespace optics {

ShortText textAt(Memory memory, std::size_t offset, std::size_t size) {
    const auto field = partOf(memory, offset, size);
    return {field.data(), field.size()};
}

Identity textsAt(Memory memory, const IdentityPlaces& places) {
    Identity identity;
    identity.identifier = byteAt(memory, places.identifier);
    identity.vendor = textAt(memory, places.vendor, 16);
    identity.partNumber = textAt(memory, places.partNumber, 16);
    identity.revision = textAt(memory, places.revision, places.revisionSize);
    identity.serialNumber = textAt(memory, places.serialNumber, 16);
    identity.dateCode = textAt(memory, places.dateCode, 8);
    for (std::size_t i = 0; i < identity.vendorOui.size(); ++i)
        identity.vendorOui[i] = byteAt(memory, places.vendorOui + i);
    return identity;
}

bool checksumHolds(Memory memory, std::size_t first, std::size_t checksum) {
    if (memory.size() <= checksum) return false;
    unsigned sum = 0;
    for (std::size_t at = first; at < checksum; ++at)
        sum += memory[at];
    return (sum & 0xFF) == memory[checksum];
}

bool consistsOf(Memory memory, std::uint8_t value) {
    return std::all_of(memory.begin(), memory.end(), [value](std::uint8_t byte) { return byte == value; });
}

std::optional<Finding> silence(Memory memory, std::size_t serialIdSize) {
    if (consistsOf(memory, 0)) return Finding::NoMemory;
    if (consistsOf(memory, 0xFF)) return Finding::OnesOnly;
    if (memory.size() < serialIdSize) return Finding::MemoryTooShort;
    return std::nullopt;
}

double scaledAt(Memory memory, std::size_t offset, Scale scale) {
    return scale.hasSign ? signedWordAt(memory, offset) / scale.stepsPerUnit
                         : wordAt(memory, offset) / scale.stepsPerUnit;
}

std::optional<Thresholds> orderedThresholds(const Thresholds& limits, Findings& findings) {
    if (limits.lowAlarm <= limits.lowWarning && limits.lowWarning < limits.highWarning &&
        limits.highWarning <= limits.highAlarm)
        return limits;
    findings.add(Finding::ThresholdsDisordered);
    return std::nullopt;
}

bool hasThresholdsAt(Memory memory, std::size_t offset) {
    const auto words = partOf(memory, offset, 8);
    return words.size() == 8 && !consistsOf(words, 0) && !consistsOf(words, 0xFF);
}

std::optional<Thresholds> thresholdsAt(Memory memory, std::size_t offset, Scale scale, Findings& findings) {
    if (!hasThresholdsAt(memory, offset)) return std::nullopt;
    const auto limit = [&](std::size_t index) { return scaledAt(memory, offset + 2 * index, scale); };
    return orderedThresholds({limit(0), limit(1), limit(2), limit(3)}, findings);
}

bool isMeasured(Memory memory, std::size_t reading, std::size_t thresholds) {
    return wordAt(memory, reading) != 0 || hasThresholdsAt(memory, thresholds);
}

Flags flagsAt(Memory memory, std::size_t offset, unsigned highest) {
    return {bitAt(memory, offset, highest), bitAt(memory, offset, highest - 1), bitAt(memory, offset, highest - 2),
            bitAt(memory, offset, highest - 3)};
}

} // namespace optics
