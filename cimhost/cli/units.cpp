#include "cimhost/cli/units.h"

#include <limits>

namespace cimhost::cli {

namespace {

struct Unit {
    std::uint64_t factor;
    std::string_view name;
};

constexpr Unit speedUnits[] = {
    {1'000'000'000, " Gbit/s"},
    {1'000'000, " Mbit/s"},
    {1'000, " kbit/s"},
};

std::string speedText(std::uint64_t bits) {
    for (const Unit& unit : speedUnits) {
        if (bits < unit.factor) continue;
        std::string text = std::to_string(bits / unit.factor);
        std::string fraction = std::to_string(1000 + bits % unit.factor / (unit.factor / 1000));
        fraction.erase(fraction.find_last_not_of('0') + 1);
        if (fraction.size() > 1) text.append(".").append(fraction, 1);
        return text.append(unit.name);
    }
    return std::to_string(bits) + " bit/s";
}

} // namespace

std::optional<std::uint64_t> bitsPerSecond(std::string_view unit) {
    constexpr std::string_view one = "bit / second", power = " * 10^";
    if (!unit.starts_with(one)) return std::nullopt;
    unit.remove_prefix(one.size());
    if (unit.empty()) return 1;
    if (!unit.starts_with(power)) return std::nullopt;
    unit.remove_prefix(power.size());
    if (unit.size() != 1 || unit[0] < '1' || unit[0] > '9') return std::nullopt;
    std::uint64_t factor = 1;
    for (char exponent = '0'; exponent < unit[0]; ++exponent)
        factor *= 10;
    return factor;
}

std::string textWithUnit(std::uint64_t number, std::string_view unit) {
    const std::optional<std::uint64_t> factor = bitsPerSecond(unit);
    const bool fits = factor && number <= std::numeric_limits<std::uint64_t>::max() / *factor;
    return fits ? speedText(number * *factor) : std::string();
}

} // namespace cimhost::cli
