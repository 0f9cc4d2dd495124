// Figures of this process from the system, under the names that Prometheus' own libraries use.
#pragma once

#include "cimhost/metrics/exposition.h"

namespace cimhost::metrics {

/// Writes the figures. One that cannot be read is left out.
void writeProcess(Exposition& out);

} // namespace cimhost::metrics
