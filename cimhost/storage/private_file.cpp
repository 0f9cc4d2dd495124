#include "cimhost/storage/private_file.h"

#include "cimhost/storage/descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>

namespace cimhost {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& what) {
    throw std::runtime_error(file.string() + ": " + what);
}

[[noreturn]] void failWithReason(const std::filesystem::path& file) { fail(file, std::strerror(errno)); }

mode_t forbiddenBits(const struct stat& status, Readers readers) {
    const mode_t othersBits = S_IRWXG | S_IRWXO;
    const bool isRootsGroup = readers == Readers::rootsGroup && status.st_uid == 0;
    return isRootsGroup ? othersBits & ~static_cast<mode_t>(S_IRGRP) : othersBits;
}

// Checks the file after it is opened, so that the file that is checked is the one that is read.
int openPrivate(const std::filesystem::path& file, Readers readers) {
    Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) failWithReason(file);
    if (!S_ISREG(status.st_mode)) fail(file, "no regular file");
    if ((status.st_mode & forbiddenBits(status, readers)) != 0) {
        fail(file, "others than its owner can read or change it; run: chmod 600 " + file.string());
    }
    return opened.release();
}

} // namespace

void requirePrivateFile(const std::filesystem::path& file, Readers readers) {
    const Descriptor opened(openPrivate(file, readers));
}

std::string readPrivateFile(const std::filesystem::path& file, std::size_t longest) {
    const Descriptor opened(openPrivate(file, Readers::owner));
    std::string content;
    std::array<char, 16384> part{};
    for (;;) {
        const ssize_t got = ::read(opened.get(), part.data(), part.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failWithReason(file);
        if (got == 0) return content;
        content.append(part.data(), static_cast<std::size_t>(got));
        if (content.size() > longest) fail(file, "longer than " + std::to_string(longest) + " bytes");
    }
}

} // namespace cimhost
