#include "cimhost/cli/commands.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/tree_output.h"
#include "cimhost/cli/tree_plan.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

namespace cimhost::cli {

namespace {

std::string shown(const std::vector<const ObjectPathObject*>& paths, Form form) {
    return form == Form::json ? jsonOf(paths) : linesOf(paths);
}

std::string shown(const std::vector<const InstanceObject*>& instances, Form form) {
    if (form == Form::json) return jsonOf(instances);
    return form == Form::everything ? listOf(instances) : tablesOf(instances);
}

std::string enumerate(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto instances = operations.enumerateInstances(scope, {}, declaration, true, std::nullopt);
    if (options.form == Form::json) return jsonOf(instances);
    return options.form == Form::everything ? listOf(instances) : tableOf(instances, declaration);
}

std::string names(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto paths = operations.enumerateInstanceNames(scope, {}, declaration);
    return shown(paths, options.form);
}

const ObjectPathObject& subjectPath(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const cimxml::ObjectPath given = parsePath(options.subject, options.nameSpace, operations.repository());
    operations.findClass(given.nameSpace, given.className);
    return makePath(scope, given.nameSpace, given);
}

std::string get(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    const InstanceObject& instance = operations.getInstance(scope, {}, path, std::nullopt);
    return options.form == Form::json ? jsonOf(instance) : listOf({&instance});
}

std::string associators(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    if (options.namesAlone) return shown(operations.associatorNames(scope, {}, path, options.filter), options.form);
    return shown(operations.associators(scope, {}, path, options.filter, std::nullopt), options.form);
}

std::string references(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ObjectPathObject& path = subjectPath(operations, scope, options);
    if (options.namesAlone) return shown(operations.referenceNames(scope, {}, path, options.filter), options.form);
    return shown(operations.references(scope, {}, path, options.filter, std::nullopt), options.form);
}

std::string tree(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ObjectTree grown = growTree(operations, scope, options.nameSpace, adapterTree());
    return options.form == Form::json ? jsonOf(grown) : textOf(grown);
}

std::string classes(Operations& operations, const QueryOptions& options) {
    const auto found = operations.enumerateClasses(options.nameSpace, std::nullopt, true);
    return options.form == Form::json ? jsonOf(found, operations.registration())
                                      : tableOf(found, operations.registration());
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
    const CleanOutput output;
    Host host(hostOptions);
    output.write(answer(host, options));
    host.shutdown();
}

} // namespace cimhost::cli
