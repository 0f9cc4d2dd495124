// Everything that the host source knows of the machine at one moment, and how its functions make up cards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavik/host/fibre_channel_host.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/host/network_device.h"
#include "tavik/host/port_facts.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

struct HostFacts {
    std::vector<HostNetworkDevice> networkDevices;
    std::vector<LeftOutInterface> leftOut;
    std::vector<FibreChannelHost> fibreChannelHosts;
    std::vector<std::vector<HostFact>> interfaceFacts; ///< of networkDevices, in their order, if somebody read them
    std::vector<std::vector<HostFact>> hostFacts;      ///< of fibreChannelHosts, likewise

    bool operator==(const HostFacts&) const = default;
};

/** Slow: reads vital product data and transceivers. */
HostFacts readHostFacts(const SysTree& tree, KernelQueries& queries);

/** Adds what the ports tell beside the library's records, all of it. */
void addPortFacts(HostFacts& facts, const SysTree& tree, KernelQueries& queries);

/** A port with the functions that run over it. Members here and below point into the facts they were made from. */
struct HostPort {
    std::uint8_t number = 0; ///< on the card
    const HostNetworkDevice* networkDevice = nullptr;
    std::vector<const FibreChannelHost*> fibreChannelHosts;
};

/** Functions that share a card. */
struct HostCard {
    std::string key;          ///< what its functions have in common: a PCI slot, a device, an interface
    std::string serialNumber; ///< never empty, unique over the cards, at most 31 characters
    std::vector<HostPort> ports;
};

/** Cards in the order of their keys: PCI cards by address, then other devices, then virtual interfaces. A function of
 *  Fibre Channel over Ethernet in software runs over the port of its interface.
 *
 *  Serial number, the first that is there and that no earlier card has: SN of the vital product data, the device
 *  serial number of PCI or USB, what a Fibre Channel driver tells, the first MAC address as twelve digits, the first
 *  port name, the key. If all are taken, the last one with a number behind it.
 *
 *  Port number: the PCI function and eight times the port on that function. It stays when other ports of the card
 *  vanish. Where two ports claim the same number, or one above 255, the later one takes the smallest free number. */
std::vector<HostCard> groupCards(const HostFacts& facts);

/** The vital product data of the first function of the card that has some, or null. */
const PciVpd* findVpd(const HostCard& card);

/** The identity of what is shown, without what moves all the time (link states, counters): cheap to make, and
 *  different as soon as adapters, their addresses or the storage behind them have changed. */
std::vector<std::string> fingerprint(const SysTree& tree, KernelQueries& queries);

/** Its two parts. Neither is sorted. @param addresses of all interfaces. */
std::vector<std::string> interfaceFingerprint(const SysTree& tree, KernelQueries& queries,
                                              const Attribute<std::vector<InterfaceAddress>>& addresses);
std::vector<std::string> fibreChannelFingerprint(const SysTree& tree);

} // namespace tavik::host
