// A storage port and its counters, joined by the port name at the end of both keys. Both lists are read anew for each
// request.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"
#include "text/text.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr KeyedList ports = {&g_fcPortCount, [](int index) { return g_fcPortList[index].deviceID.text(); },
                             Cut::suffix};
constexpr KeyedList statistics = {
    &g_fcPortStatisticsCount, [](int index) { return g_fcPortStatisticsList[index].instanceID.text(); }, Cut::suffix};

// A port whose key has no underscore has no counters here.
void pairs(Enumeration, const PairVisitor& visit) {
    CutText port(ports.cut);
    CutText counters(statistics.cut);
    matchingRecords(*ports.count, *statistics.count, visit, [&](int left, int right) {
        const char* deviceID = ports.text(left);
        return hasUnderscore(deviceID) && equalsIgnoringCase(port.of(deviceID), counters.of(statistics.text(right)));
    });
}

constexpr Family family = {
    .token = "AssocFCPortFCPortStatistics",
    .className = "Merolt_FCHBA_FCPortFCPortStatistics",
    .left = {"ManagedElement", fcPort},
    .right = {"Stats", fcPortStatistics},
    .forEachPair = pairs,
    .findLeft = {.keys = {{{"InstanceID"}}}, .find = equalTo<Cut::suffix, ports>},
    .findRight = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::suffix, statistics>},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocFCPortFCPortStatistics, family)

void clearLists_AssocFCPortFCPortStatistics() {
    clearFCPortStatisticsList();
    clearFCPortList();
}

void buildLists_AssocFCPortFCPortStatistics() {
    buildFCPortStatisticsList();
    buildFCPortList();
}

} // namespace merolt::storage
