// The commands of the program, after their options were read.
#pragma once

#include "cimhost/service/host.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace cimhost::cli {

/// Exit status of the program.
enum ExitStatus : int { ok = 0, cimError = 1, cannotStart = 2 };

struct ServeOptions {
    std::string listen; ///< "127.0.0.1:5988", "[::1]:5988"; the port may be left out
    std::string certificate;
    std::string key;
    std::string credentials;
    std::size_t connections = 64;
    std::size_t workers = 4;
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
};

/// Prints the answer to standard output, and nothing else there. Throws CimFailure, or std::runtime_error if it cannot
/// start.
void ask(const HostOptions& hostOptions, const QueryOptions& options);

} // namespace cimhost::cli
