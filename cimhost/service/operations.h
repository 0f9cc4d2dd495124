// The operations of CIM on classes and instances, for the CIM-XML server and the command line alike: finds the class,
// checks what DSP0200 asks for, and puts the call to the provider for every class concerned.
#pragma once

#include "cimhost/broker/request_scope.h"
#include "cimhost/provider/provider_calls.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/registration.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

/// What somebody may ask for.
enum class Access {
    read,
    change, ///< reading included
};

/// Who asks, what he may do, and what he says about the answer he wants.
struct Caller {
    std::string principal;
    std::string acceptLanguage;
    CMPIFlags flags = 0; ///< CMPI_FLAG_LocalOnly and so on, as the request gives them
    std::string host;    ///< what he calls this server, as "name:port"; empty: unknown
    Access access = Access::change;
    /// The further name of the namespace by which he asks; empty: its own name.
    std::string calledNamespace = {};
    std::string client = {}; ///< where he asks from, as "address:port"; empty: on this side of any network
};

/// How a method finds its array arguments typed: servers differ, and some providers take only the one or the other.
enum class ArrayArguments {
    tagged, ///< with the element type: uint8[] is 0x2080
    bare,   ///< 0x2000 for every array
};

/// How a request for associations is put to the provider. Clients see the same rows, but where they name a base class.
enum class AssociationCalls {
    eachClass, ///< once for each concrete class that the source can take part in, with that class's name: OpenPegasus
    once,      ///< once in all, with what the client said
};

/// Every operation throws CimFailure. Results live in the scope. Safe to use from several threads, each with a scope.
class Operations {
public:
    /// All three outlive the operations.
    Operations(const ClassRepository& repository, const Registration& registration, ProviderCalls& provider)
        : classes(repository), registered(registration), calls(provider) {}

    // What answers with many objects hands them to a sink, one after the other, while the provider delivers; what it
    // throws ends the answer. A failure may come when some have been handed over. The forms without a sink collect:
    // their results live in the scope, and are lost with a failure.

    /// Instances of the class and of all its subclasses. With deepInheritance the provider is asked for the properties
    /// listed, or for all; without, only for such as the named class itself has.
    void enumerateInstances(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                            bool deepInheritance, const PropertyList& properties, ObjectSink& sink);
    void enumerateInstanceNames(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                                ObjectSink& sink);
    std::vector<const InstanceObject*> enumerateInstances(RequestScope& scope, const Caller& caller,
                                                          const ClassDeclaration& declaration, bool deepInheritance,
                                                          const PropertyList& properties);
    std::vector<const ObjectPathObject*> enumerateInstanceNames(RequestScope& scope, const Caller& caller,
                                                                const ClassDeclaration& declaration);

    /// CIM_ERR_FAILED where the provider succeeds with no instance or with several, as production servers answer.
    const InstanceObject& getInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                      const PropertyList& properties);
    const ObjectPathObject& createInstance(RequestScope& scope, const Caller& caller, const InstanceObject& instance);
    void modifyInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                        const InstanceObject& instance, const PropertyList& properties);
    void deleteInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path);

    /// What is associated with the source, and the associations themselves. The provider is asked for every association
    /// class that it serves, that passes the filter's association class and whose reference of the filter's role can
    /// hold the source; the rest of the filter is the provider's affair. References take the association class as their
    /// filter, and a role. CIM_ERR_INVALID_CLASS for the source's class, CIM_ERR_INVALID_PARAMETER for another one that
    /// the namespace lacks or that is no association where it must be, and for a source whose keys are not those of its
    /// class.
    void associators(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                     const AssociationFilter& filter, const PropertyList& properties, ObjectSink& sink);
    void associatorNames(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                         const AssociationFilter& filter, ObjectSink& sink);
    void references(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                    const AssociationFilter& filter, const PropertyList& properties, ObjectSink& sink);
    void referenceNames(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                        const AssociationFilter& filter, ObjectSink& sink);
    std::vector<const InstanceObject*> associators(RequestScope& scope, const Caller& caller,
                                                   const ObjectPathObject& source, const AssociationFilter& filter,
                                                   const PropertyList& properties);
    std::vector<const ObjectPathObject*> associatorNames(RequestScope& scope, const Caller& caller,
                                                         const ObjectPathObject& source,
                                                         const AssociationFilter& filter);
    std::vector<const InstanceObject*> references(RequestScope& scope, const Caller& caller,
                                                  const ObjectPathObject& source, const AssociationFilter& filter,
                                                  const PropertyList& properties);
    std::vector<const ObjectPathObject*> referenceNames(RequestScope& scope, const Caller& caller,
                                                        const ObjectPathObject& source,
                                                        const AssociationFilter& filter);

    /// The same of a class, answered from the declarations alone: classes whose instances can be associated with
    /// instances of that class, and the association classes that can do it. Statuses as above.
    [[nodiscard]] std::vector<const ClassDeclaration*>
    associatorClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter) const;
    [[nodiscard]] std::vector<const ClassDeclaration*>
    referenceClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter) const;

    /// CIM_ERR_INVALID_NAMESPACE.
    void requireNamespace(std::string_view nameSpace) const;

    /// CIM_ERR_INVALID_NAMESPACE, or the given status for an unknown class.
    const ClassDeclaration& findClass(std::string_view nameSpace, std::string_view className,
                                      CMPIrc unknownClass = CMPI_RC_ERR_INVALID_CLASS) const;

    /// CIM_ERR_INVALID_NAMESPACE.
    [[nodiscard]] std::span<const QualifierDeclaration> qualifiers(std::string_view nameSpace) const;
    /// CIM_ERR_INVALID_NAMESPACE, CIM_ERR_NOT_FOUND.
    [[nodiscard]] const QualifierDeclaration& findQualifier(std::string_view nameSpace, std::string_view name) const;

    /// Root classes, or the subclasses of the class named; with deepInheritance those below them too.
    [[nodiscard]] std::vector<const ClassDeclaration*> enumerateClasses(std::string_view nameSpace,
                                                                        const std::optional<std::string>& className,
                                                                        bool deepInheritance) const;

    /// CIM_ERR_METHOD_NOT_FOUND if the class has none of that name.
    static const MethodDeclaration& findMethod(const ClassDeclaration& declaration, std::string_view name);
    /// What the method returned and gave out. CIM_ERR_METHOD_NOT_AVAILABLE where no provider serves the class's
    /// methods.
    Outcome invokeMethod(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                         const MethodDeclaration& method, const ArgsObject& arguments);

    /// True if a provider is asked for the instances of a class, or for what is associated with one of them. What the
    /// server answers from its own objects and declarations never waits for a provider.
    [[nodiscard]] bool asksProviderFor(const ClassDeclaration& declaration) const;
    [[nodiscard]] bool asksProviderAbout(const ClassDeclaration& source) const;

    /// Set before the first operation.
    ArrayArguments arrayArguments = ArrayArguments::tagged;
    AssociationCalls associationCalls = AssociationCalls::eachClass;

    [[nodiscard]] const ClassRepository& repository() const noexcept { return classes; }
    [[nodiscard]] const Registration& registration() const noexcept { return registered; }

private:
    [[nodiscard]] std::vector<const ClassDeclaration*> servedClasses(const ClassDeclaration& declaration) const;
    void requireServed(const ClassDeclaration& declaration) const;
    [[nodiscard]] bool servesAssociations(std::string_view nameSpace) const;
    void requireClasses(std::string_view nameSpace, const AssociationFilter& filter) const;
    template <typename Ask>
    void askAssociations(const Caller& caller, const ObjectPathObject& source, const AssociationFilter& filter,
                         ObjectSink& sink, Ask ask) const;

    const ClassRepository& classes;
    const Registration& registered;
    ProviderCalls& calls;
};

} // namespace cimhost
