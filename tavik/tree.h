// The packed records of a set of adapters: builds them from the plain description and owns their memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "inventory/tavik.h"
#include "tavik/model.h"

namespace tavik {

/** Addresses of all records are stable for the life of the tree, moves included. */
class Tree {
public:
    explicit Tree(const Fleet& fleet);
    Tree(Tree&&) = default;
    Tree& operator=(Tree&&) = default;

    /** The head of the tree, or null if the fleet has no list. */
    TAVIK_AdapterList* list() { return fleetHasList_ ? &heads_.front() : nullptr; }

    // Records by their place, counted from 0 in the order of the description; null if there is none. They let tests
    // bend single records.
    TAVIK_AdapterEntry* adapter(std::size_t card);
    TAVIK_PhyPortEntry* port(std::size_t card, std::size_t port);
    TAVIK_ProtocolEntry* function(std::size_t card, std::size_t port, std::size_t function);

    /** The record of the storage function with this handle, or null. */
    TAVIK_DeviceRecord* device(std::uint32_t handle);

    /** The serial number of the card with this storage function, or nothing; so below. */
    std::optional<std::string> serialNumberOfStorage(std::uint32_t handle) const;
    std::optional<std::string> serialNumberOfAdapter(std::uint32_t adapterId) const;

private:
    using SerialNumbers = std::map<std::uint32_t, std::string>;

    TAVIK_AdapterEntry* addCard(const Card& card);
    TAVIK_PhyPortEntry* addPort(const Card& card, const Port& port);
    TAVIK_ProtocolEntry* addFunction(const Card& card, const StorageFunction& function);
    TAVIK_ProtocolEntry* addFunction(const Card& card, const NicFunction& function);
    TAVIK_TargetEntry* addTarget(const Target& target);
    TAVIK_LunEntry* addLun(const Lun& lun);

    bool fleetHasList_ = false;
    // A deque keeps the addresses of its elements while it grows.
    std::deque<TAVIK_AdapterList> heads_;
    std::deque<TAVIK_AdapterEntry> adapters_;
    std::deque<TAVIK_PhyPortList> portLists_;
    std::deque<TAVIK_PhyPortEntry> ports_;
    std::deque<TAVIK_ProtocolList> functionLists_;
    std::deque<TAVIK_ProtocolEntry> functions_;
    std::deque<TAVIK_TargetEntry> targets_;
    std::deque<TAVIK_LunEntry> luns_;
    std::map<std::uint32_t, TAVIK_DeviceRecord*> devices_; ///< by handle; the first of equal handles
    SerialNumbers storageCards_;                           ///< by handle, likewise
    SerialNumbers adapterCards_;                           ///< by adapter ID, likewise
};

// Single blocks, as the tree holds them and the calls deliver them.
TAVIK_PortPropertyBlock makePortPropertyBlock(const PortProperty& property);
TAVIK_LinkProperties makeLinkProperties(const Link& link);
TAVIK_IPAddress makeIPAddress(const IPAddress& address);
TAVIK_FCoELinkage makeFCoELinkage(const FCoELinkage& linkage);

/** Writes the versions into the option ROM fields of the record. */
void storeOptionRom(const OptionRom& rom, TAVIK_DeviceRecord& record);

/** Writes the counters into the statistics fields of the record. */
void storeStatistics(const Statistics& statistics, TAVIK_DeviceRecord& record);

} // namespace tavik
