#include "tavik/host/pci_vpd.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <span>

namespace tavik::host {

namespace {

constexpr std::uint8_t largeTag = 0x80;
constexpr std::uint8_t tagProductIdentifier = 0x82;
constexpr std::uint8_t tagReadOnly = 0x90;
constexpr std::uint8_t tagWritable = 0x91;
constexpr std::uint8_t smallTagEnd = 0x78;

using View = std::span<const std::uint8_t>;

std::string readableText(View bytes) {
    std::string text(bytes.begin(), bytes.end());
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0'))
        text.pop_back();
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    for (auto& character : text)
        if (character < ' ' || character > '~') character = '?';
    return text;
}

/** A resource: a tag with its data, and what follows it. */
struct Resource {
    std::uint8_t tag = 0;
    View data;
    View rest;
};

/** The resource at the front, or nothing where the block ends inside of it. */
std::optional<Resource> takeResource(View block) {
    if (block.empty()) return std::nullopt;
    const bool large = (block[0] & largeTag) != 0;
    const std::size_t head = large ? 3 : 1;
    if (block.size() < head) return std::nullopt;
    const std::size_t size = large ? std::size_t(block[1]) + std::size_t(block[2]) * 256 : std::size_t(block[0] & 7U);
    if (block.size() - head < size) return std::nullopt;
    const auto tag = large ? block[0] : static_cast<std::uint8_t>(block[0] & 0xF8U);
    return Resource{tag, block.subspan(head, size), block.subspan(head + size)};
}

struct Section {
    std::vector<VpdItem> items;
    std::optional<std::size_t> checksumAt; ///< where in the section the byte of RV stands
};

Section takeItems(View data) {
    constexpr std::size_t head = 3;
    Section section;
    std::size_t at = 0;
    while (data.size() - at >= head && section.items.size() < mostVpdItems) {
        const std::size_t size = data[at + 2];
        const std::string keyword = readableText(data.subspan(at, 2));
        at += head;
        if (data.size() - at < size) break;
        if (keyword == "RV" && size > 0)
            section.checksumAt = at;
        else if (keyword.size() == 2 && keyword != "RW")
            section.items.push_back({keyword, readableText(data.subspan(at, size))});
        at += size;
    }
    return section;
}

/** All bytes up to and with the one of RV add up to zero. */
bool checksumHolds(const Bytes& block, View section, std::size_t checksumAt) {
    const auto* end = section.data() + checksumAt + 1;
    return std::accumulate(block.data(), end, 0U) % 256 == 0;
}

} // namespace

std::string PciVpd::find(std::string_view keyword) const {
    for (const auto* section : {&readOnly, &writable})
        for (const auto& item : *section)
            if (item.keyword == keyword && !item.value.empty()) return item.value;
    return {};
}

std::vector<VpdPlace> findVpdPlaces(const Bytes& block) {
    std::vector<VpdPlace> places;
    View rest(block.data(), std::min(block.size(), largestVpd));
    while (const auto resource = takeResource(rest)) {
        rest = resource->rest;
        if (resource->tag == smallTagEnd) break;
        if (resource->tag != tagReadOnly && resource->tag != tagWritable) continue;
        const auto section = static_cast<std::size_t>(resource->data.data() - block.data());
        for (std::size_t at = 0; at + 3 <= resource->data.size() && places.size() < mostVpdItems;) {
            const std::size_t size = resource->data[at + 2];
            if (at + 3 + size > resource->data.size()) break;
            places.push_back({readableText(resource->data.subspan(at, 2)), section + at + 3, size});
            at += 3 + size;
        }
    }
    return places;
}

Attribute<PciVpd> parsePciVpd(const Bytes& block) {
    PciVpd vpd;
    View rest(block.data(), std::min(block.size(), largestVpd));
    bool found = false;
    while (const auto resource = takeResource(rest)) {
        if (resource->tag == smallTagEnd) break;
        if (resource->tag == tagProductIdentifier) vpd.productIdentifier = readableText(resource->data);
        if (resource->tag == tagReadOnly) {
            auto section = takeItems(resource->data);
            if (section.checksumAt && !checksumHolds(block, resource->data, *section.checksumAt))
                return Absence{"wrong checksum"};
            vpd.readOnly = std::move(section.items);
        }
        if (resource->tag == tagWritable) vpd.writable = takeItems(resource->data).items;
        found = found || resource->tag == tagProductIdentifier || resource->tag == tagReadOnly;
        rest = resource->rest;
    }
    if (!found) return Absence{"no vital product data among " + std::to_string(block.size()) + " bytes"};
    return vpd;
}

} // namespace tavik::host
