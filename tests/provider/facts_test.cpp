// What a client sees of the facts beside the contract: a management library with the optional calls, with one of them,
// with none, and with calls that fail or answer nonsense.
#include "class_support.h"

#include "cimhost/model/mapped_property.h"
#include "inventory/cna_list.h"
#include "inventory/fact_calls.h"
#include "inventory/fact_reader.h"
#include "inventory/fact_table.h"
#include "platform/library_functions.h"
#include "tavik/facts.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <map>
#include <string>
#include <utility>

using namespace adapters;

namespace {

using Names = std::vector<std::string>;
using tavik::Fact;
using tavik::Facts;

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* storageController = "Merolt_FCHBA_PortController";
constexpr const char* statistics = "Merolt_FCHBA_FCPortStatistics";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* networkPort = "Merolt_NIC_NetworkPort";
constexpr const char* nicController = "Merolt_NIC_PortController";
constexpr const char* withFacts[] = {fcPort, storageController, statistics, ethernetPort, networkPort, nicController};

constexpr std::uint32_t everyGroup =
    TavikFactsOfAdapter | TavikFactsOfLink | TavikFactsOfCounters | TavikFactsOfRelations;

/// A question that the library was asked, and what it answers.
struct Question {
    std::string port; ///< the handle as a text, or the device name
    std::uint32_t groups;
    void* buffer;
    std::uint32_t* size;
};

/// In place of the library's calls. They have no memory of their own, as they are plain functions.
std::vector<std::string> questions;
std::function<std::uint32_t(const Question&)> answer;

std::uint32_t ask(const Question& question) {
    questions.push_back(question.port + " " + std::to_string(question.groups));
    return answer(question);
}

std::uint32_t factsOfStorage(std::uint32_t handle, std::uint32_t groups, void* buffer, std::uint32_t* size) {
    return ask({std::to_string(handle), groups, buffer, size});
}

std::uint32_t factsOfEthernet(const char* deviceName, std::uint32_t groups, void* buffer, std::uint32_t* size) {
    return ask({deviceName, groups, buffer, size});
}

std::map<std::string, void*> libraryFunctions;

void* findFunction(const char* name) {
    const auto found = libraryFunctions.find(name);
    return found == libraryFunctions.end() ? nullptr : found->second;
}

Fact fact(const char* name, tavik::FactValue value) { return {merolt::findFact(name), std::move(value)}; }

tavik::Bytes encoded(const Facts& facts) { return tavik::encodeFacts(facts, everyGroup); }

std::uint32_t deliver(const Question& question, const tavik::Bytes& bytes) {
    const bool fits = bytes.size() <= *question.size;
    *question.size = static_cast<std::uint32_t>(bytes.size());
    if (fits) std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(question.buffer));
    return fits ? 0 : 17;
}

/// A fact as an answer holds it, with a header of the test's own.
tavik::Bytes raw(std::uint32_t size, std::uint16_t type, std::uint16_t nameLength, const std::string& content) {
    const TavikFactHeader header{size, type, nameLength};
    tavik::Bytes bytes(sizeof header + content.size());
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(bytes.data() + sizeof header, content.data(), content.size());
    return bytes;
}

/// The same with a header that is true.
tavik::Bytes made(std::uint16_t type, const std::string& name, const std::string& value) {
    return raw(static_cast<std::uint32_t>(sizeof(TavikFactHeader) + name.size() + value.size()), type,
               static_cast<std::uint16_t>(name.size()), name + value);
}

class FactsTest : public ClassTest {
protected:
    FactsTest() {
        questions.clear();
        libraryFunctions.clear();
        merolt::gFindLibraryFunction = findFunction;
        answer = [](const Question& question) { return deliver(question, {}); };
        tavik::StorageFunction storage = functionWithVpd(7, {{"SN", "S1"}});
        prepare({card("S1", {storage, nicFunction(1, 3)})});
    }
    ~FactsTest() override {
        merolt::gFindLibraryFunction = realFindFunction;
        FakeServices::settings.erase("Facts");
    }

    void offerStorageCall() {
        libraryFunctions["tavik_facts_of_storage_port"] = reinterpret_cast<void*>(factsOfStorage);
    }
    void offerEthernetCall() {
        libraryFunctions["tavik_facts_of_ethernet_port"] = reinterpret_cast<void*>(factsOfEthernet);
    }
    void offerBoth() {
        offerStorageCall();
        offerEthernetCall();
    }

    void answerAlways(tavik::Bytes bytes) {
        answer = [bytes = std::move(bytes)](const Question& question) { return deliver(question, bytes); };
    }

    /// The instances of all classes as a server without our definitions shows them.
    std::string everything() {
        std::string all;
        for (const char* className : withFacts) {
            for (const TestObject& object : enumerateInstances(className, std::nullopt, "root/elsewhere").objects)
                all += object.table() + '\n';
        }
        return all;
    }

    void* (*const realFindFunction)(const char* name) = merolt::gFindLibraryFunction;

    /// What FCPort shows of that answer, in order, beside what it shows without facts.
    std::string shown(const tavik::Bytes& bytes) {
        answerAlways(bytes);
        const TestObject object = onlyInstance(fcPort);
        std::string lines;
        for (const auto& row : merolt::fact_table::rows) {
            if (object.values.count(row.property))
                lines += std::string(row.property) + ": " + object[row.property] + '\n';
        }
        return lines;
    }
};

TEST(LibraryFunctions, AreThoseOfTheLibraryThatHasTheKnownOne) {
    void* const known = dlsym(RTLD_DEFAULT, "getpid");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(merolt::platform::functionBeside(known, "getpid"), known);
    EXPECT_EQ(merolt::platform::functionBeside(known, "tavik_facts_of_storage_port"), nullptr);
    const int noFunction = 0;
    EXPECT_EQ(merolt::platform::functionBeside(&noFunction, "getpid"), nullptr);
}

TEST_F(FactsTest, ComeBehindEverythingElseAndInTheOrderOfTheTable) {
    offerBoth();
    start();
    const std::string before = asSet(ethernetPort);
    answerAlways(encoded({fact("linkSpeed", std::uint64_t{100'000'000'000}), fact("interfaceName", "ens1f0"),
                          fact("supportedLinkSpeeds", std::uint64_t{25'000'000'000}),
                          fact("totalReceivedBytes", std::uint64_t{5'000'000'000'000}),
                          fact("supportedLinkSpeeds", std::uint64_t{100'000'000'000})}));
    EXPECT_EQ(asSet(ethernetPort), before + R"(InterfaceName: string "ens1f0"
LinkSpeed: uint64 100000000000
SupportedLinkSpeeds: uint64[] {25000000000, 100000000000}
TotalReceivedBytes: uint64 5000000000000
)");
}

TEST_F(FactsTest, StandWithTheClassesThatTheyAreAbout) {
    offerBoth();
    start();
    answerAlways(encoded({fact("pciAddress", "0000:3b:00.0"), fact("fabricPortId", "010A02"),
                          fact("totalCrcErrors", std::uint64_t{8}), fact("totalReceivedBytes", std::uint64_t{9})}));
    const auto has = [&](const char* className) {
        const TestObject object = onlyInstance(className);
        return object["PCIAddress"] + ", " + object["FabricPortID"] + ", " + object["TotalCRCErrors"] + ", " +
               object["TotalReceivedBytes"];
    };
    const std::string address = "string \"0000:3b:00.0\"";
    EXPECT_EQ(has(fcPort), address + ", string \"010A02\", absent, absent");
    EXPECT_EQ(has(storageController), address + ", absent, absent, absent");
    EXPECT_EQ(has(statistics), "absent, absent, uint64 8, absent");
    EXPECT_EQ(has(ethernetPort), address + ", absent, absent, uint64 9");
    EXPECT_EQ(has(networkPort), address + ", absent, absent, uint64 9");
    EXPECT_EQ(has(nicController), address + ", absent, absent, absent");
}

TEST_F(FactsTest, OfALibraryWithoutTheCallsAreAbsent) {
    start();
    const std::string without = everything();
    EXPECT_EQ(without.find("InterfaceName"), std::string::npos);
    EXPECT_EQ(questions, Names());
}

TEST_F(FactsTest, OfALibraryWithOneCallAreThoseOfThatCall) {
    offerEthernetCall();
    start();
    answerAlways(encoded({fact("interfaceName", "ens1f0")}));
    EXPECT_EQ(onlyInstance(ethernetPort)["InterfaceName"], "string \"ens1f0\"");
    EXPECT_EQ(onlyInstance(fcPort)["InterfaceName"], "absent");
}

TEST_F(FactsTest, CanBeSwitchedOff) {
    FakeServices::settings["Facts"] = " off ";
    offerBoth();
    start();
    answerAlways(encoded({fact("interfaceName", "ens1f0")}));
    EXPECT_EQ(everything().find("InterfaceName"), std::string::npos);
    EXPECT_EQ(questions, Names());
}

TEST_F(FactsTest, AreOnForASettingThatIsNotKnownAndTheErrorLogTellsSo) {
    switchLogsOn();
    FakeServices::settings["Facts"] = "no";
    offerBoth();
    start();
    answerAlways(encoded({fact("interfaceName", "ens1f0")}));
    EXPECT_EQ(onlyInstance(ethernetPort)["InterfaceName"], "string \"ens1f0\"");
    EXPECT_TRUE(logHas("/etc/merolt/cim-provider.conf: Facts=no is not known; on and off are. Facts are on."));
}

TEST_F(FactsTest, AreAskedForInTheGroupsThatTheClassHas) {
    offerBoth();
    start();
    EXPECT_EQ(questions, Names());
    for (const char* className : withFacts)
        enumerateInstances(className);
    const std::string controller = std::to_string(TavikFactsOfAdapter | TavikFactsOfLink);
    const std::string storage = std::to_string(TavikFactsOfAdapter | TavikFactsOfLink | TavikFactsOfRelations);
    const std::string all = std::to_string(everyGroup);
    const std::string counters = std::to_string(TavikFactsOfCounters);
    EXPECT_EQ(questions, (Names{"7 " + storage, "7 " + controller, "7 " + counters, "eth3 " + all, "eth3 " + all,
                                "eth3 " + controller}));
}

TEST_F(FactsTest, AreAskedForOnlyIfTheRequestWantsSome) {
    offerBoth();
    start();
    enumerateInstances(fcPort, Names{"Speed", "OperationalStatus"});
    EXPECT_EQ(questions, Names());
    answerAlways(encoded({fact("linkSpeed", std::uint64_t{1}), fact("interfaceName", "host7")}));
    const Answer listed = enumerateInstances(fcPort, Names{"Speed", "linkspeed"});
    EXPECT_EQ(questions, Names{"7 " + std::to_string(TavikFactsOfLink)});
    ASSERT_EQ(listed.objects.size(), 1U);
    EXPECT_EQ(listed.objects.front()["LinkSpeed"], "uint64 1");
    EXPECT_EQ(listed.objects.front()["InterfaceName"], "absent");
}

TEST_F(FactsTest, ChangeNoOtherCallToTheLibrary) {
    start();
    tavikLibrary.clearCalls();
    const std::string without = everything();
    const Names calls = tavikLibrary.calls();
    stop();
    offerBoth();
    instanceMI = nullptr;
    tavikLibrary.clearCalls();
    start();
    tavikLibrary.clearCalls();
    EXPECT_EQ(everything(), without);
    EXPECT_EQ(tavikLibrary.calls(), calls);
    EXPECT_FALSE(questions.empty());
}

TEST_F(FactsTest, OfACardWithoutPortsAreNotAskedFor) {
    offerBoth();
    start();
    merolt::CNAPort* const ports = std::exchange(merolt::g_CNAList->ports, nullptr);
    EXPECT_EQ(onlyInstance(nicController)["PCIAddress"], "absent");
    merolt::g_CNAList->ports = ports;
    EXPECT_EQ(questions, Names());
}

// What a library may answer that cannot be true.

TEST_F(FactsTest, OfACallThatFailsAreAbsent) {
    offerBoth();
    start();
    answer = [](const Question& question) {
        deliver(question, encoded({fact("interfaceName", "ens1f0")}));
        return 5U;
    };
    EXPECT_EQ(onlyInstance(fcPort)["InterfaceName"], "absent");
    EXPECT_EQ(onlyInstance(ethernetPort)["InterfaceName"], "absent");
    EXPECT_EQ(questions.size(), 2U);
}

TEST_F(FactsTest, OfASizeThatNoAnswerHasAreAbsent) {
    offerBoth();
    start();
    for (const std::uint32_t size : {0xFFFFFFFFU, 0x80000000U, 1048577U, 8193U}) {
        for (const std::uint32_t status : {0U, 17U}) {
            questions.clear();
            answer = [&](const Question& question) {
                *question.size = size;
                return status;
            };
            EXPECT_EQ(onlyInstance(fcPort)["InterfaceName"], "absent") << size;
            EXPECT_EQ(questions.size(), status == 17 && size == 8193 ? 2U : 1U) << size;
        }
    }
}

TEST_F(FactsTest, ThatNeedMoreRoomAreAskedForOnceMore) {
    offerStorageCall();
    start();
    Facts facts;
    for (std::uint64_t speed = 1; speed <= 4000; ++speed)
        facts.push_back(fact("supportedLinkSpeeds", speed));
    answerAlways(encoded(facts));
    const TestObject port = onlyInstance(fcPort);
    EXPECT_EQ(questions.size(), 2U);
    EXPECT_EQ(port["SupportedLinkSpeeds"].substr(0, 18), "uint64[] {1, 2, 3,");
    EXPECT_EQ(port["SupportedLinkSpeeds"].substr(port["SupportedLinkSpeeds"].size() - 7), ", 4000}");
}

TEST_F(FactsTest, OfAListWithoutEndAreCut) {
    offerStorageCall();
    start();
    Facts facts(20000, fact("supportedLinkSpeeds", std::uint64_t{1}));
    answerAlways(encoded(facts));
    const std::string speeds = onlyInstance(fcPort)["SupportedLinkSpeeds"];
    EXPECT_EQ(std::count(speeds.begin(), speeds.end(), '1'), 8192);
}

TEST_F(FactsTest, WithABrokenHeaderMakeTheWholeAnswerAbsent) {
    offerStorageCall();
    start();
    const std::string name = "interfaceName";
    const auto nameLength = static_cast<std::uint16_t>(name.size());
    const tavik::Bytes good = made(TavikFactText, name, "host7");
    EXPECT_EQ(shown(good), "InterfaceName: string \"host7\"\n");
    const tavik::Bytes broken[] = {
        raw(0, TavikFactText, 0, ""),
        raw(7, TavikFactText, 0, ""),
        raw(9, TavikFactText, 0, ""),
        raw(0xFFFFFFFF, TavikFactText, nameLength, name + "host8"),
        raw(26, TavikFactText, 0xFFFF, name + "host8"),
        raw(26, TavikFactText, 19, name + "host8"),
        tavik::Bytes(3, 0xFF),
    };
    for (const tavik::Bytes& bytes : broken) {
        tavik::Bytes both = good;
        both.insert(both.end(), bytes.begin(), bytes.end());
        EXPECT_EQ(shown(both), "") << tavik::Bytes(bytes).size();
    }
}

TEST_F(FactsTest, WithAValueThatTheyCannotHaveArePassedOver) {
    offerStorageCall();
    start();
    const std::string eight(8, '\1');
    const tavik::Bytes wrong[] = {
        made(TavikFactText, "interfaceName", ""),
        made(TavikFactText, "interfaceName", std::string(1025, 'x')),
        made(TavikFactText, "interfaceName", std::string("a\0b", 3)),
        made(TavikFactText, "interfaceName", "a\nb"),
        made(TavikFactText, "interfaceName", "a\xFFz"),
        made(TavikFactNumber, "interfaceName", eight),
        made(99, "interfaceName", "host8"),
        made(TavikFactNumber, "linkSpeed", "1234567"),
        made(TavikFactNumber, "linkSpeed", eight + "9"),
        made(TavikFactText, "linkSpeed", "16 Gbit"),
        made(TavikFactText, "InterfaceName", "host8"),
        made(TavikFactText, "interfaceNam", "host8"),
        made(TavikFactText, "", "host8"),
        made(TavikFactNumber, "totalReceivedBytes", eight),
    };
    for (const tavik::Bytes& bytes : wrong) {
        tavik::Bytes both = bytes;
        const tavik::Bytes good = made(TavikFactText, "pciSlot", "4");
        both.insert(both.end(), good.begin(), good.end());
        EXPECT_EQ(shown(both), "PCISlot: string \"4\"\n");
    }
}

TEST_F(FactsTest, AreTrueOrFalseAndNothingElse) {
    offerEthernetCall();
    start();
    const std::pair<std::string, std::string> rows[] = {{std::string(1, '\0'), "boolean false"},
                                                        {"\1", "boolean true"},
                                                        {"\2", "absent"},
                                                        {"", "absent"},
                                                        {"\1\1", "absent"}};
    for (const auto& [value, expected] : rows) {
        answerAlways(made(TavikFactTruth, "autoNegotiation", value));
        EXPECT_EQ(onlyInstance(ethernetPort)["AutoNegotiation"], expected);
    }
}

TEST_F(FactsTest, AreListsOfTextsToo) {
    offerEthernetCall();
    start();
    answerAlways(encoded({fact("usedBy", "bond0 (bond, active, up)"), fact("usedBy", "bond0.100 (vlan of bond0)")}));
    EXPECT_EQ(onlyInstance(ethernetPort)["UsedBy"],
              "string[] {\"bond0 (bond, active, up)\", \"bond0.100 (vlan of bond0)\"}");
}

TEST_F(FactsTest, ThatComeTwiceAndAreNoListCountOnce) {
    offerStorageCall();
    start();
    EXPECT_EQ(shown(encoded({fact("interfaceName", "host7"), fact("interfaceName", "host8")})),
              "InterfaceName: string \"host7\"\n");
}

TEST_F(FactsTest, EveryFactOfEveryClassIsDeclaredWithItsTypeAndUnit) {
    offerBoth();
    start();
    const Names classNames(std::begin(withFacts), std::end(withFacts));
    for (const auto& row : merolt::fact_table::rows) {
        for (std::size_t place = 0; place < classNames.size(); ++place) {
            const unsigned bits[] = {merolt::FactOfFCPort,           merolt::FactOfStorageController,
                                     merolt::FactOfFCPortStatistics, merolt::FactOfEthernetPort,
                                     merolt::FactOfNetworkPort,      merolt::FactOfNicController};
            const auto* property = classes.find(implementationNamespace, classNames[place])->property(row.property);
            SCOPED_TRACE(classNames[place] + "." + row.property);
            if ((row.classes & bits[place]) == 0) {
                EXPECT_EQ(property, nullptr);
                continue;
            }
            ASSERT_NE(property, nullptr);
            const CMPIType types[] = {CMPI_null, CMPI_string, CMPI_uint64, CMPI_boolean};
            const bool isList = row.count == merolt::FactCount::list;
            EXPECT_EQ(property->type, types[row.type] | (isList ? CMPI_ARRAY : 0));
            const auto* unit = cimhost::findQualifier(property->qualifiers, "PUnit");
            EXPECT_EQ(unit ? unit->value.text() : "", row.unit ? row.unit : "");
            EXPECT_TRUE(cimhost::isLeftOutWithoutValue(*property));
        }
    }
}

} // namespace
