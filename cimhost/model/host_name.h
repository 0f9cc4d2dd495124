// What this machine is called.
#pragma once

#include <string>

namespace cimhost {

/// As the system reports it; "localhost" where it does not.
std::string hostName();

} // namespace cimhost
