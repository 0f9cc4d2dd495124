#include "cimhost/cli/commands.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/local_round.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/remote_source.h"
#include "cimhost/cli/server_round.h"
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
    ObjectSource& source;
    RequestScope& scope;
};

std::string shown(const Question& question, const std::vector<const ObjectPathObject*>& paths) {
    return question.options.form == Form::json ? jsonOf(paths) : linesOf(paths);
}

std::string shown(const Question& question, const std::vector<const InstanceObject*>& instances) {
    const QueryOptions& options = question.options;
    if (options.form == Form::json) return jsonOf(instances);
    if (options.form == Form::everything) return listOf(instances, question.presentation);
    return tablesOf(instances, question.presentation, options.layout);
}

std::string shown(const Question& question, const std::vector<ListedClass>& classes) {
    const QueryOptions& options = question.options;
    const Registration& registration = question.source.registration();
    if (options.form == Form::json) return jsonOf(classes, registration);
    return options.namesAlone ? linesOf(classes) : tableOf(classes, registration, options.layout);
}

/// Null where it is not declared here, but may be known to a server.
const ClassDeclaration* subjectClass(const Question& question) {
    return question.source.findClass(question.options.nameSpace, question.options.subject);
}

const ObjectPathObject& subjectPath(const Question& question) {
    const cimxml::ObjectPath given =
        parsePath(question.options.subject, question.options.nameSpace, question.source.repository());
    static_cast<void>(question.source.findClass(given.nameSpace, given.className)); // throws where it must be known
    return makePath(question.scope, given.nameSpace, given);
}

/// A path has keys, a class has none.
bool namesClass(const QueryOptions& options) { return options.subject.find('=') == std::string::npos; }

std::string enumerate(const Question& question) {
    const QueryOptions& options = question.options;
    const auto instances = question.source.enumerateInstances(question.scope, options.nameSpace, options.subject);
    if (options.form != Form::table) return shown(question, instances);
    return tableOf(instances, subjectClass(question), question.presentation, options.layout);
}

std::string names(const Question& question) {
    const auto& [options, presentation, source, scope] = question;
    return shown(question, source.enumerateInstanceNames(scope, options.nameSpace, options.subject));
}

[[noreturn]] void refuseClass(const std::string& name) {
    throw std::runtime_error(name + " is a class; get takes the path of one of its instances, as `cimhost names " +
                             name + "` prints them");
}

std::string get(const Question& question) {
    if (namesClass(question.options)) {
        const ClassDeclaration* declaration = subjectClass(question);
        refuseClass(declaration ? declaration->name() : question.options.subject);
    }
    const InstanceObject& instance = question.source.getInstance(question.scope, subjectPath(question));
    return question.options.form == Form::json ? jsonOf(instance) : listOf({&instance}, question.presentation);
}

/// How associations are followed: to the objects at their other ends, or to themselves.
struct Following {
    decltype(&ObjectSource::associatorClasses) classes;
    decltype(&ObjectSource::associatorNames) names;
    decltype(&ObjectSource::associators) objects;
};

constexpr Following toObjects = {&ObjectSource::associatorClasses, &ObjectSource::associatorNames,
                                 &ObjectSource::associators};
constexpr Following toAssociations = {&ObjectSource::referenceClasses, &ObjectSource::referenceNames,
                                      &ObjectSource::references};

std::string follow(const Question& question, const Following& how) {
    const auto& [options, presentation, source, scope] = question;
    if (namesClass(options)) {
        return shown(question, (source.*how.classes)(options.nameSpace, options.subject, options.filter));
    }
    const ObjectPathObject& path = subjectPath(question);
    if (options.namesAlone) return shown(question, (source.*how.names)(scope, path, options.filter));
    return shown(question, (source.*how.objects)(scope, path, options.filter));
}

std::string tree(const Question& question) {
    const auto& [options, presentation, source, scope] = question;
    const ObjectTree grown = growTree(source, scope, options.nameSpace, presentation.tree);
    return options.form == Form::json ? jsonOf(grown) : textOf(grown, presentation, options.layout);
}

std::string classes(const Question& question) {
    return shown(question, question.source.classes(question.options.nameSpace));
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

std::string answer(ObjectSource& source, const Presentation& presentation, const QueryOptions& options) {
    RequestScope scope(source.broker());
    return answer({options, presentation, source, scope});
}

/// Before servers are asked: what none of them could make sense of.
void requireSubject(const QueryOptions& options, const ClassRepository& repository) {
    const bool takesPath =
        options.query == Query::get || options.query == Query::associators || options.query == Query::references;
    if (!takesPath) return;
    if (!namesClass(options)) {
        static_cast<void>(parsePath(options.subject, options.nameSpace, repository));
    } else if (options.query == Query::get) {
        refuseClass(options.subject);
    }
}

/// Without the file nobody chose, and the generic views are shown.
Presentation presentationOf(const HostOptions& options, const ClassRepository& repository) {
    const std::filesystem::path file = options.mofDirectory / "cimhost.presentation";
    if (!std::filesystem::exists(file)) return {};
    return readPresentation(file, repository, options.nameSpace);
}

} // namespace

void ask(const HostOptions& hostOptions, const QueryOptions& options) {
    askHere(hostOptions, [&](ObjectSource& source) {
        return ServerAnswer{answer(source, presentationOf(hostOptions, source.repository()), options), {}};
    });
}

ExitStatus ask(const HostOptions& hostOptions, const QueryOptions& options, const ServerOptions& servers,
               const MessageOptions& messages) {
    DeclaredClasses declared(hostOptions, options.nameSpace);
    const Presentation presentation = presentationOf(declared.options, declared.repository);
    requireSubject(options, declared.repository);
    return askServers(servers, messages, declared, [&](ObjectSource& source) {
        return ServerAnswer{answer(source, presentation, options), {}};
    });
}

} // namespace cimhost::cli
