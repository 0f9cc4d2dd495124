#include "tavik/host/kernel_queries.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <linux/ethtool.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <libmnl/libmnl.h>

#include "tavik/host/ethtool_netlink.h"
#include "tavik/host/lldp_client.h"
#include "tavik/host/module_pages.h"
#include "tavik/host/rtnetlink_dump.h"

namespace tavik::host {

namespace {

constexpr std::size_t mostAddresses = 65536;

Absence systemAbsence(int error) { return {std::generic_category().message(error)}; }

class Socket {
public:
    Socket() : descriptor_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    /** Hands an ethtool command to the driver of the interface. @return 0 or the error number. */
    int ethtool(const std::string& interface, void* command) const {
        if (!isInterfaceName(interface)) return ENODEV;
        ifreq request{};
        interface.copy(static_cast<char*>(request.ifr_name), IFNAMSIZ - 1);
        request.ifr_data = static_cast<char*>(command);
        return ::ioctl(descriptor_, SIOCETHTOOL, &request) == 0 ? 0 : errno;
    }

private:
    int descriptor_;
};

/** An ethtool command with room for the bytes that the driver writes behind it. */
template <typename Command, std::size_t size>
struct CommandWithData {
    alignas(Command) std::array<std::uint8_t, sizeof(Command) + size> memory{};

    Command header() const {
        Command command;
        std::memcpy(&command, memory.data(), sizeof command);
        return command;
    }
    void setHeader(const Command& command) { std::memcpy(memory.data(), &command, sizeof command); }
    const std::uint8_t* data() const { return memory.data() + sizeof(Command); }
};

template <std::size_t size>
std::string terminatedText(const char (&text)[size]) {
    return {static_cast<const char*>(text), ::strnlen(static_cast<const char*>(text), size)};
}

class AddressDump {
public:
    Attribute<std::vector<InterfaceAddress>> run() {
        const auto begin = [](void* self) { static_cast<AddressDump*>(self)->found_.clear(); };
        if (const int error = runRtnetlinkDump({RTM_GETADDR, sizeof(ifaddrmsg)}, {begin, take, this}))
            return systemAbsence(error);
        return std::move(found_);
    }

private:
    /** What the attributes of a message are read into. */
    struct Reading {
        std::uint8_t family;
        InterfaceAddress address;
        bool hasLocal;
    };

    static int take(const nlmsghdr* message, void* self) {
        auto& found = static_cast<AddressDump*>(self)->found_;
        if (message->nlmsg_type != RTM_NEWADDR || found.size() >= mostAddresses) return MNL_CB_OK;
        const auto* body = static_cast<const ifaddrmsg*>(mnl_nlmsg_get_payload(message));
        Reading reading{
            body->ifa_family, {body->ifa_index, {}, body->ifa_prefixlen, body->ifa_scope, body->ifa_flags}, false};
        mnl_attr_parse(message, sizeof(ifaddrmsg), takeAttribute, &reading);
        if (reading.address.address.family != AddressNone) found.push_back(reading.address);
        return MNL_CB_OK;
    }

    static int takeAttribute(const nlattr* attribute, void* data) {
        auto& [family, entry, hasLocal] = *static_cast<Reading*>(data);
        const auto type = mnl_attr_get_type(attribute);
        const auto size = mnl_attr_get_payload_len(attribute);
        if (type == IFA_FLAGS && size >= sizeof(std::uint32_t)) entry.flags = mnl_attr_get_u32(attribute);
        // On a point-to-point link IFA_LOCAL is ours and IFA_ADDRESS the other end; they come in either order.
        if (type != IFA_LOCAL && (type != IFA_ADDRESS || hasLocal)) return MNL_CB_OK;
        hasLocal = type == IFA_LOCAL;
        if (family == AF_INET && size == 4) entry.address.family = AddressIPv4;
        if (family == AF_INET6 && size == 16) entry.address.family = AddressIPv6;
        if (entry.address.family != AddressNone)
            std::memcpy(entry.address.bytes.data(), mnl_attr_get_payload(attribute), std::min<std::size_t>(size, 16));
        return MNL_CB_OK;
    }

    std::vector<InterfaceAddress> found_;
};

class LinuxQueries : public KernelQueries {
public:
    Attribute<DriverInfo> driverInfo(const std::string& interface) override {
        ethtool_drvinfo command{};
        command.cmd = ETHTOOL_GDRVINFO;
        if (const int error = socket_.ethtool(interface, &command)) return systemAbsence(error);
        return DriverInfo{terminatedText(command.driver), terminatedText(command.version),
                          terminatedText(command.fw_version), terminatedText(command.bus_info)};
    }

    Attribute<MacAddress> permanentAddress(const std::string& interface) override {
        CommandWithData<ethtool_perm_addr, 32> command;
        ethtool_perm_addr request{};
        request.cmd = ETHTOOL_GPERMADDR;
        request.size = 32;
        command.setHeader(request);
        if (const int error = socket_.ethtool(interface, command.memory.data())) return systemAbsence(error);
        MacAddress address{};
        if (command.header().size != address.size()) return Absence{"no Ethernet address"};
        std::copy_n(command.data(), address.size(), address.begin());
        if (address == MacAddress{}) return Absence{"the driver keeps none"};
        return address;
    }

    /** The newer call for modules of several lanes. Older kernels answer it for an SFP module's second page with
     * another place of its memory, so SFP modules are read by the older call wherever that works. */
    Attribute<ModuleMemory> moduleMemory(const std::string& interface) override {
        EthtoolNetlink netlink;
        const auto read = [&](const HalfPage& half) { return netlink.halfPage(interface, half); };
        if (auto memory = readSeveralLanes(read)) return memory;
        auto memory = olderModuleMemory(interface);
        if (memory) return memory;
        auto sfp = readSfp(read);
        return sfp ? sfp : memory;
    }

    /** The kernel first answers how many words its link modes take, as a negative number, and then fills them: three
     *  rows, of what the port supports, what it advertises and what its partner does. */
    Attribute<LinkSettings> linkSettings(const std::string& interface) override {
        CommandWithData<ethtool_link_settings, 3 * mostLinkModeWords * sizeof(std::uint32_t)> command;
        ethtool_link_settings request{};
        request.cmd = ETHTOOL_GLINKSETTINGS;
        command.setHeader(request);
        if (const int error = socket_.ethtool(interface, command.memory.data())) return systemAbsence(error);
        const int words = -command.header().link_mode_masks_nwords;
        if (words <= 0 || words > static_cast<int>(mostLinkModeWords)) return Absence{"unknown count of link modes"};
        request.link_mode_masks_nwords = static_cast<std::int8_t>(words);
        command.setHeader(request);
        if (const int error = socket_.ethtool(interface, command.memory.data())) return systemAbsence(error);
        LinkSettings settings{command.header().autoneg == AUTONEG_ENABLE, command.header().duplex, {}};
        settings.supported.resize(static_cast<std::size_t>(words));
        std::memcpy(settings.supported.data(), command.data(), settings.supported.size() * sizeof(std::uint32_t));
        return settings;
    }

    Attribute<PauseSettings> pauseSettings(const std::string& interface) override {
        ethtool_pauseparam command{};
        command.cmd = ETHTOOL_GPAUSEPARAM;
        if (const int error = socket_.ethtool(interface, &command)) return systemAbsence(error);
        return PauseSettings{command.autoneg != 0, command.rx_pause != 0, command.tx_pause != 0};
    }

    Attribute<FecSettings> fecSettings(const std::string& interface) override {
        ethtool_fecparam command{};
        command.cmd = ETHTOOL_GFECPARAM;
        if (const int error = socket_.ethtool(interface, &command)) return systemAbsence(error);
        return FecSettings{command.active_fec, command.fec};
    }

    Attribute<std::vector<Neighbour>> neighbours(const std::string& interface) override {
        return neighbours_.of(interface);
    }

    Attribute<std::vector<InterfaceLink>> links() override { return dumpInterfaceLinks(); }

    Attribute<std::vector<InterfaceAddress>> addresses() override { return AddressDump().run(); }

private:
    Attribute<ModuleMemory> olderModuleMemory(const std::string& interface) const {
        ethtool_modinfo info{};
        info.cmd = ETHTOOL_GMODULEINFO;
        if (const int error = socket_.ethtool(interface, &info)) return systemAbsence(error);
        const auto whole = readModule(interface, std::min<std::uint32_t>(info.eeprom_len, largestModuleMemory));
        // Some modules announce a diagnostics page and do not answer for it; the serial ID comes first.
        const auto content = whole ? whole : readModule(interface, ETH_MODULE_SFF_8079_LEN);
        if (!content) return whole.absence();
        return ModuleMemory{info.type, *content};
    }

    Attribute<Bytes> readModule(const std::string& interface, std::uint32_t size) const {
        CommandWithData<ethtool_eeprom, largestModuleMemory> command;
        ethtool_eeprom request{};
        request.cmd = ETHTOOL_GMODULEEEPROM;
        request.len = size;
        command.setHeader(request);
        if (const int error = socket_.ethtool(interface, command.memory.data())) return systemAbsence(error);
        const auto delivered = std::min<std::size_t>(command.header().len, size);
        return Bytes(command.data(), command.data() + delivered);
    }

    Socket socket_;
    LldpNeighbours neighbours_;
};

} // namespace

std::unique_ptr<KernelQueries> makeLinuxQueries() { return std::make_unique<LinuxQueries>(); }

bool isInterfaceName(std::string_view name) {
    return !name.empty() && name.size() < IFNAMSIZ && name != "." && name != ".." &&
           name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

} // namespace tavik::host
