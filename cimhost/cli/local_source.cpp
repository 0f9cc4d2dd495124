#include "cimhost/cli/local_source.h"

#include <optional>

namespace cimhost::cli {

namespace {

ObjectSource::Classes listed(const std::vector<const ClassDeclaration*>& declarations) {
    ObjectSource::Classes classes;
    for (const ClassDeclaration* declaration : declarations) {
        const ClassDeclaration* superclass = declaration->superclass();
        classes.push_back({declaration->name(), superclass ? superclass->name() : std::string(), declaration});
    }
    return classes;
}

} // namespace

const ClassDeclaration* LocalSource::findClass(std::string_view nameSpace, std::string_view className) const {
    return &operations.findClass(nameSpace, className);
}

LocalSource::Instances LocalSource::enumerateInstances(RequestScope& scope, std::string_view nameSpace,
                                                       std::string_view className) {
    return operations.enumerateInstances(scope, {}, operations.findClass(nameSpace, className), true, std::nullopt);
}

LocalSource::Paths LocalSource::enumerateInstanceNames(RequestScope& scope, std::string_view nameSpace,
                                                       std::string_view className) {
    return operations.enumerateInstanceNames(scope, {}, operations.findClass(nameSpace, className));
}

const InstanceObject& LocalSource::getInstance(RequestScope& scope, const ObjectPathObject& path) {
    return operations.getInstance(scope, {}, path, std::nullopt);
}

LocalSource::Instances LocalSource::associators(RequestScope& scope, const ObjectPathObject& source,
                                                const AssociationFilter& filter) {
    return operations.associators(scope, {}, source, filter, std::nullopt);
}

LocalSource::Paths LocalSource::associatorNames(RequestScope& scope, const ObjectPathObject& source,
                                                const AssociationFilter& filter) {
    return operations.associatorNames(scope, {}, source, filter);
}

LocalSource::Instances LocalSource::references(RequestScope& scope, const ObjectPathObject& source,
                                               const AssociationFilter& filter) {
    return operations.references(scope, {}, source, filter, std::nullopt);
}

LocalSource::Paths LocalSource::referenceNames(RequestScope& scope, const ObjectPathObject& source,
                                               const AssociationFilter& filter) {
    return operations.referenceNames(scope, {}, source, filter);
}

std::vector<const ClassDeclaration*> LocalSource::declaredClasses(std::string_view nameSpace) const {
    return operations.enumerateClasses(nameSpace, std::nullopt, true);
}

LocalSource::Classes LocalSource::classes(std::string_view nameSpace) { return listed(declaredClasses(nameSpace)); }

LocalSource::Classes LocalSource::associatorClasses(std::string_view nameSpace, std::string_view className,
                                                    const AssociationFilter& filter) {
    return listed(operations.associatorClasses(nameSpace, className, filter));
}

LocalSource::Classes LocalSource::referenceClasses(std::string_view nameSpace, std::string_view className,
                                                   const AssociationFilter& filter) {
    return listed(operations.referenceClasses(nameSpace, className, filter));
}

Outcome LocalSource::invokeMethod(RequestScope& scope, const ObjectPathObject& path, const MethodDeclaration& method,
                                  const ArgsObject& arguments) {
    return operations.invokeMethod(scope, {}, path, method, arguments);
}

} // namespace cimhost::cli
