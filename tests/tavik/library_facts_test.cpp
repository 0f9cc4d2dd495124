// The optional calls beside TAVIK_*, on a fleet whose functions have facts.
#include <cstring>
#include <string>
#include <vector>

#include "inventory/fact_calls.h"
#include "library_fixture.h"
#include "tavik/status.h"
#include "tests/becomes_true.h"

namespace tavik {

namespace {

constexpr std::uint32_t everyGroup =
    TavikFactsOfAdapter | TavikFactsOfLink | TavikFactsOfCounters | TavikFactsOfRelations;

const std::string fleet = R"({"cards": [{"serialNumber": "MC1", "ports": [{
    "storage": {"handle": 7, "facts": {"interfaceName": "host7", "linkSpeed": 16000000000, "totalCrcErrors": 3,
                                       "supportedLinkSpeeds": [8000000000, 16000000000]}},
    "ethernet": {"deviceName": "p1p1", "facts": {"pciSlot": "4", "totalReceivedBytes": 18446744073709551615}}}, {
    "storage": {"handle": 8, "facts": {"linkSpeed": 1}, "failures": {"facts": 9}},
    "ethernet": {"deviceName": "p1p2"}}]}]})";

/** Facts one behind the other, as lines of name and value; "broken" where the bytes are none. */
std::string lines(const std::vector<std::uint8_t>& answer) {
    std::string text;
    for (std::size_t at = 0; at < answer.size();) {
        TavikFactHeader header{};
        if (answer.size() - at < sizeof header) return "broken";
        std::memcpy(&header, answer.data() + at, sizeof header);
        if (header.size > answer.size() - at || header.size < sizeof header + header.nameLength) return "broken";
        const auto* content = reinterpret_cast<const char*>(answer.data() + at + sizeof header);
        const std::string name(content, header.nameLength);
        const std::string value(content + header.nameLength, header.size - sizeof header - header.nameLength);
        std::uint64_t number = 0;
        if (header.type == TavikFactNumber) std::memcpy(&number, value.data(), std::min(value.size(), sizeof number));
        text += name + " " + (header.type == TavikFactNumber ? std::to_string(number) : value) + "\n";
        at += header.size;
    }
    return text;
}

class LibraryFacts : public test::LibraryTest {
protected:
    LibraryFacts()
        : ofStorage(test::exportedCall<TavikFactsOfStoragePort>("tavik_facts_of_storage_port")),
          ofEthernet(test::exportedCall<TavikFactsOfEthernetPort>("tavik_facts_of_ethernet_port")) {}

    std::string storage(std::uint32_t handle, std::uint32_t groups) {
        std::vector<std::uint8_t> answer(1024);
        auto size = static_cast<std::uint32_t>(answer.size());
        if (const auto status = ofStorage(handle, groups, answer.data(), &size)) return std::to_string(status);
        answer.resize(size);
        return lines(answer);
    }

    std::string ethernet(const char* deviceName, std::uint32_t groups) {
        std::vector<std::uint8_t> answer(1024);
        auto size = static_cast<std::uint32_t>(answer.size());
        if (const auto status = ofEthernet(deviceName, groups, answer.data(), &size)) return std::to_string(status);
        answer.resize(size);
        return lines(answer);
    }

    const TavikFactsOfStoragePort ofStorage;
    const TavikFactsOfEthernetPort ofEthernet;
};

TEST_F(LibraryFacts, AreThoseOfTheFleet) {
    start(fleet);
    EXPECT_EQ(storage(7, everyGroup), "interfaceName host7\nlinkSpeed 16000000000\nsupportedLinkSpeeds 8000000000\n"
                                      "supportedLinkSpeeds 16000000000\ntotalCrcErrors 3\n");
    EXPECT_EQ(ethernet("p1p1", everyGroup), "pciSlot 4\ntotalReceivedBytes 18446744073709551615\n");
}

TEST_F(LibraryFacts, AreThoseOfTheGroupsAskedFor) {
    start(fleet);
    EXPECT_EQ(storage(7, TavikFactsOfAdapter), "interfaceName host7\n");
    EXPECT_EQ(storage(7, TavikFactsOfCounters), "totalCrcErrors 3\n");
    EXPECT_EQ(storage(7, 0), "");
}

TEST_F(LibraryFacts, AreNoneWhereAFunctionHasNone) {
    start(fleet);
    EXPECT_EQ(ethernet("p1p2", everyGroup), "");
}

TEST_F(LibraryFacts, CanFail) {
    EXPECT_EQ(storage(7, everyGroup), std::to_string(statusNotInitialized));
    start(fleet);
    EXPECT_EQ(storage(8, everyGroup), "9");
    EXPECT_EQ(storage(9, everyGroup), std::to_string(statusNoSuchDevice));
    EXPECT_EQ(ethernet("eth0", everyGroup), std::to_string(statusNoSuchDevice));
    std::uint32_t size = 16;
    char byte = 0;
    EXPECT_EQ(ofStorage(7, everyGroup, nullptr, &size), statusInvalidArgument);
    EXPECT_EQ(ofStorage(7, everyGroup, &byte, nullptr), statusInvalidArgument);
    EXPECT_EQ(ofEthernet(nullptr, everyGroup, &byte, &size), statusInvalidArgument);
}

TEST_F(LibraryFacts, TellHowMuchRoomTheyNeedAndWriteNothingWithoutIt) {
    start(fleet);
    const std::string expected = storage(7, everyGroup);
    std::vector<std::uint8_t> answer(1024, 0xEE);
    std::uint32_t size = 1;
    EXPECT_EQ(ofStorage(7, everyGroup, answer.data(), &size), statusBufferTooSmall);
    EXPECT_EQ(answer, std::vector<std::uint8_t>(1024, 0xEE));
    const std::uint32_t needed = size;
    size = needed - 1;
    EXPECT_EQ(ofStorage(7, everyGroup, answer.data(), &size), statusBufferTooSmall);
    size = needed;
    EXPECT_EQ(ofStorage(7, everyGroup, answer.data(), &size), statusOk);
    EXPECT_EQ(size, needed);
    EXPECT_EQ(answer.at(needed), 0xEE);
    answer.resize(needed);
    EXPECT_EQ(lines(answer), expected);
}

TEST_F(LibraryFacts, FollowTheFileWithoutANewTree) {
    start(fleet);
    auto other = fleet;
    other.replace(other.find("16000000000"), 11, "32000000000");
    replaceFleet(other);
    EXPECT_TRUE(tests::becomesTrue([&] { return storage(7, TavikFactsOfLink).find("linkSpeed 32000000000\n") == 0; }));
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

} // namespace

} // namespace tavik
