#include "tavik/host/rtnetlink_dump.h"

#include <array>
#include <cerrno>
#include <memory>

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <time.h>

#include <libmnl/libmnl.h>

namespace tavik::host {

namespace {

bool ask(const mnl_socket& socket, const RtnetlinkDump& dump, std::uint32_t sequence) {
    alignas(nlmsghdr) std::array<char, 256> request{};
    auto* header = mnl_nlmsg_put_header(request.data());
    header->nlmsg_type = dump.type;
    header->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    header->nlmsg_seq = sequence;
    mnl_nlmsg_put_extra_header(header, dump.headSize);
    if (dump.extensionMask != 0) mnl_attr_put_u32(header, IFLA_EXT_MASK, dump.extensionMask);
    return mnl_socket_sendto(&socket, header, header->nlmsg_len) >= 0;
}

int receive(const mnl_socket& socket, std::uint32_t sequence, const RtnetlinkTaker& taker) {
    alignas(nlmsghdr) std::array<char, 32768> answer{};
    const auto port = mnl_socket_get_portid(&socket);
    for (;;) {
        const auto size = mnl_socket_recvfrom(&socket, answer.data(), answer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return errno;
        const auto state =
            mnl_cb_run(answer.data(), static_cast<std::size_t>(size), sequence, port, taker.take, taker.data);
        if (state < 0) return errno;
        if (state == MNL_CB_STOP) return 0;
    }
}

int askOnce(const RtnetlinkDump& dump, const RtnetlinkTaker& taker) {
    // Netlink sockets are not shared: an answer may not be read by the thread that did not ask.
    const std::unique_ptr<mnl_socket, int (*)(mnl_socket*)> socket(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC),
                                                                   mnl_socket_close);
    if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0) return errno;
    const auto sequence = static_cast<std::uint32_t>(::time(nullptr));
    if (!ask(*socket, dump, sequence)) return errno;
    taker.begin(taker.data);
    return receive(*socket, sequence, taker);
}

} // namespace

int runRtnetlinkDump(const RtnetlinkDump& dump, const RtnetlinkTaker& taker) {
    // A host on which each of so many answers meets a change makes interfaces as fast as it can.
    constexpr int mostTries = 32;
    int error = EINTR;
    for (int tries = 0; tries < mostTries && error == EINTR; ++tries)
        error = askOnce(dump, taker);
    return error;
}

} // namespace tavik::host
