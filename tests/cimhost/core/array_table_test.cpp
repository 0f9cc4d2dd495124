#include "broker_fixture.h"

namespace {

class ArrayTable : public BrokerTest {
protected:
    CMPIStatus setAt(CMPIArray* object, CMPICount index, const void* variable, CMPIType type) {
        return object->ft->setElementAt(object, index, at(variable), type);
    }
    CMPIData elementAt(const CMPIArray* object, CMPICount index, CMPIrc expected = CMPI_RC_OK) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        const CMPIData data = object->ft->getElementAt(object, index, &status);
        EXPECT_EQ(status.rc, expected);
        return data;
    }
};

} // namespace

TEST_F(ArrayTable, SizeAndTypeAreAsMade) {
    for (const CMPIType type : Types{CMPI_boolean, CMPI_char16, CMPI_uint8, CMPI_uint64, CMPI_sint32, CMPI_real64,
                                     CMPI_string, CMPI_chars, CMPI_dateTime, CMPI_ref, CMPI_instance}) {
        const CMPIArray* made = array(3, type);
        ASSERT_NE(made, nullptr) << type;
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        EXPECT_EQ(made->ft->getSimpleType(made, &status), type);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(made->ft->getSize(made, &status), 3U);
    }
}

TEST_F(ArrayTable, TypesWithoutArraysAreRefused) {
    for (const CMPIType type :
         Types{CMPI_null, CMPI_args, CMPI_class, CMPI_filter, CMPI_enumeration, CMPI_ptr, CMPI_uint8A}) {
        CMPIStatus status{};
        EXPECT_EQ(cmpi->eft->newArray(cmpi, 1, type, &status), nullptr) << type;
        EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    }
}

TEST_F(ArrayTable, AnEnormousArrayIsRefused) {
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newArray(cmpi, 0xffffffffU, CMPI_uint64, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
}

TEST_F(ArrayTable, AnElementNeverSetIsNull) {
    const CMPIArray* made = array(2, CMPI_uint16);
    const CMPIData data = elementAt(made, 1);
    EXPECT_EQ(data.state, CMPI_nullValue);
    EXPECT_EQ(data.type, CMPI_uint16);
}

TEST_F(ArrayTable, AnIndexBeyondTheEndIsRc12) {
    CMPIArray* made = array(2, CMPI_uint16);
    const CMPIUint16 number = 7;
    EXPECT_RC(setAt(made, 2, &number, CMPI_uint16), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(elementAt(made, 2, CMPI_RC_ERR_NO_SUCH_PROPERTY).state, absentState);
    EXPECT_EQ(elementAt(array(0, CMPI_uint16), 0, CMPI_RC_ERR_NO_SUCH_PROPERTY).state, absentState);
}

TEST_F(ArrayTable, AnElementOfAnotherTypeIsRc13WithAMessage) {
    CMPIArray* made = array(1, CMPI_uint16);
    const CMPIUint32 number = 7;
    const CMPIStatus status = setAt(made, 0, &number, CMPI_uint32);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_NE(textOf(status.msg), "");
    EXPECT_EQ(elementAt(made, 0).state, CMPI_nullValue);
    EXPECT_RC(setAt(array(1, CMPI_string), 0, "text", CMPI_chars), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(ArrayTable, TheNullTypeMakesANullElement) {
    CMPIArray* made = array(2, CMPI_uint16);
    const CMPIUint16 number = 7;
    EXPECT_RC(setAt(made, 0, &number, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(elementAt(made, 0).value.uint16, 7);
    EXPECT_RC(setAt(made, 0, nullptr, CMPI_null), CMPI_RC_OK);
    EXPECT_EQ(elementAt(made, 0).state, CMPI_nullValue);
    EXPECT_RC(setAt(made, 1, &number, CMPI_uint16), CMPI_RC_OK);
    EXPECT_RC(setAt(made, 1, nullptr, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(elementAt(made, 1).state, CMPI_nullValue);
}

TEST_F(ArrayTable, EveryNumberComesBackAsItWasSet) {
    const CMPIValue value = [] {
        CMPIValue filled{};
        filled.uint64 = 0x8182838485868788ULL;
        return filled;
    }();
    for (const CMPIType type : Types{CMPI_uint8, CMPI_uint16, CMPI_uint32, CMPI_uint64, CMPI_sint8, CMPI_sint16,
                                     CMPI_sint32, CMPI_sint64, CMPI_char16, CMPI_real64}) {
        CMPIArray* made = array(3, type);
        EXPECT_RC(setAt(made, 1, &value, type), CMPI_RC_OK);
        const CMPIData data = elementAt(made, 1);
        EXPECT_EQ(data.type, type);
        EXPECT_EQ(data.value.uint8, value.uint8);
        EXPECT_EQ(elementAt(made, 0).state, CMPI_nullValue) << "a neighbour was touched";
        EXPECT_EQ(elementAt(made, 2).state, CMPI_nullValue) << "a neighbour was touched";
    }
    CMPIArray* longs = array(1, CMPI_sint64);
    setAt(longs, 0, &value, CMPI_sint64);
    EXPECT_EQ(elementAt(longs, 0).value.sint64, value.sint64);
}

TEST_F(ArrayTable, TextsGivenAsCharsAreCopied) {
    CMPIArray* made = array(2, CMPI_chars);
    char text[] = "first";
    EXPECT_RC(setAt(made, 0, text, CMPI_chars), CMPI_RC_OK);
    text[0] = 'x';
    const CMPIData data = elementAt(made, 0);
    EXPECT_EQ(data.type, CMPI_string);
    EXPECT_EQ(textOf(data.value.string), "first");
    EXPECT_EQ(made->ft->getSimpleType(made, nullptr), CMPI_chars);
}

TEST_F(ArrayTable, ObjectsAreStoredAsTheyAreAtThatMoment) {
    CMPIArray* made = array(1, CMPI_ref);
    CMPIObjectPath* thing = path();
    set(thing, "Name", "before", CMPI_chars);
    EXPECT_RC(setAt(made, 0, &thing, CMPI_ref), CMPI_RC_OK);
    set(thing, "Name", "after", CMPI_chars);
    EXPECT_EQ(textOf(get(elementAt(made, 0).value.ref, "Name").value.string), "before");

    CMPIObjectPath* read = elementAt(made, 0).value.ref;
    set(read, "Name", "of the reader", CMPI_chars);
    EXPECT_EQ(textOf(get(elementAt(made, 0).value.ref, "Name").value.string), "before");
}

TEST_F(ArrayTable, BrokenElementsAndArraysAreRc60) {
    CMPIArray* strings = array(1, CMPI_string);
    CMPIString broken = *string("x");
    broken.hdl = nullptr;
    const CMPIString* pointer = &broken;
    EXPECT_RC(setAt(strings, 0, &pointer, CMPI_string), CMPI_RC_ERR_INVALID_HANDLE);

    CMPIArray brokenArray = *strings;
    brokenArray.hdl = nullptr;
    CMPIStatus status{};
    EXPECT_EQ(brokenArray.ft->getSize(&brokenArray, &status), 0U);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    brokenArray.ft->getElementAt(&brokenArray, 0, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(brokenArray.ft->setElementAt(&brokenArray, 0, nullptr, CMPI_null), CMPI_RC_ERR_INVALID_HANDLE);
}
