// What a person calls an object: one line with the values that tell it from its neighbours.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/cli/presentation.h"

#include <string>

namespace cimhost::cli {

/// "card MC1020, serial number MC1020R4K00317"; class and last key where nobody chose better. Printable.
std::string labelOf(const InstanceObject& instance, const Presentation& presentation);

} // namespace cimhost::cli
