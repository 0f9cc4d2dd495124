#include "tavik/host/ethtool_netlink.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <sys/socket.h>

#include <libmnl/libmnl.h>

namespace tavik::host {

namespace {

/** Enough for the header, a name and five numbers. */
constexpr std::size_t requestRoom = 256;
constexpr std::size_t answerRoom = 8192;

Absence systemAbsence(int error) { return {std::generic_category().message(error)}; }

nlmsghdr* putHeader(void* room, std::uint16_t type, std::uint32_t sequence, std::uint8_t command,
                    std::uint8_t version) {
    auto* header = mnl_nlmsg_put_header(room);
    header->nlmsg_type = type;
    header->nlmsg_flags = NLM_F_REQUEST;
    header->nlmsg_seq = sequence;
    auto* generic = static_cast<genlmsghdr*>(mnl_nlmsg_put_extra_header(header, sizeof(genlmsghdr)));
    generic->cmd = command;
    generic->version = version;
    return header;
}

Bytes finished(const nlmsghdr* header) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(header);
    return {bytes, bytes + header->nlmsg_len};
}

Bytes familyRequest(std::uint32_t sequence) {
    alignas(nlmsghdr) std::array<char, requestRoom> room{};
    auto* header = putHeader(room.data(), GENL_ID_CTRL, sequence, CTRL_CMD_GETFAMILY, 1);
    mnl_attr_put_strz(header, CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME);
    return finished(header);
}

/** The attribute of that type in the message; null where it has none. */
const nlattr* findAttribute(const nlmsghdr* message, std::uint16_t type) {
    struct Search {
        std::uint16_t type;
        const nlattr* found;
    } search{type, nullptr};
    const auto take = [](const nlattr* attribute, void* data) {
        auto& wanted = *static_cast<Search*>(data);
        if (mnl_attr_get_type(attribute) == wanted.type) wanted.found = attribute;
        return MNL_CB_OK;
    };
    if (mnl_nlmsg_get_payload_len(message) < sizeof(genlmsghdr)) return nullptr;
    mnl_attr_parse(message, sizeof(genlmsghdr), take, &search);
    return search.found;
}

/** Sends a request and hands its answer to a reader. */
template <typename Value>
Attribute<Value> ask(mnl_socket& socket, const Bytes& request, std::uint32_t sequence,
                     Attribute<Value> (*read)(const nlmsghdr*)) {
    if (mnl_socket_sendto(&socket, request.data(), request.size()) < 0) return systemAbsence(errno);
    struct Reading {
        Attribute<Value> (*read)(const nlmsghdr*);
        Attribute<Value> value;
    } reading{read, Absence{"the kernel gives no answer"}};
    const auto take = [](const nlmsghdr* message, void* data) {
        auto& target = *static_cast<Reading*>(data);
        target.value = target.read(message);
        return MNL_CB_STOP;
    };
    alignas(nlmsghdr) std::array<char, answerRoom> answer{};
    for (;;) {
        const auto size = mnl_socket_recvfrom(&socket, answer.data(), answer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return systemAbsence(errno);
        const auto state = mnl_cb_run(answer.data(), static_cast<std::size_t>(size), sequence,
                                      mnl_socket_get_portid(&socket), take, &reading);
        if (state < 0) return systemAbsence(errno);
        if (state == MNL_CB_STOP) return std::move(reading.value);
    }
}

Attribute<std::uint16_t> familyOfAnswer(const nlmsghdr* answer) {
    const auto* attribute = findAttribute(answer, CTRL_ATTR_FAMILY_ID);
    if (attribute == nullptr || mnl_attr_get_payload_len(attribute) < sizeof(std::uint16_t))
        return Absence{"the kernel has no ethtool netlink"};
    return mnl_attr_get_u16(attribute);
}

} // namespace

Bytes moduleRequest(std::uint16_t family, std::uint32_t sequence, const std::string& interface, const HalfPage& half) {
    alignas(nlmsghdr) std::array<char, requestRoom> room{};
    auto* header = putHeader(room.data(), family, sequence, ETHTOOL_MSG_MODULE_EEPROM_GET, ETHTOOL_GENL_VERSION);
    auto* device = mnl_attr_nest_start(header, ETHTOOL_A_MODULE_EEPROM_HEADER);
    mnl_attr_put_strz(header, ETHTOOL_A_HEADER_DEV_NAME, interface.c_str());
    mnl_attr_nest_end(header, device);
    mnl_attr_put_u32(header, ETHTOOL_A_MODULE_EEPROM_OFFSET, half.offset);
    mnl_attr_put_u32(header, ETHTOOL_A_MODULE_EEPROM_LENGTH, halfPageSize);
    mnl_attr_put_u8(header, ETHTOOL_A_MODULE_EEPROM_PAGE, half.page);
    mnl_attr_put_u8(header, ETHTOOL_A_MODULE_EEPROM_BANK, 0);
    mnl_attr_put_u8(header, ETHTOOL_A_MODULE_EEPROM_I2C_ADDRESS, half.address);
    return finished(header);
}

Attribute<Bytes> moduleData(const nlmsghdr* answer) {
    const auto* attribute = findAttribute(answer, ETHTOOL_A_MODULE_EEPROM_DATA);
    if (attribute == nullptr) return Absence{"the kernel's answer has no data"};
    const auto* bytes = static_cast<const std::uint8_t*>(mnl_attr_get_payload(attribute));
    return Bytes(bytes, bytes + mnl_attr_get_payload_len(attribute));
}

EthtoolNetlink::EthtoolNetlink()
    : socket_(mnl_socket_open2(NETLINK_GENERIC, SOCK_CLOEXEC), mnl_socket_close),
      family_(Absence{"no netlink socket"}) {
    if (!socket_ || mnl_socket_bind(socket_.get(), 0, MNL_SOCKET_AUTOPID) < 0) return;
    ++sequence_;
    family_ = ask<std::uint16_t>(*socket_, familyRequest(sequence_), sequence_, familyOfAnswer);
}

Attribute<Bytes> EthtoolNetlink::halfPage(const std::string& interface, const HalfPage& half) {
    if (!family_) return family_.absence();
    if (!isInterfaceName(interface)) return systemAbsence(ENODEV);
    ++sequence_;
    return ask<Bytes>(*socket_, moduleRequest(*family_, sequence_, interface, half), sequence_, moduleData);
}

} // namespace tavik::host
