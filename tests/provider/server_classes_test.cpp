// What a client sees of the host and of the CIM server that the provider runs in.
#include "adapters.h"
#include "provider_host.h"

#include "classes/system_name.h"

#include <algorithm>
#include <cstring>

using namespace adapters;

namespace {

using Names = std::vector<std::string>;

constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";
constexpr const char* objectManager = "Merolt_FCHBA_ObjectManager";
constexpr const char* commMech = "Merolt_FCHBA_CIMXMLCommMech";
constexpr const char* nameSpaceClass = "Merolt_FCHBA_Namespace";

// None of these classes needs an adapter: the library has no list at all.
class ServerClassesTest : public ProviderTest {
protected:
    ServerClassesTest() {
        tavik::Fleet none;
        none.cards = std::nullopt;
        tavikLibrary.setFleet(none);
    }

    /// All instances as text. A namespace without the class keeps the properties in the order of their setting.
    std::string instancesInOrder(const std::string& className) {
        std::string text = "\n";
        for (const TestObject& object : enumerateInstances(className, std::nullopt, "root/elsewhere").objects)
            text += object.table();
        return text;
    }

    std::string pathsInOrder(const std::string& className) {
        const Answer answer = enumerateInstanceNames(className);
        EXPECT_EQ(answer.doneCount, 1U);
        std::string text = "\n";
        for (const TestObject& object : answer.objects)
            text += object.table();
        return text;
    }

    /// With its types checked by the class, the answer holds the same values.
    void expectTheSameWithTheClassKnown(const std::string& className) {
        const Answer strict = enumerateInstances(className);
        const Answer loose = enumerateInstances(className, std::nullopt, "root/elsewhere");
        ASSERT_EQ(strict.objects.size(), loose.objects.size());
        for (std::size_t index = 0; index < strict.objects.size(); ++index)
            expectSameValues(strict.objects[index], loose.objects[index]);
        EXPECT_TRUE(broker->droppedProperties().empty());
    }
};

std::string inQuotes(const std::string& text) { return "string \"" + text + '"'; }

// Whole instances and paths.

TEST_F(ServerClassesTest, ComputerSystemHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    start();
    EXPECT_EQ(instancesInOrder(computerSystem), R"(
CreationClassName: string "Merolt_Adapter_ComputerSystem"
Name: string "192.0.2.10"
NameFormat: string "IP"
Description: string "Computer system hosting the Merolt HBA provider"
ElementName: string "192.0.2.10"
Dedicated: uint16[] {0}
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"OK"}
OSName: string "Test OS 1.0"
)");
    expectTheSameWithTheClassKnown(computerSystem);
    EXPECT_EQ(pathsInOrder(computerSystem), R"(
CreationClassName: string "Merolt_Adapter_ComputerSystem"
Name: string "192.0.2.10"
)");
}

TEST_F(ServerClassesTest, ObjectManagerHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    start();
    EXPECT_EQ(instancesInOrder(objectManager), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_ObjectManager"
Name: string "pegasus:192.0.2.10"
ElementName: string "Pegasus CIM Server"
Description: string "Pegasus CIM Server"
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"OK"}
Started: boolean true
)");
    expectTheSameWithTheClassKnown(objectManager);
    EXPECT_EQ(pathsInOrder(objectManager), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_ObjectManager"
Name: string "pegasus:192.0.2.10"
)");
}

TEST_F(ServerClassesTest, CommunicationMechanismHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    start();
    EXPECT_EQ(instancesInOrder(commMech), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_CIMXMLCommMech"
Name: string "CIMXML Communication Mechanism"
ElementName: string "CIMXML Communication Mechanism"
CommunicationMechanism: uint16 2
OtherCommunicationMechanismDescription: string ""
Version: string "1.0"
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"OK"}
FunctionalProfilesSupported: uint16[] {2, 6, 9}
FunctionalProfileDescriptions: string[] {"Basic Read", "Association Traversal", "Indications"}
AuthenticationMechanismsSupported: uint16[] {3}
AuthenticationMechanismDescriptions: string[] {"Basic"}
MultipleOperationsSupported: boolean true
CIMValidated: boolean false
)");
    expectTheSameWithTheClassKnown(commMech);
    EXPECT_EQ(pathsInOrder(commMech), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_CIMXMLCommMech"
Name: string "CIMXML Communication Mechanism"
)");
}

TEST_F(ServerClassesTest, BothNamespacesHaveEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    start();
    EXPECT_EQ(instancesInOrder(nameSpaceClass), R"(
CreationClassName: string "Merolt_FCHBA_Namespace"
Name: string "root/merolt_cmpi"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
ObjectManagerCreationClassName: string "Merolt_FCHBA_ObjectManager"
ObjectManagerName: string "pegasus:192.0.2.10"
ClassType: uint16 2
ClassInfo: uint16 1
DescriptionOfClassInfo: string "Unknown Version"
CreationClassName: string "Merolt_FCHBA_Namespace"
Name: string "root/PG_InterOp"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
ObjectManagerCreationClassName: string "Merolt_FCHBA_ObjectManager"
ObjectManagerName: string "pegasus:192.0.2.10"
ClassType: uint16 2
ClassInfo: uint16 1
DescriptionOfClassInfo: string "Unknown Version"
)");
    expectTheSameWithTheClassKnown(nameSpaceClass);
    EXPECT_EQ(pathsInOrder(nameSpaceClass), R"(
CreationClassName: string "Merolt_FCHBA_Namespace"
Name: string "root/merolt_cmpi"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
ObjectManagerCreationClassName: string "Merolt_FCHBA_ObjectManager"
ObjectManagerName: string "pegasus:192.0.2.10"
CreationClassName: string "Merolt_FCHBA_Namespace"
Name: string "root/PG_InterOp"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
ObjectManagerCreationClassName: string "Merolt_FCHBA_ObjectManager"
ObjectManagerName: string "pegasus:192.0.2.10"
)");
}

// The host's name.

struct HostRow {
    std::optional<std::string> hostName;
    std::optional<std::vector<std::uint8_t>> address;
    const char* name;
    const char* nameFormat;
};

void PrintTo(const HostRow& row, std::ostream* stream) { *stream << row.name; }

class HostNameTest : public ServerClassesTest, public testing::WithParamInterface<HostRow> {};

TEST_P(HostNameTest, ShowsInTheComputerSystemAndInEverySystemName) {
    services.name = GetParam().hostName;
    services.address = GetParam().address;
    merolt::gSystemNameFormat = 0;
    start();
    const TestObject system = onlyInstance(computerSystem);
    EXPECT_EQ(system["Name"], inQuotes(GetParam().name));
    EXPECT_EQ(system["ElementName"], inQuotes(GetParam().name));
    EXPECT_EQ(system["NameFormat"], inQuotes(GetParam().nameFormat));
    EXPECT_EQ(onlyInstance(commMech)["SystemName"], inQuotes(GetParam().name));
    const TestObject manager = onlyInstance(objectManager);
    EXPECT_EQ(manager["SystemName"], inQuotes(GetParam().name));
    EXPECT_EQ(manager["Name"], inQuotes(std::string("pegasus:") + GetParam().name));
    EXPECT_EQ(services.lookedUpNames, Names(2, GetParam().hostName.value_or("<unknown>")));
}

using Address = std::vector<std::uint8_t>;

INSTANTIATE_TEST_SUITE_P(Hosts, HostNameTest,
                         testing::Values(HostRow{"host", Address{192, 0, 2, 255}, "192.0.2.255", "IP"},
                                         HostRow{"host", Address{1, 22, 0, 4, 5, 206}, "1.22.0.4.5.206", "IP"},
                                         HostRow{"host", Address(16, 1), "Unknown IP", ""},
                                         HostRow{"host", Address{}, "Unknown IP", ""},
                                         HostRow{"host.example.org", std::nullopt, "host.example.org", "DNSName"},
                                         HostRow{"", std::nullopt, "", "DNSName"},
                                         HostRow{std::nullopt, std::nullopt, "<unknown>", "DNSName"},
                                         HostRow{std::nullopt, Address{192, 0, 2, 1}, "192.0.2.1", "IP"}));

// The name that the administrator sets.

class WantedNameTest : public ServerClassesTest {
protected:
    ~WantedNameTest() override { services.settings.clear(); }

    void startWithSetting(const std::string& name) {
        services.settings["SystemName"] = name;
        start();
    }
};

TEST_F(WantedNameTest, StandsInTheComputerSystemAndInEverySystemName) {
    for (const auto& [setting, name, format] :
         {std::tuple{"san1.example.org", "san1.example.org", "DNSName"},
          std::tuple{" 198.51.100.7\t", "198.51.100.7", "IP"}, std::tuple{"2001:db8::7", "2001:db8::7", "IP"},
          std::tuple{"1.2.3", "1.2.3", "DNSName"}}) {
        startWithSetting(setting);
        const TestObject system = onlyInstance(computerSystem);
        EXPECT_EQ(system["Name"], inQuotes(name));
        EXPECT_EQ(system["ElementName"], inQuotes(name));
        EXPECT_EQ(system["NameFormat"], inQuotes(format));
        EXPECT_EQ(onlyInstance(commMech)["SystemName"], inQuotes(name));
        EXPECT_EQ(onlyInstance(objectManager)["SystemName"], inQuotes(name));
        EXPECT_EQ(onlyInstance(objectManager)["Name"], inQuotes(std::string("pegasus:") + name));
        EXPECT_EQ(getInstance(computerSystem, {{"Name", name}}).objects.size(), 1U);
        stop();
    }
    EXPECT_EQ(services.lookedUpNames, Names{});
}

TEST_F(WantedNameTest, StandsInKeysThatAreCutAtUnderscores) {
    tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, 1)})}));
    startWithSetting(std::string(64, 'n'));
    const TestObject group = onlyInstance("Merolt_FCHBA_LogicalPortGroup");
    EXPECT_EQ(group["InstanceID"].find("string \"" + std::string(64, 'n') + "_"), 0U) << group["InstanceID"];
    EXPECT_EQ(enumerateInstances("Merolt_FCHBA_ComputerSystemLogicalPortGroup").objects.size(), 1U);
}

TEST_F(WantedNameTest, ThatKeysCannotCarryIsToldAndCountsAsNone) {
    switchLogsOn();
    for (const std::string& name : {std::string(65, 'n'), std::string("san_1"), std::string("san\"1"),
                                    std::string("san 1"), std::string("s\xC3\xA4n"), std::string("san\\1")}) {
        startWithSetting(name);
        EXPECT_EQ(onlyInstance(computerSystem)["Name"], inQuotes("192.0.2.10"));
        EXPECT_TRUE(logHas("SystemName=" + name +
                           " is not taken: a name has up to 64 letters, digits, dots, colons and hyphens. The host "
                           "keeps the name that it has without the setting."))
            << name;
        stop();
    }
}

TEST_F(WantedNameTest, IsNoneWhereTheSettingHoldsBlanksAlone) {
    switchLogsOn();
    startWithSetting(" \t");
    EXPECT_EQ(onlyInstance(computerSystem)["Name"], inQuotes("192.0.2.10"));
    for (const std::string& line : logLines())
        EXPECT_EQ(line.find("SystemName="), std::string::npos) << line;
}

TEST_F(WantedNameTest, StaysUntilTheProviderIsLoadedAgain) {
    startWithSetting("before");
    services.settings["SystemName"] = "after";
    tavikLibrary.setNextFleet({});
    services.pass(3600);
    EXPECT_EQ(onlyInstance(objectManager)["SystemName"], inQuotes("before"));
    stop();
    start();
    EXPECT_EQ(onlyInstance(computerSystem)["Name"], inQuotes("after"));
}

TEST_F(ServerClassesTest, HostWithoutANameIsLogged) {
    switchLogsOn();
    services.name = std::nullopt;
    start();
    EXPECT_TRUE(logHas("GetComputerName() failed!"));
}

TEST_F(ServerClassesTest, OverlongHostNameIsCutAndStillFound) {
    services.name = std::string(300, 'h');
    services.address = std::nullopt;
    start();
    const std::string shown(255, 'h');
    EXPECT_EQ(onlyInstance(computerSystem)["Name"], inQuotes(shown));
    EXPECT_EQ(getInstance(computerSystem, {{"Name", shown}}).objects.size(), 1U);
    EXPECT_EQ(onlyInstance(objectManager)["Name"], inQuotes(("pegasus:" + shown).substr(0, 255)));
}

TEST_F(ServerClassesTest, AfterANewAddressARefreshChangesTheObjectManagerAlone) {
    start();
    services.address = Address{192, 0, 2, 99};
    EXPECT_EQ(onlyInstance(objectManager)["SystemName"], "string \"192.0.2.10\"");
    tavikLibrary.setNextFleet({});
    services.pass(3600);
    EXPECT_EQ(onlyInstance(objectManager)["SystemName"], "string \"192.0.2.99\"");
    EXPECT_EQ(onlyInstance(objectManager)["Name"], "string \"pegasus:192.0.2.99\"");
    EXPECT_EQ(onlyInstance(computerSystem)["Name"], "string \"192.0.2.10\"");
    EXPECT_EQ(onlyInstance(commMech)["SystemName"], "string \"192.0.2.10\"");
    for (const TestObject& space : enumerateInstances(nameSpaceClass).objects) {
        EXPECT_EQ(space["SystemName"], "string \"192.0.2.10\"");
        EXPECT_EQ(space["ObjectManagerName"], "string \"pegasus:192.0.2.99\"");
    }
}

// The operating system's name.

TEST_F(ServerClassesTest, UnknownOperatingSystemLeavesItsPropertyOutAndNoOther) {
    start();
    const TestObject complete = onlyInstance(computerSystem);
    tavikLibrary.onGetOSName = [](char* buffer, std::uint32_t*) {
        std::strcpy(buffer, "half a name");
        return 1U;
    };
    const TestObject without = onlyInstance(computerSystem);
    EXPECT_EQ(without["OSName"], "absent");
    EXPECT_EQ(without.values.size(), complete.values.size() - 1);
    EXPECT_EQ(without["StatusDescriptions"], complete["StatusDescriptions"]);
}

TEST_F(ServerClassesTest, OperatingSystemIsAskedForWithEachInstance) {
    start();
    tavikLibrary.clearCalls();
    enumerateInstanceNames(computerSystem);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetOSName"), 0U);
    onlyInstance(computerSystem);
    getInstance(computerSystem, {{"Name", "192.0.2.10"}});
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetOSName"), 2U);
}

TEST_F(ServerClassesTest, OperatingSystemNameThatFillsTheBufferIsCut) {
    std::uint32_t offered = 0;
    tavikLibrary.onGetOSName = [&](char* buffer, std::uint32_t* size) {
        offered = *size;
        std::memset(buffer, 'o', *size);
        return 0U;
    };
    start();
    EXPECT_EQ(onlyInstance(computerSystem)["OSName"], inQuotes(std::string(511, 'o')));
    EXPECT_EQ(offered, 512U);
}

// Configured texts.

TEST_F(ServerClassesTest, ConfiguredTextsShow) {
    writeFile("meroltcna.properties", "InteropNamespace= root/interop \n"
                                      "CIMOMNameVersion=sfcb 1.4\n"
                                      "CIMSchemaVersion=2.55\n");
    start();
    const TestObject manager = onlyInstance(objectManager);
    EXPECT_EQ(manager["ElementName"], "string \"sfcb 1.4\"");
    EXPECT_EQ(manager["Description"], "string \"sfcb 1.4\"");
    EXPECT_EQ(manager["Name"], "string \"pegasus:192.0.2.10\"");
    const Answer spaces = enumerateInstances(nameSpaceClass);
    EXPECT_EQ(spaces.all("Name"), (Names{"string \"root/merolt_cmpi\"", "string \"root/interop\""}));
    EXPECT_EQ(spaces.all("DescriptionOfClassInfo"), Names(2, "string \"2.55\""));
    EXPECT_EQ(getInstance(nameSpaceClass, {{"Name", "root/interop"}}).objects.size(), 1U);
    EXPECT_EQ(getInstance(nameSpaceClass, {{"Name", "root/PG_InterOp"}}).rc, CMPI_RC_ERR_NOT_FOUND);
}

struct FormatRow {
    std::string configured;
    std::string shown;
};

void PrintTo(const FormatRow& row, std::ostream* stream) { *stream << '"' << row.configured << '"'; }

class CimomNameVersionTest : public ServerClassesTest, public testing::WithParamInterface<FormatRow> {};

TEST_P(CimomNameVersionTest, ShowsWithItsPercentSignsTakenAsConversions) {
    writeFile("meroltcna.properties", "CIMOMNameVersion=" + GetParam().configured + "\n");
    start();
    const TestObject manager = onlyInstance(objectManager);
    EXPECT_EQ(manager["ElementName"], inQuotes(GetParam().shown));
    EXPECT_EQ(manager["Description"], inQuotes(GetParam().shown));
}

INSTANTIATE_TEST_SUITE_P(Texts, CimomNameVersionTest,
                         testing::Values(FormatRow{"100%% sure", "100% sure"}, FormatRow{"%%%%", "%%"},
                                         FormatRow{"%s%d%n%p", ""}, FormatRow{"a%s b%-08.3lld c", "a b c"},
                                         FormatRow{"50% off", "50ff"}, FormatRow{"last%", "last"},
                                         FormatRow{"last%-5", "last"}, FormatRow{"%1$s%2$*3$d.", "."},
                                         FormatRow{"%%s", "%s"}, FormatRow{"%*.*f%hhu%zu%'d", ""},
                                         FormatRow{std::string(126, 'v') + "%%", std::string(126, 'v') + "%"},
                                         FormatRow{std::string(128, 'v'), std::string(127, 'v')},
                                         FormatRow{std::string(100, 'v') + "%%" + std::string(100, 'w'),
                                                   std::string(100, 'v') + "%" + std::string(26, 'w')}));

// One object by its key.

struct KeyRow {
    const char* className;
    const char* shortName;
    const char* name;
    std::size_t propertiesWithOneListed;
    const char* noMatch; ///< log text for the key "x y"
};

void PrintTo(const KeyRow& row, std::ostream* stream) { *stream << row.name; }

class ServerKeyTest : public ServerClassesTest, public testing::WithParamInterface<KeyRow> {};

TEST_P(ServerKeyTest, NameAloneInAnyLetterCaseFindsTheObject) {
    services.address = std::nullopt;
    start();
    std::string other = GetParam().name;
    for (char& letter : other)
        letter = static_cast<char>(std::isupper(static_cast<unsigned char>(letter))
                                       ? std::tolower(static_cast<unsigned char>(letter))
                                       : std::toupper(static_cast<unsigned char>(letter)));
    const Answer answer = getInstance(GetParam().className, {{"SystemName", "another"}, {"Name", other}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.all("Name"), Names{inQuotes(GetParam().name)});
    EXPECT_EQ(answer.doneCount, 1U);
}

TEST_P(ServerKeyTest, AnotherNameIsNotFound) {
    switchLogsOn();
    services.address = std::nullopt;
    start();
    const Answer answer = getInstance(GetParam().className, {{"Name", "x y"}});
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(answer.message, "x y");
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_TRUE(logHas(GetParam().noMatch));
}

TEST_P(ServerKeyTest, NumericNameEndsAsSuccessWithoutAnInstance) {
    switchLogsOn();
    start();
    const Answer answer = getInstanceByNumber(GetParam().className, "Name", 1);
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_TRUE(logHas(std::string("getInstance_") + GetParam().shortName +
                       ": Error invalid key data type, keyData.type=240!"));
}

TEST_P(ServerKeyTest, PropertyListGivesTheKeysAndTheListedPropertiesOnly) {
    services.address = std::nullopt;
    start();
    const std::string listed = std::string(GetParam().className) == nameSpaceClass ? "ClassInfo" : "ElementName";
    // A namespace without the class keeps exactly what the class's own list of keys names.
    const Answer answer =
        getInstance(GetParam().className, {{"Name", GetParam().name}}, Names{listed}, "root/elsewhere");
    ASSERT_EQ(answer.objects.size(), 1U);
    EXPECT_EQ(answer.objects[0].values.size(), GetParam().propertiesWithOneListed);
    EXPECT_NE(answer.objects[0][listed], "absent");
}

INSTANTIATE_TEST_SUITE_P(
    EachObject, ServerKeyTest,
    testing::Values(KeyRow{computerSystem, "ComputerSystem", "testhost", 3,
                           "getInstance_ComputerSystem: Error no matching instance found, KeyValue=x y, "
                           "MatchingElement=testhost!"},
                    KeyRow{objectManager, "ObjectManager", "pegasus:testhost", 5,
                           "getInstance_ObjectManager: Error no matching instance found, KeyValue=x y, "
                           "MatchingElement=pegasus:testhost!"},
                    KeyRow{commMech, "CIMXMLCommMech", "CIMXML Communication Mechanism", 5,
                           "getInstance_CIMXMLCommMech: Error no matching instance found, KeyValue=x y, "
                           "MatchingElement=CIMXML Communication Mechanism!"},
                    KeyRow{nameSpaceClass, "Namespace", "root/merolt_cmpi", 7,
                           "getInstance_Namespace: Error no matching instance found, KeyValue=x y!"},
                    KeyRow{nameSpaceClass, "Namespace", "root/PG_InterOp", 7,
                           "getInstance_Namespace: Error no matching instance found, KeyValue=x y!"}));

TEST_F(ServerClassesTest, RequestIsLoggedFromTheDispatcherDownAndBack) {
    switchLogsOn();
    start();
    takeLogLines();
    enumerateInstances(nameSpaceClass);
    EXPECT_EQ(takeLogLines(), (Names{"Entering Merolt_CNA_Provider enumInstances: classname = Merolt_FCHBA_Namespace",
                                     "Entering enumInstances_Namespace", "Exiting  enumInstances_Namespace",
                                     "Exiting  Merolt_CNA_Provider enumInstances", ""}));
    getInstance(computerSystem, {{"Name", "192.0.2.10"}});
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering Merolt_CNA_Provider getInstance: classname = Merolt_Adapter_ComputerSystem",
                     "Entering getInstance_ComputerSystem", "Exiting  getInstance_ComputerSystem",
                     "Exiting  Merolt_CNA_Provider getInstance", ""}));
}

} // namespace
