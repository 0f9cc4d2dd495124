// Recognises mezzanine adapters by their PCI subsystem: their transceivers count as good whatever kind they report.
#pragma once

#include "inventory/tavik.h"

namespace merolt::physical {

/// @return 1 or 0; 0 for a null device.
int isMezzanineAdapter(const TAVIK_DeviceRecord* device);

} // namespace merolt::physical
