#include "provider/server_facilities.h"

#include "log/log.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <cxxabi.h>
#include <iterator>

namespace merolt {

namespace {

/// The gravest first.
enum class Without { provider, adapters, alerts };

struct Need {
    const char* name;
    Without without;
    bool (*isMet)(const CMPIBroker& broker, const CMPIContext* context);
};

// A table that is not there offers nothing.
#define OFFERED(table, slot)                                                                                           \
    [](const CMPIBroker& broker, const CMPIContext*) { return broker.table && broker.table->slot; }

// clang-format off
constexpr Need needs[] = {
    {"its function table",  Without::provider, [](const CMPIBroker& broker, const CMPIContext*) { return broker.bft != nullptr; }},
    {"newInstance",         Without::provider, OFFERED(eft, newInstance)},
    {"newObjectPath",       Without::provider, OFFERED(eft, newObjectPath)},
    {"newString",           Without::provider, OFFERED(eft, newString)},
    {"newArray",            Without::provider, OFFERED(eft, newArray)},
    {"classPathIsA",        Without::provider, OFFERED(eft, classPathIsA)},
    {"newThread",           Without::adapters, OFFERED(xft, newThread)},
    {"a context",           Without::alerts,   [](const CMPIBroker&, const CMPIContext* context) { return context != nullptr; }},
    {"newDateTime",         Without::alerts,   OFFERED(eft, newDateTime)},
    {"prepareAttachThread", Without::alerts,   OFFERED(bft, prepareAttachThread)},
    {"attachThread",        Without::alerts,   OFFERED(bft, attachThread)},
    {"detachThread",        Without::alerts,   OFFERED(bft, detachThread)},
    {"deliverIndication",   Without::alerts,   OFFERED(bft, deliverIndication)},
};
// clang-format on

#undef OFFERED

bool isMet(const Need& need, const CMPIBroker* broker, const CMPIContext* context) {
    return broker && need.isMet(*broker, context);
}

bool hasAll(Without without, const CMPIBroker* broker, const CMPIContext* context) {
    return std::all_of(std::begin(needs), std::end(needs),
                       [&](const Need& need) { return need.without != without || isMet(need, broker, context); });
}

const char* consequence(Without without) {
    switch (without) {
    case Without::provider:
        return "the provider cannot work and is not loaded";
    case Without::adapters:
        return "no adapters are published and no indications are sent";
    case Without::alerts:
        return "no indications are sent";
    }
    return "";
}

using Line = FixedText<512>;

void tellServer(const CMPIBroker* broker, CMPISeverity severity, const char* text) try {
    if (broker && broker->eft && broker->eft->logMessage)
        broker->eft->logMessage(broker, severity, "Merolt_CNA_Provider", text, nullptr);
} catch (const abi::__forced_unwind&) {
    throw;
} catch (...) {
    // Its log is a courtesy: the provider's own has the line.
}

void report(const CMPIBroker* broker, Without without, std::string_view what) {
    Line line;
    line.append("Merolt_CNA_Provider: the CIM server ");
    line.append(what);
    line.append(": ");
    line.append(consequence(without));
    ERROR_LOG("%s", line.text());
    tellServer(broker, without == Without::provider ? CMPI_SEV_ERROR : CMPI_SEV_WARNING, line.text());
}

/// @return the needs that are not met, after "does not give "; empty if there are none.
Line listMissing(const CMPIBroker* broker, const CMPIContext* context, Without& gravest) {
    Line list;
    gravest = Without::alerts;
    for (const Need& need : needs) {
        if (isMet(need, broker, context)) continue;
        list.append(list.empty() ? "does not give " : ", ");
        list.append(need.name);
        gravest = std::min(gravest, need.without);
    }
    return list;
}

} // namespace

ServerFacilities facilitiesOf(const CMPIBroker* broker, const CMPIContext* context) {
    return {
        .canAnswer = hasAll(Without::provider, broker, context),
        .canRunThread = hasAll(Without::adapters, broker, context),
        .canAlert = hasAll(Without::alerts, broker, context),
    };
}

void reportMissingFacilities(const CMPIBroker* broker, const CMPIContext* context) {
    if (!broker) {
        report(broker, Without::provider, "does not give a broker");
        return;
    }
    Without gravest;
    const Line missing = listMissing(broker, context, gravest);
    if (!missing.empty()) report(broker, gravest, missing.view());
}

void reportNoThread(const CMPIBroker* broker, std::string_view what) { report(broker, Without::adapters, what); }

void reportNoAlerts(const CMPIBroker* broker, std::string_view what) { report(broker, Without::alerts, what); }

void releaseContext(CMPIContext* context) {
    if (context && context->ft->release) context->ft->release(context);
}

} // namespace merolt
