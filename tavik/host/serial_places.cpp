#include "tavik/host/serial_places.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "optics/codes.h"
#include "tavik/host/pci_vpd.h"

namespace tavik::host {

namespace {

constexpr std::size_t moduleSerialSize = 16;

/** A byte that holds the sum of those in front of it, from a start. */
struct Checksum {
    std::size_t from;
    std::size_t at;
};

struct Layout {
    optics::Family family;
    std::size_t serialAt;
    std::array<Checksum, 2> checksums;
};

// SFF-8472: A0h bytes 63 and 95. SFF-8636: page 00h bytes 191 and 223. CMIS: page 00h byte 222, which covers all of it.
constexpr std::array<Layout, 3> layouts{{
    {optics::Family::Sff8472, 68, {{{0, 63}, {64, 95}}}},
    {optics::Family::Sff8636, 196, {{{128, 191}, {192, 223}}}},
    {optics::Family::Cmis, 166, {{{128, 222}, {0, 0}}}},
}};

const Layout* layoutOf(std::string_view fileName, const Bytes& content) {
    const bool isModule = fileName == "module_memory" || fileName == "sfp";
    if (!isModule || content.empty()) return nullptr;
    const auto family = optics::familyOf(content.front());
    const auto* layout =
        std::find_if(layouts.begin(), layouts.end(), [family](const Layout& row) { return row.family == family; });
    return layout == layouts.end() ? nullptr : layout;
}

unsigned sumOf(const Bytes& bytes, std::size_t from, std::size_t end) {
    const std::span part(bytes.data() + from, end - from);
    return std::accumulate(part.begin(), part.end(), 0U);
}

bool isPadding(std::uint8_t byte) { return byte == ' ' || byte == 0; }

void addTrimmed(const Bytes& content, Place place, std::vector<Place>& places) {
    while (place.size > 0 && isPadding(content[place.at + place.size - 1]))
        --place.size;
    while (place.size > 0 && isPadding(content[place.at])) {
        ++place.at;
        --place.size;
    }
    if (place.size > 0) places.push_back(place);
}

bool isOwners(const std::string& keyword) { return keyword == "SN" || keyword.front() == 'Y'; }

} // namespace

std::vector<Place> findSerialPlaces(std::string_view fileName, const Bytes& content) {
    std::vector<Place> places;
    if (fileName == "vpd")
        for (const auto& item : findVpdPlaces(content))
            if (!item.keyword.empty() && isOwners(item.keyword)) addTrimmed(content, {item.at, item.size}, places);
    if (const auto* layout = layoutOf(fileName, content))
        if (content.size() >= layout->serialAt + moduleSerialSize)
            addTrimmed(content, {layout->serialAt, moduleSerialSize}, places);
    return places;
}

void keepChecksums(std::string_view fileName, const Bytes& before, Bytes& after) {
    if (before.size() != after.size()) return;
    const auto growth = [&](std::size_t from, std::size_t end) {
        return sumOf(after, from, end) - sumOf(before, from, end);
    };
    if (fileName == "vpd")
        for (const auto& item : findVpdPlaces(before))
            if (item.keyword == "RV" && item.size > 0)
                after[item.at] = static_cast<std::uint8_t>(before[item.at] - growth(0, item.at));
    if (const auto* layout = layoutOf(fileName, before))
        for (const auto& [from, at] : layout->checksums)
            if (at != 0 && at < after.size()) after[at] = static_cast<std::uint8_t>(before[at] + growth(from, at));
}

} // namespace tavik::host
