// What tells two instance paths apart.
#pragma once

#include "cimhost/broker/objects.h"

#include <string>

namespace cimhost {

/// Class and keys as one text that is the same for the same object: names and the values of keys that name a class are
/// compared without regard to case, and the order of the keys means nothing. The namespace is no part of it.
std::string keyOf(const ObjectPathObject& path);

} // namespace cimhost
