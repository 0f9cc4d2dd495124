#include "flash/flash_update.h"

#include "flash/installer.h"
#include "log/log.h"
#include "platform/platform.h"

#include <cstdio>
#include <string>
#include <strings.h>

namespace merolt::flash {

const char* behindFileScheme(const char* uri) {
    constexpr char scheme[] = "file://";
    constexpr std::size_t length = sizeof(scheme) - 1;
    return strncasecmp(uri, scheme, length) == 0 ? uri + length : nullptr;
}

unsigned long long downloadFlashFile(const char* source, char* localName) {
    *localName = '\0';
    const std::string directory = platform::services().workingDirectory();
    if (directory.empty() || directory.size() > longestDirectory) return 0;
    std::snprintf(localName, localNameRoom, "%s/flash.bin", directory.c_str());
    return platform::services().copyFile(source, localName, largestImage).value_or(0);
}

std::uint32_t UpdateCNAFlashImage(CNACard* card, const void* image, unsigned long long size) {
    if (!card || !image || size == 0) return installFailed;
    const std::uint32_t status = TAVIK_UpdateFlash(card->adapterId, image, 0);
    if (status == 0) return installDone;
    ERROR_LOG("Merolt_NIC_Provider update flash error (%d): Undefined error = %u\n", static_cast<int>(card->adapterId),
              status);
    return installFailed;
}

} // namespace merolt::flash
