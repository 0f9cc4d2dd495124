// Watches one file for changes of any kind: written in place, replaced by renaming, removed, made again.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include <sys/stat.h>

namespace tavik::fleet {

class FileWatcher {
public:
    /** Both are called on the watcher's thread.
     *  @param onChange comes after the file may have changed, also when it did not, and again from time to time as long
     *  as the file isUnread, or when it throws. Changes after the constructor has returned are not missed.
     *  @param isUnread tells that the last attempt to read the file failed. */
    FileWatcher(const std::string& path, std::function<void()> onChange, std::function<bool()> isUnread);
    ~FileWatcher();
    FileWatcher(const FileWatcher&) = delete;
    FileWatcher& operator=(const FileWatcher&) = delete;

private:
    /** What tells one state of the file from another without reading it. */
    struct Signature {
        dev_t device;
        ino_t inode;
        off_t size;
        std::int64_t changedNanoseconds;

        bool operator==(const Signature&) const = default;
    };

    /** A kernel object that is closed with its owner; -1 if the kernel gave none. */
    class Descriptor {
    public:
        explicit Descriptor(int number) : number_(number) {}
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        int number() const { return number_; }

    private:
        int number_;
    };

    void run();
    void tellChange();
    void watchFolder();
    bool eventsNameTheFile();
    bool looksChanged();
    std::optional<Signature> signature() const;

    std::string path_;
    std::string folder_;
    std::string name_;
    std::function<void()> onChange_;
    std::function<bool()> isUnread_;
    Descriptor notifications_;
    Descriptor stop_;
    int folderWatch_ = -1;
    std::optional<Signature> told_;     ///< state of the file when a change was told last
    std::optional<Signature> lastSeen_; ///< state of the file when it was looked at last
    std::thread thread_;                // last: the thread uses all of the above
};

} // namespace tavik::fleet
