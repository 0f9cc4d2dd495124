// A card and its storage controller, joined by the serial number. From the package its Tag is compared and not its
// serial number: the two directions agree only while both texts are equal.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"
#include "associations/storage/object_manager_texts.h"
#include "classes/physical/serial_form.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalPackageCount;
using physical::g_physicalPackageList;
using physical::getDisplaySerialNumber;

namespace {

constexpr KeyedList controllers = {&g_portControllerCount,
                                   [](int index) { return g_portControllerList[index].deviceID.text(); }};

// The display form is for the log alone.
void pairs(Enumeration enumeration, const PairVisitor& visit) {
    matchingRecords(g_physicalPackageCount, g_portControllerCount, visit, [&](int package, int controller) {
        const char* serialNumber = g_physicalPackageList[package].serialNumber.text();
        const char* deviceID = g_portControllerList[controller].deviceID.text();
        DEBUG_LOG("%s_AssocPhysicalPackagePortController: Comparing %s to %s", nameOf(enumeration), serialNumber,
                  getDisplaySerialNumber(deviceID));
        return equalsIgnoringCase(serialNumber, deviceID);
    });
}

void packagesOfController(const Source& source, const ObjectVisitor& visit) {
    matchingRecords(g_physicalPackageCount, visit, [&](int package) {
        const char* serialNumber = g_physicalPackageList[package].serialNumber.text();
        DEBUG_LOG("findMatchedRole1InstancesOrReferences: Comparing %s to %s", getDisplaySerialNumber(source.text(0)),
                  serialNumber);
        return equalsIgnoringCase(source.text(0), serialNumber);
    });
}

constexpr Family family = {
    .token = "AssocPhysicalPackagePortController",
    .className = "Merolt_FCHBA_PhysicalPackagePortController",
    .left = {"Antecedent", physicalPackage},
    .right = {"Dependent", portController},
    .forEachPair = pairs,
    .findLeft = {.keys = {{{"DeviceID"}}}, .find = packagesOfController},
    .findRight = {.keys = {{{"Tag"}}}, .find = equalTo<Cut::whole, controllers>},
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalPackagePortController, family)

} // namespace merolt::storage
