#include "tavik/host/sys_tree.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavik/host/folders.h"

namespace tavik::host {

namespace {

// The kernel gives a page at most for a text attribute.
constexpr std::size_t largestText = 4096;
constexpr std::size_t mostNames = 65536;

/** The kernel gives at most a page a call, and less only at the end. */
constexpr std::size_t page = 4096;

/** Up to limit bytes; absent only if the very first read fails. */
Attribute<Bytes> readAll(int file, std::size_t limit) {
    Bytes content;
    std::size_t size = 0;
    for (std::size_t count = page; size < limit && count >= page;) {
        const auto wanted = std::min(std::max(page + 1, size), limit - size);
        content.resize(size + wanted);
        ssize_t got = 0;
        do
            got = ::read(file, content.data() + size, wanted);
        while (got < 0 && errno == EINTR);
        if (got < 0 && size == 0) return errno == EISDIR ? Absence{"not a file"} : fileAbsence(errno);
        count = got < 0 ? 0 : static_cast<std::size_t>(got);
        size += count;
    }
    content.resize(size);
    return content;
}

// No device is opened, not even for a moment: that alone makes a tape rewind.
constexpr int forReading = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC;

/** The file at the end of the path, wherever in the tree links lead. */
Attribute<SharedDescriptor> openRegular(const Folders& folders, const std::string& path) {
    const auto follow = [&] {
        return folders.resolve(path).then([&](const std::string& target) { return openRegular(folders, target); });
    };
    const auto folder = folders.folder(parentPath(path));
    if (!folder) return folder.absence();
    if (!folders.isMachine()) {
        const auto kind = folders.kindIn(**folder, path);
        if (!kind) return kind.absence();
        if (*kind == DT_LNK) return follow();
        if (*kind != DT_REG) return Absence{"not a file"};
    }
    const int file = ::openat((*folder)->get(), baseName(path).c_str(), forReading);
    if (file < 0 && errno == ELOOP) return follow();
    if (file < 0) return fileAbsence(errno);
    return std::make_shared<const Descriptor>(file);
}

bool isBlank(char character) { return character == ' ' || character == '\t' || character == '\n'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

Attribute<std::string> printableText(const Bytes& content) {
    if (content.size() > largestText) return Absence{"longer than 4096 bytes"};
    const auto text = trimmed({reinterpret_cast<const char*>(content.data()), content.size()});
    if (text.empty()) return Absence{"empty"};
    const auto printable = [](char character) { return (character >= ' ' && character <= '~') || isBlank(character); };
    if (!std::all_of(text.begin(), text.end(), printable)) return Absence{"not printable text"};
    return std::string(text);
}

} // namespace

SysTree::SysTree(const std::filesystem::path& root) : folders_(std::make_shared<const Folders>(root)) {}

SysTree::SysTree(std::shared_ptr<const Folders> folders) : folders_(std::move(folders)) {}

SysTree SysTree::forOneLook() const { return SysTree(std::make_shared<const HeldFolders>(*folders_)); }

Attribute<std::string> SysTree::text(const std::string& path) const {
    return bytes(path, largestText + 1).then(printableText);
}

Attribute<std::uint64_t> SysTree::number(const std::string& path, std::uint64_t largest) const {
    return text(path).then([largest](const std::string& digits) { return parseNumber(digits, largest); });
}

Attribute<SharedDescriptor> SysTree::open(const std::string& path) const { return openRegular(*folders_, path); }

Attribute<SharedDescriptor> SysTree::openFolder(const std::string& path) const { return folders_->folder(path); }

Attribute<Bytes> SysTree::bytes(const std::string& path, std::size_t limit) const {
    return openRegular(*folders_, path).then([limit](const SharedDescriptor& file) {
        return readAll(file->get(), limit);
    });
}

std::vector<std::string> SysTree::names(const std::string& folder) const {
    std::vector<std::string> found;
    const auto place = folders_->folder(folder);
    if (!place) return found;
    for (auto& [name, kind] : listEntries(**place, mostNames))
        found.push_back(std::move(name));
    std::sort(found.begin(), found.end());
    return found;
}

Attribute<std::string> SysTree::resolve(const std::string& path) const { return folders_->resolve(path); }

Attribute<std::string> SysTree::linkName(const std::string& path) const {
    const auto folder = folders_->folder(parentPath(path));
    if (!folder) return folder.absence();
    std::array<char, PATH_MAX> target{};
    const auto size = ::readlinkat((*folder)->get(), baseName(path).c_str(), target.data(), target.size());
    if (size < 0) return fileAbsence(errno);
    return baseName(std::string(target.data(), static_cast<std::size_t>(size)));
}

void SysTree::follow() const { folders_->follow(); }

bool SysTree::exists(const std::string& path) const { return folders_->kind(path).present(); }

Attribute<std::string> textFromStart(const Descriptor& file) {
    Bytes content(largestText + 1);
    ssize_t size = 0;
    do
        size = ::pread(file.get(), content.data(), content.size(), 0);
    while (size < 0 && errno == EINTR);
    if (size < 0) return fileAbsence(errno);
    content.resize(static_cast<std::size_t>(size));
    return printableText(content);
}

Attribute<std::uint64_t> parseNumber(std::string_view text, std::uint64_t largest) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const auto digits = hexadecimal ? text.substr(2) : text;
    std::uint64_t value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size())
        return Absence{"not a number: \"" + std::string(text.substr(0, 40)) + "\""};
    if (error == std::errc::result_out_of_range || value > largest)
        return Absence{"number too large: " + std::string(text.substr(0, 40))};
    return value;
}

std::string baseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string parentPath(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

} // namespace tavik::host
