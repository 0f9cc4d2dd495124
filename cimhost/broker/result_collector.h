// The CMPIResult that a provider answers into: hands on what it returns, or keeps it, in order.
#pragma once

#include <cstddef>
#include <exception>
#include <vector>

#include "cimhost/broker/object_sink.h"
#include "cimhost/broker/request_scope.h"

namespace cimhost {

/// What a request lets its provider return.
enum class ResultKind {
    nothing,   ///< modifyInstance, deleteInstance
    paths,     ///< enumerateInstanceNames, associatorNames, referenceNames, createInstance
    instances, ///< enumerateInstances, getInstance, associators, references
    data,      ///< invokeMethod
};

/// Lives within the request's scope. What is returned is taken as it is at that moment: by the sink if there is one,
/// else it is kept here.
class ResultCollector : public CMPIResult, public ObjectCollector {
public:
    ResultCollector(RequestScope& scope, ResultKind kind, ObjectSink* sink = nullptr);
    static ResultCollector* from(const CMPIResult* object) noexcept;

    [[nodiscard]] ResultKind kind() const noexcept { return allowed; }
    [[nodiscard]] std::size_t doneCount() const noexcept { return timesDone; }
    /// What the sink threw; it is given nothing more then.
    [[nodiscard]] const std::exception_ptr& failure() const noexcept { return thrown; }

    std::vector<CMPIData> data;

    /// 0; 7 if the request does not allow this kind; 60 for a broken object; 1 if there is no room for more.
    CMPIrc addInstance(const CMPIInstance* instance);
    CMPIrc addPath(const CMPIObjectPath* path);
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
