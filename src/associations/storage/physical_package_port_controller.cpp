// A card and its storage controller, joined by the serial number. From the package its Tag is compared and not its
// serial number: the two directions agree only while both texts are equal.
#include "associations/modules.h"
#include "associations/storage/keyed_lists.h"
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

// The log tells each comparison; the display form is for it alone.
void pairs(Enumeration enumeration, const PairVisitor& visit) {
    if (!gDebugLog) return pairEqual(packages, controllers, visit);
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

} // namespace

constexpr Family physicalPackagePortController = {
    .token = "AssocPhysicalPackagePortController",
    .className = "Merolt_FCHBA_PhysicalPackagePortController",
    .baseClass = "CIM_Realizes",
    .left = {"Antecedent", physicalPackage},
    .right = {"Dependent", portController},
    .matching = {.forEachPair = pairs,
                 .findLeft = {.keys = {{{"DeviceID"}}}, .find = packagesOfController},
                 .findRight = findEqualOf<packages, controllers>},
    .texts = getInstanceAsObjectManagerNamespace,
    .places = {.row = 16, .left = {17, 33}, .right = {46, 40}},
};

} // namespace merolt::storage
