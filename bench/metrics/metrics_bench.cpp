// What Prometheus costs, on storage adapters of two ports with a module in each. Without an argument all three:
//
// - cost: one look at the adapters and its text, by the number of ports. Times are this thread's own processor time,
// the
//   median of many looks; allocations are those by operator new.
// - beside: how long a CIM client waits for the ports of a running server, with and without ten scrapes a second, in
//   turns. Of several rounds the smallest figures, since others may keep the machine busy; and the server's processor
//   time for each second.
// - memory: what a running server holds before and behind ten thousand scrapes.
#include "program.h"
#include "socket_client.h"

#include "cimhost/metrics/adapter_reading.h"
#include "cimhost/service/host.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {
std::atomic<std::uint64_t> allocations = 0;
}

// Not inlined, or the compiler takes one half for a stranger to the other.
[[gnu::noinline]] void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

using namespace cimhost;
using testing_support::Process;
using testing_support::SocketClient;
using testing_support::TemporaryFile;
using Clock = std::chrono::steady_clock;

constexpr int portCounts[] = {8, 128, 1024};

std::string fleetOf(int ports) {
    const auto port = [](int number) {
        const std::string digit = std::to_string(number);
        return R"({"number": )" + digit + R"(, "transceiver": {"serialNumber": "M{n}P)" + digit +
               R"(", "diagnostics": {"temperatureCelsius": 38.25, "supplyVolts": 3.31, "biasMilliamperes": 6.4,
               "transmitMilliwatts": 0.55, "receiveMilliwatts": 0.42}},
               "storage": {"vpd": {"readOnly": {"SN": "MF1602S{n}"}}}})";
    };
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MF1602S{n}", "modelName": "MF1602", "kind": "fibreChannel", "ports": [)" + port(1) +
           ", " + port(2) + "]}]}";
}

double threadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double quantile(std::vector<double> values, double share) {
    const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
}

// Cost.

struct Scrape {
    double enumerations = 0; ///< milliseconds of the provider and of the instances that it makes
    double rest = 0;         ///< milliseconds
    std::uint64_t allocations = 0;
    std::string text;
};

/// Instances end with the scrape.
Scrape scrape(Host& host, metrics::AdapterReader& reader, const std::string& nameSpace) {
    Scrape made;
    const std::uint64_t allocated = allocations;
    const double begun = threadMilliseconds();
    RequestScope scope(host.broker());
    const metrics::SharedReading reading = reader.read([&](const char* className) {
        const double asked = threadMilliseconds();
        Operations& operations = host.operations();
        auto found =
            operations.enumerateInstances(scope, {}, operations.findClass(nameSpace, className), true, std::nullopt);
        made.enumerations += threadMilliseconds() - asked;
        return found;
    });
    ByteBuffer text;
    metrics::Exposition out(text, metrics::Format::prometheus);
    reading->write(out);
    out.end();
    made.rest = threadMilliseconds() - begun - made.enumerations;
    made.allocations = allocations - allocated;
    made.text = std::string(text.view());
    return made;
}

std::size_t seriesIn(const std::string& text) {
    std::size_t series = 0;
    for (std::size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1)
        if (text[begin] != '#') ++series;
    return series;
}

void measureCost(int ports) {
    const TemporaryFile fleet(fleetOf(ports));
    ::setenv("TAVIK_SOURCE", ("fleet:" + fleet.path.string()).c_str(), 1);
    HostOptions options;
    options.provider = PROVIDER;
    options.mofDirectory = CLASSES;
    Host host(options);
    host.warmUp();
    metrics::AdapterReader reader;
    const Scrape first = scrape(host, reader, options.nameSpace);
    const int rounds = std::max(11, 2000 / ports);
    std::vector<double> enumerations, rest;
    Scrape last;
    for (int round = 0; round < rounds; ++round) {
        last = scrape(host, reader, options.nameSpace);
        enumerations.push_back(last.enumerations);
        rest.push_back(last.rest);
    }
    std::printf("%6d %8zu %9zu %10.2f %14.2f %10.2f %13llu\n", ports, seriesIn(last.text), last.text.size(),
                first.enumerations + first.rest, quantile(enumerations, 0.5), quantile(rest, 0.5),
                static_cast<unsigned long long>(last.allocations));
    host.shutdown();
}

void measureCosts() {
    std::printf("%6s %8s %9s %10s %14s %10s %13s\n", "ports", "series", "bytes", "first ms", "enumerating ms",
                "rest ms", "allocations");
    for (const int ports : portCounts)
        measureCost(ports);
}

// A running server.

class Server {
public:
    explicit Server(int ports)
        : fleet(fleetOf(ports)), process({PROGRAM, "--fleet", fleet.path.string(), "serve", "--listen", "127.0.0.1:0",
                                          "--metrics", "127.0.0.1:0", "--state", ""}) {
        scrapes = portIn(process.readLine());
        requests = portIn(process.readLine());
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    [[nodiscard]] std::uint16_t port() const { return requests; }
    [[nodiscard]] std::uint16_t metricsPort() const { return scrapes; }

    /// Seconds of the processor since its start.
    [[nodiscard]] double processorSeconds() const {
        std::ifstream file("/proc/" + std::to_string(process.pid()) + "/stat");
        std::string word;
        constexpr int userTime = 14; // proc(5), counted from 1; the name of the program has no blank
        for (int field = 1; field < userTime; ++field)
            file >> word;
        double user = 0, system = 0;
        file >> user >> system;
        return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    }

    [[nodiscard]] long residentKibibytes() const {
        std::ifstream file("/proc/" + std::to_string(process.pid()) + "/status");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
        return 0;
    }

private:
    static std::uint16_t portIn(const std::string& line) {
        const std::string front = "http://127.0.0.1:";
        const std::size_t place = line.find(front);
        if (place == std::string::npos) {
            std::fprintf(stderr, "metrics_bench: the server does not serve: %s\n", line.c_str());
            std::exit(1);
        }
        return static_cast<std::uint16_t>(std::stoi(line.substr(place + front.size())));
    }

    TemporaryFile fleet;
    Process process;
    std::uint16_t scrapes = 0;
    std::uint16_t requests = 0;
};

/// One connection that is kept.
class Scraper {
public:
    explicit Scraper(const Server& server) : client(server.metricsPort()) {}

    void scrape() {
        client.send("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n");
        if (testing_support::statusOf(client.readAnswer()) == 200) return;
        std::fprintf(stderr, "metrics_bench: a scrape was not answered\n");
        std::exit(1);
    }

private:
    SocketClient client;
};

constexpr std::string_view ports =
    R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0">)"
    R"(<SIMPLEREQ><IMETHODCALL NAME="EnumerateInstances"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/>)"
    R"(<NAMESPACE NAME="merolt_cmpi"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName">)"
    R"(<CLASSNAME NAME="Merolt_FCHBA_FCPort"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>)";

struct Round {
    double median = 0, late = 0, processor = 0;
};

/// Milliseconds that a client waits, and seconds of the processor that the server takes for each second.
Round askForPorts(const Server& server) {
    constexpr int requests = 300;
    SocketClient client(server.port());
    const std::string message = testing_support::post(
        ports, "Content-Type: application/xml; charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\n");
    std::vector<double> times;
    const double processor = server.processorSeconds();
    const Clock::time_point begun = Clock::now();
    for (int request = 0; request < requests; ++request) {
        const Clock::time_point asked = Clock::now();
        client.send(message);
        client.readAnswer();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - asked).count());
    }
    const double taken = std::chrono::duration<double>(Clock::now() - begun).count();
    return {quantile(times, 0.5), quantile(times, 0.99), (server.processorSeconds() - processor) / taken};
}

Round askBesideScrapes(const Server& server) {
    constexpr std::chrono::milliseconds interval{100};
    std::atomic<bool> isOver = false;
    std::thread prometheus([&] {
        Scraper scraper(server);
        for (Clock::time_point next = Clock::now(); !isOver; next += interval) {
            std::this_thread::sleep_until(next);
            scraper.scrape();
        }
    });
    const Round round = askForPorts(server);
    isOver = true;
    prometheus.join();
    return round;
}

void keepSmallest(Round& kept, const Round& round, bool isFirst) {
    kept.median = isFirst ? round.median : std::min(kept.median, round.median);
    kept.late = isFirst ? round.late : std::min(kept.late, round.late);
    kept.processor = isFirst ? round.processor : std::min(kept.processor, round.processor);
}

void measureBeside() {
    constexpr int rounds = 7;
    std::printf("%6s %10s %12s %10s %12s\n", "ports", "scrapes", "median ms", "99th ms", "processor");
    for (const int count : {8, 128}) {
        const Server server(count);
        Round alone, beside;
        askBesideScrapes(server); // warms both up
        for (int round = 0; round < rounds; ++round) {
            keepSmallest(alone, askForPorts(server), round == 0);
            keepSmallest(beside, askBesideScrapes(server), round == 0);
        }
        std::printf("%6d %10s %12.2f %10.2f %12.2f\n", count, "none", alone.median, alone.late, alone.processor);
        std::printf("%6d %10s %12.2f %10.2f %12.2f\n", count, "10 a s", beside.median, beside.late, beside.processor);
    }
}

void measureMemory() {
    constexpr int scrapes = 10000, step = 2000;
    const Server server(8);
    Scraper scraper(server);
    for (int warm = 0; warm < 200; ++warm)
        scraper.scrape();
    std::printf("%8s %12s\n%8d %12ld\n", "scrapes", "resident KiB", 0, server.residentKibibytes());
    for (int done = 1; done <= scrapes; ++done) {
        scraper.scrape();
        if (done % step == 0) std::printf("%8d %12ld\n", done, server.residentKibibytes());
    }
}

} // namespace

int main(int argumentCount, char** argumentValues) {
    std::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    ::setenv("MEROLT_CNA_WAITS", "events", 0);
    const std::string_view wanted = argumentCount > 1 ? argumentValues[1] : "";
    if (wanted.empty() || wanted == "cost") measureCosts();
    if (wanted.empty() || wanted == "beside") measureBeside();
    if (wanted.empty() || wanted == "memory") measureMemory();
}
