// What a provider may do before its server is known, in its constructor and in static initialisers.

#include "CmpiArgs.h"
#include "CmpiArray.h"
#include "CmpiBooleanData.h"
#include "CmpiDateTime.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiStatus.h"
#include "CmpiString.h"
#include "thrown_by.h"

#include <gtest/gtest.h>

namespace {

const CmpiData copiedByAStaticInitialiser = CmpiTrue;

TEST(WithoutBroker, BooleansAreThereFromTheStart) {
    EXPECT_EQ(copiedByAStaticInitialiser.getType(), CMPI_boolean);
    EXPECT_EQ(copiedByAStaticInitialiser.getBoolean(), 1);
}

TEST(WithoutBroker, NumbersAndTextsAreValues) {
    EXPECT_EQ(CmpiData(5).getSint32(), 5);
    EXPECT_STREQ(CmpiData("text").getCString(), "text");
}

TEST(WithoutBroker, StringsAreNull) {
    CmpiString string("adapter");
    EXPECT_EQ(string.charPtr(), nullptr);
    EXPECT_EQ(CmpiString(string).charPtr(), nullptr);
}

TEST(WithoutBroker, StatusKeepsItsCodeAndLosesItsMessage) {
    CmpiStatus status(CMPI_RC_ERR_FAILED, "no adapter");
    EXPECT_EQ(status.rc(), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg(), nullptr);
}

TEST(WithoutBroker, MakingAnObjectThrows) {
    EXPECT_EQ(thrownBy([] { CmpiObjectPath("root", "Class"); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiInstance(CmpiObjectPath(static_cast<CMPIObjectPath*>(nullptr))); }),
              CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiArray(1, CMPI_uint8); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiArgs(); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiDateTime(); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiDateTime("20240229120000.000000+000"); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([] { CmpiDateTime(1, 0); }), CMPI_RC_ERR_INVALID_HANDLE);
}

} // namespace
