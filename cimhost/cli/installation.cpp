#include "cimhost/cli/installation.h"

#include "tavik/fleet/fleet_file.h"
#include "tavik/recording_folder.h"
#include "tavik/source_name.h"

#include <cstdlib>

namespace cimhost::cli {

namespace {

constexpr const char* providerFile = "libMerolt_CNA_Provider.so";

std::optional<std::string> problemOf(const tavik::SourceName& source) {
    if (source.recording) {
        const auto problem = tavik::checkRecording(*source.recording);
        return problem ? std::optional(problem->message) : std::nullopt;
    }
    if (!source.fleet) return std::nullopt;
    const tavik::FleetOrError fleet = tavik::readFleetFile(*source.fleet);
    if (const auto* error = std::get_if<tavik::FleetError>(&fleet)) return error->message;
    return std::nullopt;
}

} // namespace

Locations defaultLocations() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path root = program.parent_path().parent_path();
    std::filesystem::path provider = root / "lib" / providerFile;
    if (!std::filesystem::exists(provider, error)) provider = root / MEROLT_PROVIDER_FOLDER / providerFile;
    return {provider, root / MEROLT_DATA_FOLDER / "mof"};
}

std::optional<std::string> checkSource() {
    const char* variable = std::getenv("TAVIK_SOURCE");
    const char* place = variable && *variable ? "TAVIK_SOURCE" : tavik::sourceFile;
    const auto source = tavik::understandSource(tavik::chosenSource(variable, tavik::sourceFile));
    if (const auto* error = std::get_if<tavik::FleetError>(&source)) return place + (": " + error->message);
    return problemOf(std::get<tavik::SourceName>(source));
}

bool showsThisMachine() { return tavik::chosenSource(std::getenv("TAVIK_SOURCE"), tavik::sourceFile) == "host"; }

} // namespace cimhost::cli
