#include "cimhost/indications/kept_object.h"

namespace cimhost {

namespace {

constexpr KeptClass classRows[] = {
    {"CIM_IndicationFilter", KeptKind::filter},
    {"CIM_ListenerDestinationCIMXML", KeptKind::destination},
    {"CIM_IndicationSubscription", KeptKind::subscription},
};

} // namespace

std::span<const KeptClass> keptClasses() { return classRows; }

bool KeptObject::isTransient() const {
    if (kind == KeptKind::subscription) return destination->isTransient();
    return kind == KeptKind::destination && givenNumber(*instance, "PersistenceType") == 3;
}

bool KeptObject::isActive() const {
    return kind == KeptKind::subscription && givenNumber(*instance, "SubscriptionState") == 2;
}

const CMPIData* givenValue(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    return data && (data->state & CMPI_nullValue) == 0 ? data : nullptr;
}

std::string givenText(const InstanceObject& instance, std::string_view property) {
    std::string text;
    if (const CMPIData* data = givenValue(instance, property)) appendValueText(text, *data);
    return text;
}

CMPIUint16 givenNumber(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = givenValue(instance, property);
    return data ? data->value.uint16 : CMPIUint16{0};
}

} // namespace cimhost
