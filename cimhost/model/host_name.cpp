#include "cimhost/model/host_name.h"

#include <climits>
#include <unistd.h>

namespace cimhost {

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return "localhost";
    return name;
}

} // namespace cimhost
