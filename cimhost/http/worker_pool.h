// Threads that carry out what is posted to them. Private to the HTTP server.
#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <cstddef>
#include <thread>
#include <vector>

namespace cimhost::http {

/// Work is posted to it as to Asio's own pool. That one waits for ever when the system gives the first of its threads
/// and not the next one; this one says so.
class WorkerPool {
public:
    using executor_type = boost::asio::io_context::executor_type;

    /// Throws std::system_error if the system has not so many threads.
    explicit WorkerPool(std::size_t count);
    /// Drops the work that has not begun.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    [[nodiscard]] executor_type get_executor() noexcept { return io.get_executor(); }
    operator boost::asio::execution_context&() noexcept { return io; } // asked for by boost::asio::post()

    /// Waits until everything that was posted is done. Nothing may be posted afterwards.
    void join();

private:
    void work();
    void joinThreads();

    boost::asio::io_context io;
    boost::asio::executor_work_guard<executor_type> guard;
    std::vector<std::thread> threads;
};

} // namespace cimhost::http
