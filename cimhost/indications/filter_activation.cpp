#include "cimhost/indications/filter_activation.h"

#include "cimhost/service/cim_failure.h"

#include <optional>

namespace cimhost {

namespace {

void throwIf(const std::optional<CimError>& error) {
    if (error) throw CimFailure(*error);
}

} // namespace

void FilterActivation::warn(const std::string& text) const {
    if (log) log(LogLevel::warning, text);
}

const ClassDeclaration& FilterActivation::servedClass(const KeptObject& filter) const {
    const ClassDeclaration& from = *repository.find(filter.sourceNamespace, filter.query->className());
    if (registered.serves(from, ProviderKind::indication)) return from;
    for (const ClassDeclaration* below : from.allSubclasses()) {
        if (registered.serves(*below, ProviderKind::indication)) return *below;
    }
    throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "no provider serves indications of class " + from.name() +
                                                    " in namespace " + filter.sourceNamespace +
                                                    ": see SourceNamespace of the filter");
}

template <typename Call>
void FilterActivation::tellProvider(RequestScope& scope, const KeptObject& subscription, const std::string& owner,
                                    Call call) const {
    const KeptObject& filter = *subscription.filter;
    const ClassDeclaration& served = servedClass(filter);
    const SelectExpObject& query = *SelectExpObject::make(scope.arena(), givenText(*filter.instance, "Query"),
                                                          givenText(*filter.instance, "QueryLanguage"));
    const ObjectPathObject& path = *scope.make().path(filter.sourceNamespace, served.name());
    call(FilterCall{query, filter.query->className(), path, owner}, filter.sourceNamespace + ":" + served.name());
}

void FilterActivation::activate(RequestScope& scope, const KeptObject& subscription, const std::string& owner) {
    tellProvider(scope, subscription, owner, [&](const FilterCall& call, const std::string& place) {
        throwIf(calls.authorizeFilter(scope, call));
        // This server does not poll. The call only lets the provider refuse the filter.
        const std::optional<CimError> poll = calls.mustPoll(scope, call);
        if (poll && poll->code != CMPI_RC_ERR_NOT_SUPPORTED) throw CimFailure(*poll);
        std::size_t& count = activations[place];
        throwIf(calls.activateFilter(scope, call, count == 0));
        ++count;
        activated.insert(&subscription);
        if (std::exchange(isEnabled, true)) return;
        // Providers that need not be enabled do not have this call.
        const std::optional<CimError> error = calls.enableIndications(scope);
        if (error && error->code != CMPI_RC_ERR_NOT_SUPPORTED) {
            warn("the provider did not enable indications: " + error->description);
        }
    });
}

void FilterActivation::deactivate(RequestScope& scope, const KeptObject& subscription, const std::string& owner) {
    if (activated.erase(&subscription) == 0) return;
    tellProvider(scope, subscription, owner, [&](const FilterCall& call, const std::string& place) {
        const bool isLast = --activations[place] == 0;
        if (const std::optional<CimError> error = calls.deactivateFilter(scope, call, isLast)) {
            warn("the provider did not give up a filter: " + error->description);
        }
    });
}

} // namespace cimhost
