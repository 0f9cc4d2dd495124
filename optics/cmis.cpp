#include "optics/cmis.h"

#include <algorithm>
#include <array>

#include "optics/codes.h"

namespace optics {

namespace {

constexpr std::size_t upperHalf = 128;
constexpr std::size_t serialIdSize = 256;
// Bytes of an upper page count from 128.
constexpr std::size_t page1 = cmisPage1 - upperHalf;
constexpr std::size_t page2 = cmisPage2 - upperHalf;
constexpr std::size_t page11 = cmisPage11 - upperHalf;
constexpr unsigned firstCopper = 0x0A;
constexpr unsigned lastCopper = 0x0F;
constexpr unsigned reservedBiasScale = 3;

/// A quantity of each lane. Its four flags are bytes one after another, a bit a lane.
struct LaneQuantity {
    std::size_t readings;
    std::size_t thresholds;
    std::size_t flags;
    unsigned supportBit; ///< of 01h:160
    Scale scale;
    Monitor Lane::*monitor;
};

// clang-format off
constexpr std::array<LaneQuantity, 3> laneQuantities{{
    {page11 + 154, page2 + 176, page11 + 139, 1, milliwattScale,   &Lane::transmitPowerMilliwatts},
    {page11 + 170, page2 + 184, page11 + 143, 0, milliampereScale, &Lane::biasMilliamperes},
    {page11 + 186, page2 + 192, page11 + 149, 2, milliwattScale,   &Lane::receivePowerMilliwatts},
}};
// clang-format on

constexpr IdentityPlaces places{128, 129, 145, 148, 164, 2, 166, 182};

Identity decodeIdentity(Memory memory, bool checksumIsRight) {
    Identity identity = textsAt(memory, places);
    if (!checksumIsRight) return identity;
    identity.formFactor = formFactorName(identity.identifier);
    identity.connector = connectorName(byteAt(memory, 203));
    const auto technology = byteAt(memory, 212);
    identity.copper = technology >= firstCopper && technology <= lastCopper;
    return identity;
}

bool pageIsRight(Memory memory, std::size_t page, std::size_t firstSummed) {
    return !consistsOf(partOf(memory, page + upperHalf, upperHalf), 0) &&
           checksumHolds(memory, page + firstSummed, page + 255);
}

Flags laneFlags(Memory memory, std::size_t offset, unsigned lane) {
    return {bitAt(memory, offset, lane), bitAt(memory, offset + 1, lane), bitAt(memory, offset + 2, lane),
            bitAt(memory, offset + 3, lane)};
}

/// Byte 9 of the lower half has its flags the other way round: low warning, high warning, low alarm, high alarm.
Flags moduleFlags(Memory memory, unsigned highest) {
    const auto reversed = flagsAt(memory, 9, highest);
    return {reversed.lowWarning, reversed.highWarning, reversed.lowAlarm, reversed.highAlarm};
}

/// Reads what page 01h says is measured.
class Diagnostics {
public:
    Diagnostics(Memory memory, Module& module)
        : memory_(memory), thresholdsAreRight_(pageIsRight(memory, page2, upperHalf)), module_(module) {}

    void run() {
        if (!thresholdsAreRight_ && memory_.size() >= cmisPage11)
            module_.findings.add(Finding::DiagnosticsChecksumWrong);
        module_.calibration = Calibration::Internal;
        module_.receivePowerKind =
            bitAt(memory_, page1 + 151, 4) ? ReceivePowerKind::Average : ReceivePowerKind::ModulationAmplitude;
        if (bitAt(memory_, page1 + 159, 0))
            module_.temperatureCelsius = moduleMonitor(14, page2 + 128, celsiusScale, 3);
        if (bitAt(memory_, page1 + 159, 1)) module_.supplyVolts = moduleMonitor(16, page2 + 136, voltScale, 7);
        if (memory_.size() < cmisSize) return;
        for (unsigned bit = 0; bit < mostLanes; ++bit)
            if (!bitAt(memory_, 210, bit)) decodeLane(bit, module_.lanes[module_.laneCount++]);
    }

private:
    Monitor moduleMonitor(std::size_t reading, std::size_t thresholds, Scale scale, unsigned flags) const {
        return {scaledAt(memory_, reading, scale), limits(thresholds, scale), moduleFlags(memory_, flags)};
    }

    std::optional<Thresholds> limits(std::size_t offset, Scale scale) const {
        if (!thresholdsAreRight_) return std::nullopt;
        return thresholdsAt(memory_, offset, scale, module_.findings);
    }

    void decodeLane(unsigned bit, Lane& lane) const {
        for (const auto& quantity : laneQuantities) {
            const auto scale = scaleOf(quantity);
            if (!scale || !bitAt(memory_, page1 + 160, quantity.supportBit)) continue;
            lane.*quantity.monitor = {scaledAt(memory_, quantity.readings + 2 * bit, *scale),
                                      limits(quantity.thresholds, *scale), laneFlags(memory_, quantity.flags, bit)};
        }
        lane.transmitFault = bitAt(memory_, page11 + 135, bit);
        lane.receiveLoss = bitAt(memory_, page11 + 147, bit);
    }

    /// Absent for a bias whose scale is reserved.
    std::optional<Scale> scaleOf(const LaneQuantity& quantity) const {
        if (quantity.supportBit != 0) return quantity.scale;
        const auto factor = byteAt(memory_, page1 + 160) >> 3 & 3U;
        if (factor == reservedBiasScale) return std::nullopt;
        return Scale{quantity.scale.stepsPerUnit / (1U << factor), false};
    }

    Memory memory_;
    bool thresholdsAreRight_;
    Module& module_;
};

void decodeDiagnostics(Memory memory, Module& module) {
    const bool isFlat = bitAt(memory, 2, 7);
    if (isFlat || module.identity.copper) {
        module.findings.add(Finding::NoDiagnostics);
        return;
    }
    if (memory.size() < cmisPage2) {
        module.findings.add(Finding::DiagnosticsMissing);
        return;
    }
    if (!pageIsRight(memory, page1, 130)) {
        module.findings.add(Finding::ExtendedChecksumWrong);
        return;
    }
    if (wordAt(memory, page1 + 138) != 0) module.identity.wavelengthNanometres = wordAt(memory, page1 + 138) / 20.0;
    Diagnostics(memory, module).run();
}

} // namespace

Module decodeCmis(Memory memory) {
    Module module;
    if (const auto finding = silence(memory, serialIdSize)) {
        module.findings.add(*finding);
        return module;
    }
    module.family = Family::Cmis;
    const bool baseIsRight = checksumHolds(memory, 128, 222);
    if (!baseIsRight) module.findings.add(Finding::BaseChecksumWrong);
    module.identity = decodeIdentity(memory, baseIsRight);
    decodeDiagnostics(memory, module);
    return module;
}

} // namespace optics
