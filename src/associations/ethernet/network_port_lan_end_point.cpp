// A network port and its LAN endpoint.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    nic::openAllWithFunctionNames(t);
    t.names.nameSpace = "{F}: Error getting namespace\n";
    t.names.addKey = {"{F}: Error addkey Role1 in enumInstances\n", "{F}: Error addkey Role2 in enumInstances\n"};
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    t.findLeft.nameSpace = "{F}: Error getting namespace findMatchRole1\n";
    t.findLeft.addKey = {"{F}: Error addkey Role1 in findMatchRole1", "{F}: Error addkey Role2 in findMatchRole1"};
    t.findRight.nameSpace = "{F}:: Error getting namespace in findMatchRole2\n";
    t.findRight.addKey = {"{F}: Error addkey Role1 in findMatchRole2\n", "{F}: Error addkey Role2 in findMatchRole2\n"};
});

constexpr Family family = {
    .token = "Assoc_NetworkPort_LANEndPoint",
    .className = "Merolt_NIC_NetworkPortLANEndpoint",
    .left = {"Antecedent", nic::networkPort},
    .right = {"Dependent", nic::lanEndPoint},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = nic::eachPortWith<nic::networkPortIDOf>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocNetworkPortLANEndPoint, family)

} // namespace merolt::ethernet
