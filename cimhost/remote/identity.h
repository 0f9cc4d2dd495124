// The user for CIM servers, and the certificates to trust: the same for every command.
#pragma once

#include <filesystem>
#include <string>

namespace cimhost::remote {

struct Identity {
    std::string user;                  ///< "name:password"; empty: none, or from the file of logins
    std::filesystem::path logins;      ///< in the form of .netrc: machine, login, password; empty: none
    std::filesystem::path authorities; ///< PEM: certificates to trust; empty: the system's
    bool verifies = true;              ///< false: every certificate is accepted
};

/// Checks an identity before anything is sent. Throws std::runtime_error for a user without a colon and a password, for
/// a file of logins that others can read, and for authorities that cannot be used. The message has no user and no
/// password.
void requireUsable(const Identity& identity);

} // namespace cimhost::remote
