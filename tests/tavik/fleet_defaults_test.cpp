#include <gtest/gtest.h>

#include "parsed_fleet.h"

namespace tavik {

namespace {

using test::cardOf;
using test::fleetFrom;
using test::nicOf;
using test::onePort;
using test::portOf;
using test::storageOf;

TEST(FleetDefaults, AnEmptyObjectIsAFleetWithoutCards) { EXPECT_EQ(fleetFrom("{}"), Fleet{}); }

TEST(FleetDefaults, CardsThatAreNullAreNoListAtAll) { EXPECT_EQ(fleetFrom(R"({"cards": null})").cards, std::nullopt); }

TEST(FleetDefaults, PortsAndFunctionsThatAreNullAreNullLists) {
    EXPECT_EQ(cardOf(fleetFrom(R"({"cards": [{"ports": null}]})")).ports, std::nullopt);
    EXPECT_EQ(portOf(fleetFrom(onePort(R"("functions": null)"))).functions, std::nullopt);
}

TEST(FleetDefaults, AnEmptyPortHasAnEmptyList) {
    EXPECT_EQ(portOf(fleetFrom(onePort(""))).functions, std::vector<Function>());
}

TEST(FleetDefaults, CardsGetSerialNumbersOfTheirOwn) {
    const auto fleet = fleetFrom(R"({"cards": [{}, {}]})");
    EXPECT_EQ(cardOf(fleet, 0).serialNumber, "A00001");
    EXPECT_EQ(cardOf(fleet, 1).serialNumber, "A00002");
}

TEST(FleetDefaults, ACardWithAnEthernetFunctionIsConverged) {
    EXPECT_EQ(cardOf(fleetFrom(onePort(R"("ethernet": {})"))).kind, 0U);
    EXPECT_EQ(cardOf(fleetFrom(onePort(R"("storage": {})"))).kind, 1U);
}

TEST(FleetDefaults, PortsAreNumberedFromOne) {
    const auto fleet = fleetFrom(R"({"cards": [{"ports": [{}, {"number": 9}, {}]}]})");
    EXPECT_EQ(portOf(fleet, 0, 0).number, 1);
    EXPECT_EQ(portOf(fleet, 0, 1).number, 9);
    EXPECT_EQ(portOf(fleet, 0, 2).number, 3);
}

TEST(FleetDefaults, StorageBesideEthernetIsFCoE) {
    const auto converged = fleetFrom(onePort(R"("storage": {}, "ethernet": {})"));
    EXPECT_EQ(storageOf(converged).protocolType, 1U);
    EXPECT_EQ(storageOf(converged).pciDeviceId, 0xA127);
    EXPECT_TRUE(storageOf(converged).eNodeMac.has_value());
    const auto alone = fleetFrom(onePort(R"("storage": {})"));
    EXPECT_EQ(storageOf(alone).protocolType, 0U);
    EXPECT_EQ(storageOf(alone).pciDeviceId, 0xA130);
    EXPECT_EQ(storageOf(alone).eNodeMac, std::nullopt);
}

TEST(FleetDefaults, AStorageFunctionIsAHealthyPortWithoutData) {
    const auto fleet = fleetFrom(onePort(R"("storage": {})"));
    const auto& function = storageOf(fleet);
    EXPECT_EQ(function.property.state, PortOperational);
    EXPECT_EQ(function.property.portType, 1);
    EXPECT_EQ(function.property.speedCode, speedAutoNegotiate);
    EXPECT_EQ(function.property.transceiverKind, 0);
    EXPECT_EQ(function.vpd, std::nullopt);
    EXPECT_EQ(function.uuid, std::nullopt);
    EXPECT_EQ(function.multiBootVersion, std::nullopt);
    EXPECT_EQ(function.transceiver, std::nullopt);
    EXPECT_EQ(function.failures, StorageFailures());
}

TEST(FleetDefaults, AnEthernetFunctionIsALinkThatIsUp) {
    const auto fleet = fleetFrom(onePort(R"("ethernet": {})"));
    const auto& function = nicOf(fleet);
    EXPECT_EQ(function.protocolType, 2U);
    EXPECT_EQ(function.deviceName, "eth0");
    EXPECT_EQ(function.portId, 1U);
    EXPECT_EQ(function.link, (Link{10000, LinkUp}));
    EXPECT_EQ(function.mtu, 1500U);
    EXPECT_EQ(function.ip, IPConfiguration());
    EXPECT_EQ(function.card.serialNumber, std::nullopt);
}

TEST(FleetDefaults, FunctionsTakeTheModelNameOfTheirCard) {
    const auto fleet = fleetFrom(R"({"cards": [{"modelName": "MC1020", "ports": [{"storage": {}, "ethernet": {}}]}]})");
    EXPECT_EQ(storageOf(fleet).modelName, "MC1020");
    EXPECT_EQ(nicOf(fleet).card.modelName, "MC1020");
}

TEST(FleetDefaults, AddressesDifferBetweenCardsAndPorts) {
    const std::string ports = R"("ports": [{"storage": {}, "ethernet": {}}, {"storage": {}, "ethernet": {}}])";
    const auto fleet = fleetFrom("{\"cards\": [{" + ports + "}, {" + ports + "}]}");
    EXPECT_NE(storageOf(fleet, 0, 0).property.portName, storageOf(fleet, 0, 1).property.portName);
    EXPECT_NE(storageOf(fleet, 0, 0).property.portName, storageOf(fleet, 1, 0).property.portName);
    EXPECT_EQ(storageOf(fleet, 0, 0).nodeName, storageOf(fleet, 0, 1).nodeName);
    EXPECT_NE(storageOf(fleet, 0, 0).nodeName, storageOf(fleet, 1, 0).nodeName);
    EXPECT_NE(nicOf(fleet, 0, 0).macAddress, nicOf(fleet, 0, 1).macAddress);
    EXPECT_NE(nicOf(fleet, 0, 0).macAddress, nicOf(fleet, 1, 0).macAddress);
    EXPECT_NE(storageOf(fleet, 0, 0).eNodeMac, nicOf(fleet, 0, 0).macAddress);
    EXPECT_EQ(nicOf(fleet, 0, 0).card.wwn, nicOf(fleet, 0, 1).card.wwn);
    EXPECT_NE(nicOf(fleet, 0, 0).card.wwn, nicOf(fleet, 1, 0).card.wwn);
}

TEST(FleetDefaults, NumbersThatTheFileLeavesOpenAvoidThoseThatItGives) {
    const auto fleet = fleetFrom(R"({"cards": [
        {"ports": [{"storage": {}}, {"storage": {"handle": 1, "deviceNumber": 2}}, {"storage": {}}]}]})");
    EXPECT_EQ(storageOf(fleet, 0, 0).handle, 2U);
    EXPECT_EQ(storageOf(fleet, 0, 1).handle, 1U);
    EXPECT_EQ(storageOf(fleet, 0, 2).handle, 3U);
    EXPECT_EQ(storageOf(fleet, 0, 0).deviceNumber, 1);
    EXPECT_EQ(storageOf(fleet, 0, 1).deviceNumber, 2);
    EXPECT_EQ(storageOf(fleet, 0, 2).deviceNumber, 3);
}

TEST(FleetDefaults, DeviceNamesThatTheFileLeavesOpenAvoidThoseThatItGives) {
    const auto fleet = fleetFrom(R"({"cards": [{"ports": [{"ethernet": {}}, {"ethernet": {"deviceName": "eth0"}}]}]})");
    EXPECT_EQ(nicOf(fleet, 0, 0).deviceName, "eth1");
}

TEST(FleetDefaults, FunctionsOfACardShareItsAdapterId) {
    const auto fleet = fleetFrom(R"({"cards": [
        {"ports": [{"ethernet": {}}, {"ethernet": {}}]},
        {"adapterId": 1, "ports": [{"ethernet": {}}, {"ethernet": {"adapterId": 70}}]}]})");
    EXPECT_EQ(nicOf(fleet, 0, 0).adapterId, 2U);
    EXPECT_EQ(nicOf(fleet, 0, 1).adapterId, 2U);
    EXPECT_EQ(nicOf(fleet, 1, 0).adapterId, 1U);
    EXPECT_EQ(nicOf(fleet, 1, 1).adapterId, 70U);
}

TEST(FleetDefaults, DefaultsOfTheCardStandInForWhatAFunctionDoesNotSay) {
    const auto fleet = fleetFrom(R"({"cards": [{
        "storageDefaults": {"driverVersion": "1.0", "speed": 8},
        "ethernetDefaults": {"driverVersion": "2.0", "mtuBytes": 9000},
        "ports": [{"storage": {"speed": 4}, "ethernet": {}}]}]})");
    EXPECT_EQ(storageOf(fleet).driverVersion, "1.0");
    EXPECT_EQ(storageOf(fleet).property.speedCode, 4U);
    EXPECT_EQ(nicOf(fleet).card.driverVersion, "2.0");
    EXPECT_EQ(nicOf(fleet).mtu, 9000U);
}

TEST(FleetDefaults, BothFunctionsOfAPortSeeItsModule) {
    const auto fleet = fleetFrom(onePort(R"("transceiver": {"serialNumber": "S1"}, "storage": {}, "ethernet": {})"));
    ASSERT_TRUE(storageOf(fleet).transceiver.has_value());
    EXPECT_EQ(storageOf(fleet).transceiver, nicOf(fleet).transceiver);
    EXPECT_EQ(storageOf(fleet).property.transceiverKind, transceiverKindSfp);
}

TEST(FleetDefaults, AFunctionCanDenyTheModuleOfItsPort) {
    const auto fleet = fleetFrom(onePort(R"("transceiver": {}, "storage": {"transceiver": null}, "ethernet": {})"));
    EXPECT_EQ(storageOf(fleet).transceiver, std::nullopt);
    EXPECT_EQ(storageOf(fleet).property.transceiverKind, 0);
    EXPECT_TRUE(nicOf(fleet).transceiver.has_value());
}

TEST(FleetDefaults, UnitsAreNumberedAndToldApartByTheirIdentifiers) {
    const auto fleet =
        fleetFrom(onePort(R"("storage": {"targets": [{"portName": "50:01:02:03:04:05:06:07", "luns": [{}, {}]}]})"));
    const auto& luns = storageOf(fleet).targets.at(0).luns;
    EXPECT_EQ(luns.at(0).number, 0);
    EXPECT_EQ(luns.at(1).number, 1);
    EXPECT_EQ(luns.at(0).identifierLength, 16);
    EXPECT_NE(luns.at(0).identifier, luns.at(1).identifier);
    EXPECT_EQ(luns.at(0).blockSize, 512U);
}

} // namespace

} // namespace tavik
