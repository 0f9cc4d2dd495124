#include "cimhost/service/endpoint.h"

#include "cimhost/model/names.h"
#include "cimhost/model/percent.h"
#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace cimhost {

namespace {

using cimxml::ErrorKind;
using cimxml::ProtocolError;

http::Response refusal(const ProtocolError& error) {
    http::Response response = http::textResponse(cimxml::httpStatus(error.kind), error.message);
    response.fields.push_back({"CIMError", std::string(cimxml::headerValue(error.kind))});
    return response;
}

std::optional<http::Response> refuseMethod(const http::Request& head) {
    if (head.method == "POST") return std::nullopt;
    // After this answer to M-POST a client tries POST.
    if (head.method == "M-POST") return http::textResponse(510, "use POST");
    http::Response response = http::textResponse(405, "use POST");
    response.fields.push_back({"Allow", "POST"});
    return response;
}

// A type without a charset leaves that to the document.
bool isAcceptedType(std::string_view contentType) {
    const std::size_t semicolon = contentType.find(';');
    const std::string_view type = trim(contentType.substr(0, semicolon));
    if (!equalNames(type, "application/xml") && !equalNames(type, "text/xml")) return false;
    if (semicolon == std::string_view::npos) return true;
    std::string_view parameter = trim(contentType.substr(semicolon + 1));
    constexpr std::string_view name = "charset=";
    if (!equalNames(parameter.substr(0, name.size()), name)) return true;
    parameter.remove_prefix(name.size());
    return equalNames(parameter, "utf-8") || equalNames(parameter, "\"utf-8\"");
}

std::optional<ProtocolError> refuseOperation(const http::Request& head) {
    if (head.field("CIMBatch")) {
        return ProtocolError{ErrorKind::multipleRequestsUnsupported, "several requests in one message"};
    }
    if (head.field("CIMExport")) return ProtocolError{ErrorKind::unsupportedOperation, "this is no listener"};
    const std::string* operation = head.field("CIMOperation");
    if (!operation) return ProtocolError{ErrorKind::headerMismatch, "the header field CIMOperation is missing"};
    if (!equalNames(*operation, "MethodCall")) {
        return ProtocolError{ErrorKind::unsupportedOperation, "CIMOperation is not MethodCall"};
    }
    const std::string* version = head.field("CIMProtocolVersion");
    if (version && version->substr(0, 2) != "1.") {
        return ProtocolError{ErrorKind::unsupportedProtocolVersion, "CIMProtocolVersion is not 1.x"};
    }
    return std::nullopt;
}

// Whether the field CIMObject names what the message names. For a call of a method only namespace and class are
// compared, since keys can be spelt in many ways.
bool namesTarget(std::string_view object, const cimxml::Request& request) {
    if (request.kind == cimxml::Request::Kind::intrinsic) {
        return equalNames(trimNamespace(object), trimNamespace(request.nameSpace));
    }
    const std::size_t colon = object.find(':');
    if (colon == std::string_view::npos) return false;
    const std::string_view className = object.substr(colon + 1, object.find('.', colon) - colon - 1);
    return equalNames(trimNamespace(object.substr(0, colon)), trimNamespace(request.nameSpace)) &&
           equalNames(className, request.target.className);
}

std::optional<ProtocolError> compareWithHeader(const http::Request& head, const cimxml::Request& request) {
    const std::string* method = head.field("CIMMethod");
    if (method && !equalNames(decodePercent(*method), request.methodName)) {
        return ProtocolError{ErrorKind::headerMismatch, "CIMMethod names another method than the message"};
    }
    const std::string* object = head.field("CIMObject");
    if (object && !namesTarget(decodePercent(*object), request)) {
        return ProtocolError{ErrorKind::headerMismatch, "CIMObject names another object than the message"};
    }
    return std::nullopt;
}

// A message that is understood.
struct Message {
    cimxml::Request request;
    Caller caller;
};

http::Response responseWith(ByteBuffer document) {
    http::Response response;
    response.fields = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                       {"Cache-Control", "no-cache"},
                       {"CIMOperation", "MethodResponse"}};
    response.body = std::move(document);
    return response;
}

// The trailers that tell of an error after the pieces of an answer (DSP0200). They are escaped as in a URI.
std::vector<http::Field> trailersOf(const CimError& error) {
    std::vector<http::Field> trailers = {{"CIMStatusCode", std::to_string(static_cast<int>(error.code))}};
    if (!error.description.empty())
        trailers.push_back({"CIMStatusCodeDescription", escapePercent(error.description, " ")});
    return trailers;
}

// Lets an answer leave while it is made, if the client takes it so. A client that reads slowly holds up the provider,
// and with it all other clients, for no longer than the provider has worked for that client. What the client has not
// taken by then is kept.
class ReplyOutlet final : public Outlet {
public:
    explicit ReplyOutlet(http::Reply& to) : reply(to) {}

    bool take(ByteBuffer& document) override {
        if (!answer) answer = reply.begin(headOfPieces());
        if (!answer) return false;
        if (!answer->write(std::move(document))) throw std::runtime_error("nobody waits for the answer any more");
        if (answer->waitingBytes() > mostWaiting) waitForClient();
        return true;
    }

    [[nodiscard]] bool hasBegun() const noexcept { return answer != nullptr; }

    /// Sends the last piece, or the error as trailers.
    void end(Dispatcher::Answer last) {
        if (last.error) return answer->end(trailersOf(*last.error));
        answer->write(std::move(last.document));
        answer->end({});
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t mostWaiting = std::size_t{256} << 10;

    static http::Response headOfPieces() {
        http::Response head = responseWith({});
        head.fields.push_back({"Trailer", "CIMError, CIMStatusCode, CIMStatusCodeDescription"});
        return head;
    }

    void waitForClient() {
        const Clock::time_point now = Clock::now();
        const Clock::duration worked = now - begun - waited;
        if (worked <= waited) return;
        answer->waitUntilTaken(mostWaiting, worked - waited);
        waited += Clock::now() - now;
    }

    http::Reply& reply;
    std::unique_ptr<http::PiecewiseAnswer> answer;
    const Clock::time_point begun = Clock::now();
    Clock::duration waited{};
};

// Counts one request, by the first answer that it gets.
class Tally {
public:
    Tally(RequestFigures* counts, const cimxml::Request& request)
        : figures(counts), operation(Dispatcher::operationOf(request)) {}

    // Called when a thread is free to call the provider, and when the provider has answered.
    void beginCall() {
        begun = Clock::now();
        if (figures) figures->waits.add(begun - received);
    }
    void endCall() {
        if (figures) figures->calls.add(Clock::now() - begun);
    }

    void end(CMPIrc status) {
        if (!figures || isCounted.exchange(true)) return;
        figures->answered(operation, status, Clock::now() - received);
    }

private:
    using Clock = std::chrono::steady_clock;

    RequestFigures* figures;
    std::size_t operation;
    Clock::time_point received = Clock::now();
    Clock::time_point begun;
    std::atomic<bool> isCounted = false;
};

// Gives the answer to the client. There is none if the server itself failed.
void giveTo(http::Reply& reply, ReplyOutlet& outlet, std::optional<Dispatcher::Answer> answer) {
    if (!answer) return reply.send(http::textResponse(500, "the request could not be answered"));
    if (outlet.hasBegun()) return outlet.end(std::move(*answer));
    http::Response response = responseWith(std::move(answer->document));
    response.receipt = std::move(answer->receipt);
    reply.send(std::move(response));
}

// A message for the provider. Keeps the message until the last thread is done with it.
class ProviderMessage final : public QueuedCall {
public:
    ProviderMessage(Dispatcher& behind, Message given, std::shared_ptr<http::Reply> to, RequestFigures* counts)
        : dispatcher(behind), message(std::move(given)), reply(std::move(to)), tally(counts, message.request) {}

    void carryOut() override {
        tally.beginCall();
        try {
            answer = dispatcher.carryOut(message.request, message.caller, &outlet);
        } catch (const std::exception&) {
            answer.reset();
        }
        tally.endCall();
    }

    void giveAnswer() override {
        tally.end(answer ? answer->status() : CMPI_RC_ERR_FAILED);
        giveTo(*reply, outlet, std::move(answer));
    }

    void answerInstead(const std::string& reason) override {
        tally.end(CMPI_RC_ERR_FAILED);
        const CimError error{CMPI_RC_ERR_FAILED, reason};
        http::Response response = responseWith(dispatcher.refuse(message.request, error));
        response.trailers = trailersOf(error);
        reply->send(std::move(response));
    }

    bool isAwaited() const override { return reply->isAwaited(); }
    std::string_view aloneAs() const override { return dispatcher.aloneAs(message.request); }

private:
    Dispatcher& dispatcher;
    const Message message;
    const std::shared_ptr<http::Reply> reply;
    Tally tally;
    ReplyOutlet outlet{*reply};
    std::optional<Dispatcher::Answer> answer;
};

// Reads one message while it comes, and has it answered.
class MessageReader final : public http::BodyReader {
public:
    MessageReader(Dispatcher& behind, Writers changers, CallQueue* calls, RequestFigures* counts)
        : dispatcher(behind), writers(changers), queue(calls), figures(counts) {}

    std::optional<http::Response> read(std::string_view bytes) override {
        const std::optional<ProtocolError> error = document.read(bytes);
        return error ? std::optional(refusal(*error)) : std::nullopt;
    }

    std::size_t heldBytes() const override { return document.heldBytes(); }

    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override {
        auto understood = understand(std::move(request));
        if (auto* refused = std::get_if<http::Response>(&understood)) return reply->send(std::move(*refused));
        auto& message = std::get<Message>(understood);
        if (!queue || !dispatcher.needsProvider(message.request, message.caller)) {
            return answerNow(std::move(message), *reply);
        }
        queue->submitHere(std::make_shared<ProviderMessage>(dispatcher, std::move(message), reply, figures));
    }

private:
    void answerNow(Message message, http::Reply& reply) {
        Tally tally(figures, message.request);
        ReplyOutlet outlet(reply);
        Dispatcher::Answer answer = dispatcher.carryOut(message.request, std::move(message.caller), &outlet);
        tally.end(answer.status());
        giveTo(reply, outlet, std::move(answer));
    }

    std::variant<Message, http::Response> understand(http::Request request) {
        auto decoded = cimxml::decodeRequest(document);
        if (const auto* error = std::get_if<ProtocolError>(&decoded)) return refusal(*error);
        Message message{std::move(std::get<cimxml::Request>(decoded)), {}};
        if (const auto error = compareWithHeader(request, message.request)) return refusal(*error);
        if (request.user.empty() && writers == Writers::users) message.caller.access = Access::read;
        message.caller.client = std::move(request.client);
        message.caller.principal = std::move(request.user);
        if (const std::string* language = request.field("Accept-Language")) message.caller.acceptLanguage = *language;
        if (const std::string* host = request.field("Host")) message.caller.host = *host;
        return message;
    }

    Dispatcher& dispatcher;
    Writers writers;
    CallQueue* queue;
    RequestFigures* figures;
    cimxml::XmlReader document;
};

// Keeps the answer for a caller that waits for it.
class KeptReply final : public http::Reply {
public:
    explicit KeptReply(http::Response& place) : kept(place) {}

    void send(http::Response answer) override {
        answer.receipt.confirm();
        kept = std::move(answer);
    }
    bool isAwaited() const override { return true; }

private:
    http::Response& kept;
};

} // namespace

std::optional<http::Response> Endpoint::refuse(const http::Request& head) const {
    if (std::optional<http::Response> response = refuseMethod(head)) return response;
    if (head.target != "/" && head.target != "/cimom") {
        return http::textResponse(404, "CIM operations go to /cimom");
    }
    const std::string* contentType = head.field("Content-Type");
    if (contentType && !isAcceptedType(*contentType)) {
        return http::textResponse(415, "a CIM message is application/xml or text/xml in utf-8");
    }
    if (const std::optional<ProtocolError> error = refuseOperation(head)) return refusal(*error);
    return std::nullopt;
}

http::Response Endpoint::answer(http::Request request) {
    http::Response response;
    MessageReader(dispatcher, writers, nullptr, figures)
        .finish(std::move(request), std::make_shared<KeptReply>(response));
    return response;
}

void Endpoint::answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) {
    MessageReader(dispatcher, writers, queue, figures).finish(std::move(request), reply);
}

std::unique_ptr<http::BodyReader> Endpoint::readerOfLargeBody(const http::Request&) {
    return std::make_unique<MessageReader>(dispatcher, writers, queue, figures);
}

} // namespace cimhost
