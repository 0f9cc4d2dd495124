#include "broker_fixture.h"

#include <chrono>

namespace {

class DateTimeTable : public BrokerTest {
protected:
    std::string textOfDate(const CMPIDateTime* made) { return textOf(made->ft->getStringFormat(made, nullptr)); }
};

} // namespace

TEST_F(DateTimeTable, APointInTimeIsWrittenInUtc) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const CMPIDateTime* made = cmpi->eft->newDateTimeFromBinary(cmpi, 1000000000123456ULL, 0, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOfDate(made), "20010909014640.123456+000");
    EXPECT_EQ(made->ft->getBinaryFormat(made, &status), 1000000000123456ULL);
    EXPECT_EQ(made->ft->isInterval(made, &status), 0);
}

TEST_F(DateTimeTable, AnIntervalIsItsLength) {
    const CMPIDateTime* made = cmpi->eft->newDateTimeFromBinary(cmpi, 86400000000ULL, 1, nullptr);
    EXPECT_EQ(textOfDate(made), "00000001000000.000000:000");
    EXPECT_NE(made->ft->isInterval(made, nullptr), 0);
    EXPECT_EQ(made->ft->getBinaryFormat(made, nullptr), 86400000000ULL);
}

TEST_F(DateTimeTable, ATextIsKeptAsItIsAndCountsInUtc) {
    const CMPIDateTime* made = dateTime("20010909034640.000000+120");
    EXPECT_EQ(textOfDate(made), "20010909034640.000000+120");
    EXPECT_EQ(made->ft->getBinaryFormat(made, nullptr), 1000000000000000ULL);
}

TEST_F(DateTimeTable, ABadTextGivesNothingAndRc4) {
    for (const char* text : {"", "today", "20011309034640.000000+120"}) {
        CMPIStatus status{};
        EXPECT_EQ(cmpi->eft->newDateTimeFromChars(cmpi, text, &status), nullptr) << text;
        EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER) << text;
    }
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newDateTimeFromChars(cmpi, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(DateTimeTable, TimesBeyondTheTextFormatAreRefused) {
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newDateTimeFromBinary(cmpi, ~0ULL, 0, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(DateTimeTable, TheCurrentTimeIsThatOfTheClock) {
    using namespace std::chrono;
    const auto now = [] {
        return static_cast<CMPIUint64>(duration_cast<microseconds>(system_clock::now().time_since_epoch()).count());
    };
    const CMPIUint64 before = now();
    const CMPIDateTime* made = cmpi->eft->newDateTime(cmpi, nullptr);
    const CMPIUint64 microseconds = made->ft->getBinaryFormat(made, nullptr);
    EXPECT_GE(microseconds, before);
    EXPECT_LE(microseconds, now());
}

TEST_F(DateTimeTable, ABrokenDateTimeIsRc60) {
    CMPIDateTime broken = *dateTime("20010909034640.000000+120");
    broken.hdl = nullptr;
    CMPIStatus status{};
    broken.ft->getBinaryFormat(&broken, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broken.ft->getStringFormat(&broken, &status), nullptr);
    EXPECT_EQ(broken.ft->isInterval(&broken, nullptr), 0);
}
