// The subscriptions as instances that clients list, make and remove like any others.
#pragma once

#include "cimhost/indications/subscriptions.h"
#include "cimhost/service/provider_calls.h"

namespace cimhost {

/// Nothing is associated here: a subscription's references are read from its instances.
class InteropObjects final : public ProviderCalls {
public:
    /// The subscriptions outlive this.
    explicit InteropObjects(Subscriptions& kept) : subscriptions(kept) {}

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override;
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties) override;
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) override;
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance) override;
    /// Not supported: a subscription is removed and made anew.
    Outcome modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance, const PropertyList& properties) override;
    Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) override;

private:
    Subscriptions& subscriptions;
};

} // namespace cimhost
