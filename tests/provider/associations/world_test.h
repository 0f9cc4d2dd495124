// A started host whose objects are known, and each association tried on it in turn. What an association is called and
// what it joins comes from its class in MOF.
#pragma once

#include "association_test.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// An object at an end of an association.
struct End {
    Path path;
    Row instance;
};

using Ends = std::vector<End>;

/// An association as its class declares it.
struct Family {
    std::string associationClass;
    std::string baseClass;
    std::string role1;
    std::string leftClass;
    std::string role2;
    std::string rightClass;
};

/// The key by which an object is looked for.
std::string lookedUpKey(const Path& path);
/// False for an object that a client cannot fetch by its key: a hole in the port groups.
bool canBeFetched(const Path& path);

/// The association's path for a pair, as its enumeration gives it.
Path associationPath(const Family& family, const Path& left, const Path& right,
                     const std::string& nameSpace = "root/merolt_cmpi");
/// The same as an instance; what some associations carry beside their two roles is not in it.
Row associationInstance(const Family& family, const Path& left, const Path& right,
                        const std::string& nameSpace = "root/merolt_cmpi");

class WorldTest : public AssociationTest {
protected:
    /// Takes in what the provider lists.
    void learn();
    /// Starts a host of many cards and takes in what it lists.
    void serveCards();

    Reply askFor(Operation operation, const Path& source, const std::string& association) {
        return ask(operation, source, {.associationClass = association});
    }

    /// Every association, in the order of their classes.
    std::vector<Family> families() const;
    Family familyOf(const std::string& associationClass) const;
    /// Makes a check for each association in turn.
    void forEachFamily(const std::function<void()>& check);

    const Ends& all(const std::string& className) const { return world.at(className); }
    /// The objects that the association's one side may have by its class.
    Ends sources(bool left) const;
    /// A source of the association that leads somewhere, if there is one.
    std::optional<Path> fruitfulSource(bool left);
    /// The first pair whose ends a client can fetch, if there is one.
    std::optional<Path> somePair();
    Filters ofFamily() const { return {.associationClass = family.associationClass}; }

    Family family;
    /// Each class with its objects, in the order of their listing.
    std::map<std::string, Ends> world;

private:
    void learnClass(const std::string& className);
};
