// Values, dates, arrays and enumerations.

#include "CmpiArray.h"
#include "CmpiBooleanData.h"
#include "CmpiData.h"
#include "CmpiDateTime.h"
#include "CmpiEnumeration.h"
#include "CmpiProviderBase.h"
#include "checks.h"

constinit const CmpiBooleanData CmpiTrue(1);
constinit const CmpiBooleanData CmpiFalse(0);

CmpiData::CmpiData(const CmpiArray& value) : CmpiData() {
    CMPIArray* array = value.getEnc();
    if (!array) return;
    become(static_cast<CMPIType>(value.elementType() | CMPI_ARRAY));
    _data.value.array = array;
}

void CmpiData::throwTypeMismatch() { throw CmpiStatus(CMPI_RC_ERR_TYPE_MISMATCH); }

CmpiDateTime::CmpiDateTime() { enc = makeDateTime(CmpiProviderBase::requireBroker()); }

CmpiDateTime::CmpiDateTime(const CmpiDateTime& original) : CmpiObject() {
    CMPIUint64 microseconds = original.getDateTime();
    enc = makeDateTime(CmpiProviderBase::requireBroker(), microseconds, original.isInterval());
}

CmpiDateTime::CmpiDateTime(const char* text) { enc = makeDateTime(CmpiProviderBase::requireBroker(), text); }

CmpiDateTime::CmpiDateTime(const CMPIUint64 microseconds, const CmpiBoolean interval) {
    enc = makeDateTime(CmpiProviderBase::requireBroker(), microseconds, interval);
}

void* CmpiDateTime::makeDateTime(CMPIBroker* broker) {
    CMPIStatus status = noErrorYet;
    CMPIDateTime* date = offered(broker->eft->newDateTime)(broker, &status);
    throwOnError(status);
    return date;
}

void* CmpiDateTime::makeDateTime(CMPIBroker* broker, const char* text) {
    CMPIStatus status = noErrorYet;
    CMPIDateTime* date = offered(broker->eft->newDateTimeFromChars)(broker, text, &status);
    throwOnError(status);
    return date;
}

void* CmpiDateTime::makeDateTime(CMPIBroker* broker, const CMPIUint64 microseconds, const CmpiBoolean interval) {
    CMPIStatus status = noErrorYet;
    CMPIDateTime* date = offered(broker->eft->newDateTimeFromBinary)(broker, microseconds, interval, &status);
    throwOnError(status);
    return date;
}

CmpiBoolean CmpiDateTime::isInterval() const {
    if (!enc) throw CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE);
    CMPIStatus status = noErrorYet;
    CmpiBoolean interval = getEnc()->ft->isInterval(getEnc(), &status);
    throwOnError(status);
    return interval;
}

CMPIUint64 CmpiDateTime::getDateTime() const {
    if (!enc) throw CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE);
    CMPIStatus status = noErrorYet;
    CMPIUint64 microseconds = getEnc()->ft->getBinaryFormat(getEnc(), &status);
    throwOnError(status);
    return microseconds;
}

CmpiArray::CmpiArray(CMPICount max, CMPIType type) {
    CMPIBroker* broker = CmpiProviderBase::requireBroker();
    CMPIStatus status = noErrorYet;
    enc = broker->eft->newArray(broker, max, type, &status);
    throwOnError(status);
    if (!enc) return;
    knownSize = max;
    // Servers make what they like of an array of chars, and of a type that names an array itself.
    if (type != CMPI_chars && (type & CMPI_ARRAY) == 0) knownType = type;
}

CMPIType CmpiArray::elementType() const {
    return knownType != CMPI_null ? knownType : getEnc()->ft->getSimpleType(getEnc(), nullptr);
}

CMPICount CmpiArray::size() const {
    if (!enc) return 0;
    CMPIStatus status = noErrorYet;
    CMPICount count = getEnc()->ft->getSize(getEnc(), &status);
    throwOnError(status);
    return count;
}

CmpiArrayIdx CmpiArray::operator[](CMPICount index) const {
    if (index >= knownSize && index >= size()) throw CmpiStatus(CMPI_RC_ERR_NO_SUCH_PROPERTY);
    return CmpiArrayIdx(*this, index);
}

namespace {

// A CmpiData made of a plain C value cannot tell a boolean from a uint8 or a character from a uint16.
bool fits(CMPIType value, CMPIType element) {
    return value == element || (element == CMPI_boolean && value == CMPI_uint8) ||
           (element == CMPI_char16 && value == CMPI_uint16);
}

} // namespace

CmpiArrayIdx& CmpiArrayIdx::operator=(const CmpiData& value) {
    CMPIArray* array = ar.getEnc();
    CMPIType element = ar.elementType();
    if (!fits(value._data.type, element)) throw CmpiStatus(CMPI_RC_ERR_TYPE_MISMATCH);
    throwOnError(array->ft->setElementAt(array, idx, valueArgument(value._data), element));
    return *this;
}

CmpiData CmpiArrayIdx::getData() const {
    CMPIArray* array = ar.getEnc();
    CMPIStatus status = noErrorYet;
    CMPIData data = array->ft->getElementAt(array, idx, &status);
    throwOnError(status);
    return CmpiData(data);
}

CmpiArrayIdx::operator CmpiString() const { return getString(); }
CmpiArrayIdx::operator const char*() const { return getCString(); }
CmpiArrayIdx::operator CmpiDateTime() const { return getDateTime(); }
CmpiArrayIdx::operator CMPISint8() const { return getSint8(); }
CmpiArrayIdx::operator CMPISint16() const { return getSint16(); }
CmpiArrayIdx::operator CMPISint32() const { return getSint32(); }
CmpiArrayIdx::operator CMPISint64() const { return getSint64(); }
CmpiArrayIdx::operator unsigned char() const { return getUint8(); }
CmpiArrayIdx::operator unsigned short() const { return getUint16(); }
CmpiArrayIdx::operator CMPIUint32() const { return getUint32(); }
CmpiArrayIdx::operator CMPIUint64() const { return getUint64(); }
CmpiArrayIdx::operator CMPIReal32() const { return getReal32(); }
CmpiArrayIdx::operator CMPIReal64() const { return getReal64(); }
CmpiArrayIdx::operator CmpiInstance() const { return getInstance(); }
CmpiArrayIdx::operator CmpiObjectPath() const { return getObjectPath(); }

CMPIBoolean CmpiArrayIdx::getBoolean() const { return getData().getBoolean(); }
CMPISint8 CmpiArrayIdx::getSint8() const { return getData().getSint8(); }
CMPISint16 CmpiArrayIdx::getSint16() const { return getData().getSint16(); }
CMPISint32 CmpiArrayIdx::getSint32() const { return getData().getSint32(); }
CMPISint64 CmpiArrayIdx::getSint64() const { return getData().getSint64(); }
CMPIUint8 CmpiArrayIdx::getUint8() const { return getData().getUint8(); }
CMPIUint16 CmpiArrayIdx::getUint16() const { return getData().getUint16(); }
CMPIUint32 CmpiArrayIdx::getUint32() const { return getData().getUint32(); }
CMPIUint64 CmpiArrayIdx::getUint64() const { return getData().getUint64(); }
CMPIReal32 CmpiArrayIdx::getReal32() const { return getData().getReal32(); }
CMPIReal64 CmpiArrayIdx::getReal64() const { return getData().getReal64(); }
CMPIChar16 CmpiArrayIdx::getChar16() const { return getData().getChar16(); }
CmpiString CmpiArrayIdx::getString() const { return getData().getString(); }
const char* CmpiArrayIdx::getCString() const { return getData().getCString(); }
CmpiDateTime CmpiArrayIdx::getDateTime() const { return getData().getDateTime(); }
CmpiInstance CmpiArrayIdx::getInstance() const { return getData().getInstance(); }
CmpiObjectPath CmpiArrayIdx::getObjectPath() const { return getData().getObjectPath(); }

namespace {

CMPIEnumeration* requireEnumeration(CMPIEnumeration* enumeration) {
    if (!enumeration) throw CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return enumeration;
}

} // namespace

CmpiData CmpiEnumeration::getNext() {
    CMPIEnumeration* enumeration = requireEnumeration(getEnc());
    CMPIStatus status = noErrorYet;
    CMPIData data = enumeration->ft->getNext(enumeration, &status);
    throwOnError(status);
    return CmpiData(data);
}

CmpiBoolean CmpiEnumeration::hasNext() {
    CMPIEnumeration* enumeration = requireEnumeration(getEnc());
    CMPIStatus status = noErrorYet;
    CmpiBoolean more = enumeration->ft->hasNext(enumeration, &status);
    throwOnError(status);
    return more;
}

CmpiData CmpiEnumeration::toArray() {
    CMPIEnumeration* enumeration = requireEnumeration(getEnc());
    CMPIStatus status = noErrorYet;
    CMPIArray* array = enumeration->ft->toArray(enumeration, &status);
    throwOnError(status);
    return CmpiData(CmpiArray(array));
}
