// What is known of a change by the time it is over, for the audit.
#pragma once

#include "cimhost/cimxml/request.h"

#include <string>

namespace cimhost {

struct ChangeNote {
    std::string object;        ///< "root/ns:Class.Key="value""; a class for one that is yet to be made
    std::string result = "ok"; ///< of a method what it returned
};

/// What the request names as the object, as far as it names one.
std::string objectOf(const cimxml::Request& request);

} // namespace cimhost
