// The provider here, as a source of objects.
#pragma once

#include "cimhost/cli/object_source.h"

namespace cimhost::cli {

class LocalSource final : public ObjectSource {
public:
    /// Both outlive this.
    LocalSource(Operations& behind, Broker& owner) : operations(behind), cmpiBroker(owner) {}

    [[nodiscard]] Broker& broker() override { return cmpiBroker; }
    [[nodiscard]] const ClassRepository& repository() const override { return operations.repository(); }
    [[nodiscard]] const Registration& registration() const override { return operations.registration(); }
    [[nodiscard]] ArrayArguments arrayArguments() const override { return operations.arrayArguments; }

    /// Never null: throws CimFailure for a class that is not declared.
    [[nodiscard]] const ClassDeclaration* findClass(std::string_view nameSpace,
                                                    std::string_view className) const override;
    Instances enumerateInstances(RequestScope& scope, std::string_view nameSpace, std::string_view className) override;
    Paths enumerateInstanceNames(RequestScope& scope, std::string_view nameSpace, std::string_view className) override;
    const InstanceObject& getInstance(RequestScope& scope, const ObjectPathObject& path) override;
    Instances associators(RequestScope& scope, const ObjectPathObject& source,
                          const AssociationFilter& filter) override;
    Paths associatorNames(RequestScope& scope, const ObjectPathObject& source,
                          const AssociationFilter& filter) override;
    Instances references(RequestScope& scope, const ObjectPathObject& source, const AssociationFilter& filter) override;
    Paths referenceNames(RequestScope& scope, const ObjectPathObject& source, const AssociationFilter& filter) override;
    [[nodiscard]] std::vector<const ClassDeclaration*> declaredClasses(std::string_view nameSpace) const override;
    Classes classes(std::string_view nameSpace) override;
    Classes associatorClasses(std::string_view nameSpace, std::string_view className,
                              const AssociationFilter& filter) override;
    Classes referenceClasses(std::string_view nameSpace, std::string_view className,
                             const AssociationFilter& filter) override;
    Outcome invokeMethod(RequestScope& scope, const ObjectPathObject& path, const MethodDeclaration& method,
                         const ArgsObject& arguments) override;

private:
    Operations& operations;
    Broker& cmpiBroker;
};

} // namespace cimhost::cli
