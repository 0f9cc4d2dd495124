// Passwords, from whoever types them or from a file.
#pragma once

#include <string>

namespace cimhost::cli {

/// From a terminal: asked for twice, without showing it. From anything else: the first line of standard input. Throws
/// std::runtime_error where the two differ or nothing comes. A signal ends the process, and leaves the terminal as it
/// was.
std::string askForPassword(const std::string& user);

/// The same for a password that somebody else judges: asked for once.
std::string askForKnownPassword(const std::string& user);

} // namespace cimhost::cli
