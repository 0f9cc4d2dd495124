// How much memory declarations take: what a MOF text repeats down a tree of classes must not fill the machine.
#pragma once

#include <cstddef>

#include "cimhost/model/class_declaration.h"

namespace cimhost {

/// Bytes, near enough: the members' own and their texts.
std::size_t memoryUse(const ClassContent& content) noexcept;

} // namespace cimhost
