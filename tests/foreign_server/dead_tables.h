// The tables of what is gone.
#pragma once

#include "cmpift.h"

namespace foreign_server {

/// From here on every call through the broker is a breach.
void kill(CMPIBroker& dead);

} // namespace foreign_server
