// The versions in a function's option ROM, as texts with their labels.
#pragma once

#include "inventory/tavik.h"
#include "text/fixed_text.h"

namespace merolt::storage {

using OptionRomStore = MeasuredText<128>;

extern OptionRomStore g_optionRomBiosVersion;
extern OptionRomStore g_optionRomFCodeVersion;
extern OptionRomStore g_optionRomEfiVersion;
extern OptionRomStore g_optionRomFirmwareVersion;

void clearOptionRomVersions();

/// Fills the four stores; leaves them alone for chips below index 6, which have no option ROM record.
void getOptionRomVersions(TAVIK_DeviceRecord* device);

} // namespace merolt::storage
