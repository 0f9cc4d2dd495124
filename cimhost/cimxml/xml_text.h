// Text on its way into an XML document: escaped where XML needs it, and never anything that XML 1.0 forbids.
#pragma once

#include "cimhost/byte_buffer.h"

#include <string_view>

namespace cimhost::cimxml {

/// Appends text as an element's content. Bytes that are no UTF-8, control characters, surrogates and U+FFFE and U+FFFF
/// become U+FFFD each.
void appendText(ByteBuffer& out, std::string_view text);

/// The same for a value between double quotes.
void appendAttributeText(ByteBuffer& out, std::string_view text);

/// One UTF-16 unit as text; a lone surrogate becomes U+FFFD.
void appendCharacter(ByteBuffer& out, char16_t character);

} // namespace cimhost::cimxml
