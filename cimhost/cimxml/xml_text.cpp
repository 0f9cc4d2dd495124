#include "cimhost/cimxml/xml_text.h"

#include "cimhost/model/utf8.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace cimhost::cimxml {

namespace {

enum class Treatment : std::uint8_t { plain, escape, forbidden, multibyte };

using TreatmentTable = std::array<Treatment, 256>;

constexpr TreatmentTable makeTable(bool isAttribute) {
    TreatmentTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = byte >= 0x80 ? Treatment::multibyte : byte < 0x20 ? Treatment::forbidden : Treatment::plain;
    }
    for (const char byte : {'&', '<', '>', '\r'})
        table[static_cast<unsigned char>(byte)] = Treatment::escape;
    // A parser turns white space in attributes into blanks, unless it is escaped.
    for (const char byte : {'\t', '\n'}) {
        table[static_cast<unsigned char>(byte)] = isAttribute ? Treatment::escape : Treatment::plain;
    }
    if (isAttribute) table[static_cast<unsigned char>('"')] = Treatment::escape;
    return table;
}

constexpr TreatmentTable contentTable = makeTable(false);
constexpr TreatmentTable attributeTable = makeTable(true);
constexpr std::string_view replacement = "\xEF\xBF\xBD";

std::string_view escapeOf(char byte) {
    switch (byte) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    default:
        return "&#13;";
    }
}

// What a UTF-8 sequence may begin with, and between which bounds its second byte lies.
struct LeadRule {
    unsigned char first, last;
    std::uint8_t length;
    unsigned char secondFirst, secondLast;
};

constexpr LeadRule leadRules[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Bytes of the legal sequence at the beginning of text, or 0.
std::size_t sequenceLength(std::string_view text) {
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    for (const LeadRule& rule : leadRules) {
        if (at(0) < rule.first || at(0) > rule.last) continue;
        if (text.size() < rule.length || at(1) < rule.secondFirst || at(1) > rule.secondLast) return 0;
        for (std::size_t index = 2; index < rule.length; ++index) {
            if (!isContinuation(at(index))) return 0;
        }
        const bool isNoCharacter = at(0) == 0xEF && at(1) == 0xBF && at(2) >= 0xBE;
        return isNoCharacter ? 0 : rule.length;
    }
    return 0;
}

using Block = signed char __attribute__((vector_size(16)));

// True if one of the block's bytes is such that a table may change it; bytes of UTF-8 sequences are negative here.
bool holdsSpecial(const char* bytes) {
    Block block;
    std::memcpy(&block, bytes, sizeof block);
    const auto special = (block < 0x20) | (block == '&') | (block == '<') | (block == '>') | (block == '"');
    std::array<std::uint64_t, 2> halves{};
    static_assert(sizeof special == sizeof halves);
    std::memcpy(halves.data(), &special, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

// Most texts are plain from end to end, so they are passed over by the block. Gives where the byte by byte look has to
// begin.
std::size_t plainPrefix(std::string_view text, std::size_t position) {
    while (position + sizeof(Block) <= text.size()) {
        if (holdsSpecial(text.data() + position)) return position;
        position += sizeof(Block);
    }
    if (text.size() < sizeof(Block) || position == text.size()) return position;
    return holdsSpecial(text.data() + text.size() - sizeof(Block)) ? position : text.size();
}

void append(ByteBuffer& out, std::string_view text, const TreatmentTable& table) {
    std::size_t done = 0;
    for (std::size_t position = plainPrefix(text, 0); position < text.size();) {
        const Treatment treatment = table[static_cast<unsigned char>(text[position])];
        if (treatment == Treatment::plain) {
            ++position;
            continue;
        }
        if (treatment == Treatment::multibyte) {
            if (const std::size_t length = sequenceLength(text.substr(position))) {
                position += length;
                continue;
            }
        }
        out.append(text.substr(done, position - done));
        out.append(treatment == Treatment::escape ? escapeOf(text[position]) : replacement);
        done = ++position;
        position = plainPrefix(text, position);
    }
    out.append(text.substr(done));
}

} // namespace

void appendText(ByteBuffer& out, std::string_view text) { append(out, text, contentTable); }

void appendAttributeText(ByteBuffer& out, std::string_view text) { append(out, text, attributeTable); }

void appendCharacter(ByteBuffer& out, char16_t character) {
    std::string text;
    appendUtf8(text, character);
    appendText(out, text);
}

} // namespace cimhost::cimxml
