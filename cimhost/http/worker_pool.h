// Threads that do the work that is posted to them. Private to the HTTP server.
#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <cstddef>
#include <thread>
#include <vector>

namespace cimhost::http {

/// Takes work like Asio's own pool. That pool waits for ever if the system gives it some of its threads and refuses the
/// next one; this pool throws. If work throws, the exception is told on standard error, and the thread goes on.
class WorkerPool {
public:
    using executor_type = boost::asio::io_context::executor_type;

    /// Throws std::system_error if the system does not give so many threads.
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
