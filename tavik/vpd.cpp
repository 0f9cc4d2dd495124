#include "tavik/vpd.h"

#include <algorithm>
#include <numeric>

namespace tavik {

namespace {

constexpr std::uint8_t tagProductIdentifier = 0x82;
constexpr std::uint8_t tagReadOnly = 0x90;
constexpr std::uint8_t tagWritable = 0x91;
constexpr std::uint8_t tagEnd = 0x78;

void appendTag(Bytes& block, std::uint8_t tag, std::size_t length) {
    block.push_back(tag);
    block.push_back(static_cast<std::uint8_t>(length));
    block.push_back(static_cast<std::uint8_t>(length >> 8));
}

Bytes encodeItems(const std::vector<VpdItem>& items) {
    Bytes section;
    for (const auto& item : items) {
        const auto length = static_cast<std::ptrdiff_t>(std::min<std::size_t>(item.value.size(), 255));
        for (std::size_t i = 0; i < 2; ++i)
            section.push_back(i < item.keyword.size() ? static_cast<std::uint8_t>(item.keyword[i]) : 0);
        section.push_back(static_cast<std::uint8_t>(length));
        section.insert(section.end(), item.value.begin(), item.value.begin() + length);
    }
    return section;
}

/** The keyword RV: a byte that makes the sum of everything up to it zero. */
void appendChecksum(Bytes& block) {
    block.insert(block.end(), {'R', 'V', 1});
    const auto sum = std::accumulate(block.begin(), block.end(), 0U);
    block.push_back(static_cast<std::uint8_t>(0U - sum));
}

} // namespace

Bytes encodeVpd(const std::string& productIdentifier, const std::vector<VpdItem>& readOnly,
                const std::vector<VpdItem>& writable) {
    constexpr std::size_t checksumSize = 4;
    Bytes block;
    appendTag(block, tagProductIdentifier, productIdentifier.size());
    block.insert(block.end(), productIdentifier.begin(), productIdentifier.end());

    const auto readOnlySection = encodeItems(readOnly);
    appendTag(block, tagReadOnly, readOnlySection.size() + checksumSize);
    block.insert(block.end(), readOnlySection.begin(), readOnlySection.end());
    appendChecksum(block);

    if (!writable.empty()) {
        const auto writableSection = encodeItems(writable);
        appendTag(block, tagWritable, writableSection.size());
        block.insert(block.end(), writableSection.begin(), writableSection.end());
    }
    block.push_back(tagEnd);
    return block;
}

} // namespace tavik
