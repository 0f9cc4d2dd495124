// What class declarations tell of associations: which classes can be associated, and through which associations.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/model/class_repository.h"

#include <vector>

namespace cimhost {

/// The associations of the source's namespace that have a reference to the source or to one of its ancestors, in the
/// order of their declaration. Of the filter, its association class and its role count.
std::vector<const ClassDeclaration*> referenceClasses(const ClassRepository& repository, const ClassDeclaration& source,
                                                      const AssociationFilter& filter);

/// The classes to which the other references of those associations lead, each once. The whole filter counts.
std::vector<const ClassDeclaration*> associatorClasses(const ClassRepository& repository,
                                                       const ClassDeclaration& source, const AssociationFilter& filter);

} // namespace cimhost
