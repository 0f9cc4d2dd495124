#include "cimhost/model/class_repository.h"

#include <algorithm>
#include <utility>

#include "cimhost/model/repository_builder.h"
#include "cimhost/model/repository_namespace.h"

namespace cimhost {

MofError::MofError(SourcePosition where, const std::string& text)
    : std::runtime_error(where.file + ":" + std::to_string(where.line) + ":" + std::to_string(where.column) + ": " +
                         text),
      place(std::move(where)) {}

ClassRepository::ClassRepository() = default;
ClassRepository::~ClassRepository() = default;
ClassRepository::ClassRepository(ClassRepository&&) noexcept = default;
ClassRepository& ClassRepository::operator=(ClassRepository&&) noexcept = default;

void ClassRepository::loadFiles(std::string_view nameSpace, std::span<const std::filesystem::path> files) {
    RepositoryBuilder builder(*this, nameSpace);
    for (const std::filesystem::path& file : files) {
        builder.readFile(file);
    }
    builder.finish();
}

void ClassRepository::loadFile(std::string_view nameSpace, const std::filesystem::path& file) {
    loadFiles(nameSpace, std::span(&file, 1));
}

void ClassRepository::loadText(std::string_view nameSpace, std::string_view text, std::string_view fileName) {
    RepositoryBuilder builder(*this, nameSpace);
    builder.readText(text, std::string(fileName));
    builder.finish();
}

void ClassRepository::addNamespace(std::string_view nameSpace) { makeNamespace(nameSpace); }

void ClassRepository::addAlias(std::string_view alias, std::string_view nameSpace) {
    const Namespace* meant = findNamespace(nameSpace);
    if (!meant || findNamespace(alias)) return;
    furtherNames.push_back({std::string(trimNamespace(alias)), meant->name});
}

const NamespaceAlias* ClassRepository::findAlias(std::string_view nameSpace) const noexcept {
    const std::string_view wanted = trimNamespace(nameSpace);
    const auto place = std::find_if(furtherNames.begin(), furtherNames.end(),
                                    [wanted](const NamespaceAlias& one) { return equalNames(one.name, wanted); });
    return place == furtherNames.end() ? nullptr : &*place;
}

std::vector<std::string_view> ClassRepository::namespaces() const {
    std::vector<std::string_view> names;
    for (const auto& nameSpace : all) {
        names.emplace_back(nameSpace->name);
    }
    return names;
}

bool ClassRepository::hasNamespace(std::string_view nameSpace) const noexcept { return findNamespace(nameSpace); }

const ClassDeclaration* ClassRepository::find(std::string_view nameSpace, std::string_view className) const noexcept {
    const Namespace* found = findNamespace(nameSpace);
    return found ? found->find(className) : nullptr;
}

std::span<const ClassDeclaration* const> ClassRepository::classes(std::string_view nameSpace) const noexcept {
    const Namespace* found = findNamespace(nameSpace);
    return found ? std::span<const ClassDeclaration* const>(found->classes)
                 : std::span<const ClassDeclaration* const>();
}

std::span<const QualifierDeclaration>
ClassRepository::qualifierDeclarations(std::string_view nameSpace) const noexcept {
    const Namespace* found = findNamespace(nameSpace);
    return found ? std::span<const QualifierDeclaration>(found->qualifiers) : std::span<const QualifierDeclaration>();
}

// A server has a handful of namespaces, so a walk is as good as an index.
const ClassRepository::Namespace* ClassRepository::findNamespace(std::string_view nameSpace) const noexcept {
    const std::string_view wanted = trimNamespace(nameSpace);
    for (const auto& candidate : all) {
        if (equalNames(candidate->name, wanted)) return candidate.get();
    }
    const NamespaceAlias* alias = findAlias(wanted);
    return alias ? findNamespace(alias->nameSpace) : nullptr;
}

ClassRepository::Namespace& ClassRepository::makeNamespace(std::string_view nameSpace) {
    if (const Namespace* known = findNamespace(nameSpace)) return const_cast<Namespace&>(*known);
    all.push_back(std::make_unique<Namespace>());
    all.back()->name = trimNamespace(nameSpace);
    return *all.back();
}

} // namespace cimhost
