// Driver and firmware of a card and its Ethernet controller. Where referenceNames starts from the controller it names
// the driver twice and the firmware never.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void identitiesOfController(const Source& source, const ObjectVisitor& visit) {
    nic::eachIdentity(source, [&](const Object& identity) {
        return !source.equals(0, nic::portControllerIDOf(identity)) || visit(identity);
    });
}

std::optional<CmpiObjectPath> pathOfDriver(const char* className, const char* nameSpace, const Object& identity) {
    return makePath_SoftwareIdentity(className, nameSpace, nicNetworkDriver, identity.card);
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.instances.nameSpace = "{F}: Error getting namespace\n";
    nic::logAddKeyOfNamesAsDebug(t);
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    t.findLeft.nameSpace = "{F}: Error getting Namespace in findMatchedRole1\n";
    t.findRight.nameSpace = "{F}: Error getting Namespace in findMatchedRole2\n";
    t.findLeft.addKey = {debugText("{F}: Error addkey Role1 in findRole1\n"),
                         debugText("{F}: Error addkey Role1 in findRole1\n")};
    t.findRight.addKey = {debugText("{F}: Error addkey Role1 in findRole2\n"),
                          debugText("{F}: Error addkey Role2 in findRole2\n")};
    t.requests.open[FUNC_REF] = "{F}: associatorNames was called\n";
    t.requests.open[FUNC_REFNAME] = "{F}: associatorNames was called\n";
});

} // namespace

constexpr Family softwareIdentityPortController = {
    .token = "Assoc_SoftwareIdentity_PortController",
    .className = "Merolt_NIC_SoftwareIdentityPortController",
    .left = {"Antecedent", nic::softwareIdentity},
    .right = {"Dependent", nic::portController},
    .matching = {.forEachPair = nic::bothEndsOf<nic::eachIdentity>,
                 .findLeft = {.keys = {{{"DeviceID", KeyTest::isString}}},
                              .find = identitiesOfController,
                              .referenceNamePath = pathOfDriver},
                 .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = nic::eachCardOfIdentity}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .secondRowChanges = Side::left,
    .places = {.row = 67, .left = {96}, .right = {91}},
};

} // namespace merolt::ethernet
