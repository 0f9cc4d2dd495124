// Objects that a test plays itself, and contexts, whose end is the server's affair.
#pragma once

#include "cmpift.h"

namespace foreign_server {

/// Passes a read on to the test's own object and translates what it says.
CMPIData readPlayed(const CMPIArgs* args, const char* name, CMPIStatus* status, const char* function);

/// A context that was prepared and never attached can be given back; another one is the server's.
CMPIStatus releaseContext(CMPIContext* context);

} // namespace foreign_server
