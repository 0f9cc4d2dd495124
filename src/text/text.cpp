#include "text/text.h"

#include "log/log.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace merolt {

namespace {

bool isBlank(char character) { return character == ' ' || character == '\t'; }

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
    text.format("%02X%02X%02X%02X%02X%02X%02X%02X", name[0], name[1], name[2], name[3], name[4], name[5], name[6],
                name[7]);
    return text;
}

const char* formatMACAddress(const std::uint8_t* address, char* buffer) {
    static char moduleBuffer[13];
    char* target = buffer ? buffer : moduleBuffer;
    std::snprintf(target, sizeof(moduleBuffer), "%02X%02X%02X%02X%02X%02X", address[0], address[1], address[2],
                  address[3], address[4], address[5]);
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
