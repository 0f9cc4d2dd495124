// A jack of a card and the storage ports that run over it: jack and port meet at a place in the library's tree, which
// the jack's tag names.
#include "associations/storage/families.h"
#include "associations/storage/object_manager_texts.h"
#include "associations/storage/tree_position.h"
#include "associations/storage_classes.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalPortCount;
using physical::g_physicalPortList;

namespace {

constexpr TaggedList jacks = {
    .logName = "PHYSICALPORT",
    .count = &g_physicalPortCount,
    .tag = [](int index) { return g_physicalPortList[index].tag.text(); },
    .format = [](TagText& out, int, const char* adapterSerial,
                 int portNumber) { physical::formatPhysicalPortTag(out.data(), adapterSerial, portNumber); },
    .parse = [](const char* tag, AdapterToken& adapterSerial,
                std::uint32_t* portNumber) { physical::parsePhysicalPortTag(tag, adapterSerial, portNumber); },
};

constexpr Family family = {
    .token = "AssocPhysicalPortFCPort",
    .className = "Merolt_FCHBA_PhysicalPortFCPort",
    .left = {"Antecedent", physicalPort},
    .right = {"Dependent", fcPort},
    .forEachPair = pairsByPlace<jacks>,
    .findLeft = thingOfPort<jacks>,
    .findRight = portsOfThing<jacks>,
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalPortFCPort, family)

} // namespace merolt::storage
