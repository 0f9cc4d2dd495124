#include "family_call.h"

#include "provider_call.h"

#include <utility>

namespace {

/// The wrapper's result is made by its own drivers only.
struct Result : CmpiResult {
    explicit Result(CMPIResult* result) : CmpiResult(result) {}
};

void take(FamilyAnswer& answer, const CmpiStatus& status) {
    answer.rc = status.rc();
    if (const char* message = status.msg()) answer.message = message;
}

} // namespace

/// The path's table; a struct of its own so that it may look inside.
struct WatchedPathCalls {
    static WatchedPath& self(const CMPIObjectPath* path) {
        return static_cast<WatchedPath&>(const_cast<CMPIObjectPath&>(*path));
    }

    static CMPIString* text(const WatchedPath& path, const std::string& value, CMPIrc code, CMPIStatus* status) {
        if (status) *status = {code, nullptr};
        return code == CMPI_RC_OK ? path.broker->eft->newString(path.broker, value.c_str(), nullptr) : nullptr;
    }

    static CMPIString* getClassName(const CMPIObjectPath* object, CMPIStatus* status) {
        WatchedPath& path = self(object);
        path.reads.emplace_back("class name");
        return text(path, path.className, path.classNameStatus, status);
    }

    static CMPIString* getNameSpace(const CMPIObjectPath* object, CMPIStatus* status) {
        WatchedPath& path = self(object);
        path.reads.emplace_back("namespace");
        return text(path, path.nameSpace, path.nameSpaceStatus, status);
    }

    static CMPIData getKey(const CMPIObjectPath* object, const char* name, CMPIStatus* status) {
        WatchedPath& path = self(object);
        path.reads.push_back(std::string("key ") + name);
        CMPIData data{path.keyType, CMPI_keyValue, {}};
        data.value.uint64 = 5;
        CMPIString* string = text(path, path.keyText, path.keyStatus, status);
        if (path.keyType == CMPI_string) data.value.string = string;
        return path.keyStatus == CMPI_RC_OK ? data : CMPIData{CMPI_null, CMPI_nullValue | CMPI_notFound, {}};
    }

    static CMPIObjectPathFT* table() {
        static CMPIObjectPathFT functions = [] {
            CMPIObjectPathFT made{};
            made.ftVersion = CMPICurrentVersion;
            made.getClassName = getClassName;
            made.getNameSpace = getNameSpace;
            made.getKey = getKey;
            return made;
        }();
        return &functions;
    }
};

WatchedPath::WatchedPath(cimhost::Broker& owner, std::string ofClass, std::string inNameSpace)
    : CMPIObjectPath{this, WatchedPathCalls::table()}, className(std::move(ofClass)), nameSpace(std::move(inNameSpace)),
      broker(owner.table()) {}

FamilyAnswer callFamily(cimhost::Broker& broker, cimhost::ResultKind kind, WatchedPath& path,
                        const FamilyFunction& function) {
    ProviderCall call(broker, kind);
    call.begin(&path);
    Result result(call.result);
    FamilyAnswer answer;
    try {
        take(answer, function(CmpiContext(call.context), result, CmpiObjectPath(call.path)));
    } catch (const CmpiStatus& status) {
        take(answer, status);
        answer.thrown = true;
    }
    call.end();
    answer.returned = call.collector.instances.size() + call.collector.paths.size();
    answer.doneCount = call.collector.doneCount();
    return answer;
}
