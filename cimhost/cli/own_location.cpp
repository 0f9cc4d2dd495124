#include "cimhost/cli/own_location.h"

#include "cimhost/indications/indication_server.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimhost::cli {

namespace {

constexpr const char* variable = "MEROLT_CNA_INSTALL_LOCATION";
constexpr const char* nowhere = "/nonexistent";
// The provider takes no longer one, and would log where the command was started.
constexpr std::size_t longestLocation = 259;

std::filesystem::path homeOfUser() {
    const passwd* user = ::getpwuid(::geteuid());
    return user && user->pw_dir ? user->pw_dir : "";
}

// As a server's own state: only that a person without HOME has one all the same.
std::filesystem::path stateFolder() {
    if (const std::filesystem::path file = defaultStateFile(); !file.empty()) return file.parent_path();
    const std::filesystem::path home = homeOfUser();
    return home.is_absolute() ? home / ".local" / "state" / "cimhost" : std::filesystem::path();
}

bool isOwnFolder(const std::filesystem::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

void makeFolders(const std::filesystem::path& folder) {
    if (folder.empty() || ::access(folder.c_str(), F_OK) == 0) return;
    makeFolders(folder.parent_path());
    ::mkdir(folder.c_str(), S_IRWXU);
}

bool isReady(const std::filesystem::path& location) {
    if (location.empty() || location.native().size() > longestLocation) return false;
    makeFolders(location / "log");
    return isOwnFolder(location) && isOwnFolder(location / "log");
}

} // namespace

void useOwnInstallLocation() {
    if (std::getenv(variable)) return;
    const std::filesystem::path location = stateFolder();
    ::setenv(variable, isReady(location) ? location.c_str() : nowhere, 0);
}

} // namespace cimhost::cli
