// One call of an operation, from its request to its answer; and which properties an answer shows.
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
    std::string& context; ///< of the enumeration that the answer leaves open; empty if it leaves none open
};

/// The path that a parameter names, in the namespace of the request. Namespace and class are checked before the keys: a
/// key means nothing without its class. Throws CimFailure with CIM_ERR_INVALID_NAMESPACE, CIM_ERR_INVALID_CLASS, or
/// CIM_ERR_INVALID_PARAMETER for what is no instance name and for a key whose text is no value.
ObjectPathObject& instancePath(const Call& call, const cimxml::ObjectPath& path, std::string_view parameter);

/// What paths in an answer call this server: the name by which the client reached it, since that leads the client here
/// again. If the client named none, the machine's own name.
std::string hostOf(const Call& call);

/// Whether one of the names is this one, in any case.
bool isListed(const std::vector<std::string>& names, std::string_view name);

/// Which properties of each class an answer shows. Instances of one class come one after the other, so the selection
/// for the last class is kept.
class Selection {
public:
    /// Selects the properties that are listed and that the class `asked` has.
    /// @param asked null: all classes will do
    /// @param properties nothing: all properties are listed
    Selection(const ClassDeclaration* asked, PropertyList properties) : requested(asked), list(std::move(properties)) {}

    /// Whether each property of the class is selected, in the order of its properties; null if all are. Valid until the
    /// next call.
    const std::vector<bool>* of(const ClassDeclaration* declaration);

private:
    const ClassDeclaration* requested;
    PropertyList list;
    const ClassDeclaration* last = nullptr;
    std::vector<bool> selected;
};

} // namespace cimhost
