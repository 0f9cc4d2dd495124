// The host and the drivers of its storage functions. Of all software only what has "_Driver" in its key is installed on
// the host; "_DriverFirmware" has it too.
#include "associations/modules.h"
#include "associations/storage/walks.h"
#include "classes/system_name.h"
#include "text/text.h"

#include <cstring>

namespace merolt::storage {

using namespace association;
using software::g_softwareIdentityCount;
using software::g_softwareIdentityList;

namespace {

bool isDriver(const char* instanceID) { return std::strstr(instanceID, "_Driver") != nullptr; }

void everyDriver(const Source&, const ObjectVisitor& visit) {
    matchingRecords(g_softwareIdentityCount, visit, [](int index) {
        const software::SoftwareIdentityEntry& identity = g_softwareIdentityList[index];
        return identity.valid && isDriver(identity.instanceID.text());
    });
}

void hostOfDriver(const Source& source, const ObjectVisitor& visit) {
    KeyCut host;
    if (equalsIgnoringCase(host.prefixOf(source.text(0)), gSystemName) && isDriver(source.text(0))) visit({});
}

} // namespace

constexpr Family computerSystemSoftwareIdentity = {
    .token = "AssocComputerSystemSoftwareIdentity",
    .className = "Merolt_FCHBA_ComputerSystemSoftwareIdentity",
    .baseClass = "CIM_InstalledSoftwareIdentity",
    .left = hostAs("System"),
    .right = {"InstalledSoftware", softwareIdentity},
    .matching = {.forEachPair = oneWithEach<everyDriver>,
                 .findLeft = {.keys = {{{"InstanceID"}}}, .find = hostOfDriver},
                 .findRight = {.find = everyDriver}},
    .texts = storageTexts,
    .places = {.row = 14, .left = {8, 9}, .right = {36, 47}},
};

} // namespace merolt::storage
