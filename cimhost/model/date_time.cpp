#include "cimhost/model/date_time.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace cimhost {
namespace {

constexpr std::uint64_t second = 1000000;
constexpr std::uint64_t minute = 60 * second;
constexpr std::uint64_t hour = 60 * minute;
constexpr std::uint64_t day = 24 * hour;
// Of those that four digits of a year can say, counted from 1970-01-01.
constexpr std::uint64_t lastDay =
    std::chrono::sys_days(std::chrono::year(9999) / std::chrono::December / 31).time_since_epoch().count();

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
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                                           std::chrono::day(dayOfMonth)};
    if (!date.ok()) return std::nullopt;

    const auto sinceMidnight = static_cast<std::int64_t>(*rest);
    const std::int64_t east = static_cast<std::int64_t>(offset * minute) * (text[21] == '-' ? -1 : 1);
    const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
    const std::int64_t instant = days * static_cast<std::int64_t>(day) + sinceMidnight - east;
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
        if (days > lastDay) return false;
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
        std::snprintf(written.data(), written.size(), "%04d%02u%02u%02u%02u%02u.%06u+000", int{date.year()},
                      unsigned{date.month()}, unsigned{date.day()}, hours, minutes, seconds, microseconds);
    }
    std::string_view(written.data(), dateTimeTextLength).copy(text, dateTimeTextLength);
    return true;
}

} // namespace cimhost
