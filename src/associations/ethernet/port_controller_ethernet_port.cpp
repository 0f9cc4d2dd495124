// An Ethernet controller and the ports of its card. A port finds the controller of the first card that has its MAC
// address.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void portsOfController(const Source& source, const ObjectVisitor& visit) {
    nic::eachPort(source,
                  [&](const Object& port) { return !source.equals(0, nic::portControllerIDOf(port)) || visit(port); });
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    nic::openAllWithFunctionNames(t);
    t.requests.open[FUNC_REFNAME] = "{F}: referenceNames was called\n";
    t.names.nameSpace = "{F}: Error getting namespace\n";
    t.names.addKey = {"{F}: Error addkey Role1 in enumInstances\n", "{F}: Error addkey Role2 in enumInstances\n"};
    t.instances.nameSpace = "{F}: Error getting namespace\n";
    t.getInstance.className = "{F}: Error getting ClassName getInstance\n";
    t.findLeft.nameSpace = "{F}: Error getting namespace findRole1\n";
    t.findRight.nameSpace = "{F}: Error getting namespace in findRole2\n";
    nic::addKeyInFindRole(t);
});

constexpr Family family = {
    .token = "Assoc_PortController_EthernetPort",
    .className = "Merolt_NIC_PortControllerEthernetPort",
    .left = {"Antecedent", nic::portController},
    .right = {"Dependent", nic::ethernetPort},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = nic::firstOf<nic::eachPortWith<nic::macTextOf>>},
    .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = portsOfController},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocPortControllerEthernetPort, family)

} // namespace merolt::ethernet
