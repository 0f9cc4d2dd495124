// What an IP endpoint can do, and the endpoint. getInstance delivers the capabilities as well as the association, since
// that is how the capabilities' existence is tested.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void capabilitiesOfEndPoint(const Source& source, const ObjectVisitor& visit) {
    nic::firstPortOfEachCardWithMac(source, 0, visit);
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.names.addKey = {"Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role1 in enumInstanceNames\n",
                      "Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role2 in enumInstanceNames\n"};
    t.instances.open = "{F}: enumInstances_{T} was called\n";
    t.getInstance.open = "{F}: getInstance_AssocIPProtocolEndPointIPAssignmentSettingData was called\n";
    t.findLeft.nameSpace.sink = Sink::debug;
    t.findRight.key = "{F}: Error getting Name key in findMatchedRole2\n";
    for (SearchTexts* search : {&t.findLeft, &t.findRight})
        search->addKey = {"Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role1 in findMatchedRole1\n",
                          "Assoc_ComputerSystem_IPProtocolEndPoint: Error addkey Role2 in findMatchedRole1\n"};
});

constexpr Family family = {
    .token = "Assoc_IPProtocolEndPointCapabilities_IPProtocolEndPoint",
    .className = "Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint",
    .left = {"Capabilities", nic::ipProtocolEndPointCapabilities},
    .right = {"ManagedElement", nic::ipProtocolEndPoint},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = capabilitiesOfEndPoint},
    .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocIPProtocolEndPointCapabilitiesIPProtocolEndPoint, family)

} // namespace merolt::ethernet
