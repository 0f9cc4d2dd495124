// What a server has moved since it started, for its metrics. The server counts; any thread may read at any time.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace cimhost::http {

struct Traffic {
    using Count = std::atomic<std::uint64_t>;
    static constexpr std::size_t statuses = 600; // of HTTP, all below this

    Count connections = 0;    // accepted
    Count disconnections = 0; // accepted connections that have ended
    Count madeRoom = 0;       // connections that were closed because others needed their place
    Count receivedBytes = 0;  // heads and bodies of requests; without TLS
    Count sentBytes = 0;      // of answers; without TLS
    std::array<Count, statuses> answers{};

    void answered(unsigned status) { ++answers[status < statuses ? status : 0]; }
};

} // namespace cimhost::http
