// One writer of a file at a time, without a place where others can stand in the way.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include <sys/stat.h>

namespace tavik::fleet {

/** A writer needs moments; whoever has waited for so long is told that another one is at work. */
inline constexpr std::chrono::milliseconds writerPatience{5000};

/** Keeps the other writers of a file away while it lives; the end of the process, however it comes, frees it too. It
 *  holds a lock on a file of the same name with ".lock" behind it, which stays and which only the owner of the first
 *  file can open: whoever may merely read a folder cannot hold up those who write there. */
class WriterLock {
public:
    /** Waits for other writers, but not for ever.
     *  @param file is there, and no symbolic link. */
    explicit WriterLock(const std::filesystem::path& file, std::chrono::milliseconds patience = writerPatience);
    ~WriterLock();
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;

    bool isHeld() const { return reason_.empty(); }
    /** It is not held because another writer had it all the time. */
    bool isBusy() const { return isBusy_; }
    /** Why it is not held: a text that names the file. */
    const std::string& reason() const { return reason_; }

private:
    /** How one look at the lock file ended. */
    enum class Look { held, taken, replaced, failed };

    Look look(const struct stat& guarded);
    bool openLock(const struct stat& guarded);
    bool isSafe(const struct stat& guarded);
    bool makeLock(const struct stat& guarded);
    bool isStillTheLock() const;
    bool fail(const std::string& problem);
    void close();

    const std::filesystem::path path_;
    int lock_ = -1;
    bool isBusy_ = false;
    std::string reason_;
};

} // namespace tavik::fleet
