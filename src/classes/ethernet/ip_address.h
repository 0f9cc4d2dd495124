// Addresses of a port as text.
#pragma once

#include "inventory/tavik.h"

namespace merolt::ethernet {

/// Dotted decimal or compressed IPv6 text by the address's family; empty for null and for any other family. In a
/// buffer that the next call overwrites.
const char* formatIPAddress(const TAVIK_IPAddress* address);

/// The longest run of zero groups, the first among equals, prints as "::", also if it is a single group.
/// @param bytes 16. @param fixedWidth prints four digits a group. @param output at least 40 characters.
void formatIPv6Address(const unsigned char* bytes, bool fixedWidth, char* output);

} // namespace merolt::ethernet
