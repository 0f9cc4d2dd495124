#include "world_test.h"

namespace {

constexpr const char* profile = "Merolt_NIC_RegisteredProfile";
constexpr const char* otherElements[] = {"Merolt_NIC_NetworkPort", "Merolt_NIC_IPProtocolEndpoint"};

} // namespace

bool canBeFetched(const Path& path) { return !path[lookedUpKey(path.className)].empty(); }

void WorldTest::learn(const tavik::Fleet& fleet) {
    world.learn(fleet);
    for (const Family& each : families()) {
        learnClass(each.leftClass);
        learnClass(each.rightClass);
    }
    for (const char* className : otherElements)
        learnClass(className);
}

void WorldTest::learnClass(const std::string& className) {
    if (world.ends.count(className) > 0) return;
    Path path = classPath(className);
    if (className == profile) path.nameSpace = "root/PG_InterOp";
    const std::vector<Path> paths = names(className, path.nameSpace);
    const std::vector<Row> rows = instances(path).rows;
    ASSERT_EQ(paths.size(), rows.size()) << className;
    Ends& ends = world.ends[className];
    for (std::size_t index = 0; index < paths.size(); ++index)
        ends.push_back({paths[index], rows[index]});
}

void WorldTest::forEachFamily(const std::function<void()>& check) {
    for (const Family& each : families()) {
        SCOPED_TRACE(each.associationClass);
        family = each;
        check();
    }
}

Ends WorldTest::sources(bool left) const {
    Ends found = world.all(left ? family.leftClass : family.rightClass);
    if (left || family.leftClass != profile) return found;
    for (const char* className : otherElements) {
        const Ends& more = world.all(className);
        found.insert(found.end(), more.begin(), more.end());
    }
    return found;
}

Ends WorldTest::expectedFrom(const Path& source, bool sourceIsLeft) const {
    return sourceIsLeft ? rightEndsOf(family, world, source) : leftEndsOf(family, world, source);
}

std::optional<Path> WorldTest::fruitfulSource(bool left) const {
    for (const End& end : sources(left)) {
        if (!expectedFrom(end.path, left).empty()) return end.path;
    }
    return std::nullopt;
}

std::optional<std::pair<End, End>> WorldTest::somePair() const {
    for (const std::pair<End, End>& pair : pairsOf(family, world)) {
        if (canBeFetched(pair.first.path) && canBeFetched(pair.second.path)) return pair;
    }
    return std::nullopt;
}
