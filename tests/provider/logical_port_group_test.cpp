// What a client sees of Merolt_FCHBA_LogicalPortGroup, the node that ports share: holes in the list included.
#include "class_support.h"

#include "classes/storage/logical_port_group.h"

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* group = "Merolt_FCHBA_LogicalPortGroup";

class LogicalPortGroupTest : public ClassTest {
protected:
    /// Starts with one function for each letter, which names its node.
    void startWithNodes(const std::string& letters) {
        std::vector<tavik::Function> functions;
        for (const char letter : letters) {
            auto function = storageFunction(static_cast<std::uint32_t>(functions.size() + 1), chips::chip7);
            function.nodeName = worldWideName(static_cast<std::uint8_t>(letter));
            functions.emplace_back(function);
        }
        startWith({card("A00007", std::move(functions))});
    }

    /// The letters of the groups that an enumeration shows, "-" for a hole.
    std::string nodesShown() {
        std::string letters;
        for (const TestObject& object : enumerateInstances(group).objects) {
            const std::string name = object["ElementName"];
            letters += name == "string \"\"" ? '-' : static_cast<char>(std::stoi(name.substr(22, 2), nullptr, 16));
        }
        return letters;
    }
};

TEST_F(LogicalPortGroupTest, InstanceHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1234"}})})});
    EXPECT_EQ(asSet(group), R"(
InstanceID: string "192.0.2.10_AB1234_20000002C90000F1_20000002C9000001"
ElementName: string "20000002C90000F1"
Name: string "20000002C90000F1"
NameFormat: string "WWN"
)");
    EXPECT_EQ(pathAsSet(group), R"(
InstanceID: string "192.0.2.10_AB1234_20000002C90000F1_20000002C9000001"
)");
}

TEST_F(LogicalPortGroupTest, EveryFunctionWithANodeOfItsOwnHasAGroupWhoseKeyEndsInItsPortName) {
    startWithNodes("ABC");
    EXPECT_EQ(nodesShown(), "ABC");
    EXPECT_EQ(valuesOf(group, "InstanceID"), allInQuotes({"192.0.2.10_A00007_20000002C9000041_20000002C9000001",
                                                          "192.0.2.10_A00007_20000002C9000042_20000002C9000002",
                                                          "192.0.2.10_A00007_20000002C9000043_20000002C9000003"}));
}

// A record stands at the place of its function in the walk, and the count only counts records.

TEST_F(LogicalPortGroupTest, NodeBehindARepeatedOneIsOutOfSightAndAnEmptyInstanceStandsInItsPlace) {
    startWithNodes("AAB");
    EXPECT_EQ(nodesShown(), "A-");
    EXPECT_EQ(enumerateInstances(group).objects[1].table(), "InstanceID: string \"\"\n"
                                                            "ElementName: string \"\"\n"
                                                            "Name: string \"\"\n"
                                                            "NameFormat: string \"WWN\"\n");
    const std::string hidden = "192.0.2.10_A00007_20000002C9000042_20000002C9000003";
    EXPECT_EQ(getInstance(group, {{"InstanceID", hidden}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(storage::g_logicalPortGroupList[2].instanceID.text(), hidden);
}

TEST_F(LogicalPortGroupTest, HoleIsNotFoundByItsEmptyKey) {
    switchLogsOn();
    startWithNodes("AAB");
    takeLogLines();
    EXPECT_EQ(getInstance(group, {{"InstanceID", ""}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_TRUE(
        inOrder(takeLogLines(), {"getInstance_LogicalPortGroup: Found a device that has the same InstanceID "
                                 "but the entry is invalid.  Move on...",
                                 "getInstance_LogicalPortGroup: Error no matching instance found, KeyValue=!"}));
}

struct NodesRow {
    const char* nodes;
    const char* shown;
};

void PrintTo(const NodesRow& row, std::ostream* stream) { *stream << row.nodes; }

class RepeatedNodesTest : public LogicalPortGroupTest, public testing::WithParamInterface<NodesRow> {};

TEST_P(RepeatedNodesTest, LeaveHolesBehindWhichANodeCanBeListedTwice) {
    startWithNodes(GetParam().nodes);
    EXPECT_EQ(nodesShown(), GetParam().shown);
    EXPECT_EQ(enumerateInstanceNames(group).objects.size(), nodesShown().size());
}

INSTANTIATE_TEST_SUITE_P(Nodes, RepeatedNodesTest,
                         testing::Values(NodesRow{"A", "A"}, NodesRow{"AA", "A"}, NodesRow{"AAA", "A"},
                                         NodesRow{"ABA", "AB"}, NodesRow{"ABAC", "AB-"}, NodesRow{"AAAB", "A-"},
                                         // The second B sees only the places below the count, and adds B again.
                                         NodesRow{"AABB", "A-B"}, NodesRow{"AABBB", "A-B"}, NodesRow{"AABCB", "A-B"},
                                         NodesRow{"AABBAC", "A-BB"}));

TEST_F(LogicalPortGroupTest, EachFunctionLogsItsStepsAndARepeatedNodeNoExit) {
    switchLogsOn();
    tavik::StorageFunction twin = storageFunction(2, chips::chip7);
    twin.nodeName = worldWideName(0xF1);
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}}), twin, storageFunction(3, chips::chip7)})});
    EXPECT_EQ(
        linesBetween(logLines(), "Entering createLogicalPortGroup, index = 0",
                     "buildPhysicalPackageList(): Processing an adapter entry."),
        (Lines{"Entering createLogicalPortGroup, index = 0",
               "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: VPD data retrieved successfully.",
               "Exiting  createLogicalPortGroup", "", "Entering createLogicalPortGroup, index = 1",
               "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: Unable to retrieve VPD data!",
               "Entering createLogicalPortGroup, index = 2",
               "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: Unable to retrieve VPD data!",
               "Exiting  createLogicalPortGroup", "", "buildPhysicalPackageList(): Processing an adapter entry."}));
}

// The parts of the key.

TEST_F(LogicalPortGroupTest, HostNameIsLookedUpAtEachBuildWhileOtherClassesKeepTheFirst) {
    startWith({card("A00007", {storageFunction(1, chips::chip7)})});
    services.address = std::vector<std::uint8_t>{198, 51, 100, 7};
    refreshTo({card("A00007", {storageFunction(1, chips::chip7)})});
    EXPECT_EQ(onlyInstance(group)["InstanceID"], inQuotes("198.51.100.7_A00007_20000002C90000F1_20000002C9000001"));
    EXPECT_EQ(onlyInstance("Merolt_FCHBA_PortController")["SystemName"], inQuotes("192.0.2.10"));
}

TEST_F(LogicalPortGroupTest, HostIsLookedUpOnceForEachBuildHoweverManyPortsThereAre) {
    startWith({card("A00007", {storageFunction(1, chips::chip7), storageFunction(2, chips::chip7)}),
               card("A00008", {storageFunction(3, chips::chip7)})});
    services.lookedUpNames.clear();
    storage::clearLogicalPortGroupList();
    storage::buildLogicalPortGroupList();
    EXPECT_EQ(services.lookedUpNames, Lines{"testhost"});
    EXPECT_EQ(countOf(group), 3U);
    storage::clearLogicalPortGroupList();
    storage::buildLogicalPortGroupList();
    EXPECT_EQ(services.lookedUpNames.size(), 2U);
}

TEST_F(LogicalPortGroupTest, SerialTextIsNotThatOfTheCardBefore) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}})}), card("S2", {functionWithVpd(2, {{"PN", "P"}})}),
               card("S3", {storageFunction(3, chips::chip12)})});
    EXPECT_EQ(valuesOf(group, "InstanceID"), allInQuotes({"192.0.2.10_AB1_20000002C90000F1_20000002C9000001",
                                                          "192.0.2.10__20000002C90000F2_20000002C9000002",
                                                          "192.0.2.10__20000002C90000F3_20000002C9000003"}));
}

TEST_F(LogicalPortGroupTest, OverlongKeyIsCutAndStillFound) {
    services.address = std::nullopt;
    services.name = std::string(200, 'h');
    startWith({card("S1", {functionWithVpd(1, {{"SN", std::string(255, 'S')}})})});
    const std::string key(127, 'h');
    EXPECT_EQ(onlyInstance(group)["InstanceID"], inQuotes(key));
    EXPECT_EQ(getInstance(group, {{"InstanceID", key}}).all("ElementName"), allInQuotes({"20000002C90000F1"}));
}

TEST_F(LogicalPortGroupTest, RequestsShowTheAdaptersAsOfTheLastBuild) {
    startWithNodes("A");
    tavikLibrary.clearCalls();
    EXPECT_EQ(nodesShown(), "A");
    EXPECT_TRUE(tavikLibrary.calls().empty());
}

} // namespace
