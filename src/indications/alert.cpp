#include "indications/alert.h"

#include "classes/instance.h"
#include "classes/system_name.h"
#include "text/fixed_text.h"

#include "CmpiDateTime.h"

namespace merolt {

namespace {

// Where subscriptions live. Fixed: settings do not reach it.
constexpr const char* subscriptionNamespace = "root/PG_InterOp";

} // namespace

std::uint32_t gIndicationIdentifier = 0;

CmpiInstance beginAlert(const char* className) {
    CmpiInstance alert{CmpiObjectPath(alertNamespace, className)};
    FixedText<16> identifier;
    identifier.format("%u", ++gIndicationIdentifier);
    alert.setProperty("IndicationIdentifier", CmpiData(identifier.text()));
    alert.setProperty("IndicationTime", CmpiData(CmpiDateTime()));
    alert.setProperty("CorrelatedIndications", CmpiData(stringArray({""})));
    return alert;
}

void endAlert(CmpiInstance& alert) {
    alert.setProperty("SystemCreationClassName", CmpiData(computerSystemClass));
    alert.setProperty("SystemName", CmpiData(gSystemName));
    alert.setProperty("ProviderName", CmpiData("Merolt CNA Provider"));
}

void deliverAlert(const PollThreadContext& thread, const CmpiInstance& alert) {
    thread.broker->deliverIndication(*thread.context, subscriptionNamespace, alert);
}

} // namespace merolt
