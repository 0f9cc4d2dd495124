// The host and the software of its Ethernet side. Keys of any type are read; one that is no text matches nothing.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void hostOfIdentity(const Source& source, const ObjectVisitor& visit) {
    nic::eachCardOfIdentity(source, [&](const Object&) { return visit({}); });
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.names.addKey = {"{F}: Error addkey Role1 in enumInstanceNames0\n",
                      "{F}: Error addkey Role2 in enumInstanceNames0\n"};
    t.getInstance.open = "{F}: getInstance_Nic_AssocComputerSystemSoftwareIdentity was called\n";
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_SoftwareIdentity",
    .className = "Merolt_NIC_ComputerSystemSoftwareIdentity",
    .left = {"System", computerSystem},
    .right = {"InstalledSoftware", nic::softwareIdentity},
    .forEachPair = nic::bothEndsOf<nic::eachIdentity>,
    .findLeft = {.keys = {{{"InstanceID"}}}, .find = hostOfIdentity},
    .findRight = {.keys = {{{"Name"}}}, .find = onlyIf<namesHost, nic::eachIdentity>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .secondRowChanges = Side::right,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSoftwareIdentity, family)

} // namespace merolt::ethernet
