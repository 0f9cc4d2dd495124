// Carries out a decoded CIM-XML request, and writes the CIM-XML document that answers it.
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

/// The most bytes of one answer. The objects in it have a limit of their own, but their XML is longer than they are.
constexpr std::size_t longestAnswerDocument = std::size_t{256} << 20;

class Dispatcher {
public:
    /// Operations, broker and audit log outlive the dispatcher.
    /// @param broker the one whose repository the operations use
    /// @param audit null: changes are not logged
    /// @param longestAnswer the most bytes of an answer; a longer one becomes CIM_ERR_FAILED
    Dispatcher(Operations& operations, Broker& broker, AuditLog* audit = nullptr,
               std::size_t longestAnswer = longestAnswerDocument, const PullOptions& pullOptions = {});

    /// The response message: a result, or an ERROR with a CIM status. Nothing that a request or a provider does makes
    /// this throw. caller.flags are set from the request's parameters. If the request calls a namespace by a further
    /// name, all paths of the answer do so, too.
    ByteBuffer handle(const cimxml::Request& request, Caller caller) {
        Answer answer = carryOut(request, std::move(caller), nullptr);
        answer.receipt.confirm();
        return std::move(answer.document);
    }

    /// The same, with the error that the message tells. An answer with many objects may leave through the outlet while
    /// it is made. Then the document is its last piece; if there is an error, the document is of no use, since the
    /// first pieces have left. If the answer leaves an enumeration open, the receipt ends that unless it is confirmed.
    struct Answer {
        ByteBuffer document;
        std::optional<CimError> error;
        Receipt receipt = {};

        [[nodiscard]] CMPIrc status() const { return error ? error->code : CMPI_RC_OK; }
    };
    Answer carryOut(const cimxml::Request& request, Caller caller, Outlet* outlet);

    /// The names of the operations (DSP0200), then "InvokeMethod" for all calls of methods, then "unknown" for all
    /// other requests. Their order does not change while the program runs.
    [[nodiscard]] static std::vector<std::string_view> operationNames();
    /// The place of the request's operation in operationNames().
    [[nodiscard]] static std::size_t operationOf(const cimxml::Request& request);

    /// The response message to a request that is not carried out, or whose answer is not waited for any longer.
    [[nodiscard]] ByteBuffer refuse(const cimxml::Request& request, const CimError& error) const;

    /// False if the request can be answered at once: from what the server itself holds, or with a refusal.
    [[nodiscard]] bool needsProvider(const cimxml::Request& request, const Caller& caller) const;

    /// The kind of the request, such as "flash update", if no two of that kind may be under way; or empty.
    [[nodiscard]] std::string_view aloneAs(const cimxml::Request& request) const;

    /// The enumerations that clients read in several answers.
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
    std::atomic<std::size_t> lastSize = 4096;     // of an answer: the next one is likely to be as long
};

} // namespace cimhost
