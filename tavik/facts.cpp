#include "tavik/facts.h"

#include <algorithm>
#include <cstring>

namespace tavik {

namespace {

/** The value as an answer holds it. */
struct EncodeValue {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::uint64_t number) const {
        std::string bytes(sizeof number, '\0');
        std::memcpy(bytes.data(), &number, sizeof number);
        return bytes;
    }
    std::string operator()(bool truth) const { return std::string(1, truth ? '\1' : '\0'); }
};

void append(std::vector<std::uint8_t>& bytes, const void* from, std::size_t size) {
    const auto* first = static_cast<const std::uint8_t*>(from);
    bytes.insert(bytes.end(), first, first + size);
}

void append(std::vector<std::uint8_t>& bytes, const Fact& fact) {
    const auto value = std::visit(EncodeValue(), fact.value);
    const auto& name = fact.row->name;
    TavikFactHeader header{};
    header.size = static_cast<std::uint32_t>(sizeof header + name.size() + value.size());
    header.type = fact.row->type;
    header.nameLength = static_cast<std::uint16_t>(name.size());
    append(bytes, &header, sizeof header);
    append(bytes, name.data(), name.size());
    append(bytes, value.data(), value.size());
}

} // namespace

bool isFactText(std::string_view text) {
    const auto isPrintable = [](char character) { return character >= ' ' && character <= '~'; };
    return !text.empty() && text.size() <= merolt::longestFact && std::all_of(text.begin(), text.end(), isPrintable);
}

std::vector<std::uint8_t> encodeFacts(const Facts& facts, std::uint32_t groups) {
    std::vector<std::uint8_t> bytes;
    for (const auto& fact : facts)
        if ((fact.row->group & groups) != 0) append(bytes, fact);
    return bytes;
}

} // namespace tavik
