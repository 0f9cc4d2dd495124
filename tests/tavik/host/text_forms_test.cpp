#include "tavik/host/text_forms.h"

#include <gtest/gtest.h>

namespace tavik::host {
namespace {

TEST(MacText, ComesBackAsItWas) { EXPECT_EQ(formatMac(*parseMac("02:fc:00:00:00:0A")), "02:fc:00:00:00:0a"); }

TEST(MacText, OtherFormsAreRefused) {
    for (const auto* text : {"", "02:fc:00:00:00", "02:fc:00:00:00:01:02", "02-fc-00-00-00-01", "02fc:0:00:00:00:01",
                             "zz:fc:00:00:00:01", "02:fc:00:00:00:01:"})
        EXPECT_FALSE(parseMac(text)) << text;
}

TEST(WorldWideNameText, ComesWithOrWithoutItsPrefix) {
    EXPECT_EQ(formatWorldWideName(*parseWorldWideName("0x2100000E1E0A0B10")), "2100000e1e0a0b10");
    EXPECT_EQ(parseWorldWideName("2100000e1e0a0b10"), parseWorldWideName("0x2100000e1e0a0b10"));
    for (const auto* text : {"", "0x", "0x21", "0x2100000e1e0a0b1g", "0x2100000e1e0a0b1000"})
        EXPECT_FALSE(parseWorldWideName(text)) << text;
}

TEST(IPText, BothFamiliesComeBackAsTheyWere) {
    EXPECT_EQ(formatIPAddress(*parseIPAddress("192.0.2.1")), "192.0.2.1");
    EXPECT_EQ(formatIPAddress(*parseIPAddress("fd00::2")), "fd00::2");
    EXPECT_EQ(formatIPAddress(IPAddress{}), "");
    EXPECT_FALSE(parseIPAddress("192.0.2"));
    EXPECT_FALSE(parseIPAddress("eth0"));
}

} // namespace
} // namespace tavik::host
