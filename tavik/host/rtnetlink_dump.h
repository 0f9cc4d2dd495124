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

/** Hands each message of the answer to take, which returns MNL_CB_OK. In the network namespace of the calling thread.
 *  @return 0 or the error number. */
int runRtnetlinkDump(const RtnetlinkDump& dump, int (*take)(const nlmsghdr*, void*), void* data);

} // namespace tavik::host
