// A Fibre Channel node and its ports, joined by the port name at the end of both keys. Both lists are read anew for
// each request.
//
// The enumerations show as a group's member the port that stands at the place of the group's own function in the list
// of ports, whichever port matched; searches show the port that matched.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr KeyedList groups = {&g_logicalPortGroupCount,
                              [](int index) { return g_logicalPortGroupList[index].instanceID.text(); }, Cut::suffix};
constexpr KeyedList ports = {&g_fcPortCount, [](int index) { return g_fcPortList[index].deviceID.text(); },
                             Cut::suffix};

/// By contract a group stands at the place of its function, the empty ones in between too.
constexpr TwoForms<int (*)(int group)> functionOf = {
    .contract = [](int group) { return group; },
    .corrected = [](int group) { return int{g_logicalPortGroupList[group].function}; },
};

void pairs(Enumeration, const PairVisitor& visit) {
    pairEqual(groups, ports, [&](const Pair& pair) {
        const Object member = {.index = functionOf.chosen()(pair.left.index)};
        return member.index >= g_fcPortCount || visit({pair.left, member});
    });
}

constexpr Family family = {
    .token = "AssocLogicalPortGroupFCPort",
    .className = "Merolt_FCHBA_LogicalPortGroupFCPort",
    .left = {"Collection", logicalPortGroup},
    .right = {"Member", fcPort},
    .forEachPair = pairs,
    .findLeft = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::suffix, groups>},
    .findRight = {.keys = {{{"InstanceID"}}}, .find = equalTo<Cut::suffix, ports>},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocLogicalPortGroupFCPort, family)

void clearLists_AssocLogicalPortGroupFCPort() {
    clearLogicalPortGroupList();
    clearFCPortList();
}

void buildLists_AssocLogicalPortGroupFCPort() {
    buildLogicalPortGroupList();
    buildFCPortList();
}

} // namespace merolt::storage
