// What transceiver modules tell, as metrics in base units.
#pragma once

#include "cimhost/metrics/exposition.h"
#include "optics/module.h"

#include <vector>

namespace cimhost::metrics {

struct ModuleSamples {
    Labels labels; ///< of the jack; no two alike
    const optics::Module* told;
};

/// Readings, limits and how both compare. Of several lanes the worst is told. What a module does not tell is left out.
void writeModuleReadings(Exposition& out, const std::vector<ModuleSamples>& modules);

} // namespace cimhost::metrics
