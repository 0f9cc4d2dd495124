// A jack of a card and its Ethernet port, with or without a module in it.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

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

constexpr Family family = {
    .token = "Assoc_PhysicalPort_EthernetPort",
    .className = "Merolt_NIC_PhysicalPortEthernetPort",
    .left = {"Antecedent", nic::physicalPort},
    .right = {"Dependent", nic::ethernetPort},
    .forEachPair = nic::bothEndsOf<nic::eachPort>,
    .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = nic::eachPortWith<nic::macTextOf>},
    .findRight = {.keys = {{{"Tag", KeyTest::isString}}}, .find = portsOfJack},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalPortEthernetPort, family)

} // namespace merolt::ethernet
