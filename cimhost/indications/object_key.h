// A text by which two instance paths are compared.
#pragma once

#include "cimhost/broker/objects.h"

#include <string>

namespace cimhost {

/// Class and keys as one text, which is the same for every path of the same object. The order of the keys means
/// nothing. The case of names means nothing, nor that of values of keys that name a class. The namespace is no part of
/// it.
std::string keyOf(const ObjectPathObject& path);

} // namespace cimhost
