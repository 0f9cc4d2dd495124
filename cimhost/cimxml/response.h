// The answer of a CIM server to one operation, decoded from CIM-XML (DSP0200, DSP0201) as it comes and free of XML.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/request.h"
#include "cimhost/cimxml/values.h"
#include "cimhost/cimxml/xml_tree.h"
#include "cimhost/model/cim_error.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cimhost::cimxml {

/// A class as a server tells it, as far as a client looks at it.
struct ClassSummary {
    std::string name;
    std::string superclass; // empty: none
};

/// One of the objects that an operation returns.
using ReturnedObject = std::variant<NamedInstance, ObjectPath, ClassSummary>;

/// Which answer is expected.
struct Asked {
    std::string messageId;
    Request::Kind kind = Request::Kind::intrinsic;
    std::string method;
};

/// What stands in an answer beside its objects.
struct Response {
    struct OutParameter {
        std::string name;
        Value value;
    };

    std::optional<CimError> error; // a status that CMPI has no code for is CIM_ERR_FAILED, with its number in front
    std::optional<Value> returnValue;
    std::vector<OutParameter> outParameters;
};

struct ResponseLimits {
    XmlLimits xml;
    std::size_t objects = std::size_t{1} << 20;
};

/// Reads one answer in pieces of any size. Its objects are handed out one by one, and count only once finish() has
/// found the whole answer to be in order.
class ResponseReader {
public:
    /// What takes the objects may throw; that comes out of read().
    using Sink = std::function<void(ReturnedObject object)>;

    ResponseReader(Asked asked, Sink sink, const ResponseLimits& limits = {});
    ~ResponseReader();
    ResponseReader(const ResponseReader&) = delete;
    ResponseReader& operator=(const ResponseReader&) = delete;

    /// The next bytes. An error ends the reading; whoever goes on gets it again.
    std::optional<ProtocolError> read(std::string_view piece);

    /// Behind the last bytes. Objects that came before an error of CIM are void.
    std::variant<Response, ProtocolError> finish();

private:
    struct State;
    std::unique_ptr<State> state;
};

/// An instance that stands as a text in a property or a parameter. Nothing if the text is none, as where it is a class.
std::optional<Instance> decodeEmbeddedInstance(std::string_view text, const XmlLimits& limits = {});

/// An error that a server tells by a number and words. A number that is no status of CIM is CIM_ERR_FAILED, with the
/// number in front of the words.
CimError statusError(std::string_view code, std::string description);

/// The status and the words of an ERROR element.
CimError readError(const XmlElement& element);

} // namespace cimhost::cimxml
