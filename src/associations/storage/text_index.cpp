#include "associations/storage/text_index.h"

#include <algorithm>
#include <cctype>

namespace merolt::association {

std::string lowered(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return lower;
}

} // namespace merolt::association
