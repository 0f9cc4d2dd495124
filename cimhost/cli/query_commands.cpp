// The commands that ask for objects and classes.
#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <unistd.h>

namespace cimhost::cli {

namespace {

struct QueryCommand {
    std::string name;
    std::string description;
    Query query;
    std::string subject; // empty: takes none
};

const QueryCommand queryCommands[] = {
    {"enumerate", "Show the instances of a class and its subclasses", Query::enumerate, "CLASS"},
    {"names", "Show the paths of the instances", Query::names, "CLASS"},
    {"get", "Show one instance: Class.Key=\"value\",Other=\"value\"", Query::get, "PATH"},
    {"associators", "Show what is associated with an object", Query::associators, "PATH"},
    {"references", "Show the associations that lead to an object", Query::references, "PATH"},
    {"tree", "Show the host's adapters as one tree", Query::tree, ""},
    {"classes", "Show the classes", Query::classes, ""},
};

struct Given {
    QueryOptions query;
    ServerOptions servers;
    bool everything = false;
};

void addFilter(CLI::App& command, QueryOptions& query) {
    AssociationFilter& filter = query.filter;
    const bool findsObjects = query.query == Query::associators;
    if (!findsObjects && query.query != Query::references) return;
    command.add_option("--association", filter.associationClass, "Only through associations of this class");
    command.add_option("--role", filter.role, "Only where the object is at this end");
    command.add_flag("--names", query.namesAlone, "Paths alone");
    if (!findsObjects) return;
    command.add_option("--result-class", filter.resultClass, "Only objects of this class");
    command.add_option("--result-role", filter.resultRole, "Only objects at this end");
}

bool showsProperties(Query query) {
    return query == Query::enumerate || query == Query::associators || query == Query::references;
}

void addQuery(CommandLine& line, const QueryCommand& row) {
    const auto given = std::make_shared<Given>();
    given->query.query = row.query;
    given->query.nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add(row.name, row.description);
    if (!row.subject.empty()) command.add_option(row.subject, given->query.subject)->required();
    if (showsProperties(row.query)) command.add_flag("--all", given->everything, "Every property, as a list");
    addFilter(command, given->query);
    command.add_option("--namespace", given->query.nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, given->servers);
    line.onRun(command, given->servers, [given](const Settings& settings) {
        QueryOptions query = given->query;
        query.form = given->everything && !settings.messages.json ? Form::everything : settings.form();
        query.layout = layoutOf(STDOUT_FILENO);
        if (given->servers.areGiven()) return ask(settings.host, query, given->servers, settings.messages);
        const Progress progress(settings.messages, "asking the provider");
        ask(settings.host, query);
        return ok;
    });
}

} // namespace

void addQueries(CommandLine& line) {
    for (const QueryCommand& row : queryCommands)
        addQuery(line, row);
}

} // namespace cimhost::cli
