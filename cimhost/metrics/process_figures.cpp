#include "cimhost/metrics/process_figures.h"

#include <dirent.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace cimhost::metrics {

namespace {

/// Fields of /proc/self/stat behind the name in parentheses (proc(5)), counted from 0 at the process's state.
struct Stat {
    std::uint64_t userTicks = 0;     // field 14
    std::uint64_t systemTicks = 0;   // 15
    std::uint64_t threads = 0;       // 20
    std::uint64_t startTicks = 0;    // 22, since the system started
    std::uint64_t virtualBytes = 0;  // 23
    std::uint64_t residentPages = 0; // 24
};

std::optional<Stat> readStat() {
    std::ifstream file("/proc/self/stat");
    std::string text;
    if (!std::getline(file, text)) return std::nullopt;
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos) return std::nullopt;
    constexpr std::size_t fieldsBehindName = 22;
    std::array<std::string, fieldsBehindName> fields;
    std::istringstream words(text.substr(name + 1));
    for (std::string& field : fields)
        words >> field;
    if (!words) return std::nullopt;
    const auto number = [&](std::size_t field) { return std::strtoull(fields[field - 3].c_str(), nullptr, 10); };
    return Stat{number(14), number(15), number(20), number(22), number(23), number(24)};
}

/// Seconds since 1970 when the system started.
std::optional<std::uint64_t> systemStart() {
    std::ifstream file("/proc/stat");
    std::string word;
    while (file >> word) {
        std::uint64_t seconds = 0;
        if (word == "btime" && file >> seconds) return seconds;
        std::getline(file, word);
    }
    return std::nullopt;
}

/// Without the one that counts them.
std::optional<std::uint64_t> openDescriptors() {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc/self/fd"), ::closedir);
    if (!folder) return std::nullopt;
    constexpr std::uint64_t notCounted = 3; // ".", ".." and the folder's own
    std::uint64_t count = 0;
    while (::readdir(folder.get()))
        ++count;
    return count < notCounted ? 0 : count - notCounted;
}

void writeStat(Exposition& out, const Stat& stat) {
    const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
    out.family("process_cpu_seconds", Type::counter, "Processor time used, in seconds.")
        .sample({}, static_cast<double>(stat.userTicks + stat.systemTicks) / ticks);
    out.family("process_resident_memory_bytes", Type::gauge, "Memory that is in use, in bytes.")
        .sample({}, stat.residentPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));
    out.family("process_virtual_memory_bytes", Type::gauge, "Address space that is in use, in bytes.")
        .sample({}, stat.virtualBytes);
    out.family("process_threads", Type::gauge, "Threads of the process.").sample({}, stat.threads);
    if (const auto start = systemStart()) {
        out.family("process_start_time_seconds", Type::gauge, "When the process was started, in seconds since 1970.")
            .sample({}, static_cast<double>(*start) + static_cast<double>(stat.startTicks) / ticks);
    }
}

} // namespace

void writeProcess(Exposition& out) {
    if (const std::optional<Stat> stat = readStat()) writeStat(out, *stat);
    if (const auto open = openDescriptors()) {
        out.family("process_open_fds", Type::gauge, "Open file descriptors.").sample({}, *open);
    }
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        out.family("process_max_fds", Type::gauge, "File descriptors that may be open.")
            .sample({}, static_cast<std::uint64_t>(limit.rlim_cur));
    }
}

} // namespace cimhost::metrics
