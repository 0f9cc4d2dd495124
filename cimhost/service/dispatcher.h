// From a decoded CIM-XML request to the CIM-XML document that answers it.
#pragma once

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/request.h"
#include "cimhost/receipt.h"
#include "cimhost/service/answer_pieces.h"
#include "cimhost/service/audit.h"
#include "cimhost/service/change_note.h"
#include "cimhost/service/operations.h"
#include "cimhost/service/pull_sessions.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace cimhost {

/// Bytes of one answer. The objects that it tells of have a limit of their own, but are shorter than their XML.
constexpr std::size_t longestAnswerDocument = std::size_t{256} << 20;

class Dispatcher {
public:
    /// All outlive the dispatcher; the broker is the one whose repository the operations use. Without an audit log
    /// nobody hears of changes. Whoever asks for more than longestAnswer bytes is told so in place of it.
    Dispatcher(Operations& operations, Broker& broker, AuditLog* audit = nullptr,
               std::size_t longestAnswer = longestAnswerDocument, const PullOptions& pullOptions = {});

    /// The response message: a result, or an ERROR with a CIM status. Never throws for what a request or a provider
    /// does. caller.flags are set from the request's parameters. Who asks by a further name of a namespace reads that
    /// name in all paths of the answer.
    ByteBuffer handle(const cimxml::Request& request, Caller caller) {
        Answer answer = carryOut(request, std::move(caller), nullptr);
        answer.receipt.confirm();
        return std::move(answer.document);
    }

    /// The same, with the error that the message tells. An answer with many objects may leave through the outlet as it
    /// is made; then the document is its last piece, or of no use if there is an error, as the first pieces have left.
    /// An enumeration that it leaves open ends with its receipt, if that is not confirmed.
    struct Answer {
        ByteBuffer document;
        std::optional<CimError> error;
        Receipt receipt = {};

        [[nodiscard]] CMPIrc status() const { return error ? error->code : CMPI_RC_OK; }
    };
    Answer carryOut(const cimxml::Request& request, Caller caller, Outlet* outlet);

    /// The operations that there are, by the names of DSP0200, and behind them one for all that are none. Each has its
    /// place as long as the program runs.
    [[nodiscard]] static std::vector<std::string_view> operationNames();
    [[nodiscard]] static std::size_t operationOf(const cimxml::Request& request);

    /// The response message where the request is not carried out, or no longer waited for.
    [[nodiscard]] ByteBuffer refuse(const cimxml::Request& request, const CimError& error) const;

    /// False if the request is answered from what the server itself holds, or refused, and so at once.
    [[nodiscard]] bool needsProvider(const cimxml::Request& request, const Caller& caller) const;

    /// What the request is, such as "flash update", if no two of that may be under way; or empty.
    [[nodiscard]] std::string_view aloneAs(const cimxml::Request& request) const;

    /// What clients read in several answers.
    [[nodiscard]] const PullSessions& pulls() const noexcept { return *sessions; }

private:
    Answer answer(const cimxml::Request& request, Caller caller, Outlet* outlet);
    [[nodiscard]] CimError tooLong() const;
    void tell(const cimxml::Request& request, const Caller& caller, const ChangeNote& change) const;

    Operations& operations;
    Broker& broker;
    AuditLog* audit;
    const std::size_t longestAnswer;
    cimxml::TagTable tags;
    const std::shared_ptr<PullSessions> sessions; // answers under way may outlive the dispatcher
    std::atomic<std::size_t> lastSize = 4096;     // answers resemble each other: room for the next one
};

} // namespace cimhost
