// The provider's own files, log and settings, opened so that nothing that stands in their place holds anybody up: a
// FIFO, a device or a folder of that name counts as a file that is not there.
#pragma once

#include <array>
#include <istream>
#include <streambuf>
#include <string_view>

namespace merolt::platform {

/// What becomes of a symbolic link that stands in the place of a file.
enum class Links { followed, refused };

/// Appends a text to a regular file; makes it, with the rights that the process's mask leaves, where there is none.
/// Never waits for another process, and takes no memory. What cannot be written is lost.
/// @return false if the file cannot be opened so; errno is ELOOP where a link was refused.
bool appendToFile(const char* path, Links links, std::string_view text);

/// The bytes of a descriptor, which is closed at the end; none of a negative one.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int opened) : descriptor(opened) {}
    ~DescriptorBuffer() override;
    DescriptorBuffer(const DescriptorBuffer&) = delete;
    DescriptorBuffer& operator=(const DescriptorBuffer&) = delete;

    [[nodiscard]] bool isOpen() const { return descriptor >= 0; }

protected:
    int_type underflow() override;

private:
    const int descriptor;
    std::array<char, 4096> bytes{};
};

/// A regular file as a stream. It has failed from the start if there is no such file or it cannot be opened.
class RegularFileStream : private DescriptorBuffer, public std::istream {
public:
    explicit RegularFileStream(const char* path);

    using DescriptorBuffer::isOpen;
};

} // namespace merolt::platform
