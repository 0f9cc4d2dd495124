// The CMPIBrokerFT table: attaching the provider's own threads, indications, and calls to the server.

#include "cimhost/broker/broker.h"
#include "cimhost/broker/table_support.h"

namespace cimhost {
namespace {

CMPIContext* prepareAttachThread(const CMPIBroker* broker, const CMPIContext* object) noexcept {
    Broker* owner = Broker::from(broker);
    const ContextObject* context = ContextObject::from(object);
    return owner && context ? owner->prepareContext(*context) : nullptr;
}

CMPIStatus attachThread(const CMPIBroker* broker, const CMPIContext* context) noexcept {
    Broker* owner = Broker::from(broker);
    return statusOf(owner ? owner->attachContext(context) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus detachThread(const CMPIBroker* broker, const CMPIContext* context) noexcept {
    Broker* owner = Broker::from(broker);
    return statusOf(owner ? owner->detachContext(context) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus deliverIndication(const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
                             const CMPIInstance* object) noexcept {
    Broker* owner = Broker::from(broker);
    const InstanceObject* indication = InstanceObject::from(object);
    if (!owner || !ContextObject::from(context) || !indication) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    return statusOf(owner->deliver(textOf(nameSpace), *indication));
}

// Makes a call to the server. An exception becomes a failure, since none may pass through the provider.
template <typename Call>
EnumerationObject* answer(const CMPIBroker* broker, const CMPIObjectPath* object, CMPIStatus* status, Call&& call) {
    Broker* owner = Broker::from(broker);
    const ObjectPathObject* path = ObjectPathObject::from(object);
    if (!owner || !path) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    UpCalls::Elements elements = CimError{};
    try {
        elements = call(owner->upCalls(), ObjectMaker(*owner, workArena()), *path);
    } catch (const std::exception& failure) {
        elements = CimError{CMPI_RC_ERR_FAILED, failure.what()};
    } catch (...) {
        elements = CimError{CMPI_RC_ERR_FAILED, "the server failed"};
    }
    if (const auto* error = std::get_if<CimError>(&elements)) {
        setStatus(status, error->code, error->description);
        return nullptr;
    }
    setStatus(status, CMPI_RC_OK);
    return EnumerationObject::make(workArena(), std::get<std::vector<CMPIData>>(elements));
}

PropertyList propertyList(const char** names) {
    if (!names) return std::nullopt;
    PropertyList list(std::in_place);
    for (; *names; ++names) {
        list->emplace_back(*names);
    }
    return list;
}

AssociationFilter filterOf(const char* associationClass, const char* resultClass, const char* role,
                           const char* resultRole) {
    return {std::string(textOf(associationClass)), std::string(textOf(resultClass)), std::string(textOf(role)),
            std::string(textOf(resultRole))};
}

CMPIEnumeration* enumerateInstanceNames(const CMPIBroker* broker, const CMPIContext* /*context*/,
                                        const CMPIObjectPath* object, CMPIStatus* status) noexcept {
    return answer(broker, object, status, [](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.enumerateInstanceNames(maker, path);
    });
}

CMPIEnumeration* enumerateInstances(const CMPIBroker* broker, const CMPIContext* /*context*/,
                                    const CMPIObjectPath* object, const char** properties,
                                    CMPIStatus* status) noexcept {
    return answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.enumerateInstances(maker, path, propertyList(properties));
    });
}

CMPIInstance* getInstance(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                          const char** properties, CMPIStatus* status) noexcept {
    const EnumerationObject* found =
        answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
            return calls.getInstance(maker, path, propertyList(properties));
        });
    if (!found) return nullptr;
    if (found->count == 1 && found->elements[0].type == CMPI_instance) return found->elements[0].value.inst;
    setStatus(status, CMPI_RC_ERR_NOT_FOUND);
    return nullptr;
}

CMPIEnumeration* associators(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                             const char* associationClass, const char* resultClass, const char* role,
                             const char* resultRole, const char** properties, CMPIStatus* status) noexcept {
    return answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.associators(maker, path, filterOf(associationClass, resultClass, role, resultRole),
                                 propertyList(properties));
    });
}

CMPIEnumeration* associatorNames(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                                 const char* associationClass, const char* resultClass, const char* role,
                                 const char* resultRole, CMPIStatus* status) noexcept {
    return answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.associatorNames(maker, path, filterOf(associationClass, resultClass, role, resultRole));
    });
}

CMPIEnumeration* references(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                            const char* associationClass, const char* role, const char** properties,
                            CMPIStatus* status) noexcept {
    return answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.references(maker, path, filterOf(associationClass, nullptr, role, nullptr),
                                propertyList(properties));
    });
}

CMPIEnumeration* referenceNames(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                                const char* associationClass, const char* role, CMPIStatus* status) noexcept {
    return answer(broker, object, status, [=](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
        return calls.referenceNames(maker, path, filterOf(associationClass, nullptr, role, nullptr));
    });
}

CMPIData invokeMethod(const CMPIBroker* broker, const CMPIContext* /*context*/, const CMPIObjectPath* object,
                      const char* method, const CMPIArgs* in, CMPIArgs* out, CMPIStatus* status) noexcept {
    const ArgsObject* given = ArgsObject::from(in);
    auto* returned = const_cast<ArgsObject*>(ArgsObject::from(out));
    if (!given || !returned) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    const EnumerationObject* found =
        answer(broker, object, status, [&](UpCalls& calls, ObjectMaker maker, const ObjectPathObject& path) {
            return calls.invokeMethod(maker, path, textOf(method), *given, *returned);
        });
    return found && found->count > 0 ? found->elements[0] : absentData();
}

// Calls that no provider of this host makes to its server.

CMPIObjectPath* createInstance(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/,
                               const CMPIObjectPath* /*path*/, const CMPIInstance* /*instance*/,
                               CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIStatus modifyInstance(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/, const CMPIObjectPath* /*path*/,
                          const CMPIInstance* /*instance*/, const char** /*properties*/) noexcept {
    return statusOf(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus deleteInstance(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/,
                          const CMPIObjectPath* /*path*/) noexcept {
    return statusOf(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIEnumeration* execQuery(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/, const CMPIObjectPath* /*path*/,
                           const char* /*query*/, const char* /*language*/, CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIStatus setProperty(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/, const CMPIObjectPath* /*path*/,
                       const char* /*name*/, const CMPIValue* /*value*/, CMPIType /*type*/) noexcept {
    return statusOf(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIData getProperty(const CMPIBroker* /*broker*/, const CMPIContext* /*context*/, const CMPIObjectPath* /*path*/,
                     const char* /*name*/, CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return absentData();
}

} // namespace

const CMPIBrokerFT tables::broker = {
    CMPI_MB_AssociationTraversal | CMPI_MB_Indications | CMPI_MB_OSEncapsulationSupport | CMPI_MB_Supports_IndicationMI,
    CMPICurrentVersion,
    "cimhost",
    prepareAttachThread,
    attachThread,
    detachThread,
    deliverIndication,
    enumerateInstanceNames,
    getInstance,
    createInstance,
    modifyInstance,
    deleteInstance,
    execQuery,
    enumerateInstances,
    associators,
    associatorNames,
    references,
    referenceNames,
    invokeMethod,
    setProperty,
    getProperty,
};

} // namespace cimhost
