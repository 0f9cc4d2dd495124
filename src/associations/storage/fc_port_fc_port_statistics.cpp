// A storage port and its counters, joined by the port name at the end of both keys. Both lists are read anew for each
// request.
#include "associations/modules.h"
#include "associations/storage/keyed_lists.h"

namespace merolt::storage {

using namespace association;

namespace {

// A port whose key has no underscore has no counters here.
void pairs(Enumeration, const PairVisitor& visit) {
    CutText port(portsByName.cut);
    RightTexts counters(statisticsByName);
    for (int index = 0; index < *portsByName.count; ++index) {
        const char* deviceID = portsByName.text(index);
        const auto visitPair = [&](int record) { return visit({{.index = index}, {.index = record}}); };
        if (hasUnderscore(deviceID) && !counters.walk(port.of(deviceID), visitPair)) return;
    }
}

} // namespace

constexpr Family fcPortFCPortStatistics = {
    .token = "AssocFCPortFCPortStatistics",
    .className = "Merolt_FCHBA_FCPortFCPortStatistics",
    .baseClass = "CIM_ElementStatisticalData",
    .left = {"ManagedElement", fcPort},
    .right = {"Stats", fcPortStatistics},
    .matching = {.forEachPair = pairs,
                 .findLeft = findEqualOf<statisticsByName, portsByName>,
                 .findRight = findEqualOf<portsByName, statisticsByName>},
    .texts = storageTexts,
    .fresh = {.first = &listOfFCPortStatistics, .second = &listOfFCPorts, .forEnumerations = true},
    .places = {.row = 22, .left = {11, 14}, .right = {38, 22}},
};

} // namespace merolt::storage
