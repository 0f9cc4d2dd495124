#include <ctime>
#include <functional>
#include <set>

#include <gtest/gtest.h>

#include "parsed_fleet.h"

namespace tavik {

namespace {

using test::cardOf;
using test::errorFrom;
using test::fleetFrom;
using test::nicOf;
using test::storageOf;

const std::string twoPortCard = R"("serialNumber": "MC{n}", "ports": [
    {"storage": {"vpd": {"readOnly": {"SN": "MC{n}"}}}, "ethernet": {"transceiver": {"serialNumber": "T{n}A"}}},
    {"storage": {}, "ethernet": {}}])";

TEST(FleetCopies, ACardWithACountStandsForThatManyCards) {
    const auto fleet = fleetFrom("{\"cards\": [{\"count\": 512, " + twoPortCard + "}, {}]}");
    ASSERT_EQ(fleet.cards->size(), 513U);
    EXPECT_EQ(cardOf(fleet, 0).serialNumber, "MC0001");
    EXPECT_EQ(cardOf(fleet, 511).serialNumber, "MC0512");
    EXPECT_EQ(cardOf(fleet, 512).serialNumber, "A00513");
}

TEST(FleetCopies, TheNumberOfTheCopyStandsInEveryText) {
    const auto fleet = fleetFrom("{\"cards\": [{\"count\": 2, " + twoPortCard + "}]}");
    const auto& vpd = *storageOf(fleet, 1).vpd;
    EXPECT_NE(std::string(vpd.begin(), vpd.end()).find("MC0002"), std::string::npos);
    const auto& page = nicOf(fleet, 1).transceiver->pageA0;
    EXPECT_EQ(std::string(page.begin() + 68, page.begin() + 74), "T0002A");
}

TEST(FleetCopies, NoTwoCopiesShareANumberAnAddressOrAName) {
    const auto fleet = fleetFrom("{\"cards\": [{\"count\": 300, " + twoPortCard + "}, {\"count\": 300, " +
                                 R"("serialNumber": "X{n}", "ports": [{"storage": {}, "ethernet": {}}]}]})");
    std::set<std::uint32_t> handles, deviceNumbers, adapterIds;
    std::set<WorldWideName> portNames;
    std::set<MacAddress> macs;
    std::set<std::string> deviceNames;
    for (const auto& card : *fleet.cards)
        for (const auto& port : *card.ports) {
            const auto& storage = std::get<StorageFunction>(port.functions->at(0));
            const auto& nic = std::get<NicFunction>(port.functions->at(1));
            EXPECT_TRUE(handles.insert(storage.handle).second);
            EXPECT_TRUE(deviceNumbers.insert(storage.deviceNumber).second);
            EXPECT_TRUE(portNames.insert(storage.property.portName).second);
            EXPECT_TRUE(macs.insert(nic.macAddress).second);
            EXPECT_TRUE(macs.insert(*storage.eNodeMac).second);
            EXPECT_TRUE(deviceNames.insert(nic.deviceName).second);
            adapterIds.insert(nic.adapterId);
        }
    EXPECT_EQ(handles.size(), 900U);
    EXPECT_EQ(adapterIds.size(), 600U);
}

TEST(FleetCopies, WrittenAddressesGoUpBy256FromCopyToCopy) {
    const auto fleet = fleetFrom(R"({"cards": [{"count": 300, "serialNumber": "{n}", "ports": [{
        "storage": {"nodeName": "20:00:02:00:00:00:ff:00", "portName": "21:00:02:00:00:00:ff:01"},
        "ethernet": {"macAddress": "02:00:00:00:00:07"}}]}]})");
    EXPECT_EQ(storageOf(fleet, 0).nodeName, (WorldWideName{0x20, 0, 2, 0, 0, 0, 0xFF, 0}));
    EXPECT_EQ(storageOf(fleet, 1).nodeName, (WorldWideName{0x20, 0, 2, 0, 0, 1, 0, 0}));
    EXPECT_EQ(storageOf(fleet, 1).property.portName, (WorldWideName{0x21, 0, 2, 0, 0, 1, 0, 1}));
    EXPECT_EQ(nicOf(fleet, 299).macAddress, (MacAddress{2, 0, 0, 1, 43, 7}));
}

TEST(FleetCopies, CopiesThatAreNotToldApartAreAnError) {
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 2, "serialNumber": "S"}]})"),
              "fleet.json: /cards/0/serialNumber: expected a serial number of its own, found \"S\" as in "
              "/cards/0/serialNumber");
}

std::string listOf(std::size_t count, const std::string& element) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i)
        list += (list.empty() ? "[" : ",") + element;
    return list + "]";
}

/** Seconds of this thread's own work, which do not depend on what else the machine does. */
double secondsToRead(const std::string& text) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double begin = now();
    errorFrom(text);
    return now() - begin;
}

/** How much more work a text of eight times the elements is: about 8, or 64 where each looks at all others. */
double growthOfWork(const std::function<std::string(std::size_t elements)>& text) {
    return secondsToRead(text(160000)) / secondsToRead(text(20000));
}

TEST(FleetLimits, AListOfManyObjectsTakesTimeAsItIsLong) {
    EXPECT_LT(growthOfWork([](std::size_t count) { return R"({"cards": [{"ports": )" + listOf(count, "{}") + "}]}"; }),
              24);
}

TEST(FleetLimits, AnObjectOfManyKeysTakesTimeAsItIsLong) {
    const auto text = [](std::size_t count) {
        std::string members;
        for (std::size_t i = 0; i < count; ++i)
            members += "\"" + std::to_string(i) + "\": 0,";
        return "{" + members + "\"cards\": []}";
    };
    EXPECT_LT(growthOfWork(text), 24);
}

TEST(FleetLimits, TooManyCardsAreRefusedBeforeTheRestIsRead) {
    EXPECT_EQ(errorFrom("{\"cards\": " + listOf(4097, "{}") + " and no JSON from here on"),
              "fleet.json: /cards/4096: expected at most 4096 cards in the fleet, copies included");
    EXPECT_EQ(errorFrom("{\"cards\": " + listOf(4096, "{}") + "}"), "");
}

TEST(FleetLimits, AFleetHasAtMostSoManyCards) {
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 4096, "serialNumber": "{n}"}]})"), "");
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 4096, "serialNumber": "{n}"}, {}]})"),
              "fleet.json: /cards/1: expected at most 4096 cards in the fleet, copies included");
}

TEST(FleetLimits, AFleetHasAtMostSoManyFunctions) {
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 4096, "serialNumber": "{n}", "ports": [
                  {"storage": {}, "ethernet": {}}, {"storage": {}}]}]})"),
              "fleet.json: /cards/0: expected at most 8192 functions in the fleet, copies included");
}

TEST(FleetLimits, CopiesCountTheirValues) {
    std::string luns = "{}";
    for (int i = 0; i < 200; ++i)
        luns += ", {}";
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 4096, "serialNumber": "{n}", "ports": [
                  {"storage": {"targets": [{"luns": [)" +
                        luns + "]}]}}]}]}"),
              "fleet.json: /cards/0: expected at most 500000 values in the fleet, copies included");
}

TEST(FleetLimits, CopiesCountTheirTexts) {
    EXPECT_EQ(errorFrom(R"({"cards": [{"count": 4096, "serialNumber": "{n}", "ports": [{"storage": {"vpd": {"hex": ")" +
                        std::string(65536, '0') + "\"}}}]}]}"),
              "fleet.json: /cards/0: expected at most 67108864 bytes of text in the fleet, copies included");
}

TEST(FleetLimits, ValuesInOneFileAreCounted) {
    std::string values = "{\"ports\": [0";
    for (int i = 0; i < 500000; ++i)
        values += ",0";
    EXPECT_EQ(errorFrom(values + "]}"), "fleet.json: /ports/499998: expected at most 500000 values in the file");
}

TEST(FleetLimits, NestingIsCounted) {
    EXPECT_EQ(errorFrom("{\"cards\": " + std::string(31, '[') + std::string(31, ']') + "}").find("nested"),
              std::string::npos);
    EXPECT_EQ(errorFrom("{\"cards\": " + std::string(1000000, '[')).substr(0, 30), "fleet.json: /cards/0/0/0/0/0/0");
    EXPECT_NE(errorFrom("{\"cards\": " + std::string(1000000, '[')).find("expected values nested at most 32 deep"),
              std::string::npos);
}

} // namespace

} // namespace tavik
