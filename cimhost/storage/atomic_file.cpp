#include "cimhost/storage/atomic_file.h"

#include "cimhost/storage/descriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimhost {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file, std::string_view what) {
    const int reason = errno;
    throw std::runtime_error(file.string() + ": " + std::string(what) + ": " + std::strerror(reason));
}

constexpr std::string_view unfinished = ".unfinished.";
constexpr std::string_view anyLetters = "XXXXXX";

// Another process may take the file for one that was left, and remove it before it is locked. Then it is made again.
int makeLocked(const std::filesystem::path& target, std::string& name) {
    for (;;) {
        name = target.string().append(unfinished).append(anyLetters);
        Descriptor made(::mkostemp(name.data(), O_CLOEXEC));
        if (made.get() < 0) fail(target, "cannot write beside it");
        ::flock(made.get(), LOCK_EX | LOCK_NB);
        struct stat status {};
        if (::fstat(made.get(), &status) != 0 || status.st_nlink > 0) return made.release();
    }
}

// Removes its file unless that has taken its place. The file is locked as long as its writer lives, which tells it from
// files that killed writers have left.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target) : descriptor(makeLocked(target, name)) {}
    ~TemporaryFile() {
        if (!name.empty()) ::unlink(name.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(std::string_view content, const std::filesystem::path& target) {
        while (!content.empty()) {
            const ssize_t written = ::write(descriptor.get(), content.data(), content.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) fail(target, "cannot write");
            content.remove_prefix(static_cast<std::size_t>(written));
        }
        if (::fsync(descriptor.get()) != 0) fail(target, "cannot write");
    }

    void keepPermissionsOf(const std::filesystem::path& target) {
        struct stat old {};
        if (::stat(target.c_str(), &old) == 0 && ::fchmod(descriptor.get(), old.st_mode & 07777) != 0) {
            fail(target, "cannot keep its permissions");
        }
    }

    void keepOwnerOf(const std::filesystem::path& target) {
        struct stat old {};
        struct stat made {};
        if (::stat(target.c_str(), &old) != 0 || ::fstat(descriptor.get(), &made) != 0) return;
        if (old.st_uid == made.st_uid && old.st_gid == made.st_gid) return;
        if (::fchown(descriptor.get(), old.st_uid, old.st_gid) != 0) fail(target, "cannot keep its owner");
    }

    void takePlaceOf(const std::filesystem::path& target) {
        if (::rename(name.c_str(), target.c_str()) != 0) fail(target, "cannot replace it");
        name.clear();
    }

private:
    std::string name;
    Descriptor descriptor;
};

std::filesystem::path targetOf(const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::weakly_canonical(file, error);
    return error ? file : resolved;
}

void makeFolder(const std::filesystem::path& folder) {
    if (folder.empty() || std::filesystem::is_directory(folder)) return;
    makeFolder(folder.parent_path());
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) fail(folder, "cannot make the folder");
}

void syncFolder(const std::filesystem::path& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.get() >= 0) ::fsync(opened.get());
}

bool isUnfinishedOf(const std::filesystem::path& target, const std::filesystem::path& file) {
    const std::string head = target.filename().string().append(unfinished);
    const std::string name = file.filename().string();
    return name.size() == head.size() + anyLetters.size() && name.compare(0, head.size(), head) == 0;
}

// A file that a killed writer has left belongs to this user, and nobody holds its lock.
void removeIfLeft(const std::filesystem::path& file) {
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) return;
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) return;
    if (::flock(opened.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(file.c_str());
}

void replace(const std::filesystem::path& file, std::string_view content,
             void (TemporaryFile::*keep)(const std::filesystem::path& replaced)) {
    const std::filesystem::path target = targetOf(file);
    makeFolder(target.parent_path());
    TemporaryFile written(target);
    (written.*keep)(target);
    written.write(content, target);
    written.takePlaceOf(target);
    syncFolder(target.parent_path());
}

} // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t longest) {
    // A FIFO would keep the program waiting for its other end.
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (opened.get() < 0 && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
    struct stat status {};
    if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) fail(file, "cannot open it");
    if (!S_ISREG(status.st_mode)) throw std::runtime_error(file.string() + ": not a regular file");
    std::string content;
    char part[16384];
    for (;;) {
        const ssize_t got = ::read(opened.get(), part, sizeof part);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(file, "cannot read it");
        if (got == 0) return content;
        content.append(part, static_cast<std::size_t>(got));
        if (content.size() > longest) {
            throw std::runtime_error(file.string() + ": longer than " + std::to_string(longest) + " bytes");
        }
    }
}

void removeUnfinished(const std::filesystem::path& file) {
    const std::filesystem::path target = targetOf(file);
    std::error_code error;
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    std::filesystem::directory_iterator place(folder, error);
    for (; !error && place != std::filesystem::directory_iterator(); place.increment(error)) {
        if (isUnfinishedOf(target, place->path())) removeIfLeft(place->path());
    }
}

void replaceFile(const std::filesystem::path& file, std::string_view content) {
    replace(file, content, &TemporaryFile::keepPermissionsOf);
}

void replacePrivateFile(const std::filesystem::path& file, std::string_view content) {
    replace(file, content, &TemporaryFile::keepOwnerOf);
}

} // namespace cimhost
