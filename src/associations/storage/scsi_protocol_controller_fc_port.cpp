// A SCSI controller and its storage port: the controller's key is the port name at the end of the port's. Both lists
// are read anew for each request of an association, not for an enumeration.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr KeyedList controllers = {&g_scsiProtocolControllerCount,
                                   [](int index) { return g_scsiProtocolControllerList[index].deviceID.text(); }};
constexpr KeyedList ports = {&g_fcPortCount, [](int index) { return g_fcPortList[index].deviceID.text(); },
                             Cut::suffix};

// Shown by references, but not by enumInstances.
constexpr FurtherProperty accessMode = {.name = "AccessMode", .value = 2, .inEnumeration = false};

constexpr Family family = {
    .token = "AssocSCSIProtocolControllerFCPort",
    .className = "Merolt_FCHBA_SCSIProtocolControllerFCPort",
    .left = {"Antecedent", scsiProtocolController},
    .right = {"Dependent", fcPort},
    .forEachPair = equalPairs<controllers, ports>,
    .findLeft = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::suffix, controllers>},
    .findRight = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::whole, ports>},
    .filters = Filters::ignored,
    .texts = storageTexts,
    .further = &accessMode,
};

} // namespace

DEFINE_ASSOCIATION(AssocSCSIProtocolControllerFCPort, family)

void clearLists_AssocSCSIProtocolControllerFCPort() {
    clearSCSIProtocolControllerList();
    clearFCPortList();
}

void buildLists_AssocSCSIProtocolControllerFCPort() {
    buildSCSIProtocolControllerList();
    buildFCPortList();
}

} // namespace merolt::storage
