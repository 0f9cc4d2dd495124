#include "associations/texts.h"

#include "log/log.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace merolt::association {

namespace {

std::string withoutUnderscores(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '_'), text.end());
    return text;
}

std::string valueOf(char place, const Filling& filling) {
    switch (place) {
    case 'F':
        return filling.token;
    case 'T':
        return withoutUnderscores(filling.token);
    case 'O':
        return filling.operation;
    case 'K':
        return filling.key;
    default:
        return std::to_string(filling.number);
    }
}

/// Every place is a letter in braces.
std::string fill(std::string_view pattern, const Filling& filling) {
    std::string text;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] != '{') {
            text += pattern[at];
            continue;
        }
        text += valueOf(pattern[at + 1], filling);
        at += 2;
    }
    return text;
}

} // namespace

void log(const Text& text, const Filling& filling) {
    if (!text) return;
    if (text.sink == Sink::debug) {
        DEBUG_LOG("%s", fill(text.pattern, filling).c_str());
    } else {
        ERROR_LOG("%s", fill(text.pattern, filling).c_str());
    }
}

} // namespace merolt::association
