#include "cimhost/cli/installation.h"

#include "tavik/fleet/fleet_file.h"

#include <cstdlib>
#include <string_view>

namespace cimhost::cli {

namespace {

constexpr const char* providerFile = "libMerolt_CNA_Provider.so";

} // namespace

Locations defaultLocations() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path root = program.parent_path().parent_path();
    std::filesystem::path provider = root / "lib" / providerFile;
    if (!std::filesystem::exists(provider, error)) provider = root / MEROLT_PROVIDER_FOLDER / providerFile;
    return {provider, root / MEROLT_DATA_FOLDER / "mof"};
}

std::optional<std::string> checkFleet() {
    constexpr std::string_view scheme = "fleet:";
    const char* variable = std::getenv("TAVIK_SOURCE");
    const std::string_view source = variable ? variable : "";
    if (source.substr(0, scheme.size()) != scheme) return std::nullopt;
    const tavik::FleetOrError fleet = tavik::readFleetFile(std::string(source.substr(scheme.size())));
    if (const auto* error = std::get_if<tavik::FleetError>(&fleet)) return error->message;
    return std::nullopt;
}

} // namespace cimhost::cli
