#include "cimhost/cli/remote_source.h"

#include "cimhost/model/names.h"

#include <optional>
#include <string>
#include <utility>

namespace cimhost::cli {

namespace {

Outcome requireOk(Outcome outcome) {
    if (outcome.error) throw CimFailure(*outcome.error);
    return outcome;
}

HostOptions inNamespace(HostOptions options, std::string_view nameSpace) {
    const std::string_view given = trimNamespace(nameSpace);
    if (!equalNames(given, trimNamespace(options.interopNamespace))) options.nameSpace = std::string(given);
    return options;
}

} // namespace

DeclaredClasses::DeclaredClasses(HostOptions hostOptions, std::string_view nameSpace)
    : options(inNamespace(std::move(hostOptions), nameSpace)), repository(loadClasses(options)),
      registration(loadRegistration(options, repository)), broker(repository, options.broker), tags(repository) {}

RemoteSource::Instances RemoteSource::enumerateInstances(RequestScope& scope, std::string_view nameSpace,
                                                         std::string_view className) {
    return requireOk(calls.enumerateInstances(scope, {}, *scope.make().path(trimNamespace(nameSpace), className),
                                              std::nullopt))
        .instances;
}

RemoteSource::Paths RemoteSource::enumerateInstanceNames(RequestScope& scope, std::string_view nameSpace,
                                                         std::string_view className) {
    return requireOk(calls.enumerateInstanceNames(scope, {}, *scope.make().path(trimNamespace(nameSpace), className)))
        .paths;
}

const InstanceObject& RemoteSource::getInstance(RequestScope& scope, const ObjectPathObject& path) {
    const Outcome outcome = requireOk(calls.getInstance(scope, {}, path, std::nullopt));
    if (outcome.instances.size() == 1) return *outcome.instances.front();
    throw CimFailure(CMPI_RC_ERR_FAILED,
                     "the server answered with " + std::to_string(outcome.instances.size()) + " instances");
}

RemoteSource::Instances RemoteSource::associators(RequestScope& scope, const ObjectPathObject& source,
                                                  const AssociationFilter& filter) {
    return requireOk(calls.associators(scope, {}, source, filter, std::nullopt)).instances;
}

RemoteSource::Paths RemoteSource::associatorNames(RequestScope& scope, const ObjectPathObject& source,
                                                  const AssociationFilter& filter) {
    return requireOk(calls.associatorNames(scope, {}, source, filter)).paths;
}

RemoteSource::Instances RemoteSource::references(RequestScope& scope, const ObjectPathObject& source,
                                                 const AssociationFilter& filter) {
    return requireOk(calls.references(scope, {}, source, filter, std::nullopt)).instances;
}

RemoteSource::Paths RemoteSource::referenceNames(RequestScope& scope, const ObjectPathObject& source,
                                                 const AssociationFilter& filter) {
    return requireOk(calls.referenceNames(scope, {}, source, filter)).paths;
}

RemoteSource::Classes RemoteSource::listed(std::string_view nameSpace,
                                           const remote::RemoteCalls::Classes& classes) const {
    Classes list;
    for (const cimxml::ClassSummary& summary : classes)
        list.push_back({summary.name, summary.superclass, findClass(nameSpace, summary.name)});
    return list;
}

std::vector<const ClassDeclaration*> RemoteSource::declaredClasses(std::string_view nameSpace) const {
    const auto all = declared.repository.classes(nameSpace);
    return {all.begin(), all.end()};
}

RemoteSource::Classes RemoteSource::classes(std::string_view nameSpace) {
    return listed(nameSpace, calls.enumerateClasses(nameSpace));
}

RemoteSource::Classes RemoteSource::associatorClasses(std::string_view nameSpace, std::string_view className,
                                                      const AssociationFilter& filter) {
    return listed(nameSpace, calls.associatorClasses(nameSpace, className, filter));
}

RemoteSource::Classes RemoteSource::referenceClasses(std::string_view nameSpace, std::string_view className,
                                                     const AssociationFilter& filter) {
    return listed(nameSpace, calls.referenceClasses(nameSpace, className, filter));
}

Outcome RemoteSource::invokeMethod(RequestScope& scope, const ObjectPathObject& path, const MethodDeclaration& method,
                                   const ArgsObject& arguments) {
    return requireOk(calls.invokeMethod(scope, {}, path, method.name, arguments));
}

} // namespace cimhost::cli
