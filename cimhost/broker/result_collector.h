// The CMPIResult to which a provider returns objects: it hands them on or keeps them, in their order.
#pragma once

#include <cstddef>
#include <exception>
#include <vector>

#include "cimhost/broker/object_sink.h"
#include "cimhost/broker/request_scope.h"

namespace cimhost {

/// What a provider may return for a request.
enum class ResultKind {
    nothing,   ///< modifyInstance, deleteInstance
    paths,     ///< enumerateInstanceNames, associatorNames, referenceNames, createInstance
    instances, ///< enumerateInstances, getInstance, associators, references
    data,      ///< invokeMethod
};

/// Lives within the request's scope. Each object is taken as it is when it is returned: by the sink, or, without a
/// sink, as a copy that is kept here.
class ResultCollector : public CMPIResult, public ObjectCollector {
public:
    ResultCollector(RequestScope& scope, ResultKind kind, ObjectSink* sink = nullptr);
    static ResultCollector* from(const CMPIResult* object) noexcept;

    [[nodiscard]] ResultKind kind() const noexcept { return allowed; }
    [[nodiscard]] std::size_t doneCount() const noexcept { return timesDone; }
    /// The exception of the sink, which is given nothing more after it; null if there is none.
    [[nodiscard]] const std::exception_ptr& failure() const noexcept { return thrown; }

    std::vector<CMPIData> data;

    // All three return 0; 7 if the request does not allow this kind; 60 for a broken object.

    /// 1 if there is no room for more, or the sink has thrown.
    CMPIrc addInstance(const CMPIInstance* instance);
    CMPIrc addPath(const CMPIObjectPath* path);
    /// 61 for a type that no value has.
    CMPIrc addData(const CMPIValue* value, CMPIType type);
    void done() noexcept { ++timesDone; }

private:
    template <typename Object>
    CMPIrc take(const Object& object);

    Arena* arena;
    ResultKind allowed;
    ObjectSink& target;
    std::exception_ptr thrown;
    std::size_t timesDone = 0;
};

} // namespace cimhost
