// The text fields of a transceiver's serial ID page (SFF-8472), as both functions of a card publish them.
#pragma once

#include "text/fixed_text.h"

#include <cstdint>

namespace merolt {

struct SFPField {
    FixedText<64> header;       ///< stays empty
    FixedText<32> Manufacturer; ///< SFF-8472 bytes 20 to 35
    FixedText<32> SerialNumber; ///< SFF-8472 bytes 68 to 83
    FixedText<32> PartNumber;   ///< SFF-8472 bytes 40 to 55
};

/// Takes the fields that the delivered bytes reach, without the blanks that fill them; others keep their text.
/// @param size delivered bytes of the buffer.
void Parse_Transceiver_Data(const std::uint8_t* buffer, std::uint32_t size, SFPField& sfp);

void logTransceiverTexts(const SFPField& sfp);

} // namespace merolt
