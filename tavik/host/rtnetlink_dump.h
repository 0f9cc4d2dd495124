// Asks the kernel's rtnetlink for all of something.
#pragma once

#include <cstddef>
#include <cstdint>

struct nlmsghdr;

namespace tavik::host {

struct RtnetlinkDump {
    std::uint16_t type = 0;          ///< RTM_GET...
    std::size_t headSize = 0;        ///< of the zeros that stand behind the header of the request
    std::uint32_t extensionMask = 0; ///< IFLA_EXT_MASK; 0: the request has none
};

/** What gets an answer. */
struct RtnetlinkTaker {
    void (*begin)(void* data) = nullptr;                ///< an answer begins: forget what came before
    int (*take)(const nlmsghdr*, void* data) = nullptr; ///< one message of it; returns MNL_CB_OK
    void* data = nullptr;
};

/** In the network namespace of the calling thread. Where something changed while the kernel answered (NLM_F_DUMP_INTR),
 *  parts of the answer are of before and parts of after, and some may be missing: it is asked again.
 *  @return 0 or the error number; EINTR where it never came to rest. */
int runRtnetlinkDump(const RtnetlinkDump& dump, const RtnetlinkTaker& taker);

} // namespace tavik::host
