// The flash images of storage cards and the service that updates them. From an identity of any kind, a driver's too,
// the service is found.
#include "associations/modules.h"
#include "associations/storage/walks.h"

#include <cstring>

namespace merolt::storage {

using namespace association;
using software::g_softwareIdentityCount;
using software::g_softwareIdentityList;

namespace {

void everyFlashImage(const Source&, const ObjectVisitor& visit) {
    matchingRecords(g_softwareIdentityCount, visit, [](int index) {
        const software::SoftwareIdentityEntry& identity = g_softwareIdentityList[index];
        return identity.valid && std::strstr(identity.instanceID.text(), "_FlashImage");
    });
}

void pairs(Enumeration, const PairVisitor& visit) {
    everyFlashImage({}, [&](const Object& identity) { return visit({identity, {}}); });
}

void serviceOfIdentity(const Source& source, const ObjectVisitor& visit) {
    for (int index = 0; index < g_softwareIdentityCount; ++index) {
        const software::SoftwareIdentityEntry& identity = g_softwareIdentityList[index];
        if (!identity.valid || !source.equals(0, identity.instanceID.text())) continue;
        visit({});
        return;
    }
}

// The searches speak as the Ethernet side's do; towards the identities keys are set without a text of their own.
constexpr Texts texts = deviating(storageTexts, [](Texts& t) {
    t.instances.nameSpace = "enumInstanceNames_{F}: Error getting namespace, status.rc={n}!";
    t.findLeft.nameSpace =
        "Assoc_SoftwareIdentity_SoftwareInstallationService: Error getting Namespace in findMatchedRole1";
    t.findLeft.key = "Assoc_SoftwareIdentity_SoftwareInstallationService: Error getting Name key in findMatchedRole1";
    t.findRight.nameSpace =
        "Assoc_SoftwareIdentity_SoftwareInstallationService:: Error getting namespace in findMatchedRole2";
    t.findRight.key =
        "Assoc_SoftwareIdentity_SoftwareInstallationService:: Error getting InstanceID key in findMatchedRole2";
    t.findRight.addKey = {"Assoc_SoftwareIdentity_SoftwareInstallationService: Error addkey Role1 in findMatchedRole2",
                          "Assoc_SoftwareIdentity_SoftwareInstallationService: Error addkey Role2 in findMatchedRole2"};
});

} // namespace

constexpr Family softwareIdentitySoftwareInstallationService = {
    .token = "AssocSoftwareIdentitySoftwareInstallationService",
    .className = "Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService",
    .baseClass = "CIM_ServiceAffectsElement",
    .left = {"AffectedElement", softwareIdentity},
    .right = {"AffectingElement", installationService},
    .matching = {.forEachPair = pairs,
                 .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, everyFlashImage>},
                 .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = serviceOfIdentity}},
    .texts = texts,
    .places = {.row = 38, .left = {27, 46}, .right = {56, 51}},
};

} // namespace merolt::storage
