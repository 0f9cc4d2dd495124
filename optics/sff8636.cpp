#include "optics/sff8636.h"

#include <algorithm>
#include <array>

#include "optics/codes.h"

namespace optics {

namespace {

constexpr std::size_t upperHalf = 128;
constexpr std::size_t serialIdSize = 224;
constexpr std::size_t laneCount = 4;
/// Where page 03h starts in the memory; its own bytes count from 128.
constexpr std::size_t page3 = 512 - upperHalf;
constexpr unsigned firstCopperTechnology = 10;
/// Byte 1 of a module that follows revision 2.8 or later.
constexpr unsigned revision28 = 8;

/// A quantity of each lane: words one after another, and four flags for two lanes in a byte, the lower lane above.
struct LaneQuantity {
    std::size_t readings;
    std::size_t thresholds;
    std::size_t flags;
    Scale scale;
    Monitor Lane::*monitor;
};

// clang-format off
constexpr std::array<LaneQuantity, 3> laneQuantities{{
    {34, page3 + 176,  9, milliwattScale,   &Lane::receivePowerMilliwatts},
    {42, page3 + 184, 11, milliampereScale, &Lane::biasMilliamperes},
    {50, page3 + 192, 13, milliwattScale,   &Lane::transmitPowerMilliwatts},
}};

struct EthernetBit {
    unsigned bit;
    std::string_view name;
};

/// Byte 131, the fastest first.
constexpr std::array<EthernetBit, 7> ethernetBits{{
    {3, "40GBASE-CR4"}, {2, "40GBASE-SR4"}, {1, "40GBASE-LR4"}, {0, "40G active cable"},
    {6, "10GBASE-LRM"}, {5, "10GBASE-LR"}, {4, "10GBASE-SR"},
}};
// clang-format on

std::string_view standardOf(Memory memory) {
    if (bitAt(memory, 131, 7)) return extendedStandardName(byteAt(memory, 192));
    const auto found = std::find_if(ethernetBits.begin(), ethernetBits.end(),
                                    [memory](const EthernetBit& entry) { return bitAt(memory, 131, entry.bit); });
    return found == ethernetBits.end() ? std::string_view() : found->name;
}

constexpr IdentityPlaces places{128, 148, 165, 168, 184, 2, 196, 212};

Identity decodeIdentity(Memory memory, bool checksumIsRight) {
    Identity identity = textsAt(memory, places);
    if (!checksumIsRight) return identity;

    identity.formFactor = formFactorName(identity.identifier);
    identity.connector = connectorName(byteAt(memory, 130));
    identity.standard = standardOf(memory);
    identity.mediumLength = fibreChannelLengthName(byteAt(memory, 135));
    identity.fibreChannelGigabits = fastestFibreChannelGigabits(byteAt(memory, 138));
    identity.copper = byteAt(memory, 147) >> 4 >= firstCopperTechnology;
    if (!identity.copper && wordAt(memory, 186) != 0) identity.wavelengthNanometres = wordAt(memory, 186) / 20.0;
    const auto rate = byteAt(memory, 140) == 0xFF ? byteAt(memory, 222) * 250U : byteAt(memory, 140) * 100U;
    if (rate != 0) identity.bitRateMegabaud = rate;
    return identity;
}

void decodeLane(Memory memory, std::size_t index, bool isReady, Lane& lane, Findings& findings) {
    for (const auto& quantity : laneQuantities) {
        auto& monitor = lane.*quantity.monitor;
        if (!isMeasured(memory, quantity.readings + 2 * index, quantity.thresholds)) continue;
        monitor.thresholds = thresholdsAt(memory, quantity.thresholds, quantity.scale, findings);
        if (!isReady) continue;
        monitor.reading = scaledAt(memory, quantity.readings + 2 * index, quantity.scale);
        monitor.flags = flagsAt(memory, quantity.flags + index / 2, index % 2 == 0 ? 7 : 3);
    }
    const auto bit = static_cast<unsigned>(index);
    lane.receiveLoss = bitAt(memory, 3, bit);
    lane.transmitFault = bitAt(memory, 4, bit);
    lane.transmitDisabled = bitAt(memory, 86, bit);
    // Older modules do not measure what they transmit, and say so.
    if (!bitAt(memory, 220, 2)) lane.transmitPowerMilliwatts = {};
}

Monitor moduleMonitor(Memory memory, std::size_t reading, std::size_t thresholds, std::size_t flags, bool isReady,
                      Scale scale, Findings& findings) {
    Monitor monitor;
    if (!isMeasured(memory, reading, thresholds)) return monitor;
    monitor.thresholds = thresholdsAt(memory, thresholds, scale, findings);
    if (!isReady) return monitor;
    monitor.reading = scaledAt(memory, reading, scale);
    monitor.flags = flagsAt(memory, flags, 7);
    return monitor;
}

/// Bits of byte 220 that revision 2.8 brought; older modules measure both.
bool measures(Memory memory, unsigned bit) { return byteAt(memory, 1) < revision28 || bitAt(memory, 220, bit); }

void decodeDiagnostics(Memory memory, Module& module) {
    if (module.identity.copper) {
        module.findings.add(Finding::NoDiagnostics);
        return;
    }
    // Words of zero and of ones alike mean that nobody measures.
    const auto readings = partOf(memory, 22, 36);
    if (consistsOf(readings, 0) || consistsOf(readings, 0xFF)) {
        module.findings.add(Finding::DiagnosticsMissing);
        return;
    }
    module.calibration = Calibration::Internal;
    module.receivePowerKind = bitAt(memory, 220, 3) ? ReceivePowerKind::Average : ReceivePowerKind::ModulationAmplitude;
    const bool isReady = !bitAt(memory, 2, 0);
    if (!isReady) module.findings.add(Finding::NotReady);
    const auto told = bitAt(memory, 2, 2) ? memory.first(std::min<std::size_t>(memory.size(), 256)) : memory;
    if (measures(memory, 5))
        module.temperatureCelsius = moduleMonitor(told, 22, page3 + 128, 6, isReady, celsiusScale, module.findings);
    if (measures(memory, 4))
        module.supplyVolts = moduleMonitor(told, 26, page3 + 144, 7, isReady, voltScale, module.findings);
    module.laneCount = laneCount;
    for (std::size_t index = 0; index < laneCount; ++index)
        decodeLane(told, index, isReady, module.lanes[index], module.findings);
}

} // namespace

Module decodeSff8636(Memory memory) {
    Module module;
    if (const auto finding = silence(memory, serialIdSize)) {
        module.findings.add(*finding);
        return module;
    }
    module.family = Family::Sff8636;
    const bool baseIsRight = checksumHolds(memory, 128, 191);
    if (!baseIsRight) module.findings.add(Finding::BaseChecksumWrong);
    module.identity = decodeIdentity(memory, baseIsRight);
    if (!checksumHolds(memory, 192, 223)) {
        module.findings.add(Finding::ExtendedChecksumWrong);
        return module;
    }
    decodeDiagnostics(memory, module);
    return module;
}

} // namespace optics
