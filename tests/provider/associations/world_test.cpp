#include "world_test.h"

#include "fleets.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr const char* profile = "Merolt_NIC_RegisteredProfile";

bool isOurs(const cimhost::ClassDeclaration& declaration) {
    return declaration.name().rfind("Merolt_", 0) == 0 && !declaration.isIndication();
}

} // namespace

std::string lookedUpKey(const Path& path) {
    for (const char* name : {"Tag", "DeviceID", "InstanceID", "IdentifyingNumber", "Name"}) {
        const auto isNamed = [&](const Path::Key& key) { return key.name == name; };
        if (std::any_of(path.keys.begin(), path.keys.end(), isNamed)) return name;
    }
    throw std::logic_error("no key of " + path.text() + " is one that objects are looked for by");
}

bool canBeFetched(const Path& path) { return !path[lookedUpKey(path)].empty(); }

Path associationPath(const Family& family, const Path& left, const Path& right, const std::string& nameSpace) {
    return {nameSpace,
            family.associationClass,
            {{family.role1, std::vector<Path>{left}}, {family.role2, std::vector<Path>{right}}}};
}

Row associationInstance(const Family& family, const Path& left, const Path& right, const std::string& nameSpace) {
    Row row = rowOf(associationPath(family, left, right, nameSpace));
    std::sort(row.values.begin(), row.values.end());
    return row;
}

void WorldTest::serveCards() {
    serve(manyCards());
    learn();
}

void WorldTest::learn() {
    world.clear();
    for (const cimhost::ClassDeclaration* declaration : classes.classes(implementationNamespace)) {
        if (isOurs(*declaration) && !declaration->isAssociation()) learnClass(std::string(declaration->name()));
    }
}

void WorldTest::learnClass(const std::string& className) {
    Path path = classPath(className);
    if (className == profile) path.nameSpace = "root/PG_InterOp";
    const std::vector<Path> paths = names(className, path.nameSpace);
    const std::vector<Row> rows = instances(path).rows;
    ASSERT_EQ(paths.size(), rows.size()) << className;
    Ends& ends = world[className];
    for (std::size_t index = 0; index < paths.size(); ++index)
        ends.push_back({paths[index], rows[index]});
}

std::vector<Family> WorldTest::families() const {
    std::vector<Family> found;
    for (const cimhost::ClassDeclaration* declaration : classes.classes(implementationNamespace)) {
        if (isOurs(*declaration) && declaration->isAssociation())
            found.push_back(familyOf(std::string(declaration->name())));
    }
    return found;
}

Family WorldTest::familyOf(const std::string& associationClass) const {
    const cimhost::ClassDeclaration* declaration = classes.find(implementationNamespace, associationClass);
    if (!declaration || !declaration->superclass()) throw std::logic_error("no association " + associationClass);
    std::vector<const cimhost::PropertyDeclaration*> roles;
    for (const cimhost::PropertyDeclaration& property : declaration->properties()) {
        if (property.isReference()) roles.push_back(&property);
    }
    if (roles.size() != 2) throw std::logic_error(associationClass + " has not two references");
    return {associationClass, std::string(declaration->superclass()->name()),
            roles[0]->name,   roles[0]->referenceClass,
            roles[1]->name,   roles[1]->referenceClass};
}

void WorldTest::forEachFamily(const std::function<void()>& check) {
    for (const Family& each : families()) {
        SCOPED_TRACE(each.associationClass);
        family = each;
        check();
    }
}

Ends WorldTest::sources(bool left) const {
    const std::string& wanted = left ? family.leftClass : family.rightClass;
    Ends found;
    for (const auto& [className, ends] : world) {
        if (classes.find(implementationNamespace, className)->isA(wanted))
            found.insert(found.end(), ends.begin(), ends.end());
    }
    return found;
}

std::optional<Path> WorldTest::fruitfulSource(bool left) {
    for (const End& end : sources(left)) {
        if (!ask(Operation::associatorNames, end.path, ofFamily()).rows.empty()) return end.path;
    }
    return std::nullopt;
}

std::optional<Path> WorldTest::somePair() {
    for (const Path& pair : names(family.associationClass)) {
        if (canBeFetched(pair.reference(family.role1)) && canBeFetched(pair.reference(family.role2))) return pair;
    }
    return std::nullopt;
}
