// The command that shows what a CIM server tells: a listener that prints indications, and subscribes by itself if
// asked.
#pragma once

#include "cimhost/cli/commands.h"

#include <cstdint>
#include <string>

namespace cimhost::cli {

struct ListenOptions {
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;   ///< 0: any free one
    std::string subscribe;    ///< URL of a CIM server; empty: somebody else has subscribed
    IdentityOptions identity; ///< who subscribes there
    std::string query = "SELECT * FROM CIM_AlertIndication";
    std::string nameSpace;
    std::string interopNamespace;
    Form form = Form::table; ///< a line for each indication, its properties, or a line of JSON
    bool isQuiet = false;    ///< does not say where it listens
};

/// Listens until SIGINT or SIGTERM; what it made at a server it removes at the end. Throws CimFailure where that server
/// refuses, std::runtime_error if it cannot start.
void listen(const ListenOptions& options);

} // namespace cimhost::cli
