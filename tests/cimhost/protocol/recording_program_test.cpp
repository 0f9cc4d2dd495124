// What cimhost shows of recorded hosts. Beside each recording NAME stand NAME.tree, NAME.optics and NAME.doctor, the
// ones that say something. After a wanted change, read and renew them with the failing test's output.
#include "program.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace cimhost::testing_support {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The commands of a test ask the adapters of a recording.
class Recording : public testing::Test {
protected:
    Recording() { ::setenv("MEROLT_CNA_SYSTEM_NAME", "recorded-host", 1); }
    ~Recording() override {
        ::unsetenv("MEROLT_CNA_SYSTEM_NAME");
        ::unsetenv("TAVIK_SOURCE");
    }

    static void choose(const std::string& name) { ::setenv("TAVIK_SOURCE", ("recording:" + fileOf(name)).c_str(), 1); }

    static std::string fileOf(const std::string& name) { return std::string(HOST_TREES) + "/" + name; }

    static Ended ended(const std::string& command) { return cimhost({command}); }

    /// The cards with all below them. What stands around them is the same for every recording, and tells of this
    /// machine.
    static std::string cards() {
        std::istringstream tree(ended("tree").output);
        std::string lines;
        std::string line;
        std::getline(tree, line); // the host
        while (std::getline(tree, line) && line.find("─ installation service ") == std::string::npos)
            lines += line + "\n";
        return lines;
    }

    static std::string expected(const std::string& name) {
        std::ifstream file(fileOf(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

class FieldRecording : public Recording, public testing::WithParamInterface<const char*> {
protected:
    FieldRecording() { choose(GetParam()); }
    static std::string expectedOf(const std::string& command) { return expected(GetParam() + ("." + command)); }
};

TEST_P(FieldRecording, ShowsItsCards) {
    ASSERT_NE(expectedOf("tree"), "");
    EXPECT_EQ(cards(), expectedOf("tree"));
}

TEST_P(FieldRecording, ShowsItsModulesAndTroubles) {
    const std::string optics = expectedOf("optics");
    EXPECT_EQ(ended("optics").output, optics.empty() ? "No module answers.\n" : optics);
    const std::string doctor = expectedOf("doctor");
    EXPECT_EQ(ended("doctor").output, doctor.empty() ? "Nothing is wrong.\n" : doctor);
}

INSTANTIATE_TEST_SUITE_P(Hosts, FieldRecording,
                         testing::Values("bond-one-down", "converged-card", "dual-100g", "four-hundred-gigabit",
                                         "guest-functions", "light-without-login", "silent-driver", "two-fabrics"),
                         [](const auto& tree) {
                             std::string name = tree.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST_F(Recording, OfTwoFabricsHasEightUnitsOverFourPaths) {
    choose("two-fabrics");
    const std::string tree = cards();
    const auto count = [&tree](const std::string& text) {
        std::size_t found = 0;
        for (auto at = tree.find(text); at != std::string::npos; at = tree.find(text, at + 1))
            ++found;
        return found;
    };
    EXPECT_EQ(count("SCSI target "), 4U);
    for (int unit = 0; unit < 8; ++unit)
        EXPECT_EQ(count("logical unit " + std::to_string(unit) + ", ACME, Array 9000, /dev/sd"), 4U) << unit;
    EXPECT_EQ(count("SCSI target 21000011227A1C41_50060E8007C3A221"), 1U);
    EXPECT_EQ(count("statistics I/O 200012, megabytes 6144"), 1U); // 120000 + 80000 + 12, 4096 + 2048
}

TEST_F(Recording, OfLightWithoutLoginIsAFault) {
    choose("light-without-login");
    EXPECT_THAT(ended("optics").output, HasSubstr("receive power   0.3900 mW (-4.09 dBm)  normal")); // 3900 of 0.1 uW
    const Ended doctor = ended("doctor");
    EXPECT_EQ(doctor.status, 2);
    EXPECT_THAT(doctor.output, HasSubstr("link-down-light"));
    EXPECT_THAT(doctor.output, HasSubstr("port 1 of card XF16B00093 (host6): no link; the module receives 0.3900 mW"));
    EXPECT_THAT(doctor.output, Not(HasSubstr("port 0 of card XF16B00093")));
}

TEST_F(Recording, OfABondHasBothPortsWithTheirOwnAddresses) {
    choose("bond-one-down");
    const std::string tree = cards();
    EXPECT_THAT(tree, HasSubstr("Ethernet port 0011228D0040"));
    EXPECT_THAT(tree, HasSubstr("Ethernet port 0011228D0041"));
    EXPECT_EQ(ended("doctor").status, 1);
}

TEST_F(Recording, OfAConvergedCardHasBothProtocols) {
    choose("converged-card");
    const std::string tree = cards();
    EXPECT_THAT(tree, HasSubstr("card Dual Port 10GbE CNA, serial number XC10C00215"));
    EXPECT_THAT(tree, HasSubstr("storage port 20000011225A0010, host8, 10 Gbit/s, OK"));
    EXPECT_THAT(tree, HasSubstr("MTU 2500"));
}

TEST_F(Recording, ShowsItsTreeOpticsAndTroubles) {
    choose("fibre-channel");
    const Ended tree = ended("tree");
    EXPECT_EQ(tree.status, 0) << tree.errors;
    EXPECT_THAT(tree.output, HasSubstr("card FC-1602, serial number RFD1234X5678"));
    EXPECT_THAT(tree.output, HasSubstr("logical unit 10, ACME, Array 9000, /dev/sdb\n"));
    EXPECT_THAT(tree.output, HasSubstr("IP endpoint 001B21000020, 198.51.100.20, mask 255.255.255.0\n"));

    const Ended ports = cimhost({"names", "CIM_FCPort"});
    EXPECT_THAT(ports.output, HasSubstr("RFD1234X5678_2000000E1E0A0B10_2100000E1E0A0B10"));
    EXPECT_THAT(ended("optics").output, HasSubstr("EXAMPLE OPTICS EX-SFP-16G-SW, serial number UVD1ABC\n"));

    const Ended doctor = ended("doctor");
    EXPECT_EQ(doctor.status, 1);
    EXPECT_THAT(doctor.output,
                HasSubstr("port 0 of card RFD1234X5678 (host7): CRCErrors is 6 since the driver was loaded\n"));
}

} // namespace
} // namespace cimhost::testing_support
