// What the audit log tells of a change.
#pragma once

#include "cimhost/cimxml/request.h"

#include <string>

namespace cimhost {

struct ChangeNote {
    std::string object;        ///< "root/ns:Class.Key="value""; "root/ns:Class" if it does not exist yet
    std::string result = "ok"; ///< the return value of a method
};

/// The object that the request names, in that form; its namespace if it names none. A path of more than 1 KiB is cut.
std::string objectOf(const cimxml::Request& request);

} // namespace cimhost
