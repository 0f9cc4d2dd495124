#include "expected_texts.h"

#include <algorithm>
#include <set>

namespace {

constexpr const char* service = "SoftwareInstallationService";

std::string fc(const std::string& name) { return "Merolt_FCHBA_" + name; }
std::string nic(const std::string& name) { return "Merolt_NIC_" + name; }
std::string adapter(const std::string& name) { return "Merolt_Adapter_" + name; }

bool isOneOf(const std::string& name, const std::set<std::string>& names) { return names.count(name) > 0; }

/// The whole token in the function's name: Assoc_A_B as AssocAB.
std::string joined(std::string token) {
    token.erase(std::remove(token.begin(), token.end(), '_'), token.end());
    return token;
}

/// A text pattern: F is the token, J the token without underscores; a line end is written "$".
std::string filledIn(const Family& family, const std::string& pattern) {
    std::string text;
    for (std::size_t index = 0; index < pattern.size(); ++index) {
        const char character = pattern[index];
        const bool isAlone =
            index + 1 == pattern.size() || !std::isalnum(static_cast<unsigned char>(pattern[index + 1]));
        const bool startsWord = index == 0 || pattern[index - 1] == '_' || pattern[index - 1] == ' ';
        if (character == 'F' && isAlone && startsWord) {
            text += family.token;
        } else if (character == 'J' && isAlone && startsWord) {
            text += joined(family.token);
        } else if (character == '$') {
            text += '\n';
        } else {
            text += character;
        }
    }
    return text;
}

void set(Texts& texts, const Family& family, const std::string& slot, const std::string& pattern, Sink sink) {
    texts[slot] = {filledIn(family, pattern), sink};
}

// What the two dialects write by default.

void addStorageTexts(Texts& texts, const Family& family) {
    for (const auto& [slot, function] : {std::pair("names", "enumInstanceNames_"),
                                         std::pair("instances", "enumInstances_"), std::pair("get", "getInstance_")}) {
        const std::string name = function;
        set(texts, family, std::string(slot) + ".open", "Entering " + name + "F", Sink::debug);
        set(texts, family, std::string(slot) + ".close", "Exiting  " + name + "F", Sink::debug);
        const bool isGet = name == "getInstance_";
        set(texts, family, std::string(slot) + (isGet ? ".classname" : ".namespace"),
            name + "F: Error getting " + (isGet ? "classname" : "namespace") + ", status.rc=%d!", Sink::error);
    }
    for (const std::string key : {"1", "2"}) {
        set(texts, family, "get.key" + key, "getInstance_F: Error getting keyData" + key + ", status.rc=%d!",
            Sink::error);
        set(texts, family, "get.type" + key,
            "getInstance_F: Error invalid keyData" + key + " type, keyData" + key + ".type=%d!", Sink::error);
    }
}

void addEthernetSearchTexts(Texts& texts, const Family& family) {
    for (const bool isLeft : {true, false}) {
        const std::string slot = isLeft ? "left" : "right";
        const std::string function = isLeft ? "findMatchedRole1" : "findMatchedRole2";
        set(texts, family, slot + ".namespace", "F: Error getting namespace in " + function + '$', Sink::error);
        set(texts, family, slot + ".add1", "F: Error addkey Role1 in " + function + '$', Sink::error);
        set(texts, family, slot + ".add2", "F: Error addkey Role2 in " + function + '$', Sink::error);
        for (const std::string& key : isLeft ? family.keysTowardsLeft : family.keysTowardsRight)
            set(texts, family, slot + ".key." + key, "F: Error getting " + key + " key in findMatchedRole1$",
                Sink::error);
    }
    for (const std::string operation : {"associators", "associatorNames", "references", "referenceNames"})
        set(texts, family, operation, "F: " + operation + " was called$", Sink::debug);
}

void addEthernetTexts(Texts& texts, const Family& family) {
    set(texts, family, "names.open", "F: enumInstanceNames was called$", Sink::debug);
    set(texts, family, "names.namespace", "F: Error getting namespace in enumInstanceNames$", Sink::error);
    set(texts, family, "names.add1", "F: Error addkey Role1 in enumInstanceNames$", Sink::error);
    set(texts, family, "names.add2", "F: Error addkey Role2 in enumInstanceNames$", Sink::error);
    set(texts, family, "instances.open", "F: enumInstances was called$", Sink::debug);
    set(texts, family, "instances.namespace", "F: Error getting namespace in enumInstances$", Sink::error);
    set(texts, family, "get.open", "F: getInstance was called$", Sink::debug);
    set(texts, family, "get.classname", "F: Error getting classname in getInstance$", Sink::error);
    addEthernetSearchTexts(texts, family);
}

// Where an association differs. One row a text; an empty text: nothing is written there.

struct Deviation {
    std::string slot;
    std::string pattern;
};

using Deviations = std::vector<Deviation>;

const std::string capabilitiesName = "Assoc_SoftwareInstallationService_Capabilities";
const std::string identityName = "Assoc_SoftwareIdentity_SoftwareInstallationService";

// clang-format off
std::map<std::string, Deviations> storageDeviations() {
    const std::string manager = "AssocObjectManagerNamespace";
    const Deviations asObjectManager{
        {"get.open", "Entering getInstance_" + manager},
        {"get.close", "Exiting  getInstance_" + manager},
        {"get.classname", "getInstance_" + manager + ": Error getting classname, status.rc=%d!"},
        {"get.key1", "getInstance_" + manager + ": Error getting keyData1, status.rc=%d!"},
        {"get.type1", "getInstance_" + manager + ": Error invalid keyData1 type, keyData1.type=%d!"},
        {"get.key2", "getInstance_" + manager + ": Error getting keyData2, status.rc=%d!"},
        {"get.type2", "getInstance_" + manager + ": Error invalid keyData2 type, keyData2.type=%d!"},
    };
    return {
        {fc("ComputerSystemCommMech"), {
            {"associators", "Entering associators_F"},
            {"associatorNames", "Entering associatorNames_F"},
            {"references", "Entering references_F"},
            {"referenceNames", "Entering referenceNames_F"},
            {"left.namespace",
             "F-findMatchedRole1InstancesOrReferences: Error getting namespace, status.rc=%d!"},
            {"right.namespace",
             "F-findMatchedRole2InstancesOrReferences: Error getting namespace, status.rc=%d!"}}},
        {fc("ComputerSystemLogicalPortGroup"), {
            {"names.open", ""}, {"names.namespace", ""}, {"instances.open", ""}, {"instances.namespace", ""}}},
        {fc("ComputerSystemPortController"), {
            {"get.open", "Entering getInstance_AssocComputerSystemFCPort"}}},
        {fc("PhysicalPackagePortController"), asObjectManager},
        {fc("PhysicalConnectorFCPort"), asObjectManager},
        {fc("PortControllerFCPort"), asObjectManager},
        {adapter("PhysicalPackagePhysicalConnector"), asObjectManager},
        {adapter("PhysicalPackagePhysicalPort"), asObjectManager},
        {fc("PhysicalPortFCPort"), asObjectManager},
        {fc("SoftwareIdentitySoftwareInstallationService"), {
            {"instances.namespace", "enumInstanceNames_F: Error getting namespace, status.rc=%d!"},
            {"left.namespace", identityName + ": Error getting Namespace in findMatchedRole1"},
            {"left.key.Name", identityName + ": Error getting Name key in findMatchedRole1"},
            {"right.namespace", identityName + ":: Error getting namespace in findMatchedRole2"},
            {"right.key.InstanceID", identityName + ":: Error getting InstanceID key in findMatchedRole2"},
            {"right.add1", identityName + ": Error addkey Role1 in findMatchedRole2"},
            {"right.add2", identityName + ": Error addkey Role2 in findMatchedRole2"}}},
        {fc("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {
            {"names.add1", capabilitiesName + ": Error addkey Role1 in enumInstanceNames$"},
            {"names.add2", capabilitiesName + ": Error addkey Role2 in enumInstanceNames$"},
            {"get.close", "Exiting  getInstance_AssocSoftwareIdentitySoftwareInstallationService"},
            {"get.key1", ""}, {"get.type1", ""}, {"get.key2", ""}, {"get.type2", ""},
            {"left.namespace", capabilitiesName + ": Error getting Namespace in findMatchedRole1$"},
            {"left.key.InstanceID", capabilitiesName + ": Error getting InstanceID key in findMatchedRole2$"},
            {"right.key.Name", capabilitiesName + ": Error getting InstanceID key in findMatchedRole1$"}}},
        {fc("ComputerSystemSoftwareInstallationService"), {
            {"get.open", "F: getInstance_AssocComputerSystemSoftwareInstallationService was called$"},
            {"get.classname", "F: Error getting ClassName in getInstances$"}}},
        {fc("PortControllerSoftwareInstallationService"), {
            {"names.add1", "Assoc_CPortController_SoftwareInstallationService: Error addkey Role1 in enumInstanceNames$"},
            {"instances.open", "F: enumInstances_AssocPortControllerSoftwareInstallationService was called$"},
            {"get.classname", "F: Error getting ClassName in getInstances$"}}},
    };
}

/// Texts that the two services' associations share on both sides.
std::map<std::string, Deviations> sharedDeviations() {
    return {
        {std::string("ComputerSystem") + service, {
            {"left.namespace", "F:: Error getting Namespace in findMatchedRole1$"},
            {"left.key.SystemName", "F:: Error getting SystemName key in findMatchedRole1$"},
            {"left.key.SystemCreationClassName", "F:: Error getting SystemCreationClassName key in findMatchedRole1$"},
            {"left.key.Name", "F:: Error getting Name key in findMatchedRole1$"},
            {"left.add1", "F:: Error addkey Role1 in findMatchedRole1$"},
            {"left.add2", "F:: Error addkey Role2 in findMatchedRole1$"},
            {"right.namespace", "F:: Error getting namespace in findMatchedRole2$"},
            {"right.key.Name", "F:: Error getting Name key in findMatchedRole1$"},
            {"right.add1", "F:: Error addkey Role1 in findMatchedRole2$"},
            {"right.add2", "F:: Error addkey Role2 in findMatchedRole2$"}}},
        {std::string("PortController") + service, {
            {"left.key.Name", "F:: Error getting DeviceID key in findMatchedRole1$"},
            {"left.add1", "F:: Error addkey Role1 in findMatchedRole1$"},
            {"left.add2", "F:: Error addkey Role2 in findMatchedRole1$"},
            {"right.key.DeviceID", "F:: Error getting DeviceID key in findMatchedRole1$"},
            {"right.add1", "F:: Error addkey Role1 in findMatchedRole1$"},
            {"right.add2", "F:: Error addkey Role2 in findMatchedRole1$"}}},
    };
}

const Deviations namedOpening{
    {"names.open", "F: enumInstanceNames_J was called$"},
    {"instances.open", "F: enumInstances_J was called$"},
    {"get.open", "F: getInstance_J was called$"},
};

const Deviations namedWrappers{
    {"associators", "F: associators_J was called$"},
    {"associatorNames", "F: associatorNames_J was called$"},
    {"references", "F: references_J was called$"},
    {"referenceNames", "F: referenceNames_J was called$"},
};

const Deviations foundByRole{
    {"names.add1", "F: Error addkey Role1 in enumInstances$"},
    {"names.add2", "F: Error addkey Role2 in enumInstances$"},
    {"left.add1", "F: Error addkey Role1 in findRole1$"},
    {"left.add2", "F: Error addkey Role2 in findRole1$"},
    {"right.add1", "F: Error addkey Role1 in findRole2$"},
    {"right.add2", "F: Error addkey Role2 in findRole2$"},
    {"get.classname", "F: Error getting ClassName getInstance$"},
};

const Deviations physicalEnd{
    {"get.namespace", "F: Error getting namespace getInstance$"},
    {"names.namespace", "F: Error getting namespace i enumInstancesNames$"},
    {"instances.namespace", "F: Error getting namespace$"},
    {"left.namespace", "F: Error getting namespace in findRole1$"},
    {"right.namespace", "F: Error getting namespace in findRole2$"},
};

std::map<std::string, std::vector<Deviations>> ethernetDeviations() {
    const Deviations className{{"get.classname", "F: Error getting ClassName in getInstance$"}};
    const std::vector<Deviations> physical{namedOpening, namedWrappers, foundByRole, physicalEnd};
    const std::string other = "Assoc_ComputerSystem_IPProtocolEndPoint";
    const std::string short_ = "Assoc_RegisteredProfile_EthernetPor";
    return {
        {nic("ComputerSystemEthernetPort"), {{
            {"left.open", "F: findMatchedRole1 was called$"},
            {"right.open", "F: findMatchedRole2 was called$"},
            {"names.namespace", "F: Error getting namespace$"}}}},
        {nic("ComputerSystemPortController"), {className}},
        {nic("ComputerSystemNetworkPort"), {{
            {"names.open", "F: enumInstanceNames$"},
            {"get.classname", "F: Error getting namespace in getInstance$"}}}},
        {nic("PortControllerEthernetPort"), {namedOpening, namedWrappers, foundByRole, {
            {"referenceNames", "F: referenceNames was called$"},
            {"names.namespace", "F: Error getting namespace$"},
            {"instances.namespace", "F: Error getting namespace$"},
            {"left.namespace", "F: Error getting namespace findRole1$"},
            {"right.namespace", "F: Error getting namespace in findRole2$"}}}},
        {nic("PhysicalConnectorEthernetPort"), physical},
        {nic("PhysicalPackagePortController"), physical},
        {nic("PhysicalPortEthernetPort"), physical},
        {nic("EthernetPortLANEndpoint"), {namedOpening, namedWrappers, className, {
            {"names.namespace", "F: Error getting namespace$"},
            {"names.add1", "F: Error addkey Role1 in findMatchedRole2$"},
            {"names.add2", "F: Error addkey Role2 in findMatchedRole2$"},
            {"right.namespace", "Assoc_EthernetPort_LANEndPoin: Error getting namespace in findRole1$"}}}},
        {nic("NetworkPortLANEndpoint"), {namedOpening, namedWrappers, className, {
            {"names.namespace", "F: Error getting namespace$"},
            {"names.add1", "F: Error addkey Role1 in enumInstances$"},
            {"names.add2", "F: Error addkey Role2 in enumInstances$"},
            {"left.namespace", "F: Error getting namespace findMatchRole1$"},
            {"left.add1", "F: Error addkey Role1 in findMatchRole1"},
            {"left.add2", "F: Error addkey Role2 in findMatchRole1"},
            {"right.namespace", "F:: Error getting namespace in findMatchRole2$"},
            {"right.add1", "F: Error addkey Role1 in findMatchRole2$"},
            {"right.add2", "F: Error addkey Role2 in findMatchRole2$"}}}},
        {nic("ComputerSystemLANEndpoint"), {className, {
            {"left.key.Name", "Assoc_ComputerSystem_LANEdnPoint: Error getting Name key in findMatchedRole1$"}}}},
        {nic("LANEndpointIPProtocolEndpoint"), {namedOpening, className, {
            {"names.namespace", "F: Error getting namespace$"},
            {"instances.namespace", "F: Error getting namespace$"},
            {"left.add1", "F: Error addkey Role1 in findMatchRole1$"},
            {"left.add2", "F: Error addkey Role2 in findMatchRole1$"},
            {"right.add1", "F: Error addkey Role1 in findMatchRole2$"},
            {"right.add2", "F: Error addkey Role2 in findMatchRole2$"}}}},
        {nic("IPProtocolEndpointCapabilitiesIPProtocolEndpoint"), {{
            {"names.add1", other + ": Error addkey Role1 in enumInstanceNames$"},
            {"names.add2", other + ": Error addkey Role2 in enumInstanceNames$"},
            {"left.add1", other + ": Error addkey Role1 in findMatchedRole1$"},
            {"left.add2", other + ": Error addkey Role2 in findMatchedRole1$"},
            {"right.add1", other + ": Error addkey Role1 in findMatchedRole1$"},
            {"right.add2", other + ": Error addkey Role2 in findMatchedRole1$"},
            {"instances.open", "F: enumInstances_J was called$"},
            {"get.open", "F: getInstance_AssocIPProtocolEndPointIPAssignmentSettingData was called$"},
            {"right.key.InstanceID", "F: Error getting Name key in findMatchedRole2$"}}}},
        {nic("SoftwareIdentityPortController"), {className, {
            {"instances.namespace", "F: Error getting namespace$"},
            {"names.second1", "F: Error addkey Role1 in enumInstanceNames1$"},
            {"names.second2", "F: Error addkey Role2 in enumInstanceNames1$"},
            {"left.namespace", "F: Error getting Namespace in findMatchedRole1$"},
            {"right.namespace", "F: Error getting Namespace in findMatchedRole2$"},
            {"left.add1", "F: Error addkey Role1 in findRole1$"},
            {"left.add2", "F: Error addkey Role1 in findRole1$"},
            {"right.add1", "F: Error addkey Role1 in findRole2$"},
            {"right.add2", "F: Error addkey Role2 in findRole2$"},
            {"references", "F: associatorNames was called$"},
            {"referenceNames", "F: associatorNames was called$"}}}},
        {nic("ComputerSystemSoftwareIdentity"), {{
            {"names.add1", "F: Error addkey Role1 in enumInstanceNames0$"},
            {"names.add2", "F: Error addkey Role2 in enumInstanceNames0$"},
            {"names.second1", "F: Error addkey Role1 in enumInstanceNames1$"},
            {"names.second2", "F: Error addkey Role2 in enumInstanceNames1$"},
            {"get.open", "F: getInstance_Nic_AssocComputerSystemSoftwareIdentity was called$"}}}},
        {nic("ComputerSystemSoftwareInstallationService"), {{
            {"get.open", "F: getInstance_Nic_AssocComputerSystemSoftwareInstallationService was called$"},
            {"get.classname", "F: Error getting ClassName in getInstances$"}}}},
        {nic("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {{
            {"left.namespace", "F: Error getting Namespace in findMatchedRole1$"},
            {"right.namespace", "F: Error getting Namespace in findMatchedRole2$"},
            {"left.key.InstanceID", "F: Error getting InstanceID key in findMatchedRole2$"},
            {"right.key.Name", "F: Error getting InstanceID key in findMatchedRole1$"}}}},
        {nic("SoftwareIdentitySoftwareInstallationService"), {{
            {"names.second1", "F: Error addkey Role1 in enumInstanceNames1$"},
            {"names.second2", "F: Error addkey Role2 in enumInstanceNames1$"},
            {"instances.open", "F: enumInstances_J was called$"},
            {"instances.namespace", "F: Error getting namespace in enumInstanceNames$"},
            {"get.open", "F: getInstance_J was called$"},
            {"left.namespace", "F: Error getting Namespace in findMatchedRole1$"},
            {"right.namespace", "F:: Error getting namespace in findMatchedRole2$"},
            {"right.key.InstanceID", "F:: Error getting InstanceID key in findMatchedRole2$"}}}},
        {nic("PortControllerSoftwareInstallationService"), {{
            {"names.add1", "Assoc_CPortController_SoftwareInstallationService: Error addkey Role1 in enumInstanceNames$"},
            {"instances.open", "F: enumInstances_Nic_AssocPortControllerSoftwareInstallationService was called$"},
            {"get.classname", "F: Error getting ClassName in getInstances$"}}}},
        {nic("ElementConformsToRegisteredProfile"), {{
            {"names.open", "F: enumInstanceNames_ElementConformsToRegisteredProfile was called$"},
            {"names.namespace", "F: Error getting namespace$"},
            {"instances.open", "F: enumInstances_ElementConformsToRegisteredProfile was called$"},
            {"instances.namespace", short_ + ": Error getting namespace$"},
            {"get.classname", short_ + ": Error getting ClassName$"},
            {"get.namespace", short_ + ": Error getting namespace$"},
            {"left.namespace", "F: Error getting namespace$"},
            {"left.classname", "F: Error getting ClassName"},
            {"left.key.Name", "F: Error getting Name key in findMatchedRole1$"},
            {"left.add1", "F: Error addkey Role1 in findRole1$"},
            {"left.add2", "F: Error addkey Role2 in findRole1$"},
            {"right.namespace", "F: Error getting namespace$"},
            {"right.key.InstanceID", "F: Error getting InstanceID key in findMatchedRole2$"},
            {"right.add1", "F: Error addkey Role1 in findRole2$"},
            {"right.add2", "F: Error addkey Role2 in findRole2$"},
            {"referenceNames", "F: referenceNames_ElementConformsToRegisteredProfile was called$"}}}},
    };
}

/// Errors that are written to the debug log, by the beginning of their slot.
std::map<std::string, std::vector<std::string>> errorsOnTheDebugLog() {
    const std::vector<std::string> everyError{"names.", "instances.", "get.", "left.", "right."};
    return {
        {fc("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {"names.add"}},
        {fc("PortControllerSoftwareInstallationService"), {"names.add"}},
        {nic("ComputerSystemPortController"), everyError},
        {nic("ComputerSystemLANEndpoint"), everyError},
        {nic("ComputerSystemNetworkPort"),
         {"names.", "instances.", "get.", "left.namespace", "left.key.System", "left.add", "right.namespace",
          "right.add"}},
        {nic("ComputerSystemEthernetPort"), {"names.add", "right.namespace", "right.add1"}},
        {nic("SoftwareIdentityPortController"), {"names.add", "names.second", "left.add", "right.add"}},
        {nic("ComputerSystemSoftwareInstallationService"), {"names.add"}},
        {nic("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {"names.add"}},
        {nic("PortControllerSoftwareInstallationService"), {"names.add"}},
        {nic("ComputerSystemIPProtocolEndpoint"), {"left.namespace", "right.namespace", "right.key.Name"}},
        {nic("IPProtocolEndpointCapabilitiesIPProtocolEndpoint"), {"left.namespace"}},
        {nic("ElementConformsToRegisteredProfile"), {"names.add", "left.add", "right.add"}},
    };
}
// clang-format on

bool isDebugLine(const std::string& slot, const std::string& text) {
    return slot.find(".open") != std::string::npos || slot.find(".close") != std::string::npos ||
           slot.find('.') == std::string::npos || text.find("Error") == std::string::npos;
}

void apply(Texts& texts, const Family& family, const Deviations& deviations) {
    for (const auto& [slot, pattern] : deviations) {
        if (pattern.empty()) {
            texts.erase(slot);
        } else {
            set(texts, family, slot, pattern, isDebugLine(slot, pattern) ? Sink::debug : Sink::error);
        }
    }
}

void applyIfAny(Texts& texts, const Family& family, const std::map<std::string, Deviations>& all,
                const std::string& name) {
    const auto found = all.find(name);
    if (found != all.end()) apply(texts, family, found->second);
}

/// The capabilities' association of the storage side bears another name in what it does as the Ethernet side does.
Family ethernetNamed(Family family) {
    if (family.token == "AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities")
        family.token = capabilitiesName;
    return family;
}

Texts makeTexts(const Family& family) {
    Texts texts;
    const bool isStorageNamed = family.token.find("Assoc_") == std::string::npos;
    if (isStorageNamed) {
        addStorageTexts(texts, family);
        if (family.isFiltered) addEthernetSearchTexts(texts, ethernetNamed(family));
    } else {
        addEthernetTexts(texts, family);
    }
    applyIfAny(texts, family, sharedDeviations(), family.shortName().substr(family.shortName().find('_') + 1));
    applyIfAny(texts, family, storageDeviations(), family.associationClass);
    const auto ethernet = ethernetDeviations();
    const auto own = ethernet.find(family.associationClass);
    if (own != ethernet.end()) {
        for (const Deviations& deviations : own->second)
            apply(texts, family, deviations);
    }
    const auto onDebugLog = errorsOnTheDebugLog();
    const auto quiet = onDebugLog.find(family.associationClass);
    if (quiet == onDebugLog.end()) return texts;
    for (auto& [slot, text] : texts) {
        for (const std::string& beginning : quiet->second) {
            if (slot.compare(0, beginning.size(), beginning) == 0) text.sink = Sink::debug;
        }
    }
    return texts;
}

/// Associations that read the keys of that source as text whatever their type.
bool readsAnyType(const Family& family, bool sourceIsLeft) {
    const std::set<std::string> both{nic("ComputerSystemEthernetPort"), nic("ComputerSystemLANEndpoint"),
                                     nic("ComputerSystemSoftwareIdentity")};
    const std::set<std::string> fromRight{nic("ComputerSystemPortController")};
    const std::set<std::string> fromLeft{nic("ComputerSystemNetworkPort"), nic("ComputerSystemIPProtocolEndpoint")};
    return isOneOf(family.associationClass, both) ||
           isOneOf(family.associationClass, sourceIsLeft ? fromLeft : fromRight);
}

} // namespace

const Texts& textsOf(const Family& family) {
    static const std::map<std::string, Texts> all = [] {
        std::map<std::string, Texts> made;
        for (const Family& each : families())
            made[each.associationClass] = makeTexts(each);
        return made;
    }();
    return all.at(family.associationClass);
}

std::vector<std::string> textAt(const Family& family, const std::string& slot, Sink sink, unsigned number) {
    const auto found = textsOf(family).find(slot);
    if (found == textsOf(family).end() || found->second.sink != sink) return {};
    std::string text = found->second.text;
    const std::size_t at = text.find("%d");
    if (at != std::string::npos) text.replace(at, 2, std::to_string(number));
    return {text};
}

std::map<std::string, std::string> typeTestedKeys(const Family& family, const std::string& sourceClass,
                                                  bool sourceIsLeft) {
    const std::vector<std::string> read = keysReadOf(family, sourceClass, sourceIsLeft);
    if (read.empty() || readsAnyType(family, sourceIsLeft)) return {};
    if (!sourceIsLeft && family.associationClass == nic("ComputerSystemNetworkPort"))
        return {{"SystemName", "DeviceID"}};
    if (!sourceIsLeft && family.associationClass == nic("ComputerSystemIPProtocolEndpoint"))
        return {{read[0], read[0]}, {read[1], read[1]}};
    const bool isOfService = family.rightClass.find(service) != std::string::npos;
    const std::string& tested = isOfService ? read.front() : read.back();
    return {{tested, tested}};
}
