#include "tavik/host/interface_links.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <libmnl/libmnl.h>

#include "tavik/host/rtnetlink_dump.h"
#include "tavik/host/sys_tree.h"
#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::size_t mostLinks = 65536;
constexpr std::size_t fieldCount = 10;
constexpr std::array<const char*, 7> stateNames = {"unknown", "notpresent", "down", "lowerlayerdown",
                                                   "testing", "dormant",    "up"};

std::string addressText(const std::uint8_t* bytes, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += (text.empty() ? "" : ":") + formatHex(bytes + i, 1);
    return text;
}

std::uint32_t numberOf(const nlattr* attribute) {
    return mnl_attr_get_payload_len(attribute) >= sizeof(std::uint32_t) ? mnl_attr_get_u32(attribute) : 0;
}

std::string textOf(const nlattr* attribute) {
    const std::string_view payload(static_cast<const char*>(mnl_attr_get_payload(attribute)),
                                   mnl_attr_get_payload_len(attribute));
    return std::string(payload.substr(0, payload.find('\0')));
}

int takeAttribute(const nlattr* attribute, void* data) {
    auto& link = *static_cast<InterfaceLink*>(data);
    const auto* bytes = static_cast<const std::uint8_t*>(mnl_attr_get_payload(attribute));
    const auto size = mnl_attr_get_payload_len(attribute);
    switch (mnl_attr_get_type(attribute)) {
    case IFLA_IFNAME:
        link.name = textOf(attribute);
        break;
    case IFLA_ADDRESS:
        link.address = addressText(bytes, size);
        break;
    case IFLA_MASTER:
        link.master = numberOf(attribute);
        break;
    case IFLA_LINK:
        link.lower = numberOf(attribute);
        break;
    case IFLA_PHYS_PORT_NAME:
        link.portName = textOf(attribute);
        break;
    case IFLA_OPERSTATE:
        link.operationalState = size > 0 ? *bytes : std::uint8_t{0};
        break;
    case IFLA_CARRIER:
        link.carrier = size > 0 && *bytes != 0;
        break;
    default:
        break;
    }
    return MNL_CB_OK;
}

using Links = std::vector<InterfaceLink>;

int take(const nlmsghdr* message, void* data) {
    auto& links = *static_cast<Links*>(data);
    if (message->nlmsg_type != RTM_NEWLINK || links.size() >= mostLinks) return MNL_CB_OK;
    const auto* body = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(message));
    InterfaceLink link;
    link.index = static_cast<std::uint32_t>(body->ifi_index);
    link.type = body->ifi_type;
    link.flags = body->ifi_flags;
    mnl_attr_parse(message, sizeof(ifinfomsg), takeAttribute, &link);
    links.push_back(std::move(link));
    return MNL_CB_OK;
}

std::string orNothing(std::string_view word) { return word == "-" ? std::string() : std::string(word); }
std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }

Attribute<InterfaceLink> parseLine(std::string_view line) {
    std::array<std::string_view, fieldCount> words;
    const Absence absence{"no interface: " + std::string(line.substr(0, 80))};
    if (splitWords(line, words.data(), words.size()) != words.size()) return absence;
    constexpr auto whole = std::numeric_limits<std::uint32_t>::max();
    const std::array<Attribute<std::uint64_t>, 7> numbers = {
        parseNumber(words[0], whole), parseNumber(words[2], 0xFFFF), parseNumber(words[3], whole),
        parseNumber(words[5], whole), parseNumber(words[6], whole),  parseNumber(words[7], 255),
        parseNumber(words[8], 1)};
    for (const auto& number : numbers)
        if (!number) return absence;
    const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(*numbers.at(i)); };
    return InterfaceLink{
        at(0), std::string(words[1]), static_cast<std::uint16_t>(at(1)), at(2),     orNothing(words[4]), at(3),
        at(4), orNothing(words[9]),   static_cast<std::uint8_t>(at(5)),  at(6) == 1};
}

} // namespace

std::string operationalStateName(std::uint8_t state) {
    return state < stateNames.size() ? stateNames.at(state) : "unknown";
}

Attribute<Links> dumpInterfaceLinks() {
    Links links;
    const auto begin = [](void* data) { static_cast<Links*>(data)->clear(); };
    const RtnetlinkDump all{RTM_GETLINK, sizeof(ifinfomsg), RTEXT_FILTER_SKIP_STATS};
    if (const int error = runRtnetlinkDump(all, {begin, take, &links}))
        return Absence{std::generic_category().message(error)};
    return links;
}

std::string formatInterfaceLinks(const Links& links) {
    std::string lines;
    for (const auto& link : links)
        lines += std::to_string(link.index) + " " + link.name + " " + std::to_string(link.type) + " " +
                 std::to_string(link.flags) + " " + orDash(link.address) + " " + std::to_string(link.master) + " " +
                 std::to_string(link.lower) + " " + std::to_string(link.operationalState) + " " +
                 (link.carrier ? "1 " : "0 ") + orDash(link.portName) + "\n";
    return lines;
}

Attribute<Links> parseInterfaceLinks(const std::string& lines) {
    Links links;
    const std::string_view all = lines;
    for (std::size_t at = 0; at < all.size() && links.size() < mostLinks;) {
        const auto end = all.find('\n', at);
        if (end == std::string_view::npos) return Absence{"the last line is cut"};
        auto link = parseLine(all.substr(at, end - at));
        if (!link) return link.absence();
        links.push_back(*link);
        at = end + 1;
    }
    return links;
}

} // namespace tavik::host
