// Where indications are to go: a URL that is taken reads the same when it is written and read again.

#include "cimhost/http/client.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    using namespace cimhost;
    const std::optional<http::Url> url = http::parseUrl({reinterpret_cast<const char*>(bytes), count});
    if (!url) return 0;
    const std::optional<http::Url> again =
        http::parseUrl((url->isSecure ? "https://" : "http://") + url->authority() + url->path);
    // The port may be written longer than before.
    if (!again) return count + 8 < 2048 ? (std::abort(), 0) : 0;
    if (again->host != url->host || again->port != url->port || again->path != url->path) std::abort();
    return 0;
}
