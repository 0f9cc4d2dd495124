#include "text/pattern.h"

namespace merolt {

std::string fillPattern(std::string_view pattern, const std::function<std::string(char place)>& valueOf) {
    std::string text;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] != '{') {
            text += pattern[at];
            continue;
        }
        text += valueOf(pattern[at + 1]);
        at += 2;
    }
    return text;
}

} // namespace merolt
