// What the kernel tells of this process, for tests that watch it grow.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unistd.h>

struct ProcessFacts {
    long residentKilobytes;
    long descriptors;
    long threads;
};

inline long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

inline ProcessFacts factsOfProcess() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return {resident * sysconf(_SC_PAGESIZE) / 1024, entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
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
