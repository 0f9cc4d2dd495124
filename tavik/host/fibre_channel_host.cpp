#include "tavik/host/fibre_channel_host.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "tavik/host/text_forms.h"

namespace tavik::host {

const std::array<const char*, counterCount> counterNames = {
    "fcp_input_requests",          "fcp_output_requests",   "fcp_control_requests",
    "fcp_input_megabytes",         "fcp_output_megabytes",  "lip_count",
    "link_failure_count",          "loss_of_sync_count",    "loss_of_signal_count",
    "prim_seq_protocol_err_count", "invalid_tx_word_count", "invalid_crc_count",
};

namespace {

constexpr std::size_t modulePages = 512;
constexpr std::size_t modulePage = 256;
constexpr std::size_t smallestModule = 96;

std::string hostName(std::uint32_t number) { return "host" + std::to_string(number); }
std::string hostFolder(std::uint32_t number) { return "sys/class/fc_host/" + hostName(number); }
std::string scsiFolder(std::uint32_t number) { return "sys/class/scsi_host/" + hostName(number); }

Attribute<WorldWideName> readName(const SysTree& tree, const std::string& path) {
    return tree.text(path).then([](const std::string& text) { return parseWorldWideName(text); });
}

Attribute<std::uint32_t> readNumber(const SysTree& tree, const std::string& path, std::uint32_t largest) {
    return tree.number(path, largest).then([](std::uint64_t value) -> Attribute<std::uint32_t> {
        return static_cast<std::uint32_t>(value);
    });
}

/** The number behind "host", or nothing. */
std::optional<std::uint32_t> hostNumber(const std::string& name) {
    // Handles are made of it, and device numbers have 16 bits.
    if (!name.starts_with("host")) return std::nullopt;
    const auto number = parseNumber(std::string_view(name).substr(4), 0xFFFE);
    if (!number || hostName(static_cast<std::uint32_t>(*number)) != name) return std::nullopt;
    return static_cast<std::uint32_t>(*number);
}

/** The unit number of host:channel:target:unit if it belongs to the host. */
std::optional<std::uint64_t> unitNumber(const std::string& address, std::uint32_t host) {
    if (!address.starts_with(std::to_string(host) + ":") || std::count(address.begin(), address.end(), ':') != 3)
        return std::nullopt;
    const auto number = parseNumber(std::string_view(address).substr(address.rfind(':') + 1),
                                    std::numeric_limits<std::uint64_t>::max());
    return number ? std::optional(*number) : std::nullopt;
}

/** The interface whose folder stands in the path: .../net/eth2/ctlr_0/host5 gives eth2. */
Attribute<std::string> interfaceAbove(const std::string& path) {
    const auto net = path.find("/net/");
    if (net == std::string::npos) return Absence{"not over Ethernet in software"};
    const auto begin = net + 5;
    return path.substr(begin, path.find('/', begin) - begin);
}

/** Fibre Channel over Ethernet often runs over a VLAN: the interface at the bottom of such a stack. */
std::string lowestInterface(const SysTree& tree, std::string interface) {
    constexpr int deepest = 8;
    for (int depth = 0; depth < deepest; ++depth) {
        const auto names = tree.names("sys/class/net/" + interface);
        const auto lower = std::find_if(names.begin(), names.end(),
                                        [](const std::string& name) { return name.starts_with("lower_"); });
        if (lower == names.end()) break;
        interface = lower->substr(6);
    }
    return interface;
}

bool allZero(const Bytes& bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

Attribute<Transceiver> splitPages(const Bytes& memory) {
    if (memory.size() < smallestModule || allZero(memory)) return Absence{"no module answers"};
    const auto split = static_cast<std::ptrdiff_t>(std::min(memory.size(), modulePage));
    return Transceiver{{memory.begin(), memory.begin() + split}, {memory.begin() + split, memory.end()}};
}

} // namespace

Attribute<Bytes> parseUnitIdentifier(const std::string& text) {
    if (!text.starts_with("naa.") && !text.starts_with("eui.")) return Absence{"no binary identifier: " + text};
    auto bytes = parseHex(std::string_view(text).substr(4));
    if (!bytes || (bytes->size() != 8 && bytes->size() != 16)) return Absence{"no binary identifier: " + text};
    return bytes;
}

std::vector<std::uint32_t> FibreChannelReader::select() const {
    std::vector<std::uint32_t> numbers;
    for (const auto& name : tree_.names("sys/class/fc_host")) {
        const auto number = hostNumber(name);
        if (!number) continue;
        const bool isVirtualPort = devicePath(*number).valueOr({}).find("/vport-") != std::string::npos;
        if (!isVirtualPort && exists(*number)) numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

bool FibreChannelReader::exists(std::uint32_t number) const { return tree_.exists(hostFolder(number) + "/."); }

Attribute<std::string> FibreChannelReader::devicePath(std::uint32_t number) const {
    return tree_.resolve(hostFolder(number) + "/device");
}

Attribute<std::string> FibreChannelReader::first(std::uint32_t number, const std::vector<const char*>& names) const {
    Attribute<std::string> found;
    for (const auto* name : names)
        for (const auto& folder : {hostFolder(number), scsiFolder(number)}) {
            found = tree_.text(folder + "/" + name);
            if (found) return found;
        }
    return found;
}

FibreChannelHost FibreChannelReader::read(std::uint32_t number) const {
    FibreChannelHost host;
    const auto path = devicePath(number);
    host.number = number;
    host.parent = path.then([this](const std::string& device) -> Attribute<DeviceParent> {
        return readDeviceParent(tree_, parentPath(device));
    });
    host.networkInterface = networkInterface(number);
    host.nodeName = readName(tree_, hostFolder(number) + "/node_name");
    host.portId = portId(number);
    host.link = link(number);
    // What the drivers call the same fact; the Fibre Channel class comes before the driver's own attributes.
    host.manufacturer = first(number, {"manufacturer"});
    host.model = first(number, {"model", "modelname", "model_name"});
    host.serialNumber = first(number, {"serial_number", "serialnum", "serial_num"});
    host.driverVersion = first(number, {"driver_version"});
    host.firmwareVersion = first(number, {"firmware_version", "fwrev", "fw_version"});
    host.biosVersion = first(number, {"optionrom_version", "option_rom_version", "optrom_bios_version"});
    host.efiVersion = first(number, {"optrom_efi_version"});
    host.fcodeVersion = first(number, {"optrom_fcode_version"});
    host.counters = counters(number);
    host.transceiver = transceiver(number);
    host.remotePorts = remotePorts(number);
    return host;
}

FibreChannelLink FibreChannelReader::link(std::uint32_t number) const {
    const auto folder = hostFolder(number);
    return {readName(tree_, folder + "/port_name"), tree_.text(folder + "/port_type"),
            tree_.text(folder + "/port_state"), tree_.text(folder + "/speed")};
}

Attribute<std::string> FibreChannelReader::networkInterface(std::uint32_t number) const {
    return devicePath(number).then(interfaceAbove).then([this](const std::string& interface) -> Attribute<std::string> {
        return lowestInterface(tree_, interface);
    });
}

Attribute<std::uint32_t> FibreChannelReader::portId(std::uint32_t number) const {
    return readNumber(tree_, hostFolder(number) + "/port_id", 0xFFFFFF);
}

Counters FibreChannelReader::counters(std::uint32_t number) const {
    Counters counters;
    for (std::size_t i = 0; i < counters.size(); ++i) {
        // All ones is the kernel's word for a counter that the driver does not have.
        constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
        counters[i] = tree_.number(hostFolder(number) + "/statistics/" + counterNames[i], largest);
        if (counters[i] && *counters[i] == largest) counters[i] = Absence{"not counted by the driver"};
    }
    return counters;
}

Attribute<Transceiver> FibreChannelReader::transceiver(std::uint32_t number) const {
    return tree_.bytes(hostFolder(number) + "/device/sfp", modulePages).then(splitPages);
}

std::vector<RemotePort> FibreChannelReader::remotePorts(std::uint32_t number, std::size_t mostUnits) const {
    std::vector<RemotePort> ports;
    const auto prefix = "rport-" + std::to_string(number) + ":";
    for (const auto& name : tree_.names("sys/class/fc_remote_ports"))
        if (name.starts_with(prefix)) ports.push_back(readRemotePort(name));
    addUnits(number, ports, mostUnits);
    return ports;
}

RemotePort FibreChannelReader::readRemotePort(const std::string& name) const {
    const auto folder = "sys/class/fc_remote_ports/" + name;
    return {name,
            readName(tree_, folder + "/port_name"),
            readName(tree_, folder + "/node_name"),
            tree_.text(folder + "/port_state"),
            tree_.text(folder + "/roles"),
            {}};
}

void FibreChannelReader::addUnits(std::uint32_t number, std::vector<RemotePort>& ports, std::size_t most) const {
    std::size_t count = 0;
    for (const auto& address : tree_.names("sys/class/scsi_device")) {
        const auto unit = unitNumber(address, number);
        if (!unit) continue;
        if (count++ == most) break;
        const auto path = tree_.resolve("sys/class/scsi_device/" + address + "/device").valueOr({});
        for (auto& port : ports)
            if (path.find("/" + port.name + "/") != std::string::npos) port.units.push_back(readUnit(address, *unit));
    }
    for (auto& port : ports)
        std::stable_sort(port.units.begin(), port.units.end(),
                         [](const auto& a, const auto& b) { return a.number < b.number; });
}

LogicalUnit FibreChannelReader::readUnit(const std::string& address, std::uint64_t number) const {
    const auto folder = "sys/class/scsi_device/" + address + "/device";
    LogicalUnit unit;
    unit.address = address;
    unit.number = number;
    unit.vendor = tree_.text(folder + "/vendor");
    unit.model = tree_.text(folder + "/model");
    unit.revision = tree_.text(folder + "/rev");
    unit.identifier = tree_.text(folder + "/wwid").then(parseUnitIdentifier);
    const auto blocks = tree_.names(folder + "/block");
    unit.blockDevice = blocks.empty() ? Attribute<std::string>(Absence{"no block device"}) : blocks.front();
    unit.blockSize = unit.blockDevice.then([&](const std::string& block) {
        return readNumber(tree_, folder + "/block/" + block + "/queue/logical_block_size", 1U << 30);
    });
    return unit;
}

} // namespace tavik::host
