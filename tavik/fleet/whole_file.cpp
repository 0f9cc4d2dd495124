#include "tavik/fleet/whole_file.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavik/fleet/writer_lock.h"

namespace tavik::fleet {

namespace {

std::filesystem::path unfinishedOf(std::filesystem::path file) { return file += ".unfinished"; }

std::string failureOf(const std::filesystem::path& file) { return file.string() + ": " + std::strerror(errno); }

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t length = write(file, text.data(), text.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

/** As the old file was, as far as this process may. */
bool takeRights(int fresh, const std::filesystem::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return false;
    if (fchown(fresh, status.st_uid, status.st_gid) != 0 && errno != EPERM) return false;
    return fchmod(fresh, status.st_mode & 07777) == 0;
}

/** The name is on the disk only when its folder is. */
void settle(const std::filesystem::path& folder) {
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return;
    fsync(opened);
    close(opened);
}

} // namespace

std::optional<std::string> replaceWholeFile(const std::filesystem::path& file, std::string_view text) {
    const auto beside = unfinishedOf(file);
    unlink(beside.c_str());
    const int fresh = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fresh < 0) return failureOf(beside);
    std::optional<std::string> failure;
    if (!takeRights(fresh, file) || !writeAll(fresh, text) || fsync(fresh) != 0) failure = failureOf(beside);
    if (close(fresh) != 0 && !failure) failure = failureOf(beside);
    if (!failure && rename(beside.c_str(), file.c_str()) != 0) failure = failureOf(file);
    if (failure) {
        unlink(beside.c_str());
    } else {
        settle(file.parent_path());
    }
    return failure;
}

void removeUnfinished(const std::filesystem::path& file) {
    std::error_code error;
    const auto target = std::filesystem::canonical(file, error);
    if (error) return;
    const auto left = unfinishedOf(target);
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(left, error))) return;
    const WriterLock onlyWriter(target, std::chrono::milliseconds(0));
    if (onlyWriter.isHeld()) unlink(left.c_str());
}

} // namespace tavik::fleet
