#include "cimhost/broker/result_collector.h"

#include "cimhost/broker/request_limit.h"
#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {

ResultCollector::ResultCollector(RequestScope& scope, ResultKind kind, ObjectSink* sink)
    : CMPIResult{this, tablePointer(tables::result)}, ObjectCollector(scope.arena()), arena(&scope.arena()),
      allowed(kind), target(sink ? *sink : *this) {}

ResultCollector* ResultCollector::from(const CMPIResult* object) noexcept {
    return checkedObject<ResultCollector>(const_cast<CMPIResult*>(object), tables::result);
}

template <typename Object>
CMPIrc ResultCollector::take(const Object& object) {
    if (thrown || isFull(*arena)) return CMPI_RC_ERR_FAILED;
    try {
        target.deliver(object);
    } catch (...) {
        thrown = std::current_exception();
        return CMPI_RC_ERR_FAILED;
    }
    return CMPI_RC_OK;
}

CMPIrc ResultCollector::addInstance(const CMPIInstance* object) {
    if (allowed != ResultKind::instances) return CMPI_RC_ERR_NOT_SUPPORTED;
    const InstanceObject* instance = InstanceObject::from(object);
    if (!instance) return CMPI_RC_ERR_INVALID_HANDLE;
    return take(*instance);
}

CMPIrc ResultCollector::addPath(const CMPIObjectPath* object) {
    if (allowed != ResultKind::paths) return CMPI_RC_ERR_NOT_SUPPORTED;
    const ObjectPathObject* path = ObjectPathObject::from(object);
    if (!path) return CMPI_RC_ERR_INVALID_HANDLE;
    return take(*path);
}

CMPIrc ResultCollector::addData(const CMPIValue* value, CMPIType type) {
    if (allowed != ResultKind::data) return CMPI_RC_ERR_NOT_SUPPORTED;
    CMPIData taken;
    const CMPIrc code = takeValue(*arena, value, type, taken);
    if (code == CMPI_RC_OK) data.push_back(taken);
    return code;
}

namespace {

CMPIStatus returnData(const CMPIResult* object, const CMPIValue* value, CMPIType type) noexcept {
    ResultCollector* result = ResultCollector::from(object);
    return statusOf(result ? result->addData(value, type) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus returnInstance(const CMPIResult* object, const CMPIInstance* instance) noexcept {
    ResultCollector* result = ResultCollector::from(object);
    return statusOf(result ? result->addInstance(instance) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus returnObjectPath(const CMPIResult* object, const CMPIObjectPath* path) noexcept {
    ResultCollector* result = ResultCollector::from(object);
    return statusOf(result ? result->addPath(path) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus returnDone(const CMPIResult* object) noexcept {
    ResultCollector* result = ResultCollector::from(object);
    if (!result) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    result->done();
    return statusOf(CMPI_RC_OK);
}

CMPIStatus returnError(const CMPIResult* object, const CMPIError* /*error*/) noexcept {
    return statusOf(ResultCollector::from(object) ? CMPI_RC_ERR_NOT_SUPPORTED : CMPI_RC_ERR_INVALID_HANDLE);
}

} // namespace

const CMPIResultFT tables::result = {
    CMPICurrentVersion,
    nullptr, // release: the result belongs to the server; production servers lack these two as well
    nullptr, // clone
    returnData,
    returnInstance,
    returnObjectPath,
    returnDone,
    returnError,
};

} // namespace cimhost
