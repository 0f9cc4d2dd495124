// Recordings that are damaged or made to do harm: what is sound of them is shown, and nothing outside of them is read.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "every_question.h"
#include "scratch_tree.h"
#include "tavik/host/dump.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/host_source.h"

namespace tavik::host::test {
namespace {

constexpr const char* card = "sys/devices/pci0000:00/0000:00:01.0/0000:03:00.0";

class BadRecording : public testing::Test {
protected:
    BadRecording() { scratch_.copy("two-port-card"); }

    std::filesystem::path place(const std::string& path) const { return scratch_.root() / path; }

    /** In place of what is there. */
    void put(const std::string& path, const std::string& content) {
        scratch_.remove(path);
        scratch_.file(path, content);
    }

    std::string dump() const { return dumpFacts(readHostFacts(scratch_.tree(), *scratch_.queries())); }

    /** The recording as the library serves it, with every question that it can be asked. */
    Fleet serve() const {
        auto made = makeRecordingSource(scratch_.root());
        auto& source = std::get<std::unique_ptr<Source>>(made);
        const auto loaded = source->load();
        if (const auto* error = std::get_if<FleetError>(&loaded)) throw std::runtime_error(error->message);
        for (const auto& served : *std::get<Fleet>(loaded).cards)
            for (const auto& port : *served.ports)
                for (const auto& function : *port.functions)
                    askEverything(*source, function);
        return std::get<Fleet>(loaded);
    }

    std::vector<std::string> serialNumbers() const {
        std::vector<std::string> numbers;
        const Fleet fleet = serve();
        for (const auto& served : *fleet.cards)
            numbers.push_back(served.serialNumber);
        return numbers;
    }

    /** Files of the recording, relative to it. */
    std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(scratch_.root()))
            if (entry.is_regular_file() && !entry.is_symlink())
                found.push_back(std::filesystem::relative(entry.path(), scratch_.root()).string());
        return found;
    }

    ScratchTree scratch_;
};

const std::vector<std::string> bothCards = {"A0369F112233", "b8599f03000a1b2c"};

TEST_F(BadRecording, CutAtAnyPlaceShowsWhatIsLeft) {
    for (const auto* tree : {"two-port-card", "fibre-channel", "several-lanes"}) {
        for (const auto* folder : {"sys", "kernel"})
            scratch_.remove(folder);
        scratch_.copy(tree);
        std::map<std::string, std::uintmax_t> sizes;
        for (const auto& file : files())
            sizes[file] = std::filesystem::file_size(place(file));
        ASSERT_FALSE(sizes.empty());
        for (const auto eighths : {7U, 4U, 1U, 0U}) {
            for (const auto& [file, size] : sizes)
                std::filesystem::resize_file(place(file), size * eighths / 8);
            EXPECT_NO_THROW(serve()) << tree << " cut to " << eighths << " eighths";
        }
    }
}

TEST_F(BadRecording, WithoutAnyOfItsFilesShowsTheOthers) {
    for (const auto& file : files()) {
        std::filesystem::remove(place(file));
        EXPECT_NO_THROW(serve()) << file;
    }
    EXPECT_EQ(serve().cards->size(), 0U);
}

TEST_F(BadRecording, LineThatIsCutIsNoAddress) {
    put("kernel/addresses", "2 192.0.2.10/24 0 128\n3 192.0.2.1");
    EXPECT_EQ(scratch_.queries()->addresses()->size(), 1U);
    put("kernel/addresses", "2 192.0.2.10/24 0 128\n3 192.0.2.11/24 0 12");
    EXPECT_EQ(scratch_.queries()->addresses()->size(), 1U);
}

TEST_F(BadRecording, FilesOfAGigabyteAreReadInPart) {
    for (const std::string& file : {std::string("kernel/addresses"), std::string("kernel/net/ens1f0/module_memory"),
                                    std::string("kernel/net/ens1f0/driver"), std::string(card) + "/vpd",
                                    std::string(card) + "/config", std::string("usr/share/misc/pci.ids")}) {
        put(file, "");
        std::filesystem::resize_file(place(file), std::uintmax_t{1} << 30);
    }
    EXPECT_NE(dump().find("driver: - (longer than 4096 bytes)"), std::string::npos);
    // The second function of the card still tells whose it is.
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, FifosAndDevicesAreNotOpened) {
    for (const std::string& file : {std::string("kernel/addresses"), std::string("kernel/net/ens1f0/module_memory"),
                                    std::string("sys/class/net/ens1f0/operstate"), std::string(card) + "/vpd"}) {
        scratch_.remove(file);
        ASSERT_EQ(::mkfifo(place(file).c_str(), 0600), 0) << file;
    }
    EXPECT_NE(dump().find("operational state: - (not a file)"), std::string::npos);
    EXPECT_EQ(serialNumbers(), bothCards);
    scratch_.remove("sys/class/net/ens1f0/mtu");
    // Only root makes devices.
    const bool isMade = ::mknod(place("sys/class/net/ens1f0/mtu").c_str(), S_IFCHR | 0600, makedev(1, 5)) == 0;
    EXPECT_NE(dump().find(isMade ? "mtu: - (not a file)" : "mtu: - (No such file"), std::string::npos);
}

TEST_F(BadRecording, FoldersInPlaceOfFilesAreNamed) {
    for (const auto* file : {"kernel/addresses", "sys/class/net/ens1f0/mtu", "kernel/net/ens1f0/driver"}) {
        scratch_.remove(file);
        std::filesystem::create_directory(place(file));
    }
    EXPECT_NE(dump().find("mtu: - (not a file)"), std::string::npos);
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, FilesInPlaceOfFoldersAreNamed) {
    put("kernel/net", "a file");
    EXPECT_NE(dump().find("driver: - (Not a directory)"), std::string::npos);
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, LinksOutOfItShowNothingOfThisMachine) {
    ScratchTree outside;
    outside.file("driver", "SECRET");
    outside.file("eth9/type", "1\n");
    outside.file("eth9/address", "02:5e:c4:e7:00:01\n");
    for (const auto* file : {"kernel/net/ens1f0/driver", "kernel/net/ens1f1", "sys/class/net/eth9"})
        scratch_.remove(file);
    scratch_.link("kernel/net/ens1f0/driver", (outside.root() / "driver").string());
    scratch_.link("kernel/net/ens1f1", "../../../" + outside.root().filename().string());
    scratch_.link("sys/class/net/eth9", (outside.root() / "eth9").string());
    const auto shown = dump();
    EXPECT_EQ(shown.find("SECRET"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("02:5e:c4"), std::string::npos) << shown;
    EXPECT_NE(shown.find("driver: - (leads out of the root)"), std::string::npos) << shown;
    EXPECT_FALSE(scratch_.tree().exists("kernel/net/ens1f1/driver"));
    EXPECT_FALSE(scratch_.tree().linkName("sys/class/net/eth9/address"));
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, LinksInACircleEnd) {
    scratch_.link("sys/class/net/eth8", "eth9");
    scratch_.link("sys/class/net/eth9", "eth8");
    put("kernel/net/ens1f0/version", "");
    scratch_.remove("kernel/net/ens1f0/version");
    scratch_.link("kernel/net/ens1f0/version", "version");
    EXPECT_NE(dump().find("left out eth8: link type: Too many levels of symbolic links"), std::string::npos) << dump();
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, InterfacesThatStandOnEachOtherEnd) {
    scratch_.copy("fibre-channel");
    const auto interface = scratch_.tree().resolve("sys/class/net/eth2");
    ASSERT_TRUE(interface);
    scratch_.link(*interface + "/lower_eth2.100", "../eth2.100");
    const Fleet fleet = serve();
    EXPECT_FALSE(fleet.cards->empty());
}

TEST_F(BadRecording, AnswersOfTheWrongLengthAreIgnored) {
    put("kernel/net/ens1f0/module_memory", "\x03");
    put("kernel/net/ens1f1/module_kind", "18446744073709551616\n");
    put("kernel/net/ens1f0/permanent_address", "a0:36:9f:11:22\n");
    const auto shown = dump();
    EXPECT_NE(shown.find("transceiver: - (module memory of 1 bytes, 96 needed)"), std::string::npos) << shown;
    EXPECT_NE(shown.find("transceiver: - (number too large: 18446744073709551616)"), std::string::npos) << shown;
    EXPECT_NE(shown.find("permanent address: - (no Ethernet address)"), std::string::npos) << shown;
    EXPECT_EQ(serialNumbers(), bothCards);
}

TEST_F(BadRecording, NamesThatAreNoInterfacesAreLeftOut) {
    for (const std::string& name : {std::string("sixteen__letters"), std::string(200, 'x'), std::string("line\nend")})
        scratch_.file("sys/class/net/" + name + "/type", "1\n");
    const auto shown = dump();
    EXPECT_EQ(shown.find("sixteen"), std::string::npos);
    EXPECT_EQ(shown.find("xxx"), std::string::npos);
    EXPECT_EQ(serialNumbers().size(), 3U); // "line\nend" is a name that the kernel would take
}

TEST_F(BadRecording, ReadsTheSameWhileOthersRenameFiles) {
    ScratchTree elsewhere;
    elsewhere.file("a", "");
    std::atomic<bool> isOver = false;
    std::thread renamer([&] {
        while (!isOver) {
            std::filesystem::rename(elsewhere.root() / "a", elsewhere.root() / "b");
            std::filesystem::rename(elsewhere.root() / "b", elsewhere.root() / "a");
        }
    });
    const auto first = fingerprint(scratch_.tree(), *scratch_.queries());
    for (int looks = 0; looks < 50; ++looks)
        EXPECT_EQ(fingerprint(scratch_.tree(), *scratch_.queries()), first) << "look " << looks;
    isOver = true;
    renamer.join();
}

/** From here on this process has no openat2, as on an old kernel or in a container with a filter. */
bool forbidConfinedLookups() {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{static_cast<unsigned short>(std::size(rules)), rules};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/** Runs the check in a child process. @return its answer; nothing if it could not be run. */
std::optional<bool> inChild(const std::function<bool()>& check) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(!forbidConfinedLookups() ? 2 : check() ? 0 : 1);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) == 2)
        return std::nullopt;
    return WEXITSTATUS(status) == 0;
}

TEST_F(BadRecording, IsNotLeftOnKernelsThatDoNotConfineLookups) {
    ScratchTree outside;
    outside.file("driver", "SECRET");
    scratch_.remove("kernel/net/ens1f0/driver");
    scratch_.link("kernel/net/ens1f0/driver", (outside.root() / "driver").string());
    scratch_.link("kernel/net/folder", outside.root().string());
    const auto here = dump();
    EXPECT_NE(here.find("driver: - (leads out of the root)"), std::string::npos) << here;
    const auto same = inChild([&] { return dump() == here && !scratch_.tree().text("kernel/net/folder/driver"); });
    ASSERT_TRUE(same.has_value()) << "the filter could not be set";
    EXPECT_TRUE(*same);
}

} // namespace
} // namespace tavik::host::test
