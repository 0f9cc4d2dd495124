// What the setting Answers=corrected changes for a client: four kinds of answers, and nothing else.
#include "association_test.h"
#include "fleets.h"

#include "classes/storage/vital_product_data.h"
#include "log/log.h"

#include <algorithm>
#include <map>
#include <tuple>

using namespace adapters;

namespace {

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* group = "Merolt_FCHBA_LogicalPortGroup";
constexpr const char* hostAndGroup = "Merolt_FCHBA_ComputerSystemLogicalPortGroup";
constexpr const char* groupAndPort = "Merolt_FCHBA_LogicalPortGroupFCPort";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* ipCapabilities = "Merolt_NIC_IPProtocolEndpointCapabilities";
constexpr const char* ipCapabilitiesAssociation = "Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint";
constexpr const char* controllersAndService[] = {"Merolt_FCHBA_PortControllerSoftwareInstallationService",
                                                 "Merolt_NIC_PortControllerSoftwareInstallationService"};

/// Every answer under a name that tells the request.
using AllAnswers = std::map<std::string, Rows>;

class AnswersTest : public AssociationTest {
protected:
    ~AnswersTest() override { services.settings.clear(); }

    /// Starts a provider whose settings say so; an earlier one is ended.
    void serveAnswers(const std::string& setting, tavik::Fleet fleet) {
        stop();
        merolt::storage::g_UUID.clear();
        merolt::storage::clearVpdStores();
        services.settings["Answers"] = setting;
        serve(std::move(fleet));
    }

    std::vector<std::string> allClasses() const {
        std::vector<std::string> names;
        for (const cimhost::ClassDeclaration* declaration : classes.classes(implementationNamespace)) {
            const std::string name(declaration->name());
            if (name.rfind("Merolt_", 0) == 0 && name.find("Indication") == std::string::npos) names.push_back(name);
        }
        return names;
    }

    /// Both enumerations of each class, getInstance of each of its objects, and what is associated with these.
    AllAnswers everything() {
        AllAnswers answers;
        for (const std::string& className : allClasses()) {
            answers["names of " + className] = instanceNames(classPath(className)).texts();
            answers["instances of " + className] = instances(classPath(className)).texts();
            for (const Path& path : names(className))
                addAnswersFor(path, answers);
        }
        return answers;
    }

    /// The keys of the port groups that a client is shown.
    std::vector<std::string> groupKeys() {
        std::vector<std::string> keys;
        for (const Path& path : names(group))
            keys.push_back(path["InstanceID"]);
        return keys;
    }

private:
    void addAnswersFor(const Path& path, AllAnswers& answers) {
        answers["getInstance of " + path.text()] = instance(path).texts();
        for (const Operation operation : allOperations)
            answers[nameOf(operation) + (" of " + path.text())] = ask(operation, path).texts();
    }
};

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t place = text.find(from); place != std::string::npos; place = text.find(from, place + to.size()))
        text.replace(place, from.size(), to);
}

bool startsWith(const std::string& text, const std::string& start) { return text.rfind(start, 0) == 0; }

std::string classOf(const std::string& row) {
    return row.substr(row.find(':') + 1, row.find('\n') - row.find(':') - 1);
}

/// The rows without the four differences that are meant.
Rows withoutTheFour(const std::string& request, const Rows& rows) {
    Rows same;
    for (std::string row : rows) {
        const std::string name = classOf(row);
        if (name == group || name == hostAndGroup || name == groupAndPort) continue;
        if (startsWith(request, std::string("getInstance of root/merolt_cmpi:") + ipCapabilitiesAssociation) &&
            name == ipCapabilities)
            continue;
        if (startsWith(request, "referenceNames") &&
            std::count(std::begin(controllersAndService), std::end(controllersAndService), name) > 0) {
            replaceAll(row, "GroupComponent = ", "AffectedElement = ");
            replaceAll(row, "PartComponent = ", "AffectingElement = ");
        }
        if (name == fcPort || name == ethernetPort) {
            const std::size_t speed = row.find("\n    Speed = ");
            if (speed != std::string::npos) row.erase(speed, row.find('\n', speed + 1) - speed);
        }
        same.push_back(row);
    }
    return same;
}

tavik::Fleet cardsWithOddSpeeds() {
    tavik::Fleet fleet = manyCards();
    std::uint32_t code = 20;
    for (tavik::Card& card : *fleet.cards) {
        for (tavik::Port& port : *card.ports) {
            for (tavik::Function& function : *port.functions) {
                if (auto* storage = std::get_if<tavik::StorageFunction>(&function))
                    storage->property.speedCode = ++code;
                if (auto* nic = std::get_if<tavik::NicFunction>(&function)) nic->link.speed = 1000;
            }
        }
    }
    return fleet;
}

TEST_F(AnswersTest, EveryOtherAnswerIsTheSameInBothSettings) {
    serveAnswers("", cardsWithOddSpeeds());
    const AllAnswers contract = everything();
    serveAnswers("corrected", cardsWithOddSpeeds());
    const AllAnswers corrected = everything();
    std::size_t compared = 0;
    std::size_t different = 0;
    for (const auto& [request, rows] : contract) {
        if (request.find(std::string(":") + group) != std::string::npos ||
            request.find(hostAndGroup) != std::string::npos || request.find(groupAndPort) != std::string::npos)
            continue;
        const auto other = corrected.find(request);
        ASSERT_NE(other, corrected.end()) << request;
        EXPECT_EQ(withoutTheFour(request, rows), withoutTheFour(request, other->second)) << request;
        ++compared;
        if (rows != other->second) ++different;
    }
    EXPECT_GT(compared, 1000U);
    EXPECT_GT(different, 0U);
}

TEST_F(AnswersTest, ReferenceNamesOfControllersAndServicesBearTheRolesOfTheirAssociation) {
    serveAnswers("corrected", manyCards());
    const std::pair<const char*, const char*> ends[] = {
        {"Merolt_FCHBA_PortController", "Merolt_FCHBA_SoftwareInstallationService"},
        {"Merolt_NIC_PortController", "Merolt_NIC_SoftwareInstallationService"}};
    for (std::size_t side = 0; side < std::size(ends); ++side) {
        const char* association = controllersAndService[side];
        const Rows listed = instanceNames(classPath(association)).texts();
        const Filters filters = {.associationClass = association};
        EXPECT_EQ(ask(Operation::referenceNames, first(ends[side].second), filters).texts(), listed);
        Rows fromControllers;
        for (const Path& controller : names(ends[side].first)) {
            for (const std::string& row : ask(Operation::referenceNames, controller, filters).texts())
                fromControllers.push_back(row);
        }
        EXPECT_EQ(fromControllers, listed);
        EXPECT_FALSE(listed.empty());
    }
}

TEST_F(AnswersTest, CapabilitiesOfAnAddressAreFetchedAsOneObject) {
    serveAnswers("", manyCards());
    const Path path = first(ipCapabilitiesAssociation);
    EXPECT_EQ(instance(path).rows.size(), 2U);
    serveAnswers("corrected", manyCards());
    const Reply reply = instance(path);
    ASSERT_EQ(reply.rows.size(), 1U);
    EXPECT_EQ(reply.rows[0].className, ipCapabilitiesAssociation);
    Path missing = path.reference("Capabilities").with("InstanceID", "FFFFFFFFFFFF");
    EXPECT_EQ(instance(path.with("Capabilities", std::vector<Path>{missing})).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(instance(path.reference("Capabilities")).rows.size(), 1U);
}

class PortGroupAnswersTest : public AnswersTest {
protected:
    /// Ports 1 and 2 share a node, and so do ports 3 and 5.
    static tavik::Fleet nodes() {
        std::vector<tavik::Function> functions;
        for (const auto& [number, node] : {std::pair{1, 0xA1}, {2, 0xA1}, {3, 0xB2}, {4, 0xC3}, {5, 0xB2}}) {
            tavik::StorageFunction function = storageFunction(static_cast<std::uint32_t>(number), chips::chip7);
            function.nodeName = worldWideName(static_cast<std::uint8_t>(node));
            functions.emplace_back(function);
        }
        return fleet({card("A00003", std::move(functions))});
    }

    static std::string key(int number, const char* node) {
        return "192.0.2.10_A00003_20000002C90000" + std::string(node) + "_20000002C900000" + std::to_string(number);
    }
};

TEST_F(PortGroupAnswersTest, EachNodeIsListedOnceAndFoundByItsKey) {
    serveAnswers("corrected", nodes());
    const std::vector<std::string> keys = {key(1, "A1"), key(3, "B2"), key(4, "C3")};
    EXPECT_EQ(groupKeys(), keys);
    EXPECT_EQ(instances(classPath(group)).rows.size(), 3U);
    for (const Path& path : names(group))
        EXPECT_EQ(instance(path).rows.size(), 1U) << path.text();
}

TEST_F(PortGroupAnswersTest, AssociationsOfGroupsNameNoEmptyOneAndTheGroupsOwnPort) {
    serveAnswers("corrected", nodes());
    EXPECT_EQ(instanceNames(classPath(hostAndGroup)).rows.size(), 3U);
    std::vector<std::pair<std::string, std::string>> members;
    for (const Path& path : names(groupAndPort))
        members.emplace_back(path.reference("Collection")["InstanceID"], path.reference("Member")["DeviceID"]);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {key(1, "A1"), "A00003_20000002C90000A1_20000002C9000001"},
        {key(3, "B2"), "A00003_20000002C90000B2_20000002C9000003"},
        {key(4, "C3"), "A00003_20000002C90000C3_20000002C9000004"}};
    EXPECT_EQ(members, expected);
    for (const Path& path : names(groupAndPort))
        EXPECT_EQ(instance(path).rows.size(), 1U) << path.text();
}

TEST_F(PortGroupAnswersTest, ByContractARepeatedNodeLeavesAnEmptyGroup) {
    serveAnswers("contract", nodes());
    EXPECT_EQ(groupKeys()[1], "");
}

TEST_F(PortGroupAnswersTest, WithoutARepeatedNodeGroupsAreTheSameInBothSettings) {
    AllAnswers answers[2];
    for (int corrected = 0; corrected < 2; ++corrected) {
        tavik::Fleet fleet = manyCards();
        std::uint8_t node = 0x80;
        for (tavik::Card& card : *fleet.cards) {
            for (tavik::Port& port : *card.ports) {
                for (tavik::Function& function : *port.functions) {
                    if (auto* storage = std::get_if<tavik::StorageFunction>(&function))
                        storage->nodeName = worldWideName(node++);
                }
            }
        }
        serveAnswers(corrected ? "corrected" : "contract", fleet);
        for (const char* className : {group, hostAndGroup, groupAndPort}) {
            answers[corrected][className] = instances(classPath(className)).texts();
            EXPECT_FALSE(answers[corrected][className].empty());
        }
    }
    EXPECT_EQ(answers[0], answers[1]);
}

struct SpeedRow {
    std::uint32_t code;
    const char* contract;
    const char* corrected;
};

class PortSpeedAnswersTest : public AnswersTest, public testing::WithParamInterface<SpeedRow> {};

TEST_P(PortSpeedAnswersTest, IsThatOfTheLinkWhereTheTableHasNone) {
    tavik::StorageFunction function = storageFunction(1, chips::chip12);
    function.property.speedCode = GetParam().code;
    for (const auto& [setting, speed] :
         {std::pair{"contract", GetParam().contract}, std::pair{"corrected", GetParam().corrected}}) {
        serveAnswers(setting, fleet({card("S1", {function})}));
        EXPECT_EQ(valuesOf(fcPort, "Speed"), std::vector<std::string>{std::string("uint64 ") + speed}) << setting;
    }
}

constexpr SpeedRow portSpeeds[] = {
    {1, "1062500000", "1062500000"},
    {2, "2125000000", "2125000000"},
    {3, "0", "0"},
    {4, "4250000000", "4250000000"},
    {8, "8500000000", "8500000000"},
    {10, "10625000000", "10625000000"},
    {16, "17000000000", "17000000000"},
    {32, "0", "34000000000"},
    {64, "0", "68000000000"},
    {128, "0", "136000000000"},
    {1024, "0", "1088000000000"},
    {1025, "0", "0"},
    {0, "0", "0"},
    {0xFFFFFFFF, "0", "0"},
};
INSTANTIATE_TEST_SUITE_P(Codes, PortSpeedAnswersTest, testing::ValuesIn(portSpeeds),
                         [](const auto& test) { return std::to_string(test.param.code); });

TEST_F(AnswersTest, SpeedOfAnEthernetPortIsThatOfTheLinkWhereTheTableHasNone) {
    const std::tuple<std::uint64_t, const char*, const char*> links[] = {
        {0, "0", "0"},
        {1000, "0", "1000000000"},
        {10000, "10625000000", "10625000000"},
        {25000, "0", "25000000000"},
        {UINT64_MAX, "0", "0"},
    };
    for (const auto& [megabits, contract, corrected] : links) {
        tavik::NicFunction function = nicFunction(1, 1);
        function.link.speed = megabits;
        for (const auto& [setting, speed] : {std::pair{"contract", contract}, std::pair{"corrected", corrected}}) {
            serveAnswers(setting, fleet({card("S1", {function})}));
            EXPECT_EQ(valuesOf(ethernetPort, "Speed"), std::vector<std::string>{std::string("uint64 ") + speed});
            EXPECT_EQ(valuesOf("Merolt_NIC_NetworkPort", "Speed"),
                      std::vector<std::string>{"uint64 " + std::to_string(megabits)});
        }
    }
}

TEST_F(AnswersTest, AnUnknownSettingIsReportedAndCountsAsTheContract) {
    switchLogsOn();
    serveAnswers("standard", manyCards());
    EXPECT_TRUE(logHas("/etc/merolt/cim-provider.conf: Answers=standard is not known; contract and corrected are. "
                       "Answers are as by contract."));
    EXPECT_EQ(instance(first(ipCapabilitiesAssociation)).rows.size(), 2U);
}

TEST_F(AnswersTest, TheSettingStandsInTheDebugLogWhereItIsNotTheDefault) {
    switchLogsOn();
    serveAnswers(" corrected ", manyCards());
    EXPECT_TRUE(logHas("Config: Answers=corrected"));
    EXPECT_EQ(instance(first(ipCapabilitiesAssociation)).rows.size(), 1U);
    serveAnswers("contract", manyCards());
    EXPECT_EQ(linesThatBegin(logLines(), "Config: Answers"), 1U);
}

} // namespace
