#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "parsed_fleet.h"
#include "tavik/transceiver.h"
#include "tavik/tree.h"
#include "tavik/vpd.h"

namespace tavik {

namespace {

using test::cardOf;
using test::fleetFrom;
using test::nicOf;
using test::onePort;
using test::portOf;
using test::storageOf;

TEST(FleetFile, ACardIsReadAsWritten) {
    const auto fleet = fleetFrom(R"({"cards": [
        {"serialNumber": "S1", "modelName": "M1", "version": "A4", "kind": 3, "ports": []}]})");
    EXPECT_EQ(cardOf(fleet), (Card{"S1", 3, "A4", "M1", std::vector<Port>()}));
}

TEST(FleetFile, KindsOfCardsHaveNames) {
    EXPECT_EQ(cardOf(fleetFrom(R"({"cards": [{"kind": "fibreChannel"}]})")).kind, 1U);
    EXPECT_EQ(cardOf(fleetFrom(R"({"cards": [{"kind": "converged"}]})")).kind, 0U);
}

TEST(FleetFile, AListOfFunctionsGivesTheirOrder) {
    const auto fleet = fleetFrom(onePort(R"("functions": [{"ethernet": {}}, {"storage": {"protocol": 77}}])"));
    const auto& functions = *portOf(fleet).functions;
    ASSERT_EQ(functions.size(), 2U);
    EXPECT_TRUE(std::holds_alternative<NicFunction>(functions[0]));
    EXPECT_EQ(std::get<StorageFunction>(functions[1]).protocolType, 77U);
}

TEST(FleetFile, IdentityOfAStorageFunctionIsReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("storage": {
        "protocol": "fcoe", "handle": 7, "deviceNumber": 8, "pciDeviceId": "0xA132",
        "subsystemVendorId": "0x1D5A", "subsystemDeviceId": 2561,
        "nodeName": "20:00:02:00:00:00:01:00", "portName": "21:00:02:00:00:00:01:01",
        "headerNodeName": "20:00:02:00:00:00:01:aa", "headerPortName": "21:00:02:00:00:00:01:BB",
        "modelName": "MZ1021", "serialBytes": "003930", "eNodeMac": "02:00:00:00:01:0e"})"));
    const auto& function = storageOf(fleet);
    EXPECT_EQ(function.protocolType, 1U);
    EXPECT_EQ(function.handle, 7U);
    EXPECT_EQ(function.deviceNumber, 8);
    EXPECT_EQ(function.pciDeviceId, 0xA132);
    EXPECT_EQ(function.pciSubsystemVendorId, 0x1D5A);
    EXPECT_EQ(function.pciSubsystemDeviceId, 0x0A01);
    EXPECT_EQ(function.nodeName, (WorldWideName{0x20, 0, 2, 0, 0, 0, 1, 0}));
    EXPECT_EQ(function.property.portName, (WorldWideName{0x21, 0, 2, 0, 0, 0, 1, 1}));
    EXPECT_EQ(function.headerNodeName->back(), 0xAA);
    EXPECT_EQ(function.headerPortName->back(), 0xBB);
    EXPECT_EQ(function.serialNumber, (Bytes{0x00, 0x39, 0x30}));
    EXPECT_EQ(function.eNodeMac, (MacAddress{2, 0, 0, 0, 1, 0x0E}));
}

TEST(FleetFile, PortStatesTypesAndSpeedsHaveNames) {
    const auto fleet = fleetFrom(R"({"cards": [{"ports": [
        {"storage": {"state": "operational", "portType": "N", "speed": 16}},
        {"storage": {"state": "suspended", "portType": "F/NL", "speed": "auto"}},
        {"storage": {"state": "loopDown", "portType": "B", "speed": 1}},
        {"storage": {"state": 200, "portType": 99, "speedCode": 32}}]}]})");
    EXPECT_EQ(storageOf(fleet, 0, 0).property.state, 1);
    EXPECT_EQ(storageOf(fleet, 0, 1).property.state, 2);
    EXPECT_EQ(storageOf(fleet, 0, 2).property.state, 3);
    EXPECT_EQ(storageOf(fleet, 0, 3).property.state, 200);
    EXPECT_EQ(storageOf(fleet, 0, 1).property.portType, 3);
    EXPECT_EQ(storageOf(fleet, 0, 2).property.portType, 9);
    EXPECT_EQ(storageOf(fleet, 0, 3).property.portType, 99);
    EXPECT_EQ(storageOf(fleet, 0, 0).property.speedCode, 16U);
    EXPECT_EQ(storageOf(fleet, 0, 1).property.speedCode, speedAutoNegotiate);
    EXPECT_EQ(storageOf(fleet, 0, 3).property.speedCode, 32U);
}

TEST(FleetFile, ThePropertyInTheTreeDiffersWhereItSaysSo) {
    const auto fleet = fleetFrom(onePort(R"("storage": {"speed": 8, "treeProperty": {"state": "loopDown"}})"));
    const auto& function = storageOf(fleet);
    ASSERT_TRUE(function.treeProperty.has_value());
    EXPECT_EQ(function.treeProperty->state, PortLoopDown);
    EXPECT_EQ(function.treeProperty->speedCode, 8U);
    EXPECT_EQ(function.property.state, PortOperational);
}

TEST(FleetFile, SoftwareVersionsAreReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("storage": {
        "driverVersion": "9.4", "driverFirmwareVersion": "8.1", "uuid": "u-1",
        "multiBootVersion": "V:2.01.37,D:09142012,A:Y,T:M",
        "optionRom": {"biosVersion": "3.31", "firmware": "7.2.4", "efi": "5.30", "fcode": "3.24.255"}})"));
    const auto& function = storageOf(fleet);
    EXPECT_EQ(function.driverVersion, "9.4");
    EXPECT_EQ(function.driverFirmwareVersion, "8.1");
    EXPECT_EQ(function.uuid, "u-1");
    EXPECT_EQ(function.multiBootVersion, "V:2.01.37,D:09142012,A:Y,T:M");
    EXPECT_EQ(function.optionRom, (OptionRom{"3.31", {{7, 2, 4}}, {{5, 30}}, {{3, 24, 255}}}));
}

TEST(FleetFile, VitalProductDataKeepsTheOrderOfItsKeywords) {
    const auto fleet = fleetFrom(onePort(R"("storage": {"vpd": {
        "productIdentifier": "P", "readOnly": {"SN": "1", "PN": "2"}, "writable": {"YA": "3"}}})"));
    EXPECT_EQ(storageOf(fleet).vpd, encodeVpd("P", {{"SN", "1"}, {"PN", "2"}}, {{"YA", "3"}}));
}

TEST(FleetFile, VitalProductDataCanBeGivenAsBytes) {
    EXPECT_EQ(storageOf(fleetFrom(onePort(R"("storage": {"vpd": {"hex": "82:01:00:5878"}})"))).vpd,
              (Bytes{0x82, 0x01, 0x00, 0x58, 0x78}));
}

TEST(FleetFile, ATransceiverIsMadeFromItsReadableFields) {
    const auto fleet = fleetFrom(onePort(R"("storage": {"transceiver": {
        "vendor": "V", "partNumber": "P", "revision": "R", "serialNumber": "S", "dateCode": "240115",
        "vendorOui": "02:4d:10", "identifier": 13, "connector": 11, "compliance": "0001020304050607",
        "bitRateMegabits": 14000, "wavelengthNanometres": 1310,
        "diagnostics": {"temperatureCelsius": 20, "supplyVolts": 3.2, "biasMilliamperes": 7,
                        "transmitMilliwatts": 0.4, "receiveMilliwatts": 0.3}}})"));
    const TransceiverIdentity identity{
        "V", "P", "R", "S", "240115", {2, 0x4D, 0x10}, 13, 11, {0, 1, 2, 3, 4, 5, 6, 7}, 14000, 1310};
    EXPECT_EQ(storageOf(fleet).transceiver, makeTransceiver(identity, {20, 3.2, 7, 0.4, 0.3}));
}

TEST(FleetFile, ATransceiverWithoutDiagnosticsHasOnePage) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {"transceiver": {"diagnostics": null}})"));
    EXPECT_EQ(nicOf(fleet).transceiver->pageA0.size(), 256U);
    EXPECT_TRUE(nicOf(fleet).transceiver->pageA2.empty());
    EXPECT_EQ(nicOf(fleet).transceiver->pageA0[92], 0) << "and declares no more";
    EXPECT_EQ(nicOf(fleet).transceiver->pageA0[93], 0);
}

TEST(FleetFile, ATransceiverCanBeGivenAsBytes) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {"transceiver": {"a0": "0304", "a2": "ff"}})"));
    EXPECT_EQ(nicOf(fleet).transceiver, (Transceiver{{3, 4}, {0xFF}}));
}

TEST(FleetFile, TargetsAndUnitsAreReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("storage": {"targetCount": 5, "targets": [{
        "portName": "50:01:02:03:04:05:06:07", "lunCount": 9, "luns": [{
            "number": 256, "vendorId": "MEROLT", "productId": "SAN VOLUME", "productRevision": "7310",
            "identifier": "60:01:02:03:04:05:06:07", "blockSizeBytes": 4096, "osName": "/dev/sdb"}]}]})"));
    const auto& function = storageOf(fleet);
    EXPECT_EQ(function.targetCount, 5U);
    EXPECT_EQ(function.targets.at(0).lunCount, 9U);
    const Lun expected{256, "MEROLT", "SAN VOLUME", "7310", {0x60, 1, 2, 3, 4, 5, 6, 7}, 8, 4096, "/dev/sdb"};
    EXPECT_EQ(function.targets.at(0).luns.at(0), expected);
}

TEST(FleetFile, TheLengthOfAnIdentifierCanDifferFromItsBytes) {
    const auto fleet = fleetFrom(onePort(R"("storage": {"targets": [{"luns": [
        {"identifier": "60010203040506070809101112131415", "identifierLength": 3}]}]})"));
    const auto& lun = storageOf(fleet).targets.at(0).luns.at(0);
    EXPECT_EQ(lun.identifier.back(), 0x15);
    EXPECT_EQ(lun.identifierLength, 3);
}

TEST(FleetFile, StatisticsAndFailuresAreReadByTheirNames) {
    const auto fleet = fleetFrom(onePort(R"("storage": {
        "statistics": {"ioCount": 1, "megabyteCount": 2, "lipCount": 3, "linkFailures": 4, "lossOfSync": 5,
            "lossOfSignal": 6, "primitiveSequenceErrors": 7, "invalidTransmissionWords": 8, "crcErrors": 9},
        "statisticsPerRefresh": {"ioCount": 10},
        "failures": {"portProperty": 1, "vpd": 2, "uuid": 3, "statistics": 4, "transceiver": 5, "multiBootVersion": 6,
            "flashUpdate": 7}},
        "ethernet": {"failures": {"link": 1, "ip": 2, "fcoeLinkage": 3, "transceiver": 4, "flashUpdate": 5}})"));
    EXPECT_EQ(storageOf(fleet).statistics, (Statistics{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(storageOf(fleet).statisticsPerRefresh.ioCount, 10U);
    EXPECT_EQ(storageOf(fleet).failures, (StorageFailures{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(nicOf(fleet).failures, (NicFailures{1, 2, 3, 4, 5}));
}

TEST(FleetFile, AnEthernetFunctionIsReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {
        "deviceName": "p1p1", "portId": 65538, "macAddress": "02:00:00:00:01:01",
        "linkState": "testing", "linkSpeedMegabits": 40000, "mtuBytes": 9000, "cardWwn": "02:00:00:00:01:00",
        "manufacturer": "Maker", "modelName": "M", "serialNumber": "S", "driverVersion": "D",
        "defaultSoftwareVersion": "W", "flashVersion": "F", "fruNumber": "R",
        "vpdItems": {"FN": "00MC102", "YU": "u"}, "vpdItemCount": 1})"));
    const auto& function = nicOf(fleet);
    EXPECT_EQ(function.deviceName, "p1p1");
    EXPECT_EQ(function.portId, 65538U);
    EXPECT_EQ(function.macAddress, (MacAddress{2, 0, 0, 0, 1, 1}));
    EXPECT_EQ(function.link, (Link{40000, LinkTesting}));
    EXPECT_EQ(function.mtu, 9000U);
    EXPECT_EQ(function.card, (NicCard{{2, 0, 0, 0, 1, 0}, "Maker", "M", "S", "D", "W", "F", "R"}));
    EXPECT_EQ(function.vpdItems, (std::vector<VpdItem>{{"FN", "00MC102"}, {"YU", "u"}}));
    EXPECT_EQ(function.vpdItemCount, 1U);
}

TEST(FleetFile, AddressesAreReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {"ip": {
        "ipv4": "192.0.2.11/20", "ipv6": ["2001:db8::11", "2001:db8::12"],
        "secondList": ["192.0.2.1"], "thirdList": ["2001:db8::1"]}})"));
    const auto& ip = *nicOf(fleet).ip;
    EXPECT_EQ(ip.ipv4, (IPAddress{{192, 0, 2, 11}, AddressIPv4}));
    EXPECT_EQ(ip.ipv4Mask, (IPAddress{{255, 255, 240, 0}, AddressIPv4}));
    ASSERT_EQ(ip.firstList.size(), 2U);
    EXPECT_EQ(ip.firstList[1], (IPAddress{{0x20, 1, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x12}, AddressIPv6}));
    EXPECT_EQ(ip.secondList, (std::vector<IPAddress>{{{192, 0, 2, 1}, AddressIPv4}}));
    EXPECT_EQ(ip.thirdList.size(), 1U);
}

TEST(FleetFile, PrefixesReachFromNoneToAllBits) {
    const auto mask = [](const std::string& address) {
        return nicOf(fleetFrom(onePort(R"("ethernet": {"ip": {"ipv4": ")" + address + "\"}}"))).ip->ipv4Mask.bytes;
    };
    EXPECT_EQ(mask("192.0.2.1/0"), (std::array<std::uint8_t, 16>{}));
    EXPECT_EQ(mask("192.0.2.1/32"), (std::array<std::uint8_t, 16>{255, 255, 255, 255}));
}

TEST(FleetFile, AddressesThatAreNullFailTheirCall) {
    EXPECT_EQ(nicOf(fleetFrom(onePort(R"("ethernet": {"ip": null})"))).ip, std::nullopt);
}

TEST(FleetFile, LinkageIsReadAsWritten) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {"fcoeLinkage": [
        {"wwn": "21:00:02:00:00:00:01:01", "fcPortId": "01:0a:02", "eNodeMac": "02:00:00:00:01:0e"}, {}]})"));
    const auto& linkage = nicOf(fleet).fcoeLinkage;
    ASSERT_EQ(linkage.size(), 2U);
    EXPECT_EQ(linkage[0], (FCoELinkage{{0x21, 0, 2, 0, 0, 0, 1, 1}, {1, 10, 2}, {2, 0, 0, 0, 1, 0x0E}}));
}

class FleetOnDisk : public ::testing::Test {
protected:
    FleetOnDisk()
        : folder_(std::filesystem::path(::testing::TempDir()) / ("tavik_fleet_on_disk_" + std::to_string(getpid()))) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~FleetOnDisk() override { std::filesystem::remove_all(folder_); }

    std::string errorOf(const std::string& name) {
        const auto fleet = readFleetFile((folder_ / name).string());
        const auto* error = std::get_if<FleetError>(&fleet);
        return error ? error->message.substr(folder_.string().size() + 1) : std::string();
    }

    std::filesystem::path folder_;
};

TEST_F(FleetOnDisk, AGoodFileIsReadWithItsPathInNoError) {
    std::ofstream(folder_ / "fleet.json") << "{}";
    EXPECT_EQ(errorOf("fleet.json"), "");
}

TEST_F(FleetOnDisk, AMissingFileIsNamed) {
    EXPECT_EQ(errorOf("none.json"), "none.json: cannot be read: No such file or directory");
}

TEST_F(FleetOnDisk, AFolderIsNoFleet) {
    std::filesystem::create_directories(folder_ / "folder");
    EXPECT_EQ(errorOf("folder"), "folder: cannot be read: not a regular file");
}

TEST_F(FleetOnDisk, AFileBeyondTheSizeLimitIsRefused) {
    std::ofstream(folder_ / "big.json") << std::string(fleetFileSizeLimit + 100000, ' ');
    EXPECT_EQ(errorOf("big.json").substr(0, 44), "big.json: /: expected at most 16777216 bytes");
}

TEST(DemonstrationFleet, ShowsEveryKindOfCard) {
    const auto read = readFleetFile(TAVIK_DEMO_FLEET);
    if (const auto* error = std::get_if<FleetError>(&read)) FAIL() << error->message;
    const auto& fleet = std::get<Fleet>(read);
    ASSERT_EQ(fleet.cards->size(), 7U);

    EXPECT_EQ(portOf(fleet, 0, 0).functions->size(), 2U);
    EXPECT_EQ(storageOf(fleet, 0, 0).pciDeviceId, 0xA127);
    EXPECT_EQ(storageOf(fleet, 0, 0).targets.size(), 2U);
    EXPECT_EQ(storageOf(fleet, 0, 1).targets.size(), 1U);
    EXPECT_EQ(nicOf(fleet, 0, 0).fcoeLinkage.size(), 1U);
    EXPECT_FALSE(nicOf(fleet, 0, 0).ip->firstList.empty());
    EXPECT_TRUE(storageOf(fleet, 0, 0).multiBootVersion.has_value());

    EXPECT_TRUE(hasBinarySerialNumber(storageOf(fleet, 1, 0).pciDeviceId));
    EXPECT_EQ(storageOf(fleet, 1, 1).property.state, PortLoopDown);
    EXPECT_EQ(storageOf(fleet, 2, 0).nodeName, storageOf(fleet, 3, 0).nodeName);
    EXPECT_EQ(cardOf(fleet, 4).serialNumber.size(), 22U);
    EXPECT_EQ(cardOf(fleet, 4).serialNumber.substr(0, 3), "11S");
    EXPECT_EQ(storageOf(fleet, 5, 0).pciSubsystemDeviceId, 0x0A01);
    EXPECT_EQ(storageOf(fleet, 6, 0).vpd, std::nullopt);
}

TEST(DemonstrationFleet, HasTheSameSerialNumberInEveryPlace) {
    const auto fleet = std::get<Fleet>(readFleetFile(TAVIK_DEMO_FLEET));
    for (const auto& card : fleet.cards.value())
        forEachFunction(card, [&card](const auto& function) {
            if constexpr (std::is_same_v<std::decay_t<decltype(function)>, StorageFunction>) {
                if (!function.vpd) return;
                const std::string text(function.vpd->begin(), function.vpd->end());
                const auto length = static_cast<char>(card.serialNumber.size());
                EXPECT_NE(text.find(std::string("SN") + length + card.serialNumber), std::string::npos)
                    << card.serialNumber;
            }
        });
}

TEST(FleetDocument, ItsExamplesAreGoodFleets) {
    std::ifstream document(TAVIK_FLEET_DOCUMENT);
    int examples = 0;
    for (std::string line; std::getline(document, line);) {
        if (line != "```json") continue;
        std::string example;
        while (std::getline(document, line) && line != "```")
            example += line + "\n";
        EXPECT_EQ(test::errorFrom(example), "") << example;
        ++examples;
    }
    EXPECT_EQ(examples, 3);
}

} // namespace

} // namespace tavik
