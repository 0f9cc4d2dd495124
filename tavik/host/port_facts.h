// What the host knows of a port beside what the library's records hold: real speeds, its place on the bus, counters of
// 64 bits. Read anew for each question, since most of it moves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavik/facts.h"
#include "tavik/host/attribute.h"
#include "tavik/host/fibre_channel_host.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/host/network_device.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

/** A fact, or the reason why the host has none. What is no list has one value. */
struct HostFact {
    const merolt::FactRow* row = nullptr;
    Attribute<std::vector<FactValue>> values;

    bool operator==(const HostFact&) const = default;
};

/** Those that are there, in the order given. */
Facts presentFacts(const std::vector<HostFact>& facts);

class PortFactReader {
public:
    PortFactReader(const SysTree& tree, KernelQueries& queries)
        : tree_(tree), queries_(queries), network_(tree, queries), fibreChannel_(tree) {}

    /** @param groups TavikFactGroup bits: files of others are not read. */
    std::vector<HostFact> ofInterface(const std::string& name, std::uint32_t groups) const;
    std::vector<HostFact> ofFibreChannelHost(std::uint32_t number, std::uint32_t groups) const;

private:
    const SysTree& tree_;
    KernelQueries& queries_;
    NetworkDeviceReader network_;
    FibreChannelReader fibreChannel_;
};

} // namespace tavik::host
