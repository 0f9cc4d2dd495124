// A jack of a card and its Ethernet port, with or without a module in it.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void portsOfJack(const Source& source, const ObjectVisitor& visit) {
    nic::eachPort(source, [&](const Object& port) {
        FixedText<256> tag;
        physical::calcTag_Nic_PhysicalPort(port.card, port.port, tag.data());
        return !source.equals(0, tag.text()) || visit(port);
    });
}

constexpr Texts texts = deviating(ethernetTexts, nic::speakOfPhysicalElement);

} // namespace

constexpr Family physicalPortEthernetPort = {
    .token = "Assoc_PhysicalPort_EthernetPort",
    .className = "Merolt_NIC_PhysicalPortEthernetPort",
    .left = {.name = "Antecedent", .objects = nic::physicalPort, .takesSubclasses = true},
    .right = {.name = "Dependent", .objects = nic::ethernetPort, .takesSubclasses = true},
    .matching = {.forEachPair = nic::bothEndsOf<nic::eachPort>,
                 .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
                 .findRight = {.keys = {{{"Tag", KeyTest::isString}}}, .find = portsOfJack}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 62, .getInstanceRow = 61, .left = {41}, .right = {73}},
};

} // namespace merolt::ethernet
