#include "platform/files.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merolt::platform {

namespace {

/// Opens without waiting, as a FIFO would otherwise have it. @return negative unless it is a regular file.
int openRegular(const char* path, int flags) {
    constexpr mode_t everybodyUnlessMasked = 0666;
    const int opened = open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, everybodyUnlessMasked);
    struct stat status {};
    if (opened < 0 || (fstat(opened, &status) == 0 && S_ISREG(status.st_mode))) return opened;
    close(opened);
    errno = EINVAL;
    return -1;
}

} // namespace

bool appendToFile(const char* path, Links links, std::string_view text) {
    const int noLinks = links == Links::refused ? O_NOFOLLOW : 0;
    const int opened = openRegular(path, O_WRONLY | O_CREAT | O_APPEND | noLinks);
    if (opened < 0) return false;
    while (!text.empty()) {
        const ssize_t length = write(opened, text.data(), text.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) break;
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    close(opened);
    return true;
}

DescriptorBuffer::~DescriptorBuffer() {
    if (descriptor >= 0) close(descriptor);
}

DescriptorBuffer::int_type DescriptorBuffer::underflow() {
    if (!isOpen()) return traits_type::eof();
    ssize_t length = 0;
    do {
        length = read(descriptor, bytes.data(), bytes.size());
    } while (length < 0 && errno == EINTR);
    if (length <= 0) return traits_type::eof();
    setg(bytes.data(), bytes.data(), bytes.data() + length);
    return traits_type::to_int_type(*gptr());
}

RegularFileStream::RegularFileStream(const char* path)
    : DescriptorBuffer(openRegular(path, O_RDONLY)), std::istream(static_cast<DescriptorBuffer*>(this)) {
    if (!isOpen()) setstate(std::ios::failbit);
}

} // namespace merolt::platform
