// An indication as it came over the network, for people and for tools, and whether others are missing before it.
#pragma once

#include "cimhost/cimxml/values.h"

#include <cstdint>
#include <map>
#include <string>

namespace cimhost::cli {

/// Class and number, then every property that has a value, one a line. Printable.
std::string textOf(const cimxml::Instance& indication);

/// A summary for people on one line: time, severity and kind in words, class and number, message. Printable.
std::string lineOf(const cimxml::Instance& indication);

/// {"class": ..., "properties": {...}} on one line; a property without a value is null.
std::string jsonLineOf(const cimxml::Instance& indication);

/// Follows the numbers of each sequence.
class SequenceWatch {
public:
    /// A message about the number of this indication; empty if it is the next one, or has none.
    std::string judge(const cimxml::Instance& indication);

private:
    static constexpr std::size_t mostContexts = 1000;
    std::map<std::string, std::int64_t> last; // by context
};

} // namespace cimhost::cli
