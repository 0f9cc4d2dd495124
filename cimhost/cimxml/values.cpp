#include "cimhost/cimxml/values.h"

#include <array>
#include <charconv>
#include <optional>

namespace cimhost::cimxml {

namespace {

// The decimal texts of all bytes.
class ByteTexts {
public:
    ByteTexts() {
        for (std::size_t number = 0; number < texts.size(); ++number) {
            Text& text = texts[number];
            const auto written = std::to_chars(text.digits.data(), text.digits.data() + text.digits.size(), number);
            text.length = static_cast<std::size_t>(written.ptr - text.digits.data());
        }
    }

    std::string_view operator[](std::uint8_t number) const {
        return {texts[number].digits.data(), texts[number].length};
    }

private:
    struct Text {
        std::array<char, 3> digits{};
        std::size_t length = 0;
    };
    std::array<Text, 256> texts;
};

const ByteTexts byteTexts;

// Nothing for "+7", "07" and all else that would not be written so again.
std::optional<std::uint8_t> byteOf(std::string_view text) {
    std::uint8_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || behind != end || byteTexts[number].size() != text.size()) return std::nullopt;
    return number;
}

} // namespace

void TextList::append(std::string_view text) {
    if (ends.empty()) {
        if (const std::optional<std::uint8_t> number = byteOf(text)) return numbers.push_back(*number);
        spellOutNumbers();
    }
    bytes.append(text);
    ends.push_back(static_cast<std::uint32_t>(bytes.size()));
}

void TextList::appendNull() {
    spellOutNumbers();
    ends.push_back(static_cast<std::uint32_t>(bytes.size()) | nullFlag);
}

void TextList::spellOutNumbers() {
    for (const std::uint8_t number : numbers) {
        bytes.append(byteTexts[number]);
        ends.push_back(static_cast<std::uint32_t>(bytes.size()));
    }
    numbers = {};
}

std::string_view TextList::operator[](std::size_t index) const {
    if (!numbers.empty()) return byteTexts[numbers[index]];
    const std::size_t begin = index == 0 ? 0 : ends[index - 1] & ~nullFlag;
    const std::size_t end = ends[index] & ~nullFlag;
    return std::string_view(bytes).substr(begin, end - begin);
}

} // namespace cimhost::cimxml
