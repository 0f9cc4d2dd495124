// One call of an operation on its way from request to answer, and what an answer shows of an instance.
#pragma once

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/request.h"
#include "cimhost/service/answer_pieces.h"
#include "cimhost/service/change_note.h"
#include "cimhost/service/operations.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

class PullSessions;

struct Call {
    Operations& operations;
    RequestScope& scope;
    const cimxml::Request& request;
    Caller& caller;
    cimxml::Encoder& encoder;
    ChangeNote& change;
    PullSessions& pulls;
    AnswerPieces& pieces;
    std::string& context; ///< of the enumeration that the answer leaves open; empty: none
};

/// The path that a parameter names, in the namespace of the request. Namespace and class are judged before the keys: a
/// key means nothing without its class. Throws CimFailure.
ObjectPathObject& instancePath(const Call& call, const cimxml::ObjectPath& path, std::string_view parameter);

/// How paths in an answer call this server: the name under which the client reached it leads him here again; the host's
/// own may not.
std::string hostOf(const Call& call);

bool isListed(const std::vector<std::string>& names, std::string_view name);

/// Which properties of each class an answer shows. Instances of one class come in rows, so the last one is kept at
/// hand.
class Selection {
public:
    /// What is listed, and of that no more than asked has; asked null does not narrow.
    Selection(const ClassDeclaration* asked, PropertyList properties) : requested(asked), list(std::move(properties)) {}

    /// By position in the class's properties; null selects all.
    const std::vector<bool>* of(const ClassDeclaration* declaration);

private:
    const ClassDeclaration* requested;
    PropertyList list;
    const ClassDeclaration* last = nullptr;
    std::vector<bool> selected;
};

} // namespace cimhost
