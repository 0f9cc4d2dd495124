// The storage ports that a controller drives: a port's key begins with its controller's serial number.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"
#include "associations/storage/object_manager_texts.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr KeyedList controllers = {&g_portControllerCount,
                                   [](int index) { return g_portControllerList[index].deviceID.text(); }};
constexpr KeyedList ports = {&g_fcPortCount, [](int index) { return g_fcPortList[index].deviceID.text(); },
                             Cut::prefix};

// 2: the controller is the active one.
constexpr FurtherProperty accessMode = {.name = "AccessMode", .value = 2, .inEnumeration = true};

constexpr Family family = {
    .token = "AssocPortControllerFCPort",
    .className = "Merolt_FCHBA_PortControllerFCPort",
    .left = {"Antecedent", portController},
    .right = {"Dependent", fcPort},
    .forEachPair = equalPairs<controllers, ports>,
    .findLeft = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::prefix, controllers>},
    .findRight = {.keys = {{{"DeviceID"}}}, .find = equalTo<Cut::whole, ports>},
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
    .further = &accessMode,
};

} // namespace

DEFINE_ASSOCIATION(AssocPortControllerFCPort, family)

} // namespace merolt::storage
