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

bool TextList::append(std::string_view text, std::size_t mostBytes) {
    const std::optional<std::uint8_t> number = ends.empty() ? byteOf(text) : std::nullopt;
    if (!number) return appendEntry(text, 0, mostBytes);
    if (numbers.size() >= mostBytes) return false;
    numbers.push_back(*number);
    digits += text.size();
    return true;
}

bool TextList::appendNull(std::size_t mostBytes) { return appendEntry({}, nullFlag, mostBytes); }

// A number takes up to seven times its room when it is spelt out: that is asked for before it is taken.
bool TextList::appendEntry(std::string_view text, std::uint32_t flag, std::size_t mostBytes) {
    if (spelledOutBytes() + text.size() + sizeof(ends[0]) > mostBytes) return false;
    spellOutNumbers();
    bytes.append(text);
    ends.push_back(static_cast<std::uint32_t>(bytes.size()) | flag);
    return true;
}

std::size_t TextList::spelledOutBytes() const noexcept {
    return numbers.empty() ? heldBytes() : digits + numbers.size() * sizeof(ends[0]);
}

void TextList::spellOutNumbers() {
    if (numbers.empty()) return;
    bytes.reserve(digits);
    ends.reserve(numbers.size());
    for (const std::uint8_t number : numbers) {
        bytes.append(byteTexts[number]);
        ends.push_back(static_cast<std::uint32_t>(bytes.size()));
    }
    numbers = {};
    digits = 0;
}

std::string_view TextList::operator[](std::size_t index) const {
    if (!numbers.empty()) return byteTexts[numbers[index]];
    const std::size_t begin = index == 0 ? 0 : ends[index - 1] & ~nullFlag;
    const std::size_t end = ends[index] & ~nullFlag;
    return std::string_view(bytes).substr(begin, end - begin);
}

} // namespace cimhost::cimxml
