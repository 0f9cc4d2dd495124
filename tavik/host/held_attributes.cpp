#include "tavik/host/held_attributes.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tavik/host/descriptor.h"

namespace tavik::host {

namespace {

std::size_t quarterOfDescriptors() {
    constexpr rlim_t most = 512;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
    return static_cast<std::size_t>(std::min(limit.rlim_cur / 4, most));
}

/** The machine's attributes fail to be read once their device has gone; a recorded file that was replaced does not. */
bool isStillThere(const Descriptor& file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 && status.st_nlink > 0;
}

} // namespace

HeldAttributes::HeldAttributes(const SysTree& tree) : tree_(tree), most_(quarterOfDescriptors()) {}

/** Null where none is held, or it is no longer what stands at its path. */
std::shared_ptr<const Descriptor> HeldAttributes::find(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto found = held_.find(path);
    return found == held_.end() || !isStillThere(*found->second) ? nullptr : found->second;
}

void HeldAttributes::keep(const std::string& path, const std::shared_ptr<const Descriptor>& opened) {
    const std::lock_guard lock(mutex_);
    if (held_.size() < most_ || held_.contains(path)) held_[path] = opened;
}

Attribute<std::string> HeldAttributes::text(const std::string& path) {
    if (const auto file = find(path))
        if (auto text = textFromStart(*file)) return text;
    const auto opened = tree_.open(path);
    if (opened) keep(path, *opened);
    return opened.then([](const auto& file) { return textFromStart(*file); });
}

bool HeldAttributes::exists(const std::string& path) {
    const auto parent = parentPath(path);
    auto folder = find(parent);
    if (!folder) {
        const auto opened = tree_.openFolder(parent);
        if (!opened) return false;
        keep(parent, *opened);
        folder = *opened;
    }
    struct stat status {};
    return ::fstatat(folder->get(), baseName(path).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

void HeldAttributes::clear() {
    const std::lock_guard lock(mutex_);
    held_.clear();
}

} // namespace tavik::host
