// The calls that subscriptions make to a provider: a loaded library in the server, a fake one in tests.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/model/cim_error.h"

#include <optional>
#include <string>

namespace cimhost {

/// A filter as a provider sees it.
struct FilterCall {
    const SelectExpObject& query;
    const std::string& className;      ///< of the query's FROM
    const ObjectPathObject& classPath; ///< namespace, and a class for which the provider is registered
    const std::string& owner;          ///< the user who subscribes
};

/// Each call returns the provider's error, or nothing.
class IndicationCalls {
public:
    virtual ~IndicationCalls() = default;

    virtual std::optional<CimError> authorizeFilter(RequestScope& scope, const FilterCall& call) = 0;
    virtual std::optional<CimError> mustPoll(RequestScope& scope, const FilterCall& call) = 0;
    virtual std::optional<CimError> activateFilter(RequestScope& scope, const FilterCall& call, bool isFirst) = 0;
    virtual std::optional<CimError> deactivateFilter(RequestScope& scope, const FilterCall& call, bool isLast) = 0;
    virtual std::optional<CimError> enableIndications(RequestScope& scope) = 0;
};

} // namespace cimhost
