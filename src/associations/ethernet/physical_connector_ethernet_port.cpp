// A transceiver module and its Ethernet port. Ports whose module could not be read have none.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void eachPortWithModule(const Source& source, const ObjectVisitor& visit) {
    nic::eachPort(source, [&](const Object& port) { return port.port->transceiverPresent != 1 || visit(port); });
}

void modulesOfPort(const Source& source, const ObjectVisitor& visit) {
    eachPortWithModule(source,
                       [&](const Object& port) { return !source.equals(0, nic::macTextOf(port)) || visit(port); });
}

void portsOfModule(const Source& source, const ObjectVisitor& visit) {
    eachPortWithModule(source, [&](const Object& port) {
        FixedText<256> tag;
        physical::calcTag_Nic_PhysicalConnector(port.card, port.port, tag.data());
        return !source.equals(0, tag.text()) || visit(port);
    });
}

constexpr Texts texts = deviating(ethernetTexts, nic::speakOfPhysicalElement);

} // namespace

constexpr Family physicalConnectorEthernetPort = {
    .token = "Assoc_PhysicalConnector_EthernetPort",
    .className = "Merolt_NIC_PhysicalConnectorEthernetPort",
    .left = {"Antecedent", nic::physicalConnector},
    .right = {"Dependent", nic::ethernetPort},
    .matching = {.forEachPair = nic::bothEndsOf<eachPortWithModule>,
                 .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = modulesOfPort},
                 .findRight = {.keys = {{{"Tag", KeyTest::isString}}}, .find = portsOfModule}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 61, .getInstanceRow = 60, .left = {86}, .right = {72}},
};

} // namespace merolt::ethernet
