// The CIM operations on classes and instances, for the CIM-XML server and for the command line. Each finds the class,
// checks what DSP0200 requires, and calls the provider for every class concerned.
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

/// What a caller may do.
enum class Access {
    read,
    change, ///< and read
};

/// Who asks, with which rights, and which answer is wanted.
struct Caller {
    std::string principal;
    std::string acceptLanguage;
    CMPIFlags flags = 0; ///< CMPI_FLAG_LocalOnly and so on, as the request gives them
    std::string host;    ///< what the caller calls this server, as "name:port"; empty: unknown
    Access access = Access::change;
    /// The further name by which the caller calls the namespace; empty: the namespace's own name.
    std::string calledNamespace = {};
    std::string client = {}; ///< the caller's "address:port"; empty: it does not come over a network
};

/// Which type an array has as an argument of a method. Servers differ, and some providers take only one of the two.
enum class ArrayArguments {
    tagged, ///< with the element type: uint8[] is 0x2080
    bare,   ///< 0x2000 for every array
};

/// How often a provider is called for one request for associations. Clients see the same objects either way, unless
/// they name a base class of associations.
enum class AssociationCalls {
    eachClass, ///< once for each association class that can hold the source, with that class's name: OpenPegasus
    once,      ///< once for all, with what the client said
};

/// Every operation throws CimFailure: with the provider's error, with CIM_ERR_INVALID_NAMESPACE or
/// CIM_ERR_INVALID_CLASS for a namespace or class that there is not, or with what its comment says. Results live in the
/// scope. Several threads may call, each with a scope of its own.
class Operations {
public:
    /// Repository, registration and provider outlive the operations.
    Operations(const ClassRepository& repository, const Registration& registration, ProviderCalls& provider)
        : classes(repository), registered(registration), calls(provider) {}

    // Operations with many objects hand them to a sink one after the other, while the provider delivers them. If the
    // sink throws, the operation ends with that exception. A failure may come after some objects. The forms without a
    // sink collect all objects, and lose them with a failure.

    /// Instances of the class and of all its subclasses. The provider is asked for the listed properties. If none are
    /// listed: with deepInheritance for all, without it for those that the named class has.
    void enumerateInstances(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                            bool deepInheritance, const PropertyList& properties, ObjectSink& sink);
    void enumerateInstanceNames(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                                ObjectSink& sink);
    std::vector<const InstanceObject*> enumerateInstances(RequestScope& scope, const Caller& caller,
                                                          const ClassDeclaration& declaration, bool deepInheritance,
                                                          const PropertyList& properties);
    std::vector<const ObjectPathObject*> enumerateInstanceNames(RequestScope& scope, const Caller& caller,
                                                                const ClassDeclaration& declaration);

    /// The instance under the path. CIM_ERR_NOT_FOUND if no provider serves the class, CIM_ERR_INVALID_PARAMETER if the
    /// keys are not those of the class. CIM_ERR_FAILED if the provider succeeds with no instance or with several, as
    /// production servers answer.
    const InstanceObject& getInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                      const PropertyList& properties);

    // These three change instances: CIM_ERR_NOT_SUPPORTED if no provider serves the class, CIM_ERR_INVALID_PARAMETER if
    // the keys of a path are not those of the class.

    /// @return the path of the new instance
    const ObjectPathObject& createInstance(RequestScope& scope, const Caller& caller, const InstanceObject& instance);
    void modifyInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                        const InstanceObject& instance, const PropertyList& properties);
    void deleteInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path);

    /// The objects that are associated with the source (associators), and the associations themselves (references).
    /// With AssociationCalls::eachClass the provider is asked for each association class that it serves, that passes
    /// the filter's association class, and that has a reference of the filter's role which can hold the source. The
    /// provider applies the rest of the filter. The filter of references is an association class and a role.
    /// CIM_ERR_INVALID_PARAMETER if the namespace lacks a class of the filter, if its association class is no
    /// association, or if the keys of the source are not those of its class.
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

    /// The same for a class, answered from the declarations: the classes whose instances can be associated with
    /// instances of that class, and the association classes that can do so. Errors as above.
    [[nodiscard]] std::vector<const ClassDeclaration*>
    associatorClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter) const;
    [[nodiscard]] std::vector<const ClassDeclaration*>
    referenceClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter) const;

    /// Throws CimFailure with CIM_ERR_INVALID_NAMESPACE if there is no such namespace.
    void requireNamespace(std::string_view nameSpace) const;

    /// Throws CimFailure with CIM_ERR_INVALID_NAMESPACE, or with the given status if there is no such class.
    const ClassDeclaration& findClass(std::string_view nameSpace, std::string_view className,
                                      CMPIrc unknownClass = CMPI_RC_ERR_INVALID_CLASS) const;

    /// The qualifiers that the namespace declares.
    [[nodiscard]] std::span<const QualifierDeclaration> qualifiers(std::string_view nameSpace) const;
    /// CIM_ERR_NOT_FOUND if the namespace does not declare it.
    [[nodiscard]] const QualifierDeclaration& findQualifier(std::string_view nameSpace, std::string_view name) const;

    /// The classes without a superclass, or the subclasses of the named class; with deepInheritance all below them,
    /// too.
    [[nodiscard]] std::vector<const ClassDeclaration*> enumerateClasses(std::string_view nameSpace,
                                                                        const std::optional<std::string>& className,
                                                                        bool deepInheritance) const;

    /// CIM_ERR_METHOD_NOT_FOUND if the class has none of that name.
    static const MethodDeclaration& findMethod(const ClassDeclaration& declaration, std::string_view name);
    /// The return value and the output arguments. CIM_ERR_METHOD_NOT_AVAILABLE if no provider serves the class's
    /// methods.
    Outcome invokeMethod(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                         const MethodDeclaration& method, const ArgsObject& arguments);

    /// Whether a provider is called for the instances of a class, or for what is associated with one of them. If not,
    /// the answer comes from the server's own objects and never waits for a provider.
    [[nodiscard]] bool asksProviderFor(const ClassDeclaration& declaration) const;
    [[nodiscard]] bool asksProviderAbout(const ClassDeclaration& source) const;

    // To be set before the first operation.
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
