#include "cimhost/http/worker_pool.h"

#include "cimhost/thread.h"

#include <exception>
#include <iostream>

namespace cimhost::http {

WorkerPool::WorkerPool(std::size_t count) : guard(io.get_executor()) {
    try {
        while (threads.size() < count)
            threads.push_back(makeThread([this] { work(); }));
    } catch (...) {
        io.stop();
        joinThreads();
        throw;
    }
}

WorkerPool::~WorkerPool() {
    io.stop();
    joinThreads();
}

void WorkerPool::join() {
    guard.reset();
    joinThreads();
}

void WorkerPool::work() {
    for (bool isFinished = false; !isFinished;) {
        try {
            io.run();
            isFinished = true;
        } catch (const std::exception& error) {
            // The work is destroyed, and with it its reply, which then tells the client.
            std::cerr << "cimhost: a request failed: " << error.what() << '\n';
        }
    }
}

void WorkerPool::joinThreads() {
    for (std::thread& thread : threads) {
        if (thread.joinable()) thread.join();
    }
}

} // namespace cimhost::http
