// Memory that a provider was shown, and that must show what it is when it is read too late.
#pragma once

#include <cstddef>
#include <string_view>

#if defined(__SANITIZE_ADDRESS__)
#define FOREIGN_SERVER_WITH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FOREIGN_SERVER_WITH_ASAN 1
#endif
#endif

namespace foreign_server {

/// What dead memory is filled with.
inline constexpr unsigned char deadByte = 0xDB;

/// A block of exactly that size, so that AddressSanitizer sees a read behind it.
void* allocateShown(std::size_t size);
/// Overwrites a block. @param lastByte what the last byte becomes: 0 ends a text.
void fillDead(void* block, std::size_t size, unsigned char lastByte = deadByte) noexcept;
/// Keeps a dead block from being used for something else. AddressSanitizer then reports every access.
void bury(void* block, std::size_t size) noexcept;

/// A text as getCharPtr shows it; it dies with this object.
class ShownText {
public:
    ShownText() = default;
    explicit ShownText(std::string_view text);
    ~ShownText();
    ShownText(const ShownText&) = delete;
    ShownText& operator=(const ShownText&) = delete;

    /// Null if there is none.
    const char* get() const noexcept { return characters; }

private:
    char* characters = nullptr;
    std::size_t size = 0;
};

} // namespace foreign_server
