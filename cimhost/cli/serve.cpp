#include "cimhost/cli/commands.h"
#include "cimhost/cli/hangup_watch.h"
#include "cimhost/cli/installation.h"
#include "cimhost/cli/metrics_service.h"
#include "cimhost/cli/stop_limit.h"
#include "cimhost/heap.h"
#include "cimhost/indications/indication_server.h"
#include "cimhost/model/host_name.h"
#include "cimhost/service/endpoint.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace cimhost::cli {

namespace {

constexpr std::uint16_t httpPort = 5988;
constexpr std::uint16_t httpsPort = 5989;
constexpr std::chrono::milliseconds longestStop{9'500};

struct ListenAddress {
    std::string address;
    std::uint16_t port;
};

std::uint16_t parsePort(std::string_view option, std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error(std::string(option) + ": \"" + std::string(text) + "\" is no port from 0 to 65535");
    }
    return port;
}

// Without a standard port one has to be told.
ListenAddress parseListen(std::string_view option, std::string_view text, std::optional<std::uint16_t> standardPort) {
    const std::string form = std::string(option) + " takes ADDRESS:PORT or [ADDRESS]:PORT";
    const bool isBracketed = !text.empty() && text.front() == '[';
    const std::size_t addressEnd = isBracketed ? text.find(']') : text.find(':');
    ListenAddress listen{std::string(text.substr(isBracketed ? 1 : 0, addressEnd - (isBracketed ? 1 : 0))),
                         standardPort.value_or(0)};
    if (listen.address.empty() || listen.address == "localhost") listen.address = "127.0.0.1";
    text.remove_prefix(addressEnd == std::string_view::npos ? text.size() : addressEnd + (isBracketed ? 1 : 0));
    if (text.empty() && standardPort) return listen;
    if (text.empty() || text.front() != ':') throw std::runtime_error(form);
    listen.port = parsePort(option, text.substr(1));
    return listen;
}

void requireUsers(const http::Options& server) {
    if (!http::isLoopback(server.address) && !server.credentials) {
        throw std::runtime_error("listening on " + server.address +
                                 " needs users: give --credentials FILE, which `cimhost user add FILE NAME` makes; or "
                                 "listen on 127.0.0.1");
    }
    if (!http::isLoopback(server.address) && !server.tls) {
        std::cerr << "cimhost: passwords cross the network in the clear; --certificate and --key turn on TLS\n";
    }
}

http::Options serverOptions(const ServeOptions& options) {
    http::Options server;
    if (options.certificate.empty() != options.key.empty()) {
        throw std::runtime_error("--certificate and --key go together");
    }
    if (!options.certificate.empty()) server.tls = http::Tls{options.certificate, options.key};
    const ListenAddress listen = parseListen("--listen", options.listen, server.tls ? httpsPort : httpPort);
    server.address = listen.address;
    server.port = listen.port;
    server.names = options.serverNames;
    server.limits.connections = options.connections;
    server.workers = options.workers;
    server.limits.bodyBytes = options.largestRequestMebibytes << 20;
    if (!options.credentials.empty()) {
        server.credentials = std::make_shared<http::Credentials>(http::Credentials::load(options.credentials));
    }
    if (options.anonymousWrites && server.credentials) {
        throw std::runtime_error("--anonymous-writes is for servers without users: with --credentials every request "
                                 "needs one");
    }
    requireUsers(server);
    return server;
}

/// The same limits, users and certificate at another address, which a few programs ask now and then.
std::optional<http::Options> metricsOptions(const ServeOptions& options, http::Options server) {
    if (options.metrics.empty()) return std::nullopt;
    const ListenAddress listen = parseListen("--metrics", options.metrics, std::nullopt);
    server.address = listen.address;
    server.port = listen.port;
    server.workers = 1; // none of them waits
    server.limits.bodyBytes = 0;
    server.traffic = std::make_shared<http::Traffic>();
    server.answers = nullptr; // a look at the adapters waits for clients
    server.onStop = nullptr;
    requireUsers(server);
    return server;
}

// The port is taken before the provider is loaded, so that a taken one is told at once; the endpoint comes last, before
// the first request is read.
class LateHandler final : public http::Handler {
public:
    std::optional<http::Response> refuse(const http::Request& head) const override { return endpoint->refuse(head); }
    http::Response answer(http::Request request) override { return endpoint->answer(std::move(request)); }
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override {
        endpoint->answerTo(std::move(request), reply);
    }
    std::unique_ptr<http::BodyReader> readerOfLargeBody(const http::Request& head) override {
        return endpoint->readerOfLargeBody(head);
    }

    std::unique_ptr<Endpoint> endpoint;
};

std::string urlOf(const http::Options& options, std::uint16_t port) {
    const bool isV6 = options.address.find(':') != std::string::npos;
    return (options.tls ? "https://" : "http://") + (isV6 ? "[" + options.address + "]" : options.address) + ":" +
           std::to_string(port);
}

HostOptions withSink(HostOptions options, const std::unique_ptr<IndicationServer>& indications) {
    options.broker.indicationSink = [&indications](std::string_view, const InstanceObject& indication) -> CMPIrc {
        return indications ? indications->router().deliver(indication) : CMPI_RC_ERR_FAILED;
    };
    return options;
}

// Descriptors are kept back for clients, and for what server, provider and management library open themselves.
std::size_t deliveryConnections(std::size_t clients) {
    constexpr std::size_t own = 256;
    constexpr std::size_t least = 16;
    constexpr std::size_t most = 512;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= own + clients) return least;
    return std::clamp(static_cast<std::size_t>(limit.rlim_cur) - own - clients, least, most);
}

IndicationOptions indicationOptions(const HostOptions& host, const ServeOptions& options) {
    IndicationOptions made;
    made.subscriptions.interopNamespace = host.interopNamespace;
    made.subscriptions.systemName = hostName();
    made.subscriptions.stateFile = options.state;
    made.delivery.connections = deliveryConnections(options.connections);
    made.asksForUser = !options.credentials.empty();
    made.log = host.broker.log;
    return made;
}

CallQueueOptions queueOptions(const ServeOptions& options) {
    CallQueueOptions made;
    made.workers = options.workers;
    made.deadline = std::chrono::seconds(options.deadlineSeconds);
    return made;
}

void printLine(std::string_view text) {
    std::string line = "cimhost: ";
    line.append(text).append("\n");
    std::cerr << line << std::flush;
}

// What an operator changes while the server runs. A file that cannot be used changes nothing, and says so.
void readAgain(const std::string& file, std::string_view what, const std::function<std::string()>& read) {
    if (file.empty()) return;
    try {
        printLine("SIGHUP: " + read() + " from " + file);
    } catch (const std::exception& error) {
        printLine("SIGHUP: " + std::string(error.what()) + "; the " + std::string(what) + " stay as they were");
    }
}

void reload(const ServeOptions& options, const http::Options& settings, http::Server& server, MetricsService* metrics) {
    if (options.credentials.empty() && options.certificate.empty()) {
        return printLine("SIGHUP: there are neither users nor a certificate to be read again");
    }
    readAgain(options.credentials, "users", [&] {
        const std::size_t count = settings.credentials->reload(options.credentials);
        return std::to_string(count) + (count == 1 ? " user" : " users");
    });
    readAgain(options.certificate, "certificate and key", [&] {
        server.useTls(*settings.tls);
        if (metrics) metrics->useTls(*settings.tls);
        return std::string("a certificate");
    });
}

// Nothing of the metrics outlives what they are read from, whatever goes wrong while the server starts.
class MetricsEnd {
public:
    explicit MetricsEnd(MetricsService* service) : metrics(service) {}
    ~MetricsEnd() {
        if (metrics) metrics->finish();
    }
    MetricsEnd(const MetricsEnd&) = delete;
    MetricsEnd& operator=(const MetricsEnd&) = delete;

private:
    MetricsService* metrics;
};

std::chrono::steady_clock::duration warmUp(Host& host) {
    const auto begun = std::chrono::steady_clock::now();
    host.warmUp();
    return std::chrono::steady_clock::now() - begun;
}

// None where nobody answers for that class: another provider may have other ones.
std::vector<std::string> systemNames(Host& host, const std::string& nameSpace) {
    std::vector<std::string> names;
    try {
        RequestScope scope(host.broker());
        const ClassDeclaration& systems = host.operations().findClass(nameSpace, "CIM_ComputerSystem");
        for (const ObjectPathObject* system : host.operations().enumerateInstanceNames(scope, {}, systems)) {
            const NamedData* key = system->key("Name");
            if (key) appendValueText(names.emplace_back(), key->data);
        }
    } catch (const CimFailure&) {
    }
    return names;
}

// Clients could not tell this machine from another one with such a name.
void warnOfLoopbackName(Host& host, const HostOptions& options) {
    if (!options.broker.log || !showsThisMachine()) return;
    for (const std::string& name : systemNames(host, options.nameSpace)) {
        if (!isLoopbackName(name)) continue;
        options.broker.log(LogLevel::warning,
                           "clients know this machine as " + name +
                               ", and so they will every other one with such a name; a line SystemName=NAME in "
                               "/etc/merolt/cim-provider.conf gives it one of its own");
    }
}

} // namespace

void serve(const HostOptions& hostOptions, const ServeOptions& options) {
    HangupWatch hangups;
    giveLargeBlocksBack();
    AuditLog audit(printLine);
    http::Options settings = serverOptions(options);
    settings.onRefusedLogin = [&audit](std::string_view client, std::string_view user) {
        audit.refusedLogin(client, user);
    };
    StopLimit stopLimit(longestStop);
    CallQueue queue(queueOptions(options));
    std::unique_ptr<MetricsService> metrics;
    settings.answers = [&queue](std::function<void()> work) { return queue.post(std::move(work)); };
    settings.onStop = [&] {
        stopLimit.begin();
        queue.stop();
        if (metrics) metrics->stop();
    };
    LateHandler handler;
    http::Server server(settings, handler);
    if (const auto asked = metricsOptions(options, settings)) metrics = std::make_unique<MetricsService>(*asked);
    RequestFigures figures;
    // Outlives the provider, which may have something to tell up to its last moment.
    std::unique_ptr<IndicationServer> indications;
    Host host(withSink(hostOptions, indications));
    indications = std::make_unique<IndicationServer>(host.broker(), host.operations().registration(), host.provider(),
                                                     indicationOptions(hostOptions, options));
    host.serveOwn(indications->objects(), indications->objects().classes());
    const std::chrono::steady_clock::duration firstBuild = warmUp(host);
    warnOfLoopbackName(host, hostOptions);
    indications->subscriptions().restore();
    Dispatcher dispatcher(host.operations(), host.broker(), &audit);
    const Writers writers = options.anonymousWrites ? Writers::everybody : Writers::users;
    handler.endpoint = std::make_unique<Endpoint>(dispatcher, writers, &queue, &figures);
    const MetricsEnd metricsEnd(metrics.get());
    if (metrics) {
        metrics->start(host, hostOptions.nameSpace,
                       {*settings.traffic, figures, queue, dispatcher.pulls(), *indications, firstBuild},
                       std::chrono::seconds(options.deadlineSeconds));
        std::cout << "cimhost: metrics at " << urlOf(metrics->options(), metrics->port()) << "/metrics" << std::endl;
    }
    hangups.start([&] {
        reload(options, settings, server, metrics.get());
    }); // while nobody was told to come: there may be no thread
    // Until here a signal ends the process at once: nothing is under way that would have to be finished.
    server.stopOnSignals();
    std::cout << "cimhost: listening on " << urlOf(settings, server.port()) << ", namespace " << hostOptions.nameSpace
              << std::endl;
    if (options.anonymousWrites) {
        std::cerr << "cimhost: --anonymous-writes: whoever can connect may change adapters and subscriptions\n";
    }
    server.run();
    hangups.stop();
    if (metrics) metrics->finish();
    queue.finish();
    host.shutdown();
    indications->router().stop();
}

} // namespace cimhost::cli
