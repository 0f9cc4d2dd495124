// What compiles against the wrapper classes and what does not. A provider is built against other packages of the same
// classes too, so nothing may compile here that they reject, and nothing be rejected that they take.

#include "CmpiArgs.h"
#include "CmpiArray.h"
#include "CmpiAssociationMI.h"
#include "CmpiBaseMI.h"
#include "CmpiBooleanData.h"
#include "CmpiBroker.h"
#include "CmpiCharData.h"
#include "CmpiContext.h"
#include "CmpiData.h"
#include "CmpiDateTime.h"
#include "CmpiEnumeration.h"
#include "CmpiIndicationMI.h"
#include "CmpiInstance.h"
#include "CmpiInstanceMI.h"
#include "CmpiMethodMI.h"
#include "CmpiObjectPath.h"
#include "CmpiPropertyMI.h"
#include "CmpiProviderBase.h"
#include "CmpiResult.h"
#include "CmpiSelectExp.h"
#include "CmpiStatus.h"
#include "CmpiString.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <type_traits>

namespace {

template <typename From, typename To>
constexpr bool converts = std::is_convertible_v<From, To>;
template <typename To, typename From>
constexpr bool assigns = std::is_assignable_v<To&, From>;
template <typename T, typename... Arguments>
constexpr bool makes = std::is_constructible_v<T, Arguments...>;

template <typename T>
concept GivesItsServerObject = requires(const T& object) {
    object.getEnc();
};
template <typename T>
concept GivesItsMessageAsConst = requires(const T& status) {
    status.msg();
};
template <typename T>
concept GivesItsPlainStatus = requires(const T& status) {
    status.status();
};
template <typename T, typename Value>
concept TakesProperty = requires(T& instance, Value value) {
    instance.setProperty("p", value);
};
template <typename T, typename Value>
concept TakesKey = requires(T& path, Value value) {
    path.setKey("k", value);
};
template <typename T, typename Value>
concept ReturnsData = requires(T& result, Value value) {
    result.returnData(value);
};

// Strings
static_assert(converts<const CmpiData&, CmpiString>);
static_assert(assigns<CmpiString, const CmpiData&>);
static_assert(converts<const char*, CmpiString>);
static_assert(converts<CmpiArrayIdx, CmpiString>);
static_assert(!makes<CmpiString, CMPIString*>);
static_assert(!makes<CmpiString, int>);
static_assert(!converts<CmpiString, const char*>);
static_assert(makes<CmpiString, const CmpiData&>);
static_assert(makes<CmpiInstance, const CmpiData&>);
static_assert(makes<CmpiDateTime, const CmpiData&>);

// Values from C types
static_assert(converts<int, CmpiData>);
static_assert(converts<bool, CmpiData>);
static_assert(converts<char, CmpiData>);
static_assert(converts<CMPISint8, CmpiData> && converts<CMPIUint8, CmpiData>);
static_assert(converts<CMPISint16, CmpiData> && converts<CMPIUint16, CmpiData>);
static_assert(converts<CMPISint32, CmpiData> && converts<CMPIUint32, CmpiData>);
static_assert(converts<CMPISint64, CmpiData> && converts<CMPIUint64, CmpiData>);
static_assert(converts<CMPIReal32, CmpiData> && converts<CMPIReal64, CmpiData>);
static_assert(converts<const char*, CmpiData>);
static_assert(!makes<CmpiData, long>);
static_assert(!makes<CmpiData, unsigned long>);
static_assert(!makes<CmpiData, std::size_t>);
static_assert(!makes<CmpiData, std::int64_t>);
static_assert(!makes<CmpiData, std::uint64_t>);
static_assert(!makes<CmpiData, std::time_t>);
static_assert(!makes<CmpiData, CMPIData>);
static_assert(converts<CMPIBoolean, CmpiBooleanData>);
static_assert(converts<CMPIChar16, CmpiCharData>);

// Values from and to objects
static_assert(converts<CmpiString, CmpiData>);
static_assert(converts<CmpiObjectPath, CmpiData>);
static_assert(converts<CmpiInstance, CmpiData>);
static_assert(converts<CmpiDateTime, CmpiData>);
static_assert(converts<CmpiArray, CmpiData>);
static_assert(converts<const CmpiData&, const char*>);
static_assert(converts<const CmpiData&, CmpiArray> && makes<CmpiArray, const CmpiData&>);
static_assert(assigns<CmpiArray, const CmpiData&>);
static_assert(converts<const CmpiData&, CmpiObjectPath> && makes<CmpiObjectPath, const CmpiData&>);
static_assert(assigns<CmpiObjectPath, const CmpiData&>);
static_assert(converts<const CmpiData&, CmpiInstance>);
static_assert(converts<const CmpiData&, CmpiDateTime>);

// Values to C types
static_assert(converts<const CmpiData&, CMPIUint32>);
static_assert(converts<const CmpiData&, int>);
static_assert(converts<const CmpiData&, unsigned char>);
static_assert(converts<const CmpiData&, unsigned short>);
static_assert(!converts<const CmpiData&, bool>);
static_assert(!makes<bool, const CmpiData&>);
static_assert(!converts<const CmpiData&, std::uint64_t>);
static_assert(!converts<const CmpiData&, long>);

// Elements of arrays
static_assert(std::is_same_v<decltype(std::declval<const CmpiArray&>()[0]), CmpiArrayIdx>);
static_assert(assigns<CmpiArrayIdx, const char*>);
static_assert(assigns<CmpiArrayIdx, CMPIUint16>);
static_assert(assigns<CmpiArrayIdx, CmpiString>);
static_assert(!assigns<CmpiArrayIdx, CmpiArrayIdx>);
static_assert(std::is_copy_constructible_v<CmpiArrayIdx>);
static_assert(!makes<CmpiArrayIdx, const CmpiArray&, CMPICount>);
static_assert(!converts<CmpiArrayIdx, CmpiData> && !makes<CmpiData, CmpiArrayIdx>);
static_assert(!converts<CmpiArrayIdx, CmpiArray>);
static_assert(converts<CmpiArrayIdx, CMPIUint8>);
static_assert(converts<CmpiArrayIdx, CMPIUint16>);
static_assert(converts<CmpiArrayIdx, const char*>);
static_assert(!converts<CmpiArrayIdx, bool>);

// Properties, keys and results
static_assert(TakesProperty<CmpiInstance, const char*>);
static_assert(TakesProperty<CmpiInstance, CMPIUint16>);
static_assert(TakesProperty<CmpiInstance, CmpiArray>);
static_assert(TakesProperty<CmpiInstance, CmpiDateTime>);
static_assert(TakesProperty<CmpiInstance, CmpiString>);
static_assert(TakesProperty<CmpiInstance, CmpiBooleanData>);
static_assert(!TakesProperty<CmpiInstance, std::uint64_t>);
static_assert(!TakesProperty<CmpiInstance, CmpiArrayIdx>);
static_assert(TakesKey<CmpiObjectPath, CmpiObjectPath>);
static_assert(TakesKey<CmpiObjectPath, const char*>);
static_assert(ReturnsData<CmpiResult, CmpiObjectPath>);
static_assert(ReturnsData<CmpiResult, CmpiInstance>);
static_assert(ReturnsData<CmpiResult, CMPIUint32>);

// What needs a server's object or arguments has no default
static_assert(!std::is_default_constructible_v<CmpiObjectPath>);
static_assert(!std::is_default_constructible_v<CmpiInstance>);
static_assert(!std::is_default_constructible_v<CmpiContext>);
static_assert(!std::is_default_constructible_v<CmpiStatus>);
static_assert(!std::is_default_constructible_v<CmpiResult>);
static_assert(!std::is_default_constructible_v<CmpiSelectExp>);
static_assert(!std::is_default_constructible_v<CmpiBroker>);
static_assert(!std::is_default_constructible_v<CmpiObject>);
static_assert(!std::is_default_constructible_v<CmpiBaseMI>);
static_assert(std::is_default_constructible_v<CmpiString>);
static_assert(std::is_default_constructible_v<CmpiArray>);
static_assert(std::is_default_constructible_v<CmpiArgs>);
static_assert(std::is_default_constructible_v<CmpiDateTime>);
static_assert(std::is_default_constructible_v<CmpiData>);
static_assert(std::is_default_constructible_v<CmpiEnumeration>);
static_assert(std::is_default_constructible_v<CmpiProviderBase>);

// From C objects
static_assert(converts<CMPIBroker*, CmpiBroker> && !makes<CmpiBroker, const CMPIBroker*>);
static_assert(converts<CMPIContext*, CmpiContext> && !makes<CmpiContext, const CMPIContext*>);
static_assert(converts<CMPIObjectPath*, CmpiObjectPath> && !makes<CmpiObjectPath, const CMPIObjectPath*>);
static_assert(converts<const CMPIDateTime*, CmpiDateTime>);
static_assert(!makes<CmpiInstance, const CMPIInstance*>);
static_assert(!makes<CmpiSelectExp, const CMPISelectExp*>);
static_assert(!makes<CmpiResult, CMPIResult*>);
static_assert(!makes<CmpiArgs, CMPIArgs*>);
static_assert(!makes<CmpiEnumeration, CMPIEnumeration*>);
static_assert(!makes<CmpiArray, CMPIArray*>);
static_assert(converts<CmpiObjectPath, CmpiInstance>);
static_assert(converts<const char*, CmpiDateTime>);
static_assert(makes<CmpiDateTime, unsigned, bool>);

// To C objects
static_assert(GivesItsServerObject<CmpiBroker>);
static_assert(GivesItsServerObject<CmpiContext>);
static_assert(GivesItsServerObject<CmpiObjectPath>);
static_assert(GivesItsServerObject<CmpiDateTime>);
static_assert(!GivesItsServerObject<CmpiInstance>);
static_assert(!GivesItsServerObject<CmpiResult>);
static_assert(!GivesItsServerObject<CmpiArgs>);
static_assert(!GivesItsServerObject<CmpiEnumeration>);
static_assert(!GivesItsServerObject<CmpiSelectExp>);
static_assert(!GivesItsServerObject<CmpiArray>);
static_assert(!GivesItsServerObject<CmpiString>);

// Classes of a provider's own reach what is protected
struct InstanceAccess : CmpiInstance {
    explicit InstanceAccess(const CmpiInstance& instance) : CmpiInstance(instance) {}
    using CmpiInstance::getEnc;
};
struct ArgsAccess : CmpiArgs {
    explicit ArgsAccess(const CmpiArgs& args) : CmpiArgs(args) {}
    using CmpiArgs::getEnc;
};
struct ResultAccess : CmpiResult {
    explicit ResultAccess(const CmpiResult& result) : CmpiResult(result) {}
    using CmpiResult::getEnc;
};
struct EnumerationAccess : CmpiEnumeration {
    explicit EnumerationAccess(const CmpiEnumeration& enumeration) : CmpiEnumeration(enumeration) {}
    using CmpiEnumeration::getEnc;
};
struct SelectExpAccess : CmpiSelectExp {
    explicit SelectExpAccess(const CmpiSelectExp& filter) : CmpiSelectExp(filter) {}
    using CmpiSelectExp::getEnc;
};
struct ArrayAccess : CmpiArray {
    explicit ArrayAccess(const CmpiArray& array) : CmpiArray(array) {}
    CMPIArray* plain() const { return static_cast<CMPIArray*>(enc); }
};
struct DataAccess : CmpiData {
    explicit DataAccess(const CmpiData& data) : CmpiData(data) {}
    const CMPIData& plain() const { return _data; }
};
struct StatusAccess : CmpiStatus {
    explicit StatusAccess(const CmpiStatus& status) : CmpiStatus(status) {}
    const CMPIStatus& plain() const { return st; }
};
static_assert(GivesItsServerObject<InstanceAccess> && GivesItsServerObject<ArgsAccess>);
static_assert(GivesItsServerObject<ResultAccess> && GivesItsServerObject<EnumerationAccess>);
static_assert(GivesItsServerObject<SelectExpAccess>);

// Statuses
static_assert(converts<CMPIrc, CmpiStatus>);
static_assert(converts<CMPIStatus, CmpiStatus>);
static_assert(makes<CmpiStatus, CMPIrc, const char*>);
static_assert(!makes<CmpiStatus, int>);
static_assert(!converts<CmpiStatus, bool>);
static_assert(GivesItsMessageAsConst<CmpiStatus>);
static_assert(!GivesItsPlainStatus<CmpiStatus>);

// Interfaces
static_assert(std::has_virtual_destructor_v<CmpiBaseMI>);
static_assert(!std::is_polymorphic_v<CmpiObject> && !std::is_polymorphic_v<CmpiData>);
static_assert(std::is_base_of_v<CmpiBaseMI, CmpiInstanceMI> && std::is_base_of_v<CmpiBaseMI, CmpiAssociationMI>);
static_assert(std::is_base_of_v<CmpiBaseMI, CmpiMethodMI> && std::is_base_of_v<CmpiBaseMI, CmpiPropertyMI>);
static_assert(std::is_base_of_v<CmpiBaseMI, CmpiIndicationMI>);

struct FourInterfaces : CmpiInstanceMI, CmpiAssociationMI, CmpiIndicationMI, CmpiMethodMI {
    FourInterfaces(const CmpiBroker& server, const CmpiContext& context)
        : CmpiBaseMI(server, context), CmpiInstanceMI(server, context), CmpiAssociationMI(server, context),
          CmpiIndicationMI(server, context), CmpiMethodMI(server, context) {}
};
static_assert(converts<FourInterfaces*, CmpiBaseMI*>, "one base, not four");

// The drivers are the slots of the C tables
template <typename Slot, typename Driver>
constexpr bool fits = std::is_same_v<Slot, Driver>;

using Instance = CMPIInstanceMIFT;
static_assert(fits<decltype(Instance::enumerateInstanceNames), decltype(&CmpiInstanceMI::driveEnumInstanceNames)>);
static_assert(fits<decltype(Instance::enumerateInstances), decltype(&CmpiInstanceMI::driveEnumInstances)>);
static_assert(fits<decltype(Instance::getInstance), decltype(&CmpiInstanceMI::driveGetInstance)>);
static_assert(fits<decltype(Instance::createInstance), decltype(&CmpiInstanceMI::driveCreateInstance)>);
static_assert(fits<decltype(Instance::modifyInstance), decltype(&CmpiInstanceMI::driveSetInstance)>);
static_assert(fits<decltype(Instance::deleteInstance), decltype(&CmpiInstanceMI::driveDeleteInstance)>);
static_assert(fits<decltype(Instance::execQuery), decltype(&CmpiInstanceMI::driveExecQuery)>);

using Association = CMPIAssociationMIFT;
static_assert(fits<decltype(Association::associators), decltype(&CmpiAssociationMI::driveAssociators)>);
static_assert(fits<decltype(Association::associatorNames), decltype(&CmpiAssociationMI::driveAssociatorNames)>);
static_assert(fits<decltype(Association::references), decltype(&CmpiAssociationMI::driveReferences)>);
static_assert(fits<decltype(Association::referenceNames), decltype(&CmpiAssociationMI::driveReferenceNames)>);

static_assert(fits<decltype(CMPIMethodMIFT::invokeMethod), decltype(&CmpiMethodMI::driveInvokeMethod)>);
static_assert(fits<decltype(CMPIPropertyMIFT::setProperty), decltype(&CmpiPropertyMI::driveSetProperty)>);
static_assert(fits<decltype(CMPIPropertyMIFT::getProperty), decltype(&CmpiPropertyMI::driveGetProperty)>);

using Indication = CMPIIndicationMIFT;
static_assert(fits<decltype(Indication::authorizeFilter), decltype(&CmpiIndicationMI::driveAuthorizeFilter)>);
static_assert(fits<decltype(Indication::mustPoll), decltype(&CmpiIndicationMI::driveMustPoll)>);
static_assert(fits<decltype(Indication::activateFilter), decltype(&CmpiIndicationMI::driveActivateFilter)>);
static_assert(fits<decltype(Indication::deActivateFilter), decltype(&CmpiIndicationMI::driveDeActivateFilter)>);
static_assert(fits<decltype(Indication::enableIndications), decltype(&CmpiIndicationMI::driveEnableIndications)>);
static_assert(fits<decltype(Indication::disableIndications), decltype(&CmpiIndicationMI::driveDisableIndications)>);

TEST(CompileRules, PlainValuesAreReachedThroughClassesOfAProvidersOwn) {
    EXPECT_EQ(DataAccess(CmpiData(5)).plain().value.sint32, 5);
    EXPECT_EQ(StatusAccess(CmpiStatus(CMPI_RC_ERR_FAILED)).plain().rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(ArrayAccess(CmpiArray()).plain(), nullptr);
}

} // namespace
