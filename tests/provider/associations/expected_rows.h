// Works out which objects an association joins, from what the provider lists of its two classes and from the cards
// themselves. Searches from the two sides are told apart: several associations answer them by different keys.
#pragma once

#include "association_test.h"
#include "expected_families.h"

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
using Pairs = std::vector<std::pair<End, End>>;

/// A storage function and the jack it runs over.
struct StorageFact {
    std::string cardSerial;
    unsigned portNumber = 0;
    std::string nodeName;
    std::string portName;
    std::string headerNodeName; ///< the names in front of its record
    std::string headerPortName;
};

/// An Ethernet function and the jack it runs over.
struct NicFact {
    std::string cardSerial;
    unsigned portNumber = 0;
    std::string macAddress;
    std::optional<std::string> moduleSerial;
    std::string packageTag; ///< the card's UUID as this function tells it, or its serial number
};

/// What there is to be joined.
struct World {
    std::map<std::string, Ends> ends;
    std::vector<StorageFact> storage; ///< in the order of the tree
    std::vector<NicFact> nics;        ///< the same; a card's functions stand together

    const Ends& all(const std::string& className) const { return ends.at(className); }
    const End& only(const std::string& className) const { return ends.at(className).at(0); }
    std::string systemName() const { return only("Merolt_Adapter_ComputerSystem").path["Name"]; }
    void learn(const tavik::Fleet& fleet);
};

/// What enumerations give, in their order.
Pairs pairsOf(const Family& family, const World& world);
/// What is found from an object of the right class, in order.
Ends leftEndsOf(const Family& family, const World& world, const Path& source);
/// What is found from an object of the left class, in order.
Ends rightEndsOf(const Family& family, const World& world, const Path& source);

/// The association's path for a pair, as its enumeration gives it.
Path associationPath(const Family& family, const Path& left, const Path& right,
                     const std::string& nameSpace = "root/merolt_cmpi");
/// The same as an instance; the further property is not in it.
Row associationInstance(const Family& family, const Path& left, const Path& right,
                        const std::string& nameSpace = "root/merolt_cmpi");
void setFurtherProperty(const Family& family, Row& row);

/// What an operation delivers from a source, given what it finds.
std::vector<Row> expectedRows(Operation operation, const Family& family, const Path& source, bool sourceIsLeft,
                              const Ends& found);
