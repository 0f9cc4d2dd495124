// The description of the server in the interop namespace, where clients look first: which namespaces there are, who
// serves them, over which protocol, and what its indications can do.
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
    std::size_t mostOfEach = 0; ///< the most destinations, and the most subscriptions
    bool asksForUser = false;
    bool remembersSubscriptions = false;
};

class ServerDescription {
public:
    /// The repository outlives this, and has all its classes and namespaces by now.
    ServerDescription(const ClassRepository& repository, ServerFacts facts);

    /// The classes of the description, as the interop namespace declares them. None if it lacks any of them: then there
    /// is no description.
    [[nodiscard]] std::vector<const ClassDeclaration*> classes() const;

    /// The names of the interop namespace, its own name first.
    [[nodiscard]] std::vector<std::string> interopNames() const;

    /// All objects of the description, and the associations among them. They live in the scope. Called only if there
    /// are classes.
    /// @param interopName the name of the object for the interop namespace: a client that asks under one of its further
    ///        names finds that name in the list of namespaces
    [[nodiscard]] std::vector<const InstanceObject*> describe(RequestScope& scope, std::string_view interopName) const;

    /// The association which says that the indication service manages a filter or a destination.
    [[nodiscard]] const InstanceObject& affected(RequestScope& scope, const ObjectPathObject& element) const;

private:
    class Writer;

    const ClassRepository& classesOf;
    ServerFacts known;
};

} // namespace cimhost
