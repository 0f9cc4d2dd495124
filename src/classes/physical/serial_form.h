// The two forms of a card's serial number: an ordinary text, and an OEM's form of 22 characters that begins with "11S"
// and holds a part number and a short serial number.
#pragma once

#include "text/fixed_text.h"

#include <string_view>

namespace merolt::physical {

/// Trims the text in place and tells whether it is in the OEM's form.
bool isIBMSerialNumber(char* text);

/// The short serial number of the OEM's form, the trimmed text of any other; in a buffer that the next call
/// overwrites. The text itself is left alone.
const char* getDisplaySerialNumber(const char* text);

/// The seven characters behind "11S". @param serialNumber in the OEM's form.
FixedText<8> oemPartNumber(std::string_view serialNumber);

/// What makers a card shows.
constexpr const char* meroltManufacturer = "Merolt Corporation";
constexpr const char* oemManufacturer = "IBM";

} // namespace merolt::physical
