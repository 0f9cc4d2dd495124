#include "cimhost/cimxml/values.h"

namespace cimhost::cimxml {

void TextList::append(std::string_view text) {
    bytes.append(text);
    ends.push_back(static_cast<std::uint32_t>(bytes.size()));
}

void TextList::appendNull() { ends.push_back(static_cast<std::uint32_t>(bytes.size()) | nullFlag); }

std::string_view TextList::operator[](std::size_t index) const {
    const std::size_t begin = index == 0 ? 0 : ends[index - 1] & ~nullFlag;
    const std::size_t end = ends[index] & ~nullFlag;
    return std::string_view(bytes).substr(begin, end - begin);
}

} // namespace cimhost::cimxml
