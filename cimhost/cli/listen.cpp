#include "cimhost/cli/listen.h"

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/request.h"
#include "cimhost/cli/cim_client.h"
#include "cimhost/cli/received_indication.h"
#include "cimhost/http/server.h"
#include "cimhost/model/host_name.h"
#include "cimhost/model/names.h"
#include "cimhost/service/cim_failure.h"

#include <chrono>
#include <functional>
#include <iostream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace cimhost::cli {

namespace {

http::Response refusal(const cimxml::ProtocolError& error) {
    http::Response response = http::textResponse(cimxml::httpStatus(error.kind), error.message);
    response.fields.push_back({"CIMError", std::string(cimxml::headerValue(error.kind))});
    return response;
}

http::Response taken(const std::string& messageId) {
    http::Response response;
    response.fields = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                       {"Cache-Control", "no-cache"},
                       {"CIMExport", "MethodResponse"}};
    response.body.append(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE");
    cimxml::appendAttribute(response.body, "ID", messageId);
    response.body.append(" PROTOCOLVERSION=\"1.0\"><SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\">"
                         "<IRETURNVALUE/></EXPMETHODRESPONSE></SIMPLEEXPRSP></MESSAGE></CIM>\n");
    return response;
}

class Listener final : public http::Handler {
public:
    explicit Listener(Form shape) : form(shape) {}

    // The field CIMExport is required for the same reason as CIMOperation at a server: no web page can send it.
    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override {
        if (head.method != "POST") return http::textResponse(405, "use POST");
        const std::string* call = head.field("CIMExport");
        if (call && equalNames(*call, "MethodRequest")) return std::nullopt;
        return refusal({cimxml::ErrorKind::unsupportedOperation, "this listener takes CIMExport: MethodRequest"});
    }

    [[nodiscard]] http::Response answer(http::Request request) override {
        const auto decoded = cimxml::decodeExport(request.body);
        if (const auto* error = std::get_if<cimxml::ProtocolError>(&decoded)) return refusal(*error);
        const auto& message = std::get<cimxml::ExportRequest>(decoded);
        if (print(message.indication)) return taken(message.messageId);
        if (onLostOutput) onLostOutput();
        return http::textResponse(503, "the indication could not be printed");
    }

    /// Called, perhaps repeatedly, when an indication could not be printed.
    void callOnLostOutput(std::function<void()> function) { onLostOutput = std::move(function); }

    [[nodiscard]] bool hasLostOutput() const {
        const std::lock_guard lock(mutex);
        return !std::cout;
    }

private:
    // False, now and from then on, if standard output does not take it.
    bool print(const cimxml::Instance& indication) {
        const std::lock_guard lock(mutex);
        if (!std::cout) return false;
        if (const std::string odd = sequence.judge(indication); !odd.empty()) {
            std::cerr << "cimhost: " << odd << std::endl;
        }
        std::cout << shown(indication) << std::flush;
        return static_cast<bool>(std::cout);
    }

    std::string shown(const cimxml::Instance& indication) const {
        if (form == Form::json) return jsonLineOf(indication);
        return form == Form::everything ? textOf(indication) + "\n" : lineOf(indication);
    }

    const Form form;
    mutable std::mutex mutex;
    SequenceWatch sequence;
    std::function<void()> onLostOutput;
};

std::string uniqueName() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return "cimhost-listen-" + std::to_string(::getpid()) + "-" +
           std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

// What a listener made at a server, to be removed the other way round.
class Subscription {
public:
    Subscription(const remote::Server& server, const remote::Identity& identity, const ListenOptions& options,
                 const std::string& destination)
        : client(server, identity, options.interopNamespace) {
        try {
            make(options, destination);
        } catch (...) {
            remove();
            throw;
        }
    }

    void remove() {
        for (; !made.empty(); made.pop_back()) {
            try {
                client.deleteInstance(made.back());
            } catch (const std::exception& error) {
                std::cerr << "cimhost: a " << *made.back().attribute("CLASSNAME")
                          << " stays at the server: " << error.what() << '\n';
            }
        }
    }

private:
    // All four keys are given: some servers know an object by those of its keys that they were told, and then do not
    // find it under the name that they answer with.
    cimxml::XmlElement createNamed(const std::string& className, const std::string& name,
                                   std::vector<ClientProperty> properties) {
        properties.insert(properties.begin(), {{"SystemCreationClassName", "string", "CIM_ComputerSystem"},
                                               {"SystemName", "string", hostName()},
                                               {"CreationClassName", "string", className},
                                               {"Name", "string", name}});
        return client.createInstance(className, properties);
    }

    void make(const ListenOptions& options, const std::string& destination) {
        const std::string name = uniqueName();
        made.push_back(createNamed("CIM_IndicationFilter", name,
                                   {{"SourceNamespace", "string", options.nameSpace},
                                    {"Query", "string", options.query},
                                    {"QueryLanguage", "string", "WQL"}}));
        // Transient: a listener that is killed leaves nothing behind for longer than the server lives.
        made.push_back(createNamed("CIM_ListenerDestinationCIMXML", name,
                                   {{"Destination", "string", destination}, {"PersistenceType", "uint16", "3"}}));
        const cimxml::XmlElement filter = made[0];
        const cimxml::XmlElement handler = made[1];
        made.push_back(client.createAssociation(
            "CIM_IndicationSubscription",
            {{"Filter", "CIM_IndicationFilter", filter}, {"Handler", "CIM_ListenerDestinationCIMXML", handler}}));
    }

    CimClient client;
    std::vector<cimxml::XmlElement> made;
};

/// Nothing where somebody else subscribes. Throws std::runtime_error.
std::optional<remote::Server> serverOf(const ListenOptions& options) {
    if (options.subscribe.empty()) return std::nullopt;
    if (!http::parseUrl(options.subscribe)) {
        throw std::runtime_error("--subscribe: \"" + options.subscribe + "\" is no URL such as http://127.0.0.1:5988");
    }
    remote::Server server = remote::parseServer(options.subscribe);
    if (!options.identity.authorities.empty() && !server.url.isSecure) {
        throw std::runtime_error("--cacert is for --subscribe with an https:// URL");
    }
    return server;
}

} // namespace

void listen(const ListenOptions& options) {
    const std::optional<remote::Server> server = serverOf(options);
    remote::Identity identity;
    if (server) identity = identityOf(options.identity, {*server});
    http::Options settings;
    settings.address = options.address;
    settings.port = options.port;
    settings.host = http::HostField::anything; // a destination's URL is whatever leads here from its server
    settings.workers = 1;
    Listener listener(options.form);
    http::Server listening(settings, listener);
    listening.stopOnSignals();
    // Who sends keeps what was not taken, and sends it again to whoever listens next.
    listener.callOnLostOutput([&listening] { listening.stop(); });
    const std::string url =
        "http://" + http::Url{false, options.address, std::to_string(listening.port()), "/"}.authority();
    std::optional<Subscription> subscription;
    if (server) subscription.emplace(*server, identity, options, url + "/");
    if (!options.isQuiet) {
        std::cerr << "cimhost: listening for indications on " << url
                  << (server ? ", subscribed at " + server->url.authority() : "") << std::endl;
    }
    listening.run();
    if (subscription) subscription->remove();
    if (listener.hasLostOutput()) throw std::runtime_error("standard output takes no more indications");
}

} // namespace cimhost::cli
