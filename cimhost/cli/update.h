// A flash update as one act: look, show, ask, write, and look again.
#pragma once

#include "cimhost/cli/commands.h"

#include <string>
#include <vector>

namespace cimhost::cli {

struct UpdateOptions {
    std::string image;              ///< file
    std::vector<std::string> cards; ///< serial numbers, in the order in which they are updated
    std::string path;               ///< where the image lies on the servers' hosts; empty: its bytes are sent
    std::string nameSpace;
    bool isAgreed = false; ///< nobody is asked
    ServerOptions servers;
    Form form = Form::table;
};

/// Updates the cards one after the other and stops at the first that fails. Prints what it finds and does to standard
/// output; asks on standard error. Throws std::runtime_error, CimFailure or what a server's connection throws, before
/// anything is written: for a broken image, a card that is nowhere or in two places, an image for another model, a card
/// that nothing can write, and for somebody who does not agree.
/// @return someFailed where a card was updated before one failed.
ExitStatus update(const HostOptions& hostOptions, const UpdateOptions& options, const MessageOptions& messages);

} // namespace cimhost::cli
