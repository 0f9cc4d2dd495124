// What differs between the two packages of wrapper classes that a provider is built against. OTHER_WRAPPER is 1 for the
// one that offers less.

#include "CmpiArgs.h"
#include "CmpiArray.h"
#include "CmpiData.h"
#include "CmpiDateTime.h"
#include "CmpiEnumeration.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiStatus.h"
#include "CmpiString.h"

#include <type_traits>

namespace {

constexpr bool offersMore = OTHER_WRAPPER == 0;

template <typename T>
concept GivesType = requires(const T& value) {
    value.getType();
};
template <typename T>
concept GivesByName = requires(const T& value) {
    value.getString();
}
|| requires(const T& value) { value.getUint8(); }
|| requires(const T& value) { value.getInstance(); }
|| requires(const T& value) { value.getCString(); };
template <typename T>
concept TakesByName = requires(T& value) {
    value.setUint32(1);
}
|| requires(T& value) { value.setCString("x"); };
template <typename T>
concept GivesMessageAsConst = requires(const T& status) {
    status.msg();
};
template <typename T>
concept CountsAsConst = requires(const T& instance) {
    instance.getPropertyCount();
}
|| requires(const T& instance) { instance.instanceIsA("x"); }
|| requires(const T& instance, CmpiString* name) { instance.getProperty(1, name); };

static_assert(GivesType<CmpiData> == offersMore);
static_assert(GivesByName<CmpiData> == offersMore);
static_assert(GivesByName<CmpiArrayIdx> == offersMore);
static_assert(TakesByName<CmpiData> == offersMore);
static_assert(GivesMessageAsConst<CmpiStatus> == offersMore);
static_assert(CountsAsConst<CmpiInstance> == offersMore);
static_assert(std::is_constructible_v<CmpiString, const char*> == offersMore);
static_assert(std::is_constructible_v<CmpiData, const CmpiInstance&> == offersMore);
static_assert(std::is_assignable_v<CmpiArray&, const CmpiData&> == offersMore);
static_assert(std::is_default_constructible_v<CmpiEnumeration> == offersMore);

// What both offer.
static_assert(requires(CmpiStatus & status) { status.msg(); });
static_assert(requires(CmpiInstance & instance) { instance.getPropertyCount(); });
static_assert(requires(const CmpiInstance& instance) {
    instance.getProperty("x");
    instance.getObjectPath();
});
static_assert(requires(const CmpiDateTime& date) { date.getDateTime(); });
static_assert(requires(const CmpiArray& array) {
    CMPIUint8(array[0]);
    array.size();
});
static_assert(std::is_convertible_v<const CmpiData&, CmpiString> && std::is_convertible_v<const CmpiData&, CmpiArray> &&
              std::is_convertible_v<const CmpiData&, CmpiObjectPath> && std::is_convertible_v<const char*, CmpiData>);

} // namespace
