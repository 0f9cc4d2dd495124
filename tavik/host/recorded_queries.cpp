// Layout below kernel/ of a recorded tree:
//   net/INTERFACE/{driver,version,firmware_version,bus_info}   texts of the driver
//   net/INTERFACE/permanent_address                            02:fc:00:00:00:01
//   net/INTERFACE/{link_settings,pause,fec}                    a line each, see link_settings.h
//   net/INTERFACE/neighbours                                   a line each, see neighbours.h
//   net/INTERFACE/{module_kind,module_memory}                  a number and the bytes
//   addresses                                                  a line each: INDEX ADDRESS/PREFIX SCOPE FLAGS
//   links                                                      a line each, see interface_links.h
#include "tavik/host/kernel_queries.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>

#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

Attribute<InterfaceAddress> parseAddressLine(std::string_view line) {
    std::array<std::string_view, 4> words;
    const auto count = splitWords(line, words.data(), words.size());
    const auto& [index, address, scope, flags] = words;
    const auto slash = address.find('/');
    if (count < words.size() || slash == std::string_view::npos)
        return Absence{"no address: " + std::string(line.substr(0, 80))};
    const auto ip = parseIPAddress(std::string(address.substr(0, slash)));
    if (!ip) return ip.absence();
    const auto largestPrefix = ip->family == AddressIPv4 ? 32U : 128U;
    const auto prefix = parseNumber(address.substr(slash + 1), largestPrefix);
    const auto indexNumber = parseNumber(index, std::numeric_limits<std::uint32_t>::max());
    const auto scopeNumber = parseNumber(scope, 255);
    const auto flagsNumber = parseNumber(flags, std::numeric_limits<std::uint32_t>::max());
    for (const auto* number : {&prefix, &indexNumber, &scopeNumber, &flagsNumber})
        if (!*number) return number->absence();
    return InterfaceAddress{static_cast<std::uint32_t>(*indexNumber), *ip, static_cast<std::uint8_t>(*prefix),
                            static_cast<std::uint8_t>(*scopeNumber), static_cast<std::uint32_t>(*flagsNumber)};
}

constexpr std::size_t largestList = 1 << 20;

class RecordedQueries : public KernelQueries {
public:
    explicit RecordedQueries(const SysTree& tree) : tree_(tree) {}

    Attribute<DriverInfo> driverInfo(const std::string& interface) override {
        const auto driver = text(interface, "driver");
        if (!driver) return driver.absence();
        return DriverInfo{*driver, text(interface, "version").valueOr({}),
                          text(interface, "firmware_version").valueOr({}), text(interface, "bus_info").valueOr({})};
    }

    Attribute<MacAddress> permanentAddress(const std::string& interface) override {
        return text(interface, "permanent_address").then([](const std::string& address) { return parseMac(address); });
    }

    Attribute<ModuleMemory> moduleMemory(const std::string& interface) override {
        const auto kind = tree_.number(place(interface, "module_kind"), std::numeric_limits<std::uint32_t>::max());
        if (!kind) return kind.absence();
        const auto content = tree_.bytes(place(interface, "module_memory"), largestModuleMemory);
        if (!content) return content.absence();
        return ModuleMemory{static_cast<std::uint32_t>(*kind), *content};
    }

    Attribute<LinkSettings> linkSettings(const std::string& interface) override {
        return text(interface, "link_settings").then(parseLinkSettings);
    }

    Attribute<PauseSettings> pauseSettings(const std::string& interface) override {
        return text(interface, "pause").then(parsePauseSettings);
    }

    Attribute<FecSettings> fecSettings(const std::string& interface) override {
        return text(interface, "fec").then(parseFecSettings);
    }

    Attribute<std::vector<Neighbour>> neighbours(const std::string& interface) override {
        return text(interface, neighboursFile).then(parseNeighbours);
    }

    Attribute<std::vector<InterfaceLink>> links() override {
        return tree_.bytes("kernel/links", largestList).then([](const Bytes& content) {
            return parseInterfaceLinks({content.begin(), content.end()});
        });
    }

    std::unique_ptr<KernelQueries> forOneLook() override {
        return std::make_unique<RecordedQueries>(tree_.forOneLook());
    }

    Attribute<std::vector<InterfaceAddress>> addresses() override {
        const auto content = tree_.bytes("kernel/addresses", largestList);
        if (!content) return content.absence();
        const std::string_view lines(reinterpret_cast<const char*>(content->data()), content->size());
        std::vector<InterfaceAddress> found;
        // A line without its end is one that was cut, and may read as another address.
        for (std::size_t at = 0, end = lines.find('\n'); end != std::string_view::npos;
             at = end + 1, end = lines.find('\n', at))
            if (const auto address = parseAddressLine(lines.substr(at, end - at))) found.push_back(*address);
        return found;
    }

private:
    static std::string place(const std::string& interface, const char* name) {
        return "kernel/net/" + interface + "/" + name;
    }
    Attribute<std::string> text(const std::string& interface, const char* name) const {
        return tree_.text(place(interface, name));
    }

    SysTree tree_;
};

/** Writes files one after another and keeps the first error. */
class Recorder {
public:
    explicit Recorder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    void write(const std::string& name, const std::string& content) {
        if (content.empty() || !error_.empty()) return;
        const auto path = folder_ / "kernel" / name;
        std::error_code failure;
        std::filesystem::create_directories(path.parent_path(), failure);
        std::ofstream file(path, std::ios::binary);
        file << content;
        if (!file.flush()) error_ = "cannot write " + path.string();
    }

    const std::string& error() const { return error_; }

private:
    std::filesystem::path folder_;
    std::string error_;
};

std::string addressLines(const std::vector<InterfaceAddress>& addresses) {
    std::string lines;
    for (const auto& entry : addresses)
        lines += std::to_string(entry.interfaceIndex) + " " + formatIPAddress(entry.address) + "/" +
                 std::to_string(entry.prefixLength) + " " + std::to_string(entry.scope) + " " +
                 std::to_string(entry.flags) + "\n";
    return lines;
}

void recordInterface(KernelQueries& queries, const std::string& interface, Recorder& recorder) {
    const auto folder = "net/" + interface + "/";
    if (const auto info = queries.driverInfo(interface)) {
        recorder.write(folder + "driver", info->driver);
        recorder.write(folder + "version", info->version);
        recorder.write(folder + "firmware_version", info->firmwareVersion);
        recorder.write(folder + "bus_info", info->busInfo);
    }
    if (const auto address = queries.permanentAddress(interface))
        recorder.write(folder + "permanent_address", formatMac(*address));
    if (const auto settings = queries.linkSettings(interface))
        recorder.write(folder + "link_settings", formatLinkSettings(*settings));
    if (const auto settings = queries.pauseSettings(interface))
        recorder.write(folder + "pause", formatPauseSettings(*settings));
    if (const auto settings = queries.fecSettings(interface))
        recorder.write(folder + "fec", formatFecSettings(*settings));
    if (const auto neighbours = queries.neighbours(interface))
        recorder.write(folder + neighboursFile, formatNeighbours(*neighbours));
    if (const auto memory = queries.moduleMemory(interface)) {
        recorder.write(folder + "module_kind", std::to_string(memory->kind));
        recorder.write(folder + "module_memory", {memory->content.begin(), memory->content.end()});
    }
}

} // namespace

std::unique_ptr<KernelQueries> makeRecordedQueries(const SysTree& tree) {
    return std::make_unique<RecordedQueries>(tree);
}

std::string recordQueries(KernelQueries& queries, const std::vector<std::string>& interfaces,
                          const std::string& folder) {
    Recorder recorder(folder);
    for (const auto& interface : interfaces)
        recordInterface(queries, interface, recorder);
    if (const auto addresses = queries.addresses()) recorder.write("addresses", addressLines(*addresses));
    if (const auto links = queries.links()) recorder.write("links", formatInterfaceLinks(*links));
    return recorder.error();
}

} // namespace tavik::host
