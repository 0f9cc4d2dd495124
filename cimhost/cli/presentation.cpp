#include "cimhost/cli/presentation.h"

#include "cimhost/cli/units.h"
#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <optional>
#include <span>
#include <stdexcept>

namespace cimhost::cli {

namespace {

struct Pair {
    std::string_view front;
    std::string_view back;
};

/// Both without blanks around; nothing where the separator is missing.
std::optional<Pair> cut(std::string_view text, std::string_view separator) {
    const std::size_t place = text.find(separator);
    if (place == std::string_view::npos) return std::nullopt;
    return Pair{trim(text.substr(0, place)), trim(text.substr(place + separator.size()))};
}

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

template <typename Rows>
auto findRow(Rows& rows, std::string_view className) {
    const auto isRow = [&](const auto& row) { return equalNames(row.className, className); };
    const auto row = std::find_if(rows.begin(), rows.end(), isRow);
    return row == rows.end() ? nullptr : &*row;
}

bool canHold(const ClassDeclaration& association, const ClassDeclaration& end) {
    const std::span<const PropertyDeclaration> properties = association.properties();
    return std::any_of(properties.begin(), properties.end(), [&](const PropertyDeclaration& property) {
        return property.isReference() && end.isA(property.referenceClass);
    });
}

class Reader {
public:
    Reader(const ClassRepository& from, std::string_view in) : repository(from), nameSpace(in) {}

    void take(std::string_view line) {
        if (line.front() == '[' && line.back() == ']') {
            current = &classNamed(trim(line.substr(1, line.size() - 2)));
            return;
        }
        const std::optional<Pair> pair = cut(line, "=");
        const Setting* setting = pair ? settingNamed(pair->front) : nullptr;
        if (!setting) throw std::runtime_error("a line reads [CLASS], or begins with " + settingNames());
        if (setting->isOfClass && !current) throw std::runtime_error("[CLASS] is missing in front of " + quoted(line));
        (this->*setting->take)(pair->back);
    }

    [[nodiscard]] Presentation result() && { return std::move(made); }

private:
    struct Setting {
        std::string_view name;
        bool isOfClass;
        void (Reader::*take)(std::string_view value);
    };

    static std::span<const Setting> settings() {
        static constexpr Setting rows[] = {
            {"root", false, &Reader::takeRoot},      {"alarming", false, &Reader::takeAlarming},
            {"label", true, &Reader::takeLabel},     {"below", true, &Reader::takePlacement},
            {"columns", true, &Reader::takeColumns}, {"unit", true, &Reader::takeUnit},
            {"zero", true, &Reader::takeZero},
        };
        return rows;
    }

    static const Setting* settingNamed(std::string_view name) {
        const auto isRow = [&](const Setting& row) { return row.name == name; };
        const auto row = std::find_if(settings().begin(), settings().end(), isRow);
        return row == settings().end() ? nullptr : &*row;
    }

    static std::string settingNames() {
        std::string names;
        for (const Setting& row : settings())
            names.append(names.empty() ? "" : ", ").append(row.name).append(" =");
        return names;
    }

    const ClassDeclaration& classNamed(std::string_view name) const {
        const ClassDeclaration* declaration = repository.find(nameSpace, name);
        if (!declaration) throw std::runtime_error("there is no class " + quoted(name));
        return *declaration;
    }

    const ClassDeclaration& associationNamed(std::string_view name) const {
        const ClassDeclaration& declaration = classNamed(name);
        if (!declaration.isAssociation()) throw std::runtime_error(declaration.name() + " is no association");
        return declaration;
    }

    /// One of the class or, as its rows count for them, of a subclass.
    static std::string propertyOf(const ClassDeclaration& declaration, std::string_view name) {
        if (declaration.property(name)) return std::string(name);
        for (const ClassDeclaration* subclass : declaration.allSubclasses()) {
            if (subclass->property(name)) return std::string(name);
        }
        throw std::runtime_error("class " + declaration.name() + " has no property " + quoted(name));
    }

    /// TEXT {PROPERTY} or TEXT {PROPERTY or PROPERTY}; the blank in front of the brace is the text's.
    [[nodiscard]] ShownProperty shownProperty(std::string_view text) const {
        const std::size_t opening = text.find('{');
        if (opening == std::string_view::npos || text.back() != '}') {
            throw std::runtime_error(quoted(text) + " is not written TEXT {PROPERTY}");
        }
        const std::string_view names = text.substr(opening + 1, text.size() - opening - 2);
        const std::optional<Pair> both = cut(names, " or ");
        ShownProperty shown{
            std::string(text.substr(0, opening)), propertyOf(*current, both ? both->front : trim(names)), {}};
        if (both) shown.otherwise = propertyOf(*current, both->back);
        return shown;
    }

    void takeRoot(std::string_view value) { made.tree.rootClass = classNamed(value).name(); }

    void takeAlarming(std::string_view value) {
        for (const std::string_view part : split(value, ","))
            made.alarming.emplace_back(trim(part));
    }

    void takeLabel(std::string_view value) {
        refuseSecond(made.labels, "label");
        const std::vector<std::string_view> parts = split(value, "|");
        if (parts.empty()) throw std::runtime_error("a label begins with a word");
        Label label{current->name(), std::string(trim(parts.front())), {}};
        for (std::size_t index = 1; index < parts.size(); ++index)
            label.parts.push_back(shownProperty(trim(parts[index])));
        made.labels.push_back(std::move(label));
    }

    void takeColumns(std::string_view value) {
        refuseSecond(made.tables, "columns");
        Columns table{current->name(), {}};
        for (const std::string_view part : split(value, "|")) {
            ShownProperty column = shownProperty(trim(part));
            column.words = trim(column.words);
            table.columns.push_back(std::move(column));
        }
        made.tables.push_back(std::move(table));
    }

    /// {PROPERTY} UNIT
    void takeUnit(std::string_view value) {
        const std::optional<Pair> shown = afterProperty(value);
        if (!shown) throw std::runtime_error(quoted(value) + " is not written {PROPERTY} UNIT");
        ShownUnit row{current->name(), propertyOf(*current, shown->front), std::string(shown->back)};
        if (!bitsPerSecond(row.unit)) {
            throw std::runtime_error(quoted(std::string_view(row.unit)) +
                                     " is no unit that is known: bit / second, or a power of ten of "
                                     "it, such as bit / second * 10^6");
        }
        if (!made.unitOf(row.className, row.property).empty()) {
            throw std::runtime_error(row.property + " of " + row.className + " has a unit already");
        }
        made.units.push_back(std::move(row));
    }

    /// "{PROPERTY} REST": the two.
    [[nodiscard]] std::optional<Pair> afterProperty(std::string_view text) const {
        const std::size_t closing = text.find('}');
        if (!text.starts_with('{') || closing == std::string_view::npos) return std::nullopt;
        return Pair{trim(text.substr(1, closing - 1)), trim(text.substr(closing + 1))};
    }

    /// {PROPERTY} WORDS unless {OTHER} VALUE, VALUE
    void takeZero(std::string_view value) {
        const std::optional<Pair> halves = cut(value, " unless ");
        const std::optional<Pair> shown = halves ? afterProperty(halves->front) : std::nullopt;
        const std::optional<Pair> other = halves ? afterProperty(halves->back) : std::nullopt;
        if (!shown || !other || shown->back.empty() || other->back.empty()) {
            throw std::runtime_error(quoted(value) + " is not written {PROPERTY} WORDS unless {PROPERTY} VALUE, VALUE");
        }
        ShownZero row{current->name(),
                      propertyOf(*current, shown->front),
                      std::string(shown->back),
                      propertyOf(*current, other->front),
                      {}};
        for (const std::string_view part : split(other->back, ","))
            row.values.emplace_back(trim(part));
        if (made.zeroOf(row.className, row.property)) {
            throw std::runtime_error(row.property + " of " + row.className + " has words for 0 already");
        }
        made.zeros.push_back(std::move(row));
    }

    template <typename Rows>
    void refuseSecond(const Rows& rows, const std::string& what) const {
        if (findRow(rows, current->name())) throw std::runtime_error(current->name() + " has " + what + " already");
    }

    void takePlacement(std::string_view value) {
        if (const std::optional<Pair> road = cut(value, " through ")) return addRoad(road->front, road->back);
        const std::optional<Pair> keys = cut(value, " where ");
        const std::optional<Pair> names = keys ? cut(keys->back, " begins with ") : std::nullopt;
        if (!names) {
            throw std::runtime_error(quoted(value) +
                                     " is neither CLASS through ASSOCIATION nor CLASS where KEY begins with KEY");
        }
        const ClassDeclaration& parent = classNamed(keys->front);
        made.tree.placements.push_back(
            {current->name(), parent.name(), {}, propertyOf(*current, names->front), propertyOf(parent, names->back)});
    }

    void addRoad(std::string_view parentName, std::string_view associations) {
        const ClassDeclaration& parent = classNamed(parentName);
        Placement placement{current->name(), parent.name(), {}, {}, {}};
        const std::vector<std::string_view> steps = split(associations, ",");
        if (steps.empty() || steps.size() > placement.road.size()) {
            throw std::runtime_error("a way has one association or two");
        }
        for (std::size_t step = 0; step < steps.size(); ++step)
            placement.road[step] = associationNamed(trim(steps[step])).name();
        requireEnd(trim(steps.front()), *current);
        requireEnd(trim(steps.back()), parent);
        made.tree.placements.push_back(std::move(placement));
    }

    void requireEnd(std::string_view association, const ClassDeclaration& end) const {
        if (canHold(associationNamed(association), end)) return;
        throw std::runtime_error(std::string(association) + " has no reference to " + end.name());
    }

    const ClassRepository& repository;
    std::string_view nameSpace;
    const ClassDeclaration* current = nullptr;
    Presentation made;
};

} // namespace

const std::string& propertyToShow(const InstanceObject& instance, const ShownProperty& shown) {
    if (shown.otherwise.empty()) return shown.property;
    const CMPIData* data = instance.value(shown.property);
    const bool hasValue = data && (data->state & CMPI_nullValue) == 0;
    return hasValue ? shown.property : shown.otherwise;
}

const Label* Presentation::labelOf(std::string_view className) const { return findRow(labels, className); }

const Columns* Presentation::columnsOf(std::string_view className) const { return findRow(tables, className); }

std::string_view Presentation::unitOf(std::string_view className, std::string_view property) const {
    for (const ShownUnit& row : units) {
        if (equalNames(row.className, className) && equalNames(row.property, property)) return row.unit;
    }
    return {};
}

const ShownZero* Presentation::zeroOf(std::string_view className, std::string_view property) const {
    for (const ShownZero& row : zeros) {
        if (equalNames(row.className, className) && equalNames(row.property, property)) return &row;
    }
    return nullptr;
}

Presentation readPresentation(const std::filesystem::path& file, const ClassRepository& repository,
                              std::string_view nameSpace) {
    Reader reader(repository, nameSpace);
    readLines(file, [&](std::string_view line) { reader.take(line); });
    return std::move(reader).result();
}

} // namespace cimhost::cli
