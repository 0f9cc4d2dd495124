// What a server's resident memory grows by at its peak while clients enumerate the software identities of 512 cards,
// all at once. Aim: less than 4 MiB for one client and 16 MiB for sixteen.
//
// The server is a process of its own; its clients drop what they read.
#include "exchange.h"

#include "cimhost/heap.h"
#include "cimhost/service/call_queue.h"
#include "cimhost/service/endpoint.h"

#include <sys/wait.h>

#include <cstddef>
#include <cstdio>
#include <vector>

namespace {

using namespace cimhost;
using namespace bench;

/// Cards as they come: two ports, each with versions of its own.
std::string fleet(int cards) {
    const std::string port = R"({"ethernet": {}, "storage": {"pciDeviceId": "0xA127",
        "optionRom": {"biosVersion": "3.31", "firmware": "7.2.4"}, "vpd": {"productIdentifier": "Converged adapter",
        "readOnly": {"PN": "MC1020-2", "SN": "MC1020S{n}", "MN": "1077", "V1": "6.31", "V3": "7.02.04", "V4": "3.31",
        "RM": "1.2.3", "FN": "49Y3701"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(cards) +
           R"(, "serialNumber": "MC1020S{n}", "modelName": "MC1020", "ports": [)" + port + ", " + port + "]}]}";
}

/// Of /proc/PID/status, in KiB.
std::size_t kibibytes(pid_t process, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size() + 1, name + ":") == 0) return std::stoul(line.substr(name.size() + 1));
    }
    return 0;
}

void forgetPeak(pid_t process) { std::ofstream("/proc/" + std::to_string(process) + "/clear_refs") << "5"; }

/// The server's process: tells its port, and ends when the pipe is closed.
int serve(int tell, int end) {
    FleetHost host(fleet(512));
    Dispatcher dispatcher(host->operations(), host->broker());
    CallQueue queue(CallQueueOptions{});
    Endpoint endpoint(dispatcher, Writers::users, &queue);
    {
        const Running server(endpoint);
        const std::uint16_t port = server.port();
        if (::write(tell, &port, sizeof port) != sizeof port) return 1;
        char byte = 0;
        while (::read(end, &byte, 1) > 0) {
        }
    }
    queue.finish();
    return 0;
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

void measure(pid_t server, std::uint16_t port, std::size_t clients, Takes takes) {
    const std::string message = ofClass("EnumerateInstances", "Merolt_FCHBA_SoftwareIdentity");
    std::vector<std::thread> threads;
    forgetPeak(server);
    const std::size_t before = kibibytes(server, "VmRSS");
    std::size_t objects = 0;
    std::size_t bytes = 0;
    for (std::size_t number = 0; number < clients; ++number) {
        threads.emplace_back([&, number] {
            const std::string answer = Client(port).ask(message, takes);
            if (number != 0) return;
            objects = countOf(answer, "<VALUE.NAMEDINSTANCE>");
            bytes = answer.size();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::size_t peak = kibibytes(server, "VmHWM");
    std::printf("%2zu clients, %s: %zu objects, %zu bytes each; %.1f MiB before, %.1f MiB more at the peak\n", clients,
                takes == Takes::pieces ? "in pieces" : "whole", objects, bytes, static_cast<double>(before) / 1024,
                static_cast<double>(peak - before) / 1024);
    std::fflush(stdout);
}

// A process of its own for the clients, too: the server begins with the memory of whoever forks it.
void measureApart(std::size_t clients, Takes takes) {
    const pid_t asking = ::fork();
    if (asking != 0) {
        ::waitpid(asking, nullptr, 0);
        return;
    }
    int told[2];
    int ending[2];
    if (::pipe(told) != 0 || ::pipe(ending) != 0) std::_Exit(1);
    const pid_t server = ::fork();
    if (server == 0) {
        ::close(ending[1]);
        giveLargeBlocksBack(); // as cimhost serve does
        std::_Exit(serve(told[1], ending[0]));
    }
    std::uint16_t port = 0;
    if (::read(told[0], &port, sizeof port) != sizeof port) std::_Exit(1);
    measure(server, port, clients, takes);
    ::close(ending[1]);
    ::waitpid(server, nullptr, 0);
    std::_Exit(0);
}

} // namespace

int main() {
    for (const Takes takes : {Takes::pieces, Takes::whole}) {
        for (const std::size_t clients : {1U, 16U})
            measureApart(clients, takes);
    }
}
