// Makes a filter, destination or subscription of what a client gives: completes what is left out, and refuses what
// makes no sense.
#pragma once

#include "cimhost/indications/kept_object.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace cimhost {

class KeptObjectMaker {
public:
    /// The object that is kept under that key, or null.
    using Find = std::function<const KeptObject*(std::string_view key)>;

    /// The repository outlives this.
    /// @param ownName the SystemName if a client gives none
    /// @param findKept finds the filter and the destination of a subscription among what is kept
    KeptObjectMaker(const ClassRepository& known, std::string interop, std::string ownName, Find findKept)
        : repository(known), interopNamespace(std::move(interop)), systemName(std::move(ownName)),
          find(std::move(findKept)) {}

    /// Throws CimFailure as Subscriptions::create() does, for what the client gives.
    [[nodiscard]] std::unique_ptr<KeptObject> make(const InstanceObject& given) const;

private:
    void completeElement(InstanceObject& instance) const;
    static void takeSourceNamespaces(InstanceObject& filter);
    void completeFilter(KeptObject& object) const;
    void completeDestination(KeptObject& object) const;
    void completeSubscription(KeptObject& object) const;
    const KeptObject& referenced(const InstanceObject& subscription, std::string_view role, KeptKind kind) const;

    const ClassRepository& repository;
    const std::string interopNamespace;
    const std::string systemName;
    const Find find;
};

} // namespace cimhost
