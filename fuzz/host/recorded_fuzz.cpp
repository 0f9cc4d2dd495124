// A recording from somebody else: any attribute and any answer of the kernel can hold any bytes. The host is loaded and
// asked everything; nothing may crash, hang or break a limit of the library's records.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include <stdlib.h>

#include "tavik/host/anonymise.h"
#include "tavik/host/dump.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/host_source.h"
#include "tests/tavik/host/every_question.h"

namespace {

namespace fs = std::filesystem;
using namespace tavik;

constexpr std::string_view device = "sys/devices/pci0000:00/0000:00:01.0/0000:03:00.0/";

/** What an input can set, by the number in front of each piece: a file below the device, or of the kernel's answers. */
constexpr std::array<std::string_view, 40> files = {
    "net/eth0/address",
    "net/eth0/carrier",
    "net/eth0/dev_port",
    "net/eth0/flags",
    "net/eth0/ifindex",
    "net/eth0/mtu",
    "net/eth0/operstate",
    "net/eth0/phys_port_name",
    "net/eth0/speed",
    "net/eth0/type",
    "net/eth0/uevent",
    "vendor",
    "device",
    "config",
    "vpd",
    "host7/sfp",
    "host7/fc_host/host7/port_name",
    "host7/fc_host/host7/node_name",
    "host7/fc_host/host7/port_state",
    "host7/fc_host/host7/port_id",
    "host7/fc_host/host7/speed",
    "host7/fc_host/host7/symbolic_name",
    "host7/fc_host/host7/statistics/invalid_crc_count",
    "host7/scsi_host/host7/serial_num",
    "host7/scsi_host/host7/fw_version",
    "host7/rport-7:0-0/fc_remote_ports/rport-7:0-0/port_name",
    "host7/rport-7:0-0/fc_remote_ports/rport-7:0-0/roles",
    "host7/rport-7:0-0/target7:0:0/7:0:0:1/wwid",
    "host7/rport-7:0-0/target7:0:0/7:0:0:1/vendor",
    "host7/rport-7:0-0/target7:0:0/7:0:0:1/block/sda/queue/logical_block_size",
    "/kernel/net/eth0/driver",
    "/kernel/net/eth0/version",
    "/kernel/net/eth0/firmware_version",
    "/kernel/net/eth0/bus_info",
    "/kernel/net/eth0/permanent_address",
    "/kernel/net/eth0/module_kind",
    "/kernel/net/eth0/module_memory",
    "/kernel/addresses",
    "/kernel/links",
    "/usr/share/misc/pci.ids"};

/** A host with an Ethernet port and a Fibre Channel port, whose files are those of the input. */
class Host {
public:
    Host() {
        std::string pattern = (fs::temp_directory_path() / "recorded_fuzz.XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        root_ = pattern;
        const fs::path up = "../../../";
        link("sys/class/net/eth0", up / device / "net/eth0");
        link("sys/class/fc_host/host7", up / device / "host7/fc_host/host7");
        link("sys/class/scsi_host/host7", up / device / "host7/scsi_host/host7");
        link("sys/class/fc_remote_ports/rport-7:0-0", up / device / "host7/rport-7:0-0/fc_remote_ports/rport-7:0-0");
        link("sys/class/scsi_device/7:0:0:1",
             up / device / "host7/rport-7:0-0/target7:0:0/7:0:0:1/scsi_device/7:0:0:1");
        const std::string place(device);
        link(place + "subsystem", "../../../../bus/pci");
        link(place + "net/eth0/device", "../../../0000:03:00.0");
        link(place + "host7/fc_host/host7/device", "../../../host7");
        link(place + "host7/rport-7:0-0/target7:0:0/7:0:0:1/scsi_device/7:0:0:1/device", "../../../7:0:0:1");
        for (const auto file : files)
            fs::create_directories(pathOf(file).parent_path());
        std::ofstream(pathOf("net/eth0/type")) << "1\n";
    }
    ~Host() {
        std::error_code error;
        fs::remove_all(root_, error);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void write(std::size_t number, std::string_view content) const {
        std::ofstream(pathOf(files.at(number % files.size())), std::ios::binary) << content;
    }
    void clear() const {
        for (const auto file : files)
            if (file != "net/eth0/type") fs::remove(pathOf(file));
    }
    const fs::path& root() const { return root_; }

private:
    void link(const fs::path& path, const fs::path& target) const {
        fs::create_directories((root_ / path).parent_path());
        fs::create_symlink(target, root_ / path);
    }
    fs::path pathOf(std::string_view file) const {
        return file.front() == '/' ? root_ / file.substr(1) : root_ / device / file;
    }

    fs::path root_;
};

void serve(const fs::path& root) {
    auto made = makeRecordingSource(root);
    auto& source = *std::get<std::unique_ptr<Source>>(made);
    const auto loaded = source.load();
    for (const auto& card : *std::get<Fleet>(loaded).cards) {
        if (card.serialNumber.empty() || card.serialNumber.size() > 31) std::abort();
        for (const auto& port : *card.ports)
            for (const auto& function : *port.functions)
                host::test::askEverything(source, function);
    }
    if (source.changed()) std::abort();
    const host::SysTree tree(root);
    const auto queries = host::makeRecordedQueries(tree);
    host::dumpFactsAsJson(host::readHostFacts(tree, *queries));
}

void anonymise(const fs::path& root) {
    const auto to = fs::path(root.string() + ".copy");
    std::uint64_t random = 1;
    host::anonymise(root, to, {"fuzzed-host"},
                    [&random] { return random = random * 6364136223846793005U + 1442695040888963407U; });
    std::error_code error;
    fs::remove_all(to, error);
}

} // namespace

/** Pieces of: number of a file, two bytes of length, content. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Host recorded;
    recorded.clear();
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (rest.size() > 3) {
        const auto byteAt = [&](std::size_t at) {
            return static_cast<std::size_t>(static_cast<std::uint8_t>(rest[at]));
        };
        const auto number = byteAt(0);
        const auto length = byteAt(1) * 256 + byteAt(2);
        rest.remove_prefix(3);
        recorded.write(number, rest.substr(0, length));
        rest.remove_prefix(std::min(length, rest.size()));
    }
    serve(recorded.root());
    anonymise(recorded.root());
    return 0;
}
