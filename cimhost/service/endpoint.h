// CIM operations over HTTP: what DSP0200 asks of method, path and header fields, around the dispatcher.
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
    /// All outlive the endpoint. Without a queue the provider is called on the thread that asks; without figures
    /// nothing is counted.
    explicit Endpoint(Dispatcher& behind, Writers changers = Writers::users, CallQueue* calls = nullptr,
                      RequestFigures* counts = nullptr)
        : dispatcher(behind), writers(changers), queue(calls), figures(counts) {}

    /// A POST of XML to / or /cimom with the field CIMOperation: MethodCall goes on. That field is required: without it
    /// a web page could make a visitor's browser post requests to a server on his own machine.
    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override;

    [[nodiscard]] http::Response answer(http::Request request) override;

    /// What needs the provider goes to the queue; all else is answered here and now.
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override;

    /// A flash image is up to twenty times as long in XML as in its arguments, and is read as it comes.
    [[nodiscard]] std::unique_ptr<http::BodyReader> readerOfLargeBody(const http::Request& head) override;

private:
    Dispatcher& dispatcher;
    Writers writers;
    CallQueue* queue;
    RequestFigures* figures;
};

} // namespace cimhost
