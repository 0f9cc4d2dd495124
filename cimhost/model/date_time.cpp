#include "cimhost/model/date_time.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace cimhost {
namespace {

constexpr std::uint64_t second = 1000000;
constexpr std::uint64_t minute = 60 * second;
constexpr std::uint64_t hour = 60 * minute;
constexpr std::uint64_t day = 24 * hour;

// Days since 1970-01-01 in the Gregorian calendar, counted in eras of 400 years that begin in March.
std::int64_t daysFromDate(std::int64_t year, unsigned month, unsigned dayOfMonth) noexcept {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + dayOfMonth - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

struct Date {
    unsigned year;
    unsigned month;
    unsigned day;
};

Date dateFromDays(std::uint64_t daysSince1970) noexcept {
    const std::uint64_t shifted = daysSince1970 + 719468;
    const std::uint64_t era = shifted / 146097;
    const auto dayOfEra = static_cast<unsigned>(shifted - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153;
    const unsigned month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    const auto year = static_cast<unsigned>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
    return {year, month, dayOfYear - (153 * shiftedMonth + 2) / 5 + 1};
}

unsigned daysInMonth(unsigned year, unsigned month) noexcept {
    constexpr std::array<unsigned, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeapYear = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && isLeapYear ? 29 : days[month - 1];
}

// Reads fields of digits one after the other. Asterisks count as zero, and after the first only asterisks may follow.
class Fields {
public:
    explicit Fields(std::string_view characters) noexcept : text(characters) {}

    unsigned next(std::size_t digits) noexcept {
        unsigned value = 0;
        for (std::size_t read = 0; read < digits; ++read, ++place) {
            const char character = text[place];
            if (character == '*') {
                anyUnknown = true;
            } else if (character < '0' || character > '9' || anyUnknown) {
                wrong = true;
            } else {
                value = value * 10 + static_cast<unsigned>(character - '0');
                continue;
            }
            value *= 10;
        }
        return value;
    }
    void expect(char character) noexcept { wrong = wrong || text[place++] != character; }

    [[nodiscard]] bool areLegal() const noexcept { return !wrong; }
    [[nodiscard]] bool haveUnknown() const noexcept { return anyUnknown; }

private:
    std::string_view text;
    std::size_t place = 0;
    bool anyUnknown = false;
    bool wrong = false;
};

std::optional<std::uint64_t> timeOfDay(Fields& fields) noexcept {
    const unsigned hours = fields.next(2);
    const unsigned minutes = fields.next(2);
    const unsigned seconds = fields.next(2);
    fields.expect('.');
    const unsigned microseconds = fields.next(6);
    if (!fields.areLegal() || hours > 23 || minutes > 59 || seconds > 59) return std::nullopt;
    return hours * hour + minutes * minute + seconds * second + microseconds;
}

std::optional<DateTimeValue> parseInterval(std::string_view text) noexcept {
    if (text.substr(22) != "000") return std::nullopt;
    Fields fields(text);
    const unsigned days = fields.next(8);
    const auto rest = timeOfDay(fields);
    if (!rest) return std::nullopt;
    return DateTimeValue{days * day + *rest, true};
}

std::optional<DateTimeValue> parsePointInTime(std::string_view text) noexcept {
    Fields fields(text);
    const unsigned year = fields.next(4);
    unsigned month = fields.next(2);
    if (month == 0 && fields.haveUnknown()) month = 1;
    unsigned dayOfMonth = fields.next(2);
    if (dayOfMonth == 0 && fields.haveUnknown()) dayOfMonth = 1;
    const auto rest = timeOfDay(fields);
    Fields offsetField(text.substr(22));
    const unsigned offset = offsetField.next(3);
    if (!rest || !offsetField.areLegal() || offsetField.haveUnknown()) return std::nullopt;
    if (month < 1 || month > 12 || dayOfMonth < 1 || dayOfMonth > daysInMonth(year, month)) return std::nullopt;

    const auto sinceMidnight = static_cast<std::int64_t>(*rest);
    const std::int64_t east = static_cast<std::int64_t>(offset * minute) * (text[21] == '-' ? -1 : 1);
    const std::int64_t instant =
        daysFromDate(year, month, dayOfMonth) * static_cast<std::int64_t>(day) + sinceMidnight - east;
    return DateTimeValue{instant < 0 ? 0 : static_cast<std::uint64_t>(instant), false};
}

} // namespace

std::optional<DateTimeValue> parseDateTime(std::string_view text) noexcept {
    if (text.size() != dateTimeTextLength) return std::nullopt;
    if (text[21] == ':') return parseInterval(text);
    if (text[21] == '+' || text[21] == '-') return parsePointInTime(text);
    return std::nullopt;
}

bool formatDateTime(DateTimeValue value, char* text) noexcept {
    const std::uint64_t days = value.microseconds / day;
    const std::uint64_t rest = value.microseconds % day;
    const auto hours = static_cast<unsigned>(rest / hour);
    const auto minutes = static_cast<unsigned>(rest % hour / minute);
    const auto seconds = static_cast<unsigned>(rest % minute / second);
    const auto microseconds = static_cast<unsigned>(rest % second);
    std::array<char, 80> written{};
    if (value.isInterval) {
        if (days > 99999999) return false;
        std::snprintf(written.data(), written.size(), "%08u%02u%02u%02u.%06u:000", static_cast<unsigned>(days), hours,
                      minutes, seconds, microseconds);
    } else {
        const Date date = dateFromDays(days);
        if (date.year > 9999) return false;
        std::snprintf(written.data(), written.size(), "%04u%02u%02u%02u%02u%02u.%06u+000", date.year, date.month,
                      date.day, hours, minutes, seconds, microseconds);
    }
    std::string_view(written.data(), dateTimeTextLength).copy(text, dateTimeTextLength);
    return true;
}

} // namespace cimhost
