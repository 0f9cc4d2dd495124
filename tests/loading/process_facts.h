// What the kernel tells of this process, for tests that watch it grow.
#pragma once

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

struct ProcessFacts {
    long residentKilobytes;
    long descriptors;
};

inline long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

inline ProcessFacts factsOfProcess() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return {resident * sysconf(_SC_PAGESIZE) / 1024, entriesOf("/proc/self/fd")};
}

inline long threadsNow() { return entriesOf("/proc/self/task"); }

/// The threads of the process when none of the provider's runs: the program's, and that of a sanitizer, which begins
/// with the first one that a program makes.
inline long countOwnThreads() {
    pid_t number = 0;
    std::thread([&number] { number = gettid(); }).join();
    while (tgkill(getpid(), number, 0) == 0)
        std::this_thread::yield();
    return threadsNow();
}

/// Waits until no more threads than these are left. A join returns when the last instruction of a thread is done, and
/// the kernel lists the thread until it has taken the rest of it apart.
/// @return the threads that are left, more than these if they stay.
inline long threadsAtRest(long atMost) {
    long threads = threadsNow();
    for (int tries = 0; threads > atMost && tries < 50000; ++tries) {
        usleep(1000);
        threads = threadsNow();
    }
    return threads;
}

/// Whether any part of a file of that name is mapped into the process.
inline bool isMapped(const std::string& file) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(file) != std::string::npos) return true;
    return false;
}

/// Makes an empty folder and makes it the working directory.
inline std::filesystem::path makeWorkingDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "merolt-loading-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no working directory");
    std::filesystem::current_path(pattern);
    return pattern;
}
