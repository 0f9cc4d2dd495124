// Makes the memory pages of a transceiver module as SFF-8472 lays them out.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tavik/model.h"

namespace tavik {

struct TransceiverIdentity {
    std::string vendor;       ///< at most 16 characters, as the other three; padded with blanks
    std::string partNumber;   ///< at most 16
    std::string revision;     ///< at most 4
    std::string serialNumber; ///< at most 16
    std::string dateCode;     ///< year, month, day and lot: at most 8
    std::array<std::uint8_t, 3> vendorOui{};
    std::uint8_t identifier = 3;                  ///< 3: SFP
    std::uint8_t connector = 7;                   ///< 7: LC
    std::array<std::uint8_t, 8> compliance{0x10}; ///< codes of bytes 3 to 10; 0x10 first: 10GBASE-SR
    std::uint32_t bitRateMegabits = 10300;        ///< nominal
    std::uint16_t wavelengthNanometres = 850;
    bool hasDiagnostics = true; ///< what the module declares
};

/** Readings of the diagnostics page, in the units of their names. */
struct TransceiverReadings {
    double temperatureCelsius = 35.0;
    double supplyVolts = 3.3;
    double biasMilliamperes = 6.0;
    double transmitMilliwatts = 0.6;
    double receiveMilliwatts = 0.5;
};

/** Page A0, 256 bytes with both checksums right. */
Bytes encodeTransceiverIdentity(const TransceiverIdentity& identity);

/** Page A2, 256 bytes, internally calibrated, with its checksum right; thresholds are those of a common SFP+. */
Bytes encodeTransceiverReadings(const TransceiverReadings& readings);

/** Both pages. */
Transceiver makeTransceiver(const TransceiverIdentity& identity, const TransceiverReadings& readings = {});

} // namespace tavik
