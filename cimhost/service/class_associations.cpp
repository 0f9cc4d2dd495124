#include "cimhost/service/class_associations.h"

#include <algorithm>

namespace cimhost {

namespace {

bool passes(std::string_view filter, std::string_view name) { return filter.empty() || equalNames(filter, name); }

bool passes(std::string_view filter, const ClassDeclaration& declaration) {
    return filter.empty() || declaration.isA(filter);
}

// A reference to an ancestor can hold an instance of the class as well.
bool holds(const PropertyDeclaration& reference, const ClassDeclaration& source, std::string_view role) {
    return reference.isReference() && passes(role, reference.name) && source.isA(reference.referenceClass);
}

template <typename Visitor>
void forEachReference(const ClassRepository& repository, const ClassDeclaration& source,
                      const AssociationFilter& filter, Visitor visit) {
    for (const ClassDeclaration* association : repository.classes(source.nameSpace())) {
        if (!association->isAssociation() || !passes(filter.associationClass, *association)) continue;
        for (const PropertyDeclaration& reference : association->properties()) {
            if (holds(reference, source, filter.role)) visit(*association, reference);
        }
    }
}

void addOnce(std::vector<const ClassDeclaration*>& list, const ClassDeclaration* declaration) {
    if (std::find(list.begin(), list.end(), declaration) == list.end()) list.push_back(declaration);
}

} // namespace

std::vector<const ClassDeclaration*> referenceClasses(const ClassRepository& repository, const ClassDeclaration& source,
                                                      const AssociationFilter& filter) {
    std::vector<const ClassDeclaration*> found;
    forEachReference(repository, source, filter, [&](const ClassDeclaration& association, const PropertyDeclaration&) {
        addOnce(found, &association);
    });
    return found;
}

std::vector<const ClassDeclaration*>
associatorClasses(const ClassRepository& repository, const ClassDeclaration& source, const AssociationFilter& filter) {
    std::vector<const ClassDeclaration*> found;
    forEachReference(repository, source, filter,
                     [&](const ClassDeclaration& association, const PropertyDeclaration& near) {
                         for (const PropertyDeclaration& far : association.properties()) {
                             if (&far == &near || !far.isReference() || !passes(filter.resultRole, far.name)) continue;
                             const ClassDeclaration* target = repository.find(source.nameSpace(), far.referenceClass);
                             if (target && passes(filter.resultClass, *target)) addOnce(found, target);
                         }
                     });
    return found;
}

} // namespace cimhost
