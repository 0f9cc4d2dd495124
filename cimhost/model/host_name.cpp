#include "cimhost/model/host_name.h"

#include "cimhost/model/names.h"

#include <arpa/inet.h>
#include <climits>
#include <cstring>
#include <unistd.h>

namespace cimhost {

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return "localhost";
    return name;
}

bool isLoopbackName(std::string_view name) {
    constexpr unsigned char loopbackNetwork = 127; // RFC 1122, 3.2.1.3
    const std::string text(name);
    unsigned char address[sizeof(in6_addr)];
    if (::inet_pton(AF_INET, text.c_str(), address) == 1) return address[0] == loopbackNetwork;
    if (::inet_pton(AF_INET6, text.c_str(), address) == 1) {
        return std::memcmp(address, &in6addr_loopback, sizeof address) == 0;
    }
    return equalNames(name.substr(0, name.find('.')), "localhost");
}

} // namespace cimhost
