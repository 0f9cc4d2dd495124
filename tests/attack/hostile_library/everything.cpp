#include "everything.h"

#include "cimhost/broker/request_scope.h"
#include "cimhost/broker/result_collector.h"

#include <algorithm>
#include <array>

namespace {

using namespace cimhost;

constexpr const char* nameSpace = "root/merolt_cmpi";

/// The requests of one client, counted.
class Client {
public:
    Client(Broker& server, const Interfaces& provider, std::size_t objectsOfAClass)
        : broker(server), interfaces(provider), eachClass(objectsOfAClass) {}

    void askForClass(const ClassDeclaration& cls) {
        RequestScope scope(broker);
        const ObjectPathObject* path = scope.make().path(nameSpace, cls.name());
        ask(ResultKind::instances, [&](const CMPIContext* context, CMPIResult* result) {
            return interfaces.instance->ft->enumerateInstances(interfaces.instance, context, result, path, nullptr);
        });
        ResultCollector names(scope, ResultKind::paths);
        ask(names, scope, [&](const CMPIContext* context, CMPIResult* result) {
            return interfaces.instance->ft->enumerateInstanceNames(interfaces.instance, context, result, path);
        });
        const bool isAssociation = findQualifier(cls.qualifiers(), "Association") != nullptr;
        if (!isAssociation) tally.largestClass = std::max(tally.largestClass, names.paths.size());
        for (std::size_t index = 0; index < std::min(eachClass, names.paths.size()); ++index)
            askForObject(*names.paths[index], isAssociation);
    }

    void update(const char* service, const char* controller, const std::string& imageFile) {
        RequestScope scope(broker);
        ResultCollector targets(scope, ResultKind::paths);
        const ObjectPathObject* controllers = scope.make().path(nameSpace, controller);
        ask(targets, scope, [&](const CMPIContext* context, CMPIResult* result) {
            return interfaces.instance->ft->enumerateInstanceNames(interfaces.instance, context, result, controllers);
        });
        if (targets.paths.empty()) return;
        ArgsObject* in = scope.make().arguments();
        CMPIValue uri{};
        uri.string = scope.make().string(imageFile);
        in->add("URI", &uri, CMPI_string);
        in->add("Target", ObjectMaker::value(*targets.paths.front()));
        CMPIValue options{};
        options.array = ArrayObject::make(scope.arena(), 0, CMPI_uint16);
        in->add("InstallOptions", &options, CMPI_uint16A);
        const ObjectPathObject* path = scope.make().path(nameSpace, service);
        // Methods end twice, as they always did.
        RequestScope inner(broker);
        ResultCollector result(inner, ResultKind::data);
        interfaces.method->ft->invokeMethod(interfaces.method, ContextObject::make(inner.arena()), &result, path,
                                            "InstallFromURI", in, inner.make().arguments());
        ++tally.requests;
    }

    Tally tally;

private:
    template <class Call>
    void ask(ResultCollector& result, RequestScope& scope, Call call) {
        call(ContextObject::make(scope.arena()), &result);
        ++tally.requests;
        tally.objects += result.instances.size() + result.paths.size();
        if (result.doneCount() != 1) ++tally.unfinished;
    }

    template <class Call>
    void ask(ResultKind kind, Call call) {
        RequestScope scope(broker);
        ResultCollector result(scope, kind);
        ask(result, scope, call);
    }

    void askForObject(const ObjectPathObject& path, bool isAssociation) {
        ask(ResultKind::instances, [&](const CMPIContext* context, CMPIResult* result) {
            return interfaces.instance->ft->getInstance(interfaces.instance, context, result, &path, nullptr);
        });
        if (isAssociation) return;
        CMPIAssociationMI* const mi = interfaces.association;
        ask(ResultKind::instances, [&](const CMPIContext* context, CMPIResult* result) {
            return mi->ft->associators(mi, context, result, &path, nullptr, nullptr, nullptr, nullptr, nullptr);
        });
        ask(ResultKind::paths, [&](const CMPIContext* context, CMPIResult* result) {
            return mi->ft->associatorNames(mi, context, result, &path, nullptr, nullptr, nullptr, nullptr);
        });
        ask(ResultKind::instances, [&](const CMPIContext* context, CMPIResult* result) {
            return mi->ft->references(mi, context, result, &path, nullptr, nullptr, nullptr);
        });
        ask(ResultKind::paths, [&](const CMPIContext* context, CMPIResult* result) {
            return mi->ft->referenceNames(mi, context, result, &path, nullptr, nullptr);
        });
    }

    Broker& broker;
    const Interfaces& interfaces;
    std::size_t eachClass;
};

} // namespace

Tally askForEverything(Broker& broker, const ClassRepository& classes, const Interfaces& interfaces,
                       const std::string& imageFile, std::size_t eachClass) {
    Client client(broker, interfaces, eachClass);
    for (const ClassDeclaration* cls : classes.classes(nameSpace)) {
        if (cls->name().rfind("Merolt", 0) == 0) client.askForClass(*cls);
    }
    if (imageFile.empty()) return client.tally;
    client.update("Merolt_FCHBA_SoftwareInstallationService", "Merolt_FCHBA_PortController", imageFile);
    client.update("Merolt_NIC_SoftwareInstallationService", "Merolt_NIC_PortController", imageFile);
    return client.tally;
}
