// What the system tells of this process, under the names that Prometheus' own libraries give it.
#pragma once

#include "cimhost/metrics/exposition.h"

namespace cimhost::metrics {

/// What cannot be read is left out.
void writeProcess(Exposition& out);

} // namespace cimhost::metrics
