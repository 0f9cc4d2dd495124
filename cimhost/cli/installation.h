// Where the program finds its own files, and the options that name others.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace cimhost::cli {

struct Locations {
    std::filesystem::path provider;
    std::filesystem::path mof;
};

/// Relative to the running program. In a build tree the provider lies in ../lib, installed in the folder of CMPI
/// providers, such as ../lib/cmpi.
Locations defaultLocations();

/// Reads the name of the source of adapters, and the fleet file or recording that it names, before the provider does:
/// the adapter library can only log errors in them.
/// @return the error and its place; nothing if there is none.
std::optional<std::string> checkSource();

/// Whether the adapters are those of this machine, and not described or recorded ones.
bool showsThisMachine();

} // namespace cimhost::cli
