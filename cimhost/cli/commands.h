// The commands of the program, after their options were read.
#pragma once

#include "cimhost/cli/messages.h"
#include "cimhost/cli/server_options.h"
#include "cimhost/cli/terminal.h"
#include "cimhost/service/host.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cimhost::cli {

/// Exit status of the program.
enum ExitStatus : int { ok = 0, cimError = 1, cannotStart = 2, cutShort = 3, methodFailed = 4, someFailed = 5 };

struct ServeOptions {
    std::string listen; ///< "127.0.0.1:5988", "[::1]:5988"; the port may be left out
    std::string certificate;
    std::string key;
    std::string credentials;
    std::vector<std::string> serverNames; ///< more names that clients call the server by
    bool anonymousWrites = false;         ///< anonymous clients may change something
    std::string metrics = {};             ///< "127.0.0.1:9000"; empty: no metrics
    std::string state;                    ///< file that remembers subscriptions; empty: nothing does
    std::size_t connections = 64;
    std::size_t workers = 4;
    unsigned deadlineSeconds = 30;             ///< until a request is answered that the provider has not answered
    std::size_t largestRequestMebibytes = 400; ///< a flash image takes up to twenty times its size
};

/// Serves until SIGINT or SIGTERM. Throws std::runtime_error if it cannot start.
void serve(const HostOptions& hostOptions, const ServeOptions& options);

enum class Query { enumerate, names, get, classes, associators, references, tree };

enum class Form { table, everything, json };

struct QueryOptions {
    Query query = Query::enumerate;
    std::string subject; ///< a class, or a path: of the instance, or of the object that associations start from
    std::string nameSpace;
    AssociationFilter filter;
    bool namesAlone = false; ///< of associators and references: paths and no instances
    Form form = Form::table;
    Layout layout = {};
};

/// Prints the answer to standard output, and nothing else there. Throws CimFailure, or std::runtime_error if it cannot
/// start.
void ask(const HostOptions& hostOptions, const QueryOptions& options);

/// The same for CIM servers. Their failures are printed on standard error. Throws only if no server was asked.
ExitStatus ask(const HostOptions& hostOptions, const QueryOptions& options, const ServerOptions& servers,
               const MessageOptions& messages);

struct MetricsOptions {
    std::string nameSpace;
    bool isOpenMetrics = false; ///< OpenMetrics 1.0.0 in place of the text format 0.0.4
};

/// Prints the metrics of the adapters, once. Throws as above.
void printMetrics(const HostOptions& hostOptions, const MetricsOptions& options);
/// The same of one CIM server, as ask() does. Throws std::runtime_error for several.
ExitStatus printMetrics(const HostOptions& hostOptions, const MetricsOptions& options, const ServerOptions& servers,
                        const MessageOptions& messages);

struct InvokeOptions {
    std::string object;
    std::string method;
    std::vector<std::string> arguments; ///< NAME=VALUE
    std::string nameSpace;
    Form form = Form::table;
};

/// Calls a method and prints its return value and output parameters. A value of an array is separated by commas, or
/// @FILE for the bytes of a file; the value of a reference is a path; without a value the argument is null. Throws as
/// above.
/// @return why the method failed, by its return value; empty if it did not.
std::string invoke(const HostOptions& hostOptions, const InvokeOptions& options);

/// The same at CIM servers, as ask() does.
ExitStatus invoke(const HostOptions& hostOptions, const InvokeOptions& options, const ServerOptions& servers,
                  const MessageOptions& messages);

struct OpticsOptions {
    std::string nameSpace;
    Form form = Form::table;
    Layout layout = {};
};

/// Prints what the modules tell. Throws as ask() does.
void showOptics(const HostOptions& hostOptions, const OpticsOptions& options);
/// The same of CIM servers, as ask() does.
ExitStatus showOptics(const HostOptions& hostOptions, const OpticsOptions& options, const ServerOptions& servers,
                      const MessageOptions& messages);

struct DoctorOptions {
    std::string nameSpace;
    std::vector<std::string> ignored; ///< names of rules
    unsigned intervalSeconds = 0;     ///< between two looks at the counters; 0: one look
    Form form = Form::table;
    Layout layout = {};
};

/// Exit statuses of `cimhost doctor`.
enum DoctorStatus : int { nothingWrong = 0, someWarnings = 1, someFaults = 2 };

/// Prints what is wrong. Throws as ask() does. @return a DoctorStatus.
ExitStatus examine(const HostOptions& hostOptions, const DoctorOptions& options);
/// The same of CIM servers, as ask() does; where all answer it is the status of the worst.
ExitStatus examine(const HostOptions& hostOptions, const DoctorOptions& options, const ServerOptions& servers,
                   const MessageOptions& messages);
/// Prints the rules.
void showRules(const DoctorOptions& options);

struct ImageOptions {
    std::string file;
    std::string model;
    std::string version;
    std::string date;
    std::string bios;
    std::string firmware;
    std::string efi;
    std::string fcode;
    std::string payload; ///< a file; empty: no payload
    bool overwrites = false;
    Form form = Form::table;
};

/// Writes a flash image for fleets. Throws std::runtime_error for options that make none.
void makeImage(const ImageOptions& options);
/// Prints the content of an image. Throws std::runtime_error for a file that is no image.
void showImage(const ImageOptions& options);

} // namespace cimhost::cli
