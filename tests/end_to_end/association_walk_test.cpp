// From the computer system every object can be reached over associations, and from every object the computer system.
// Where the model prescribes a dead end, it stands here with its reason.
#include "demonstration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace cimhost {
namespace {

using testing_support::Demonstration;

using Graph = std::map<std::string, std::vector<std::string>>;

// A client follows what he is given: also a path that no enumeration shows.
const Graph& associations() {
    static const Graph graph = [] {
        Demonstration& demonstration = Demonstration::instance();
        std::vector<std::string> open(demonstration.objects().begin(), demonstration.objects().end());
        Graph made;
        while (!open.empty()) {
            const std::string object = std::move(open.back());
            open.pop_back();
            if (made.contains(object)) continue;
            std::vector<std::string>& ends = made[object];
            ends = demonstration.associatorNames(object, "");
            open.insert(open.end(), ends.begin(), ends.end());
        }
        return made;
    }();
    return graph;
}

Graph reversed(const Graph& graph) {
    Graph back;
    for (const auto& [from, ends] : graph) {
        for (const std::string& end : ends)
            back[end].push_back(from);
    }
    return back;
}

std::string computerSystem() {
    for (const std::string& object : Demonstration::instance().objects()) {
        if (object.find(":Merolt_Adapter_ComputerSystem.") != std::string::npos) return object;
    }
    return {};
}

std::set<std::string> reachable(const Graph& graph, const std::string& start) {
    std::set<std::string> reached = {start};
    std::vector<std::string> open = {start};
    while (!open.empty()) {
        const std::string from = std::move(open.back());
        open.pop_back();
        const auto ends = graph.find(from);
        if (ends == graph.end()) continue;
        for (const std::string& end : ends->second) {
            if (reached.insert(end).second) open.push_back(end);
        }
    }
    return reached;
}

// An object is meant whose path contains the text.
struct DeadEnd {
    std::string path;
    std::string reason;
};

void expectAllReached(const std::set<std::string>& reached, const std::vector<DeadEnd>& deadEnds) {
    std::vector<bool> isUsed(deadEnds.size());
    for (const std::string& object : Demonstration::instance().objects()) {
        const auto row = std::find_if(deadEnds.begin(), deadEnds.end(), [&](const DeadEnd& deadEnd) {
            return object.find(deadEnd.path) != std::string::npos;
        });
        if (row == deadEnds.end()) {
            EXPECT_TRUE(reached.contains(object)) << object;
            continue;
        }
        isUsed[static_cast<std::size_t>(row - deadEnds.begin())] = true;
        EXPECT_FALSE(reached.contains(object)) << object << " is said to be a dead end: " << row->reason;
    }
    for (std::size_t number = 0; number < deadEnds.size(); ++number)
        EXPECT_TRUE(isUsed[number]) << "no object has " << deadEnds[number].path;
}

const std::string otherNumber = "a card's Tag, and no serial number, is compared with what belongs to it; this card's "
                                "Tag is a UUID";
const std::string noElement = "no element conforms to this profile";

std::vector<DeadEnd> notReached() {
    std::vector<DeadEnd> rows = {
        {"root/merolt_cmpi:Merolt_NIC_RegisteredProfile.", "associations name the profiles of the interop namespace"},
        {":Merolt_Adapter_Product.", otherNumber},
    };
    for (const char* number : {"4", "5", "6", "7"}) {
        rows.push_back(
            {"root/PG_InterOp:Merolt_NIC_RegisteredProfile.InstanceID=\"" + std::string(number) + "\"", noElement});
    }
    return rows;
}

std::vector<DeadEnd> withoutReturn() {
    std::vector<DeadEnd> rows = {
        {":Merolt_FCHBA_LogicalPortGroup.InstanceID=\"\"",
         "the second port of a node leaves an empty group, whose key names no computer system"},
    };
    for (const char* tag : {"0a6cb1de-16a0-43bb-8d20-4d4c00042001", "3c8e71aa-41f2-4b0d-a7c5-4d4c00d00001"})
        rows.push_back({":Merolt_Adapter_PhysicalPackage.Tag=\"" + std::string(tag) + "\"", otherNumber});
    for (const char* name : {"MF1601", "MF1602", "MF0401", "MZ1021", "ZKM4102"}) {
        rows.push_back({":Merolt_Adapter_Product.Name=\"" + std::string(name) + "\"",
                        "it leads to its card and no further: " + otherNumber});
    }
    for (const char* number : {"4", "5", "6", "7"}) {
        rows.push_back(
            {"root/PG_InterOp:Merolt_NIC_RegisteredProfile.InstanceID=\"" + std::string(number) + "\"", noElement});
        rows.push_back(
            {"root/merolt_cmpi:Merolt_NIC_RegisteredProfile.InstanceID=\"" + std::string(number) + "\"", noElement});
    }
    return rows;
}

TEST(AssociationWalk, EveryObjectIsReachedFromTheComputerSystem) {
    expectAllReached(reachable(associations(), computerSystem()), notReached());
}

TEST(AssociationWalk, EveryObjectLeadsToTheComputerSystem) {
    expectAllReached(reachable(reversed(associations()), computerSystem()), withoutReturn());
}

// The Ethernet installation service is named with the storage service's CreationClassName by two of its associations.
TEST(AssociationWalk, EveryEndOfAnAssociationExistsButForOneService) {
    std::set<std::string> unknown;
    for (const auto& [from, ends] : associations()) {
        for (const std::string& end : ends) {
            if (!Demonstration::instance().objects().contains(end)) unknown.insert(end);
        }
    }
    ASSERT_EQ(unknown.size(), 1U);
    EXPECT_NE(unknown.begin()->find(":Merolt_NIC_SoftwareInstallationService."), std::string::npos);
    EXPECT_NE(unknown.begin()->find("CreationClassName=\"Merolt_FCHBA_SoftwareInstallationService\""),
              std::string::npos);
}

} // namespace
} // namespace cimhost
