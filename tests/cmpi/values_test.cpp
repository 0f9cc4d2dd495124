// Strings, statuses, dates, values and arrays, as a provider uses them.

#include "CmpiArray.h"
#include "CmpiBooleanData.h"
#include "CmpiCharData.h"
#include "CmpiData.h"
#include "CmpiDateTime.h"
#include "CmpiStatus.h"
#include "CmpiString.h"
#include "wrapper_test.h"

#include <cstdint>

namespace {

class StringTest : public WrapperTest {};
class StatusTest : public WrapperTest {};
class DateTimeTest : public WrapperTest {};
class DataTest : public WrapperTest {};
class ArrayTest : public WrapperTest {};

const char* textIn(const CmpiData& data) {
    return static_cast<const char*>(ServerData(data).plain().value.string->hdl);
}

CmpiArray arrayOfTheServer(CMPIArray* array) {
    CMPIValue value = {};
    value.array = array;
    return ServerData(dataOf(CMPI_ARRAY, value)).getArray();
}

// Strings

TEST_F(StringTest, TextGoesToTheServerAndComesBack) {
    CmpiString string("adapter");
    EXPECT_STREQ(string.charPtr(), "adapter");
    EXPECT_EQ(server.count("newString"), 1);
}

TEST_F(StringTest, TextOutlivesItsString) {
    const char* text = CmpiString("adapter").charPtr();
    EXPECT_STREQ(text, "adapter");
}

TEST_F(StringTest, CopyIsAServerStringOfItsOwn) {
    CmpiString original("adapter");
    CmpiString copy(original); // NOLINT(performance-unnecessary-copy-initialization): it is what is tested
    EXPECT_STREQ(copy.charPtr(), "adapter");
    EXPECT_NE(copy.charPtr(), original.charPtr());
    EXPECT_EQ(server.count("newString"), 2);
}

TEST_F(StringTest, AssignmentSharesTheServerString) {
    CmpiString original("adapter");
    CmpiString other;
    other = original;
    EXPECT_EQ(other.charPtr(), original.charPtr());
    EXPECT_EQ(server.count("newString"), 1);
}

TEST_F(StringTest, NullStringHasNoText) {
    EXPECT_EQ(CmpiString().charPtr(), nullptr);
    EXPECT_EQ(CmpiString(static_cast<const char*>(nullptr)).charPtr(), nullptr);
    CmpiString null;
    EXPECT_EQ(CmpiString(null).charPtr(), nullptr);
}

TEST_F(StringTest, ComparesWithAndWithoutCase) {
    CmpiString string("Adapter");
    EXPECT_TRUE(string.equals("Adapter"));
    EXPECT_FALSE(string.equals("adapter"));
    EXPECT_TRUE(string.equals(CmpiString("Adapter")));
    EXPECT_FALSE(string.equals(CmpiString("adapter")));
    EXPECT_TRUE(string.equalsIgnoreCase("aDAPTER"));
    EXPECT_FALSE(string.equalsIgnoreCase("aDAPTERS"));
    EXPECT_TRUE(string.equalsIgnoreCase(CmpiString("ADAPTER")));
}

TEST_F(StringTest, NullEqualsNullOnly) {
    CmpiString null;
    EXPECT_TRUE(null.equals(CmpiString()));
    EXPECT_FALSE(null.equals("adapter"));
    EXPECT_FALSE(CmpiString("adapter").equalsIgnoreCase(null));
}

TEST_F(StringTest, ServerWithoutMemoryGivesANullString) {
    server.failWith("newString", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(CmpiString("adapter").charPtr(), nullptr);
}

// Statuses

TEST_F(StatusTest, MessageIsAServerString) {
    CmpiStatus status(CMPI_RC_ERR_NOT_FOUND, "no such adapter");
    EXPECT_EQ(status.rc(), CMPI_RC_ERR_NOT_FOUND);
    EXPECT_STREQ(status.msg(), "no such adapter");
    EXPECT_EQ(server.count("newString"), 1);
}

TEST_F(StatusTest, CopySharesTheMessage) {
    CmpiStatus status(CMPI_RC_ERR_NOT_FOUND, "no such adapter");
    CmpiStatus copy(status);
    EXPECT_EQ(copy.msg(), status.msg());
    EXPECT_EQ(server.count("newString"), 1);
}

TEST_F(StatusTest, CodeAloneHasNoMessage) {
    CmpiStatus status(CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.rc(), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg(), nullptr);
}

TEST_F(StatusTest, PlainStatusIsTakenAsItIs) {
    CMPIString* message = plainString("from the server");
    CmpiStatus status(CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, message});
    EXPECT_EQ(status.rc(), CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(status.msg(), message->hdl);
}

TEST_F(StatusTest, WithoutMemoryForTheMessageThereIsNone) {
    server.failWith("newString", CMPI_RC_ERR_FAILED);
    CmpiStatus status(CMPI_RC_ERR_NOT_FOUND, "no such adapter");
    EXPECT_EQ(status.rc(), CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(status.msg(), nullptr);
}

// Dates

TEST_F(DateTimeTest, CurrentTimeComesFromTheServer) {
    EXPECT_EQ(CmpiDateTime().getDateTime(), 1u);
    EXPECT_EQ(server.count("newDateTime"), 1);
}

TEST_F(DateTimeTest, BinaryFormKeepsMicrosecondsAndInterval) {
    CmpiDateTime interval(90'000'000, true);
    EXPECT_EQ(interval.getDateTime(), 90'000'000u);
    EXPECT_TRUE(interval.isInterval());
    EXPECT_FALSE(CmpiDateTime(5, 0).isInterval());
}

TEST_F(DateTimeTest, TextGoesToTheServer) {
    CmpiDateTime date("20240229120000.000000+000");
    EXPECT_EQ(server.lastCallOf("newDateTimeFromChars").text, "20240229120000.000000+000");
    EXPECT_EQ(date.getDateTime(), 2u);
}

TEST_F(DateTimeTest, BadTextIsThrown) {
    server.failWith("newDateTimeFromChars", CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(thrownBy([] { CmpiDateTime("yesterday"); }), CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(DateTimeTest, CopyIsAServerDateOfItsOwn) {
    CmpiDateTime original(7, true);
    CmpiDateTime copy(original); // NOLINT(performance-unnecessary-copy-initialization): it is what is tested
    EXPECT_NE(copy.getEnc(), original.getEnc());
    EXPECT_EQ(copy.getDateTime(), 7u);
    EXPECT_TRUE(copy.isInterval());
    EXPECT_EQ(server.count("newDateTimeFromBinary"), 2);
}

TEST_F(DateTimeTest, AssignmentSharesTheServerDate) {
    CmpiDateTime original(7, true);
    CmpiDateTime other(8, false);
    other = original;
    EXPECT_EQ(other.getEnc(), original.getEnc());
}

TEST_F(DateTimeTest, NullDateIsAnInvalidHandle) {
    CmpiDateTime null(static_cast<const CMPIDateTime*>(nullptr));
    EXPECT_EQ(thrownBy([&] { null.getDateTime(); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([&] { null.isInterval(); }), CMPI_RC_ERR_INVALID_HANDLE);
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it is what is tested
    EXPECT_EQ(thrownBy([&] { CmpiDateTime copy(null); }), CMPI_RC_ERR_INVALID_HANDLE);
}

// Values

TEST_F(DataTest, TypeFollowsTheCType) {
    EXPECT_EQ(CmpiData().getType(), CMPI_null);
    EXPECT_EQ(CmpiData(CMPISint8(1)).getType(), CMPI_sint8);
    EXPECT_EQ(CmpiData(CMPISint16(1)).getType(), CMPI_sint16);
    EXPECT_EQ(CmpiData(CMPISint32(1)).getType(), CMPI_sint32);
    EXPECT_EQ(CmpiData(CMPISint64(1)).getType(), CMPI_sint64);
    EXPECT_EQ(CmpiData(CMPIUint8(1)).getType(), CMPI_uint8);
    EXPECT_EQ(CmpiData(CMPIUint16(1)).getType(), CMPI_uint16);
    EXPECT_EQ(CmpiData(CMPIUint32(1)).getType(), CMPI_uint32);
    EXPECT_EQ(CmpiData(CMPIUint64(1)).getType(), CMPI_uint64);
    EXPECT_EQ(CmpiData(CMPIReal32(1)).getType(), CMPI_real32);
    EXPECT_EQ(CmpiData(CMPIReal64(1)).getType(), CMPI_real64);
    EXPECT_EQ(CmpiData("text").getType(), CMPI_chars);
    EXPECT_EQ(CmpiData(CmpiString("text")).getType(), CMPI_string);
    EXPECT_EQ(CmpiData(CmpiDateTime(1, 0)).getType(), CMPI_dateTime);
    EXPECT_EQ(CmpiData(CmpiObjectPath("root", "Class")).getType(), CMPI_ref);
    EXPECT_EQ(CmpiData(ServerInstance(plainInstance(nullptr))).getType(), CMPI_instance);
    EXPECT_EQ(CmpiData(CmpiArray(1, CMPI_uint16)).getType(), CMPI_uint16A);
    EXPECT_EQ(CmpiBooleanData(1).getType(), CMPI_boolean);
    EXPECT_EQ(CmpiCharData('c').getType(), CMPI_char16);
}

TEST_F(DataTest, WhatLooksLikeANarrowTypeIsAnInt) {
    EXPECT_EQ(CmpiData(0).getType(), CMPI_sint32);
    EXPECT_EQ(CmpiData(5).getType(), CMPI_sint32);
    EXPECT_EQ(CmpiData(true).getType(), CMPI_sint32);
    EXPECT_EQ(CmpiData('c').getType(), CMPI_sint32);
    EXPECT_EQ(CmpiData(CMPIBoolean(1)).getType(), CMPI_uint8);
    EXPECT_EQ(CmpiData(CMPIChar16(1)).getType(), CMPI_uint16);
}

TEST_F(DataTest, NumbersKeepTheirValue) {
    EXPECT_EQ(CmpiData(CMPISint8(-8)).getSint8(), -8);
    EXPECT_EQ(CmpiData(CMPISint16(-16)).getSint16(), -16);
    EXPECT_EQ(CmpiData(CMPISint32(-32)).getSint32(), -32);
    EXPECT_EQ(CmpiData(CMPISint64(-64)).getSint64(), -64);
    EXPECT_EQ(CmpiData(CMPIUint8(8)).getUint8(), 8u);
    EXPECT_EQ(CmpiData(CMPIUint16(16)).getUint16(), 16u);
    EXPECT_EQ(CmpiData(CMPIUint32(32)).getUint32(), 32u);
    EXPECT_EQ(CmpiData(CMPIUint64(UINT64_MAX)).getUint64(), UINT64_MAX);
    EXPECT_EQ(CmpiData(CMPIReal32(0.5f)).getReal32(), 0.5f);
    EXPECT_EQ(CmpiData(CMPIReal64(0.25)).getReal64(), 0.25);
    EXPECT_EQ(CmpiCharData('c').getChar16(), 'c');
}

TEST_F(DataTest, OperatorsGiveTheSame) {
    CMPISint8 sint8 = CmpiData(CMPISint8(-8));
    CMPISint16 sint16 = CmpiData(CMPISint16(-16));
    int sint32 = CmpiData(-32);
    CMPISint64 sint64 = CmpiData(CMPISint64(-64));
    CMPIUint32 uint32 = CmpiData(CMPIUint32(32));
    CMPIUint64 uint64 = CmpiData(CMPIUint64(64));
    CMPIReal32 real32 = CmpiData(CMPIReal32(0.5f));
    CMPIReal64 real64 = CmpiData(CMPIReal64(0.25));
    EXPECT_EQ(sint8, -8);
    EXPECT_EQ(sint16, -16);
    EXPECT_EQ(sint32, -32);
    EXPECT_EQ(sint64, -64);
    EXPECT_EQ(uint32, 32u);
    EXPECT_EQ(uint64, 64u);
    EXPECT_EQ(real32, 0.5f);
    EXPECT_EQ(real64, 0.25);
}

TEST_F(DataTest, NumbersAreNotWidened) {
    CmpiData data(CMPIUint32(32));
    EXPECT_EQ(thrownBy([&] {
                  CMPIUint64 wide = data;
                  return wide;
              }),
              CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { data.getUint64(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { data.getSint32(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(messageThrownBy([&] { data.getSint32(); }), "(none)");
}

TEST_F(DataTest, ByteOperatorAlsoTakesBooleansButTheGetterDoesNot) {
    unsigned char fromBoolean = CmpiTrue;
    unsigned char fromUint8 = CmpiData(CMPIUint8(9));
    EXPECT_EQ(fromBoolean, 1);
    EXPECT_EQ(fromUint8, 9);
    EXPECT_EQ(thrownBy([] { CmpiTrue.getUint8(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CmpiData(CMPIUint8(9)).getBoolean(), 9);
    EXPECT_EQ(CmpiFalse.getBoolean(), 0);
}

TEST_F(DataTest, ShortOperatorAlsoTakesCharactersButTheGetterDoesNot) {
    unsigned short fromCharacter = CmpiCharData('c');
    unsigned short fromUint16 = CmpiData(CMPIUint16(9));
    EXPECT_EQ(fromCharacter, 'c');
    EXPECT_EQ(fromUint16, 9);
    EXPECT_EQ(thrownBy([] { CmpiCharData('c').getUint16(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CmpiData(CMPIUint16(9)).getChar16(), 9);
}

TEST_F(DataTest, StringIsSharedOnTheWayInAndOut) {
    CmpiString string("adapter");
    CmpiData data(string);
    CmpiString back = data;
    EXPECT_EQ(back.charPtr(), string.charPtr());
    EXPECT_EQ(server.count("newString"), 1);
}

TEST_F(DataTest, TextKeepsThePointer) {
    const char* text = "adapter";
    CmpiData data(text);
    const char* back = data;
    EXPECT_EQ(back, text);
    EXPECT_EQ(data.getCString(), text);
    EXPECT_EQ(server.count("newString"), 0);
}

TEST_F(DataTest, TextAndServerStringAreNotTheSameType) {
    EXPECT_EQ(thrownBy([] { CmpiData("adapter").getString(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([] { CmpiData(CmpiString("adapter")).getCString(); }), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(DataTest, ObjectsAreShared) {
    CmpiObjectPath path("root", "Class");
    CmpiObjectPath pathBack = CmpiData(path);
    EXPECT_EQ(pathBack.getEnc(), path.getEnc());

    ServerInstance instance(plainInstance(nullptr));
    CmpiInstance instanceBack = CmpiData(instance);
    EXPECT_EQ(ServerInstance(instanceBack).getEnc(), instance.getEnc());

    CmpiDateTime date(1, 0);
    CmpiDateTime dateBack = CmpiData(date);
    EXPECT_EQ(dateBack.getEnc(), date.getEnc());
    EXPECT_EQ(server.count("newDateTimeFromBinary"), 1);
}

TEST_F(DataTest, ArrayIsSharedAndOfAnyElementType) {
    CmpiArray array(3, CMPI_uint16);
    CmpiData data(array);
    CmpiArray back = data;
    back[2] = CMPIUint16(7);
    EXPECT_EQ(array[2].getUint16(), 7);
    EXPECT_EQ(thrownBy([] { CmpiData(5).getArray(); }), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(DataTest, NullArrayIsANullValue) {
    CmpiData data{CmpiArray()};
    EXPECT_EQ(data.getType(), CMPI_null);
    EXPECT_TRUE(data.isNullValue());
    data.setUint8(1);
    data.setArray(CmpiArray());
    EXPECT_EQ(data.getType(), CMPI_null);
}

TEST_F(DataTest, NullObjectsOfTheServer) {
    ServerData array(dataOf(CMPI_uint8A, {}, CMPI_nullValue));
    EXPECT_EQ(array.getArray().size(), 0u);
    ServerData string(dataOf(CMPI_string, {}, CMPI_nullValue));
    EXPECT_EQ(string.getString().charPtr(), nullptr);
    ServerData number(dataOf(CMPI_uint32, {}, CMPI_nullValue));
    EXPECT_EQ(number.getUint32(), 0u);
}

TEST_F(DataTest, StateIsToldInItsBits) {
    EXPECT_EQ(CmpiData().isNullValue(), 0x100);
    EXPECT_EQ(CmpiData(5).isNullValue(), 0);
    EXPECT_EQ(CmpiData(CmpiString()).isNullValue(), 0);
    EXPECT_EQ(CmpiData(CmpiObjectPath(static_cast<CMPIObjectPath*>(nullptr))).isNullValue(), 0x100);
    EXPECT_EQ(CmpiData(ServerInstance(static_cast<const CMPIInstance*>(nullptr))).isNullValue(), 0x100);
    EXPECT_EQ(ServerData(dataOf(CMPI_null, {}, CMPI_notFound)).isNotFound(), 0x400);
    EXPECT_EQ(CmpiData(5).isNotFound(), 0);
}

TEST_F(DataTest, AbsentItemFitsNoType) {
    ServerData item(dataOf(CMPI_null, {}, CMPI_nullValue | CMPI_notFound));
    EXPECT_EQ(thrownBy([&] { item.getString(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { item.getArray(); }), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(DataTest, SettersChangeTypeAndMakeTheValueGood) {
    CmpiData data;
    data.setBoolean(1);
    EXPECT_EQ(data.getType(), CMPI_boolean);
    EXPECT_FALSE(data.isNullValue());
    data.setChar16('c');
    EXPECT_EQ(data.getChar16(), 'c');
    data.setSint8(-8);
    EXPECT_EQ(data.getSint8(), -8);
    data.setSint16(-16);
    EXPECT_EQ(data.getSint16(), -16);
    data.setSint32(-32);
    EXPECT_EQ(data.getSint32(), -32);
    data.setSint64(-64);
    EXPECT_EQ(data.getSint64(), -64);
    data.setUint8(8);
    EXPECT_EQ(data.getUint8(), 8);
    data.setUint16(16);
    EXPECT_EQ(data.getUint16(), 16);
    data.setUint32(32);
    EXPECT_EQ(data.getUint32(), 32u);
    data.setUint64(64);
    EXPECT_EQ(data.getUint64(), 64u);
    data.setReal32(0.5f);
    EXPECT_EQ(data.getReal32(), 0.5f);
    data.setReal64(0.25);
    EXPECT_EQ(data.getReal64(), 0.25);
    data.setCString("text");
    EXPECT_STREQ(data.getCString(), "text");
}

TEST_F(DataTest, SettersTakeObjects) {
    CmpiData data;
    CmpiString string("adapter");
    data.setString(string);
    EXPECT_STREQ(textIn(data), "adapter");
    data.setDateTime(CmpiDateTime(7, 0));
    EXPECT_EQ(data.getDateTime().getDateTime(), 7u);
    CmpiObjectPath path("root", "Class");
    data.setObjectPath(path);
    EXPECT_EQ(data.getObjectPath().getEnc(), path.getEnc());
    ServerInstance instance(plainInstance(nullptr));
    data.setInstance(instance);
    EXPECT_EQ(ServerInstance(data.getInstance()).getEnc(), instance.getEnc());
    data.setArray(CmpiArray(2, CMPI_string));
    EXPECT_EQ(data.getType(), CMPI_stringA);
}

// Arrays

TEST_F(ArrayTest, SizeIsTheServersAndNullIsEmpty) {
    EXPECT_EQ(CmpiArray(4, CMPI_uint8).size(), 4u);
    EXPECT_EQ(CmpiArray().size(), 0u);
}

TEST_F(ArrayTest, AnArrayThatTheServerRefusesThrows) {
    server.failWith("newArray", CMPI_RC_ERR_INVALID_PARAMETER, "no such type");
    EXPECT_EQ(messageThrownBy([] { CmpiArray(4, 9); }), "no such type");
}

TEST_F(ArrayTest, IndexBeyondTheEndIsThrown) {
    CmpiArray array(2, CMPI_uint8);
    EXPECT_EQ(thrownBy([&] { array[2]; }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(thrownBy([] { CmpiArray()[0]; }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(thrownBy([&] { array[1]; }), CMPI_RC_OK);
}

TEST_F(ArrayTest, StoringAnElementOfAnOwnArrayIsOneCall) {
    CmpiArray array(2, CMPI_uint16);
    server.calls.clear();
    array[1] = CMPIUint16(7);
    EXPECT_EQ(server.functions(), std::vector<std::string>{"setElementAt"});
    EXPECT_EQ(array[1].getUint16(), 7);
}

TEST_F(ArrayTest, ArrayOfTheServerIsAskedForSizeAndType) {
    CmpiArray array = arrayOfTheServer(plainArray(2, CMPI_uint16));
    server.calls.clear();
    array[1] = CMPIUint16(7);
    EXPECT_EQ(server.functions(), (std::vector<std::string>{"getSize", "getSimpleType", "setElementAt"}));
    EXPECT_EQ(array[1].getUint16(), 7);
    EXPECT_EQ(thrownBy([&] { array[1] = 7; }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { array[2]; }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CmpiData(array).getType(), CMPI_uint16A);
}

TEST_F(ArrayTest, ServerMayTurnAnArrayOfCharsIntoOneOfStrings) {
    plainBroker.objects.newArray = [](const CMPIBroker*, CMPICount size, CMPIType type, CMPIStatus*) {
        return plainArray(size, type == CMPI_chars ? CMPI_string : type);
    };
    CmpiArray array(1, CMPI_chars);
    EXPECT_EQ(thrownBy([&] { array[0] = "adapter"; }), CMPI_RC_ERR_TYPE_MISMATCH);
    array[0] = CmpiString("adapter");
    EXPECT_STREQ(array[0].getString().charPtr(), "adapter");
}

TEST_F(ArrayTest, ArrayThatTheServerLetsGrowGrows) {
    CmpiArray array(0, CMPI_uint8);
    EXPECT_EQ(thrownBy([&] { array[0]; }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMPIArray* inServer = ServerData(CmpiData(array)).plain().value.array;
    const CMPIValue zero = {};
    ASSERT_EQ(inServer->ft->setElementAt(inServer, 0, &zero, CMPI_uint8).rc, CMPI_RC_OK);
    array[0] = CMPIUint8(3);
    EXPECT_EQ(array[0].getUint8(), 3);
}

TEST_F(ArrayTest, ElementsAreReadByOperatorAndGetter) {
    CmpiArray array(1, CMPI_uint16);
    array[0] = CMPIUint16(7);
    CMPIUint16 value = array[0];
    EXPECT_EQ(value, 7);
    EXPECT_EQ(array[0].getData().getUint16(), 7);
    EXPECT_EQ(thrownBy([&] { array[0].getUint32(); }), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(ArrayTest, OtherTypesAreRefused) {
    CmpiArray array(1, CMPI_uint16);
    EXPECT_EQ(thrownBy([&] { array[0] = 5; }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { array[0] = CmpiData(); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(thrownBy([&] { array[0] = CmpiCharData('c'); }), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(server.count("setElementAt"), 0);
}

TEST_F(ArrayTest, BytesFitBooleansAndShortsFitCharacters) {
    CmpiArray booleans(1, CMPI_boolean);
    booleans[0] = CMPIUint8(1);
    EXPECT_EQ(booleans[0].getData().getType(), CMPI_boolean);
    EXPECT_EQ(booleans[0].getBoolean(), 1);
    CmpiArray characters(1, CMPI_char16);
    characters[0] = CMPIUint16('c');
    EXPECT_EQ(characters[0].getData().getType(), CMPI_char16);
    EXPECT_EQ(characters[0].getChar16(), 'c');
}

TEST_F(ArrayTest, BooleansDoNotFitBytes) {
    CmpiArray bytes(1, CMPI_uint8);
    EXPECT_EQ(thrownBy([&] { bytes[0] = CmpiTrue; }), CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(ArrayTest, ByteOperatorOfAnElementTakesNoBoolean) {
    CmpiArray array(1, CMPI_boolean);
    array[0] = CmpiTrue;
    EXPECT_EQ(thrownBy([&] {
                  unsigned char byte = array[0];
                  return byte;
              }),
              CMPI_RC_ERR_TYPE_MISMATCH);
}

TEST_F(ArrayTest, TextsNeedServerStrings) {
    CmpiArray array(1, CMPI_string);
    EXPECT_EQ(thrownBy([&] { array[0] = "adapter"; }), CMPI_RC_ERR_TYPE_MISMATCH);
    array[0] = CmpiString("adapter");
    CmpiString back = array[0];
    EXPECT_STREQ(back.charPtr(), "adapter");
}

TEST_F(ArrayTest, ArrayOfCharsTakesTheTextItself) {
    CmpiArray array(1, CMPI_chars);
    array[0] = "adapter";
    const char* back = array[0];
    EXPECT_STREQ(back, "adapter");
}

TEST_F(ArrayTest, ServersErrorsAreThrown) {
    CmpiArray array(1, CMPI_uint8);
    server.failWith("setElementAt", CMPI_RC_ERR_FAILED, "read-only");
    EXPECT_EQ(messageThrownBy([&] { array[0] = CMPIUint8(1); }), "read-only");
    server.failWith("getElementAt", CMPI_RC_ERR_FAILED, "write-only");
    EXPECT_EQ(messageThrownBy([&] { array[0].getData(); }), "write-only");
}

TEST_F(ArrayTest, CopiesAndAssignmentsShare) {
    CmpiArray array(1, CMPI_uint8);
    CmpiArray other;
    other = CmpiData(array);
    other[0] = CMPIUint8(3);
    EXPECT_EQ(array[0].getUint8(), 3);
}

} // namespace
