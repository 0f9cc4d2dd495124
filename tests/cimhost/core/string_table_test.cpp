#include "broker_fixture.h"

namespace {

class StringTable : public BrokerTest {};

} // namespace

TEST_F(StringTable, TheHandleIsTheText) {
    const CMPIString* made = string("Fibre Channel");
    EXPECT_STREQ(static_cast<const char*>(made->hdl), "Fibre Channel");
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    EXPECT_EQ(made->ft->getCharPtr(made, &status), made->hdl);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_STREQ(made->ft->getCharPtr(made, nullptr), "Fibre Channel") << "a caller may leave the status out";
}

TEST_F(StringTable, NoTextGivesNoStringAndRc4) {
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newString(cmpi, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(cmpi->eft->newString(cmpi, nullptr, nullptr), nullptr);
}

TEST_F(StringTable, AnEmptyTextIsAText) { EXPECT_EQ(textOf(string("")), ""); }

TEST_F(StringTable, ABrokenStringAnswersRc60) {
    CMPIString broken = *string("x");
    broken.hdl = nullptr;
    CMPIStatus status{};
    EXPECT_EQ(broken.ft->getCharPtr(&broken, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broken.ft->clone(&broken, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(broken.ft->release(&broken), CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(StringTable, TheTableSaysVersion200) {
    EXPECT_EQ(string("x")->ft->ftVersion, 200);
    EXPECT_EQ(cmpi->bft->brokerVersion, 200U);
    EXPECT_EQ(cmpi->eft->ftVersion, 200);
    EXPECT_EQ(cmpi->xft->ftVersion, 200);
    EXPECT_EQ(cmpi->mft->ftVersion, 200);
}
