// The operations of CIM on classes and instances, for the CIM-XML server and the command line alike: finds the class,
// checks what DSP0200 asks for, and puts the call to the provider for every class concerned.
#pragma once

#include "cimhost/broker/request_scope.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/provider_calls.h"
#include "cimhost/service/registration.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

/// Who asks, and what he says about the answer he wants.
struct Caller {
    std::string principal;
    std::string acceptLanguage;
    CMPIFlags flags = 0; ///< CMPI_FLAG_LocalOnly and so on, as the request gives them
};

/// Every operation throws CimFailure. Results live in the scope. Safe to use from several threads, each with a scope.
class Operations {
public:
    /// All three outlive the operations.
    Operations(const ClassRepository& repository, const Registration& registration, ProviderCalls& provider)
        : classes(repository), registered(registration), calls(provider) {}

    /// Instances of the class and of all its subclasses. With deepInheritance the provider is asked for the properties
    /// listed, or for all; without, only for such as the named class itself has.
    std::vector<const InstanceObject*> enumerateInstances(RequestScope& scope, const Caller& caller,
                                                          const ClassDeclaration& declaration, bool deepInheritance,
                                                          const PropertyList& properties);
    std::vector<const ObjectPathObject*> enumerateInstanceNames(RequestScope& scope, const Caller& caller,
                                                                const ClassDeclaration& declaration);

    /// CIM_ERR_NOT_FOUND where the provider succeeds without an instance, as production servers answer.
    const InstanceObject& getInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                      const PropertyList& properties);
    const ObjectPathObject& createInstance(RequestScope& scope, const Caller& caller, const InstanceObject& instance);
    void modifyInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                        const InstanceObject& instance, const PropertyList& properties);
    void deleteInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path);

    /// CIM_ERR_INVALID_NAMESPACE, or the given status for an unknown class.
    const ClassDeclaration& findClass(std::string_view nameSpace, std::string_view className,
                                      CMPIrc unknownClass = CMPI_RC_ERR_INVALID_CLASS) const;

    /// Root classes, or the subclasses of the class named; with deepInheritance those below them too.
    [[nodiscard]] std::vector<const ClassDeclaration*> enumerateClasses(std::string_view nameSpace,
                                                                        const std::optional<std::string>& className,
                                                                        bool deepInheritance) const;

    [[nodiscard]] const ClassRepository& repository() const noexcept { return classes; }
    [[nodiscard]] const Registration& registration() const noexcept { return registered; }

private:
    [[nodiscard]] std::vector<const ClassDeclaration*> servedClasses(const ClassDeclaration& declaration) const;
    void requireNamespace(std::string_view nameSpace) const;
    void requireServed(const ClassDeclaration& declaration) const;

    const ClassRepository& classes;
    const Registration& registered;
    ProviderCalls& calls;
};

} // namespace cimhost
