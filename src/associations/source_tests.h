// What both sides' families ask of a source's keys, and their walk over a class with one object.
#pragma once

#include "associations/association.h"
#include "classes/server/computer_system.h"

namespace merolt::association {

/// The host, at one end of many associations of either side.
inline constexpr ObjectClass computerSystem = OBJECT_CLASS("Merolt_Adapter_ComputerSystem", server, ComputerSystem);

/// The one object of a class, whatever the source's keys are.
void theObject(const Source& source, const ObjectVisitor& visit);

/// What the keys of a source have to be, in their order.
using SourceTest = bool (*)(const Source& source);
bool namesHost(const Source& source);          ///< this host's name
bool namesHostAndClass(const Source& source);  ///< this host's name, then its class
bool namesInstaller(const Source& source);     ///< the installation service's name
bool namesServiceOfHost(const Source& source); ///< this host's name, then its class, then the service's name

/// Everything of a walk, if the source is what it has to be.
template <SourceTest test, void (*walk)(const Source&, const ObjectVisitor&)>
void onlyIf(const Source& source, const ObjectVisitor& visit) {
    if (test(source)) walk(source, visit);
}

/// The host and an installation service on it.
template <void (*pairs)(Enumeration, const PairVisitor&)>
inline constexpr Matching hostAndItsService = {
    .forEachPair = pairs,
    .findLeft = {.keys = {{{"SystemName", KeyTest::isString}, {"SystemCreationClassName"}, {"Name"}}},
                 .find = onlyIf<namesServiceOfHost, theObject>},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesHost, theObject>},
};

} // namespace merolt::association
