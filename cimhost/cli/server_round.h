// One question to many CIM servers at once: each answer is printed as it comes, whole; who failed is told at the end.
#pragma once

#include "cimhost/cli/commands.h"
#include "cimhost/cli/object_source.h"
#include "cimhost/cli/remote_source.h"

#include <functional>
#include <string>

namespace cimhost::cli {

struct ServerAnswer {
    std::string text;    ///< what is printed of it
    std::string failure; ///< of a method that was called, by what it returned; empty: none
};

/// Put to a server on a thread of its own; may throw CimFailure, or std::exception where it gives no answer.
using ServerQuestion = std::function<ServerAnswer(ObjectSource& source)>;

/// Prints the answers to standard output: under the server's name where there are several, in JSON as one line for each
/// with its name and the seconds that it took. Throws std::runtime_error where nobody was asked.
/// @return ok where all answered, someFailed where some did, else what they failed with: one status if it is the same
///         for all, cannotStart if not.
ExitStatus askServers(const ServerOptions& options, const MessageOptions& messages, DeclaredClasses& declared,
                      const ServerQuestion& question);

} // namespace cimhost::cli
