// The list of converged cards and their Ethernet ports: how it follows the library's tree and its polls.
#include "adapters.h"
#include "provider_host.h"
#include "test_support.h"

#include "inventory/cna_list.h"
#include "inventory/poll_thread_context.h"
#include "log/log.h"
#include "text/text.h"

#include <cstring>

using namespace adapters;

namespace {

using merolt::CNACard;
using merolt::CNAPort;

struct Alert {
    int type;
    CNACard* card;
    CNAPort* port;

    bool operator==(const Alert&) const = default;
};

std::vector<Alert> alerts;

void recordAlert(Merolt_CNA_Provider*, int type, CNACard* card, CNAPort* port) { alerts.push_back({type, card, port}); }

constexpr int linkUpAlarm = 1;
constexpr int linkDownAlarm = 2;

/// Pages whose serial ID bytes carry the three texts, padded with blanks.
tavik::Transceiver transceiver(const std::string& vendor, const std::string& part, const std::string& serial) {
    tavik::Transceiver made;
    made.pageA0.assign(96, 0);
    const auto put = [&](std::size_t offset, const std::string& text) {
        for (std::size_t index = 0; index < 16; ++index)
            made.pageA0[offset + index] = static_cast<std::uint8_t>(index < text.size() ? text[index] : ' ');
    };
    put(20, vendor);
    put(40, part);
    put(68, serial);
    return made;
}

class CnaListTest : public ProviderTest {
protected:
    void SetUp() override {
        merolt::initializeLogging();
        alerts.clear();
    }
    void TearDown() override {
        merolt::Clear_CNA_List();
        EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    }

    void build(tavik::Fleet adapters) {
        tavikLibrary.setFleet(std::move(adapters));
        merolt::Initialize_CNA_List();
    }
    void buildWith(tavik::NicFunction function) { build(fleet({card("S1", {std::move(function)})})); }

    void poll() { merolt::Update_CNA_List(&record, recordAlert); }

    static CNAPort& firstPort() { return *merolt::g_CNAList->ports; }

    PollThreadContext record;
};

TEST_F(CnaListTest, WithoutEthernetFunctionThereIsNoListAndNothingIsPolled) {
    build(fleet({card("S1", {storageFunction(1, 0xA107)})}));
    EXPECT_EQ(merolt::g_CNAList, nullptr);
    tavikLibrary.clearCalls();
    poll();
    EXPECT_EQ(tavikLibrary.calls(), std::vector<std::string>());
    EXPECT_EQ(logLines().back(), "Exiting Initialize_CNA_List()");
}

TEST_F(CnaListTest, WithoutAdapterListTheBuildOnlyLogs) {
    build(tavik::Fleet{std::nullopt});
    EXPECT_EQ(merolt::g_CNAList, nullptr);
    const std::vector<std::string> wanted = {"Entered Initialize_CNA_List()", "Exiting Initialize_CNA_List()"};
    EXPECT_EQ(logLines(), wanted);
}

TEST_F(CnaListTest, FunctionsOfOneAdapterAreOneCardWithItsPortsInWalkOrderAndTheLastFunctionsProperties) {
    tavik::NicFunction first = nicFunction(7, 3);
    first.card.modelName = "First";
    tavik::NicFunction second = nicFunction(7, 1);
    second.card.modelName = "Second";
    build(fleet({card("S1", {first, second})}));
    CNACard* made = merolt::g_CNAList;
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->next, nullptr);
    EXPECT_EQ(made->adapterId, 7U);
    EXPECT_STREQ(made->properties.modelName, "Second");
    ASSERT_NE(made->ports, nullptr);
    EXPECT_EQ(made->ports->portProperties.portId, 3U);
    ASSERT_NE(made->ports->next, nullptr);
    EXPECT_EQ(made->ports->next->portProperties.portId, 1U);
    EXPECT_EQ(made->ports->next->next, nullptr);
}

TEST_F(CnaListTest, CardsStandInTheOrderInWhichTheWalkMetThem) {
    build(fleet(
        {card("S1", {nicFunction(5, 1), nicFunction(2, 2)}), card("S2", {nicFunction(5, 3), nicFunction(9, 4)})}));
    std::vector<std::uint32_t> ids;
    for (CNACard* made = merolt::g_CNAList; made; made = made->next)
        ids.push_back(made->adapterId);
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{5, 2, 9}));
    EXPECT_EQ(merolt::g_CNAList->ports->next->portProperties.portId, 3U) << "a card may spread over adapters";
}

TEST_F(CnaListTest, FunctionsOfOtherTypesArePassedOver) {
    tavik::NicFunction other = nicFunction(1, 1);
    other.protocolType = 3;
    build(fleet({card("S1", {other, nicFunction(2, 2)})}));
    ASSERT_NE(merolt::g_CNAList, nullptr);
    EXPECT_EQ(merolt::g_CNAList->adapterId, 2U);
    EXPECT_EQ(merolt::g_CNAList->next, nullptr);
}

TEST_F(CnaListTest, AdaptersWithoutPortsAndPortsWithoutFunctionsArePassedOver) {
    tavik::Card without = card("S0", {});
    without.ports = std::nullopt;
    tavik::Card holed = card("S1", {nicFunction(1, 1), nicFunction(1, 2)});
    holed.ports->front().functions = std::nullopt;
    build(fleet({without, holed}));
    ASSERT_NE(merolt::g_CNAList, nullptr);
    EXPECT_EQ(firstPort().portProperties.portId, 2U);
    EXPECT_EQ(firstPort().next, nullptr);
}

TEST_F(CnaListTest, BlocksOfTheFunctionEntryAreCopied) {
    tavikLibrary.setFleet(fleet({card("S1", {nicFunction(1, 1)})}));
    TAVIK_NicFunction& entry = tavikLibrary.tree().list()->first->phyPorts->first->protocols->first->nic;
    std::memset(entry.portExtension, 0xA5, sizeof(entry.portExtension));
    std::memset(entry.functionData, 0x5A, sizeof(entry.functionData));
    entry.port.mtu = 9000;
    entry.port.link.speed = 10000;
    merolt::Initialize_CNA_List();
    EXPECT_EQ(std::memcmp(firstPort().portExtension, entry.portExtension, sizeof(entry.portExtension)), 0);
    EXPECT_EQ(std::memcmp(firstPort().functionData, entry.functionData, sizeof(entry.functionData)), 0);
    EXPECT_EQ(firstPort().portProperties.mtu, 9000U);
    EXPECT_EQ(firstPort().portProperties.link.speed, 10000U);
    EXPECT_EQ(std::memcmp(merolt::g_CNAList->properties.wwn, entry.card.wwn, sizeof(entry.card.wwn)), 0);
}

TEST_F(CnaListTest, TextsWithoutTerminatorEndWithTheirFields) {
    tavikLibrary.setFleet(fleet({card("S1", {nicFunction(1, 1)})}));
    TAVIK_NicFunction& entry = tavikLibrary.tree().list()->first->phyPorts->first->protocols->first->nic;
    std::memset(entry.card.manufacturer, 'm',
                sizeof(TAVIK_CardProperties) - offsetof(TAVIK_CardProperties, manufacturer));
    std::memset(entry.port.deviceName, 'd', sizeof(entry.port.deviceName));
    merolt::Initialize_CNA_List();
    const TAVIK_CardProperties& properties = merolt::g_CNAList->properties;
    EXPECT_EQ(std::strlen(properties.manufacturer), sizeof(properties.manufacturer) - 1);
    EXPECT_EQ(std::strlen(properties.modelName), sizeof(properties.modelName) - 1);
    EXPECT_EQ(std::strlen(properties.serialNumber), sizeof(properties.serialNumber) - 1);
    EXPECT_EQ(std::strlen(properties.driverVersion), sizeof(properties.driverVersion) - 1);
    EXPECT_EQ(std::strlen(properties.defaultSoftwareVersion), sizeof(properties.defaultSoftwareVersion) - 1);
    EXPECT_EQ(std::strlen(properties.flashVersion), sizeof(properties.flashVersion) - 1);
    EXPECT_EQ(std::strlen(properties.defaultFruNumber), sizeof(properties.defaultFruNumber) - 1);
    EXPECT_EQ(std::strlen(firstPort().portProperties.deviceName), sizeof(entry.port.deviceName) - 1);
    EXPECT_EQ(merolt::FindCNAFromSerialNumber("m"), nullptr);
}

// FCoE linkage

TEST_F(CnaListTest, LinkageIsTheListsOwnCopyAndTheLibrarysIsGivenBack) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.fcoeLinkage.resize(2);
    function.fcoeLinkage[1].fcPortId = {1, 2, 3};
    buildWith(function);
    ASSERT_EQ(firstPort().fcoeLinkageCount, 2U);
    EXPECT_EQ(firstPort().fcoeLinkage[1].fcPortId[2], 3);
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_FreeMem"), 1U);
}

TEST_F(CnaListTest, APortWithoutLinkageHasNoneAndNothingIsGivenBack) {
    buildWith(nicFunction(1, 1));
    EXPECT_EQ(firstPort().fcoeLinkage, nullptr);
    EXPECT_EQ(firstPort().fcoeLinkageCount, 0U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_FreeMem"), 0U);
}

TEST_F(CnaListTest, AFailedLinkageCallLeavesThePortWithoutLinkage) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.fcoeLinkage.resize(2);
    function.failures.fcoeLinkage = 5;
    buildWith(function);
    EXPECT_EQ(firstPort().fcoeLinkage, nullptr);
    EXPECT_EQ(firstPort().fcoeLinkageCount, 0U);
}

// IP data

tavik::IPConfiguration someAddresses() {
    tavik::IPConfiguration ip;
    ip.ipv4.bytes = {192, 0, 2, 7};
    ip.ipv4.family = tavik::AddressIPv4;
    ip.ipv4Mask.bytes = {255, 255, 255, 0};
    ip.firstList.resize(1);
    ip.firstList[0].family = tavik::AddressIPv6;
    ip.firstList[0].bytes[15] = 1;
    ip.thirdList.resize(3);
    ip.thirdList[2].bytes[0] = 9;
    return ip;
}

TEST_F(CnaListTest, IPDataIsTheListsOwnCopyAndTheLibrarysIsGivenBackOnce) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.ip = someAddresses();
    buildWith(function);
    const TAVIK_IPProperties& ip = firstPort().ipProperties;
    EXPECT_EQ(ip.ipv4.address[3], 7);
    EXPECT_EQ(ip.ipv4Mask.address[2], 255);
    ASSERT_EQ(ip.firstCount, 1U);
    EXPECT_EQ(ip.firstList[0].address[15], 1);
    EXPECT_EQ(ip.secondCount, 0U);
    EXPECT_EQ(ip.secondList, nullptr);
    ASSERT_EQ(ip.thirdCount, 3U);
    EXPECT_EQ(ip.thirdList[2].address[0], 9);
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_FreeMem"), 1U);
    EXPECT_TRUE(inOrder(logLines(), {"About to copy IPProperties", "", "Finished copying IPProperties", "",
                                     "After TAVIK_FreeMem", "Exiting Initialize_CNA_List()"}));
}

TEST_F(CnaListTest, AFailedIPCallLeavesZerosAndThePort) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.ip = someAddresses();
    function.failures.ip = 3;
    buildWith(function);
    const TAVIK_IPProperties zeros{};
    EXPECT_EQ(std::memcmp(&firstPort().ipProperties, &zeros, sizeof(zeros)), 0);
    EXPECT_TRUE(inOrder(logLines(), {"Error getting port IP Info", "", "Exiting Initialize_CNA_List()"}));
    EXPECT_FALSE(logHas("About to copy IPProperties"));
}

class DeviceNameTest : public CnaListTest, public testing::WithParamInterface<const char*> {};

TEST_P(DeviceNameTest, OfAtMostOneCharacterGetsNoIPDataButAllOtherCalls) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.deviceName = GetParam();
    function.ip = someAddresses();
    function.link.state = tavik::LinkUp;
    function.transceiver = transceiver("V", "P", "S");
    buildWith(function);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetIPProperties"), 0U);
    const TAVIK_IPProperties zeros{};
    EXPECT_EQ(std::memcmp(&firstPort().ipProperties, &zeros, sizeof(zeros)), 0);
    EXPECT_EQ(firstPort().transceiverPresent, 1);
    tavikLibrary.clearCalls();
    poll();
    const std::vector<std::string> wanted = {"TAVIK_GetLinkProperties", "TAVIK_GetTransceiverDMIData"};
    EXPECT_EQ(tavikLibrary.calls(), wanted);
}

INSTANTIATE_TEST_SUITE_P(Names, DeviceNameTest, testing::Values("", "e"));

TEST_F(CnaListTest, ADeviceNameOfTwoCharactersGetsIPData) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.deviceName = "e1";
    function.ip = someAddresses();
    buildWith(function);
    EXPECT_EQ(firstPort().ipProperties.firstCount, 1U);
}

// Transceivers

TEST_F(CnaListTest, ATransceiverShowsItsTextsWithoutTheBlanksThatFillThem) {
    tavik::NicFunction function = nicFunction(1, 4);
    function.transceiver = transceiver("VENDOR", "PART NUMBER 1234", "");
    buildWith(function);
    const merolt::SFPField& sfp = firstPort().sfp;
    EXPECT_EQ(firstPort().transceiverPresent, 1);
    EXPECT_STREQ(sfp.Manufacturer.text(), "VENDOR");
    EXPECT_STREQ(sfp.PartNumber.text(), "PART NUMBER 1234");
    EXPECT_STREQ(sfp.SerialNumber.text(), "");
    EXPECT_STREQ(sfp.header.text(), "");
    EXPECT_TRUE(inOrder(logLines(), {"SFPField.PartNumber:   PART NUMBER 1234", "SFPField.SerialNumber: ",
                                     "SFPFIELD.Manufacturer: VENDOR", "Transceiver on portID 4"}));
}

TEST_F(CnaListTest, BlanksInFrontOfATerminatorStay) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.transceiver = transceiver("AB  ", "", "");
    function.transceiver->pageA0[24] = 0;
    buildWith(function);
    EXPECT_STREQ(firstPort().sfp.Manufacturer.text(), "AB  ");
}

TEST_F(CnaListTest, APortWithoutTransceiverSaysSo) {
    buildWith(nicFunction(1, 4));
    EXPECT_EQ(firstPort().transceiverPresent, 0);
    EXPECT_TRUE(logHas("No Transceiver on portID 4"));
}

/// Bytes that a transceiver delivers, and which texts of it are taken.
struct Delivered {
    std::size_t bytes;
    const char* manufacturer;
    const char* partNumber;
    const char* serialNumber;
};

void PrintTo(const Delivered& row, std::ostream* out) { *out << row.bytes << " bytes"; }

class TransceiverSizeTest : public CnaListTest, public testing::WithParamInterface<Delivered> {};

TEST_P(TransceiverSizeTest, AFieldThatIsNotReachedKeepsItsEarlierText) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.transceiver = transceiver("OLDVENDOR", "OLDPART", "OLDSERIAL");
    buildWith(function);
    tavik::Transceiver next = transceiver("V", "P", "S");
    next.pageA0.resize(GetParam().bytes);
    tavikLibrary.nic("eth1").transceiver = next;
    poll();
    EXPECT_EQ(firstPort().transceiverPresent, 1);
    EXPECT_STREQ(firstPort().sfp.Manufacturer.text(), GetParam().manufacturer);
    EXPECT_STREQ(firstPort().sfp.PartNumber.text(), GetParam().partNumber);
    EXPECT_STREQ(firstPort().sfp.SerialNumber.text(), GetParam().serialNumber);
}

INSTANTIATE_TEST_SUITE_P(Sizes, TransceiverSizeTest,
                         testing::Values(Delivered{0, "OLDVENDOR", "OLDPART", "OLDSERIAL"},
                                         Delivered{35, "OLDVENDOR", "OLDPART", "OLDSERIAL"},
                                         Delivered{36, "V", "OLDPART", "OLDSERIAL"},
                                         Delivered{40, "V", "OLDPART", "OLDSERIAL"},
                                         Delivered{55, "V", "OLDPART", "OLDSERIAL"},
                                         Delivered{56, "V", "P", "OLDSERIAL"}, Delivered{83, "V", "P", "OLDSERIAL"},
                                         Delivered{84, "V", "P", "S"}),
                         [](const auto& test) { return "Of" + std::to_string(test.param.bytes) + "Bytes"; });

TEST_F(CnaListTest, ATransceiverThatIsGoneKeepsItsTextAndReadsAsAbsent) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.transceiver = transceiver("V", "P", "S");
    buildWith(function);
    tavikLibrary.nic("eth1").transceiver.reset();
    poll();
    EXPECT_EQ(firstPort().transceiverPresent, 0);
    EXPECT_STREQ(firstPort().sfp.SerialNumber.text(), "S");
}

TEST_F(CnaListTest, TheLibraryIsOfferedABufferOf1024Bytes) {
    std::vector<std::uint32_t> sizes;
    tavikLibrary.onGetTransceiver = [&](const char* deviceName, std::uint32_t* size, void* buffer) {
        EXPECT_STREQ(deviceName, "eth1");
        sizes.push_back(*size);
        std::memset(buffer, ' ', *size);
        *size = 0xFFFFFFFF;
        return 0U;
    };
    buildWith(nicFunction(1, 1));
    poll();
    EXPECT_EQ(sizes, (std::vector<std::uint32_t>{1024, 1024}));
    EXPECT_STREQ(firstPort().sfp.Manufacturer.text(), "");
}

// Link polls

/// A link state that changes, and the alert that it raises.
struct LinkChange {
    std::uint32_t before;
    std::uint32_t after;
    int alarm;
    const char* line;
};

void PrintTo(const LinkChange& row, std::ostream* out) { *out << "from " << row.before << " to " << row.after; }

class LinkChangeTest : public CnaListTest, public testing::WithParamInterface<LinkChange> {};

TEST_P(LinkChangeTest, RaisesOneAlert) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.link = {1000, GetParam().before};
    buildWith(function);
    tavikLibrary.nic("eth1").link = {10000, GetParam().after};
    poll();
    const Alert wanted = {GetParam().alarm, merolt::g_CNAList, merolt::g_CNAList->ports};
    EXPECT_EQ(alerts, std::vector<Alert>{wanted});
    EXPECT_EQ(occurrences(logLines(), GetParam().line), 1U);
    EXPECT_EQ(firstPort().portProperties.link.state, GetParam().after);
    EXPECT_EQ(firstPort().portProperties.link.speed, 10000U) << "the whole record is taken";
    poll();
    EXPECT_EQ(alerts.size(), 1U) << "the state is known now";
}

INSTANTIATE_TEST_SUITE_P(Changes, LinkChangeTest,
                         testing::Values(LinkChange{2, 1, linkUpAlarm, "Generate LINK_UP event"},
                                         LinkChange{3, 1, linkUpAlarm, "Generate LINK_UP event"},
                                         LinkChange{1, 2, linkDownAlarm, "Generate LINK_DOWN event"},
                                         LinkChange{1, 3, linkDownAlarm, "Generate LINK_DOWN event"},
                                         LinkChange{2, 3, linkDownAlarm, "Generate LINK_DOWN event"},
                                         LinkChange{1, 99, linkDownAlarm, "Generate LINK_DOWN event"}));

TEST_F(CnaListTest, AChangeOfSpeedAloneRaisesNoAlert) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.link = {1000, tavik::LinkUp};
    buildWith(function);
    tavikLibrary.nic("eth1").link.speed = 10000;
    poll();
    EXPECT_EQ(firstPort().portProperties.link.speed, 1000U);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(CnaListTest, AFailedLinkCallIsAnErrorAndTheTransceiverIsReadAllTheSame) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.link.state = tavik::LinkUp;
    buildWith(function);
    tavikLibrary.nic("eth1").failures.link = 42;
    tavikLibrary.clearCalls();
    poll();
    EXPECT_TRUE(logHas("Get Link Properties Failed (42)"));
    EXPECT_EQ(firstPort().portProperties.link.state, tavik::LinkUp);
    EXPECT_TRUE(alerts.empty());
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetTransceiverDMIData"), 1U);
}

TEST_F(CnaListTest, AFailedLinkCallIsSilentWithTheErrorLogOff) {
    buildWith(nicFunction(1, 1));
    tavikLibrary.nic("eth1").failures.link = 42;
    merolt::gErrorLog = false;
    poll();
    EXPECT_FALSE(logHas("Get Link Properties Failed (42)"));
}

TEST_F(CnaListTest, APollNamesThePortAndItsAddress) {
    tavik::NicFunction function = nicFunction(1, 17);
    function.macAddress = {0x02, 0xAB, 0, 0, 0xF, 0x10};
    buildWith(function);
    poll();
    EXPECT_TRUE(inOrder(logLines(), {"Update_CNA_List looking at port 17 02-ab-00-00-0f-10", ""}));
}

TEST_F(CnaListTest, WithSeveralCardsTheFirstOnesPortsArePolledOncePerCardAndTheOthersNever) {
    build(fleet({card("S1", {nicFunction(1, 1), nicFunction(1, 2)}), card("S2", {nicFunction(2, 3)}),
                 card("S3", {nicFunction(3, 4)})}));
    std::vector<std::string> polled;
    tavikLibrary.onGetLinkProperties = [&](const char* deviceName, TAVIK_LinkProperties*) {
        polled.emplace_back(deviceName);
        return 1U;
    };
    poll();
    EXPECT_EQ(polled, (std::vector<std::string>{"eth1", "eth2", "eth1", "eth2", "eth1", "eth2"}));
}

TEST_F(CnaListTest, AChangeOnTheFirstCardRaisesOneAlertThatNamesTheFirstCard) {
    build(fleet({card("S1", {nicFunction(1, 1)}), card("S2", {nicFunction(2, 2)})}));
    tavikLibrary.nic("eth1").link.state = tavik::LinkUp;
    poll();
    const Alert wanted = {linkUpAlarm, merolt::g_CNAList, merolt::g_CNAList->ports};
    EXPECT_EQ(alerts, std::vector<Alert>{wanted});
    EXPECT_EQ(occurrences(logLines(), "Generate LINK_UP event"), 1U);
}

TEST_F(CnaListTest, AChangeOnAnotherCardsPortRaisesNothing) {
    build(fleet({card("S1", {nicFunction(1, 1)}), card("S2", {nicFunction(2, 2)})}));
    tavikLibrary.nic("eth2").link.state = tavik::LinkUp;
    poll();
    EXPECT_TRUE(alerts.empty());
    EXPECT_EQ(merolt::g_CNAList->next->ports->portProperties.link.state, tavik::LinkDown);
}

TEST_F(CnaListTest, AnAlertNamesTheCardOfTheWalkInWhichTheChangeWasFirstSeen) {
    build(fleet({card("S1", {nicFunction(1, 1)}), card("S2", {nicFunction(2, 2)})}));
    int call = 0;
    tavikLibrary.onGetLinkProperties = [&](const char*, TAVIK_LinkProperties* link) {
        *link = TAVIK_LinkProperties{};
        link->state = tavik::LinkUp;
        return ++call == 1 ? 1U : 0U;
    };
    poll();
    const Alert wanted = {linkUpAlarm, merolt::g_CNAList->next, merolt::g_CNAList->ports};
    EXPECT_EQ(alerts, std::vector<Alert>{wanted});
}

TEST_F(CnaListTest, WithoutTakerAChangeIsStoredAndLogged) {
    buildWith(nicFunction(1, 1));
    tavikLibrary.nic("eth1").link.state = tavik::LinkUp;
    merolt::Update_CNA_List(&record, nullptr);
    EXPECT_EQ(firstPort().portProperties.link.state, tavik::LinkUp);
    EXPECT_TRUE(logHas("Generate LINK_UP event"));
}

// Searching and clearing

class SerialNumberTest : public CnaListTest {
protected:
    void SetUp() override {
        CnaListTest::SetUp();
        build(fleet({card("XYZ", {nicFunction(1, 1)}), card("ABC123", {nicFunction(2, 2)}),
                     card("abc123", {nicFunction(3, 3)})}));
    }

    static std::uint32_t found(const char* key) {
        const CNACard* made = merolt::FindCNAFromSerialNumber(key);
        return made ? made->adapterId : 0;
    }
};

TEST_F(SerialNumberTest, FindsTheFirstCardInAnyLetterCase) {
    EXPECT_EQ(found("ABC123"), 2U);
    EXPECT_EQ(found("abc123"), 2U);
    EXPECT_EQ(found("xyz"), 1U);
}

TEST_F(SerialNumberTest, FindsTheCardOfAControllersKey) {
    EXPECT_EQ(found("abc123_nic"), 2U);
    EXPECT_EQ(found("XYZ_NIC"), 1U);
}

TEST_F(SerialNumberTest, FindsNothingElse) {
    EXPECT_EQ(found("ABC12"), 0U);
    EXPECT_EQ(found("ABC123_"), 0U);
    EXPECT_EQ(found("ABC123_NIC2"), 0U);
    EXPECT_EQ(found(""), 0U);
    merolt::Clear_CNA_List();
    EXPECT_EQ(found("ABC123"), 0U);
}

TEST_F(CnaListTest, ClearingLogsAndAnEmptyListIsClearedToo) {
    merolt::Clear_CNA_List();
    const std::vector<std::string> wanted = {"Entering Clear_CNA_List()", "Exiting Clear_CNA_List()"};
    EXPECT_EQ(logLines(), wanted);
    EXPECT_EQ(merolt::g_CNAList, nullptr);
}

TEST_F(CnaListTest, ClearingFreesNothingThatIsNotThere) {
    buildWith(nicFunction(1, 1));
    merolt::Clear_CNA_List();
    EXPECT_EQ(merolt::g_CNAList, nullptr);
    EXPECT_FALSE(logHas("CoreFree: Attempted to free NULL pointer..."));
}

TEST_F(CnaListTest, FreeingNothingIsLogged) {
    merolt::CoreFree(nullptr);
    EXPECT_EQ(logLines(), std::vector<std::string>{"CoreFree: Attempted to free NULL pointer..."});
}

} // namespace
