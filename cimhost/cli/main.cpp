// The program cimhost: reads its command line, runs one command, and turns what goes wrong into one message and an exit
// status.

#include "cimhost/cli/commands.h"
#include "cimhost/cli/fleet_edit.h"
#include "cimhost/cli/installation.h"
#include "cimhost/cli/listen.h"
#include "cimhost/indications/indication_server.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>

namespace {

using namespace cimhost;

struct Arguments {
    std::string provider;
    std::string mof;
    std::string fleet;
    HostOptions host;
    cli::ServeOptions serve;
    cli::QueryOptions query;
    cli::InvokeOptions invoke;
    cli::ImageOptions image;
    cli::ListenOptions listen;
    cli::LinkChange link;
    /// The command that was given.
    std::function<void(Arguments&)> command;
    bool json = false;
    bool everything = false;
};

struct QueryCommand {
    std::string name;
    std::string description;
    cli::Query query;
    std::string subject; // empty: takes none
};

const QueryCommand queryCommands[] = {
    {"enumerate", "Show the instances of a class and its subclasses", cli::Query::enumerate, "CLASS"},
    {"names", "Show the paths of the instances", cli::Query::names, "CLASS"},
    {"get", "Show one instance: Class.Key=\"value\",Other=\"value\"", cli::Query::get, "PATH"},
    {"associators", "Show what is associated with an object", cli::Query::associators, "PATH"},
    {"references", "Show the associations that lead to an object", cli::Query::references, "PATH"},
    {"tree", "Show the host's adapters as one tree", cli::Query::tree, ""},
    {"classes", "Show the classes", cli::Query::classes, ""},
};

void addCommonOptions(CLI::App& app, Arguments& arguments) {
    const cli::Locations standard = cli::defaultLocations();
    arguments.provider = standard.provider.string();
    arguments.mof = standard.mof.string();
    app.add_option("--provider", arguments.provider, "The provider library")->capture_default_str();
    app.add_option("--mof", arguments.mof, "Folder of the class definitions")->capture_default_str();
    app.add_option("--fleet", arguments.fleet, "Adapters from a fleet file (as TAVIK_SOURCE=fleet:FILE)");
    app.add_flag_callback(
        "--bare-arrays", [&arguments] { arguments.host.arrayArguments = ArrayArguments::bare; },
        "Array arguments of methods without their element type, as some servers deliver them");
    app.add_option("--interop-namespace", arguments.host.interopNamespace, "Interop namespace")->capture_default_str();
}

CLI::App* addServe(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("serve", "Serve CIM-XML clients until stopped");
    command->add_option("--listen", arguments.serve.listen,
                        "Address and port; 127.0.0.1:5988, or 5989 with TLS, unless told otherwise");
    command->add_option("--certificate", arguments.serve.certificate, "TLS certificate with its chain, PEM");
    command->add_option("--key", arguments.serve.key, "TLS key, PEM");
    command->add_option("--credentials", arguments.serve.credentials,
                        "Users, as lines user:hash with hashes made by: openssl passwd -6");
    command->add_flag("--anonymous-writes", arguments.serve.anonymousWrites,
                      "Without users, let whoever can connect call methods and make, change and delete instances");
    command->add_option("--connections", arguments.serve.connections, "Clients at the same moment")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    command
        ->add_option("--largest-request", arguments.serve.largestRequestMebibytes,
                     "MiB; a flash image sent as bytes takes up to twenty times its size")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    command->add_option("--workers", arguments.serve.workers, "Requests answered at the same moment")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    arguments.serve.state = defaultStateFile().string();
    command->add_option("--state", arguments.serve.state, "File that remembers subscriptions; \"\" for none")
        ->capture_default_str();
    return command;
}

void addListen(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("listen", "Print indications until stopped");
    command->add_option("--port", arguments.listen.port, "Port to listen on; 0 for any free one")->required();
    command->add_option("--address", arguments.listen.address, "Address to listen on")->capture_default_str();
    command->add_option("--subscribe", arguments.listen.subscribe,
                        "Subscribe at this CIM server, such as http://127.0.0.1:5988, until the end");
    command
        ->add_option("--user", arguments.listen.user,
                     "NAME:PASSWORD at that server, or in the environment, where nobody else sees it")
        ->envname("CIMHOST_USER");
    command->add_option("--query", arguments.listen.query, "What to subscribe to")->capture_default_str();
    arguments.listen.nameSpace = arguments.host.nameSpace;
    command->add_option("--namespace", arguments.listen.nameSpace, "Where the indications come from")
        ->capture_default_str();
    command->add_flag("--json", arguments.listen.json, "One line of JSON for each");
    command->callback([&arguments] {
        arguments.command = [](Arguments& given) {
            given.listen.interopNamespace = given.host.interopNamespace;
            cli::listen(given.listen);
        };
    });
}

void addSetLink(CLI::App& app, Arguments& arguments) {
    CLI::App* fleet = app.add_subcommand("fleet", "Change a fleet file");
    fleet->require_subcommand(1);
    CLI::App* command = fleet->add_subcommand("set-link", "Set the link state of a port");
    command->add_option("CARD", arguments.link.card, "Serial number, or place in the file")->required();
    command->add_option("PORT", arguments.link.port, "Number of the port")->required();
    command->add_option("STATE", arguments.link.state, "up, down or testing")
        ->required()
        ->transform(CLI::CheckedTransformer(std::map<std::string, cli::LinkState>{
            {"up", cli::LinkState::up}, {"down", cli::LinkState::down}, {"testing", cli::LinkState::testing}}));
    command->add_option("FILE", arguments.link.file, "The fleet file")->required();
    command->add_option("--only", arguments.link.side, "storage or ethernet; otherwise both functions of the port")
        ->transform(CLI::CheckedTransformer(std::map<std::string, cli::LinkSide>{
            {"storage", cli::LinkSide::storage}, {"ethernet", cli::LinkSide::ethernet}}));
    command->callback([&arguments] { arguments.command = [](Arguments& given) { cli::setLink(given.link); }; });
}

void addQuery(CLI::App& app, const QueryCommand& row, Arguments& arguments) {
    CLI::App* command = app.add_subcommand(row.name, row.description);
    if (!row.subject.empty()) command->add_option(row.subject, arguments.query.subject)->required();
    command->add_flag("--json", arguments.json, "JSON for tools");
    const bool isAssociators = row.query == cli::Query::associators;
    const bool isReferences = row.query == cli::Query::references;
    if (row.query == cli::Query::enumerate || isAssociators || isReferences) {
        command->add_flag("--all", arguments.everything, "Every property, as a list");
    }
    AssociationFilter& filter = arguments.query.filter;
    if (isAssociators || isReferences) {
        command->add_option("--association", filter.associationClass, "Only through associations of this class");
        command->add_option("--role", filter.role, "Only where the object is at this end");
        command->add_flag("--names", arguments.query.namesAlone, "Paths alone");
    }
    if (isAssociators) {
        command->add_option("--result-class", filter.resultClass, "Only objects of this class");
        command->add_option("--result-role", filter.resultRole, "Only objects at this end");
    }
    command->add_option("--namespace", arguments.query.nameSpace, "Namespace")->capture_default_str();
    command->callback([&arguments, query = row.query] { arguments.query.query = query; });
}

void addInvoke(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("invoke", "Call a method of an object");
    command->add_option("OBJECT", arguments.invoke.object, "Path of the object, or its class")->required();
    command->add_option("METHOD", arguments.invoke.method)->required();
    command->add_option("ARGUMENTS", arguments.invoke.arguments,
                        "NAME=VALUE: a text, a number, a path, values with commas between them or @FILE for an array");
    command->add_flag("--json", arguments.json, "JSON for tools");
    command->add_option("--namespace", arguments.invoke.nameSpace, "Namespace")->capture_default_str();
    command->callback([&arguments] {
        arguments.command = [](Arguments& given) {
            given.invoke.form = given.json ? cli::Form::json : cli::Form::table;
            cli::invoke(given.host, given.invoke);
        };
    });
}

void addImage(CLI::App& app, Arguments& arguments) {
    CLI::App* image = app.add_subcommand("image", "Make and read flash images for fleets");
    image->require_subcommand(1);
    CLI::App* make = image->add_subcommand("make", "Write an image");
    make->add_option("FILE", arguments.image.file)->required();
    make->add_option("--model", arguments.image.model, "Model of the cards that it fits")->required();
    make->add_option("--image-version", arguments.image.version, "As 2.2.3")->required();
    make->add_option("--date", arguments.image.date, "Release date, as 2013-04-30")->required();
    make->add_option("--bios", arguments.image.bios, "BIOS version, a text");
    make->add_option("--firmware", arguments.image.firmware, "As 8.1.0");
    make->add_option("--efi", arguments.image.efi, "As 6.2");
    make->add_option("--fcode", arguments.image.fcode, "As 4.2.0");
    make->add_option("--payload", arguments.image.payload, "File with the bytes behind the header");
    make->callback([&arguments] { arguments.command = [](Arguments& given) { cli::makeImage(given.image); }; });
    CLI::App* show = image->add_subcommand("show", "Show what an image brings");
    show->add_option("FILE", arguments.image.file)->required();
    show->add_flag("--json", arguments.json, "JSON for tools");
    show->callback([&arguments] {
        arguments.command = [](Arguments& given) {
            given.image.form = given.json ? cli::Form::json : cli::Form::table;
            cli::showImage(given.image);
        };
    });
}

// Warnings and errors of host and provider; what is routine stays unsaid.
void logToStandardError(LogLevel level, std::string_view text) {
    if (level < LogLevel::warning) return;
    std::string line = level == LogLevel::error ? "cimhost: error: " : "cimhost: warning: ";
    line.append(text).append("\n");
    std::cerr << line << std::flush;
}

/// The provider sleeps for seconds where it starts and ends. For this program it waits for what the sleeps stand for:
/// its first request comes behind the first build either way.
void spareFixedWaits() { ::setenv("MEROLT_CNA_WAITS", "events", 0); }

void run(Arguments& arguments, bool isServing) {
    spareFixedWaits();
    if (!arguments.fleet.empty()) ::setenv("TAVIK_SOURCE", ("fleet:" + arguments.fleet).c_str(), 1);
    if (const std::optional<std::string> problem = cli::checkFleet()) throw std::runtime_error(*problem);
    arguments.host.provider = arguments.provider;
    arguments.host.mofDirectory = arguments.mof;
    arguments.host.broker.log = logToStandardError;
    arguments.query.form = arguments.json         ? cli::Form::json
                           : arguments.everything ? cli::Form::everything
                                                  : cli::Form::table;
    if (arguments.command) return arguments.command(arguments);
    if (isServing) return cli::serve(arguments.host, arguments.serve);
    cli::ask(arguments.host, arguments.query);
}

} // namespace

int main(int argumentCount, char** argumentValues) {
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app("A small CIM server for one provider");
    app.fallthrough();
    app.require_subcommand(1);
    Arguments arguments;
    arguments.query.nameSpace = arguments.host.nameSpace;
    arguments.invoke.nameSpace = arguments.host.nameSpace;
    addCommonOptions(app, arguments);
    const CLI::App* serveCommand = addServe(app, arguments);
    for (const QueryCommand& row : queryCommands)
        addQuery(app, row, arguments);
    addListen(app, arguments);
    addSetLink(app, arguments);
    addInvoke(app, arguments);
    addImage(app, arguments);
    try {
        app.parse(argumentCount, argumentValues);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? cli::ok : cli::cannotStart;
    }
    try {
        run(arguments, serveCommand->parsed());
    } catch (const CimFailure& failure) {
        std::cerr << "cimhost: " << statusName(failure.error().code) << " (" << failure.error().code
                  << "): " << failure.what() << '\n';
        return cli::cimError;
    } catch (const std::exception& error) {
        std::cerr << "cimhost: " << error.what() << '\n';
        return cli::cannotStart;
    }
    return cli::ok;
}
