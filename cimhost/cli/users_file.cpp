#include "cimhost/cli/users_file.h"

#include "cimhost/http/password_hash.h"
#include "cimhost/model/utf8.h"
#include "cimhost/storage/atomic_file.h"
#include "cimhost/storage/descriptor.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace cimhost::cli {

namespace {

constexpr std::size_t longestFile = std::size_t{1} << 20;
constexpr std::size_t longestName = 128;
constexpr std::chrono::seconds longestWait{10};
constexpr std::chrono::milliseconds retry{20};

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& what) {
    throw std::runtime_error(file.string() + ": " + what);
}

bool isSameFile(int descriptor, const std::filesystem::path& file) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(file.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

// Two who change the file at the same time come one after the other. The file itself is what is locked, since only its
// owner can open it; whoever gets the lock of one that has been replaced meanwhile tries the new one.
class FileLock {
public:
    explicit FileLock(const std::filesystem::path& file) {
        const auto until = std::chrono::steady_clock::now() + longestWait;
        while (!tryLock(file)) {
            if (std::chrono::steady_clock::now() > until) fail(file, "somebody else is changing it");
            std::this_thread::sleep_for(retry);
        }
    }

private:
    bool tryLock(const std::filesystem::path& file) {
        descriptor.emplace(::open(file.c_str(), O_RDONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (descriptor->get() < 0) fail(file, std::strerror(errno));
        return ::flock(descriptor->get(), LOCK_EX | LOCK_NB) == 0 && isSameFile(descriptor->get(), file);
    }

    std::optional<Descriptor> descriptor;
};

void requireName(std::string_view name) {
    const bool isShown = std::all_of(name.begin(), name.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte >= 0x20 && byte != 0x7f && character != ':';
    });
    if (!name.empty() && name.front() != '#' && isShown && isUtf8(name) && name.size() <= longestName) return;
    throw std::runtime_error("a user's name has 1 to 128 bytes, no colon and no control character, and does not begin "
                             "with #");
}

void requirePassword(const std::string& password) {
    if (password.empty()) throw std::runtime_error("the password is empty");
    if (password.find('\0') != std::string::npos) throw std::runtime_error("the password holds a NUL");
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    const std::optional<std::string> content = readWholeFile(file, longestFile);
    if (!content) fail(file, std::strerror(ENOENT));
    std::istringstream stream(*content);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Empty for a comment and whatever else names nobody.
std::string_view userOf(std::string_view line) {
    const std::size_t colon = line.find(':');
    return line.empty() || line.front() == '#' || colon == std::string_view::npos ? std::string_view()
                                                                                  : line.substr(0, colon);
}

void replace(const std::filesystem::path& file, const std::vector<std::string>& lines) {
    std::string content;
    for (const std::string& line : lines)
        content.append(line).append("\n");
    removeUnfinished(file);
    replacePrivateFile(file, content);
}

} // namespace

bool setUser(const std::filesystem::path& file, std::string_view name, const std::string& password) {
    requireName(name);
    requirePassword(password);
    const std::string line = std::string(name) + ":" + http::newHash(password);
    const FileLock lock(file);
    std::vector<std::string> lines = linesOf(file);
    const auto known = std::find_if(lines.begin(), lines.end(),
                                    [name](const std::string& candidate) { return userOf(candidate) == name; });
    const bool wasThere = known != lines.end();
    if (wasThere) {
        *known = line;
    } else {
        lines.push_back(line);
    }
    replace(file, lines);
    return wasThere;
}

void removeUser(const std::filesystem::path& file, std::string_view name) {
    if (!std::filesystem::exists(file)) fail(file, std::strerror(ENOENT));
    const FileLock lock(file);
    std::vector<std::string> lines = linesOf(file);
    const std::size_t gone =
        std::erase_if(lines, [name](const std::string& candidate) { return userOf(candidate) == name; });
    if (gone == 0) fail(file, "there is no user " + std::string(name));
    replace(file, lines);
}

std::vector<std::string> usersIn(const std::filesystem::path& file) {
    std::vector<std::string> users;
    for (const std::string& line : linesOf(file)) {
        if (const std::string_view user = userOf(line); !user.empty()) users.emplace_back(user);
    }
    return users;
}

} // namespace cimhost::cli
