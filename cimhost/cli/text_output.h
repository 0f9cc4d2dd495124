// Answers as text, for people: tables with the columns that matter, or every property in a list.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/cli/object_source.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/terminal.h"
#include "cimhost/service/registration.h"

#include <string>
#include <vector>

namespace cimhost::cli {

/// One line an instance. asked is the class that was enumerated, null where it is not declared here; where instances
/// are of several classes, the first column tells which.
std::string tableOf(const std::vector<const InstanceObject*>& instances, const ClassDeclaration* asked,
                    const Presentation& presentation, const Layout& layout);

/// A table for each class, under its name.
std::string tablesOf(const std::vector<const InstanceObject*>& instances, const Presentation& presentation,
                     const Layout& layout);

/// Path and every property that has a value, for each instance.
std::string listOf(const std::vector<const InstanceObject*>& instances, const Presentation& presentation);

/// One path a line.
std::string linesOf(const std::vector<const ObjectPathObject*>& paths);

/// One name a line.
std::string linesOf(const std::vector<ListedClass>& classes);

/// Name, kind and superclass of each; those that the provider serves are marked.
std::string tableOf(const std::vector<ListedClass>& classes, const Registration& registration, const Layout& layout);

} // namespace cimhost::cli
