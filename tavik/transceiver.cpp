#include "tavik/transceiver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace tavik {

namespace {

constexpr std::size_t pageSize = 256;

/** A text of the serial ID page: padded with blanks, never terminated. */
void storePadded(Bytes& page, std::size_t offset, std::size_t width, const std::string& text) {
    for (std::size_t i = 0; i < width; ++i)
        page[offset + i] = i < text.size() ? static_cast<std::uint8_t>(text[i]) : static_cast<std::uint8_t>(' ');
}

void storeBigEndian(Bytes& page, std::size_t offset, int value) {
    page[offset] = static_cast<std::uint8_t>(static_cast<unsigned>(value) >> 8);
    page[offset + 1] = static_cast<std::uint8_t>(value);
}

/** The low byte of the sum of the bytes from first up to, and without, end; it stands right behind them. */
void storeChecksum(Bytes& page, std::ptrdiff_t first, std::ptrdiff_t end) {
    const auto sum = std::accumulate(page.begin() + first, page.begin() + end, 0U);
    page[static_cast<std::size_t>(end)] = static_cast<std::uint8_t>(sum);
}

/** A reading as the number of its steps; beyond what the 16 bits hold it stays at the limit. */
int steps(double reading, double step, int lowest, int highest) {
    const double count = std::round(reading / step);
    if (!(count > lowest)) return lowest;
    return count < highest ? static_cast<int>(count) : highest;
}

int signedSteps(double reading, double step) {
    return steps(reading, step, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max());
}

int unsignedSteps(double reading, double step) {
    return steps(reading, step, 0, std::numeric_limits<std::uint16_t>::max());
}

struct Quantity {
    std::size_t thresholds; ///< where high alarm, low alarm, high warning and low warning stand
    std::size_t reading;    ///< where the reading stands
    double step;
    double limits[4];
};

// Thresholds of a common short-range SFP+ module.
// clang-format off
constexpr Quantity temperature  {  0,  96, 1.0 / 256, { 75.0,   -5.0,   70.0,   0.0   } };
constexpr Quantity supply       {  8,  98, 0.0001,    {  3.63,   2.97,   3.465, 3.135 } };
constexpr Quantity bias         { 16, 100, 0.002,     { 11.8,    4.0,   10.8,   5.0   } };
constexpr Quantity transmitPower{ 24, 102, 0.0001,    {  0.8318, 0.2512, 0.6607, 0.3162 } };
constexpr Quantity receivePower { 32, 104, 0.0001,    {  1.0,    0.01,   0.7943, 0.0158 } };
// clang-format on

void storeUnsigned(Bytes& page, const Quantity& quantity, double reading) {
    for (std::size_t i = 0; i < 4; ++i)
        storeBigEndian(page, quantity.thresholds + 2 * i, unsignedSteps(quantity.limits[i], quantity.step));
    storeBigEndian(page, quantity.reading, unsignedSteps(reading, quantity.step));
}

void storeSigned(Bytes& page, const Quantity& quantity, double reading) {
    for (std::size_t i = 0; i < 4; ++i)
        storeBigEndian(page, quantity.thresholds + 2 * i, signedSteps(quantity.limits[i], quantity.step));
    storeBigEndian(page, quantity.reading, signedSteps(reading, quantity.step));
}

/** Calibration constants of a module that calibrates itself: every slope is 1, every offset 0. */
void storeCalibration(Bytes& page) {
    page[68] = 0x3F; // first-order coefficient of the receive power, a big endian float: 3F 80 00 00 is 1.0
    page[69] = 0x80;
    for (const std::size_t slope : {76U, 80U, 84U, 88U})
        storeBigEndian(page, slope, 0x0100);
}

} // namespace

Bytes encodeTransceiverIdentity(const TransceiverIdentity& identity) {
    Bytes page(pageSize, 0);
    page[0] = identity.identifier;
    page[1] = 0x04; // the module is described by these pages alone
    page[2] = identity.connector;
    std::copy(identity.compliance.begin(), identity.compliance.end(), page.begin() + 3);
    page[11] = 0x06; // 64B/66B
    page[12] = static_cast<std::uint8_t>(std::min<std::uint32_t>(identity.bitRateMegabits / 100, 255));
    page[16] = 8;  // 80 m over 50 micrometre fibre, in units of 10 m
    page[17] = 3;  // 30 m over 62.5 micrometre fibre
    page[19] = 30; // 300 m over OM3 fibre
    storePadded(page, 20, 16, identity.vendor);
    std::copy(identity.vendorOui.begin(), identity.vendorOui.end(), page.begin() + 37);
    storePadded(page, 40, 16, identity.partNumber);
    storePadded(page, 56, 4, identity.revision);
    storeBigEndian(page, 60, identity.wavelengthNanometres);
    storeChecksum(page, 0, 63);

    page[65] = 0x1A; // transmitter can be disabled, its faults and a lost signal are told
    storePadded(page, 68, 16, identity.serialNumber);
    storePadded(page, 84, 8, identity.dateCode);
    if (identity.hasDiagnostics) {
        page[92] = 0x68; // on page A2, calibrated by the module, receive power is an average
        page[93] = 0xF0;
        page[94] = 0x05; // revision 11.0 of the layout
    }
    storeChecksum(page, 64, 95);
    return page;
}

Bytes encodeTransceiverReadings(const TransceiverReadings& readings) {
    Bytes page(pageSize, 0);
    storeSigned(page, temperature, readings.temperatureCelsius);
    storeUnsigned(page, supply, readings.supplyVolts);
    storeUnsigned(page, bias, readings.biasMilliamperes);
    storeUnsigned(page, transmitPower, readings.transmitMilliwatts);
    storeUnsigned(page, receivePower, readings.receiveMilliwatts);
    storeCalibration(page);
    storeChecksum(page, 0, 95);
    return page;
}

Transceiver makeTransceiver(const TransceiverIdentity& identity, const TransceiverReadings& readings) {
    return {encodeTransceiverIdentity(identity), encodeTransceiverReadings(readings)};
}

} // namespace tavik
