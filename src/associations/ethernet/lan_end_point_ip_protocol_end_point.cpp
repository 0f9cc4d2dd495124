// A LAN endpoint and the IP endpoint over it.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    nic::openWithFunctionNames(t);
    t.names.nameSpace = "{F}: Error getting namespace\n";
    t.instances.nameSpace = "{F}: Error getting namespace\n";
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    t.findLeft.addKey = {"{F}: Error addkey Role1 in findMatchRole1\n", "{F}: Error addkey Role2 in findMatchRole1\n"};
    t.findRight.addKey = {"{F}: Error addkey Role1 in findMatchRole2\n", "{F}: Error addkey Role2 in findMatchRole2\n"};
});

constexpr Family family = {
    .token = "Assoc_LANEndPoint_IPProtocolEndPoint",
    .className = "Merolt_NIC_LANEndpointIPProtocolEndpoint",
    .left = {"Antecedent", nic::lanEndPoint},
    .right = {"Dependent", nic::ipProtocolEndPoint},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocLANEndPointIPProtocolEndPoint, family)

} // namespace merolt::ethernet
