// The host and its IP endpoints. The endpoint's own keys are not looked at; getInstance tests it through the class of
// Ethernet ports and so delivers the association whatever the endpoint is.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.findLeft.nameSpace.sink = Sink::debug;
    t.findRight.nameSpace.sink = Sink::debug;
    t.findRight.key.sink = Sink::debug;
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_IPProtocolEndPoint",
    .className = "Merolt_NIC_ComputerSystemIPProtocolEndpoint",
    .left = {"Antecedent", computerSystem},
    .right = {"Dependent", nic::ipProtocolEndPoint, nullptr, getInstance_EthernetPort},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"SystemName", KeyTest::isString}, {"SystemCreationClassName", KeyTest::isString}}},
                 .find = onlyIf<namesHostAndClass, theObject>},
    .findRight = {.keys = {{{"Name"}}}, .find = onlyIf<namesHost, nic::eachPort>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemIPProtocolEndPoint, family)

} // namespace merolt::ethernet
