#include "tavik/host/device_parent.h"

#include <gtest/gtest.h>

namespace tavik::host {
namespace {

TEST(PciAddressText, IsParsed) {
    EXPECT_EQ(*parsePciAddress("0000:03:00.1"), (PciAddress{"0000:03:00", 1}));
    EXPECT_EQ(*parsePciAddress("10000:e1:00.0"), (PciAddress{"10000:e1:00", 0}));
    EXPECT_EQ(parsePciAddress("0000:03:1f.7")->text(), "0000:03:1f.7");
}

TEST(PciAddressText, OtherNamesAreRefused) {
    for (const auto* name : {"", ".", "virtio2", "pci0000:00", "0000:03:00", "0000:03:00.8", "0000:03:00.10",
                             "0000-03-00.1", "zzzz:03:00.1", "000:003:00.1", "0:00:03:00.1", "2-1:1.0"})
        EXPECT_FALSE(parsePciAddress(name)) << name;
}

Bytes configuration() {
    Bytes bytes(0x110);
    bytes[0x100] = 3;
    for (std::size_t i = 0; i < 8; ++i)
        bytes[0x104 + i] = static_cast<std::uint8_t>(i + 1);
    return bytes;
}

TEST(DeviceSerialNumber, IsReadHighByteFirst) {
    EXPECT_EQ(*parseDeviceSerialNumber(configuration()), "0807060504030201");
}

TEST(DeviceSerialNumber, SpaceThatEndsInsideOfItGivesNone) {
    const auto whole = configuration();
    for (std::size_t size = 0; size < 0x10C; ++size)
        EXPECT_FALSE(parseDeviceSerialNumber(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
}

TEST(DeviceSerialNumber, ChainThatLeadsInARingEnds) {
    Bytes bytes(4096);
    bytes[0x100] = 1;
    bytes[0x103] = 0x10; // next at 0x100
    EXPECT_EQ(parseDeviceSerialNumber(bytes).absence().reason, "no serial number capability");
}

TEST(DeviceSerialNumber, ChainThatLeadsOutEnds) {
    Bytes bytes(0x110);
    bytes[0x100] = 1;
    bytes[0x103] = 0xFF;
    EXPECT_FALSE(parseDeviceSerialNumber(bytes));
}

} // namespace
} // namespace tavik::host
