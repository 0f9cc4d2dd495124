// The class repository: namespaces with their classes and qualifier declarations, read from MOF. Load everything first;
// from then on it is only read, by as many threads as like.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cimhost/model/class_declaration.h"

namespace cimhost {

struct SourcePosition {
    std::string file;
    std::size_t line = 1;   ///< from 1
    std::size_t column = 1; ///< from 1, in bytes
};

/// What is wrong in a MOF text and where: what() reads "file:line:column: text".
class MofError : public std::runtime_error {
public:
    MofError(SourcePosition where, const std::string& text);
    [[nodiscard]] const SourcePosition& position() const noexcept { return place; }

private:
    SourcePosition place;
};

/// One more name under which a namespace is known.
struct NamespaceAlias {
    std::string name;
    std::string nameSpace; ///< the namespace's own name
};

class ClassRepository {
public:
    ClassRepository();
    ~ClassRepository();
    ClassRepository(ClassRepository&&) noexcept;
    ClassRepository& operator=(ClassRepository&&) noexcept;

    /// Reads MOF files into a namespace, which is made if needed; `#pragma include` is read relative to the including
    /// file, `#pragma namespace` switches for the rest of that file. A superclass must stand before its subclass; the
    /// target of a reference may stand anywhere in the files of one call. Throws MofError; then the repository is
    /// half loaded and good for nothing.
    void loadFiles(std::string_view nameSpace, std::span<const std::filesystem::path> files);
    void loadFile(std::string_view nameSpace, const std::filesystem::path& file);

    /// The same for a text in memory, which may not include files. fileName is for messages.
    void loadText(std::string_view nameSpace, std::string_view text, std::string_view fileName = "<text>");

    /// Makes an empty namespace unless it exists.
    void addNamespace(std::string_view nameSpace);

    /// From now on the namespace is found under this name too. Nothing changes if it is unknown, or if the name is
    /// taken.
    void addAlias(std::string_view alias, std::string_view nameSpace);

    /// The namespaces in the order of their making, each without leading and trailing slashes. Further names of theirs
    /// are not among them.
    [[nodiscard]] std::vector<std::string_view> namespaces() const;
    [[nodiscard]] std::span<const NamespaceAlias> aliases() const noexcept { return furtherNames; }
    /// Null for a namespace's own name and for one that is unknown.
    [[nodiscard]] const NamespaceAlias* findAlias(std::string_view nameSpace) const noexcept;
    [[nodiscard]] bool hasNamespace(std::string_view nameSpace) const noexcept;

    /// Null if the namespace or the class is unknown. Does not allocate.
    [[nodiscard]] const ClassDeclaration* find(std::string_view nameSpace, std::string_view className) const noexcept;

    /// All classes of a namespace, in the order of their declaration; empty if the namespace is unknown.
    [[nodiscard]] std::span<const ClassDeclaration* const> classes(std::string_view nameSpace) const noexcept;
    [[nodiscard]] std::span<const QualifierDeclaration>
    qualifierDeclarations(std::string_view nameSpace) const noexcept;

private:
    friend class RepositoryBuilder;
    struct Namespace;

    [[nodiscard]] const Namespace* findNamespace(std::string_view nameSpace) const noexcept;
    Namespace& makeNamespace(std::string_view nameSpace);

    std::vector<std::unique_ptr<Namespace>> all;
    std::vector<NamespaceAlias> furtherNames;
};

} // namespace cimhost
