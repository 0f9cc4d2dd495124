// The host and its LAN endpoints. getInstance tests the endpoint through the class of Ethernet ports, whose key such a
// path has not: it delivers the association whatever the endpoint is.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void hostOfEndPoint(const Source& source, const ObjectVisitor& visit) {
    if (!namesHostAndClass(source) || !source.equals(2, nic::lanEndPoint.name)) return;
    nic::theObjectForEach<nic::firstPortOfEachCardWithMac<3>>(source, visit);
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    nic::logErrorsAsDebug(t);
});

} // namespace

constexpr Family computerSystemLANEndPoint = {
    .token = "Assoc_ComputerSystem_LANEndPoint",
    .className = "Merolt_NIC_ComputerSystemLANEndpoint",
    .left = {"Antecedent", computerSystem},
    .right = {"Dependent", nic::lanEndPoint, nullptr, getInstance_EthernetPort},
    .matching =
        {.forEachPair = nic::bothEndsOf<nic::eachPort>,
         .findLeft =
             {.keys = {{{"SystemName"},
                        {"SystemCreationClassName"},
                        {"CreationClassName"},
                        {"Name", KeyTest::none,
                         debugText("Assoc_ComputerSystem_LANEdnPoint: Error getting Name key in findMatchedRole1\n")}}},
              .find = hostOfEndPoint},
         .findRight = {.keys = {{{"Name"}, {"CreationClassName"}}}, .find = onlyIf<namesHostAndClass, nic::eachPort>}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 65, .left = {62}, .right = {79}},
};

} // namespace merolt::ethernet
