#include "platform/platform.h"

#include "platform/files.h"
#include "platform/lasting.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <netdb.h>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace merolt::platform {

namespace {

constexpr std::size_t longestLocation = 259;

// The polling thread may still sleep while the process ends.
Lasting<Services> systemServices;
Services* current = &systemServices.value;

/// What a location names on this host; nothing for a remote one.
std::optional<std::string> localFileName(const std::string& location) {
    constexpr std::string_view scheme = "file://";
    if (strncasecmp(location.c_str(), scheme.data(), scheme.size()) == 0) return location.substr(scheme.size());
    const std::size_t colon = location.find("://");
    const bool isRemote = colon != std::string::npos && colon > 0 && location.find('/') > colon;
    return isRemote ? std::nullopt : std::optional(location);
}

/// An open file; false if it could not be opened.
class File {
public:
    explicit File(int opened) : descriptor(opened) {}
    ~File() {
        if (descriptor >= 0) close(descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    explicit operator bool() const { return descriptor >= 0; }
    int number() const { return descriptor; }

private:
    const int descriptor;
};

bool writeAll(const File& target, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(target.number(), bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

/// Appends what source holds, up to one byte behind the limit: a file may grow, and some have no end.
/// @return the bytes that were appended; nothing if source or target failed.
std::optional<std::uint64_t> copyUpTo(std::uint64_t most, const File& source, const File& target) {
    char bytes[0x10000];
    std::uint64_t copied = 0;
    while (copied <= most) {
        const std::uint64_t wanted = std::min<std::uint64_t>(sizeof bytes, most + 1 - copied);
        const ssize_t taken = read(source.number(), bytes, static_cast<std::size_t>(wanted));
        if (taken == 0) break;
        if (taken < 0 && errno == EINTR) continue;
        if (taken < 0 || !writeAll(target, bytes, static_cast<std::size_t>(taken))) return std::nullopt;
        copied += static_cast<std::uint64_t>(taken);
    }
    return copied;
}

/// Puts a new file, for this user alone, in the place of target, so that neither the rights of what stands there nor
/// the other end of a link matter.
std::optional<std::uint64_t> replaceByCopy(const File& from, const char* target, std::uint64_t most) {
    unlink(target);
    const File to(open(target, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!to) return std::nullopt;
    const std::optional<std::uint64_t> copied = copyUpTo(most, from, to);
    if (!copied || *copied > most) unlink(target);
    return copied;
}

/// For reading. What a place names cannot be exchanged between the look and this.
int openPlace(const File& place) {
    const std::string name = "/proc/self/fd/" + std::to_string(place.number());
    return open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

bool isSameFile(const struct stat& file, const char* path) {
    struct stat other {};
    return stat(path, &other) == 0 && other.st_dev == file.st_dev && other.st_ino == file.st_ino;
}

} // namespace

std::time_t Services::now() { return std::time(nullptr); }

void Wakeup::notify() {
    {
        const std::lock_guard guard(mutex);
        isNotified = true;
    }
    changed.notify_one();
}

void Wakeup::waitFor(unsigned milliseconds) {
    std::unique_lock guard(mutex);
    changed.wait_for(guard, std::chrono::milliseconds(milliseconds), [this] { return isNotified; });
    isNotified = false;
}

void Services::sleepUntilNotified(Wakeup& wakeup, unsigned milliseconds) { wakeup.waitFor(milliseconds); }

bool Services::waitsForEvents() {
    const char* variable = std::getenv("MEROLT_CNA_WAITS");
    return variable && std::string_view(variable) == "events";
}

void Services::sleepMilliseconds(unsigned milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::optional<std::string> Services::hostName() {
    char name[256] = "";
    if (gethostname(name, sizeof(name) - 1) != 0) return std::nullopt;
    return name;
}

std::optional<std::vector<std::uint8_t>> Services::firstAddress(const std::string& name) {
    std::vector<char> buffer(1024);
    hostent entry{};
    hostent* found = nullptr;
    int error = 0;
    while (gethostbyname_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found, &error) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (!found || !found->h_addr_list[0]) return std::nullopt;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(found->h_addr_list[0]);
    return std::vector<std::uint8_t>(bytes, bytes + found->h_length);
}

std::string Services::installLocation() {
    const char* variable = std::getenv("MEROLT_CNA_INSTALL_LOCATION");
    std::string location = variable ? variable : setting("InstallLocation");
    return location.size() <= longestLocation ? location : std::string();
}

std::string Services::setting(const std::string& name) {
    const std::string key = name + '=';
    RegularFileStream settings(settingsFile);
    std::string line;
    while (std::getline(settings, line)) {
        if (line.compare(0, key.size(), key) == 0) return line.substr(key.size());
    }
    return {};
}

std::string Services::wantedSystemName() {
    const char* variable = std::getenv("MEROLT_CNA_SYSTEM_NAME");
    return variable ? variable : setting("SystemName");
}

long long Services::fileSize(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 ? status.st_size : 0;
}

bool Services::fileExists(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0;
}

std::string Services::workingDirectory() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

std::optional<std::uint64_t> Services::copyFile(const char* source, const char* target, std::uint64_t most) {
    const std::optional<std::string> name = localFileName(source);
    if (!name) return std::nullopt;
    // Opening a device can do things. A place is opened without opening what is there.
    const File place(open(name->c_str(), O_PATH | O_CLOEXEC));
    struct stat status {};
    if (!place || fstat(place.number(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    const File from(openPlace(place));
    if (!from) return std::nullopt;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    // The copy of an earlier update can be the source of the next.
    if (size > most || isSameFile(status, target)) return size;
    return replaceByCopy(from, target, most);
}

int Services::mutexAvailable() { return 0; }

Services& services() { return *current; }

void replaceServices(Services* replacement) { current = replacement ? replacement : &systemServices.value; }

void sleepSeconds(unsigned seconds) {
    for (unsigned second = 0; second < seconds; ++second)
        services().sleepMilliseconds(1000);
}

} // namespace merolt::platform
