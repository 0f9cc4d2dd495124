// Each rule of the doctor: a planted fault shows that rule and no other.
#include "cimhost/doctor/rules.h"

#include "optics/sff8472.h"
#include "tests/optics/memories.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace cimhost::doctor {
namespace {

using namespace monitoring;
using optics::tests::Bytes;
using optics::tests::put;
using optics::tests::putChecksum;

/// A 16 gigabit module with everything in order.
struct Pages {
    Pages() : identity(optics::tests::sfpIdentity()), diagnostics(optics::tests::sfpDiagnostics()) {
        put(identity, 3, {0, 0, 0, 0, 0x40, 0x40, 0x0C, 0x70});
        identity[12] = 140;
        putChecksum(identity, 0, 63);
    }
    optics::Module decode() const { return optics::decodeSff8472(identity, diagnostics); }

    Bytes identity;
    Bytes diagnostics;
};

constexpr std::uint64_t sixteenGigabits = 17000000000;

Module moduleAt(const std::string& jack, const std::string& serialNumber) {
    Module module;
    module.tag = serialNumber + "_" + jack;
    module.jack = jack;
    module.vendor = "EXAMPLE OPTICS";
    module.partNumber = "EX-SFP16";
    module.serialNumber = serialNumber;
    module.isReadable = true;
    module.hasPages = true;
    module.told = Pages().decode();
    return module;
}

FibreChannelPort storagePort(const std::string& card, const std::string& jack, const std::string& name) {
    FibreChannelPort port;
    port.id = card + "_2000000000000000_" + name;
    port.jack = jack;
    port.portName = name;
    port.nodeName = "2000000000000000";
    port.cardSerialNumber = card;
    port.model = "MF1602";
    port.state = LinkState::up;
    port.answers = true;
    port.speedBitsPerSecond = sixteenGigabits;
    port.largestSpeedBitsPerSecond = sixteenGigabits;
    port.targets = 2;
    return port;
}

void addCard(Snapshot& snapshot, const std::string& serialNumber, const std::string& digit) {
    snapshot.cards.push_back({serialNumber, "MF1602", "B1"});
    for (const std::string number : {"1", "2"}) {
        const std::string jack = serialNumber + "_" + number;
        const std::string name = "210000000000" + digit + "00" + number;
        snapshot.jacks.push_back({jack, serialNumber, static_cast<unsigned>(number[0] - '0')});
        snapshot.modules.push_back(moduleAt(jack, "EX" + digit + number));
        snapshot.fibreChannelPorts.push_back(storagePort(serialNumber, jack, name));
        snapshot.counters.push_back({name, {{"LinkFailures", 1}, {"LossOfSignalCounter", 0}, {"CRCErrors", 0}}});
        snapshot.software.push_back({serialNumber, name, "Driver", "9.4.0-mlt1", "MF1602"});
        snapshot.software.push_back({serialNumber, name, "DriverFirmware", "8.1.0", "MF1602"});
        snapshot.software.push_back({serialNumber, name, "FlashFirmware", "8.01.00", "MF1602"});
    }
    snapshot.software.push_back({serialNumber, "", "FlashImage", "1.1.96", "MF1602"});
}

/// Two cards of one model, and nothing wrong with them.
Snapshot healthy() {
    Snapshot snapshot;
    addCard(snapshot, "CARD0001", "1");
    addCard(snapshot, "CARD0002", "2");
    return snapshot;
}

/// A port that is both: storage over Ethernet on jack 1 of the first card.
EthernetPort& addEthernet(Snapshot& snapshot) {
    snapshot.fibreChannelPorts[0].isOverEthernet = true;
    return snapshot.ethernetPorts.emplace_back(
        EthernetPort{"020000000001", "CARD0001_1", "CARD0001", LinkState::up, 10000, 9000, "2100000000001001"});
}

/// The names of the rules that hold, each as often as it does.
std::multiset<std::string> namesOf(const Snapshot& snapshot) {
    std::multiset<std::string> names;
    for (const Diagnosis& one : diagnose({snapshot}, {}))
        names.emplace(one.rule->name);
    return names;
}

using Names = std::multiset<std::string>;

std::string evidenceOf(const Snapshot& snapshot) {
    const auto found = diagnose({snapshot}, {});
    return found.empty() ? "" : found[0].sign.subject + ": " + found[0].sign.evidence;
}

void readAnew(Module& module, const Pages& pages) { module.told = pages.decode(); }

TEST(Doctor, FindsNothingWrongWithHealthyCards) { EXPECT_EQ(namesOf(healthy()), Names{}); }

TEST(Doctor, NamesTheInterfacesOfAPortWhereTheyAreTold) {
    auto snapshot = healthy();
    auto& storage = snapshot.fibreChannelPorts[0];
    storage.answers = false;
    storage.interfaceName = "host7";
    EXPECT_EQ(evidenceOf(snapshot), "port 1 of card CARD0001 (host7): the port tells neither its state nor its type");
    storage.jack.clear();
    EXPECT_EQ(evidenceOf(snapshot), "port 2100000000001001 (host7): the port tells neither its state nor its type");

    snapshot = healthy();
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    snapshot.fibreChannelPorts[0].interfaceName = "host7";
    addEthernet(snapshot).interfaceName = "eth2";
    EXPECT_EQ(evidenceOf(snapshot).substr(0, 47), "port 1 of card CARD0001 (eth2, host7): no link;");
}

TEST(Doctor, FindsNothingWrongWithAnUnusedPort) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[1].state = LinkState::down;
    snapshot.fibreChannelPorts[1].targets = 0;
    snapshot.counters[1].errors[0].value = 100;
    snapshot.modules.erase(snapshot.modules.begin() + 1);
    EXPECT_EQ(namesOf(snapshot), Names{});
}

TEST(Doctor, TellsThatNoAdapterIsThere) { EXPECT_EQ(namesOf({}), Names{"no-adapters"}); }

TEST(Doctor, TellsARefusedQuestion) {
    auto snapshot = healthy();
    snapshot.failures.push_back({"Merolt_FCHBA_SoftwareIdentity", "CIM_ERR_FAILED: no memory"});
    EXPECT_EQ(namesOf(snapshot), Names{"refused-question"});
    EXPECT_EQ(evidenceOf(snapshot), "class Merolt_FCHBA_SoftwareIdentity: CIM_ERR_FAILED: no memory");
}

TEST(Doctor, TellsACardThatAnswersNothing) {
    auto snapshot = healthy();
    snapshot.cards.push_back({"CARD0003", "MF1602", "B1"});
    EXPECT_EQ(namesOf(snapshot), Names{"silent-card"});
}

TEST(Doctor, KnowsACardByTheShortFormOfItsSerialNumber) {
    auto snapshot = healthy();
    snapshot.cards.push_back({"YK50AP23X00D", "ZKM4102", "03"});
    snapshot.jacks.push_back({"11S00MD102YK50AP23X00D_1", "11S00MD102YK50AP23X00D", 1});
    EXPECT_EQ(namesOf(snapshot), Names{});
}

TEST(Doctor, TellsAPortThatAnswersNothing) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[2].answers = false;
    snapshot.fibreChannelPorts[2].state = LinkState::unknown;
    EXPECT_EQ(namesOf(snapshot), Names{"silent-port"});
    EXPECT_EQ(evidenceOf(snapshot), "port 1 of card CARD0002: the port tells neither its state nor its type");
}

TEST(Doctor, TellsALinkThatIsDownAlthoughLightArrives) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    EXPECT_EQ(namesOf(snapshot), Names{"link-down-light"});
    EXPECT_EQ(evidenceOf(snapshot), "port 1 of card CARD0001: no link; the module receives 0.5000 mW (-3.01 dBm)");
}

TEST(Doctor, TellsADarkLinkAndThatTheOtherEndIsToBlame) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    Pages pages;
    put(pages.diagnostics, 104, {0, 0});
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"link-down-dark"});
    EXPECT_EQ(diagnose({snapshot}, {})[0].sign.hint,
              "This end sends light, so look at the other end and at the fibre that leads here.");
}

TEST(Doctor, TellsThatThisEndsTransmitterIsToBlame) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    Pages pages;
    pages.diagnostics[110] = 0x06; // fault of the transmitter, lost signal
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"link-down-dark"});
    EXPECT_EQ(diagnose({snapshot}, {})[0].sign.hint,
              "This end's own transmitter is off or faulty: begin with this module and this port.");
}

TEST(Doctor, TellsALinkThatIsDownWhereTheModuleIsMute) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    Pages pages;
    pages.identity[92] = 0;
    putChecksum(pages.identity, 64, 95);
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"link-down"});
}

TEST(Doctor, TellsAnEthernetLinkThatIsDown) {
    auto snapshot = healthy();
    addEthernet(snapshot).state = LinkState::down;
    EXPECT_EQ(namesOf(snapshot), Names{"link-down-light"});
}

TEST(Doctor, TellsAModuleThatTheCardCannotRead) {
    auto snapshot = healthy();
    snapshot.modules[0].isReadable = false;
    EXPECT_EQ(namesOf(snapshot), Names{"module-unreadable"});
}

TEST(Doctor, TellsAlarmsOfAModule) {
    auto snapshot = healthy();
    Pages pages;
    put(pages.diagnostics, 96, {0x50, 0x00}); // 80 degrees
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"optics-alarm"});
    EXPECT_EQ(evidenceOf(snapshot),
              "port 1 of card CARD0001: temperature 80.0 degrees Celsius: high alarm, the limit is "
              "75.0 degrees Celsius");
}

TEST(Doctor, TellsWarningsOfAModule) {
    auto snapshot = healthy();
    Pages pages;
    put(pages.diagnostics, 104, {0x00, 0x80}); // receives 0.0128 mW
    readAnew(snapshot.modules[3], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"optics-warning"});
}

TEST(Doctor, TellsReceivePowerNearTheLeast) {
    auto snapshot = healthy();
    Pages pages;
    put(pages.diagnostics, 104, {0x00, 0xA5}); // 0.0165 mW; the low warning is 0.0158
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"low-receive-power"});
    EXPECT_EQ(evidenceOf(snapshot), "port 1 of card CARD0001: receive power 0.0165 mW (-17.83 dBm), only 0.19 dB above "
                                    "the low warning");
}

TEST(Doctor, TellsAModuleThatContradictsItself) {
    auto snapshot = healthy();
    Pages pages;
    ++pages.identity[63];
    readAnew(snapshot.modules[0], pages);
    EXPECT_EQ(namesOf(snapshot), Names{"module-unbelievable"});
    EXPECT_EQ(evidenceOf(snapshot), "port 1 of card CARD0001: the checksum of the serial ID's base fields is wrong");
}

TEST(Doctor, FindsNothingWrongWithAModuleWithoutDiagnosticsOrMemory) {
    auto snapshot = healthy();
    Pages pages;
    pages.identity[92] = 0;
    putChecksum(pages.identity, 64, 95);
    readAnew(snapshot.modules[0], pages);
    snapshot.modules[1].hasPages = false;
    snapshot.modules[1].told = {};
    EXPECT_EQ(namesOf(snapshot), Names{});
}

TEST(Doctor, TellsAStoragePortThatIsSlowerThanCardAndModule) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[0].speedBitsPerSecond = 8500000000;
    EXPECT_EQ(namesOf(snapshot), Names{"low-speed"});
    EXPECT_EQ(evidenceOf(snapshot),
              "port 1 of card CARD0001: the link runs at 8 Gbit/s; card and module both have 16 Gbit/s");
    snapshot.fibreChannelPorts[0].largestSpeedBitsPerSecond = 8500000000;
    EXPECT_EQ(namesOf(snapshot), Names{}) << "the card has no more";
}

TEST(Doctor, TellsAnEthernetPortThatIsSlowerThanCardAndModule) {
    auto snapshot = healthy();
    addEthernet(snapshot).speedMegabits = 1000;
    EXPECT_EQ(namesOf(snapshot), Names{"low-speed"});
}

TEST(Doctor, TellsANameThatLeadsBackToTheHost) {
    const auto snapshot = healthy();
    const auto diagnosed = [&](const std::string& name) { return diagnose({snapshot, nullptr, 0, {name}}, {}); };
    for (const auto* name : {"127.0.1.1", "127.255.0.1", "localhost", "Localhost.localdomain", "::1"}) {
        const auto found = diagnosed(name);
        ASSERT_EQ(found.size(), 1U) << name;
        EXPECT_EQ(found[0].rule->name, "loopback-name");
        EXPECT_EQ(found[0].sign.evidence, std::string("clients know it as ") + name);
    }
    for (const auto* name : {"128.0.1.1", "127.0.0", "127.example.org", "host.localhost.org", "::2", ""})
        EXPECT_TRUE(diagnosed(name).empty()) << name;
}

TEST(Doctor, TellsDamagedFramesAndFrequentFailures) {
    for (const auto& [counter, name] :
         {std::pair{0U, "link-failures"}, std::pair{1U, "loss-of-signal"}, std::pair{2U, "crc-errors"}}) {
        auto snapshot = healthy();
        snapshot.counters[0].errors[counter].value = 12;
        EXPECT_EQ(namesOf(snapshot), Names{name});
        EXPECT_FALSE(diagnose({snapshot}, {})[0].sign.hint.empty()) << "the likely cause";
    }
}

TEST(Doctor, TellsCountersThatGrowBetweenTwoLooks) {
    auto snapshot = healthy();
    const auto before = snapshot.counters;
    snapshot.counters[3].errors[1].value += 4;
    const auto found = diagnose({snapshot, &before, 10}, {});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].rule->name, "growing-errors");
    EXPECT_EQ(found[0].sign.subject, "port 2 of card CARD0002");
    EXPECT_EQ(found[0].sign.evidence, "LossOfSignalCounter grew by 4 within 10 s, to 4");
}

TEST(Growth, GoesOnWhereACounterWraps) {
    EXPECT_EQ(growthOf(5, 5), 0U);
    EXPECT_EQ(growthOf(5, 9), 4U);
    EXPECT_EQ(growthOf(0xFFFFFFFE, 3), 5U);
    EXPECT_EQ(growthOf(1000, 3), 3U) << "begun anew";
    EXPECT_EQ(growthOf(0x100000005, 3), 3U);
}

TEST(Doctor, TellsAPortWithoutTargetsWhoseSisterSeesSome) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[1].targets = 0;
    EXPECT_EQ(namesOf(snapshot), Names{"no-targets"});
    snapshot.fibreChannelPorts[0].targets = 0;
    EXPECT_EQ(namesOf(snapshot), Names{}) << "no sister sees any";
}

TEST(Doctor, TellsAnMtuThatIsTooSmallForFibreChannel) {
    auto snapshot = healthy();
    addEthernet(snapshot).mtuBytes = 1500;
    EXPECT_EQ(namesOf(snapshot), Names{"fcoe-mtu"});
    snapshot.fibreChannelPorts[0].isOverEthernet = false;
    EXPECT_EQ(namesOf(snapshot), Names{}) << "Ethernet alone";
}

TEST(Doctor, TellsCardsOfOneModelWithDifferentFirmware) {
    auto snapshot = healthy();
    snapshot.software.back().version = "1.1.90";
    EXPECT_EQ(namesOf(snapshot), Names{"firmware-differs"});
    EXPECT_EQ(evidenceOf(snapshot),
              "cards of model MF1602: flash image 1.1.96 on card CARD0001, 1.1.90 on card CARD0002");
    snapshot.software.back().model = "MF1601";
    EXPECT_EQ(namesOf(snapshot), Names{}) << "another model";
}

TEST(Doctor, TakesVersionsThatDifferInZerosForTheSame) {
    auto snapshot = healthy();
    snapshot.software.back().version = "01.01.96";
    EXPECT_EQ(namesOf(snapshot), Names{});
    snapshot.software.back().version = "N/A";
    EXPECT_EQ(namesOf(snapshot), Names{});
}

TEST(Doctor, TellsFirmwareThatIsNotActive) {
    auto snapshot = healthy();
    snapshot.software[1].version = "8.0.9";
    EXPECT_EQ(namesOf(snapshot), Names{"firmware-not-active"});
    EXPECT_EQ(evidenceOf(snapshot),
              "port 2100000000001001 of card CARD0001: the driver runs firmware 8.0.9, the card's "
              "flash has 8.01.00");
}

TEST(Doctor, TellsSerialNumbersThatStandTwice) {
    auto snapshot = healthy();
    snapshot.cards[1].serialNumber = "CARD0001";
    for (std::size_t i = 2; i < 4; ++i)
        snapshot.jacks[i].cardSerialNumber = "CARD0001";
    EXPECT_EQ(namesOf(snapshot), Names{"duplicate-serial-number"});
    snapshot = healthy();
    snapshot.modules[2].serialNumber = snapshot.modules[0].serialNumber;
    EXPECT_EQ(namesOf(snapshot), Names{"duplicate-serial-number"});
    snapshot.modules[0].told.identity.copper = snapshot.modules[2].told.identity.copper = true;
    EXPECT_EQ(namesOf(snapshot), Names{}) << "the two ends of a cable";
}

TEST(Doctor, TellsPortNamesThatStandTwice) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[3].portName = snapshot.fibreChannelPorts[0].portName;
    EXPECT_EQ(namesOf(snapshot), Names{"duplicate-port-name"});
}

TEST(Doctor, TellsMacAddressesThatStandTwice) {
    auto snapshot = healthy();
    addEthernet(snapshot);
    auto second = snapshot.ethernetPorts[0];
    second.jack.clear();
    snapshot.ethernetPorts.push_back(second);
    EXPECT_EQ(namesOf(snapshot), Names{"duplicate-mac-address"});
    EXPECT_EQ(evidenceOf(snapshot),
              "MAC address " + snapshot.ethernetPorts[0].macAddress + ": it is published 2 times");
    snapshot.ethernetPorts[0].interfaceName = "eth0";
    snapshot.ethernetPorts[1].interfaceName = "eth1";
    EXPECT_EQ(evidenceOf(snapshot),
              "MAC address " + snapshot.ethernetPorts[0].macAddress + ": it is published 2 times: eth0, eth1");
    for (auto& port : snapshot.ethernetPorts)
        port.macAddress = "000000000000";
    EXPECT_EQ(namesOf(snapshot), Names{}) << "no address at all";
}

TEST(Doctor, TellsTheMostUrgentFirst) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[1].targets = 0;
    snapshot.fibreChannelPorts[0].state = LinkState::down;
    const auto found = diagnose({snapshot}, {});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].rule->name, "link-down-light");
    EXPECT_EQ(found[1].rule->name, "no-targets");
}

TEST(Doctor, LeavesOutWhatIsIgnored) {
    auto snapshot = healthy();
    snapshot.fibreChannelPorts[1].targets = 0;
    const std::vector<std::string> ignored{"no-targets"};
    EXPECT_TRUE(diagnose({snapshot}, ignored).empty());
}

TEST(DoctorRules, HaveNamesThatCanBeTypedAndStandOnce) {
    std::set<std::string_view> names;
    for (const Rule& rule : rules()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        EXPECT_EQ(rule.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos) << rule.name;
        EXPECT_FALSE(rule.title.empty() || rule.why.empty() || rule.advice.empty()) << rule.name;
        EXPECT_EQ(findRule(rule.name), &rule);
    }
    EXPECT_EQ(findRule("no-such-rule"), nullptr);
}

} // namespace
} // namespace cimhost::doctor
