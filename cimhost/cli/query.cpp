#include "cimhost/cli/commands.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/tree_output.h"
#include "cimhost/cli/tree_plan.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <stdexcept>

namespace cimhost::cli {

namespace {

std::string shown(const std::vector<const ObjectPathObject*>& paths, Form form) {
    return form == Form::json ? jsonOf(paths) : linesOf(paths);
}

std::string shown(const std::vector<const InstanceObject*>& instances, const QueryOptions& options) {
    if (options.form == Form::json) return jsonOf(instances);
    return options.form == Form::everything ? listOf(instances) : tablesOf(instances, options.layout);
}

std::string shown(const std::vector<const ClassDeclaration*>& classes, const Operations& operations,
                  const QueryOptions& options) {
    if (options.form == Form::json) return jsonOf(classes, operations.registration());
    return options.namesAlone ? linesOf(classes) : tableOf(classes, operations.registration(), options.layout);
}

std::string enumerate(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto instances = operations.enumerateInstances(scope, {}, declaration, true, std::nullopt);
    if (options.form == Form::json) return jsonOf(instances);
    return options.form == Form::everything ? listOf(instances) : tableOf(instances, declaration, options.layout);
}

std::string names(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto paths = operations.enumerateInstanceNames(scope, {}, declaration);
    return shown(paths, options.form);
}

/// A path has keys, a class has none.
bool namesClass(const QueryOptions& options) { return options.subject.find('=') == std::string::npos; }

const ObjectPathObject& subjectPath(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const cimxml::ObjectPath given = parsePath(options.subject, options.nameSpace, operations.repository());
    operations.findClass(given.nameSpace, given.className);
    return makePath(scope, given.nameSpace, given);
}

[[noreturn]] void refuseClass(const Operations& operations, const QueryOptions& options) {
    const std::string& name = operations.findClass(options.nameSpace, options.subject).name();
    throw std::runtime_error(name + " is a class; get takes the path of one of its instances, as `cimhost names " +
                             name + "` prints them");
}

std::string get(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    if (namesClass(options)) refuseClass(operations, options);
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    const InstanceObject& instance = operations.getInstance(scope, {}, path, std::nullopt);
    return options.form == Form::json ? jsonOf(instance) : listOf({&instance});
}

std::string associators(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    if (namesClass(options)) {
        return shown(operations.associatorClasses(options.nameSpace, options.subject, options.filter), operations,
                     options);
    }
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    if (options.namesAlone) return shown(operations.associatorNames(scope, {}, path, options.filter), options.form);
    return shown(operations.associators(scope, {}, path, options.filter, std::nullopt), options);
}

std::string references(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    if (namesClass(options)) {
        return shown(operations.referenceClasses(options.nameSpace, options.subject, options.filter), operations,
                     options);
    }
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    if (options.namesAlone) return shown(operations.referenceNames(scope, {}, path, options.filter), options.form);
    return shown(operations.references(scope, {}, path, options.filter, std::nullopt), options);
}

std::string tree(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ObjectTree grown = growTree(operations, scope, options.nameSpace, adapterTree());
    return options.form == Form::json ? jsonOf(grown) : textOf(grown, options.layout);
}

std::string classes(Operations& operations, const QueryOptions& options) {
    return shown(operations.enumerateClasses(options.nameSpace, std::nullopt, true), operations, options);
}

std::string answer(Host& host, const QueryOptions& options) {
    RequestScope scope(host.broker());
    switch (options.query) {
    case Query::enumerate:
        return enumerate(host.operations(), scope, options);
    case Query::names:
        return names(host.operations(), scope, options);
    case Query::get:
        return get(host.operations(), scope, options);
    case Query::classes:
        return classes(host.operations(), options);
    case Query::associators:
        return associators(host.operations(), scope, options);
    case Query::references:
        return references(host.operations(), scope, options);
    case Query::tree:
        return tree(host.operations(), scope, options);
    }
    return {};
}

} // namespace

void ask(const HostOptions& hostOptions, const QueryOptions& options) {
    useOwnInstallLocation();
    const CleanOutput output(hostOptions.broker.log);
    Host host(hostOptions);
    output.write(answer(host, options));
    host.shutdown();
}

} // namespace cimhost::cli
