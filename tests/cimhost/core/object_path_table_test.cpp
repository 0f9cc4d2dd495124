#include "broker_fixture.h"

#include <limits>

namespace {

class ObjectPathTable : public BrokerTest {
protected:
    std::string textOfPath(const CMPIObjectPath* object) { return textOf(object->ft->toString(object, nullptr)); }
};

} // namespace

TEST_F(ObjectPathTable, APathKnowsItsPlace) {
    CMPIObjectPath* made = path("Test_Thing", "root/test");
    EXPECT_EQ(textOf(made->ft->getNameSpace(made, nullptr)), "root/test");
    EXPECT_EQ(textOf(made->ft->getClassName(made, nullptr)), "Test_Thing");
    EXPECT_EQ(textOf(made->ft->getHostname(made, nullptr)), "");
    EXPECT_RC(made->ft->setNameSpace(made, "root/other"), CMPI_RC_OK);
    EXPECT_RC(made->ft->setClassName(made, "Test_Keys"), CMPI_RC_OK);
    EXPECT_RC(made->ft->setHostname(made, "host"), CMPI_RC_OK);
    EXPECT_EQ(textOfPath(made), "//host/root/other:Test_Keys");
}

TEST_F(ObjectPathTable, PlacesAreTakenFromAnotherPath) {
    CMPIObjectPath* source = path("Test_Thing", "root/source");
    source->ft->setHostname(source, "host");
    CMPIObjectPath* first = path();
    EXPECT_RC(first->ft->setNameSpaceFromObjectPath(first, source), CMPI_RC_OK);
    EXPECT_EQ(textOfPath(first), "root/source:Test_Thing");
    CMPIObjectPath* second = path();
    EXPECT_RC(second->ft->setHostAndNameSpaceFromObjectPath(second, source), CMPI_RC_OK);
    EXPECT_EQ(textOfPath(second), "//host/root/source:Test_Thing");
    EXPECT_RC(second->ft->setNameSpaceFromObjectPath(second, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(ObjectPathTable, AnUnknownClassIsTaken) {
    CMPIObjectPath* made = path("Test_Unknown");
    ASSERT_NE(made, nullptr);
    const CMPIUint8 number = 3;
    EXPECT_EQ(set(made, "Anything", &number, CMPI_uint8), CMPI_RC_OK);
    EXPECT_EQ(get(made, "Anything").value.sint64, 3);
    EXPECT_NE(path(nullptr, nullptr), nullptr);
}

TEST_F(ObjectPathTable, AnAbsentKeyIsRc6) {
    const CMPIData data = get(path(), "Name", CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(data.type, CMPI_null);
    EXPECT_EQ(data.state, absentState);
    EXPECT_EQ(get(path(), nullptr, CMPI_RC_ERR_NOT_FOUND).state, absentState);
}

TEST_F(ObjectPathTable, IntegersAreReadAsSint64WhateverTheyWere) {
    struct Row {
        CMPIType type;
        std::uint64_t bits;
        std::int64_t read;
    };
    const Row rows[] = {
        {CMPI_uint8, 0xfe, 254},
        {CMPI_uint16, 0xfffe, 65534},
        {CMPI_uint32, 0xfffffffe, 4294967294},
        {CMPI_uint64, 17, 17},
        {CMPI_uint64, 0xfffffffffffffffe, -2},
        {CMPI_sint8, 0xfe, -2},
        {CMPI_sint16, 0xfffe, -2},
        {CMPI_sint32, 0xfffffffe, -2},
        {CMPI_sint64, 0xfffffffffffffffe, -2},
        {CMPI_sint64, 0x8000000000000000, std::numeric_limits<std::int64_t>::min()},
    };
    for (const Row& row : rows) {
        CMPIObjectPath* made = path();
        EXPECT_EQ(set(made, "Number", &row.bits, row.type), CMPI_RC_OK);
        const CMPIData data = get(made, "Number");
        EXPECT_EQ(data.type, CMPI_keyInteger);
        EXPECT_EQ(data.state, CMPI_keyValue);
        EXPECT_EQ(data.value.sint64, row.read) << row.type;
    }
}

TEST_F(ObjectPathTable, TextsBooleansAndReferencesKeepTheirKind) {
    CMPIObjectPath* made = path();
    const CMPIString* text = string("text");
    const char* pointer = "pointed";
    const CMPIBoolean yes = 1;
    const CMPIObjectPath* other = path();
    const CMPIDateTime* when = dateTime("20010909034640.000000+120");
    EXPECT_EQ(set(made, "A", &text, CMPI_string), CMPI_RC_OK);
    EXPECT_EQ(set(made, "B", "chars", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(set(made, "C", &pointer, CMPI_charsptr), CMPI_RC_OK);
    EXPECT_EQ(set(made, "D", &yes, CMPI_boolean), CMPI_RC_OK);
    EXPECT_EQ(set(made, "E", &other, CMPI_ref), CMPI_RC_OK);
    EXPECT_EQ(set(made, "F", &when, CMPI_dateTime), CMPI_RC_OK);
    for (const auto& [name, expected] : {std::pair("A", "text"), std::pair("B", "chars"), std::pair("C", "pointed"),
                                         std::pair("F", "20010909034640.000000+120")}) {
        const CMPIData data = get(made, name);
        EXPECT_EQ(data.type, CMPI_keyString);
        EXPECT_EQ(data.state, CMPI_keyValue);
        EXPECT_EQ(textOf(data.value.string), expected);
    }
    EXPECT_EQ(get(made, "D").type, CMPI_keyBoolean);
    EXPECT_EQ(get(made, "D").value.boolean, 1);
    EXPECT_EQ(get(made, "E").type, CMPI_keyRef);
    EXPECT_EQ(textOfPath(get(made, "E").value.ref), "root/test:Test_Thing");
}

TEST_F(ObjectPathTable, ANullValueIsRc1) {
    const CMPIString* none = nullptr;
    EXPECT_EQ(set(path(), "Name", nullptr, CMPI_string), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(set(path(), "Name", &none, CMPI_string), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(set(path(), "Other", nullptr, CMPI_uint16), CMPI_RC_ERR_FAILED);
}

TEST_F(ObjectPathTable, TypesThatNoKeyHasAreRc61) {
    const CMPIArray* numbers = array(1, CMPI_uint8);
    const CMPIInstance* thing = instance();
    const CMPIArgs* args = arguments();
    EXPECT_EQ(set(path(), "K", &numbers, CMPI_uint8A), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path(), "K", &thing, CMPI_instance), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path(), "K", nullptr, CMPI_null), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path(), "K", &args, CMPI_args), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path(), "K", &args, CMPI_ptr), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path(), nullptr, "x", CMPI_chars), CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(ObjectPathTable, ANameThatIsNoKeyOfTheClassIsStored) {
    CMPIObjectPath* made = path("Test_Keys");
    EXPECT_EQ(set(made, "InstanceID", "x", CMPI_chars), CMPI_RC_OK);
    const CMPIUint8 number = 3;
    EXPECT_EQ(set(made, "Other", &number, CMPI_uint8), CMPI_RC_OK) << "a property, but no key, of another type";
    EXPECT_EQ(made->ft->getKeyCount(made, nullptr), 2U);
}

TEST_F(ObjectPathTable, AKeyOfTheClassTakesItsOwnType) {
    const CMPIUint64 number = 5;
    const CMPIBoolean yes = 1;
    const CMPIObjectPath* other = path();
    const CMPIDateTime* when = dateTime("20010909034640.000000+120");
    struct Row {
        const char* name;
        CMPIType type;
        const void* value;
    };
    const Row rows[] = {
        {"Text", CMPI_chars, "x"},     {"Flag", CMPI_boolean, &yes}, {"U32", CMPI_uint32, &number},
        {"U64", CMPI_uint64, &number}, {"S8", CMPI_sint8, &number},  {"When", CMPI_dateTime, &when},
        {"Thing", CMPI_ref, &other},
    };
    for (const Row& key : rows) {
        for (const Row& given : rows) {
            // What a getter hands out for a key fits it again: integers come as sint64.
            const bool isWide = given.type == CMPI_uint64 && std::string(key.name).find_first_of("US") == 0;
            const CMPIrc expected = key.type == given.type || isWide ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_DATA_TYPE;
            EXPECT_EQ(set(path("Test_Keys"), key.name, given.value, given.type), expected)
                << key.name << " as " << given.type;
        }
    }
}

TEST_F(ObjectPathTable, AKeyAsItIsReadFitsTheKeyAgain) {
    const CMPISint64 small = 100;
    const CMPISint64 large = 200;
    EXPECT_EQ(set(path("Test_Keys"), "S8", &small, CMPI_sint64), CMPI_RC_OK);
    EXPECT_EQ(set(path("Test_Keys"), "S8", &large, CMPI_sint64), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(set(path("Test_Keys"), "When", "20010909034640.000000+120", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(set(path("Test_Keys"), "When", "today", CMPI_chars), CMPI_RC_ERR_INVALID_DATA_TYPE);
}

TEST_F(ObjectPathTable, AKeySetAgainIsReplacedInItsPlace) {
    CMPIObjectPath* made = path();
    set(made, "Name", "one", CMPI_chars);
    set(made, "Other", "two", CMPI_chars);
    set(made, "NAME", "three", CMPI_chars);
    EXPECT_EQ(textOfPath(made), "root/test:Test_Thing.Name=\"three\",Other=\"two\"");
}

TEST_F(ObjectPathTable, KeysAreReadByTheirPlace) {
    CMPIObjectPath* made = path();
    set(made, "Name", "one", CMPI_chars);
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    CMPIString* name = nullptr;
    const CMPIData data = made->ft->getKeyAt(made, 0, &name, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOf(name), "Name");
    EXPECT_EQ(textOf(data.value.string), "one");
    EXPECT_EQ(data.state, CMPI_keyValue);
    EXPECT_EQ(made->ft->getKeyAt(made, 1, &name, &status).state, absentState);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(made->ft->getKeyAt(made, 0, nullptr, nullptr).type, CMPI_keyString);
}

TEST_F(ObjectPathTable, ThePathAsATextEscapesQuotes) {
    CMPIObjectPath* inner = path();
    set(inner, "Name", "a \"b\" \\c", CMPI_chars);
    const CMPIObjectPath* pointer = inner;
    const CMPIBoolean yes = 1;
    const CMPISint8 number = -5;
    CMPIObjectPath* made = path("Test_Keys");
    set(made, "Flag", &yes, CMPI_boolean);
    set(made, "S8", &number, CMPI_sint8);
    set(made, "Thing", &pointer, CMPI_ref);
    EXPECT_EQ(textOfPath(made), R"(root/test:Test_Keys.Flag=true,S8=-5,Thing=)"
                                R"("root/test:Test_Thing.Name=\"a \\\"b\\\" \\\\c\"")");
}

TEST_F(ObjectPathTable, QualifierGettersAreAbsent) {
    const CMPIObjectPathFT& table = *path()->ft;
    EXPECT_EQ(table.getClassQualifier, nullptr);
    EXPECT_EQ(table.getPropertyQualifier, nullptr);
    EXPECT_EQ(table.getMethodQualifier, nullptr);
    EXPECT_EQ(table.getParameterQualifier, nullptr);
}

TEST_F(ObjectPathTable, ABrokenPathAnswersRc60) {
    CMPIObjectPath broken = *path();
    broken.hdl = nullptr;
    CMPIStatus status{};
    EXPECT_EQ(broken.ft->getClassName(&broken, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broken.ft->toString(&broken, &status), nullptr);
    EXPECT_EQ(broken.ft->getKeyCount(&broken, &status), 0U);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(set(&broken, "Name", "x", CMPI_chars), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(get(&broken, "Name", CMPI_RC_ERR_INVALID_HANDLE).state, absentState);
    EXPECT_RC(broken.ft->setClassName(&broken, "A"), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(broken.ft->setHostAndNameSpaceFromObjectPath(path(), &broken), CMPI_RC_ERR_INVALID_HANDLE);
}
