#include "tavik/host/diagnostics_page.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "optics/level.h"

namespace tavik::host {

namespace {

constexpr std::size_t pageSize = 256;
constexpr std::size_t warningsBehindAlarms = 4;

/** A quantity's place on page A2h: the bit of its high alarm, with that of the low one below. */
struct Quantity {
    std::size_t thresholds;
    std::size_t reading;
    std::size_t alarmByte;
    unsigned highBit;
    double step;
    bool hasSign;
};

// clang-format off
constexpr Quantity temperature  { 0,  96, 112, 7, 1.0 / 256, true};
constexpr Quantity supply       { 8,  98, 112, 5, 0.0001,    false};
constexpr Quantity bias         {16, 100, 112, 3, 0.002,     false};
constexpr Quantity transmitPower{24, 102, 112, 1, 0.0001,    false};
constexpr Quantity receivePower {32, 104, 113, 7, 0.0001,    false};
// clang-format on

void storeWord(Bytes& page, std::size_t offset, const Quantity& quantity, double value) {
    const double lowest = quantity.hasSign ? -32768 : 0, highest = quantity.hasSign ? 32767 : 65535;
    const auto steps = static_cast<int>(std::clamp(std::round(value / quantity.step), lowest, highest));
    page[offset] = static_cast<std::uint8_t>(static_cast<unsigned>(steps) >> 8);
    page[offset + 1] = static_cast<std::uint8_t>(steps);
}

void setBit(Bytes& page, std::size_t offset, unsigned bit, bool isSet) {
    if (isSet) page[offset] = static_cast<std::uint8_t>(page[offset] | 1U << bit);
}

void storeMonitor(Bytes& page, const Quantity& quantity, const optics::Monitor& monitor) {
    if (monitor.reading) storeWord(page, quantity.reading, quantity, *monitor.reading);
    if (const auto& limits = monitor.thresholds) {
        storeWord(page, quantity.thresholds, quantity, limits->highAlarm);
        storeWord(page, quantity.thresholds + 2, quantity, limits->lowAlarm);
        storeWord(page, quantity.thresholds + 4, quantity, limits->highWarning);
        storeWord(page, quantity.thresholds + 6, quantity, limits->lowWarning);
    }
    const auto flags = monitor.flags.value_or(optics::Flags{});
    const auto warningByte = quantity.alarmByte + warningsBehindAlarms;
    setBit(page, quantity.alarmByte, quantity.highBit, flags.highAlarm);
    setBit(page, quantity.alarmByte, quantity.highBit - 1, flags.lowAlarm);
    setBit(page, warningByte, quantity.highBit, flags.highWarning);
    setBit(page, warningByte, quantity.highBit - 1, flags.lowWarning);
}

/** Constants of a module that calibrates itself, as such modules have them: every slope 1, every offset 0. */
void storeCalibration(Bytes& page) {
    page[68] = 0x3F; // 1.0 as a big endian float, for the first power of the receive power
    page[69] = 0x80;
    for (const std::size_t slope : {76U, 80U, 84U, 88U})
        page[slope] = 0x01;
}

} // namespace

void setChecksum(Bytes& page, std::size_t first, std::size_t checksum, bool isRight) {
    const auto begin = page.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = page.begin() + static_cast<std::ptrdiff_t>(checksum);
    page[checksum] = static_cast<std::uint8_t>(std::accumulate(begin, end, isRight ? 0U : 1U));
}

Bytes encodeDiagnosticsPage(const optics::Module& module) {
    Bytes page(pageSize, 0);
    const auto worst = optics::worstLane(module);
    storeMonitor(page, temperature, module.temperatureCelsius);
    storeMonitor(page, supply, module.supplyVolts);
    storeMonitor(page, bias, worst.biasMilliamperes);
    storeMonitor(page, transmitPower, worst.transmitPowerMilliwatts);
    storeMonitor(page, receivePower, worst.receivePowerMilliwatts);
    storeCalibration(page);
    setBit(page, 110, 7, worst.transmitDisabled.value_or(false));
    setBit(page, 110, 2, worst.transmitFault.value_or(false));
    setBit(page, 110, 1, worst.receiveLoss.value_or(false));
    setBit(page, 110, 0, module.findings.has(optics::Finding::NotReady));
    setChecksum(page, 0, 95, !module.findings.has(optics::Finding::DiagnosticsChecksumWrong));
    return page;
}

std::uint8_t diagnosticsType(const optics::Module& module) {
    if (module.calibration == optics::Calibration::Unknown) return 0;
    return module.receivePowerKind == optics::ReceivePowerKind::Average ? 0x68 : 0x60;
}

std::uint8_t enhancedOptions(const optics::Module& module) {
    if (module.calibration == optics::Calibration::Unknown) return 0;
    const auto worst = optics::worstLane(module);
    return static_cast<std::uint8_t>(0x80 | (worst.transmitDisabled ? 0x40 : 0) | (worst.transmitFault ? 0x20 : 0) |
                                     (worst.receiveLoss ? 0x10 : 0));
}

} // namespace tavik::host
