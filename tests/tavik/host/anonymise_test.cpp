// Recordings that were made fit to be given away: nothing of the originals is left, and what belonged together does.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/anonymise.h"
#include "tavik/host/dump.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/replacer.h"
#include "tavik/host/serial_places.h"
#include "tavik/host/text_forms.h"

namespace tavik::host::test {
namespace {

namespace fs = std::filesystem;

Pseudonyms::Random seeded(std::uint64_t seed) {
    return [engine = std::mt19937_64(seed)]() mutable { return engine(); };
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** Everything that somebody sees who gets the folder: contents, names and links. */
std::vector<std::string> everythingIn(const fs::path& folder) {
    std::vector<std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        all.push_back(entry.path().lexically_relative(folder).string());
        if (entry.is_symlink())
            all.push_back(fs::read_symlink(entry.path()).string());
        else if (entry.is_regular_file())
            all.push_back(readFile(entry.path()));
    }
    return all;
}

std::string lowered(std::string text) {
    for (auto& character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

std::string withoutSeparators(const std::string& text) {
    std::string rest;
    std::copy_if(text.begin(), text.end(), std::back_inserter(rest),
                 [](char character) { return character != ':' && character != '-' && character != '.'; });
    return rest;
}

/** The forms in which an original could be left. */
std::vector<std::string> formsOf(const Replacement& replacement) {
    std::vector<std::string> forms = {lowered(replacement.original)};
    const auto bytes = parseHex(withoutSeparators(replacement.original));
    if (!bytes || (replacement.kind != "MAC address" && replacement.kind != "world wide name")) return forms;
    forms.push_back(withoutSeparators(forms.front()));
    forms.emplace_back(bytes->begin(), bytes->end());
    forms.emplace_back(bytes->rbegin(), bytes->rend());
    if (bytes->size() != 6) return forms;
    // The interface of an IPv6 address that is made of a MAC address (RFC 4291, appendix A).
    Bytes interface = {static_cast<std::uint8_t>(bytes->at(0) ^ 2),
                       bytes->at(1),
                       bytes->at(2),
                       0xFF,
                       0xFE,
                       bytes->at(3),
                       bytes->at(4),
                       bytes->at(5)};
    forms.emplace_back(interface.begin(), interface.end());
    auto linkLocal = *parseIPAddress("fe80::");
    std::copy(interface.begin(), interface.end(), linkLocal.bytes.begin() + 8);
    forms.push_back(formatIPAddress(linkLocal).substr(6));
    return forms;
}

/** A content in the forms in which a name could be found in it. */
struct Seen {
    explicit Seen(const std::string& content)
        : raw(content), folded(lowered(content)), digits(withoutSeparators(folded)) {}

    bool has(const std::string& form) const {
        return raw.find(form) != std::string::npos || folded.find(form) != std::string::npos ||
               (form.size() >= 12 && digits.find(form) != std::string::npos);
    }

    std::string raw, folded, digits;
};

class AnonymisedTree : public testing::TestWithParam<const char*> {
protected:
    AnonymisedTree() : from_(ScratchTree::recorded(GetParam())), to_(scratch_.root() / "copy") {
        auto done = anonymise(from_, to_, {"db17.corp.example"}, seeded(7));
        if (const auto* error = std::get_if<std::string>(&done)) throw std::runtime_error(*error);
        replacements_ = std::get<std::vector<Replacement>>(done);
    }

    static std::string dumpOf(const fs::path& folder) {
        const SysTree tree(folder);
        return dumpFacts(readHostFacts(tree, *makeRecordedQueries(tree)));
    }

    ScratchTree scratch_;
    const fs::path from_;
    const fs::path to_;
    std::vector<Replacement> replacements_;
};

TEST_P(AnonymisedTree, ReadsAsTheOriginalAndHasNoneOfItsNames) {
    ASSERT_FALSE(replacements_.empty());
    const auto all = everythingIn(to_);
    EXPECT_EQ(all.size(), everythingIn(from_).size());
    const std::vector<Seen> seen(all.begin(), all.end());
    for (const auto& replacement : replacements_)
        for (const auto& form : formsOf(replacement))
            for (const auto& content : seen)
                if (content.has(form))
                    ADD_FAILURE() << replacement.kind << " " << replacement.original << " in " << content.raw;

    Replacer replacer;
    for (const auto& [kind, original, other] : replacements_)
        if (kind == "MAC address" || kind == "world wide name")
            replacer.addBytes(*parseHex(withoutSeparators(original)), *parseHex(withoutSeparators(other)));
        else if (kind == "IP address")
            replacer.addAddress(original, other);
        else
            replacer.addText(original, other);
    EXPECT_EQ(dumpOf(to_), replacer.replaced(dumpOf(from_)));
}

INSTANTIATE_TEST_SUITE_P(Hosts, AnonymisedTree,
                         testing::Values("converged-card", "dual-100g", "fibre-channel", "four-hundred-gigabit",
                                         "light-without-login", "several-lanes", "software-interfaces", "two-port-card",
                                         "virtual-functions", "virtual-machine"),
                         [](const auto& tree) {
                             std::string name = tree.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

class Anonymised : public testing::Test {
protected:
    std::vector<Replacement> run(const std::vector<std::string>& hostNames = {}) {
        auto done = anonymise(from_.root(), to(), hostNames, seeded(11));
        if (const auto* error = std::get_if<std::string>(&done)) ADD_FAILURE() << *error;
        const auto* replacements = std::get_if<std::vector<Replacement>>(&done);
        return replacements ? *replacements : std::vector<Replacement>();
    }
    std::map<std::string, std::string> othersOf(const std::vector<Replacement>& replacements) const {
        std::map<std::string, std::string> others;
        for (const auto& [kind, original, other] : replacements)
            others[original] = other;
        return others;
    }
    fs::path to() const { return scratch_.root() / "copy"; }

    ScratchTree from_;
    ScratchTree scratch_;
};

TEST_F(Anonymised, ReplacesTheIdentityOfACard) {
    from_.copy("two-port-card");
    const auto others = othersOf(run());
    for (const auto* original : {"a0:36:9f:11:22:30", "a0:36:9f:11:22:31", "a0:36:9f:11:22:33", "b8:59:9f:0a:1b:2c",
                                 "a0369fffff112230", "b8599f03000a1b2c", "192.0.2.10", "2001:db8::10",
                                 "fe80::a236:9fff:fe11:2230", "AR201XH", "EX2036FT01234", "Rack 7, unit 12"})
        EXPECT_TRUE(others.contains(original)) << original;
}

TEST_F(Anonymised, ReplacesTheNamesOfAFabric) {
    from_.copy("fibre-channel");
    const auto others = othersOf(run());
    for (const auto* original : {"2100000e1e0a0b10", "2000000e1e0a0b11", "50060e8010203040", "RFD1234X5678", "UVD1ABC",
                                 "00:1b:21:00:00:20", "CNA-0001"})
        EXPECT_TRUE(others.contains(original)) << original;
}

TEST_F(Anonymised, KeepsTheMakerAndRelatedAddressesRelated) {
    from_.copy("two-port-card");
    const auto others = othersOf(run());
    const auto first = others.at("a0:36:9f:11:22:30");
    EXPECT_EQ(first.substr(0, 9), "a0:36:9f:");
    EXPECT_EQ(first.substr(0, 16), others.at("a0:36:9f:11:22:31").substr(0, 16));
    EXPECT_EQ(first.back(), '0');
    const auto digits = withoutSeparators(first).substr(6);
    EXPECT_EQ(others.at("a0369fffff112230"), "a0369fffff" + digits);
    EXPECT_EQ(others.at("fe80::a236:9fff:fe11:2230"),
              formatIPAddress(*parseIPAddress("fe80::a236:9fff:fe" + digits.substr(0, 2) + ":" + digits.substr(2))));
    EXPECT_EQ(others.at("192.0.2.10").substr(0, 4), "192.");
    EXPECT_EQ(others.at("AR201XH").size(), 7U);
}

TEST_F(Anonymised, AddressesOfOneNetworkStayInOne) {
    from_.file("sys/class/net/x/mtu", "1500\n");
    from_.file("kernel/addresses", "2 192.168.7.10/24 0 128\n3 192.168.7.20/24 0 128\n4 10.1.2.3/8 0 128\n"
                                   "5 2001:db8:1::5/64 0 128\n6 2001:db8:1::6/64 0 128\n7 127.0.0.1/8 254 128\n");
    const auto others = othersOf(run());
    const auto network = [&](const char* address) {
        return others.at(address).substr(0, others.at(address).rfind('.'));
    };
    EXPECT_EQ(network("192.168.7.10"), network("192.168.7.20"));
    EXPECT_EQ(network("192.168.7.10").substr(0, 8), "192.168.");
    EXPECT_EQ(others.at("10.1.2.3").substr(0, 3), "10.");
    const auto sixth = others.at("2001:db8:1::6");
    EXPECT_EQ(others.at("2001:db8:1::5").substr(0, sixth.rfind(':')), sixth.substr(0, sixth.rfind(':')));
    EXPECT_FALSE(others.contains("127.0.0.1"));
}

TEST_F(Anonymised, MultipathDevicesStayThoseOfTheirUnits) {
    from_.file("sys/devices/unit/wwid", "naa.60060e8007c3a200000003a200000010\n");
    from_.file("sys/devices/virtual/block/dm-0/dm/uuid", "mpath-360060e8007c3a200000003a200000010\n");
    const auto others = othersOf(run());
    EXPECT_EQ(readFile(to() / "sys/devices/virtual/block/dm-0/dm/uuid"),
              "mpath-3" + others.at("60060e8007c3a200000003a200000010") + "\n");
}

TEST_F(Anonymised, HostNamesGoWhereverTheyStand) {
    from_.file("sys/class/fc_host/host1/symbolic_name", "FC-1602 FW:v8 DVR:v10 HN:db17.corp.example OS:Linux\n");
    from_.file("sys/class/fc_host/host1/system_hostname", "DB17\n");
    from_.file("kernel/net/db17/driver", "seen by lpar-4711, a guest\n");
    const auto others = othersOf(run({"lpar-4711"}));
    EXPECT_EQ(readFile(to() / "sys/class/fc_host/host1/symbolic_name"),
              "FC-1602 FW:v8 DVR:v10 HN:" + others.at("db17") + "." + others.at("corp.example") + " OS:Linux\n");
    EXPECT_EQ(readFile(to() / "kernel/net" / others.at("db17") / "driver"),
              "seen by " + others.at("lpar-4711") + ", a guest\n");
}

TEST_F(Anonymised, NeighboursHaveOtherNamesAndThePortsThatTheyHad) {
    const std::string file = "kernel/net/eth0/neighbours";
    from_.file(file, "00:1c:73:00:00:01\tEthernet1/7\tswitch17.example\tuplink of db17\n"
                     "192.0.2.77\teth0\tdb18\teth0\ncore\t7\t-\tto\n");
    from_.file("kernel/net/eth0/driver", "the uplink of db17 is a core driver\n");
    const auto others = othersOf(run());
    const auto& name = others.at("switch17");
    EXPECT_EQ(readFile(to() / file), others.at("00:1c:73:00:00:01") + "\tEthernet1/7\t" + name + "." +
                                         others.at("example") + "\t" + others.at("uplink of db17") + "\n" +
                                         others.at("192.0.2.77") + "\teth0\t" + others.at("db18") + "\teth0\n" +
                                         others.at("core") + "\t7\t-\tto\n");
    EXPECT_EQ(others.at("00:1c:73:00:00:01").substr(0, 9), "00:1c:73:");
    EXPECT_EQ(readFile(to() / "kernel/net/eth0/driver"), "the uplink of db17 is a core driver\n");
}

TEST_F(Anonymised, NeighboursThatCannotBeToldApartAreLeftOut) {
    from_.file("kernel/net/eth0/neighbours", "00:1c:73:00:00:01\tEthernet1/7\tswitch17.exa");
    run();
    EXPECT_EQ(readFile(to() / "kernel/net/eth0/neighbours"), "");
}

TEST_F(Anonymised, InterfacesAndDevicesNamedByTheirAddressFollowIt) {
    from_.copy("software-interfaces");
    from_.copy("virtual-functions");
    const auto others = othersOf(run());
    const auto usb = withoutSeparators(others.at("02:11:22:33:44:15"));
    EXPECT_TRUE(fs::is_symlink(to() / ("sys/class/net/enx" + usb)));
    EXPECT_TRUE(fs::exists(to() / ("sys/class/net/enx" + usb) / "mtu"));
    for (const auto& text : everythingIn(to()))
        EXPECT_EQ(withoutSeparators(text).find("6045bd000001"), std::string::npos) << text;
}

/** Sum of a part of a memory, as the byte behind it has it. */
unsigned sumOf(const std::string& memory, std::size_t from, std::size_t end) {
    unsigned sum = 0;
    for (std::size_t i = from; i < end; ++i)
        sum += static_cast<std::uint8_t>(memory[i]);
    return sum % 256;
}

TEST_F(Anonymised, ChecksumsAreAsRightOrWrongAsBefore) {
    Bytes right(128, 0);
    right[0] = 0x03;
    for (std::size_t i = 0; i < 10; ++i)
        right[68 + i] = static_cast<std::uint8_t>("SERIAL4711"[i]);
    const std::string memory(right.begin(), right.end());
    right[95] = static_cast<std::uint8_t>(sumOf(memory, 64, 95));
    Bytes wrong = right;
    ++wrong[95];
    from_.file("kernel/net/a/module_memory", {right.begin(), right.end()});
    from_.file("kernel/net/b/module_memory", {wrong.begin(), wrong.end()});
    const auto others = othersOf(run());
    const auto rightAfter = readFile(to() / "kernel/net/a/module_memory");
    const auto wrongAfter = readFile(to() / "kernel/net/b/module_memory");
    EXPECT_EQ(rightAfter.substr(68, 10), others.at("SERIAL4711"));
    EXPECT_EQ(static_cast<std::uint8_t>(rightAfter[95]), sumOf(rightAfter, 64, 95));
    EXPECT_EQ(static_cast<std::uint8_t>(wrongAfter[95]), (sumOf(wrongAfter, 64, 95) + 1) % 256);
}

TEST_F(Anonymised, PlaceholdersOfSerialNumbersStay) {
    from_.file("sys/a/serial", "N/A\n");
    from_.file("sys/b/serial", "00000000\n");
    from_.file("sys/c/serial", "Not Available\n");
    EXPECT_TRUE(run().empty());
    EXPECT_EQ(readFile(to() / "sys/c/serial"), "Not Available\n");
}

TEST_F(Anonymised, LinksToThisMachineAndSpecialFilesAreNotCopied) {
    from_.link("sys/absolute", "/home/somebody");
    from_.link("sys/relative", "class/net");
    ASSERT_EQ(::mkfifo((from_.root() / "sys/fifo").c_str(), 0600), 0);
    run();
    EXPECT_FALSE(fs::is_symlink(to() / "sys/absolute"));
    EXPECT_TRUE(fs::is_symlink(to() / "sys/relative"));
    EXPECT_FALSE(fs::exists(to() / "sys/fifo"));
}

TEST_F(Anonymised, FilesThatAreNoRecordingsAreNamed) {
    from_.file("kernel/addresses", "");
    fs::resize_file(from_.root() / "kernel/addresses", std::uintmax_t{1} << 30);
    const auto done = anonymise(from_.root(), to(), {}, seeded(1));
    EXPECT_EQ(std::get<std::string>(done),
              (from_.root() / "kernel/addresses").string() + ": longer than anything that is recorded");
    EXPECT_FALSE(fs::exists(to()));
}

TEST_F(Anonymised, AFolderInUseIsNotWritten) {
    from_.copy("two-port-card");
    fs::create_directories(to() / "other");
    const auto done = anonymise(from_.root(), to(), {}, seeded(1));
    EXPECT_EQ(std::get<std::string>(done), to().string() + ": exists and is not empty");
}

TEST_F(Anonymised, WithoutRandomNumbersNothingIsCopied) {
    from_.copy("two-port-card");
    from_.file("kernel/addresses", "2 10.0.0.2/24 0 128\n3 10.0.0.3/24 0 128\n");
    std::uint64_t calls = 0;
    // Always the same number: some pseudonyms are originals of others.
    const auto done = anonymise(from_.root(), to(), {}, [&calls] { return 0xFFFFF0 + 2 * ++calls; });
    EXPECT_TRUE(std::holds_alternative<std::string>(done));
    EXPECT_FALSE(fs::exists(to()));
}

TEST(Replacements, AreKeptFromOthers) {
    ScratchTree scratch;
    const auto file = scratch.root() / "replaced";
    EXPECT_EQ(writeReplacements({{"host name", "db17", "xk42"}}, file), "");
    EXPECT_EQ(readFile(file), "host name\tdb17\txk42\n");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(writeReplacements({}, file), file.string() + ": File exists");
}

TEST(SerialPlaces, EndWhereTheNextItemBegins) {
    // Large resource 0x90 of 14 bytes: SN "AB12", V0 "rev", RV.
    const std::string block("\x90\x12\x00SN\x04"
                            "AB12V0\x03revRV\x01\x00\x78",
                            22);
    const Bytes bytes(block.begin(), block.end());
    EXPECT_EQ(findSerialPlaces("vpd", bytes), (std::vector<Place>{{6, 4}}));
    EXPECT_TRUE(findSerialPlaces("mtu", bytes).empty());
    EXPECT_TRUE(findSerialPlaces("sfp", {}).empty());
}

} // namespace
} // namespace tavik::host::test
