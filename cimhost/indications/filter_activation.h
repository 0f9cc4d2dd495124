// What the provider is told of filters: one call for each subscription that begins or ends.
#pragma once

#include "cimhost/indications/kept_object.h"
#include "cimhost/provider/indication_calls.h"
#include "cimhost/service/registration.h"

#include <map>
#include <set>
#include <string>
#include <utility>

namespace cimhost {

/// Changes come one at a time.
class FilterActivation {
public:
    /// Everything given outlives this.
    FilterActivation(const ClassRepository& known, const Registration& registration, IndicationCalls& provider,
                     LogSink sink)
        : repository(known), registered(registration), calls(provider), log(std::move(sink)) {}

    /// The class of the FROM, or the first one below it, that the provider is registered for. CIM_ERR_NOT_SUPPORTED.
    const ClassDeclaration& servedClass(const KeptObject& filter) const;

    /// Throws CimFailure where the provider refuses the subscription's filter.
    void activate(RequestScope& scope, const KeptObject& subscription, const std::string& owner);
    /// Nothing for one that the provider was not told of.
    void deactivate(RequestScope& scope, const KeptObject& subscription, const std::string& owner);

private:
    template <typename Call>
    void tellProvider(RequestScope& scope, const KeptObject& subscription, const std::string& owner, Call call) const;
    void warn(const std::string& text) const;

    const ClassRepository& repository;
    const Registration& registered;
    IndicationCalls& calls;
    const LogSink log;
    std::set<const KeptObject*> activated;          // what the provider has been told of
    std::map<std::string, std::size_t> activations; // by class path
    bool isEnabled = false;                         // the provider was told, once for all
};

} // namespace cimhost
