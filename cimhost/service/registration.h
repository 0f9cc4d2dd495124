// Which classes the provider serves, in which namespaces, and through which of its interfaces.
#pragma once

#include "cimhost/model/class_repository.h"
#include "cimhost/provider/provider_calls.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

namespace cimhost {

struct Namespaces {
    std::string implementation = "root/merolt_cmpi";
    std::string interop = "root/PG_InterOp";
};

class Registration {
public:
    /// Reads lines `Class: kinds [; namespaces=first,second] [; alone=what]`, where the kinds are instance,
    /// association, method and indication. # begins a comment. Without namespaces= a class is served in the
    /// implementation namespace. root/merolt_cmpi and root/PG_InterOp stand for the implementation and the interop
    /// namespace, whatever `namespaces` calls them. All classes with the same words after alone= have one method call
    /// at a time among them. Throws std::runtime_error with file, line and what is wrong: the file cannot be read, the
    /// repository lacks a class or a namespace, or a kind or option is unknown.
    static Registration load(const std::filesystem::path& file, const ClassRepository& repository,
                             const Namespaces& namespaces);

    /// Serves every class of the repository whose name has that prefix and that is not abstract. The kinds follow from
    /// the class: indication; or instance, with association if it is one, and method if it has methods.
    static Registration ofPrefix(std::string_view prefix, const ClassRepository& repository);

    void add(const ClassDeclaration& declaration, ProviderKind kind);
    [[nodiscard]] bool serves(const ClassDeclaration& declaration, ProviderKind kind) const;
    /// The kind of the class's method calls, such as "flash update", if no two of that kind may be under way; or empty.
    /// Lives as long as the registration.
    [[nodiscard]] std::string_view aloneAs(const ClassDeclaration& declaration) const;

private:
    void addLine(std::string_view line, const ClassRepository& repository, const Namespaces& namespaces);

    std::unordered_map<const ClassDeclaration*, unsigned> kinds; // a bit for each ProviderKind
    std::unordered_map<const ClassDeclaration*, std::string> alone;
};

} // namespace cimhost
