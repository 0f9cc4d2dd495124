// Hands work from any thread to the one that runs a loop, as long as the loop is there. Private to the HTTP server and
// client.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <mutex>
#include <utility>

namespace cimhost::http {

/// Outlives the loop, so that work that comes too late does no harm.
class Mailbox {
public:
    explicit Mailbox(boost::asio::io_context& target) : io(&target) {}

    /// Runs the work on the loop's thread; drops it if the loop is gone.
    template <typename Work>
    void post(Work&& work) {
        const std::lock_guard lock(mutex);
        if (io) boost::asio::post(*io, std::forward<Work>(work));
    }

    /// From now on all work is dropped. Called before the loop ends.
    void close() {
        const std::lock_guard lock(mutex);
        io = nullptr;
    }

private:
    std::mutex mutex;
    boost::asio::io_context* io;
};

} // namespace cimhost::http
