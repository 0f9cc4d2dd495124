// Where a command gets its answers: from the provider here, or from a CIM server somewhere. Whatever is shown of them
// is the same.
#pragma once

#include "cimhost/service/operations.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

/// A class that a source knows.
struct ListedClass {
    std::string name;
    std::string superclass;              ///< empty: none
    const ClassDeclaration* declaration; ///< null where it is not declared here
};

/// Every operation throws CimFailure for what the source answers, and whatever else the source throws where it gives no
/// answer. Objects live in the scope, which is one of broker().
class ObjectSource {
public:
    using Instances = std::vector<const InstanceObject*>;
    using Paths = std::vector<const ObjectPathObject*>;
    using Classes = std::vector<ListedClass>;

    virtual ~ObjectSource() = default;

    [[nodiscard]] virtual Broker& broker() = 0;
    /// The classes as they are declared here.
    [[nodiscard]] virtual const ClassRepository& repository() const = 0;
    [[nodiscard]] virtual const Registration& registration() const = 0;
    [[nodiscard]] virtual ArrayArguments arrayArguments() const = 0;

    /// Null for a class that is not declared here, but that the source may know.
    [[nodiscard]] virtual const ClassDeclaration* findClass(std::string_view nameSpace,
                                                            std::string_view className) const = 0;

    virtual Instances enumerateInstances(RequestScope& scope, std::string_view nameSpace,
                                         std::string_view className) = 0;
    virtual Paths enumerateInstanceNames(RequestScope& scope, std::string_view nameSpace,
                                         std::string_view className) = 0;
    virtual const InstanceObject& getInstance(RequestScope& scope, const ObjectPathObject& path) = 0;

    virtual Instances associators(RequestScope& scope, const ObjectPathObject& source,
                                  const AssociationFilter& filter) = 0;
    virtual Paths associatorNames(RequestScope& scope, const ObjectPathObject& source,
                                  const AssociationFilter& filter) = 0;
    virtual Instances references(RequestScope& scope, const ObjectPathObject& source,
                                 const AssociationFilter& filter) = 0;
    virtual Paths referenceNames(RequestScope& scope, const ObjectPathObject& source,
                                 const AssociationFilter& filter) = 0;

    /// Those of the namespace that are declared here.
    [[nodiscard]] virtual std::vector<const ClassDeclaration*> declaredClasses(std::string_view nameSpace) const = 0;
    /// Those that the source has.
    virtual Classes classes(std::string_view nameSpace) = 0;
    virtual Classes associatorClasses(std::string_view nameSpace, std::string_view className,
                                      const AssociationFilter& filter) = 0;
    virtual Classes referenceClasses(std::string_view nameSpace, std::string_view className,
                                     const AssociationFilter& filter) = 0;

    virtual Outcome invokeMethod(RequestScope& scope, const ObjectPathObject& path, const MethodDeclaration& method,
                                 const ArgsObject& arguments) = 0;
};

} // namespace cimhost::cli
