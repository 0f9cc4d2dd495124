// What a server keeps for the objects of a long answer.
#pragma once

#include "cmpidt.h"
#include "cmpift.h"

namespace merolt {

/// Whose memory it is. To be called before the first request; the broker outlives all of them.
void useMemoryOf(const CMPIBroker* broker);

/// The server's objects that this thread makes from now on. Servers keep such until the request ends, unless they are
/// told that nobody uses them any more. That is told where a server offers the whole table for it, as cimhost does;
/// sfcb fills a part, and OpenPegasus has none.
class ObjectMemory {
public:
    ObjectMemory();

    /// The objects are of no more use: none of them is kept, and no status with a message is under way.
    void giveBack() const;

private:
    CMPIGcStat* mark = nullptr;
};

} // namespace merolt
