// What it costs to look at a host, beside plain reads of the same files, links and folders: a full look, and a poll
// that asks whether something has changed and how each link stands. The host is a recording of any number of
// interfaces. And what the facts beside the contract cost of all interfaces.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "inventory/fact_calls.h"
#include "tavik/host/host_source.h"
#include "tests/optics/memories.h"

namespace {

namespace fs = std::filesystem;

/** A recording of cards with two ports each, in a folder that goes with it. */
class RecordedHost {
public:
    explicit RecordedHost(unsigned interfaces) {
        std::string pattern = (fs::temp_directory_path() / "host_source_bench.XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
        root_ = pattern;
        for (unsigned i = 0; i < interfaces; ++i)
            addInterface(i);
        std::string addresses;
        for (unsigned i = 0; i < interfaces; ++i)
            addresses += std::to_string(i + 2) + " 10.0." + std::to_string(i) + ".1/24 0 128\n" +
                         std::to_string(i + 2) + " fe80::211:22ff:fe33:" + std::to_string(1000 + i) + "/64 253 128\n";
        file("kernel/addresses", addresses);
        file("kernel/links", links_);
    }
    ~RecordedHost() {
        std::error_code error;
        fs::remove_all(root_, error);
    }
    RecordedHost(const RecordedHost&) = delete;
    RecordedHost& operator=(const RecordedHost&) = delete;

    const fs::path& root() const { return root_; }

    std::unique_ptr<tavik::Source> source() const {
        return std::move(std::get<std::unique_ptr<tavik::Source>>(tavik::makeRecordingSource(root_)));
    }

    /** What facts are read from beside what a look reads. */
    void addFacts(unsigned interfaces) const {
        for (unsigned i = 0; i < interfaces; ++i) {
            for (const auto* counter : {"rx_bytes", "tx_bytes", "rx_packets", "tx_packets", "rx_errors", "tx_errors",
                                        "rx_dropped", "tx_dropped"})
                file("sys/class/net/" + nameOf(i) + "/statistics/" + counter, "123456789012\n");
            for (const auto& [attribute, value] :
                 std::initializer_list<std::pair<const char*, const char*>>{{"numa_node", "1\n"},
                                                                            {"current_link_speed", "16.0 GT/s PCIe\n"},
                                                                            {"current_link_width", "16\n"},
                                                                            {"max_link_speed", "16.0 GT/s PCIe\n"},
                                                                            {"max_link_width", "16\n"}})
                file("sys/class/net/" + nameOf(i) + "/device/" + attribute, value);
            const auto kernel = "kernel/net/" + nameOf(i) + "/";
            file(kernel + "pause", "1 1 1\n");
            file(kernel + "fec", "4 4\n");
            file(kernel + "link_settings", "1 1 00000000 80000000 00000000 00000000\n");
        }
        file("sys/bus/pci/slots/1/address", "0000:01:00\n");
    }

    static std::string nameOf(unsigned i) { return "ens" + std::to_string(i); }

private:
    void file(const std::string& path, const std::string& content) const {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path, std::ios::binary) << content;
    }
    void link(const std::string& path, const std::string& target) const {
        fs::create_directories((root_ / path).parent_path());
        fs::create_symlink(target, root_ / path);
    }

    void addInterface(unsigned i) {
        const auto number = std::to_string(i + 2);
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "0000:%02x:00.%u", 1 + i / 2, i % 2);
        const std::string device = std::string("sys/devices/pci0000:00/0000:00:01.0/") + text.data();
        std::snprintf(text.data(), text.size(), "00:11:22:33:%02x:%02x", i / 256, i % 256);
        const std::string mac = text.data();
        addDevice(device);
        const auto name = nameOf(i);
        const auto net = device + "/net/" + name;
        link("sys/class/net/" + name, "../../../" + net);
        link(net + "/device", "../../../" + fs::path(device).filename().string());
        for (const auto& [attribute, value] :
             std::initializer_list<std::pair<const char*, std::string>>{{"address", mac},
                                                                        {"carrier", "1"},
                                                                        {"dev_port", "0"},
                                                                        {"flags", "0x1003"},
                                                                        {"ifindex", number},
                                                                        {"mtu", "9000"},
                                                                        {"operstate", "up"},
                                                                        {"speed", "100000"},
                                                                        {"type", "1"}})
            file(net + "/" + attribute, value + "\n");
        const auto kernel = "kernel/net/" + name + "/";
        const auto memory = optics::tests::qsfp28Memory();
        for (const auto& [answer, value] : std::initializer_list<std::pair<const char*, std::string>>{
                 {"driver", "quadnic"},
                 {"version", "6.1.0"},
                 {"firmware_version", "16.35.2000"},
                 {"bus_info", "0000:01:00.0"},
                 {"permanent_address", mac},
                 {"module_kind", "3"},
                 {"module_memory", {memory.begin(), memory.end()}}})
            file(kernel + answer, value);
        links_ += number + " " + name + " 1 69699 " + mac + " 0 0 6 1 -\n";
    }

    void addDevice(const std::string& device) const {
        link(device + "/subsystem", "../../../../bus/pci");
        link(device + "/driver", "../../../../bus/pci/drivers/quadnic");
        for (const auto* id : {"vendor", "device", "subsystem_vendor", "subsystem_device"})
            file(device + "/" + id, "0x1df8\n");
        file(device + "/config", std::string(4096, '\0'));
        file(device + "/vpd", std::string("\x82\x07\x00"
                                          "Adapter\x90\x07\x00SN\x04"
                                          "AB12\x78",
                                          21));
    }

    fs::path root_;
    std::string links_;
};

/** Reads every file, link and folder of the recording by its path. */
class PlainReader {
public:
    explicit PlainReader(const fs::path& root) {
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            if (entry.is_symlink())
                links_.push_back(entry.path().string());
            else if (entry.is_regular_file())
                files_.push_back(entry.path().string());
        }
        folder_ = (root / "sys/class/net").string();
    }

    std::size_t readAll() const {
        std::array<char, 32768> buffer{};
        std::size_t size = 0;
        for (const auto& link : links_)
            size += static_cast<std::size_t>(::readlink(link.c_str(), buffer.data(), buffer.size()));
        for (const auto& file : files_) {
            const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
            size += static_cast<std::size_t>(::read(descriptor, buffer.data(), buffer.size()));
            ::close(descriptor);
        }
        for (const auto& entry : fs::directory_iterator(folder_))
            size += entry.path().native().size();
        return size;
    }

    std::size_t count() const { return files_.size() + links_.size() + 1; }

private:
    std::vector<std::string> files_;
    std::vector<std::string> links_;
    std::string folder_;
};

void plainReads(benchmark::State& state) {
    const RecordedHost host(static_cast<unsigned>(state.range(0)));
    const PlainReader reader(host.root());
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.readAll());
    state.counters["reads"] = static_cast<double>(reader.count());
}

void fullLook(benchmark::State& state) {
    const RecordedHost host(static_cast<unsigned>(state.range(0)));
    const auto source = host.source();
    for (auto _ : state) {
        const auto loaded = source->load();
        if (std::get<tavik::Fleet>(loaded).cards->empty()) state.SkipWithError("the recording shows no card");
    }
}

void poll(benchmark::State& state) {
    const auto interfaces = static_cast<unsigned>(state.range(0));
    const RecordedHost host(interfaces);
    const auto source = host.source();
    source->load();
    for (auto _ : state) {
        if (source->changed()) state.SkipWithError("nothing has changed");
        for (unsigned i = 0; i < interfaces; ++i)
            if (source->link(RecordedHost::nameOf(i)).value.state != tavik::LinkUp)
                state.SkipWithError("a link is not up");
    }
}

/** What an enumeration of all ports asks the library for beside their records. @param groups TavikFactGroup bits. */
void facts(benchmark::State& state, std::uint32_t groups) {
    const auto interfaces = static_cast<unsigned>(state.range(0));
    RecordedHost host(interfaces);
    host.addFacts(interfaces);
    const auto source = host.source();
    source->load();
    std::size_t count = 0;
    for (auto _ : state) {
        count = 0;
        for (unsigned i = 0; i < interfaces; ++i)
            count += source->nicFacts(RecordedHost::nameOf(i), groups).value.size();
    }
    state.counters["facts"] = static_cast<double>(count);
}

constexpr std::uint32_t allGroups =
    TavikFactsOfAdapter | TavikFactsOfLink | TavikFactsOfCounters | TavikFactsOfRelations;

BENCHMARK_CAPTURE(facts, all, allGroups)->Arg(2)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(facts, adapter, TavikFactsOfAdapter)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(facts, link, TavikFactsOfLink)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(facts, counters, TavikFactsOfCounters)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(facts, relations, TavikFactsOfRelations)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainReads)->Arg(2)->Arg(16)->Arg(128)->Unit(benchmark::kMicrosecond);
BENCHMARK(fullLook)->Arg(2)->Arg(16)->Arg(128)->Unit(benchmark::kMicrosecond);
BENCHMARK(poll)->Arg(2)->Arg(16)->Arg(128)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
