// The host: the CIM server whose objects the tests use. The foreign server takes nothing from it but what it is handed
// through the C tables.
#pragma once

#include "values.h"

#include "cmpift.h"

#include <functional>
#include <memory>

namespace foreign_server {

struct Host {
    const CMPIBroker* broker = nullptr;
    /// Attaches the calling thread to the host until the returned object is gone, and gives it a context.
    std::function<std::shared_ptr<void>(const CMPIContext*& context)> enter;
};

/// Copies from the host. Objects with another table than the host's own are the test's own play: every later read of
/// them is passed on, so that they can count and refuse.
class FromHost {
public:
    explicit FromHost(const Host& host);

    bool isPlayed(const CMPIObjectPath* path) const { return path->ft != pathTable; }
    bool isPlayed(const CMPIArgs* args) const { return args->ft != argsTable; }

    PathData path(const CMPIObjectPath* path) const;
    InstanceData instance(const CMPIInstance* instance) const;
    NamedValues arguments(const CMPIArgs* args) const;
    NamedValues entries(const CMPIContext* context) const;
    Value value(const CMPIData& data) const;
    std::optional<std::string> text(const CMPIString* string) const;

private:
    const CMPIObjectPathFT* pathTable = nullptr;
    const CMPIArgsFT* argsTable = nullptr;
};

/// Copies into the host, in whose scope the calling thread must be. What the host refuses is a breach of the
/// provider's: a strict server would have refused it at once.
class ToHost {
public:
    /// @param function what the breaches are written down under.
    ToHost(const CMPIBroker* hostBroker, const char* ofFunction) : broker(hostBroker), function(ofFunction) {}

    CMPIObjectPath* path(const PathData& data) const;
    CMPIInstance* instance(const InstanceData& data) const;
    /// Calls use(const CMPIValue*, CMPIType) with the value in the form that the tables take.
    template <class Use>
    CMPIStatus with(const Value& value, Use&& use) const {
        const CMPIValue converted = value.isNull() ? CMPIValue{} : plain(value);
        return use(value.isNull() ? nullptr : &converted, value.type);
    }
    CMPIString* text(const char* text) const;
    void expectTaken(const CMPIStatus& status, const std::string& what) const;

private:
    CMPIValue plain(const Value& value) const;
    CMPIArray* array(const ArrayData& data) const;
    void checkKeys(const PathData& data) const;

    const CMPIBroker* const broker;
    const char* const function;
};

} // namespace foreign_server
