#include "cimhost/indications/server_description.h"

#include "cimhost/model/cim_type.h"

#include <initializer_list>
#include <optional>
#include <utility>

namespace cimhost {

namespace {

constexpr std::string_view systemClass = "CIM_ComputerSystem";
constexpr std::string_view managerClass = "CIM_ObjectManager";
constexpr std::string_view namespaceClass = "CIM_Namespace";
constexpr std::string_view protocolClass = "CIM_CIMXMLCommunicationMechanism";
constexpr std::string_view serviceClass = "CIM_IndicationService";
constexpr std::string_view capabilitiesClass = "CIM_IndicationServiceCapabilities";
constexpr std::string_view affectsClass = "CIM_ServiceAffectsElement";

constexpr std::string_view describedClasses[] = {
    systemClass,
    managerClass,
    namespaceClass,
    protocolClass,
    serviceClass,
    capabilitiesClass,
    "CIM_NamespaceInManager",
    "CIM_CommMechanismForManager",
    "CIM_HostedService",
    "CIM_HostedAccessPoint",
    "CIM_ElementCapabilities",
    affectsClass,
};

constexpr std::string_view managerName = "cimhost";
constexpr std::string_view serviceName = "cimhost:IndicationService";

// Values of the CIM Schema.
constexpr const char* enabled = "2";
constexpr const char* ok = "2";
constexpr const char* withoutAuthentication = "2";
constexpr const char* basicAuthentication = "3";
constexpr const char* ignoreFailingListener = "4";
constexpr const char* manages = "5";
constexpr const char* basicRead = "2";
constexpr const char* instanceManipulation = "5";
constexpr const char* associationTraversal = "6";
constexpr const char* indications = "9";

struct Given {
    std::string_view property;
    std::vector<std::string> texts; // one for a scalar
};

} // namespace

// Makes instances from texts, each in the type that its class declares.
class ServerDescription::Writer {
public:
    Writer(RequestScope& objects, const ServerFacts& facts) : scope(objects), known(facts) {}

    InstanceObject& object(std::string_view className, std::initializer_list<Given> properties) {
        InstanceObject& made = *scope.make().instance(*scope.make().path(known.interopNamespace, className));
        for (const Given& given : properties)
            set(made, given);
        return made;
    }

    // An object that the system hosts. Its class and its system are among its keys.
    InstanceObject& hosted(std::string_view className, std::string_view name, std::initializer_list<Given> properties) {
        InstanceObject& made = object(className, properties);
        set(made, {"SystemCreationClassName", {std::string(systemClass)}});
        set(made, {"SystemName", {known.systemName}});
        set(made, {"CreationClassName", {std::string(className)}});
        set(made, {"Name", {std::string(name)}});
        return made;
    }

    InstanceObject& association(std::string_view className, std::string_view firstRole, const ObjectPathObject& first,
                                std::string_view secondRole, const ObjectPathObject& second) {
        InstanceObject& made = object(className, {});
        made.setProperty(firstRole, ObjectMaker::value(first));
        made.setProperty(secondRole, ObjectMaker::value(second));
        return made;
    }

    InstanceObject& service() {
        return hosted(serviceClass, serviceName,
                      {{"ElementName", {"Indications of cimhost"}},
                       {"EnabledState", {enabled}},
                       {"OperationalStatus", {ok}},
                       {"Started", {"true"}},
                       {"FilterCreationEnabled", {"true"}},
                       {"SubscriptionRemovalAction", {ignoreFailingListener}}});
    }

    const ObjectPathObject& pathOf(const InstanceObject& instance) { return *instance.path(scope.arena()); }

private:
    void set(InstanceObject& instance, const Given& given) {
        const PropertyDeclaration* declared = instance.declaration()->property(given.property);
        if (!declared) return;
        const ObjectMaker make = scope.make();
        std::optional<CMPIData> data;
        if (declared->isArray()) {
            const std::vector<std::optional<std::string>> texts(given.texts.begin(), given.texts.end());
            data = make.arrayValue(elementOf(declared->type), texts);
        } else {
            data = make.value(declared->type, given.texts.front());
        }
        instance.setProperty(declared->name, *data);
    }

    RequestScope& scope;
    const ServerFacts& known;
};

ServerDescription::ServerDescription(const ClassRepository& repository, ServerFacts facts)
    : classesOf(repository), known(std::move(facts)) {}

std::vector<const ClassDeclaration*> ServerDescription::classes() const {
    std::vector<const ClassDeclaration*> declared;
    for (const std::string_view name : describedClasses) {
        const auto* found = classesOf.find(known.interopNamespace, name);
        if (!found) return {};
        declared.push_back(found);
    }
    return declared;
}

std::vector<std::string> ServerDescription::interopNames() const {
    std::vector<std::string> names = {known.interopNamespace};
    for (const NamespaceAlias& alias : classesOf.aliases()) {
        if (equalNames(alias.nameSpace, known.interopNamespace)) names.push_back(alias.name);
    }
    return names;
}

std::vector<const InstanceObject*> ServerDescription::describe(RequestScope& scope,
                                                               std::string_view interopName) const {
    Writer writer(scope, known);
    std::vector<const InstanceObject*> all;
    const auto add = [&](const InstanceObject& instance) -> const ObjectPathObject& {
        all.push_back(&instance);
        return writer.pathOf(instance);
    };
    const ObjectPathObject& system = add(writer.object(systemClass, {{"CreationClassName", {std::string(systemClass)}},
                                                                     {"Name", {known.systemName}},
                                                                     {"ElementName", {known.systemName}}}));
    const ObjectPathObject& manager =
        add(writer.hosted(managerClass, managerName,
                          {{"ElementName", {"cimhost"}},
                           {"Description", {"cimhost, a CIM server for one provider, version " CIMHOST_VERSION}},
                           {"EnabledState", {enabled}},
                           {"OperationalStatus", {ok}},
                           {"Started", {"true"}},
                           {"GatherStatisticalData", {"false"}}}));
    const ObjectPathObject& protocol = add(writer.hosted(
        protocolClass, "cimhost:CIM-XML",
        {{"ElementName", {"CIM-XML over HTTP"}},
         {"EnabledState", {enabled}},
         {"OperationalStatus", {ok}},
         {"Version", {"1.0"}},
         {"CIMXMLProtocolVersion", {"1"}},
         {"CIMValidated", {"false"}},
         {"FunctionalProfilesSupported", {basicRead, instanceManipulation, associationTraversal, indications}},
         {"MultipleOperationsSupported", {"false"}},
         {"AuthenticationMechanismsSupported", {known.asksForUser ? basicAuthentication : withoutAuthentication}}}));
    const ObjectPathObject& service = add(writer.service());
    const ObjectPathObject& capabilities = add(writer.object(
        capabilitiesClass, {{"InstanceID", {"cimhost:IndicationServiceCapabilities"}},
                            {"ElementName", {"What the indications of cimhost can do"}},
                            {"FilterCreationEnabledIsSettable", {"false"}},
                            {"DeliveryRetryAttemptsIsSettable", {"false"}},
                            {"DeliveryRetryIntervalIsSettable", {"false"}},
                            {"SubscriptionRemovalActionIsSettable", {"false"}},
                            {"SubscriptionRemovalTimeIntervalIsSettable", {"false"}},
                            {"MaxListenerDestinations", {std::to_string(known.mostOfEach)}},
                            {"MaxActiveSubscriptions", {std::to_string(known.mostOfEach)}},
                            {"SubscriptionsPersisted", {known.remembersSubscriptions ? "true" : "false"}}}));
    add(writer.association("CIM_HostedService", "Antecedent", system, "Dependent", manager));
    add(writer.association("CIM_HostedService", "Antecedent", system, "Dependent", service));
    add(writer.association("CIM_HostedAccessPoint", "Antecedent", system, "Dependent", protocol));
    add(writer.association("CIM_CommMechanismForManager", "Antecedent", manager, "Dependent", protocol));
    add(writer.association("CIM_ElementCapabilities", "ManagedElement", service, "Capabilities", capabilities));
    for (const std::string_view name : classesOf.namespaces()) {
        const bool isInterop = equalNames(name, known.interopNamespace);
        const ObjectPathObject& nameSpace =
            add(writer.object(namespaceClass, {{"SystemCreationClassName", {std::string(systemClass)}},
                                               {"SystemName", {known.systemName}},
                                               {"ObjectManagerCreationClassName", {std::string(managerClass)}},
                                               {"ObjectManagerName", {std::string(managerName)}},
                                               {"CreationClassName", {std::string(namespaceClass)}},
                                               {"Name", {std::string(isInterop ? interopName : name)}},
                                               {"ClassInfo", {"0"}}}));
        add(writer.association("CIM_NamespaceInManager", "Antecedent", manager, "Dependent", nameSpace));
    }
    return all;
}

const InstanceObject& ServerDescription::affected(RequestScope& scope, const ObjectPathObject& element) const {
    Writer writer(scope, known);
    InstanceObject& made = writer.association(affectsClass, "AffectingElement", writer.pathOf(writer.service()),
                                              "AffectedElement", element);
    CMPIData effects = *scope.make().arrayValue(CMPI_uint16, std::vector<std::optional<std::string>>{manages});
    made.setProperty("ElementEffects", effects);
    return made;
}

} // namespace cimhost
