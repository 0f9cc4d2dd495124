// One namespace of the repository, for the repository and its builder.
#pragma once

#include "cimhost/model/class_repository.h"

namespace cimhost {

struct ClassRepository::Namespace {
    std::string name;
    std::vector<std::unique_ptr<ClassDeclaration>> owned;
    std::vector<const ClassDeclaration*> classes;
    NameIndex index; // positions in classes
    std::vector<QualifierDeclaration> qualifiers;

    [[nodiscard]] ClassDeclaration* find(std::string_view className) const noexcept {
        const std::size_t position = index.find(className);
        return position == NameIndex::notFound ? nullptr : owned[position].get();
    }
};

} // namespace cimhost
