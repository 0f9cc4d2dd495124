// Which status an action of the wrapper classes throws.
#pragma once

#include "CmpiStatus.h"

/// The code that an action throws as CmpiStatus, or CMPI_RC_OK if it throws nothing.
template <typename Action>
CMPIrc thrownBy(Action action) {
    try {
        action();
    } catch (const CmpiStatus& status) {
        return status.rc();
    }
    return CMPI_RC_OK;
}
