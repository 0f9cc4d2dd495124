#include "tavik/fleet/writer_lock.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tavik::fleet {

namespace {

constexpr mode_t ownerAlone = 0600;
constexpr mode_t rights = 07777;
constexpr std::chrono::milliseconds longestPause{20};
// A FIFO, a device or a link of that name neither holds anybody up nor leads anywhere.
constexpr int safely = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

std::filesystem::path lockOf(std::filesystem::path file) { return file += ".lock"; }

} // namespace

WriterLock::WriterLock(const std::filesystem::path& file, std::chrono::milliseconds patience) : path_(lockOf(file)) {
    struct stat guarded {};
    if (stat(file.c_str(), &guarded) != 0) {
        reason_ = file.string() + ": " + std::strerror(errno);
        return;
    }
    const auto until = std::chrono::steady_clock::now() + patience;
    for (std::chrono::milliseconds pause{1};; pause = std::min(2 * pause, longestPause)) {
        const Look found = look(guarded);
        if (found == Look::held || found == Look::failed) return;
        close();
        if (std::chrono::steady_clock::now() >= until) break;
        if (found == Look::taken) std::this_thread::sleep_for(pause);
    }
    isBusy_ = true;
    reason_ = file.string() + ": somebody else is changing it, and has held " + path_.filename().string() + " for " +
              std::to_string(patience.count()) + " ms";
}

WriterLock::~WriterLock() { close(); }

WriterLock::Look WriterLock::look(const struct stat& guarded) {
    if (!openLock(guarded)) return reason_.empty() ? Look::replaced : Look::failed;
    if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK || errno == EINTR) return Look::taken;
        fail(std::strerror(errno));
        return Look::failed;
    }
    return isStillTheLock() ? Look::held : Look::replaced;
}

/** @return false without a reason if somebody made or removed the lock file just now. */
bool WriterLock::openLock(const struct stat& guarded) {
    lock_ = open(path_.c_str(), safely);
    if (lock_ >= 0) return isSafe(guarded);
    if (errno == ENOENT) return makeLock(guarded);
    if (errno == ELOOP) return fail("it is a symbolic link; remove it");
    if (errno == ENXIO) return fail("it is no regular file; remove it");
    return fail(std::strerror(errno));
}

bool WriterLock::makeLock(const struct stat& guarded) {
    lock_ = open(path_.c_str(), safely | O_CREAT | O_EXCL, ownerAlone);
    if (lock_ < 0) return errno != EEXIST && fail(std::strerror(errno));
    // The owner of the file is to be able to change it after an administrator did.
    if (geteuid() == guarded.st_uid || fchown(lock_, guarded.st_uid, guarded.st_gid) == 0 || errno == EPERM)
        return true;
    return fail(std::strerror(errno));
}

/** A lock file that others can open is a lock that others can hold. */
bool WriterLock::isSafe(const struct stat& guarded) {
    struct stat found {};
    if (fstat(lock_, &found) != 0) return fail(std::strerror(errno));
    if (!S_ISREG(found.st_mode)) return fail("it is no regular file; remove it");
    if (found.st_nlink > 1) return fail("it has other names, so it is no lock file; remove it");
    if (found.st_uid != guarded.st_uid && found.st_uid != geteuid())
        return fail("it belongs to user " + std::to_string(found.st_uid) + ", who could hold it for ever; remove it");
    if ((found.st_mode & rights) == ownerAlone || fchmod(lock_, ownerAlone) == 0) return true;
    return fail(std::string("others can open it: ") + std::strerror(errno));
}

/** Somebody may have removed the file between its opening and its locking, and others then lock another one. */
bool WriterLock::isStillTheLock() const {
    struct stat locked {};
    struct stat named {};
    return fstat(lock_, &locked) == 0 && lstat(path_.c_str(), &named) == 0 && locked.st_ino == named.st_ino &&
           locked.st_dev == named.st_dev;
}

bool WriterLock::fail(const std::string& problem) {
    reason_ = path_.string() + ": " + problem;
    return false;
}

void WriterLock::close() {
    if (lock_ >= 0) ::close(lock_);
    lock_ = -1;
}

} // namespace tavik::fleet
