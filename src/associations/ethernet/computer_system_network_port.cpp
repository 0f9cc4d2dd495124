// The host and its network ports. A port finds the host once for each port of its key.
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/modules.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void hostOfPort(const Source& source, const ObjectVisitor& visit) {
    if (!namesHostAndClass(source) || !source.equals(2, nic::networkPort.name)) return;
    nic::eachPort(source,
                  [&](const Object& port) { return !source.equals(3, nic::networkPortIDOf(port)) || visit({}); });
}

// Four key texts are the only ones on the error log.
constexpr Text keyError = "{F}: Error getting {K} key in findMatchedRole1\n";

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.names.open = "{F}: enumInstanceNames\n";
    t.getInstance.className = "{F}: Error getting namespace in getInstance\n";
    nic::logErrorsAsDebug(t);
    t.findRight.key = keyError;
});

} // namespace

constexpr Family computerSystemNetworkPort = {
    .token = "Assoc_ComputerSystem_NetworkPort",
    .className = "Merolt_NIC_ComputerSystemNetworkPort",
    .left = {"GroupComponent", computerSystem},
    .right = {"PartComponent", nic::networkPort},
    .matching = {.forEachPair = nic::bothEndsOf<nic::eachPort>,
                 .findLeft = {.keys = {{{"SystemName"},
                                        {"SystemCreationClassName"},
                                        {"CreationClassName", KeyTest::none, keyError},
                                        // The type that is tested behind the read of DeviceID is that of SystemName.
                                        {"DeviceID", KeyTest::firstKeyIsString, keyError}}},
                              .find = hostOfPort},
                 .findRight = {.keys = {{{"Name"}, {"CreationClassName"}}},
                               .find = onlyIf<namesHostAndClass, nic::eachPort>}},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .places = {.row = 68, .left = {63}, .right = {83}},
};

} // namespace merolt::ethernet
