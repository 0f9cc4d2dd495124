// A Fibre Channel node and its ports, joined by the port name at the end of both keys. Both lists are read anew for
// each request.
//
// The enumerations show as a group's member the port that stands at the place of the group's own function in the list
// of ports, whichever port matched; searches show the port that matched.
#include "associations/modules.h"
#include "associations/storage/keyed_lists.h"

namespace merolt::storage {

using namespace association;

namespace {

/// By contract a group stands at the place of its function, the empty ones in between too.
constexpr TwoForms<int (*)(int group)> functionOf = {
    .contract = [](int group) { return group; },
    .corrected = [](int group) { return int{g_logicalPortGroupList[group].function}; },
};

void pairs(Enumeration, const PairVisitor& visit) {
    pairEqual(groupsByName, portsByName, [&](const Pair& pair) {
        const Object member = {.index = functionOf.chosen()(pair.left.index)};
        return member.index >= g_fcPortCount || visit({pair.left, member});
    });
}

} // namespace

constexpr Family logicalPortGroupFCPort = {
    .token = "AssocLogicalPortGroupFCPort",
    .className = "Merolt_FCHBA_LogicalPortGroupFCPort",
    .baseClass = "CIM_MemberOfCollection",
    .left = {"Collection", logicalPortGroup},
    .right = {"Member", fcPort},
    .matching = {.forEachPair = pairs,
                 .findLeft = findEqualOf<portsByName, groupsByName>,
                 .findRight = findEqualOf<groupsByName, portsByName>},
    .texts = storageTexts,
    .fresh = {.first = &listOfLogicalPortGroups, .second = &listOfFCPorts},
    .places = {.row = 21, .left = {15, 23}, .right = {40, 17}},
};

} // namespace merolt::storage
