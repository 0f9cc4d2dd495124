#include <algorithm>

#include <gtest/gtest.h>

#include "tavik/host/host_facts.h"

namespace tavik::host {
namespace {

HostNetworkDevice onPci(const std::string& name, const PciAddress& address, std::uint32_t devicePort = 0) {
    HostNetworkDevice device;
    device.name = name;
    device.devicePort = devicePort;
    PciFunction pci;
    pci.address = address;
    DeviceParent parent;
    parent.path = "sys/devices/pci/" + address.text();
    parent.pci = pci;
    device.parent = parent;
    return device;
}

HostNetworkDevice withMac(HostNetworkDevice device, std::uint8_t last) {
    device.permanentAddress = MacAddress{2, 0, 0, 0, 0, last};
    return device;
}

HostNetworkDevice withSerialNumber(HostNetworkDevice device, const std::string& serialNumber) {
    auto parent = *device.parent;
    auto pci = *parent.pci;
    pci.vpd = PciVpd{"Product", {{"SN", serialNumber}}, {}};
    parent.pci = pci;
    device.parent = parent;
    return device;
}

std::vector<int> portNumbers(const HostFacts& facts) {
    std::vector<int> numbers;
    const auto cards = groupCards(facts);
    for (const auto& port : cards.at(0).ports)
        numbers.push_back(port.number);
    return numbers;
}

TEST(Cards, FunctionsOfASlotAreOneCard) {
    HostFacts facts;
    facts.networkDevices = {onPci("b", {"0000:03:00", 1}), onPci("a", {"0000:03:00", 0}),
                            onPci("c", {"0000:04:00", 0})};
    const auto cards = groupCards(facts);
    ASSERT_EQ(cards.size(), 2U);
    EXPECT_EQ(cards[0].ports[0].networkDevice->name, "a");
    EXPECT_EQ(cards[0].ports[1].networkDevice->name, "b");
}

TEST(Cards, PortKeepsItsNumberWhenAnotherVanishes) {
    HostFacts facts;
    facts.networkDevices = {onPci("a", {"0000:03:00", 0}), onPci("b", {"0000:03:00", 1})};
    EXPECT_EQ(portNumbers(facts), (std::vector<int>{0, 1}));
    facts.networkDevices.erase(facts.networkDevices.begin());
    EXPECT_EQ(portNumbers(facts), (std::vector<int>{1}));
}

TEST(Cards, PortsOfOneFunctionHaveTheirOwnNumbers) {
    HostFacts facts;
    facts.networkDevices = {onPci("a", {"0000:03:00", 0}, 0), onPci("b", {"0000:03:00", 0}, 1),
                            onPci("c", {"0000:03:00", 0}, 1), onPci("d", {"0000:03:00", 0}, 4294967295)};
    EXPECT_EQ(portNumbers(facts), (std::vector<int>{0, 1, 2, 8}));
}

TEST(Cards, MoreThan256PortsEndWell) {
    HostFacts facts;
    for (int i = 0; i < 300; ++i)
        facts.networkDevices.push_back(onPci("p" + std::to_string(i), {"0000:03:00", 0}));
    EXPECT_EQ(groupCards(facts).at(0).ports.size(), 300U);
}

TEST(Cards, SerialNumberIsCutToItsField) {
    HostFacts facts;
    facts.networkDevices = {withSerialNumber(onPci("a", {"0000:03:00", 0}), std::string(60, 'S'))};
    EXPECT_EQ(groupCards(facts).at(0).serialNumber, std::string(31, 'S'));
}

TEST(Cards, SameSerialNumberTwiceLeavesTheSecondCardItsAddress) {
    HostFacts facts;
    facts.networkDevices = {withMac(withSerialNumber(onPci("a", {"0000:03:00", 0}), "SAME"), 1),
                            withMac(withSerialNumber(onPci("b", {"0000:04:00", 0}), "SAME"), 2)};
    const auto cards = groupCards(facts);
    EXPECT_EQ(cards[0].serialNumber, "SAME");
    EXPECT_EQ(cards[1].serialNumber, "020000000002");
}

TEST(Cards, WithoutAnyIdentityTheirSerialNumbersStillDiffer) {
    HostFacts facts;
    const std::string path(60, 'p');
    for (int i = 0; i < 3; ++i) {
        HostNetworkDevice device;
        device.name = "n" + std::to_string(i);
        DeviceParent parent;
        parent.path = path + std::to_string(i);
        device.parent = parent;
        facts.networkDevices.push_back(device);
    }
    const auto cards = groupCards(facts);
    ASSERT_EQ(cards.size(), 3U);
    EXPECT_EQ(cards[0].serialNumber, std::string(31, 'p'));
    EXPECT_EQ(cards[1].serialNumber, std::string(29, 'p') + "-2");
    EXPECT_EQ(cards[2].serialNumber, std::string(29, 'p') + "-3");
}

TEST(UnitIdentifiers, AreBinaryNamesOfTwoLengths) {
    EXPECT_EQ(parseUnitIdentifier("naa.50060e8010203041")->size(), 8U);
    EXPECT_EQ(parseUnitIdentifier("eui.50060e8010203041")->size(), 8U);
    EXPECT_EQ(parseUnitIdentifier("naa.60060e80102030405060708090a0b0c0")->size(), 16U);
    for (const auto* text : {"", "naa.", "naa.5006", "naa.50060e801020304z", "t10.ACME 1", "50060e8010203041"})
        EXPECT_FALSE(parseUnitIdentifier(text)) << text;
}

} // namespace
} // namespace tavik::host
