// Software and the storage controller that it runs on or drives: the middle of an identity's key is the controller's.
#include "associations/modules.h"
#include "associations/storage/text_index.h"
#include "associations/storage/walks.h"
#include "text/text.h"

#include <cstring>
#include <optional>

namespace merolt::storage {

using namespace association;
using software::g_softwareIdentityCount;
using software::g_softwareIdentityList;

namespace {

using Middle = FixedText<64>;

/// The text between the first and the second underscore. Without a second one the key names no controller.
std::optional<Middle> middleOf(const char* instanceID) {
    const char* first = std::strchr(instanceID, '_');
    const char* second = first ? std::strchr(first + 1, '_') : nullptr;
    if (!second) return std::nullopt;
    std::optional<Middle> middle;
    middle.emplace().assign({first + 1, static_cast<std::size_t>(second - first - 1)});
    return middle;
}

bool isController(const std::optional<Middle>& middle, const char* deviceID) {
    return middle && equalsIgnoringCase(middle->text(), deviceID);
}

const char* controllerID(int index) { return g_portControllerList[index].deviceID.text(); }

std::optional<Middle> middleOfIdentity(int index) {
    const software::SoftwareIdentityEntry& entry = g_softwareIdentityList[index];
    return entry.valid ? middleOf(entry.instanceID.text()) : std::nullopt;
}

void pairs(Enumeration, const PairVisitor& visit) {
    TextIndex controllers;
    for (int controller = 0; controller < g_portControllerCount; ++controller)
        controllers.add(controller, controllerID(controller));
    for (int identity = 0; identity < g_softwareIdentityCount; ++identity) {
        const std::optional<Middle> middle = middleOfIdentity(identity);
        const auto visitPair = [&](int controller) { return visit({{.index = identity}, {.index = controller}}); };
        if (middle && !controllers.forEach(middle->view(), visitPair)) return;
    }
}

void identitiesOfController(const Source& source, const ObjectVisitor& visit) {
    matchingRecords(g_softwareIdentityCount, visit,
                    [&](int identity) { return isController(middleOfIdentity(identity), source.text(0)); });
}

// The key alone decides: it may be that of an identity which does not exist.
void controllersOfIdentity(const Source& source, const ObjectVisitor& visit) {
    const std::optional<Middle> middle = middleOf(source.text(0));
    matchingRecords(g_portControllerCount, visit,
                    [&](int controller) { return isController(middle, controllerID(controller)); });
}

constexpr FurtherProperty upgradeCondition = {.name = "UpgradeCondition", .value = 3, .inEnumeration = true};

} // namespace

constexpr Family softwareIdentityPortController = {
    .token = "AssocSoftwareIdentityPortController",
    .className = "Merolt_FCHBA_SoftwareIdentityPortController",
    .baseClass = "CIM_ElementSoftwareIdentity",
    .left = {"Antecedent", softwareIdentity},
    .right = {"Dependent", portController},
    .matching = {.forEachPair = pairs,
                 .findLeft = {.keys = {{{"DeviceID"}}}, .find = identitiesOfController},
                 .findRight = {.keys = {{{"InstanceID"}}}, .find = controllersOfIdentity}},
    .texts = storageTexts,
    .further = &upgradeCondition,
    .places = {.row = 15, .left = {26, 45}, .right = {54, 41}},
};

} // namespace merolt::storage
