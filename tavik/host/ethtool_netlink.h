// The kernel's newer call for the memory of transceiver modules: ETHTOOL_MSG_MODULE_EEPROM_GET over generic netlink
// (Documentation/networking/ethtool-netlink.rst). It reaches all pages; the older ioctl reaches what its driver lays
// out.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tavik/host/attribute.h"
#include "tavik/host/module_pages.h"
#include "tavik/model.h"

struct mnl_socket;
struct nlmsghdr;

namespace tavik::host {

/** A socket for the calls of one thread. Kernels before 5.13 do not know the call: then every half page is absent. */
class EthtoolNetlink {
public:
    EthtoolNetlink();

    /** Reads over the two-wire bus of the module. Needs CAP_NET_ADMIN. The reason of an absence is the kernel's. */
    Attribute<Bytes> halfPage(const std::string& interface, const HalfPage& half);

private:
    std::unique_ptr<mnl_socket, int (*)(mnl_socket*)> socket_;
    Attribute<std::uint16_t> family_;
    std::uint32_t sequence_ = 0;
};

/** The request as bytes. @param family what the kernel calls "ethtool". */
Bytes moduleRequest(std::uint16_t family, std::uint32_t sequence, const std::string& interface, const HalfPage& half);

/** The module's bytes in an answer; absent where it has none. */
Attribute<Bytes> moduleData(const nlmsghdr* answer);

} // namespace tavik::host
