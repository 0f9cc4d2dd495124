#include "cimhost/indications/indication_calls.h"

namespace cimhost {

namespace {

CallContext contextOf(const FilterCall& call) {
    CallContext context;
    context.principal = call.owner;
    return context;
}

} // namespace

std::optional<CimError> LibraryIndicationCalls::authorizeFilter(RequestScope& scope, const FilterCall& call) {
    return library.authorizeFilter(scope, contextOf(call), call.query, call.className, call.classPath, call.owner)
        .error;
}

std::optional<CimError> LibraryIndicationCalls::mustPoll(RequestScope& scope, const FilterCall& call) {
    return library.mustPoll(scope, contextOf(call), call.query, call.className, call.classPath).error;
}

std::optional<CimError> LibraryIndicationCalls::activateFilter(RequestScope& scope, const FilterCall& call,
                                                               bool isFirst) {
    return library.activateFilter(scope, contextOf(call), call.query, call.className, call.classPath, isFirst).error;
}

std::optional<CimError> LibraryIndicationCalls::deactivateFilter(RequestScope& scope, const FilterCall& call,
                                                                 bool isLast) {
    return library.deactivateFilter(scope, contextOf(call), call.query, call.className, call.classPath, isLast).error;
}

std::optional<CimError> LibraryIndicationCalls::enableIndications(RequestScope& scope) {
    return library.enableIndications(scope, {}).error;
}

} // namespace cimhost
