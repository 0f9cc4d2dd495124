// The host and the Ethernet controller of each card. A controller finds the host once for each card of its name.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"
#include "classes/instance.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void hostOfController(const Source& source, const ObjectVisitor& visit) {
    if (!namesHostAndClass(source)) return;
    nic::eachCard(source,
                  [&](const Object& card) { return !source.equals(2, nic::portControllerIDOf(card)) || visit({}); });
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.getInstance.className = "{F}: Error getting ClassName in getInstance\n";
    nic::logErrorsAsDebug(t);
});

} // namespace

constexpr Family computerSystemPortController = {
    .token = "Assoc_ComputerSystem_PortController",
    .className = "Merolt_NIC_ComputerSystemPortController",
    .left = {"GroupComponent", computerSystem},
    .right = {"PartComponent", nic::portController},
    .matching = {.forEachPair = nic::bothEndsOf<nic::eachCard>,
                 .findLeft = {.keys = {{{"SystemName"}, {"SystemCreationClassName"}, {"DeviceID"}}},
                              .find = hostOfController},
                 .findRight = {.keys = {{{"Name"}, {"CreationClassName", KeyTest::isString}}},
                               .find = onlyIf<namesHostAndClass, nic::eachCard>}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 58, .left = {64}, .right = {88}},
};

} // namespace merolt::ethernet
