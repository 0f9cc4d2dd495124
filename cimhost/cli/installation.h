// Where the program finds what belongs to it, and what it is told in place of that.
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
/// the adapter library can only log what is wrong with them. The text says what is wrong and where; nothing if all is
/// well.
std::optional<std::string> checkSource();

/// Whether the adapters are those of this machine, and not described or recorded ones.
bool showsThisMachine();

} // namespace cimhost::cli
