// CIM operations over HTTP: checks what DSP0200 requires of method, path and header fields, and calls the dispatcher.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/http/server.h"
#include "cimhost/service/call_queue.h"
#include "cimhost/service/dispatcher.h"
#include "cimhost/service/request_figures.h"

namespace cimhost {

/// Who may change something: call methods, make, modify and delete instances.
enum class Writers { users, everybody };

class Endpoint final : public http::Handler {
public:
    /// Dispatcher, queue and figures outlive the endpoint.
    /// @param calls null: the provider is called on the thread that answers
    /// @param counts null: nothing is counted
    explicit Endpoint(Dispatcher& behind, Writers changers = Writers::users, CallQueue* calls = nullptr,
                      RequestFigures* counts = nullptr)
        : dispatcher(behind), writers(changers), queue(calls), figures(counts) {}

    /// Lets pass a POST of XML to / or /cimom with the field CIMOperation: MethodCall. That field is required: without
    /// it a web page could make a visitor's browser post requests to a server on the visitor's own machine.
    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override;

    [[nodiscard]] http::Response answer(http::Request request) override;

    /// A request that needs the provider goes to the queue; any other one is answered at once.
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override;

    /// Reads the message while it comes: a flash image is up to twenty times as long in XML as in its arguments.
    [[nodiscard]] std::unique_ptr<http::BodyReader> readerOfLargeBody(const http::Request& head) override;

private:
    Dispatcher& dispatcher;
    Writers writers;
    CallQueue* queue;
    RequestFigures* figures;
};

} // namespace cimhost
