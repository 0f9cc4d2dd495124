// What CmpiInstanceMI.h alone brings: a provider that relies on more would not compile with other packages of the
// classes, and one that relies on this must compile with ours. Nothing else may be included before it.

#include "CmpiInstanceMI.h"

class CmpiArgs;
class CmpiSelectExp;
class CmpiBooleanData;
class CmpiCharData;

namespace {

template <typename T>
concept Complete = requires {
    sizeof(T);
};

static_assert(Complete<CmpiString> && Complete<CmpiStatus> && Complete<CmpiContext> && Complete<CmpiBroker>);
static_assert(Complete<CmpiObjectPath> && Complete<CmpiInstance> && Complete<CmpiResult> && Complete<CmpiData>);
static_assert(Complete<CmpiDateTime> && Complete<CmpiArray> && Complete<CmpiArrayIdx> && Complete<CmpiEnumeration>);
static_assert(!Complete<CmpiArgs> && !Complete<CmpiSelectExp>);
static_assert(!Complete<CmpiBooleanData> && !Complete<CmpiCharData>);

} // namespace
