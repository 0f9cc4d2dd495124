#include <array>
#include <cstring>

#include "bytes_at.h"
#include "library_fixture.h"
#include "tavik/status.h"

namespace tavik {

namespace {

using test::bytesAt;
using test::textAt;

class LibraryCalls : public test::LibraryTest {};

const std::string convergedCard = R"({"cards": [{
    "serialNumber": "MC1", "adapterId": 100, "ports": [{
        "transceiver": {"vendor": "Merolt", "serialNumber": "SFP1"},
        "storage": {"handle": 7, "deviceNumber": 70, "speed": 10, "uuid": "u-7",
            "vpd": {"hex": "82010058900000534e02413178"},
            "multiBootVersion": "V:2.01.37,D:09142012,A:Y,T:M",
            "statistics": {"ioCount": 100, "crcErrors": 3}, "statisticsPerRefresh": {"ioCount": 5}},
        "ethernet": {"deviceName": "p1p1", "linkState": "testing", "linkSpeedMegabits": 10000,
            "ip": {"ipv4": "192.0.2.11/24", "ipv6": ["2001:db8::11", "2001:db8::12"], "thirdList": ["192.0.2.1"]},
            "fcoeLinkage": [{"wwn": "21:00:02:00:00:00:01:01", "fcPortId": "01:0a:02",
                             "eNodeMac": "02:00:00:00:01:0e"}, {}]}}]}]})";

const std::string bareCard = R"({"cards": [{"ports": [{"storage": {}, "ethernet": {"ip": null}}]}]})";

TEST_F(LibraryCalls, BeforeTheStartThereIsNoListAndEveryCallFails) {
    std::uint32_t size = 16;
    char* text = nullptr;
    std::array<char, 512> buffer{};
    TAVIK_DeviceRecord record{};
    TAVIK_PortPropertyBlock block{};
    TAVIK_LinkProperties link{};
    TAVIK_IPProperties* ip = nullptr;
    TAVIK_FCoELinkage* linkage = nullptr;
    EXPECT_EQ(library.GetAdapterList(), nullptr);
    EXPECT_EQ(library.DidConfigChange(), 0U);
    EXPECT_EQ(library.ResetConfigChange(), statusNotInitialized);
    EXPECT_EQ(library.UpdateBackupAdapterList(), statusNotInitialized);
    EXPECT_EQ(library.SwapBackupToMainAdapterList(), statusNotInitialized);
    EXPECT_EQ(library.Uninitialize(), statusNotInitialized);
    EXPECT_EQ(library.GetHbaDevicePortProperty(1, 0, &block), statusNotInitialized);
    EXPECT_EQ(library.GetVpd(1, 0, buffer.data(), &size), statusNotInitialized);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(&record, &text, &size), statusNotInitialized);
    EXPECT_EQ(library.RefreshDeviceStats(&record), statusNotInitialized);
    EXPECT_EQ(library.GetSFPData(&record, buffer.data()), statusNotInitialized);
    EXPECT_EQ(library.GetLinkProperties("eth0", &link), statusNotInitialized);
    EXPECT_EQ(library.GetIPProperties("eth0", &ip), statusNotInitialized);
    EXPECT_EQ(library.GetFCoELinkage("eth0", &linkage, &size), statusNotInitialized);
    EXPECT_EQ(library.GetTransceiverDMIData("eth0", &size, buffer.data()), statusNotInitialized);
    EXPECT_EQ(library.GetMBIVersionString(&record, &text, &size), statusNotInitialized);
    EXPECT_EQ(library.UpdateFlash(1, "image", 0), statusNotInitialized);
    EXPECT_EQ(library.doOptionROMUpdate(&record, "image", 0), statusNotInitialized);
}

TEST_F(LibraryCalls, NullPointersAreRefused) {
    start(convergedCard);
    std::uint32_t size = 16;
    char* text = nullptr;
    std::array<char, 512> buffer{};
    TAVIK_IPProperties* ip = nullptr;
    TAVIK_FCoELinkage* linkage = nullptr;
    TAVIK_LinkProperties link{};
    EXPECT_EQ(library.GetHbaDevicePortProperty(7, 0, nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetVpd(7, 0, nullptr, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetVpd(7, 0, buffer.data(), nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(nullptr, &text, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(device(), nullptr, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(device(), &text, nullptr), statusInvalidArgument);
    EXPECT_EQ(library.RefreshDeviceStats(nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetSFPData(nullptr, buffer.data()), statusInvalidArgument);
    EXPECT_EQ(library.GetSFPData(device(), nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetOSName(nullptr, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetOSName(buffer.data(), nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetLinkProperties(nullptr, &link), statusInvalidArgument);
    EXPECT_EQ(library.GetLinkProperties("p1p1", nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetIPProperties(nullptr, &ip), statusInvalidArgument);
    EXPECT_EQ(library.GetIPProperties("p1p1", nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetFCoELinkage(nullptr, &linkage, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetFCoELinkage("p1p1", nullptr, &size), statusInvalidArgument);
    EXPECT_EQ(library.GetFCoELinkage("p1p1", &linkage, nullptr), statusInvalidArgument);
    EXPECT_EQ(library.GetTransceiverDMIData(nullptr, &size, buffer.data()), statusInvalidArgument);
    EXPECT_EQ(library.GetMBIVersionString(nullptr, &text, &size), statusInvalidArgument);
    EXPECT_EQ(library.UpdateFlash(100, nullptr, 0), statusInvalidArgument);
    EXPECT_EQ(library.doOptionROMUpdate(device(), nullptr, 0), statusInvalidArgument);
    EXPECT_EQ(library.RegisterAlarmNotificationCallback(nullptr), statusInvalidArgument);
    EXPECT_EQ(library.UnRegisterAlarmNotificationCallback(nullptr), statusInvalidArgument);
}

TEST_F(LibraryCalls, UnknownDevicesAreRefused) {
    start(convergedCard);
    std::uint32_t size = 16;
    std::array<char, 512> buffer{};
    TAVIK_PortPropertyBlock block{};
    TAVIK_DeviceRecord record{};
    TAVIK_LinkProperties link{};
    record.handle = 8;
    EXPECT_EQ(library.GetHbaDevicePortProperty(8, 0, &block), statusNoSuchDevice);
    EXPECT_EQ(library.GetVpd(8, 0, buffer.data(), &size), statusNoSuchDevice);
    EXPECT_EQ(library.RefreshDeviceStats(&record), statusNoSuchDevice);
    EXPECT_EQ(library.GetLinkProperties("eth0", &link), statusNoSuchDevice);
    EXPECT_EQ(library.UpdateFlash(99, "image", 0), statusNoSuchDevice);
    EXPECT_EQ(library.doOptionROMUpdate(&record, "image", 0), statusNoSuchDevice);
}

TEST_F(LibraryCalls, WhatAFunctionDoesNotHaveFailsItsCall) {
    start(bareCard);
    std::uint32_t size = 1024;
    char* text = nullptr;
    std::array<char, 1024> buffer{};
    TAVIK_IPProperties* ip = nullptr;
    EXPECT_EQ(library.GetVpd(1, 0, buffer.data(), &size), statusNoData);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(device(), &text, &size), statusNoData);
    EXPECT_EQ(library.GetMBIVersionString(device(), &text, &size), statusNoData);
    EXPECT_EQ(library.GetSFPData(device(), buffer.data()), statusNoData);
    EXPECT_EQ(library.GetIPProperties("eth0", &ip), statusNoData);
    EXPECT_EQ(library.GetTransceiverDMIData("eth0", &size, buffer.data()), statusNoData);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(ip, nullptr);
}

TEST_F(LibraryCalls, FailuresOfTheFleetAreTheStatusesOfTheCalls) {
    start(R"({"cards": [{"adapterId": 5, "ports": [{
        "storage": {"uuid": "u", "failures": {"portProperty": 11, "vpd": 12, "uuid": 13, "statistics": 14,
                    "transceiver": 15, "multiBootVersion": 16, "flashUpdate": 17}},
        "ethernet": {"failures": {"link": 21, "ip": 22, "fcoeLinkage": 23, "transceiver": 24, "flashUpdate": 25}}}]}]})");
    std::uint32_t size = 1024;
    char* text = nullptr;
    std::array<char, 1024> buffer{};
    TAVIK_PortPropertyBlock block{};
    TAVIK_LinkProperties link{};
    TAVIK_IPProperties* ip = nullptr;
    TAVIK_FCoELinkage* linkage = nullptr;
    EXPECT_EQ(library.GetHbaDevicePortProperty(1, 0, &block), 11U);
    EXPECT_EQ(library.GetVpd(1, 0, buffer.data(), &size), 12U);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(device(), &text, &size), 13U);
    EXPECT_EQ(library.RefreshDeviceStats(device()), 14U);
    EXPECT_EQ(library.GetSFPData(device(), buffer.data()), 15U);
    EXPECT_EQ(library.GetMBIVersionString(device(), &text, &size), 16U);
    EXPECT_EQ(library.doOptionROMUpdate(device(), "image", 0), 17U);
    EXPECT_EQ(library.GetLinkProperties("eth0", &link), 21U);
    EXPECT_EQ(library.GetIPProperties("eth0", &ip), 22U);
    EXPECT_EQ(library.GetFCoELinkage("eth0", &linkage, &size), 23U);
    EXPECT_EQ(library.GetTransceiverDMIData("eth0", &size, buffer.data()), 24U);
    EXPECT_EQ(library.UpdateFlash(5, "image", 0), 25U);
}

TEST_F(LibraryCalls, TheTreeHoldsTheFleet) {
    start(convergedCard);
    EXPECT_STREQ(library.GetAdapterList()->first->serialNumber, "MC1");
    EXPECT_EQ(+device()->handle, 7U);
    EXPECT_EQ(+device()->deviceNumber, 70);
    const auto* nic = port()->protocols->first->next;
    EXPECT_EQ(+nic->nic.adapterId, 100U);
    EXPECT_STREQ(nic->nic.port.deviceName, "p1p1");
}

TEST_F(LibraryCalls, APortPropertyIsFilledToItsLastByte) {
    start(convergedCard);
    TAVIK_PortPropertyBlock block;
    std::memset(&block, 0xEE, sizeof block);
    ASSERT_EQ(library.GetHbaDevicePortProperty(7, 0, &block), 0U);
    EXPECT_EQ(+block.portState, 1);
    EXPECT_EQ(+block.speedCode, 10U);
    EXPECT_EQ(+block.transceiverKind, 6);
    EXPECT_EQ(bytesAt(&block, 56, 98), std::vector<std::uint8_t>(98, 0));
}

TEST_F(LibraryCalls, VitalProductDataIsDeliveredWithItsSize) {
    start(convergedCard);
    std::array<std::uint8_t, 1024> buffer{};
    std::uint32_t size = 1024;
    ASSERT_EQ(library.GetVpd(7, 0, buffer.data(), &size), 0U);
    EXPECT_EQ(size, 13U);
    EXPECT_EQ(buffer[0], 0x82);
    EXPECT_EQ(buffer[12], 0x78);
}

TEST_F(LibraryCalls, VitalProductDataIsCutToTheBuffer) {
    start(convergedCard);
    std::array<std::uint8_t, 6> buffer{0, 0, 0, 0, 0xEE, 0xEE};
    std::uint32_t size = 4;
    ASSERT_EQ(library.GetVpd(7, 0, buffer.data(), &size), 0U);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(buffer[3], 0x58);
    EXPECT_EQ(buffer[4], 0xEE);
}

TEST_F(LibraryCalls, TextsEndInAZeroThatTheirLengthDoesNotCount) {
    start(convergedCard);
    char* uuid = nullptr;
    char* version = nullptr;
    std::uint32_t uuidSize = 0, versionLength = 0;
    ASSERT_EQ(library.GetUUIDFromI2CVPD(device(), &uuid, &uuidSize), 0U);
    ASSERT_EQ(library.GetMBIVersionString(device(), &version, &versionLength), 0U);
    EXPECT_STREQ(uuid, "u-7");
    EXPECT_EQ(uuidSize, 3U);
    EXPECT_STREQ(version, "V:2.01.37,D:09142012,A:Y,T:M");
    EXPECT_EQ(versionLength, 28U);
    EXPECT_EQ(library.FreeMem(uuid), 0U);
    EXPECT_EQ(library.FreeMem(version), 0U);
}

TEST_F(LibraryCalls, StatisticsAdvanceWithEveryRefreshAfterTheFirst) {
    start(convergedCard);
    EXPECT_EQ(+device()->ioCount, 0U);
    ASSERT_EQ(library.RefreshDeviceStats(device()), 0U);
    EXPECT_EQ(+device()->ioCount, 100U);
    EXPECT_EQ(+device()->crcErrors, 3U);
    ASSERT_EQ(library.RefreshDeviceStats(device()), 0U);
    EXPECT_EQ(+device()->ioCount, 105U);
    EXPECT_EQ(+device()->crcErrors, 3U);
}

TEST_F(LibraryCalls, StatisticsOfACopiedRecordAreRefreshedInTheCopy) {
    start(convergedCard);
    TAVIK_DeviceRecord copy = *device();
    ASSERT_EQ(library.RefreshDeviceStats(&copy), 0U);
    EXPECT_EQ(+copy.ioCount, 100U);
    EXPECT_EQ(+device()->ioCount, 0U);
}

TEST_F(LibraryCalls, ATransceiverIsDeliveredAsTwoPages) {
    start(convergedCard);
    std::array<std::uint8_t, 514> buffer;
    buffer.fill(0xEE);
    ASSERT_EQ(library.GetSFPData(device(), buffer.data()), 0U);
    EXPECT_EQ(std::string(buffer.begin() + 20, buffer.begin() + 36), "Merolt          ");
    EXPECT_EQ(std::string(buffer.begin() + 68, buffer.begin() + 72), "SFP1");
    EXPECT_NE(buffer[256 + 96], 0);
    EXPECT_EQ(buffer[512], 0xEE);
}

TEST_F(LibraryCalls, AShortTransceiverPageIsFilledWithZeros) {
    start(R"({"cards": [{"ports": [{"storage": {"transceiver": {"a0": "0304"}}}]}]})");
    std::array<std::uint8_t, 512> buffer;
    buffer.fill(0xEE);
    ASSERT_EQ(library.GetSFPData(device(), buffer.data()), 0U);
    EXPECT_EQ(buffer[1], 4);
    EXPECT_EQ(bytesAt(buffer.data(), 2, 510), std::vector<std::uint8_t>(510, 0));
}

TEST_F(LibraryCalls, AnEthernetTransceiverDeliversItsSerialIdPage) {
    start(convergedCard);
    std::array<std::uint8_t, 1024> buffer{};
    std::uint32_t size = 1024;
    ASSERT_EQ(library.GetTransceiverDMIData("p1p1", &size, buffer.data()), 0U);
    EXPECT_EQ(size, 256U);
    EXPECT_EQ(std::string(buffer.begin() + 68, buffer.begin() + 72), "SFP1");
}

TEST_F(LibraryCalls, AShortEthernetTransceiverPageKeepsItsLength) {
    start(R"({"cards": [{"ports": [{"ethernet": {"transceiver": {"a0": "03040506"}}}]}]})");
    std::array<std::uint8_t, 1024> buffer{};
    std::uint32_t size = 1024;
    ASSERT_EQ(library.GetTransceiverDMIData("eth0", &size, buffer.data()), 0U);
    EXPECT_EQ(size, 4U);
    size = 2;
    ASSERT_EQ(library.GetTransceiverDMIData("eth0", &size, buffer.data()), 0U);
    EXPECT_EQ(size, 2U);
}

TEST_F(LibraryCalls, ALinkIsDelivered) {
    start(convergedCard);
    TAVIK_LinkProperties link;
    std::memset(&link, 0xEE, sizeof link);
    ASSERT_EQ(library.GetLinkProperties("p1p1", &link), 0U);
    EXPECT_EQ(+link.speed, 10000U);
    EXPECT_EQ(+link.state, 3U);
    EXPECT_EQ(bytesAt(&link, 12, 156), std::vector<std::uint8_t>(156, 0));
}

TEST_F(LibraryCalls, AddressesAreDeliveredWithTheirLists) {
    start(convergedCard);
    TAVIK_IPProperties* ip = nullptr;
    ASSERT_EQ(library.GetIPProperties("p1p1", &ip), 0U);
    EXPECT_EQ(bytesAt(ip, 8, 4), (std::vector<std::uint8_t>{192, 0, 2, 11}));
    EXPECT_EQ(+ip->ipv4.family, 1);
    EXPECT_EQ(bytesAt(ip, 32, 4), (std::vector<std::uint8_t>{255, 255, 255, 0}));
    EXPECT_EQ(+ip->firstCount, 2U);
    EXPECT_EQ(+ip->secondCount, 0U);
    EXPECT_EQ(+ip->thirdCount, 1U);
    EXPECT_EQ(+ip->firstList[1].family, 2);
    EXPECT_EQ(+ip->firstList[1].address[15], 0x12);
    EXPECT_EQ(+ip->secondList, nullptr);
    EXPECT_EQ(+ip->thirdList[0].family, 1);
    EXPECT_EQ(library.FreeMem(ip), 0U);
}

TEST_F(LibraryCalls, LinkageIsDeliveredAsAnArray) {
    start(convergedCard);
    TAVIK_FCoELinkage* linkage = nullptr;
    std::uint32_t count = 0;
    ASSERT_EQ(library.GetFCoELinkage("p1p1", &linkage, &count), 0U);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(bytesAt(linkage, 0, 8), (std::vector<std::uint8_t>{0x21, 0, 2, 0, 0, 0, 1, 1}));
    EXPECT_EQ(bytesAt(linkage, 48, 3), (std::vector<std::uint8_t>{1, 10, 2}));
    EXPECT_EQ(bytesAt(linkage, 88 + 56, 6), std::vector<std::uint8_t>(6, 0));
    EXPECT_EQ(library.FreeMem(linkage), 0U);
}

TEST_F(LibraryCalls, NoLinkageLeavesNothingToGiveBack) {
    start(bareCard);
    TAVIK_FCoELinkage* linkage = nullptr;
    std::uint32_t count = 5;
    ASSERT_EQ(library.GetFCoELinkage("eth0", &linkage, &count), 0U);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(linkage, nullptr);
}

TEST_F(LibraryCalls, TheNameOfTheOperatingSystemFitsTheBuffer) {
    std::array<char, 512> buffer{};
    std::uint32_t size = 512;
    ASSERT_EQ(library.GetOSName(buffer.data(), &size), 0U);
    EXPECT_GT(size, 0U);
    EXPECT_EQ(std::strlen(buffer.data()), size);

    const std::string whole = buffer.data();
    buffer.fill('x');
    size = 5;
    ASSERT_EQ(library.GetOSName(buffer.data(), &size), 0U);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(buffer.data(), whole.substr(0, 4));
    EXPECT_EQ(buffer[5], 'x');
    size = 0;
    EXPECT_EQ(library.GetOSName(buffer.data(), &size), statusInvalidArgument);
}

TEST_F(LibraryCalls, ASecondStartIsRefusedAndLeavesTheTree) {
    start(convergedCard);
    const auto* list = library.GetAdapterList();
    EXPECT_EQ(library.Initialize(0, 0), statusAlreadyInitialized);
    EXPECT_EQ(library.GetAdapterList(), list);
}

TEST_F(LibraryCalls, AfterItsEndTheLibraryCanStartAgain) {
    start(convergedCard);
    EXPECT_EQ(library.Uninitialize(), 0U);
    EXPECT_EQ(library.GetAdapterList(), nullptr);
    start(bareCard);
    EXPECT_STREQ(library.GetAdapterList()->first->serialNumber, "A00001");
}

TEST_F(LibraryCalls, AFleetWithoutListHasNone) {
    start(R"({"cards": null})");
    EXPECT_EQ(library.GetAdapterList(), nullptr);
}

TEST_F(LibraryCalls, AnUnknownSourceIsReportedAndStartsNothing) {
    setenv("TAVIK_SOURCE", "floppy", 1);
    test::StandardError error(folder_ / "stderr");
    EXPECT_EQ(library.Initialize(0, 0), statusSourceFailed);
    EXPECT_EQ(error.text(),
              "tavik: source of adapters: expected \"host\", \"fleet:PATH\" or \"recording:PATH\", found \"floppy\"\n");
    EXPECT_EQ(library.UpdateBackupAdapterList(), statusNotInitialized);
}

TEST_F(LibraryCalls, TheLogIsSilentUnlessItIsSwitchedOn) {
    replaceFleet(convergedCard);
    test::StandardError error(folder_ / "stderr");
    ASSERT_EQ(library.Initialize(0, 0), 0U);
    linkState("p1p1");
    library.Uninitialize();
    EXPECT_EQ(error.text(), "");
    ASSERT_EQ(library.Initialize(31, 0), 0U);
    linkState("p1p1");
    EXPECT_EQ(error.count("tavik: TAVIK_GetLinkProperties: 0\n"), 1);
    library.Uninitialize();
    ASSERT_EQ(library.Initialize(0, 0), 0U);
    linkState("p1p1");
    EXPECT_EQ(error.count("tavik: TAVIK_GetLinkProperties: 0\n"), 1);
}

} // namespace

} // namespace tavik
