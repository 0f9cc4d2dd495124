#include "demonstration.h"

#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace cimhost::testing_support {

namespace {

HostOptions demonstrationOptions() {
    ::setenv("TAVIK_SOURCE", "fleet:" FLEET, 1);
    ::setenv("MEROLT_CNA_WAITS", "events", 1);
    HostOptions options;
    options.mofDirectory = MOF;
    options.provider = PROVIDER;
    return options;
}

std::string textOf(const ObjectPathObject& path) {
    std::string text;
    path.appendText(text);
    return text;
}

std::vector<std::string> textsOf(const std::vector<const ObjectPathObject*>& paths) {
    std::vector<std::string> texts;
    for (const ObjectPathObject* path : paths)
        texts.push_back(textOf(*path));
    return texts;
}

std::vector<std::string> textsOf(const std::vector<const InstanceObject*>& instances) {
    Arena arena;
    std::vector<std::string> texts;
    for (const InstanceObject* instance : instances)
        texts.push_back(textOf(*instance->path(arena)));
    return texts;
}

} // namespace

Demonstration::WorkingFolder::WorkingFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "cimhost_demonstration_XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    folder = name;
    std::filesystem::current_path(folder);
    std::ofstream("meroltcna.properties") << "LinkStatusPollIntervalSeconds=0\n";
}

Demonstration::WorkingFolder::~WorkingFolder() {
    std::error_code ignored;
    std::filesystem::current_path(folder.parent_path(), ignored);
    std::filesystem::remove_all(folder, ignored);
}

Demonstration& Demonstration::instance() {
    static Demonstration only;
    return only;
}

Demonstration::Demonstration() : server(demonstrationOptions()) {
    Operations& operations = server.operations();
    for (const std::string_view nameSpace : operations.repository().namespaces()) {
        for (const ClassDeclaration* declaration : operations.repository().classes(nameSpace)) {
            if (declaration->isAssociation()) continue;
            if (!operations.registration().serves(*declaration, ProviderKind::instance)) continue;
            RequestScope scope(server.broker());
            for (std::string& path : textsOf(operations.enumerateInstanceNames(scope, {}, *declaration)))
                paths.insert(std::move(path));
        }
    }
}

template <typename Ask>
std::vector<std::string> Demonstration::ask(const std::string& path, Ask call) {
    RequestScope scope(server.broker());
    const cimxml::ObjectPath parsed = parsePath(path, "", server.operations().repository());
    return textsOf(call(scope, makePath(scope, parsed.nameSpace, parsed)));
}

std::vector<std::string> Demonstration::associatorNames(const std::string& path, const std::string& association) {
    return ask(path, [&](RequestScope& scope, const ObjectPathObject& source) {
        return server.operations().associatorNames(scope, {}, source, {association, "", "", ""});
    });
}

std::vector<std::string> Demonstration::associators(const std::string& path, const std::string& association) {
    return ask(path, [&](RequestScope& scope, const ObjectPathObject& source) {
        return server.operations().associators(scope, {}, source, {association, "", "", ""}, std::nullopt);
    });
}

std::vector<std::string> Demonstration::referenceNames(const std::string& path, const std::string& association) {
    return ask(path, [&](RequestScope& scope, const ObjectPathObject& source) {
        return server.operations().referenceNames(scope, {}, source, {association, "", "", ""});
    });
}

std::vector<std::string> Demonstration::references(const std::string& path, const std::string& association) {
    return ask(path, [&](RequestScope& scope, const ObjectPathObject& source) {
        return server.operations().references(scope, {}, source, {association, "", "", ""}, std::nullopt);
    });
}

std::vector<std::string> Demonstration::rowsFrom(const cimxml::ObjectPath& source) {
    Operations& operations = server.operations();
    std::vector<std::string> rows;
    const auto collect = [&](const auto& call) {
        RequestScope scope(server.broker());
        try {
            const std::vector<std::string> some = textsOf(call(scope, makePath(scope, source.nameSpace, source)));
            rows.insert(rows.end(), some.begin(), some.end());
        } catch (const CimFailure&) { // an answer like any other
        }
    };
    const AssociationFilter all;
    collect([&](RequestScope& scope, const ObjectPathObject& path) {
        return operations.associators(scope, {}, path, all, std::nullopt);
    });
    collect([&](RequestScope& scope, const ObjectPathObject& path) {
        return operations.associatorNames(scope, {}, path, all);
    });
    collect([&](RequestScope& scope, const ObjectPathObject& path) {
        return operations.references(scope, {}, path, all, std::nullopt);
    });
    collect([&](RequestScope& scope, const ObjectPathObject& path) {
        return operations.referenceNames(scope, {}, path, all);
    });
    return rows;
}

std::vector<std::string> Demonstration::associationsOf(const std::string& path) {
    Operations& operations = server.operations();
    const cimxml::ObjectPath parsed = parsePath(path, "", operations.repository());
    std::vector<std::string> names;
    for (const ClassDeclaration* association :
         operations.referenceClasses(parsed.nameSpace, parsed.className, AssociationFilter())) {
        if (operations.registration().serves(*association, ProviderKind::association)) {
            names.push_back(association->name());
        }
    }
    return names;
}

} // namespace cimhost::testing_support
