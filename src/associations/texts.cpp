#include "associations/texts.h"

#include "log/log.h"
#include "text/pattern.h"

#include <algorithm>
#include <string>

namespace merolt::association {

namespace {

std::string withoutUnderscores(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '_'), text.end());
    return text;
}

std::string fill(const char* pattern, const Filling& filling) {
    return fillPattern(pattern, [&](char place) -> std::string {
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
    });
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
