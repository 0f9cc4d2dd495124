#include "cimhost/indications/interop_objects.h"

namespace cimhost {

Outcome InteropObjects::enumerateInstanceNames(RequestScope& scope, const CallContext&,
                                               const ObjectPathObject& classPath) {
    Outcome outcome;
    for (const InstanceObject* instance : subscriptions.list(scope, classPath.className()))
        outcome.paths.push_back(instance->path(scope.arena()));
    return outcome;
}

Outcome InteropObjects::enumerateInstances(RequestScope& scope, const CallContext&, const ObjectPathObject& classPath,
                                           const PropertyList&) {
    Outcome outcome;
    outcome.instances = subscriptions.list(scope, classPath.className());
    return outcome;
}

Outcome InteropObjects::getInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                                    const PropertyList&) {
    Outcome outcome;
    outcome.instances.push_back(&subscriptions.get(scope, path));
    return outcome;
}

Outcome InteropObjects::createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject&,
                                       const InstanceObject& instance) {
    Outcome outcome;
    outcome.paths.push_back(&subscriptions.create(scope, instance, context.principal));
    return outcome;
}

Outcome InteropObjects::modifyInstance(RequestScope&, const CallContext&, const ObjectPathObject&,
                                       const InstanceObject&, const PropertyList&) {
    return notSupported("remove it and make another one");
}

Outcome InteropObjects::deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) {
    subscriptions.remove(scope, path, context.principal);
    return {};
}

} // namespace cimhost
