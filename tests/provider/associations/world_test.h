// A started host whose objects are known, and each association tried on it in turn.
#pragma once

#include "association_test.h"
#include "expected_families.h"
#include "expected_rows.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// False for an object that a client cannot fetch by its key: a hole in the port groups.
bool canBeFetched(const Path& path);

class WorldTest : public AssociationTest {
protected:
    /// Takes in what the provider lists; the fleet is the one it serves.
    void learn(const tavik::Fleet& fleet);

    /// Makes a check for each association in turn.
    void forEachFamily(const std::function<void()>& check);

    /// The objects of the association's one side; the profiles' association has three classes on the right.
    Ends sources(bool left) const;
    Ends expectedFrom(const Path& source, bool sourceIsLeft) const;
    /// A source that leads somewhere, if there is one.
    std::optional<Path> fruitfulSource(bool left) const;
    /// The first pair whose ends a client can fetch, if there is one.
    std::optional<std::pair<End, End>> somePair() const;
    Filters ofFamily() const { return {.associationClass = family.associationClass}; }

    Family family;
    World world;

private:
    void learnClass(const std::string& className);
};
