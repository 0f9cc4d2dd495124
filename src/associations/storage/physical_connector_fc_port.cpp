// A transceiver module and the storage ports that run over it: module and port meet at a place in the library's tree,
// which the module's tag names.
#include "associations/storage/families.h"
#include "associations/storage/object_manager_texts.h"
#include "associations/storage/tree_position.h"
#include "associations/storage_classes.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalConnectorCount;
using physical::g_physicalConnectorList;

namespace {

constexpr TaggedList connectors = {
    .logName = "PHYSICALCONNECTOR",
    .count = &g_physicalConnectorCount,
    .tag = [](int index) { return g_physicalConnectorList[index].tag.text(); },
    .format =
        [](TagText& out, int index, const char* adapterSerial, int portNumber) {
            physical::formatPhysicalConnectorTag(out.data(), g_physicalConnectorList[index].sfp.SerialNumber.text(),
                                                 adapterSerial, portNumber);
        },
    .parse =
        [](const char* tag, AdapterToken& adapterSerial, std::uint32_t* portNumber) {
            char moduleSerial[sizeof(AdapterToken)] = {};
            physical::parsePhysicalConnectorTag(tag, moduleSerial, adapterSerial, portNumber);
        },
};

constexpr Family family = {
    .token = "AssocPhysicalConnectorFCPort",
    .className = "Merolt_FCHBA_PhysicalConnectorFCPort",
    .left = {"Antecedent", physicalConnector},
    .right = {"Dependent", fcPort},
    .forEachPair = pairsByPlace<connectors>,
    .findLeft = thingOfPort<connectors>,
    .findRight = portsOfThing<connectors>,
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalConnectorFCPort, family)

} // namespace merolt::storage
