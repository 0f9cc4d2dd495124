#include "tavik/host/pci_names.h"

#include <gtest/gtest.h>

#include "scratch_tree.h"

namespace tavik::host::test {
namespace {

constexpr const char* list = "# comment\n"
                             "8086  Intel Corporation\n"
                             "\t1572  Ethernet Controller X710\n"
                             "\t\t8086 0007  A board with it\n"
                             "# in between\n"
                             "\t1573  Another\n"
                             "9004  Example\n"
                             "\t15bb  Theirs";

TEST(PciNames, ComeFromTheListOfTheSystem) {
    ScratchTree scratch;
    scratch.file("usr/share/misc/pci.ids", list);
    const PciNames names(scratch.tree());
    EXPECT_EQ(names.vendor(0x8086), "Intel Corporation");
    EXPECT_EQ(names.device(0x8086, 0x1572), "Ethernet Controller X710");
    EXPECT_EQ(names.device(0x8086, 0x1573), "Another");
    EXPECT_EQ(names.device(0x9004, 0x15BB), "Theirs");
}

TEST(PciNames, DeviceOfAnotherVendorIsNotTaken) {
    ScratchTree scratch;
    scratch.file("usr/share/hwdata/pci.ids", list);
    const PciNames names(scratch.tree());
    EXPECT_EQ(names.device(0x8086, 0x15BB), "vendor 0x8086 device 0x15bb");
    EXPECT_EQ(names.device(0x9004, 0x1572), "vendor 0x9004 device 0x1572");
    EXPECT_EQ(names.device(0x9005, 0x15BB), "vendor 0x9005 device 0x15bb");
}

TEST(PciNames, WithoutAListNumbersStandForThem) {
    ScratchTree scratch;
    const PciNames names(scratch.tree());
    EXPECT_EQ(names.vendor(0x1AF4), "vendor 0x1af4");
    EXPECT_EQ(names.device(0x1AF4, 0x1041), "vendor 0x1af4 device 0x1041");
}

} // namespace
} // namespace tavik::host::test
