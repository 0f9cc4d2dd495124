// What cimhost shows of recorded hosts.
#include "program.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <string>

namespace cimhost::testing_support {
namespace {

using testing::HasSubstr;

/// The commands of a test ask the adapters of a recording.
class Recording : public testing::Test {
protected:
    static void choose(const std::string& name) {
        ::setenv("TAVIK_SOURCE", ("recording:" + std::string(HOST_TREES) + "/" + name).c_str(), 1);
    }
    ~Recording() override { ::unsetenv("TAVIK_SOURCE"); }
};

TEST_F(Recording, ShowsItsTreeOpticsAndTroubles) {
    choose("fibre-channel");
    const Ended tree = cimhost({"tree"});
    EXPECT_EQ(tree.status, 0) << tree.errors;
    EXPECT_THAT(tree.output, HasSubstr("card FC-1602, serial number RFD1234X5678"));
    EXPECT_THAT(tree.output, HasSubstr("logical unit 10, ACME, Array 9000, /dev/sdb\n"));
    EXPECT_THAT(tree.output, HasSubstr("IP endpoint 001B21000020, 198.51.100.20, mask 255.255.255.0\n"));

    const Ended ports = cimhost({"names", "CIM_FCPort"});
    EXPECT_THAT(ports.output, HasSubstr("RFD1234X5678_2000000E1E0A0B10_2100000E1E0A0B10"));

    const Ended optics = cimhost({"optics"});
    EXPECT_THAT(optics.output, HasSubstr("EXAMPLE OPTICS EX-SFP-16G-SW, serial number UVD1ABC\n"));

    const Ended doctor = cimhost({"doctor"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_THAT(doctor.output, HasSubstr("port 0 of card RFD1234X5678: CRCErrors is 6 since the driver was loaded\n"));
}

} // namespace
} // namespace cimhost::testing_support
