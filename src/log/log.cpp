#include "log/log.h"

#include "log/printable.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/shared_folder.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace merolt {

bool gDebugLog = true;
bool gErrorLog = true;
char gLogFileName[272];
char gPrevLogFileName[272];
char gInstallDirectory[272];

namespace {

constexpr const char* logFile = "Merolt_CNA_Provider.log";
constexpr const char* previousLogFile = "Merolt_CNA_Provider_prev.log";
constexpr long long rotationSize = 0x100000;

/// Where others may make files, a link could lead a line to a file that only this user may write to. Elsewhere an
/// administrator's link is followed. The folder is looked at only where there is a link.
void append(std::string_view line) {
    if (platform::appendToFile(gLogFileName, platform::Links::refused, line) || errno != ELOOP) return;
    if (!platform::othersMayMakeFilesBeside(gLogFileName))
        platform::appendToFile(gLogFileName, platform::Links::followed, line);
}

void appendLine(const char* message) {
    const std::time_t now = platform::services().now();
    char time[32] = "";
    ctime_r(&now, time);
    time[std::strcspn(time, "\n")] = '\0';
    char line[sizeof(time) + logMessageSize + 2];
    const int length = std::snprintf(line, sizeof(line), "%s %s\n", time, message);
    append({line, static_cast<std::size_t>(length)});
}

// The line about a failed rename comes before the line that was to be written. It does not rotate by itself: with the
// file still oversized it would only fail again.
void reportFailedRename(int result, int error) {
    char message[logMessageSize];
    std::snprintf(message, sizeof(message), "Merolt_FC_Utils Error renaming log file, result=%d, errno=%d", result,
                  error);
    appendLine(message);
}

void rotateIfFull() {
    if (platform::services().fileSize(gLogFileName) < rotationSize) return;
    std::remove(gPrevLogFileName);
    const int result = std::rename(gLogFileName, gPrevLogFileName);
    const int error = errno;
    if (result != 0 && error != ENOENT && gErrorLog) reportFailedRename(result, error);
}

void writeLine(const char* format, va_list arguments) {
    rotateIfFull();
    char message[logMessageSize];
    const int length = std::vsnprintf(message, sizeof(message), format, arguments);
    if (length < 0) return;
    char line[logMessageSize];
    copyPrintable(message, outsideLength(format, message, static_cast<std::size_t>(length)), line);
    appendLine(line);
}

void useInstallLocation(const std::string& location) {
    const char* separator = location.back() == '/' ? "" : "/";
    std::snprintf(gLogFileName, sizeof(gLogFileName), "%s%slog/%s", location.c_str(), separator, logFile);
    std::snprintf(gPrevLogFileName, sizeof(gPrevLogFileName), "%s%slog/%s", location.c_str(), separator,
                  previousLogFile);
    std::snprintf(gInstallDirectory, sizeof(gInstallDirectory), "%s%s", location.c_str(), separator);
}

} // namespace

void initializeLogging() {
    std::snprintf(gLogFileName, sizeof(gLogFileName), "%s", logFile);
    std::snprintf(gPrevLogFileName, sizeof(gPrevLogFileName), "%s", previousLogFile);
    gInstallDirectory[0] = '\0';
    const std::string location = platform::services().installLocation();
    if (!location.empty()) useInstallLocation(location);
}

void debugLog(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    writeLine(format, arguments);
    va_end(arguments);
}

void errorLog(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    writeLine(format, arguments);
    va_end(arguments);
}

} // namespace merolt
