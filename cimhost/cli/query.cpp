#include "cimhost/cli/commands.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/path_text.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/service/request_values.h"

namespace cimhost::cli {

namespace {

std::string enumerate(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto instances = operations.enumerateInstances(scope, {}, declaration, true, std::nullopt);
    if (options.form == Form::json) return jsonOf(instances);
    return options.form == Form::everything ? listOf(instances) : tableOf(instances, declaration);
}

std::string names(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const ClassDeclaration& declaration = operations.findClass(options.nameSpace, options.subject);
    const auto paths = operations.enumerateInstanceNames(scope, {}, declaration);
    return options.form == Form::json ? jsonOf(paths) : linesOf(paths);
}

std::string get(Operations& operations, RequestScope& scope, const QueryOptions& options) {
    const cimxml::ObjectPath given = parsePath(options.subject, options.nameSpace, operations.repository());
    operations.findClass(given.nameSpace, given.className);
    const ObjectPathObject& path = makePath(scope, given.nameSpace, given);
    const InstanceObject& instance = operations.getInstance(scope, {}, path, std::nullopt);
    return options.form == Form::json ? jsonOf(instance) : listOf({&instance});
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
