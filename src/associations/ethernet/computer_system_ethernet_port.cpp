// The host and its Ethernet ports. Keys of any type are read; one that is no text matches nothing.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.names.nameSpace = "{F}: Error getting namespace\n";
    nic::logAddKeyOfNamesAsDebug(t);
    t.findLeft.open = debugText("{F}: findMatchedRole1 was called\n");
    t.findRight.open = debugText("{F}: findMatchedRole2 was called\n");
    t.findRight.nameSpace.sink = Sink::debug;
    t.findRight.addKey.role1.sink = Sink::debug;
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_EthernetPort",
    .className = "Merolt_NIC_ComputerSystemEthernetPort",
    .left = {"GroupComponent", computerSystem},
    .right = {"PartComponent", nic::ethernetPort},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"SystemName"}, {"SystemCreationClassName"}}}, .find = onlyIf<namesHostAndClass, theObject>},
    .findRight = {.keys = {{{"Name"}, {"CreationClassName"}}}, .find = onlyIf<namesHostAndClass, nic::eachPort>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemEthernetPort, family)

} // namespace merolt::ethernet
