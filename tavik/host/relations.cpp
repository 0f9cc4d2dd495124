#include "tavik/host/relations.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::uint64_t sectorBytes = 512; // of block/*/size, whatever the device's own size is
constexpr std::uint64_t mostSectors = std::numeric_limits<std::uint64_t>::max() / sectorBytes;

std::string netFolder(const std::string& interface) { return "sys/class/net/" + interface; }

std::string upperCase(std::string text) {
    for (char& digit : text)
        if (digit >= 'a' && digit <= 'f') digit = static_cast<char>(digit - 'a' + 'A');
    return text;
}

/** Words with commas between them; what is absent or empty is passed over. */
std::string joined(const std::vector<Attribute<std::string>>& words) {
    std::string text;
    for (const auto& word : words)
        if (const auto shown = word.valueOr({}); !shown.empty()) text += (text.empty() ? "" : ", ") + shown;
    return text;
}

/** "bond", "bridge", "vlan": what the kernel calls the kind of a device. */
Attribute<std::string> kindOf(const SysTree& tree, const std::string& interface) {
    constexpr std::string_view key = "DEVTYPE=";
    const auto event = tree.text(netFolder(interface) + "/uevent");
    if (!event) return event.absence();
    const auto begin = event->find(key);
    if (begin == std::string::npos || (begin > 0 && (*event)[begin - 1] != '\n')) return Absence{"no kind"};
    const auto end = std::min(event->find('\n', begin), event->size());
    return event->substr(begin + key.size(), end - begin - key.size());
}

/** Older recordings have the link to the master alone. */
Lines directUsers(const SysTree& tree, const std::string& interface) {
    constexpr std::string_view prefix = "upper_";
    Lines users;
    for (const auto& name : tree.names(netFolder(interface)))
        if (name.starts_with(prefix)) users.push_back(name.substr(prefix.size()));
    if (users.empty())
        if (const auto master = tree.linkName(netFolder(interface) + "/master")) users.push_back(*master);
    return users;
}

std::string withWords(const std::string& name, const std::string& words) {
    return words.empty() ? name : name + " (" + words + ")";
}

/** A member has this folder below its own, whichever bond it belongs to: there is only one. */
std::string showDirectUser(const SysTree& tree, const std::string& user, const std::string& member) {
    const auto kind = kindOf(tree, user);
    const auto folder = netFolder(member) + "/bonding_slave";
    const bool isBond = kind.valueOr({}) == "bond";
    const Absence none{"no bond"};
    return withWords(user, joined({kind, isBond ? tree.text(folder + "/state") : none,
                                   isBond ? tree.text(folder + "/mii_status") : none}));
}

std::string showFurtherUser(const SysTree& tree, const std::string& user, const std::string& below) {
    return withWords(user, kindOf(tree, user).valueOr("above") + " of " + below);
}

/** The PCI function that a link leads to, and its interfaces. */
Attribute<std::string> showFunction(const SysTree& tree, const std::string& link) {
    auto text = tree.linkName(link);
    if (!text) return text;
    std::string shown = *text;
    for (const auto& interface : tree.names(link + "/net"))
        shown += " " + interface;
    return shown;
}

std::string plural(std::size_t number, const char* word) {
    return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

/** "mpatha with 4 paths, 3 running"; absent where no multipath device holds the block device. */
Attribute<std::string> showMultipath(const SysTree& tree, const std::string& blockFolder) {
    for (const auto& holder : tree.names(blockFolder + "/holders")) {
        const auto folder = blockFolder + "/holders/" + holder;
        if (!tree.text(folder + "/dm/uuid").valueOr({}).starts_with("mpath-")) continue;
        const auto paths = tree.names(folder + "/slaves");
        const auto running = std::count_if(paths.begin(), paths.end(), [&](const std::string& path) {
            return tree.text(folder + "/slaves/" + path + "/device/state").valueOr({}) == "running";
        });
        return tree.text(folder + "/dm/name").valueOr(holder) + " with " + plural(paths.size(), "path") + ", " +
               std::to_string(running) + " running";
    }
    return Absence{"no multipath device"};
}

std::string showUnit(const SysTree& tree, const RemotePort& port, const LogicalUnit& unit) {
    const auto folder = "sys/class/scsi_device/" + unit.address + "/device";
    const auto block = folder + "/block/" + unit.blockDevice.valueOr({});
    const auto size =
        tree.number(block + "/size", mostSectors).then([](std::uint64_t sectors) -> Attribute<std::string> {
            return std::to_string(sectors * sectorBytes) + " bytes";
        });
    const auto multipath = unit.blockDevice ? showMultipath(tree, block) : Attribute<std::string>();
    const auto words = joined({unit.blockDevice, unit.blockDevice ? size : Attribute<std::string>(),
                               tree.text(folder + "/state"), multipath});
    const auto target = port.portName ? showName(*port.portName) : port.name;
    return "LUN " + std::to_string(unit.number) + " of " + target + (words.empty() ? "" : ": " + words);
}

Attribute<Lines> orAbsent(Lines lines, const char* reason) {
    if (lines.empty()) return Absence{reason};
    if (lines.size() > mostLines) {
        lines.resize(mostLines);
        lines.emplace_back("and more");
    }
    return lines;
}

} // namespace

std::string showName(const WorldWideName& name) { return upperCase(formatWorldWideName(name)); }

Attribute<std::string> showPortId(std::uint32_t id) {
    if (id == 0 || id == 0xFFFFFF) return Absence{"no login at a fabric"};
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(id >> 16), static_cast<std::uint8_t>(id >> 8),
                                  static_cast<std::uint8_t>(id)};
    return upperCase(formatHex(bytes, sizeof bytes));
}

Attribute<Lines> usersOf(const SysTree& tree, const std::string& interface) {
    Lines lines;
    std::vector<std::string> seen{interface};
    // What was found last is looked at for what uses it; seen grows meanwhile.
    for (std::size_t place = 0; place < seen.size() && seen.size() <= mostLines + 1; ++place) {
        const auto below = seen[place];
        for (const auto& user : directUsers(tree, below)) {
            if (std::find(seen.begin(), seen.end(), user) != seen.end()) continue;
            seen.push_back(user);
            lines.push_back(place == 0 ? showDirectUser(tree, user, below) : showFurtherUser(tree, user, below));
        }
    }
    return orAbsent(std::move(lines), "nothing uses it");
}

Attribute<Lines> virtualFunctionsOf(const SysTree& tree, const std::string& pciFolder) {
    constexpr std::string_view prefix = "virtfn";
    std::map<std::uint64_t, std::string> functions;
    for (const auto& name : tree.names(pciFolder)) {
        if (!name.starts_with(prefix)) continue;
        const auto number = parseNumber(std::string_view(name).substr(prefix.size()), 0xFFFF);
        const auto function = showFunction(tree, pciFolder + "/" + name);
        if (number && function) functions[*number] = *function;
    }
    Lines lines;
    for (auto& [number, function] : functions)
        lines.push_back(std::move(function));
    return orAbsent(std::move(lines), "no virtual functions");
}

Attribute<std::string> physicalFunctionOf(const SysTree& tree, const std::string& pciFolder) {
    if (!tree.exists(pciFolder + "/physfn")) return Absence{"no virtual function"};
    return showFunction(tree, pciFolder + "/physfn");
}

Attribute<Lines> showRemotePorts(const SysTree& tree, const std::vector<RemotePort>& ports) {
    Lines lines;
    for (const auto& port : ports) {
        const auto id = tree.number("sys/class/fc_remote_ports/" + port.name + "/port_id", 0xFFFFFF);
        const auto shownId =
            id.then([](std::uint64_t number) { return showPortId(static_cast<std::uint32_t>(number)); });
        const auto words = joined({port.roles, port.state, shownId});
        lines.push_back((port.portName ? showName(*port.portName) : port.name) + (words.empty() ? "" : ": " + words));
    }
    return orAbsent(std::move(lines), "no remote ports");
}

Attribute<Lines> showUnits(const SysTree& tree, const std::vector<RemotePort>& ports) {
    Lines lines;
    for (const auto& port : ports)
        for (const auto& unit : port.units)
            lines.push_back(showUnit(tree, port, unit));
    return orAbsent(std::move(lines), "no logical units");
}

} // namespace tavik::host
