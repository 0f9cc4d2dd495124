// The host and its Fibre Channel nodes. A group's key begins with the host's name, and by that it finds the host.
#include "associations/modules.h"
#include "associations/storage/walks.h"
#include "classes/system_name.h"
#include "text/text.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_logicalPortGroupCount>;

void hostOfGroup(const Source& source, const ObjectVisitor& visit) {
    KeyCut host;
    if (equalsIgnoringCase(host.prefixOf(source.text(0)), gSystemName)) visit({});
}

// The enumerations begin without a word and do not test the namespace.
constexpr Texts texts = deviating(storageTexts, [](Texts& t) {
    for (EnumerationTexts* enumeration : {&t.names, &t.instances}) {
        enumeration->open = nullptr;
        enumeration->nameSpace = nullptr;
    }
});

} // namespace

constexpr Family computerSystemLogicalPortGroup = {
    .token = "AssocComputerSystemLogicalPortGroup",
    .className = "Merolt_FCHBA_ComputerSystemLogicalPortGroup",
    .baseClass = "CIM_HostedCollection",
    .left = hostAs("Antecedent"),
    .right = {"Dependent", logicalPortGroup},
    .matching = {.forEachPair = oneWithEach<every>,
                 .findLeft = {.keys = {{{"InstanceID"}}}, .find = hostOfGroup},
                 .findRight = {.find = every}},
    .texts = texts,
    .places = {.row = 13, .left = {3, 5}, .right = {31, 24}},
};

} // namespace merolt::storage
