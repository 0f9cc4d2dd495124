// Posts one message over HTTP and waits for the answer.
#pragma once

#include "cimhost/http/client.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace cimhost::testing_support {

/// @param authorities as ClientLoop takes them
/// Throws std::runtime_error where there is no answer.
inline http::ClientAnswer postAndWait(const http::Url& url, const std::vector<http::Field>& fields, std::string body,
                                      const std::filesystem::path& authorities = {}) {
    http::ClientLoop loop(authorities);
    http::AsyncClient client(loop, url);
    http::ClientResult result;
    client.post(fields, std::move(body), [&](http::ClientResult given) {
        result = std::move(given);
        loop.stop();
    });
    loop.run();
    if (!result.error.empty()) throw std::runtime_error(result.error);
    return std::move(result.answer);
}

} // namespace cimhost::testing_support
