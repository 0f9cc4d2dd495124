// The demonstration fleet behind the provider, and every object that it publishes.
#pragma once

#include "cimhost/cimxml/values.h"
#include "cimhost/service/host.h"

#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace cimhost::testing_support {

/// One for the whole program: the provider cannot be loaded twice, and looks at the adapters for seconds.
class Demonstration {
public:
    static Demonstration& instance();

    /// Instances of the classes that the provider serves, associations apart, in both namespaces. Each path once,
    /// though some objects share theirs.
    [[nodiscard]] const std::set<std::string>& objects() const { return paths; }

    /// The paths that AssociatorNames gives; association may be empty for all.
    std::vector<std::string> associatorNames(const std::string& path, const std::string& association);
    /// The paths of what Associators gives.
    std::vector<std::string> associators(const std::string& path, const std::string& association);
    std::vector<std::string> referenceNames(const std::string& path, const std::string& association);
    std::vector<std::string> references(const std::string& path, const std::string& association);

    /// Asks all four operations from a source that may be wrong in any way. The rows of those that succeed; what fails,
    /// fails with a CIM status or throws from here.
    std::vector<std::string> rowsFrom(const cimxml::ObjectPath& source);

    /// The associations that the provider serves in the path's namespace and that the path's class can take part in.
    std::vector<std::string> associationsOf(const std::string& path);

    Host& host() { return server; }

    /// What the call gives while the server puts association requests to the provider in that way.
    template <typename Call>
    auto asking(AssociationCalls way, Call call) {
        AssociationCalls& setting = server.operations().associationCalls;
        const AssociationCalls before = std::exchange(setting, way);
        auto result = call();
        setting = before;
        return result;
    }

private:
    // The provider reads its settings and writes its log in the working directory: a folder of this program's own.
    class WorkingFolder {
    public:
        WorkingFolder();
        ~WorkingFolder();
        WorkingFolder(const WorkingFolder&) = delete;
        WorkingFolder& operator=(const WorkingFolder&) = delete;

    private:
        std::filesystem::path folder;
    };

    Demonstration();

    template <typename Ask>
    std::vector<std::string> ask(const std::string& path, Ask call);

    WorkingFolder folder; // outlives the provider
    Host server;
    std::set<std::string> paths;
};

} // namespace cimhost::testing_support
