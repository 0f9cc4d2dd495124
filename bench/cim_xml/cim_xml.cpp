// What large answers cost a client over HTTP, as multiples of the same bytes rendered beforehand and sent by the same
// server in the same way, whole or in pieces; when their first bytes come; and how often memory is asked for. Aim: at
// most 1.3, and a tenth of the whole.
//
// The four are asked in turns, each over a connection that stays open; figures are medians of the time that passes.
// The allocations are those of the request behind HTTP, divided by the number of its objects.
#include "exchange.h"

#include "cimhost/cimxml/request.h"
#include "cimhost/heap.h"
#include "cimhost/service/answer_pieces.h"
#include "cimhost/service/endpoint.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

extern "C" void* __libc_malloc(std::size_t);

namespace {

std::atomic<std::size_t> allocations = 0;

} // namespace

// In place of the C library's, for this program and the provider.
extern "C" void* malloc(std::size_t bytes) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(bytes);
}

namespace {

using namespace cimhost;
using namespace bench;
using Clock = std::chrono::steady_clock;

/// Sends the same answer to everybody.
class ReadyHandler final : public http::Handler {
public:
    explicit ReadyHandler(std::string_view answer) : bytes(answer) {}
    std::optional<http::Response> refuse(const http::Request&) const override { return std::nullopt; }
    http::Response answer(http::Request) override {
        http::Response response = head();
        response.body.append(bytes);
        return response;
    }
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override {
        const auto pieces = bytes.size() > pieceSize ? reply->begin(head()) : nullptr;
        if (pieces) return sendPieces(*pieces);
        Handler::answerTo(std::move(request), reply);
    }

private:
    static http::Response head() {
        http::Response response;
        response.fields.push_back({"Content-Type", "application/xml; charset=\"utf-8\""});
        response.fields.push_back({"CIMOperation", "MethodResponse"});
        return response;
    }

    void sendPieces(http::PiecewiseAnswer& pieces) const {
        for (std::string_view left = bytes; !left.empty(); left.remove_prefix(std::min(left.size(), pieceSize)))
            pieces.write(ByteBuffer(left.substr(0, pieceSize)));
        pieces.end({});
    }

    static constexpr std::size_t pieceSize = AnswerPieces::pieceSize;
    std::string bytes;
};

double microseconds(Clock::duration duration) { return std::chrono::duration<double, std::micro>(duration).count(); }

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Times of one way to ask.
struct Times {
    std::vector<double> whole;
    std::vector<double> first;

    void measure(Client& client, const std::string& message, Takes takes) {
        const auto start = Clock::now();
        client.ask(message, takes);
        whole.push_back(microseconds(Clock::now() - start));
        first.push_back(microseconds(client.firstBytes - start));
    }
};

void printRatio(Times& made, Times& ready) {
    const double limit = median(ready.whole);
    const double time = median(made.whole);
    std::printf(" %10.1f %10.1f %6.2f", limit, time, time / limit);
}

class Nowhere final : public Outlet {
public:
    bool take(ByteBuffer& document) override {
        document = ByteBuffer();
        return true;
    }
};

double allocationsOf(Dispatcher& dispatcher, const std::string& message) {
    auto decoded = cimxml::decodeRequest(message);
    const auto& request = std::get<cimxml::Request>(decoded);
    Nowhere nowhere;
    dispatcher.carryOut(request, {}, &nowhere);
    const std::size_t before = allocations;
    dispatcher.carryOut(request, {}, &nowhere);
    return static_cast<double>(allocations - before);
}

void measure(Dispatcher& dispatcher, const char* name, const std::string& message, int ports) {
    Endpoint endpoint(dispatcher);
    const Running real(endpoint);
    Client wholeClient(real.port());
    Client piecesClient(real.port());
    const std::string answer = wholeClient.ask(message, Takes::whole);
    if (piecesClient.ask(message, Takes::pieces) != answer) {
        std::fprintf(stderr, "cim_xml: an answer in pieces is another one than the whole\n");
        std::exit(1);
    }
    ReadyHandler ready(answer);
    const Running prepared(ready);
    Client readyClient(prepared.port());
    Client readyPiecesClient(prepared.port());
    Times whole;
    Times pieces;
    Times readyWhole;
    Times readyPieces;
    const int rounds = ports > 100 ? 60 : 400;
    for (int round = 0; round < rounds; ++round) {
        whole.measure(wholeClient, message, Takes::whole);
        readyWhole.measure(readyClient, message, Takes::whole);
        pieces.measure(piecesClient, message, Takes::pieces);
        readyPieces.measure(readyPiecesClient, message, Takes::pieces);
    }
    std::printf("%-24s %5d %9zu", name, ports, answer.size());
    printRatio(whole, readyWhole);
    printRatio(pieces, readyPieces);
    const double first = median(pieces.first);
    std::printf(" %8.1f %6.1f%% %7.2f\n", first, 100 * first / median(pieces.whole),
                allocationsOf(dispatcher, message) / ports);
    std::fflush(stdout);
}

/// The host's computer system, as its own enumeration names it.
std::string hostName(Dispatcher& dispatcher) {
    auto decoded = cimxml::decodeRequest(ofClass("EnumerateInstanceNames", "Merolt_Adapter_ComputerSystem"));
    const ByteBuffer answer = dispatcher.handle(std::get<cimxml::Request>(decoded), {});
    const std::string text(answer.view());
    const std::size_t begin = text.find("<INSTANCENAME");
    constexpr std::string_view end = "</INSTANCENAME>";
    return text.substr(begin, text.find(end) + end.size() - begin);
}

void measure(int ports) {
    FleetHost host(fleetOf(ports));
    Dispatcher dispatcher(host->operations(), host->broker());
    measure(dispatcher, "EnumerateInstances", ofClass("EnumerateInstances", "Merolt_FCHBA_FCPort"), ports);
    measure(dispatcher, "EnumerateInstanceNames", ofClass("EnumerateInstanceNames", "Merolt_FCHBA_FCPort"), ports);
    measure(
        dispatcher, "Associators of the host",
        call("Associators", "ObjectName", hostName(dispatcher)) +
            R"(<IPARAMVALUE NAME="AssocClass"><CLASSNAME NAME="Merolt_FCHBA_ComputerSystemFCPort"/></IPARAMVALUE>)" +
            callEnd,
        ports);
}

} // namespace

int main() {
    giveLargeBlocksBack(); // as cimhost serve does
    std::printf("%-24s %5s %9s %10s %10s %6s %10s %10s %6s %8s %7s %7s\n", "request", "ports", "bytes", "ready us",
                "whole us", "ratio", "ready us", "pieces us", "ratio", "first us", "", "alloc");
    for (const int ports : {2, 64, 1024})
        measure(ports);
}
