// What this machine is called.
#pragma once

#include <string>
#include <string_view>

namespace cimhost {

/// As the system reports it; "localhost" where it does not.
std::string hostName();

/// Whether that is what every machine can call itself: an address that leads back to it, or "localhost".
bool isLoopbackName(std::string_view name);

} // namespace cimhost
