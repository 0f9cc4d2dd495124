// A storage port and its initiator, joined by the port's name. Both lists are read anew for each request.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr KeyedList ports = {&g_fcPortCount, [](int index) { return g_fcPortList[index].deviceID.text(); },
                             Cut::suffix};
constexpr KeyedList endpoints = {&g_scsiEndpointHBACount,
                                 [](int index) { return g_scsiEndpointHBAList[index].name.text(); }};

constexpr Family family = {
    .token = "AssocFCPortSCSIProtocolEndpointHBA",
    .className = "Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA",
    .left = {"Antecedent", fcPort},
    .right = {"Dependent", scsiProtocolEndpointHBA},
    .forEachPair = equalPairs<ports, endpoints>,
    .findLeft = {.keys = {{{"Name"}}}, .find = equalTo<Cut::whole, ports>},
    .findRight = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::suffix, endpoints>},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocFCPortSCSIProtocolEndpointHBA, family)

void clearLists_AssocFCPortSCSIProtocolEndpointHBA() {
    clearSCSIProtocolEndpointHBAList();
    clearFCPortList();
}

void buildLists_AssocFCPortSCSIProtocolEndpointHBA() {
    buildSCSIProtocolEndpointHBAList();
    buildFCPortList();
}

} // namespace merolt::storage
