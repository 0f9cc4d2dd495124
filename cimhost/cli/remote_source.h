// A CIM server somewhere, as a source of objects.
#pragma once

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cli/object_source.h"
#include "cimhost/remote/remote_calls.h"
#include "cimhost/service/host.h"

#include <string_view>

namespace cimhost::cli {

/// The classes as they are declared here: what every server's objects are shown by. Only read once it is made, by as
/// many threads as like.
struct DeclaredClasses {
    /// @param nameSpace in which the servers have the adapters' classes. Throws std::runtime_error.
    DeclaredClasses(HostOptions hostOptions, std::string_view nameSpace);
    DeclaredClasses(const DeclaredClasses&) = delete;
    DeclaredClasses& operator=(const DeclaredClasses&) = delete;

    const HostOptions options; ///< with the namespace of the adapters' classes
    ClassRepository repository;
    Registration registration;
    Broker broker;
    cimxml::TagTable tags;
};

/// For one thread at a time.
class RemoteSource final : public ObjectSource {
public:
    /// Both outlive this.
    RemoteSource(remote::Connection& connection, DeclaredClasses& here)
        : declared(here), calls(connection, here.tags) {}

    [[nodiscard]] Broker& broker() override { return declared.broker; }
    [[nodiscard]] const ClassRepository& repository() const override { return declared.repository; }
    [[nodiscard]] const Registration& registration() const override { return declared.registration; }
    [[nodiscard]] ArrayArguments arrayArguments() const override { return ArrayArguments::tagged; }

    [[nodiscard]] const ClassDeclaration* findClass(std::string_view nameSpace,
                                                    std::string_view className) const override {
        return declared.repository.find(nameSpace, className);
    }
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
    [[nodiscard]] Classes listed(std::string_view nameSpace, const remote::RemoteCalls::Classes& classes) const;

    DeclaredClasses& declared;
    remote::RemoteCalls calls;
};

} // namespace cimhost::cli
