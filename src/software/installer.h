// What the installation services of both sides share.
#pragma once

namespace merolt::software {

/// Name of both services and InstanceID of their capabilities.
constexpr const char* installerName = "CNA_SW_INSTALLER";

} // namespace merolt::software
