#include "cimhost/cli/object_tree.h"

#include "cimhost/cli/values_text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace cimhost::cli {

namespace {

using Numbers = std::vector<std::size_t>;

std::string textOf(const ObjectPathObject& path) {
    std::string text;
    path.appendText(text);
    return text;
}

std::string pathText(const InstanceObject& instance) {
    Arena arena;
    return textOf(*instance.path(arena));
}

std::string valueText(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    return data ? plainText(*data) : std::string();
}

// Everything that an instance says, to tell apart those that bear the same path.
std::string contentText(const InstanceObject& instance) {
    std::string text;
    instance.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        text.append(name).append("=").append(plainText(data)).append("\n");
    });
    return text;
}

// Those of the classes that the provider serves. A server may have the provider of another day, with fewer of them.
class ServedClasses {
public:
    ServedClasses(ObjectSource& asked, std::string_view where) : source(asked), nameSpace(where) {}

    std::vector<const InstanceObject*> instances(RequestScope& scope) {
        std::vector<const InstanceObject*> all;
        for (const ClassDeclaration* declaration : source.declaredClasses(nameSpace)) {
            if (!isWanted(*declaration)) continue;
            for (const InstanceObject* instance : instancesOf(scope, *declaration)) {
                if (instance->declaration() == declaration) all.push_back(instance);
            }
        }
        if (!hasAny && firstFailure) throw CimFailure(*firstFailure);
        return all;
    }

private:
    [[nodiscard]] bool isWanted(const ClassDeclaration& declaration) const {
        return !declaration.isAssociation() && source.registration().serves(declaration, ProviderKind::instance);
    }

    std::vector<const InstanceObject*> instancesOf(RequestScope& scope, const ClassDeclaration& declaration) {
        try {
            auto found = source.enumerateInstances(scope, nameSpace, declaration.name());
            hasAny = true;
            return found;
        } catch (const CimFailure& failure) {
            const CMPIrc code = failure.error().code;
            if (code != CMPI_RC_ERR_INVALID_CLASS && code != CMPI_RC_ERR_NOT_SUPPORTED) throw;
            if (!firstFailure) firstFailure = failure.error();
            return {};
        }
    }

    ObjectSource& source;
    std::string_view nameSpace;
    bool hasAny = false;
    std::optional<CimError> firstFailure;
};

// Where associations lead from an object, told in numbers of objects. Answers are remembered: a class has more than one
// placement, and roads share their steps.
class Roads {
public:
    Roads(ObjectSource& asked, std::vector<const InstanceObject*> instances)
        : source(asked), objects(std::move(instances)) {
        for (std::size_t number = 0; number < objects.size(); ++number)
            byPath[pathText(*objects[number])].push_back(number);
        for (const auto& [path, numbers] : byPath) {
            if (numbers.size() > 1) noteTwins(numbers);
        }
    }

    [[nodiscard]] const std::vector<const InstanceObject*>& all() const { return objects; }

    /// One of several objects that bear the same path and say the same.
    struct Twin {
        std::size_t first; ///< of them
        std::size_t place; ///< among them, from 0
    };

    /// Null for an object whose path is its own.
    [[nodiscard]] const Twin* twin(std::size_t number) const {
        const auto known = twins.find(number);
        return known == twins.end() ? nullptr : &known->second;
    }

    [[nodiscard]] Numbers ofClass(std::string_view className) const {
        Numbers numbers;
        for (std::size_t number = 0; number < objects.size(); ++number) {
            if (equalNames(objects[number]->className(), className)) numbers.push_back(number);
        }
        return numbers;
    }

    Numbers follow(std::size_t from, std::string_view first, std::string_view second, std::string_view toClass) {
        Numbers reached = step(from, first);
        if (!second.empty()) {
            Numbers further;
            for (const std::size_t middle : reached) {
                const Numbers& next = step(middle, second);
                further.insert(further.end(), next.begin(), next.end());
            }
            reached = std::move(further);
        }
        std::erase_if(reached, [&](std::size_t number) { return !equalNames(objects[number]->className(), toClass); });
        return reached;
    }

private:
    void noteTwins(const Numbers& ofOnePath) {
        std::map<std::string, Numbers> byContent;
        for (const std::size_t number : ofOnePath) {
            Numbers& same = byContent[contentText(*objects[number])];
            same.push_back(number);
            twins[number] = {same.front(), same.size() - 1};
        }
    }

    const Numbers& step(std::size_t from, std::string_view association) {
        const auto [place, isNew] = steps.try_emplace({from, std::string(association)});
        if (isNew) place->second = ask(from, association);
        return place->second;
    }

    Numbers ask(std::size_t from, std::string_view association) {
        RequestScope scope(source.broker());
        const AssociationFilter filter{std::string(association), "", "", ""};
        Numbers reached;
        try {
            for (const InstanceObject* instance :
                 source.associators(scope, *objects[from]->path(scope.arena()), filter)) {
                if (const std::optional<std::size_t> number = find(*instance, reached)) reached.push_back(*number);
            }
        } catch (const CimFailure& failure) {
            if (failure.error().code != CMPI_RC_ERR_NOT_SUPPORTED) throw;
        }
        return reached;
    }

    // Some objects share their path: their content tells them apart, and where that is the same too, each of them is
    // found once.
    [[nodiscard]] std::optional<std::size_t> find(const InstanceObject& instance, const Numbers& found) const {
        const auto known = byPath.find(pathText(instance));
        if (known == byPath.end()) return std::nullopt;
        if (known->second.size() == 1) return known->second.front();
        const std::string content = contentText(instance);
        for (const std::size_t number : known->second) {
            const bool isNew = std::find(found.begin(), found.end(), number) == found.end();
            if (isNew && contentText(*objects[number]) == content) return number;
        }
        return known->second.front();
    }

    ObjectSource& source;
    std::vector<const InstanceObject*> objects;
    std::unordered_map<std::string, Numbers> byPath;
    std::unordered_map<std::size_t, Twin> twins;
    std::map<std::pair<std::size_t, std::string>, Numbers> steps;
};

class Grower {
public:
    Grower(Roads& between, const TreePlan& how) : roads(between), plan(how), downward(how.placements.size()) {
        const std::size_t count = roads.all().size();
        children.resize(count);
        isPlaced.resize(count);
    }

    ObjectTree grow() {
        const std::size_t count = roads.all().size();
        std::vector<std::optional<std::size_t>> parents(count);
        for (std::size_t number = 0; number < count; ++number) {
            parents[number] = parentOf(number);
            if (parents[number]) children[*parents[number]].push_back(number);
        }
        ObjectTree tree;
        for (const std::size_t root : roads.ofClass(plan.rootClass))
            tree.roots.push_back(take(root));
        std::vector<TreeNode>& others = plan.rootClass.empty() ? tree.roots : tree.apart;
        for (std::size_t number = 0; number < count; ++number) {
            if (!isPlaced[number] && !parents[number]) others.push_back(take(number));
        }
        // Two objects that each call the other their parent would be missing otherwise.
        for (std::size_t number = 0; number < count; ++number) {
            if (!isPlaced[number]) others.push_back(take(number));
        }
        return tree;
    }

private:
    std::optional<std::size_t> parentOf(std::size_t number) {
        const std::string_view className = roads.all()[number]->className();
        for (std::size_t row = 0; row < plan.placements.size(); ++row) {
            const Placement& placement = plan.placements[row];
            if (!equalNames(placement.child, className)) continue;
            if (const auto parent = placement.road[0].empty() ? byKey(number, placement) : byRoad(number, row)) {
                return parent;
            }
        }
        return std::nullopt;
    }

    std::optional<std::size_t> byRoad(std::size_t number, std::size_t row) {
        if (const Roads::Twin* twin = roads.twin(number)) {
            if (const auto parent = fromParents(row, twin->first, twin->place)) return parent;
        }
        const Placement& placement = plan.placements[row];
        const Numbers reached = roads.follow(number, placement.road[0], placement.road[1], placement.parent);
        return reached.empty() ? fromParents(row, number, 0) : reached.front();
    }

    // Objects that share a path would all be told the parents of the first of them. But each of the parents names one
    // of them, so they take their parents in turn.
    std::optional<std::size_t> fromParents(std::size_t row, std::size_t child, std::size_t place) {
        const std::map<std::size_t, Numbers>& found = namedByParents(row);
        const auto parents = found.find(child);
        if (parents == found.end()) return std::nullopt;
        return parents->second[std::min(place, parents->second.size() - 1)];
    }

    // The same road from its other end: each child with the parents that name it.
    const std::map<std::size_t, Numbers>& namedByParents(std::size_t row) {
        if (downward[row]) return *downward[row];
        std::map<std::size_t, Numbers>& found = downward[row].emplace();
        const Placement& placement = plan.placements[row];
        const bool isLong = !placement.road[1].empty();
        for (const std::size_t parent : roads.ofClass(placement.parent)) {
            for (const std::size_t child : roads.follow(parent, placement.road[isLong ? 1 : 0],
                                                        isLong ? placement.road[0] : "", placement.child)) {
                Numbers& parents = found[child];
                if (parents.empty() || parents.back() != parent) parents.push_back(parent);
            }
        }
        return found;
    }

    // The longest key counts, should one be the beginning of another.
    std::optional<std::size_t> byKey(std::size_t number, const Placement& placement) const {
        const std::string key = valueText(*roads.all()[number], placement.childKey);
        std::optional<std::size_t> best;
        std::size_t longest = 0;
        for (const std::size_t parent : roads.ofClass(placement.parent)) {
            const std::string beginning = valueText(*roads.all()[parent], placement.parentKey) + "_";
            if (beginning.size() <= std::max<std::size_t>(longest, 1) || key.rfind(beginning, 0) != 0) continue;
            best = parent;
            longest = beginning.size();
        }
        return best;
    }

    [[nodiscard]] std::size_t rankOf(std::size_t number) const {
        const auto isRow = [&](const Placement& row) {
            return equalNames(row.child, roads.all()[number]->className());
        };
        return static_cast<std::size_t>(std::find_if(plan.placements.begin(), plan.placements.end(), isRow) -
                                        plan.placements.begin());
    }

    TreeNode take(std::size_t number) {
        isPlaced[number] = true;
        Numbers& below = children[number];
        std::stable_sort(below.begin(), below.end(),
                         [&](std::size_t left, std::size_t right) { return rankOf(left) < rankOf(right); });
        TreeNode node{roads.all()[number], {}};
        for (const std::size_t child : below) {
            if (!isPlaced[child]) node.children.push_back(take(child));
        }
        return node;
    }

    Roads& roads;
    const TreePlan& plan;
    std::vector<Numbers> children;
    std::vector<bool> isPlaced;
    std::vector<std::optional<std::map<std::size_t, Numbers>>> downward; // by placement
};

} // namespace

ObjectTree growTree(ObjectSource& source, RequestScope& scope, std::string_view nameSpace, const TreePlan& plan) {
    Roads roads(source, ServedClasses(source, nameSpace).instances(scope));
    return Grower(roads, plan).grow();
}

} // namespace cimhost::cli
