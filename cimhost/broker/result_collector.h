// The CMPIResult that a provider answers into: keeps what it returns, in order.
#pragma once

#include <cstddef>
#include <vector>

#include "cimhost/broker/request_scope.h"

namespace cimhost {

/// What a request lets its provider return.
enum class ResultKind {
    nothing,   ///< modifyInstance, deleteInstance
    paths,     ///< enumerateInstanceNames, associatorNames, referenceNames, createInstance
    instances, ///< enumerateInstances, getInstance, associators, references
    data,      ///< invokeMethod
};

/// Lives within the request's scope. What is returned is kept as it was at that moment.
class ResultCollector : public CMPIResult {
public:
    ResultCollector(RequestScope& scope, ResultKind kind);
    static ResultCollector* from(const CMPIResult* object) noexcept;

    [[nodiscard]] ResultKind kind() const noexcept { return allowed; }
    [[nodiscard]] std::size_t doneCount() const noexcept { return timesDone; }

    std::vector<const InstanceObject*> instances;
    std::vector<const ObjectPathObject*> paths;
    std::vector<CMPIData> data;

    /// 0; 7 if the request does not allow this kind; 60 for a broken object.
    CMPIrc addInstance(const CMPIInstance* instance);
    CMPIrc addPath(const CMPIObjectPath* path);
    CMPIrc addData(const CMPIValue* value, CMPIType type);
    void done() noexcept { ++timesDone; }

private:
    Arena* arena;
    ResultKind allowed;
    std::size_t timesDone = 0;
};

} // namespace cimhost
