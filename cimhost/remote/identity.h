// Who asks CIM servers, and whom he believes: one identity for every command.
#pragma once

#include <filesystem>
#include <string>

namespace cimhost::remote {

struct Identity {
    std::string user;                  ///< "name:password"; empty: nobody, or whom the file of logins names
    std::filesystem::path logins;      ///< in the form of .netrc: machine, login, password; empty: none
    std::filesystem::path authorities; ///< PEM: whose certificates to believe; empty: the system's
    bool verifies = true;              ///< false: whoever answers is believed
};

/// Throws std::runtime_error, before anything is sent, for a user without a password behind a colon, for logins that
/// others can read, and for authorities that cannot be used. The user's words are not repeated.
void requireUsable(const Identity& identity);

} // namespace cimhost::remote
