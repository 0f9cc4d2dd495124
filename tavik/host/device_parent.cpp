#include "tavik/host/device_parent.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

/** Buses whose devices stand for the PCI function above them. A USB adapter does not: the function above it is the
 *  host's USB controller, and says nothing about the adapter. */
constexpr std::array<std::string_view, 3> pciTransports = {"pci", "virtio", "auxiliary"};

constexpr std::size_t extendedStart = 0x100;
constexpr std::size_t configurationSize = 4096;
constexpr std::uint32_t serialNumberCapability = 3;

std::uint32_t wordAt(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes[offset + i];
    return value;
}

/** The nearest folder at or above the path for which find says yes; empty if there is none. */
template <typename Predicate>
std::string climb(std::string path, Predicate find) {
    while (!path.empty() && !find(path))
        path = parentPath(path);
    return path;
}

Attribute<std::uint16_t> readId(const SysTree& tree, const std::string& path) {
    return tree.number(path, 0xFFFF).then([](std::uint64_t id) -> Attribute<std::uint16_t> {
        return static_cast<std::uint16_t>(id);
    });
}

PciFunction readPciFunction(const SysTree& tree, const std::string& path, const PciAddress& address) {
    PciFunction function;
    function.address = address;
    function.vendor = readId(tree, path + "/vendor");
    function.device = readId(tree, path + "/device");
    function.subsystemVendor = readId(tree, path + "/subsystem_vendor");
    function.subsystemDevice = readId(tree, path + "/subsystem_device");
    function.deviceSerialNumber = tree.bytes(path + "/config", configurationSize).then(parseDeviceSerialNumber);
    function.vpd = tree.bytes(path + "/vpd", largestVpd).then(parsePciVpd);
    function.isVirtualFunction = tree.exists(path + "/physfn");
    return function;
}

Attribute<UsbDevice> readUsbDevice(const SysTree& tree, const std::string& devicePath) {
    const auto path = climb(devicePath, [&](const std::string& folder) { return tree.exists(folder + "/idVendor"); });
    if (path.empty()) return Absence{"no USB device above it"};
    return UsbDevice{tree.text(path + "/manufacturer"), tree.text(path + "/product"), tree.text(path + "/serial")};
}

} // namespace

Attribute<PciAddress> parsePciAddress(const std::string& name) {
    const Absence absence{"no PCI address"};
    const auto dot = name.size() < 12 ? std::string::npos : name.size() - 2;
    if (dot == std::string::npos || name[dot] != '.' || name[dot - 3] != ':' || name[dot - 6] != ':') return absence;
    const auto function = name[dot + 1];
    if (function < '0' || function > '7') return absence;
    const auto slot = name.substr(0, dot);
    const auto isPart = [](unsigned char character) { return std::isxdigit(character) != 0 || character == ':'; };
    if (!std::all_of(slot.begin(), slot.end(), isPart) || std::count(slot.begin(), slot.end(), ':') != 2)
        return absence;
    return PciAddress{slot, static_cast<std::uint8_t>(function - '0')};
}

Attribute<std::string> parseDeviceSerialNumber(const Bytes& configuration) {
    if (configuration.size() <= extendedStart) return Absence{"no extended configuration space to be read"};
    std::size_t offset = extendedStart;
    // The list is a chain in the card's memory: a card that answers nonsense may make it a ring.
    for (int steps = 0; steps < 64 && offset >= extendedStart && offset + 12 <= configuration.size(); ++steps) {
        const auto header = wordAt(configuration, offset);
        if ((header & 0xFFFF) == serialNumberCapability) {
            std::array<std::uint8_t, 8> digits{};
            std::reverse_copy(configuration.begin() + static_cast<std::ptrdiff_t>(offset) + 4,
                              configuration.begin() + static_cast<std::ptrdiff_t>(offset) + 12, digits.begin());
            const auto text = formatHex(digits.data(), digits.size());
            if (text == std::string(16, '0') || text == std::string(16, 'f')) return Absence{"not set by the card"};
            return text;
        }
        offset = header >> 20;
    }
    return Absence{"no serial number capability"};
}

std::string findPciPath(const std::string& devicePath) {
    return climb(devicePath, [](const std::string& path) { return parsePciAddress(baseName(path)).present(); });
}

Attribute<PciAddress> findPciAddress(const SysTree& tree, const std::string& devicePath) {
    const auto bus = tree.linkName(devicePath + "/subsystem");
    if (!bus) return Absence{"no bus: " + bus.absence().reason};
    if (std::find(pciTransports.begin(), pciTransports.end(), *bus) == pciTransports.end())
        return Absence{"on the " + *bus + " bus"};
    return parsePciAddress(baseName(findPciPath(devicePath)));
}

DeviceParent readDeviceParent(const SysTree& tree, const std::string& devicePath) {
    DeviceParent parent;
    parent.path = devicePath;
    parent.bus = tree.linkName(devicePath + "/subsystem");
    parent.driver = tree.linkName(devicePath + "/driver");
    parent.pci = findPciAddress(tree, devicePath).then([&](const PciAddress& address) -> Attribute<PciFunction> {
        return readPciFunction(tree, findPciPath(devicePath), address);
    });
    if (parent.bus.valueOr({}) == "usb")
        parent.usb = readUsbDevice(tree, devicePath);
    else
        parent.usb = Absence{"not on the usb bus"};
    return parent;
}

} // namespace tavik::host
