// Names of PCI vendors and devices from the list that many systems keep; none is shipped with us.
#pragma once

#include <cstdint>
#include <string>

#include "tavik/host/sys_tree.h"

namespace tavik::host {

class PciNames {
public:
    /** Reads usr/share/misc/pci.ids or usr/share/hwdata/pci.ids below the root, at most 8 MiB; no list, no names. */
    explicit PciNames(const SysTree& tree);

    /** The name in the list, else "vendor 0x8086". */
    std::string vendor(std::uint16_t vendorId) const;

    /** The name in the list, else "vendor 0x8086 device 0x1572". */
    std::string device(std::uint16_t vendorId, std::uint16_t deviceId) const;

private:
    std::string list_;
};

} // namespace tavik::host
