#include "tavik/host/folders.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

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

Attribute<SharedDescriptor> Folders::folder(const std::string& path) const {
    if (!rootFolder_->opened()) return fileAbsence(ENOENT);
    if (path.empty()) return rootFolder_;
    return open(path, asPlace);
}

Attribute<SharedDescriptor> Folders::open(const std::string& path, int flags) const {
    if (!isConfinedByKernel_) return openByName(path, flags);
    return shared(openBelow(rootFolder_->get(), path.c_str(), flags));
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

Attribute<SharedDescriptor> HeldFolders::folder(const std::string& path) const {
    const auto held = std::find_if(held_.begin(), held_.end(),
                                   [&](const Held& entry) { return entry.folder != nullptr && entry.path == path; });
    if (held != held_.end()) return held->folder;
    auto opened = Folders::folder(path);
    if (opened) held_[std::exchange(oldest_, (oldest_ + 1) % mostHeld)] = {path, *opened};
    return opened;
}

} // namespace tavik::host
