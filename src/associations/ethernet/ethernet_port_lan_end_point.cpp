// An Ethernet port and its LAN endpoint.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    nic::openAllWithFunctionNames(t);
    t.names.nameSpace = "{F}: Error getting namespace\n";
    t.names.addKey = {"{F}: Error addkey Role1 in findMatchedRole2\n", "{F}: Error addkey Role2 in findMatchedRole2\n"};
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    t.findRight.nameSpace = "Assoc_EthernetPort_LANEndPoin: Error getting namespace in findRole1\n";
});

constexpr Family family = {
    .token = "Assoc_EthernetPort_LANEndPoint",
    .className = "Merolt_NIC_EthernetPortLANEndpoint",
    .left = {"Antecedent", nic::ethernetPort},
    .right = {"Dependent", nic::lanEndPoint},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocEthernetPortLANEndPoint, family)

} // namespace merolt::ethernet
