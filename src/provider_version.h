// The provider's version, as it logs and publishes it.
#pragma once

namespace merolt {

constexpr const char* providerVersion = "1.5.1";

} // namespace merolt
