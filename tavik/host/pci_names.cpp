// The list: a line "8086  Name" a vendor, and below it a line "<tab>1572  Name" for each of its devices.
#include "tavik/host/pci_names.h"

#include <string_view>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::size_t largestList = 8U << 20;
constexpr std::size_t longestName = 200;

std::string listForm(std::uint16_t id) { return formatId(id).substr(2); }

/** The text behind the start of the first line that begins with it; empty if there is none. */
std::string_view findLine(std::string_view lines, const std::string& start) {
    std::size_t at = 0;
    if (!lines.starts_with(start)) {
        at = lines.find("\n" + start);
        if (at == std::string_view::npos) return {};
        ++at;
    }
    const auto line = lines.substr(at + start.size());
    return line.substr(0, line.find('\n'));
}

std::string printable(std::string_view name) {
    std::string text;
    for (const char character : name.substr(0, longestName))
        if (character >= ' ' && character <= '~') text += character;
    return text;
}

/** The devices of the vendor: the lines behind its own that begin with a tab. */
std::string_view devicesOf(std::string_view list, const std::string& vendorStart) {
    const auto name = findLine(list, vendorStart);
    if (name.empty()) return {};
    const auto begin = static_cast<std::size_t>(name.data() + name.size() - list.data());
    auto end = begin;
    while (end != std::string_view::npos && end + 1 < list.size() && (list[end + 1] == '\t' || list[end + 1] == '#'))
        end = list.find('\n', end + 1);
    return list.substr(begin, end == std::string_view::npos ? end : end - begin);
}

} // namespace

PciNames::PciNames(const SysTree& tree) {
    for (const auto* path : {"usr/share/misc/pci.ids", "usr/share/hwdata/pci.ids"}) {
        const auto content = tree.bytes(path, largestList);
        if (!content) continue;
        list_.assign(content->begin(), content->end());
        return;
    }
}

std::string PciNames::vendor(std::uint16_t vendorId) const {
    const auto name = printable(findLine(list_, listForm(vendorId) + "  "));
    return name.empty() ? "vendor " + formatId(vendorId) : name;
}

std::string PciNames::device(std::uint16_t vendorId, std::uint16_t deviceId) const {
    const auto devices = devicesOf(list_, listForm(vendorId) + "  ");
    const auto name = printable(findLine(devices, "\t" + listForm(deviceId) + "  "));
    return name.empty() ? "vendor " + formatId(vendorId) + " device " + formatId(deviceId) : name;
}

} // namespace tavik::host
