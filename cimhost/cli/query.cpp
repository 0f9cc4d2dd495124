#include "cimhost/cli/commands.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/text_output.h"
#include "cimhost/cli/tree_output.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <filesystem>
#include <stdexcept>

namespace cimhost::cli {

namespace {

struct Question {
    const QueryOptions& options;
    const Presentation& presentation;
    Operations& operations;
    RequestScope& scope;
};

std::string shown(const Question& question, const std::vector<const ObjectPathObject*>& paths) {
    return question.options.form == Form::json ? jsonOf(paths) : linesOf(paths);
}

std::string shown(const Question& question, const std::vector<const InstanceObject*>& instances) {
    const QueryOptions& options = question.options;
    if (options.form == Form::json) return jsonOf(instances);
    if (options.form == Form::everything) return listOf(instances);
    return tablesOf(instances, question.presentation, options.layout);
}

std::string shown(const Question& question, const std::vector<const ClassDeclaration*>& classes) {
    const QueryOptions& options = question.options;
    const Registration& registration = question.operations.registration();
    if (options.form == Form::json) return jsonOf(classes, registration);
    return options.namesAlone ? linesOf(classes) : tableOf(classes, registration, options.layout);
}

const ClassDeclaration& subjectClass(const Question& question) {
    return question.operations.findClass(question.options.nameSpace, question.options.subject);
}

const ObjectPathObject& subjectPath(const Question& question) {
    const cimxml::ObjectPath given =
        parsePath(question.options.subject, question.options.nameSpace, question.operations.repository());
    question.operations.findClass(given.nameSpace, given.className);
    return makePath(question.scope, given.nameSpace, given);
}

/// A path has keys, a class has none.
bool namesClass(const QueryOptions& options) { return options.subject.find('=') == std::string::npos; }

std::string enumerate(const Question& question) {
    const QueryOptions& options = question.options;
    const ClassDeclaration& declaration = subjectClass(question);
    const auto instances = question.operations.enumerateInstances(question.scope, {}, declaration, true, std::nullopt);
    if (options.form != Form::table) return shown(question, instances);
    return tableOf(instances, declaration, question.presentation, options.layout);
}

std::string names(const Question& question) {
    return shown(question, question.operations.enumerateInstanceNames(question.scope, {}, subjectClass(question)));
}

[[noreturn]] void refuseClass(const Question& question) {
    const std::string& name = subjectClass(question).name();
    throw std::runtime_error(name + " is a class; get takes the path of one of its instances, as `cimhost names " +
                             name + "` prints them");
}

std::string get(const Question& question) {
    if (namesClass(question.options)) refuseClass(question);
    const InstanceObject& instance =
        question.operations.getInstance(question.scope, {}, subjectPath(question), std::nullopt);
    return question.options.form == Form::json ? jsonOf(instance) : listOf({&instance});
}

/// How associations are followed: to the objects at their other ends, or to themselves.
struct Following {
    decltype(&Operations::associatorClasses) classes;
    decltype(&Operations::associatorNames) names;
    decltype(&Operations::associators) objects;
};

constexpr Following toObjects = {&Operations::associatorClasses, &Operations::associatorNames,
                                 &Operations::associators};
constexpr Following toAssociations = {&Operations::referenceClasses, &Operations::referenceNames,
                                      &Operations::references};

std::string follow(const Question& question, const Following& how) {
    const auto& [options, presentation, operations, scope] = question;
    if (namesClass(options)) {
        return shown(question, (operations.*how.classes)(options.nameSpace, options.subject, options.filter));
    }
    const ObjectPathObject& path = subjectPath(question);
    if (options.namesAlone) return shown(question, (operations.*how.names)(scope, {}, path, options.filter));
    return shown(question, (operations.*how.objects)(scope, {}, path, options.filter, std::nullopt));
}

std::string tree(const Question& question) {
    const auto& [options, presentation, operations, scope] = question;
    const ObjectTree grown = growTree(operations, scope, options.nameSpace, presentation.tree);
    return options.form == Form::json ? jsonOf(grown) : textOf(grown, presentation, options.layout);
}

std::string classes(const Question& question) {
    return shown(question, question.operations.enumerateClasses(question.options.nameSpace, std::nullopt, true));
}

std::string answer(const Question& question) {
    switch (question.options.query) {
    case Query::enumerate:
        return enumerate(question);
    case Query::names:
        return names(question);
    case Query::get:
        return get(question);
    case Query::classes:
        return classes(question);
    case Query::associators:
        return follow(question, toObjects);
    case Query::references:
        return follow(question, toAssociations);
    case Query::tree:
        return tree(question);
    }
    return {};
}

std::string answer(Host& host, const Presentation& presentation, const QueryOptions& options) {
    RequestScope scope(host.broker());
    return answer({options, presentation, host.operations(), scope});
}

/// Without the file nobody chose, and the generic views are shown.
Presentation presentationOf(const HostOptions& options, const ClassRepository& repository) {
    const std::filesystem::path file = options.mofDirectory / "cimhost.presentation";
    if (!std::filesystem::exists(file)) return {};
    return readPresentation(file, repository, options.nameSpace);
}

} // namespace

void ask(const HostOptions& hostOptions, const QueryOptions& options) {
    useOwnInstallLocation();
    const CleanOutput output(hostOptions.broker.log);
    Host host(hostOptions);
    output.write(answer(host, presentationOf(hostOptions, host.operations().repository()), options));
    host.shutdown();
}

} // namespace cimhost::cli
