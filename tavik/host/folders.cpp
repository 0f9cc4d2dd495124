#include "tavik/host/folders.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string_view>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "tavik/host/sys_tree.h"

namespace tavik::host {

namespace {

constexpr int asPlace = O_PATH | O_DIRECTORY;

Descriptor openBelow(int folder, const char* path, int flags) {
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    // The kernel asks to try again where anybody renames or mounts something during a lookup with "..".
    constexpr int mostTries = 1000;
    long opened = -1;
    for (int tries = 0; tries < mostTries; ++tries) {
        opened = ::syscall(SYS_openat2, folder, path, &how, sizeof how);
        if (opened >= 0 || errno != EAGAIN) break;
    }
    return Descriptor(static_cast<int>(opened));
}

/** Asked for at once: an absence tells the error of the call that opened it. */
Attribute<SharedDescriptor> shared(Descriptor opened) {
    if (!opened.opened()) return fileAbsence(errno);
    return std::make_shared<const Descriptor>(std::move(opened));
}

} // namespace

Absence fileAbsence(int error) {
    return {error == EXDEV ? "leads out of the root" : std::generic_category().message(error)};
}

Folders::Folders(const std::filesystem::path& root) {
    std::error_code error;
    root_ = std::filesystem::canonical(root, error);
    if (error) root_ = root;
    rootFolder_ = std::make_shared<const Descriptor>(::open(root_.c_str(), asPlace | O_CLOEXEC));
    isConfinedByKernel_ = openBelow(rootFolder_->get(), ".", asPlace).opened();
}

Folders::Folders(const Folders& other)
    : root_(other.root_), isConfinedByKernel_(other.isConfinedByKernel_), rootFolder_(other.rootFolder()) {}

SharedDescriptor Folders::rootFolder() const {
    const std::lock_guard lock(mutex_);
    return rootFolder_;
}

void Folders::follow() const {
    if (isMachine()) return;
    struct stat held {};
    struct stat there {};
    if (::stat(root_.c_str(), &there) != 0) return;
    const bool isHeld = ::fstat(rootFolder()->get(), &held) == 0;
    if (isHeld && held.st_dev == there.st_dev && held.st_ino == there.st_ino) return;
    auto opened = std::make_shared<const Descriptor>(::open(root_.c_str(), asPlace | O_CLOEXEC));
    const std::lock_guard lock(mutex_);
    rootFolder_ = std::move(opened);
}

Attribute<SharedDescriptor> Folders::folder(const std::string& path) const {
    const auto root = rootFolder();
    if (!root->opened()) return fileAbsence(ENOENT);
    if (path.empty()) return root;
    return open(path, asPlace);
}

Attribute<std::uint8_t> Folders::kind(const std::string& path) const {
    const auto place = folder(parentPath(path));
    if (!place) return place.absence();
    return kindIn(**place, path);
}

Attribute<std::uint8_t> Folders::kindIn(const Descriptor& parent, const std::string& path) const {
    struct stat status {};
    if (::fstatat(parent.get(), baseName(path).c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return fileAbsence(errno);
    return static_cast<std::uint8_t>(IFTODT(status.st_mode));
}

Attribute<SharedDescriptor> Folders::open(const std::string& path, int flags) const {
    if (!isConfinedByKernel_) return openByName(path, flags);
    return shared(openBelow(rootFolder()->get(), path.c_str(), flags));
}

Attribute<SharedDescriptor> Folders::openByName(const std::string& path, int flags) const {
    const auto resolved = resolveByName(path);
    if (!resolved) return resolved.absence();
    return shared(Descriptor(::open((root_ / *resolved).c_str(), flags | O_CLOEXEC | O_NOFOLLOW)));
}

Attribute<std::string> Folders::resolve(const std::string& path) const {
    if (!isConfinedByKernel_) return resolveByName(path);
    const auto place = open(path, O_PATH);
    if (!place) return place.absence();
    std::array<char, PATH_MAX> target{};
    const auto link = "/proc/self/fd/" + std::to_string((*place)->get());
    const auto size = ::readlink(link.c_str(), target.data(), target.size());
    if (size <= 0 || static_cast<std::size_t>(size) == target.size()) return resolveByName(path);
    const std::string whole(target.data(), static_cast<std::size_t>(size));
    const auto start = root_ == "/" ? std::string("/") : root_.string() + "/";
    return whole.starts_with(start) ? whole.substr(start.size()) : resolveByName(path);
}

Attribute<std::string> Folders::resolveByName(const std::string& path) const {
    std::error_code error;
    const auto whole = std::filesystem::canonical(root_ / path, error);
    if (error) return fileAbsence(error.value());
    const auto relative = whole.lexically_relative(root_);
    if (relative.empty() || *relative.begin() == "..") return fileAbsence(EXDEV);
    return relative.string();
}

HeldFolders::Held& HeldFolders::held(const std::string& path) const {
    const auto found =
        std::find_if(held_.begin(), held_.end(), [&](const Held& entry) { return entry.isUsed && entry.path == path; });
    if (found != held_.end()) return *found;
    auto& entry = held_.at(std::exchange(oldest_, (oldest_ + 1) % mostHeld));
    entry = {path, Folders::folder(path), std::nullopt, true};
    return entry;
}

Attribute<SharedDescriptor> HeldFolders::folder(const std::string& path) const { return held(path).folder; }

/** One list of a folder tells what many questions would. Folders of the machine have more in them than is asked for. */
Attribute<std::uint8_t> HeldFolders::kindIn(const Descriptor& parent, const std::string& path) const {
    constexpr std::size_t mostListed = 4096;
    if (isMachine()) return Folders::kindIn(parent, path);
    auto& [folderPath, folder, kinds, isUsed] = held(parentPath(path));
    if (!folder) return folder.absence();
    if (!kinds) {
        const auto entries = listEntries(**folder, mostListed);
        kinds.emplace(entries.begin(), entries.end());
    }
    const auto found = kinds->find(baseName(path));
    const bool isTold = found != kinds->end() && found->second != DT_UNKNOWN;
    if (isTold) return found->second;
    const bool isWhole = !kinds->empty() && kinds->size() < mostListed && found == kinds->end();
    return isWhole && baseName(path) != "." ? Attribute<std::uint8_t>(fileAbsence(ENOENT))
                                            : Folders::kindIn(parent, path);
}

Attribute<std::string> HeldFolders::resolve(const std::string& path) const {
    if (lastResolved_.first != path) lastResolved_ = {path, Folders::resolve(path)};
    return lastResolved_.second;
}

std::vector<std::pair<std::string, std::uint8_t>> listEntries(const Descriptor& folder, std::size_t most) {
    std::vector<std::pair<std::string, std::uint8_t>> found;
    const int opened = ::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opened < 0 ? nullptr : ::fdopendir(opened), ::closedir);
    if (!entries && opened >= 0) ::close(opened);
    while (const dirent* entry = entries && found.size() < most ? ::readdir(entries.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") found.emplace_back(name, entry->d_type);
    }
    return found;
}

} // namespace tavik::host
