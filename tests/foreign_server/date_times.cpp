#include "date_times.h"

#include <cstdio>
#include <ctime>

namespace foreign_server {

namespace {

constexpr std::size_t textLength = 25;
constexpr std::size_t signPlace = 21;
constexpr CMPIUint64 million = 1000000;
constexpr int ownMinutesEast = 60;

int numberIn(const std::string& text, std::size_t from, std::size_t digits) {
    int number = 0;
    for (std::size_t place = from; place < from + digits; ++place)
        number = number * 10 + (text[place] >= '0' && text[place] <= '9' ? text[place] - '0' : 0);
    return number;
}

bool isDigitOrStar(char character) { return (character >= '0' && character <= '9') || character == '*'; }

} // namespace

bool isDateTime(const std::string& text) {
    if (text.size() != textLength || text[14] != '.') return false;
    const char sign = text[signPlace];
    if (sign != '+' && sign != '-' && sign != ':') return false;
    for (std::size_t place = 0; place < textLength; ++place) {
        if (place != 14 && place != signPlace && !isDigitOrStar(text[place])) return false;
    }
    return true;
}

bool isIntervalOf(const DateTimeData& date) {
    return date.text.empty() ? date.isInterval : date.text[signPlace] == ':';
}

CMPIUint64 microsecondsOf(const DateTimeData& date) {
    if (date.text.empty()) return date.microseconds;
    const std::string& text = date.text;
    const auto fraction = static_cast<CMPIUint64>(numberIn(text, 15, 6));
    const int clock = numberIn(text, 8, 2) * 3600 + numberIn(text, 10, 2) * 60 + numberIn(text, 12, 2);
    if (isIntervalOf(date))
        return (static_cast<CMPIUint64>(numberIn(text, 0, 8)) * 86400 + static_cast<CMPIUint64>(clock)) * million +
               fraction;
    std::tm day{};
    day.tm_year = numberIn(text, 0, 4) - 1900;
    day.tm_mon = numberIn(text, 4, 2) - 1;
    day.tm_mday = numberIn(text, 6, 2);
    const int east = numberIn(text, 22, 3) * 60 * (text[signPlace] == '-' ? -1 : 1);
    return static_cast<CMPIUint64>(timegm(&day) + clock - east) * million + fraction;
}

std::string textOf(const DateTimeData& date) {
    if (!date.text.empty()) return date.text;
    const auto fraction = static_cast<unsigned>(date.microseconds % million);
    auto seconds = static_cast<std::time_t>(date.microseconds / million);
    char text[64];
    if (date.isInterval) {
        std::snprintf(text, sizeof text, "%08ld%02ld%02ld%02ld.%06u:000", seconds / 86400, seconds / 3600 % 24,
                      seconds / 60 % 60, seconds % 60, fraction);
        return text;
    }
    seconds += ownMinutesEast * 60;
    std::tm moment{};
    gmtime_r(&seconds, &moment);
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d.%06u+%03d", moment.tm_year + 1900, moment.tm_mon + 1,
                  moment.tm_mday, moment.tm_hour, moment.tm_min, moment.tm_sec, fraction, ownMinutesEast);
    return text;
}

} // namespace foreign_server
