// What a client sees of Merolt_FCHBA_FCPortStatistics: a port's counters at the moment of the request.
#include "class_support.h"

#include <cstring>

using namespace adapters;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* statistics = "Merolt_FCHBA_FCPortStatistics";

class FCPortStatisticsTest : public ClassTest {};

tavik::Statistics distinctCounters() {
    tavik::Statistics counters;
    counters.ioCount = 736;
    counters.megabyteCount = 740;
    counters.lipCount = 744;
    counters.linkFailures = 752;
    counters.lossOfSync = 756;
    counters.lossOfSignal = 760;
    counters.primitiveSequenceErrors = 764;
    counters.invalidTransmissionWords = 768;
    counters.crcErrors = 772;
    return counters;
}

tavik::StorageFunction countingFunction(std::uint32_t number) {
    tavik::StorageFunction function = storageFunction(number, chips::chip7);
    function.statistics = distinctCounters();
    return function;
}

constexpr const char* countersBehindTheNames = R"(LIPCount: uint64 744
LinkFailures: uint64 752
LossOfSyncCounter: uint64 756
LossOfSignalCounter: uint64 760
PrimitiveSeqProtocolErrCount: uint64 764
CRCErrors: uint64 772
InvalidTransmissionWords: uint64 768
IOCount: uint64 736
MegabyteCount: uint64 740
)";

constexpr const char* countersWithoutData = R"(BytesTransmitted: uint64 0
BytesReceived: uint64 0
PacketsTransmitted: uint64 0
PacketsReceived: uint64 0
NOSCount: uint64 0
ErrorFrames: uint64 0
DumpedFrames: uint64 0
FramesTooShort: uint64 0
FramesTooLong: uint64 0
AddressErrors: uint64 0
BufferCreditNotProvided: uint64 0
DelimiterErrors: uint64 0
EncodingDisparityErrors: uint64 0
LinkResetsReceived: uint64 0
LinkResetsTransmitted: uint64 0
MulticastFramesReceived: uint64 0
MulticastFramesTransmitted: uint64 0
)";

TEST_F(FCPortStatisticsTest, InstanceHasEveryCounterInTheOrderOfTheClass) {
    startWith({card("S1", {countingFunction(1)})});
    EXPECT_EQ(asSet(statistics), std::string(R"(
InstanceID: string "20000002C90000F1_20000002C9000001"
ElementName: string "20000002C9000001"
)") + countersBehindTheNames + countersWithoutData);
    EXPECT_EQ(pathAsSet(statistics), R"(
InstanceID: string "20000002C90000F1_20000002C9000001"
)");
}

TEST_F(FCPortStatisticsTest, LargestCounterIsShownWithoutSign) {
    tavik::StorageFunction function = storageFunction(1, chips::chip7);
    for (std::uint32_t tavik::Statistics::*counter : tavik::statisticsCounters)
        function.statistics.*counter = 0xFFFFFFFF;
    startWith({card("S1", {function})});
    const TestObject port = onlyInstance(statistics);
    for (const char* name :
         {"LIPCount", "LinkFailures", "LossOfSyncCounter", "LossOfSignalCounter", "PrimitiveSeqProtocolErrCount",
          "CRCErrors", "InvalidTransmissionWords", "IOCount", "MegabyteCount"})
        EXPECT_EQ(port[name], "uint64 4294967295") << name;
}

TEST_F(FCPortStatisticsTest, EachRequestReadsTheCountersOfEachPortOnce) {
    startWith({card("S1", {countingFunction(1), countingFunction(2), nicFunction(1, 1)})});
    tavikLibrary.clearCalls();
    tavikLibrary.storage(2).statistics.ioCount = 1000;
    EXPECT_EQ(valuesOf(statistics, "IOCount"), (Lines{"uint64 736", "uint64 1000"}));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_RefreshDeviceStats"), 2U);
    enumerateInstanceNames(statistics);
    getInstance(statistics, {{"InstanceID", "20000002C90000F1_20000002C9000001"}});
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_RefreshDeviceStats"), 6U);
}

TEST_F(FCPortStatisticsTest, PortsOfOneNameAreAllListedAndTheFirstIsFound) {
    tavik::StorageFunction twin = countingFunction(1);
    twin.handle = 2;
    twin.statistics.ioCount = 2;
    startWith({card("S1", {countingFunction(1)}), card("S2", {twin})});
    EXPECT_EQ(valuesOf(statistics, "IOCount"), (Lines{"uint64 736", "uint64 2"}));
    EXPECT_EQ(getInstance(statistics, {{"InstanceID", "20000002C90000F1_20000002C9000001"}}).all("IOCount"),
              Lines{"uint64 736"});
}

TEST_F(FCPortStatisticsTest, FailedReadingKeepsThePortAndShowsZeros) {
    switchLogsOn();
    startWith({card("S1", {countingFunction(1), countingFunction(2)})});
    // The counters of the reading before still stand in the tree and in the list that the request clears.
    tavikLibrary.storage(1).failures.statistics = 5;
    takeLogLines();
    const Answer answer = enumerateInstances(statistics);
    ASSERT_EQ(answer.objects.size(), 2U);
    for (const auto& [name, value] : answer.objects[0].values) {
        const bool isCounter = value.compare(0, 6, "uint64") == 0;
        EXPECT_EQ(value, isCounter ? "uint64 0" : value) << name;
    }
    EXPECT_EQ(answer.objects[0]["ElementName"], inQuotes("20000002C9000001"));
    EXPECT_EQ(answer.objects[1]["IOCount"], "uint64 736");
    EXPECT_EQ(lastLines(takeLogLines(), 11),
              (Lines{"Entering createFCPortStatistics, index = 0",
                     "Merolt_FC_FCPortStatistics ERROR in getting statistical data...",
                     "Exiting  createFCPortStatistics", "", "Entering createFCPortStatistics, index = 1",
                     "Exiting  createFCPortStatistics", "", "Entering enumInstances_FCPortStatistics",
                     "Exiting  enumInstances_FCPortStatistics", "Exiting  Merolt_CNA_Provider enumInstances", ""}));
}

TEST_F(FCPortStatisticsTest, FailedReadingIsAnErrorInTheLog) {
    for (const bool isErrorLogOn : {true, false}) {
        const bool isDebugLogOn = !isErrorLogOn;
        writeFile("meroltcna.properties", std::string("DebugLog=") + (isDebugLogOn ? "1" : "0") +
                                              "\nErrorLog=" + (isErrorLogOn ? "1" : "0") + "\n");
        tavik::StorageFunction function = countingFunction(1);
        function.failures.statistics = 5;
        startWith({card("S1", {function})});
        takeLogLines();
        enumerateInstances(statistics);
        EXPECT_EQ(occurrences(takeLogLines(), "Merolt_FC_FCPortStatistics ERROR in getting statistical data..."),
                  isErrorLogOn ? 1U : 0U);
        stop();
    }
}

TEST_F(FCPortStatisticsTest, NameIsThatOfTheTreeWhateverThePortTellsSince) {
    startWith({card("S1", {countingFunction(1)})});
    tavikLibrary.storage(1).property.portName = worldWideName(0xAB);
    EXPECT_EQ(onlyInstance(statistics)["ElementName"], inQuotes("20000002C9000001"));
    // A request on the ports writes the new name into the tree.
    enumerateInstances("Merolt_FCHBA_FCPort");
    EXPECT_EQ(onlyInstance(statistics)["InstanceID"], inQuotes("20000002C90000F1_20000002C90000AB"));
}

} // namespace
