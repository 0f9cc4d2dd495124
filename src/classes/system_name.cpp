#include "classes/system_name.h"

#include "log/log.h"
#include "platform/platform.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace merolt {

char gSystemName[256];
std::uint32_t gSystemNameFormat = 0;

namespace {

constexpr std::size_t nameSize = sizeof(gSystemName);

std::string computerName() {
    if (auto name = platform::services().hostName()) return *name;
    DEBUG_LOG("GetComputerName() failed!\n");
    return "<unknown>";
}

} // namespace

void getSystemName(char* name, std::uint32_t* format) {
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
