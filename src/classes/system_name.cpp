#include "classes/system_name.h"

#include "log/log.h"
#include "platform/platform.h"
#include "text/text.h"

#include <arpa/inet.h>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace merolt {

char gSystemName[256];
std::uint32_t gSystemNameFormat = 0;

namespace {

constexpr std::size_t nameSize = sizeof(gSystemName);

/// Keys are cut at underscores, stand in quotes, and have 128 bytes for the name and what stands behind it.
constexpr std::size_t longestWantedName = 64;
constexpr const char* lettersOfWantedNames = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.:-";

char wantedName[longestWantedName + 1];

bool fitsKeys(std::string_view name) {
    return name.size() <= longestWantedName && name.find_first_not_of(lettersOfWantedNames) == name.npos;
}

/// As gSystemNameFormat has it.
std::uint32_t formatOf(const char* name) {
    unsigned char address[sizeof(in6_addr)];
    if (inet_pton(AF_INET, name, address) == 1) return 4;
    return inet_pton(AF_INET6, name, address) == 1 ? 6 : 2;
}

std::string computerName() {
    if (auto name = platform::services().hostName()) return *name;
    DEBUG_LOG("GetComputerName() failed!\n");
    return "<unknown>";
}

} // namespace

void readWantedSystemName() {
    const std::string setting = platform::services().wantedSystemName();
    const std::string_view name = trimmed(setting);
    wantedName[0] = '\0';
    if (!fitsKeys(name)) {
        ERROR_LOG("SystemName=%s is not taken: a name has up to %zu letters, digits, dots, colons and hyphens. "
                  "The host keeps the name that it has without the setting.",
                  setting.c_str(), longestWantedName);
        return;
    }
    wantedName[name.copy(wantedName, longestWantedName)] = '\0';
    if (!name.empty()) DEBUG_LOG("Config: %s=%s", "SystemName", wantedName);
}

void getSystemName(char* name, std::uint32_t* format) {
    if (wantedName[0] != '\0') {
        std::snprintf(name, nameSize, "%s", wantedName);
        *format = formatOf(wantedName);
        return;
    }
    const std::string host = computerName();
    const auto address = platform::services().firstAddress(host);
    if (!address) {
        std::snprintf(name, nameSize, "%s", host.c_str());
        *format = 2;
        return;
    }
    const std::vector<std::uint8_t>& bytes = *address;
    if (bytes.size() == 4) {
        std::snprintf(name, nameSize, "%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
        *format = 4;
    } else if (bytes.size() == 6) {
        std::snprintf(name, nameSize, "%u.%u.%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]);
        *format = 6;
    } else {
        std::snprintf(name, nameSize, "Unknown IP");
    }
}

const char* SystemNameOfBuild::text() {
    std::uint32_t format = 0;
    if (!std::exchange(isLookedUp, true)) getSystemName(name, &format);
    return name;
}

} // namespace merolt
