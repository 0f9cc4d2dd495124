// The serial number of a card as its storage functions tell it: part of the keys of several classes.
#pragma once

#include "inventory/tavik.h"
#include "text/fixed_text.h"

namespace merolt::storage {

using SerialText = MeasuredText<128>;

/// A letter and five digits from three bytes of the record for chips up to index 7; for the others the serial number
/// of the vital product data, or that of the record on the few chips that have it there when the VPD could not be
/// read; else empty. Call it right after fetchAdapterVpd.
/// @param vpdStatus what fetchAdapterVpd returned.
SerialText serialText(const TAVIK_DeviceRecord* device, int vpdStatus);

} // namespace merolt::storage
