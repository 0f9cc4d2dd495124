// CIM operations over HTTP: what DSP0200 asks of method, path and header fields, around the dispatcher.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/http/server.h"
#include "cimhost/service/dispatcher.h"

namespace cimhost {

/// Who may change something: call methods, make, modify and delete instances.
enum class Writers { users, everybody };

class Endpoint final : public http::Handler {
public:
    /// The dispatcher outlives the endpoint.
    explicit Endpoint(Dispatcher& behind, Writers changers = Writers::users) : dispatcher(behind), writers(changers) {}

    /// A POST of XML to / or /cimom with the field CIMOperation: MethodCall goes on. That field is required: without it
    /// a web page could make a visitor's browser post requests to a server on his own machine.
    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override;

    [[nodiscard]] http::Response answer(http::Request request) override;

    /// A flash image is up to twenty times as long in XML as in its arguments, and is read as it comes.
    [[nodiscard]] std::unique_ptr<http::BodyReader> readerOfLargeBody(const http::Request& head) override;

private:
    Dispatcher& dispatcher;
    Writers writers;
};

} // namespace cimhost
