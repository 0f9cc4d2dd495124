#include "tavik/host/sys_tree.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavik::host {

namespace {

// The kernel gives a page at most for a text attribute.
constexpr std::size_t largestText = 4096;
constexpr std::size_t mostNames = 65536;

Absence systemAbsence(int error) { return {std::generic_category().message(error)}; }

class File {
public:
    explicit File(const char* path) : descriptor_(::open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {}
    ~File() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool opened() const { return descriptor_ >= 0; }

    bool isRegular() const {
        struct stat status {};
        return ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    }

    /** Up to limit bytes; absent only if the very first read fails. */
    Attribute<Bytes> read(std::size_t limit) const {
        Bytes content(limit);
        std::size_t size = 0;
        while (size < limit) {
            const auto count = ::read(descriptor_, content.data() + size, limit - size);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && size == 0) return systemAbsence(errno);
            if (count <= 0) break;
            size += static_cast<std::size_t>(count);
        }
        content.resize(size);
        return content;
    }

private:
    int descriptor_;
};

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

SysTree::SysTree(const std::filesystem::path& root) {
    std::error_code error;
    root_ = std::filesystem::canonical(root, error);
    if (error) root_ = root;
}

Attribute<std::string> SysTree::text(const std::string& path) const {
    return bytes(path, largestText + 1).then(printableText);
}

Attribute<std::uint64_t> SysTree::number(const std::string& path, std::uint64_t largest) const {
    return text(path).then([largest](const std::string& digits) { return parseNumber(digits, largest); });
}

Attribute<Bytes> SysTree::bytes(const std::string& path, std::size_t limit) const {
    return resolve(path).then([this, limit](const std::string& resolved) -> Attribute<Bytes> {
        const File file((root_ / resolved).c_str());
        if (!file.opened()) return systemAbsence(errno);
        if (!file.isRegular()) return Absence{"not a file"};
        return file.read(limit);
    });
}

std::vector<std::string> SysTree::names(const std::string& folder) const {
    std::vector<std::string> found;
    const auto resolved = resolve(folder);
    if (!resolved) return found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(root_ / *resolved, error), end;
         !error && entry != end && found.size() < mostNames; entry.increment(error))
        found.push_back(entry->path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
}

Attribute<std::string> SysTree::resolve(const std::string& path) const {
    std::error_code error;
    const auto whole = std::filesystem::canonical(root_ / path, error);
    if (error) return systemAbsence(error.value());
    const auto relative = whole.lexically_relative(root_);
    if (relative.empty() || *relative.begin() == "..") return Absence{"leads out of the root"};
    return relative.string();
}

Attribute<std::string> SysTree::linkName(const std::string& path) const {
    const auto folder = resolve(parentPath(path));
    if (!folder) return folder.absence();
    std::error_code error;
    const auto target = std::filesystem::read_symlink(root_ / *folder / baseName(path), error);
    if (error) return systemAbsence(error.value());
    return target.filename().string();
}

bool SysTree::exists(const std::string& path) const {
    std::error_code error;
    return std::filesystem::symlink_status(root_ / path, error).type() != std::filesystem::file_type::not_found &&
           !error;
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
