#include "cimhost/cli/text_output.h"

#include "cimhost/cli/table.h"
#include "cimhost/cli/values_text.h"
#include "cimhost/model/names.h"
#include "cimhost/model/printable.h"

#include <algorithm>

namespace cimhost::cli {

namespace {

constexpr std::size_t widestGuess = 36; // of a column that nobody chose

// Keys that say the same for every instance of a class on one host.
constexpr std::string_view commonKeys[] = {"SystemCreationClassName", "SystemName", "CreationClassName"};

bool isCommonKey(std::string_view property) {
    return std::any_of(std::begin(commonKeys), std::end(commonKeys),
                       [&](std::string_view common) { return equalNames(common, property); });
}

bool hasValue(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    return data && (data->state & CMPI_nullValue) == 0;
}

bool anyShows(const std::vector<const InstanceObject*>& instances, std::string_view property) {
    return std::any_of(instances.begin(), instances.end(),
                       [&](const InstanceObject* instance) { return hasValue(*instance, property); });
}

// Of a class that is not declared here, the properties of its first instance.
std::vector<std::string> propertyNames(const std::vector<const InstanceObject*>& instances,
                                       const ClassDeclaration* declaration) {
    std::vector<std::string> names;
    if (declaration) {
        for (const PropertyDeclaration& property : declaration->properties())
            names.push_back(property.name);
    } else if (!instances.empty()) {
        for (const NamedData& property : instances.front()->freeProperties())
            names.emplace_back(property.name);
    }
    return names;
}

// What is left when nobody chose: the properties in their order, as many as fit.
std::vector<ShownProperty> guessedColumns(const std::vector<const InstanceObject*>& instances,
                                          const ClassDeclaration* declaration, const Presentation& presentation,
                                          std::size_t width) {
    std::vector<ShownProperty> columns;
    std::size_t used = 0;
    for (const std::string& name : propertyNames(instances, declaration)) {
        if (isCommonKey(name) || !anyShows(instances, name)) continue;
        std::size_t widest = name.size();
        for (const InstanceObject* instance : instances)
            widest = std::max(widest, length(shortText(*instance, name, presentation)));
        used += std::min(widest, widestGuess) + 2;
        if (width > 0 && used > width && !columns.empty()) break;
        columns.push_back({printable(name), name, {}});
    }
    return columns;
}

// asked is null where no class was.
std::vector<ShownProperty> columnsFor(const std::vector<const InstanceObject*>& instances,
                                      const ClassDeclaration* asked, const Presentation& presentation,
                                      std::size_t width) {
    const ClassDeclaration* common = asked;
    if (!instances.empty() && instances.front()->declaration()) {
        const ClassDeclaration* first = instances.front()->declaration();
        const auto isFirst = [&](const InstanceObject* instance) { return instance->declaration() == first; };
        if (std::all_of(instances.begin(), instances.end(), isFirst)) common = first;
    }
    for (const ClassDeclaration* nearest = common; nearest; nearest = nearest->superclass()) {
        const Columns* chosen = presentation.columnsOf(nearest->name());
        if (!chosen) continue;
        std::vector<ShownProperty> columns = chosen->columns;
        std::erase_if(columns, [&](const ShownProperty& column) {
            return !anyShows(instances, column.property) && !anyShows(instances, column.otherwise);
        });
        if (!columns.empty()) return columns;
    }
    return guessedColumns(instances, common, presentation, width);
}

bool areOfSeveralClasses(const std::vector<const InstanceObject*>& instances) {
    return std::any_of(instances.begin(), instances.end(), [&](const InstanceObject* instance) {
        return !equalNames(instance->className(), instances.front()->className());
    });
}

std::string count(std::size_t number, std::string_view one, std::string_view many) {
    return std::to_string(number).append(" ").append(number == 1 ? one : many).append("\n");
}

std::string kindOf(const ClassDeclaration& declaration) {
    std::string kind = declaration.isAssociation()  ? "association"
                       : declaration.isIndication() ? "indication"
                                                    : "class";
    return declaration.isAbstract() ? "abstract " + kind : kind;
}

std::string instanceTable(const std::vector<const InstanceObject*>& instances,
                          const std::vector<ShownProperty>& columns, const Presentation& presentation,
                          const Layout& layout) {
    const bool tellsClass = areOfSeveralClasses(instances);
    Row headers;
    if (tellsClass) headers.emplace_back("Class");
    for (const ShownProperty& column : columns)
        headers.emplace_back(column.words);
    std::vector<Row> rows;
    for (const InstanceObject* instance : instances) {
        Row row;
        if (tellsClass) row.push_back(printable(instance->className()));
        for (const ShownProperty& column : columns) {
            const std::string& property = propertyToShow(*instance, column);
            row.push_back(hasValue(*instance, property) ? shortText(*instance, property, presentation) : "-");
        }
        rows.push_back(std::move(row));
    }
    return renderTable(headers, rows, layout) + count(instances.size(), "instance", "instances");
}

// Those of one class stand together, the classes in the order in which they first came.
std::vector<std::vector<const InstanceObject*>> byClass(const std::vector<const InstanceObject*>& instances) {
    std::vector<std::vector<const InstanceObject*>> groups;
    for (const InstanceObject* instance : instances) {
        const auto isGroup = [&](const std::vector<const InstanceObject*>& group) {
            return equalNames(group.front()->className(), instance->className());
        };
        const auto group = std::find_if(groups.begin(), groups.end(), isGroup);
        if (group == groups.end()) {
            groups.push_back({instance});
        } else {
            group->push_back(instance);
        }
    }
    return groups;
}

} // namespace

std::string tableOf(const std::vector<const InstanceObject*>& instances, const ClassDeclaration* asked,
                    const Presentation& presentation, const Layout& layout) {
    if (instances.empty()) return "no instances\n";
    return instanceTable(instances, columnsFor(instances, asked, presentation, layout.width), presentation, layout);
}

std::string tablesOf(const std::vector<const InstanceObject*>& instances, const Presentation& presentation,
                     const Layout& layout) {
    std::string text;
    for (const std::vector<const InstanceObject*>& group : byClass(instances)) {
        if (!text.empty()) text += '\n';
        text.append(printable(group.front()->className())).append("\n\n");
        text += instanceTable(group, columnsFor(group, nullptr, presentation, layout.width), presentation, layout);
    }
    return text.empty() ? "no instances\n" : text;
}

std::string listOf(const std::vector<const InstanceObject*>& instances, const Presentation& presentation) {
    std::string text;
    for (const InstanceObject* instance : instances) {
        if (!text.empty()) text += '\n';
        Arena arena;
        std::string path;
        instance->path(arena)->appendText(path);
        text.append(printable(path)).append("\n");
        instance->forEachSetProperty([&](std::string_view property, const PropertyDeclaration*, const CMPIData& data) {
            if ((data.state & CMPI_nullValue) != 0) return;
            text.append("  ").append(printable(property)).append(": ");
            text.append(fullText(*instance, property, presentation)).append("\n");
        });
    }
    return text.empty() ? "no instances\n" : text;
}

std::string linesOf(const std::vector<const ObjectPathObject*>& paths) {
    std::string text;
    for (const ObjectPathObject* path : paths) {
        std::string line;
        path->appendText(line);
        text.append(printable(line)).append("\n");
    }
    return text.empty() ? "no instances\n" : text;
}

std::string linesOf(const std::vector<ListedClass>& classes) {
    std::string text;
    for (const ListedClass& listed : classes)
        text.append(printable(listed.name)).append("\n");
    return text.empty() ? "no classes\n" : text;
}

std::string tableOf(const std::vector<ListedClass>& classes, const Registration& registration, const Layout& layout) {
    std::vector<Row> rows;
    for (const ListedClass& listed : classes) {
        const ClassDeclaration* declaration = listed.declaration;
        const bool isServed = declaration && (registration.serves(*declaration, ProviderKind::instance) ||
                                              registration.serves(*declaration, ProviderKind::indication));
        rows.push_back({printable(listed.name), declaration ? kindOf(*declaration) : "", isServed ? "yes" : "",
                        printable(listed.superclass)});
    }
    return renderTable({"Class", "Kind", "Served", "Superclass"}, rows, layout) +
           count(classes.size(), "class", "classes");
}

} // namespace cimhost::cli
