// Threads of which the system may have no more.
#pragma once

#include <system_error>
#include <thread>
#include <utility>

namespace cimhost {

/// Throws std::system_error, whose text says that it is a thread that is missing.
template <class Work>
std::thread makeThread(Work&& work) {
    try {
        return std::thread(std::forward<Work>(work));
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), "cannot start a thread");
    }
}

} // namespace cimhost
