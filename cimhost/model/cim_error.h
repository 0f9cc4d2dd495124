// A CIM status with its description: what a client is told when an operation fails.
#pragma once

#include <string>

#include "cmpidt.h"

namespace cimhost {

struct CimError {
    CMPIrc code = CMPI_RC_ERR_FAILED; ///< always one of the CIM status codes, 1 to 28 (DSP0200)
    std::string description;          ///< may be empty
};

} // namespace cimhost
