#include "text/text.h"

#include "log/log.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace merolt {

namespace {

bool isBlank(char character) { return character == ' ' || character == '\t'; }

// Every record and every instance prints addresses and names, and printf would take a good part of their time.
void writeHexadecimal(const std::uint8_t* bytes, std::size_t count, char* target) {
    constexpr char digits[] = "0123456789ABCDEF";
    for (std::size_t index = 0; index < count; ++index) {
        *target++ = digits[bytes[index] >> 4];
        *target++ = digits[bytes[index] & 0x0F];
    }
    *target = '\0';
}

} // namespace

void trimString(char* text) {
    std::size_t length = std::strlen(text);
    while (length > 0 && isBlank(text[length - 1]))
        text[--length] = '\0';
    std::size_t leading = 0;
    while (isBlank(text[leading]))
        ++leading;
    if (leading > 0) std::memmove(text, text + leading, length - leading + 1);
}

bool equalsIgnoringCase(const char* left, const char* right) { return strcasecmp(left, right) == 0; }

WorldWideNameText formatWorldWideName(const std::uint8_t* name) {
    WorldWideNameText text;
    writeHexadecimal(name, 8, text.data());
    return text;
}

const char* formatMACAddress(const std::uint8_t* address, char* buffer) {
    static char moduleBuffer[13];
    char* target = buffer ? buffer : moduleBuffer;
    writeHexadecimal(address, 6, target);
    return target;
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
