// What of a CIM server's tables the provider uses, in one place: what a server lacks, what follows from it, and how an
// administrator learns of it.
#pragma once

#include "cmpidt.h"
#include "cmpift.h"

#include <string_view>

namespace merolt {

/// Tables of servers differ in length and in what they leave null, and their version words tell nothing of it. So the
/// slots themselves are looked at.
struct ServerFacilities {
    /// Paths, instances and texts can be made: without, no interface is handed out.
    bool canAnswer;
    /// A thread can be started: without, nobody looks for adapters, and what depends on them stays empty.
    bool canRunThread;
    /// The thread can be attached and alerts made and delivered: without, adapters are published and alerts are not.
    bool canAlert;
};

/// Reads nothing that is not there. Both may be null.
ServerFacilities facilitiesOf(const CMPIBroker* broker, const CMPIContext* context);

/// Writes what a server lacks, and what follows from it, in one line to the error log and, if the server has one, to
/// its log. Nothing is written of a server that lacks nothing. Nothing is thrown.
void reportMissingFacilities(const CMPIBroker* broker, const CMPIContext* context);

/// The same for what a server offers and then does not give.
/// @param what completes "the CIM server ".
void reportNoThread(const CMPIBroker* broker, std::string_view what);
void reportNoAlerts(const CMPIBroker* broker, std::string_view what);

/// Gives a context back to which no thread is attached; null is ignored. Servers that cannot release one do nothing
/// here.
void releaseContext(CMPIContext* context);

} // namespace merolt
