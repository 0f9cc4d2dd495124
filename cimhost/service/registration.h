// Which classes are put to the provider, in which namespaces and through which of its interfaces.
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
    /// Reads lines `Class: kinds [; namespaces=first,second] [; alone=what]` (kinds: instance, association, method,
    /// indication); # begins a comment. Without namespaces a class is served in the implementation namespace;
    /// root/merolt_cmpi and root/PG_InterOp stand for these two, whatever they are called here. Of all methods of
    /// classes with the same words behind alone= only one is called at a time. Throws std::runtime_error with file,
    /// line and what is wrong: a class or namespace that the repository lacks, an unknown kind or option.
    static Registration load(const std::filesystem::path& file, const ClassRepository& repository,
                             const Namespaces& namespaces);

    /// Serves every class of the repository whose name begins so and that is not abstract, by what the class is:
    /// indication, association (and instance), instance; method where it has methods.
    static Registration ofPrefix(std::string_view prefix, const ClassRepository& repository);

    void add(const ClassDeclaration& declaration, ProviderKind kind);
    [[nodiscard]] bool serves(const ClassDeclaration& declaration, ProviderKind kind) const;
    /// What a method call of the class is, such as "flash update", if no two of that may be under way; or empty.
    [[nodiscard]] std::string_view aloneAs(const ClassDeclaration& declaration) const;

private:
    void addLine(std::string_view line, const ClassRepository& repository, const Namespaces& namespaces);

    std::unordered_map<const ClassDeclaration*, unsigned> kinds; // a bit for each ProviderKind
    std::unordered_map<const ClassDeclaration*, std::string> alone;
};

} // namespace cimhost
