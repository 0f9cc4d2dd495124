#include "tavik/fleet/file_watcher.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "tavik/log.h"

namespace tavik::fleet {

namespace {

// The file is also looked at without being told: some file systems notify nobody, and a link in the path may be
// pointed elsewhere.
constexpr int lookEveryMilliseconds = 1000;

// A file that is written in place counts when its writer closes it, so that no half of it is read.
constexpr std::uint32_t wantedEvents =
    IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

FileWatcher::Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

FileWatcher::FileWatcher(const std::string& path, std::function<void()> onChange, std::function<bool()> isUnread)
    : path_(path), onChange_(std::move(onChange)), isUnread_(std::move(isUnread)),
      notifications_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), stop_(eventfd(0, EFD_CLOEXEC)) {
    if (stop_.number() < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    const std::filesystem::path file(path);
    folder_ = file.has_parent_path() ? file.parent_path().string() : ".";
    name_ = file.filename().string();
    watchFolder();
    told_ = lastSeen_ = signature();
    thread_ = std::thread([this] { run(); });
}

FileWatcher::~FileWatcher() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(stop_.number(), &one, sizeof one);
    thread_.join();
}

void FileWatcher::watchFolder() {
    if (folderWatch_ < 0 && notifications_.number() >= 0)
        folderWatch_ = inotify_add_watch(notifications_.number(), folder_.c_str(), wantedEvents);
}

void FileWatcher::run() {
    std::array<pollfd, 2> waits{{{stop_.number(), POLLIN, 0}, {notifications_.number(), POLLIN, 0}}};
    for (;;) {
        const int ready = poll(waits.data(), waits.size(), lookEveryMilliseconds);
        if (waits[0].revents != 0) return;
        const bool named = ready > 0 && waits[1].revents != 0 && eventsNameTheFile();
        watchFolder();
        if (named || looksChanged()) tellChange();
    }
}

/** Memory that is short for a moment must cost neither the change nor the thread. */
void FileWatcher::tellChange() {
    lastSeen_ = signature();
    try {
        onChange_();
        told_ = lastSeen_;
    } catch (const std::exception&) { // the next look finds it untold
    }
}

/** Takes all waiting events off the queue. */
bool FileWatcher::eventsNameTheFile() {
    bool named = false;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (;;) {
        const auto length = read(notifications_.number(), buffer.data(), buffer.size());
        if (length <= 0) return named;
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* name = buffer.data() + at + sizeof event;
            named = named || (event.len > 0 && name_ == name) || (event.mask & IN_Q_OVERFLOW) != 0;
            // The folder itself is gone: the next look tries to find it again.
            if (event.mask & IN_IGNORED) folderWatch_ = -1;
            at += sizeof event + event.len;
        }
    }
}

/** True if the file is not as it was told last, or could not be read, and has come to rest since the look before. */
bool FileWatcher::looksChanged() {
    const auto now = signature();
    const bool atRest = now == lastSeen_;
    lastSeen_ = now;
    return atRest && (now != told_ || isUnread_());
}

std::optional<FileWatcher::Signature> FileWatcher::signature() const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) return std::nullopt;
    constexpr std::int64_t nanosecondsPerSecond = 1000000000;
    return Signature{status.st_dev, status.st_ino, status.st_size,
                     status.st_mtim.tv_sec * nanosecondsPerSecond + status.st_mtim.tv_nsec};
}

} // namespace tavik::fleet
