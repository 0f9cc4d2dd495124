#include "tavik/host/replacer.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::size_t keyDigits = 8;
constexpr std::size_t wordSize = 8;

bool isDigit(char character) { return std::isxdigit(static_cast<unsigned char>(character)) != 0; }
bool isAlphanumeric(char character) { return std::isalnum(static_cast<unsigned char>(character)) != 0; }
bool isSeparator(char character) { return character == ':' || character == '-' || character == '.'; }
char lower(char character) { return static_cast<char>(std::tolower(static_cast<unsigned char>(character))); }
char upper(char character) { return static_cast<char>(std::toupper(static_cast<unsigned char>(character))); }

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

std::string textOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

/** In the case of the character that it replaces. */
char inCaseOf(char found, char other) {
    return std::isupper(static_cast<unsigned char>(found)) != 0 ? upper(other) : other;
}

std::uint32_t keyOf(std::string_view four) {
    std::uint32_t key = 0;
    for (const char character : four.substr(0, 4))
        key = key << 8 | static_cast<std::uint8_t>(character);
    return key;
}

/** The place of the digit at or behind a place, past one separator between digits; nothing if there is none. */
std::optional<std::size_t> digitAt(std::string_view content, std::size_t at, bool isFirst) {
    if (!isFirst && at < content.size() && isSeparator(content[at])) ++at;
    return at < content.size() && isDigit(content[at]) ? std::optional(at) : std::nullopt;
}

/** The first eight digits as a number; nothing if there are less. */
std::optional<std::uint32_t> digitKey(std::string_view content, std::size_t at) {
    std::string digits;
    while (digits.size() < keyDigits) {
        const auto place = digitAt(content, at, digits.empty());
        if (!place) return std::nullopt;
        digits += content[*place];
        at = *place + 1;
    }
    return static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16));
}

/** What is found as a word of its own has none of these at its ends. */
bool isAlone(std::string_view content, std::size_t at, std::size_t size, bool isAddress) {
    const auto goesOn = [&](char character) {
        return isAlphanumeric(character) || (isAddress && (character == '.' || character == ':'));
    };
    return (at == 0 || !goesOn(content[at - 1])) && (at + size >= content.size() || !goesOn(content[at + size]));
}

} // namespace

void Replacer::add(Form form, std::string original, std::string other) {
    if (original.size() < shortestText || original == other) return;
    const auto key = form == Form::Digits ? *digitKey(original, 0) : keyOf(original);
    index_[key].push_back({form, std::move(original), std::move(other)});
}

void Replacer::addBytes(const Bytes& original, const Bytes& other) {
    add(Form::Digits, formatHex(original.data(), original.size()), formatHex(other.data(), other.size()));
    add(Form::Raw, textOf(original), textOf(other));
    add(Form::Raw, {original.rbegin(), original.rend()}, {other.rbegin(), other.rend()});
}

void Replacer::addText(const std::string& original, const std::string& other) {
    add(original.size() < wordSize ? Form::Word : Form::Text, lowered(original), lowered(other));
}

void Replacer::addAddress(const std::string& original, const std::string& other) {
    // Short ones ("fd::1") have a key that longer texts have too; what begins alike is compared whole.
    add(Form::Address, lowered(original), other);
}

Replacer::Match Replacer::matched(const Needle& needle, std::string_view content, std::size_t at) {
    const bool isRaw = needle.form == Form::Raw;
    Match match;
    std::size_t place = at;
    for (std::size_t i = 0; i < needle.original.size(); ++i) {
        const auto found = needle.form == Form::Digits ? digitAt(content, place, i == 0) : std::optional(place);
        if (!found || *found >= content.size()) return {};
        if (*found > place) match.other += content[place];
        const char character = content[*found];
        if ((isRaw ? character : lower(character)) != needle.original[i]) return {};
        if (needle.form != Form::Address) match.other += isRaw ? needle.other[i] : inCaseOf(character, needle.other[i]);
        place = *found + 1;
    }
    match.size = place - at;
    const bool isAddress = needle.form == Form::Address;
    if ((isAddress || needle.form == Form::Word) && !isAlone(content, at, match.size, isAddress)) return {};
    if (isAddress) match.other = needle.other;
    return match;
}

void Replacer::longest(std::uint32_t key, std::string_view content, std::size_t at, Match& best) const {
    const auto needles = index_.find(key);
    if (needles == index_.end()) return;
    for (const auto& needle : needles->second)
        if (auto match = matched(needle, content, at); match.size > best.size) best = std::move(match);
}

std::string Replacer::replaced(std::string_view content) const {
    std::string result;
    for (std::size_t at = 0; at < content.size();) {
        Match best;
        const auto four = content.substr(at, 4);
        longest(keyOf(four), content, at, best);
        if (const auto folded = lowered(std::string(four)); folded != four) longest(keyOf(folded), content, at, best);
        if (isDigit(content[at]))
            if (const auto key = digitKey(content, at)) longest(*key, content, at, best);
        result += best.size == 0 ? std::string(1, content[at]) : best.other;
        at += std::max<std::size_t>(best.size, 1);
    }
    return result;
}

} // namespace tavik::host
