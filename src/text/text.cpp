#include "text/text.h"

#include "log/log.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace merolt {

namespace {

bool isBlank(char character) { return character == ' ' || character == '\t'; }

/// The two digits of each byte. Every record and every instance prints addresses and names, and printf would take a
/// good part of their time.
constexpr auto hexadecimals = [] {
    constexpr char digits[] = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte)
        pairs[byte] = {digits[byte >> 4], digits[byte & 0x0F]};
    return pairs;
}();

void writeHexadecimal(const std::uint8_t* bytes, std::size_t count, char* target) {
    for (std::size_t index = 0; index < count; ++index)
        std::memcpy(target + 2 * index, hexadecimals[bytes[index]].data(), 2);
    target[2 * count] = '\0';
}

} // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

void trimString(char* text) {
    const std::string_view kept = trimmed(text);
    std::memmove(text, kept.data(), kept.size());
    text[kept.size()] = '\0';
}

bool equalsIgnoringCase(const char* left, const char* right) { return strcasecmp(left, right) == 0; }

WorldWideNameText formatWorldWideName(const std::uint8_t* name) {
    char digits[WorldWideNameText::capacity + 1];
    writeHexadecimal(name, 8, digits);
    WorldWideNameText text;
    text.assign({digits, WorldWideNameText::capacity});
    return text;
}

const char* formatMACAddress(const std::uint8_t* address, char* buffer) {
    static char moduleBuffer[13];
    char* target = buffer ? buffer : moduleBuffer;
    writeHexadecimal(address, 6, target);
    return target;
}

NumberText formatNumber(int number, std::size_t width) {
    char digits[NumberText::capacity];
    char* const end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    NumberText made;
    constexpr std::string_view zeros = "00000000";
    made.join({zeros.substr(0, text.size() < width ? width - text.size() : 0), text});
    return made;
}

void* CoreAlloc(std::size_t size) { return std::calloc(1, size); }

void CoreFree(void* block) {
    if (!block) {
        DEBUG_LOG("CoreFree: Attempted to free NULL pointer...");
        return;
    }
    std::free(block);
}

} // namespace merolt
