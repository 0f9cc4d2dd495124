// Answers as JSON, for tools: one document on standard output.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/cli/object_source.h"
#include "cimhost/service/registration.h"

#include <string>
#include <vector>

namespace cimhost::cli {

/// [{"class": ..., "path": ..., "properties": {...}}]; a property without a value is null, a reference is its path's
/// text, a 64-bit number is a number.
std::string jsonOf(const std::vector<const InstanceObject*>& instances);

/// The same object alone.
std::string jsonOf(const InstanceObject& instance);

/// [{"class": ..., "path": ..., "keys": {...}}]
std::string jsonOf(const std::vector<const ObjectPathObject*>& paths);

/// [{"class": ..., "superclass": ..., "abstract": ..., "association": ..., "indication": ..., "served": ...}]
/// The last four are null for a class that is not declared here.
std::string jsonOf(const std::vector<ListedClass>& classes, const Registration& registration);

} // namespace cimhost::cli
