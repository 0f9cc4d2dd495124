// One question to many CIM servers at once: each answer is printed as it comes, whole; who failed is told at the end.
#pragma once

#include "cimhost/cli/commands.h"
#include "cimhost/cli/object_source.h"
#include "cimhost/cli/remote_source.h"

#include <functional>
#include <string>

namespace cimhost::cli {

struct ServerAnswer {
    std::string text;    ///< to be printed
    std::string failure; ///< of a method, by its return value; empty: none
};

/// Put to a server on a thread of its own; may throw CimFailure, or std::exception where it gives no answer.
using ServerQuestion = std::function<ServerAnswer(ObjectSource& source)>;

/// Prints the answers to standard output: under the server's name where there are several, in JSON as one line for each
/// with its name and the seconds that it took. Throws std::runtime_error if no server was asked.
/// @return ok if all answered, someFailed if some did; if none did, their common status, or cannotStart if they differ.
ExitStatus askServers(const ServerOptions& options, const MessageOptions& messages, DeclaredClasses& declared,
                      const ServerQuestion& question);

} // namespace cimhost::cli
