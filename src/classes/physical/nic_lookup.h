// Finds an Ethernet port of the CNA list in the library's tree again, by its MAC address.
#pragma once

#include "inventory/cna_list.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <optional>

namespace merolt::physical {

using AdapterSerial = FixedText<33>;

/// The adapter's serial number, which the record may hold without terminator.
AdapterSerial adapterSerialOf(const TAVIK_AdapterEntry* adapter);

/// The address and the two bytes behind it, as one value.
bool hasSameMacValue(const TAVIK_NicFunction& function, const CNAPort& port);

/// While one lives, the second port and all behind it are looked for where the search before them ended, unless that
/// has passed them: a walk over all ports reads the tree once, and once more for the first. The library is asked for
/// its tree each time all the same, and another tree is read anew. To be made under provider_lock, for as long as
/// nobody changes the tree.
class PortSearches {
public:
    PortSearches();
    ~PortSearches();
    PortSearches(const PortSearches&) = delete;
    PortSearches& operator=(const PortSearches&) = delete;

private:
    const bool isOutermost;
};

/// The first Ethernet function of the tree with the port's MAC value. The card is not looked at.
/// @return false, with the outputs left alone, if there is none.
bool findAdapterForCNAPort(CNACard* card, CNAPort* port, TAVIK_AdapterEntry** adapter, TAVIK_PhyPortEntry** phyPort,
                           TAVIK_ProtocolEntry** entry);

/// Where a port of the CNA list is plugged in.
struct NicPlace {
    AdapterSerial adapterSerial;
    TAVIK_PhyPortEntry* phyPort;
};
std::optional<NicPlace> findNicPlace(CNAPort* port);

} // namespace merolt::physical
