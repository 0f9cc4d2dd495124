// The tags of connectors and ports are parts joined by underscores; a serial number that holds one shifts the parts.
#pragma once

#include "text/fixed_text.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace merolt::physical {

/// Cuts the tag (its first 255 characters) at each underscore. @return the number of pieces, of which the first N
/// stand in the array; an empty piece counts.
template <std::size_t N>
std::size_t cutTag(std::string_view tag, std::array<FixedText<256>, N>& pieces) {
    tag = tag.substr(0, FixedText<256>::capacity);
    std::size_t count = 0;
    for (;;) {
        const std::size_t underscore = tag.find('_');
        if (count < N) pieces[count].assign(tag.substr(0, underscore));
        ++count;
        if (underscore == std::string_view::npos) return count;
        tag.remove_prefix(underscore + 1);
    }
}

} // namespace merolt::physical
