#include "cimhost/service/registration.h"

#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace cimhost {

namespace {

struct KindName {
    std::string_view name;
    ProviderKind kind;
};

constexpr KindName kindNames[] = {
    {"instance", ProviderKind::instance},
    {"association", ProviderKind::association},
    {"method", ProviderKind::method},
    {"indication", ProviderKind::indication},
};

constexpr unsigned bitOf(ProviderKind kind) { return 1U << static_cast<unsigned>(kind); }

ProviderKind kindOf(std::string_view name) {
    for (const KindName& row : kindNames) {
        if (row.name == name) return row.kind;
    }
    throw std::runtime_error("\"" + std::string(name) + "\" is none of instance, association, method, indication");
}

// The options of a line, which follow its kinds.
struct LineOptions {
    std::vector<std::string_view> namespaces;
    std::string_view alone;
};

LineOptions optionsOf(std::string_view text) {
    constexpr std::string_view namespaces = "namespaces=";
    constexpr std::string_view alone = "alone=";
    LineOptions options;
    for (const std::string_view part : split(text, ";")) {
        const std::string_view option = trim(part);
        if (option.starts_with(namespaces)) {
            options.namespaces = split(option.substr(namespaces.size()), ", ");
        } else if (option.starts_with(alone) && option.size() > alone.size()) {
            options.alone = option.substr(alone.size());
        } else {
            throw std::runtime_error("\"" + std::string(option) +
                                     "\" is neither namespaces=first,second nor alone=what");
        }
    }
    return options;
}

} // namespace

Registration Registration::load(const std::filesystem::path& file, const ClassRepository& repository,
                                const Namespaces& namespaces) {
    Registration registration;
    readLines(file, [&](std::string_view line) { registration.addLine(line, repository, namespaces); });
    return registration;
}

void Registration::addLine(std::string_view line, const ClassRepository& repository, const Namespaces& namespaces) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) throw std::runtime_error("a line reads Class: kinds");
    const std::string_view className = trim(line.substr(0, colon));
    std::string_view rest = line.substr(colon + 1);
    const std::size_t kindsEnd = std::min(rest.find(';'), rest.size());
    LineOptions options = optionsOf(rest.substr(kindsEnd));
    rest = rest.substr(0, kindsEnd);
    if (options.namespaces.empty()) options.namespaces = {namespaces.implementation};
    for (std::string_view nameSpace : options.namespaces) {
        if (equalNames(nameSpace, Namespaces().interop)) nameSpace = namespaces.interop;
        if (equalNames(nameSpace, Namespaces().implementation)) nameSpace = namespaces.implementation;
        const ClassDeclaration* declaration = repository.find(nameSpace, className);
        if (!declaration) {
            throw std::runtime_error("namespace " + std::string(nameSpace) + " has no class " + std::string(className));
        }
        for (const std::string_view kind : split(rest, " \t"))
            add(*declaration, kindOf(kind));
        if (!options.alone.empty()) alone[declaration] = options.alone;
    }
}

Registration Registration::ofPrefix(std::string_view prefix, const ClassRepository& repository) {
    Registration registration;
    for (const std::string_view nameSpace : repository.namespaces()) {
        for (const ClassDeclaration* declaration : repository.classes(nameSpace)) {
            if (declaration->isAbstract() || !equalNames(declaration->name().substr(0, prefix.size()), prefix))
                continue;
            if (declaration->isIndication()) {
                registration.add(*declaration, ProviderKind::indication);
                continue;
            }
            registration.add(*declaration, ProviderKind::instance);
            if (declaration->isAssociation()) registration.add(*declaration, ProviderKind::association);
            if (!declaration->methods().empty()) registration.add(*declaration, ProviderKind::method);
        }
    }
    return registration;
}

void Registration::add(const ClassDeclaration& declaration, ProviderKind kind) { kinds[&declaration] |= bitOf(kind); }

bool Registration::serves(const ClassDeclaration& declaration, ProviderKind kind) const {
    const auto known = kinds.find(&declaration);
    return known != kinds.end() && (known->second & bitOf(kind)) != 0;
}

std::string_view Registration::aloneAs(const ClassDeclaration& declaration) const {
    const auto known = alone.find(&declaration);
    return known == alone.end() ? std::string_view() : std::string_view(known->second);
}

} // namespace cimhost
