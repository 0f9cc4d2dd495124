// One CIM value with its type and state.
#pragma once

#include "CmpiArray.h"
#include "CmpiDateTime.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// A value on its way to or from the server. Copies share what the value points to.
///
/// Conversions and getters look at the type alone, never at the state: they demand exactly the type that they name and
/// throw CmpiStatus(CMPI_RC_ERR_TYPE_MISMATCH) for every other one, so for an absent item too. A null value of the
/// right type gives 0, or an object that isNull().
class CMPI_PROVIDER_LINKAGE CmpiData {
    friend class CmpiInstance;
    friend class CmpiObjectPath;
    friend class CmpiResult;
    friend class CmpiArgs;
    friend class CmpiArrayIdx;
    friend class CmpiContext;
    friend class CmpiPropertyMI;
    friend class CmpiEnumeration;

public:
    /// A null value of no type.
    CmpiData() : _data{CMPI_null, CMPI_nullValue, {}} {}

    /// A sint8.
    CmpiData(const CMPISint8 value) : CmpiData(CMPI_sint8, CMPI_goodValue) { _data.value.sint8 = value; }

    /// A sint16.
    CmpiData(const CMPISint16 value) : CmpiData(CMPI_sint16, CMPI_goodValue) { _data.value.sint16 = value; }

    /// A sint32.
    CmpiData(const CMPISint32 value) : CmpiData(CMPI_sint32, CMPI_goodValue) { _data.value.sint32 = value; }

    /// A sint64.
    CmpiData(const CMPISint64 value) : CmpiData(CMPI_sint64, CMPI_goodValue) { _data.value.sint64 = value; }

    /// A uint8, so for a CMPIBoolean too: booleans need CmpiBooleanData.
    CmpiData(const CMPIUint8 value) : CmpiData(CMPI_uint8, CMPI_goodValue) { _data.value.uint8 = value; }

    /// A uint16, so for a CMPIChar16 too: characters need CmpiCharData.
    CmpiData(const CMPIUint16 value) : CmpiData(CMPI_uint16, CMPI_goodValue) { _data.value.uint16 = value; }

    /// A uint32.
    CmpiData(const CMPIUint32 value) : CmpiData(CMPI_uint32, CMPI_goodValue) { _data.value.uint32 = value; }

    /// A uint64.
    CmpiData(const CMPIUint64 value) : CmpiData(CMPI_uint64, CMPI_goodValue) { _data.value.uint64 = value; }

    /// A real32.
    CmpiData(const CMPIReal32 value) : CmpiData(CMPI_real32, CMPI_goodValue) { _data.value.real32 = value; }

    /// A real64.
    CmpiData(const CMPIReal64 value) : CmpiData(CMPI_real64, CMPI_goodValue) { _data.value.real64 = value; }

    /// A string, shared. Good also for a null string.
    CmpiData(const CmpiString& value) : CmpiData(CMPI_string, CMPI_goodValue) { _data.value.string = value.getEnc(); }

    /// A text of type chars. Only the pointer is kept: the text must live until this value has been used.
    CmpiData(const char* value) : CmpiData(CMPI_chars, CMPI_goodValue) { _data.value.chars = const_cast<char*>(value); }

    /// A reference, shared. Null for a null path.
    CmpiData(const CmpiObjectPath& value) : CmpiData(CMPI_ref, stateOf(value)) { _data.value.ref = value.getEnc(); }

    /// An embedded instance, shared. Null for a null instance.
    CmpiData(const CmpiInstance& value) : CmpiData(CMPI_instance, stateOf(value)) { _data.value.inst = value.getEnc(); }

    /// A date, shared.
    CmpiData(const CmpiDateTime& value) : CmpiData(CMPI_dateTime, CMPI_goodValue) {
        _data.value.dateTime = value.getEnc();
    }

    /// An array, shared; the server is asked for the element type. A null array gives a null value of no type.
    CmpiData(const CmpiArray& value);

    /// The same value, sharing what it points to.
    CmpiData(const CmpiData& original) : _data(original._data) {}

    /// Releases nothing.
    ~CmpiData() {}

    /// Takes over the other value, sharing what it points to.
    CmpiData& operator=(const CmpiData& other) {
        _data = other._data;
        return *this;
    }

    /// Non-zero for a null value (the state's bit, not 1).
    int isNullValue() const { return _data.state & CMPI_nullValue; }

    /// Non-zero if the server had no such item (the state's bit, not 1).
    int isNotFound() const { return _data.state & CMPI_notFound; }

    /// The type code; an array has CMPI_ARRAY beside its element type.
    CMPIType getType() const { return _data.type; }

    operator CmpiString() const { return getString(); }     ///< As getString().
    operator const char*() const { return getCString(); }   ///< As getCString().
    operator CmpiDateTime() const { return getDateTime(); } ///< As getDateTime().
    operator CMPISint8() const { return getSint8(); }       ///< As getSint8().
    operator CMPISint16() const { return getSint16(); }     ///< As getSint16().
    operator CMPISint32() const { return getSint32(); }     ///< As getSint32().
    operator CMPISint64() const { return getSint64(); }     ///< As getSint64().
    operator unsigned char() const {                        ///< A uint8, or a boolean.
        expectEither(CMPI_uint8, CMPI_boolean);
        return _data.value.uint8;
    }
    operator unsigned short() const { ///< A uint16, or a char16.
        expectEither(CMPI_uint16, CMPI_char16);
        return _data.value.uint16;
    }
    operator CMPIUint32() const { return getUint32(); }         ///< As getUint32().
    operator CMPIUint64() const { return getUint64(); }         ///< As getUint64().
    operator CMPIReal32() const { return getReal32(); }         ///< As getReal32().
    operator CMPIReal64() const { return getReal64(); }         ///< As getReal64().
    operator CmpiArray() const { return getArray(); }           ///< As getArray().
    operator CmpiInstance() const { return getInstance(); }     ///< As getInstance().
    operator CmpiObjectPath() const { return getObjectPath(); } ///< As getObjectPath().

    /// A boolean, or a uint8.
    CMPIBoolean getBoolean() const {
        expectEither(CMPI_boolean, CMPI_uint8);
        return _data.value.boolean;
    }
    /// A sint8.
    CMPISint8 getSint8() const {
        expect(CMPI_sint8);
        return _data.value.sint8;
    }
    /// A sint16.
    CMPISint16 getSint16() const {
        expect(CMPI_sint16);
        return _data.value.sint16;
    }
    /// A sint32.
    CMPISint32 getSint32() const {
        expect(CMPI_sint32);
        return _data.value.sint32;
    }
    /// A sint64.
    CMPISint64 getSint64() const {
        expect(CMPI_sint64);
        return _data.value.sint64;
    }
    /// A uint8.
    CMPIUint8 getUint8() const {
        expect(CMPI_uint8);
        return _data.value.uint8;
    }
    /// A uint16.
    CMPIUint16 getUint16() const {
        expect(CMPI_uint16);
        return _data.value.uint16;
    }
    /// A uint32.
    CMPIUint32 getUint32() const {
        expect(CMPI_uint32);
        return _data.value.uint32;
    }
    /// A uint64.
    CMPIUint64 getUint64() const {
        expect(CMPI_uint64);
        return _data.value.uint64;
    }
    /// A real32.
    CMPIReal32 getReal32() const {
        expect(CMPI_real32);
        return _data.value.real32;
    }
    /// A real64.
    CMPIReal64 getReal64() const {
        expect(CMPI_real64);
        return _data.value.real64;
    }
    /// A char16, or a uint16.
    CMPIChar16 getChar16() const {
        expectEither(CMPI_char16, CMPI_uint16);
        return _data.value.char16;
    }
    /// A string, shared with the server.
    CmpiString getString() const {
        expect(CMPI_string);
        return CmpiString(_data.value.string);
    }
    /// A text of type chars; a string of the server is none.
    const char* getCString() const {
        expect(CMPI_chars);
        return _data.value.chars;
    }
    /// A date, shared with the server.
    CmpiDateTime getDateTime() const {
        expect(CMPI_dateTime);
        return CmpiDateTime(_data.value.dateTime);
    }
    /// An array of any element type, shared with the server; a null array has size 0.
    CmpiArray getArray() const {
        expectArray();
        return CmpiArray(_data.value.array);
    }
    /// An embedded instance, shared with the server.
    CmpiInstance getInstance() const {
        expect(CMPI_instance);
        return CmpiInstance(_data.value.inst);
    }
    /// A reference, shared with the server.
    CmpiObjectPath getObjectPath() const {
        expect(CMPI_ref);
        return CmpiObjectPath(_data.value.ref);
    }

    /// Becomes that boolean.
    void setBoolean(const CMPIBoolean value) {
        become(CMPI_boolean);
        _data.value.boolean = value;
    }
    /// Becomes that sint8.
    void setSint8(const CMPISint8 value) {
        become(CMPI_sint8);
        _data.value.sint8 = value;
    }
    /// Becomes that sint16.
    void setSint16(const CMPISint16 value) {
        become(CMPI_sint16);
        _data.value.sint16 = value;
    }
    /// Becomes that sint32.
    void setSint32(const CMPISint32 value) {
        become(CMPI_sint32);
        _data.value.sint32 = value;
    }
    /// Becomes that sint64.
    void setSint64(const CMPISint64 value) {
        become(CMPI_sint64);
        _data.value.sint64 = value;
    }
    /// Becomes that uint8.
    void setUint8(const CMPIUint8 value) {
        become(CMPI_uint8);
        _data.value.uint8 = value;
    }
    /// Becomes that uint16.
    void setUint16(const CMPIUint16 value) {
        become(CMPI_uint16);
        _data.value.uint16 = value;
    }
    /// Becomes that uint32.
    void setUint32(const CMPIUint32 value) {
        become(CMPI_uint32);
        _data.value.uint32 = value;
    }
    /// Becomes that uint64.
    void setUint64(const CMPIUint64 value) {
        become(CMPI_uint64);
        _data.value.uint64 = value;
    }
    /// Becomes that real32.
    void setReal32(const CMPIReal32 value) {
        become(CMPI_real32);
        _data.value.real32 = value;
    }
    /// Becomes that real64.
    void setReal64(const CMPIReal64 value) {
        become(CMPI_real64);
        _data.value.real64 = value;
    }
    /// Becomes that char16.
    void setChar16(const CMPIChar16 value) {
        become(CMPI_char16);
        _data.value.char16 = value;
    }
    /// Becomes a copy of that string.
    void setString(const CmpiString value) {
        become(CMPI_string);
        _data.value.string = value.getEnc();
    }
    /// Becomes that text of type chars; only the pointer is kept.
    void setCString(const char* value) {
        become(CMPI_chars);
        _data.value.chars = const_cast<char*>(value);
    }
    /// Becomes a copy of that date.
    void setDateTime(const CmpiDateTime value) {
        become(CMPI_dateTime);
        _data.value.dateTime = value.getEnc();
    }
    /// Becomes that array, shared, or a null value of no type for a null array.
    void setArray(const CmpiArray value) { *this = CmpiData(value); }
    /// Becomes that embedded instance, shared.
    void setInstance(const CmpiInstance value) {
        become(CMPI_instance);
        _data.value.inst = value.getEnc();
    }
    /// Becomes that reference, shared.
    void setObjectPath(const CmpiObjectPath value) {
        become(CMPI_ref);
        _data.value.ref = value.getEnc();
    }

protected:
    constexpr CmpiData(const CMPIData& data) : _data(data) {}

    CMPIData _data;

private:
    CmpiData(CMPIType type, CMPIValueState state) : _data{type, state, {}} {}

    static CMPIValueState stateOf(const CmpiObject& object) {
        return object.isNull() ? CMPI_nullValue : CMPI_goodValue;
    }

    void become(CMPIType type) { _data = {type, CMPI_goodValue, {}}; }

    void expect(CMPIType type) const {
        if (_data.type != type) throwTypeMismatch();
    }
    void expectEither(CMPIType first, CMPIType second) const {
        if (_data.type != first && _data.type != second) throwTypeMismatch();
    }
    void expectArray() const {
        if ((_data.type & CMPI_ARRAY) == 0) throwTypeMismatch();
    }
    [[noreturn]] static void throwTypeMismatch();
};
