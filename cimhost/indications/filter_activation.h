// Tells the provider of filters: one call for each subscription that begins or ends.
#pragma once

#include "cimhost/indications/kept_object.h"
#include "cimhost/provider/indication_calls.h"
#include "cimhost/service/registration.h"

#include <map>
#include <set>
#include <string>
#include <utility>

namespace cimhost {

/// Used by one thread at a time.
class FilterActivation {
public:
    /// Repository, registration and provider outlive this.
    /// @param sink takes a warning where the provider refuses a call that has no other consequence
    FilterActivation(const ClassRepository& known, const Registration& registration, IndicationCalls& provider,
                     LogSink sink)
        : repository(known), registered(registration), calls(provider), log(std::move(sink)) {}

    /// The class after FROM, or else its first subclass, for which the provider is registered. Throws CimFailure with
    /// CIM_ERR_NOT_SUPPORTED if there is none.
    const ClassDeclaration& servedClass(const KeptObject& filter) const;

    /// Tells the provider that the subscription begins. Throws CimFailure if the provider refuses its filter, or as
    /// servedClass().
    /// @param owner the user in whose name the provider is asked
    void activate(RequestScope& scope, const KeptObject& subscription, const std::string& owner);
    /// Tells the provider that the subscription ends, if it was told that it began.
    void deactivate(RequestScope& scope, const KeptObject& subscription, const std::string& owner);

private:
    template <typename Call>
    void tellProvider(RequestScope& scope, const KeptObject& subscription, const std::string& owner, Call call) const;
    void warn(const std::string& text) const;

    const ClassRepository& repository;
    const Registration& registered;
    IndicationCalls& calls;
    const LogSink log;
    std::set<const KeptObject*> activated;          // subscriptions of which the provider knows
    std::map<std::string, std::size_t> activations; // how many, by namespace and class
    bool isEnabled = false;                         // the provider has been told once that indications are wanted
};

} // namespace cimhost
