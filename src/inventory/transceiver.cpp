#include "inventory/transceiver.h"

#include "log/log.h"

#include <cstring>

namespace merolt {

namespace {

/// A field of 16 characters without the blanks at its end, if it is filled to its end with them.
void takeField(const std::uint8_t* field, FixedText<32>& text) {
    constexpr std::size_t width = 16;
    const char* characters = reinterpret_cast<const char*>(field);
    std::size_t length = strnlen(characters, width);
    if (length == width) {
        while (length > 0 && characters[length - 1] == ' ')
            --length;
    }
    text.assign({characters, length});
}

} // namespace

void Parse_Transceiver_Data(const std::uint8_t* buffer, std::uint32_t size, SFPField& sfp) {
    if (size >= 36) takeField(buffer + 20, sfp.Manufacturer);
    if (size >= 56) takeField(buffer + 40, sfp.PartNumber);
    if (size >= 84) takeField(buffer + 68, sfp.SerialNumber);
}

void logTransceiverTexts(const SFPField& sfp) {
    DEBUG_LOG("SFPField.PartNumber:   %s", sfp.PartNumber.text());
    DEBUG_LOG("SFPField.SerialNumber: %s", sfp.SerialNumber.text());
    DEBUG_LOG("SFPFIELD.Manufacturer: %s", sfp.Manufacturer.text());
}

} // namespace merolt
