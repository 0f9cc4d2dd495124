#include "platform/platform.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <netdb.h>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace merolt::platform {

namespace {

constexpr const char* settingsFile = "/etc/merolt/cim-provider.conf";
constexpr std::size_t longestLocation = 259;

Services systemServices;
Services* current = &systemServices;

std::string locationFromSettings() {
    constexpr std::string_view key = "InstallLocation=";
    std::ifstream settings(settingsFile);
    std::string line;
    while (std::getline(settings, line)) {
        if (line.compare(0, key.size(), key) == 0) return line.substr(key.size());
    }
    return {};
}

} // namespace

std::time_t Services::now() { return std::time(nullptr); }

void Services::sleepMilliseconds(unsigned milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::optional<std::string> Services::hostName() {
    char name[256] = "";
    if (gethostname(name, sizeof(name) - 1) != 0) return std::nullopt;
    return name;
}

std::optional<std::vector<std::uint8_t>> Services::firstAddress(const std::string& name) {
    std::vector<char> buffer(1024);
    hostent entry{};
    hostent* found = nullptr;
    int error = 0;
    while (gethostbyname_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found, &error) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (!found || !found->h_addr_list[0]) return std::nullopt;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(found->h_addr_list[0]);
    return std::vector<std::uint8_t>(bytes, bytes + found->h_length);
}

std::string Services::installLocation() {
    const char* variable = std::getenv("MEROLT_CNA_INSTALL_LOCATION");
    std::string location = variable ? variable : locationFromSettings();
    return location.size() <= longestLocation ? location : std::string();
}

long long Services::fileSize(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 ? status.st_size : 0;
}

int Services::mutexAvailable() { return 0; }

Services& services() { return *current; }

void replaceServices(Services* replacement) { current = replacement ? replacement : &systemServices; }

void sleepSeconds(unsigned seconds) {
    for (unsigned second = 0; second < seconds; ++second)
        services().sleepMilliseconds(1000);
}

} // namespace merolt::platform
