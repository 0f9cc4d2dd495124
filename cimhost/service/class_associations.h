// What the class declarations alone say of associations: which classes can be associated, through which associations.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/model/class_repository.h"

#include <vector>

namespace cimhost {

/// The associations of the source's namespace that have a reference to the source's class or to one of its ancestors.
/// The filter's result class means nothing here. In the order of their declaration.
std::vector<const ClassDeclaration*> referenceClasses(const ClassRepository& repository, const ClassDeclaration& source,
                                                      const AssociationFilter& filter);

/// The classes that the other references of those associations name, each once.
std::vector<const ClassDeclaration*> associatorClasses(const ClassRepository& repository,
                                                       const ClassDeclaration& source, const AssociationFilter& filter);

} // namespace cimhost
