// What the server says of itself in the interop namespace, where clients look first: which namespaces there are, who
// serves them, over which protocol, and how indications are taken.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_scope.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

struct ServerFacts {
    std::string interopNamespace;
    std::string systemName;
    std::size_t mostOfEach = 0; ///< destinations, and subscriptions
    bool asksForUser = false;
    bool remembersSubscriptions = false;
};

class ServerDescription {
public:
    /// The repository is whole by now and outlives this.
    ServerDescription(const ClassRepository& repository, ServerFacts facts);

    /// The classes of these objects, as the interop namespace declares them. None if it lacks one of them:
    /// then there is no description.
    [[nodiscard]] std::vector<const ClassDeclaration*> classes() const;

    /// The names of the interop namespace, its own one first.
    [[nodiscard]] std::vector<std::string> interopNames() const;

    /// Every object, and the associations among them; they live in the scope. To be called only where there are
    /// classes. The interop namespace's object bears the name given: a client that asks under one of the further names
    /// finds that name in the list of namespaces.
    [[nodiscard]] std::vector<const InstanceObject*> describe(RequestScope& scope, std::string_view interopName) const;

    /// The association that says that the indication service takes care of a filter or destination.
    [[nodiscard]] const InstanceObject& affected(RequestScope& scope, const ObjectPathObject& element) const;

private:
    class Writer;

    const ClassRepository& classesOf;
    ServerFacts known;
};

} // namespace cimhost
