// Facts of a function beside what its records hold, as the optional calls deliver them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "inventory/fact_row.h"

namespace tavik {

/** In the order of TavikFactType's names: text, number, truth. */
using FactValue = std::variant<std::string, std::uint64_t, bool>;

struct Fact {
    const merolt::FactRow* row = nullptr; ///< tells the type of the value
    FactValue value;

    bool operator==(const Fact&) const = default;
};

/** The values of a row that is a list stand one behind the other. */
using Facts = std::vector<Fact>;

/** True if a text can be the value of a fact: printable ASCII, not empty and at most longestFact. */
bool isFactText(std::string_view text);

/** The facts of these groups as an answer holds them. @param groups TavikFactGroup bits. */
std::vector<std::uint8_t> encodeFacts(const Facts& facts, std::uint32_t groups);

} // namespace tavik
