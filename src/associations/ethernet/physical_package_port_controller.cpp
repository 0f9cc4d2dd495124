// A card and its Ethernet controller. The search for the card tells each of its steps in the log.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"
#include "log/log.h"

namespace merolt::ethernet {

using namespace association;

namespace {

#define TRAIL "Assoc_PhysicalPackagePortController:findMatchedRole1InstancesOrReferences()"

// By ftype.
constexpr const char* actions[] = {
    "FUNC_ASSOC makeInstance_Nic_PhysicalPackage", "FUNC_ASSOCNAME makePath_Nic_PhysicalPackage",
    "FUNC_REF makePath_Nic_PhysicalPackage", "FUNC_REFNAME makePath_Nic_PhysicalPackage"};

/// Copies the DeviceID of a card's controller. @param buffer 256 bytes. @return the buffer.
const char* calcDeviceID_PortController(const CNACard* card, FixedText<256>& buffer) {
    return calcDeviceID_NICPortController(card, buffer.data());
}

void packagesOfController(const Source& source, const ObjectVisitor& visit) {
    DEBUG_LOG(TRAIL " deviceId = %s", source.text(0));
    DEBUG_LOG(TRAIL);
    nic::eachCard(source, [&](const Object& card) {
        DEBUG_LOG(TRAIL " Before calcDeviceID_PortController");
        FixedText<256> deviceID;
        calcDeviceID_PortController(card.card, deviceID);
        DEBUG_LOG(TRAIL " Addr = %s", deviceID.text());
        if (!source.equals(0, deviceID.text())) return true;
        DEBUG_LOG(TRAIL " Before %s", actions[source.wanted]);
        return visit(card);
    });
}

void controllersOfPackage(const Source& source, const ObjectVisitor& visit) {
    nic::eachCard(source, [&](const Object& card) {
        return !source.equals(0, physical::calcTag_Nic_PhysicalPackage(card.card).text()) || visit(card);
    });
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    nic::speakOfPhysicalElement(t);
    t.findLeft.open = debugText(TRAIL " called with ftype = {n}");
});

} // namespace

constexpr Family physicalPackagePortController = {
    .token = "Assoc_PhysicalPackagePortController",
    .className = "Merolt_NIC_PhysicalPackagePortController",
    .left = {"Antecedent", nic::physicalPackage},
    .right = {"Dependent", nic::portController},
    .matching = {.forEachPair = nic::bothEndsOf<nic::eachCard>,
                 .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = packagesOfController},
                 .findRight = {.keys = {{{"Tag", KeyTest::isString}}}, .find = controllersOfPackage}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 63, .getInstanceRow = 62, .left = {87}, .right = {92}},
};

} // namespace merolt::ethernet
