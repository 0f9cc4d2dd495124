// Starting a thread, which the system may refuse.
#pragma once

#include <system_error>
#include <thread>
#include <utility>

namespace cimhost {

/// A thread that does the work. Throws std::system_error where the system gives no thread; its text begins with
/// "cannot start a thread".
template <class Work>
std::thread makeThread(Work&& work) {
    try {
        return std::thread(std::forward<Work>(work));
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), "cannot start a thread");
    }
}

} // namespace cimhost
