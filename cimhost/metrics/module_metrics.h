// The readings of transceiver modules as metrics, in base units.
#pragma once

#include "cimhost/metrics/exposition.h"
#include "optics/module.h"

#include <vector>

namespace cimhost::metrics {

struct ModuleSamples {
    Labels labels; ///< of the jack; no two alike
    const optics::Module* told;
};

/// Writes readings, limits, and how far each reading is beyond its limits. Of several lanes the worst one counts.
/// Values that a module does not have are left out.
void writeModuleReadings(Exposition& out, const std::vector<ModuleSamples>& modules);

} // namespace cimhost::metrics
