// Where a storage port is in the library's tree, and the associations that follow from it: a tag that ends in an
// adapter's serial number and a port number belongs to the ports at that place.
#pragma once

#include "associations/association.h"

#include <cstdint>

namespace merolt::association {

using AdapterToken = char[256];

/// The beginning of a tag.
struct TagStart {
    const char* text;
    const char* separator; ///< between it and the place
};

/// A list of things that sit in a jack of a card and have its place in their tag.
struct TaggedList {
    const char* logName; ///< stands before _Tag in log lines
    const std::int32_t* count;
    const char* (*tag)(int index);
    /// What stands in front of the place in the tag that the thing has wherever it sits.
    TagStart (*start)(int index);
    /// Takes a tag apart; leaves both outputs alone if it cannot.
    void (*parse)(const char* tag, AdapterToken& adapterSerial, std::uint32_t* portNumber);
};

/// Each thing with each storage port whose place is in its tag.
void pairByPlace(const TaggedList& things, Enumeration enumeration, const PairVisitor& visit);
/// From a port, by its DeviceID: the first thing at its place, and no other.
void findThingOfPort(const TaggedList& things, const Source& source, const ObjectVisitor& visit);
/// From a thing, by its Tag: each port whose names stand in the header of a function at that place. The header and not
/// the function's device record is compared, so this direction can disagree with the other two.
void findPortsOfThing(const TaggedList& things, const Source& source, const ObjectVisitor& visit);

/// Things and the storage ports at their place.
template <const TaggedList& things>
inline constexpr Matching atOnePlace = {
    .forEachPair = [](Enumeration enumeration, const PairVisitor& visit) { pairByPlace(things, enumeration, visit); },
    .findLeft = {.keys = {{{"DeviceID"}}},
                 .find = [](const Source& source,
                            const ObjectVisitor& visit) { findThingOfPort(things, source, visit); }},
    .findRight = {.keys = {{{"Tag"}}},
                  .find = [](const Source& source,
                             const ObjectVisitor& visit) { findPortsOfThing(things, source, visit); }},
};

extern const TaggedList connectorsInTree;
extern const TaggedList jacksInTree;

} // namespace merolt::association
