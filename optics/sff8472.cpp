#include "optics/sff8472.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "optics/calibration.h"
#include "optics/codes.h"

namespace optics {

namespace {

constexpr std::size_t serialIdSize = 96;

/// Readings end before byte 106, status at 110, flags at 117.
constexpr std::size_t readingsEnd = 106;
constexpr std::size_t statusByte = 110;
constexpr std::size_t flagsEnd = 118;
constexpr std::size_t diagnosticsChecksum = 95;

/// A0h 92 and 93.
constexpr std::size_t diagnosticsType = 92;
constexpr std::size_t enhancedOptions = 93;

/// Where a quantity stands on page A2h. A flag pair is a bit for "high" with the one for "low" below it.
struct Quantity {
    std::size_t thresholds;
    std::size_t reading;
    std::size_t calibration;
    std::size_t alarmByte;
    unsigned highBit;
    Scale scale;
    double lowest;  ///< what the standard's words can tell, calibrated or not, in the unit of the scale
    double highest; ///< a step above the highest word
};

constexpr std::size_t warningsBehindAlarms = 4;

// clang-format off
constexpr Quantity temperature  { 0,  96, 84, 112, 7, celsiusScale,     -128, 128     };
constexpr Quantity supply       { 8,  98, 88, 112, 5, voltScale,        0,    6.5536};
constexpr Quantity bias         {16, 100, 76, 112, 3, milliampereScale, 0,    131.072};
constexpr Quantity transmitPower{24, 102, 80, 112, 1, milliwattScale,   0,    6.5536};
constexpr Quantity receivePower {32, 104, 56, 113, 7, milliwattScale,   0,    6.5536};
// clang-format on

constexpr IdentityPlaces places{0, 20, 37, 40, 56, 4, 68, 84};

/// The serial ID, as far as it can be told; its checksum decides about the numbers.
Identity decodeIdentity(Memory page, bool checksumIsRight) {
    Identity identity = textsAt(page, places);
    if (!checksumIsRight) return identity;

    identity.formFactor = formFactorName(identity.identifier);
    identity.connector = connectorName(byteAt(page, 2));
    identity.standard = sfpStandardName(page);
    identity.mediumLength = fibreChannelLengthName(byteAt(page, 7));
    identity.fibreChannelGigabits = fastestFibreChannelGigabits(byteAt(page, 10));
    const bool isCable = bitAt(page, 8, 2) || bitAt(page, 8, 3);
    const bool isTwistedPair = bitAt(page, 6, 3) || byteAt(page, 2) == 0x22;
    identity.copper = isCable || isTwistedPair;
    if (!identity.copper && wordAt(page, 60) != 0) identity.wavelengthNanometres = wordAt(page, 60);
    const auto rate = byteAt(page, 12) == 0xFF ? byteAt(page, 66) * 250U : byteAt(page, 12) * 100U;
    if (rate != 0) identity.bitRateMegabaud = rate;
    return identity;
}

/// Turns the raw words of page A2h into physical units.
class Diagnostics {
public:
    Diagnostics(Memory page, Calibration calibration, bool constantsAreRight, bool hasFlags, Findings& findings)
        : page_(page), calibration_(calibration), constantsAreRight_(constantsAreRight), hasFlags_(hasFlags),
          findings_(findings) {}

    /// @param readable whether the readings themselves are valid.
    Monitor monitor(const Quantity& quantity, bool readable) const {
        Monitor monitor;
        if (!isMeasured(page_, quantity.reading, quantity.thresholds)) return monitor;
        if (hasFlags_) monitor.flags = flags(quantity);
        if (calibration_ == Calibration::Internal) return internal(quantity, readable, monitor);
        if (!constantsAreRight_) return monitor;
        if (quantity.calibration == receivePower.calibration)
            return calibrated(quantity, polynomialAt(page_, quantity.calibration), readable, monitor);
        return calibrated(quantity, lineAt(page_, quantity.calibration), readable, monitor);
    }

private:
    Monitor internal(const Quantity& quantity, bool readable, Monitor monitor) const {
        if (readable) monitor.reading = scaledAt(page_, quantity.reading, quantity.scale);
        if (constantsAreRight_)
            monitor.thresholds = thresholdsAt(page_, quantity.thresholds, quantity.scale, findings_);
        return monitor;
    }

    /// Thresholds are raw words, too, and read like the readings.
    template <typename Curve>
    Monitor calibrated(const Quantity& quantity, const std::optional<Curve>& curve, bool readable,
                       Monitor monitor) const {
        if (!curve) {
            findings_.add(Finding::CalibrationUnusable);
            return monitor;
        }
        if (readable) monitor.reading = value(quantity, *curve, quantity.reading);
        if (!hasThresholdsAt(page_, quantity.thresholds)) return monitor;
        std::array<std::optional<double>, 4> limits;
        for (std::size_t i = 0; i < limits.size(); ++i)
            limits[i] = value(quantity, *curve, quantity.thresholds + 2 * i);
        if (std::all_of(limits.begin(), limits.end(), [](const auto& limit) { return limit.has_value(); }))
            monitor.thresholds = orderedThresholds({*limits[0], *limits[1], *limits[2], *limits[3]}, findings_);
        return monitor;
    }

    template <typename Curve>
    std::optional<double> value(const Quantity& quantity, const Curve& curve, std::size_t offset) const {
        const double raw = quantity.scale.hasSign ? signedWordAt(page_, offset) : wordAt(page_, offset);
        const auto value = valueAt(curve, raw) / quantity.scale.stepsPerUnit;
        if (std::isfinite(value) && value <= quantity.highest && (value >= quantity.lowest || quantity.lowest == 0))
            return std::max(value, quantity.lowest);
        findings_.add(Finding::ReadingOutOfRange);
        return std::nullopt;
    }

    Flags flags(const Quantity& quantity) const {
        const auto alarm = quantity.alarmByte, warning = quantity.alarmByte + warningsBehindAlarms;
        return {bitAt(page_, alarm, quantity.highBit), bitAt(page_, alarm, quantity.highBit - 1),
                bitAt(page_, warning, quantity.highBit), bitAt(page_, warning, quantity.highBit - 1)};
    }

    Memory page_;
    Calibration calibration_;
    bool constantsAreRight_;
    bool hasFlags_;
    Findings& findings_;
};

/// What byte 92 declares. A finding says why there are no diagnostics, or none that can be read.
std::optional<Finding> obstacle(Memory identityPage, Memory diagnosticsPage) {
    if (!bitAt(identityPage, diagnosticsType, 6)) return Finding::NoDiagnostics;
    if (bitAt(identityPage, diagnosticsType, 2)) return Finding::AddressChangeRequired;
    if (bitAt(identityPage, diagnosticsType, 5) == bitAt(identityPage, diagnosticsType, 4))
        return Finding::CalibrationNotTold;
    const auto told = partOf(diagnosticsPage, 0, readingsEnd);
    if (told.size() < readingsEnd || consistsOf(told, 0) || consistsOf(told, 0xFF)) return Finding::DiagnosticsMissing;
    return std::nullopt;
}

void decodeLaneStatus(Memory identityPage, Memory diagnosticsPage, Lane& lane) {
    if (diagnosticsPage.size() <= statusByte) return;
    if (bitAt(identityPage, enhancedOptions, 4)) lane.receiveLoss = bitAt(diagnosticsPage, statusByte, 1);
    if (bitAt(identityPage, enhancedOptions, 5)) lane.transmitFault = bitAt(diagnosticsPage, statusByte, 2);
    if (bitAt(identityPage, enhancedOptions, 6)) lane.transmitDisabled = bitAt(diagnosticsPage, statusByte, 7);
}

void decodeDiagnostics(Memory identityPage, Memory diagnosticsPage, Module& module) {
    if (const auto finding = obstacle(identityPage, diagnosticsPage)) {
        module.findings.add(*finding);
        return;
    }
    module.calibration = bitAt(identityPage, diagnosticsType, 5) ? Calibration::Internal : Calibration::External;
    module.receivePowerKind =
        bitAt(identityPage, diagnosticsType, 3) ? ReceivePowerKind::Average : ReceivePowerKind::ModulationAmplitude;
    const bool constantsAreRight = checksumHolds(diagnosticsPage, 0, diagnosticsChecksum);
    if (!constantsAreRight) module.findings.add(Finding::DiagnosticsChecksumWrong);
    const bool isReady = !bitAt(diagnosticsPage, statusByte, 0);
    if (!isReady) module.findings.add(Finding::NotReady);
    const bool hasFlags = isReady && bitAt(identityPage, enhancedOptions, 7) && diagnosticsPage.size() >= flagsEnd;

    const Diagnostics diagnostics(diagnosticsPage, module.calibration, constantsAreRight, hasFlags, module.findings);
    module.temperatureCelsius = diagnostics.monitor(temperature, isReady);
    module.supplyVolts = diagnostics.monitor(supply, isReady);
    module.laneCount = 1;
    module.lanes[0].biasMilliamperes = diagnostics.monitor(bias, isReady);
    module.lanes[0].transmitPowerMilliwatts = diagnostics.monitor(transmitPower, isReady);
    module.lanes[0].receivePowerMilliwatts = diagnostics.monitor(receivePower, isReady);
    decodeLaneStatus(identityPage, diagnosticsPage, module.lanes[0]);
}

} // namespace

Module decodeSff8472(Memory identityPage, Memory diagnosticsPage) {
    Module module;
    if (const auto finding = silence(identityPage, serialIdSize)) {
        module.findings.add(*finding);
        return module;
    }
    module.family = Family::Sff8472;
    const bool baseIsRight = checksumHolds(identityPage, 0, 63);
    if (!baseIsRight) module.findings.add(Finding::BaseChecksumWrong);
    module.identity = decodeIdentity(identityPage, baseIsRight);
    if (!checksumHolds(identityPage, 64, 95)) {
        module.findings.add(Finding::ExtendedChecksumWrong);
        return module;
    }
    decodeDiagnostics(identityPage, diagnosticsPage, module);
    return module;
}

} // namespace optics
