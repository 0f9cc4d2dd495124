#include "broker_fixture.h"

#include <map>

namespace {

class InstanceTable : public BrokerTest {
protected:
    // A variable of every type that a value can have, as the tables take it.
    struct Given {
        CMPIType type;
        const void* variable;
    };

    std::vector<Given> everyType() {
        text = string("text");
        when = dateTime("20010909034640.000000+120");
        other = path();
        inner = instance();
        std::vector<Given> all = {
            {CMPI_boolean, &number}, {CMPI_char16, &number},  {CMPI_uint8, &number},   {CMPI_uint16, &number},
            {CMPI_uint32, &number},  {CMPI_uint64, &number},  {CMPI_sint8, &number},   {CMPI_sint16, &number},
            {CMPI_sint32, &number},  {CMPI_sint64, &number},  {CMPI_real32, &number},  {CMPI_real64, &number},
            {CMPI_string, &text},    {CMPI_chars, "text"},    {CMPI_charsptr, &chars}, {CMPI_dateTime, &when},
            {CMPI_ref, &other},      {CMPI_instance, &inner},
        };
        const std::vector<Given> scalars = all;
        arrays.clear();
        for (const Given& scalar : scalars)
            arrays[scalar.type] = array(2, scalar.type);
        for (const auto& [type, made] : arrays) {
            all.push_back({static_cast<CMPIType>(type | CMPI_ARRAY), &arrays[type]});
        }
        all.push_back({CMPI_ARRAY, &arrays[CMPI_uint8]});
        all.push_back({CMPI_null, nullptr});
        all.push_back({CMPI_ptr, &inner});
        all.push_back({CMPI_args, &inner});
        return all;
    }

    // Texts have one type inside.
    static CMPIType inward(CMPIType type) {
        const int element = type & ~CMPI_ARRAY;
        const bool isText = element == CMPI_chars || element == CMPI_charsptr;
        return static_cast<CMPIType>(isText ? CMPI_string | (type & CMPI_ARRAY) : type);
    }

    CMPIUint64 number = 1;
    CMPIString* text = nullptr;
    const char* chars = "text";
    CMPIDateTime* when = nullptr;
    CMPIObjectPath* other = nullptr;
    CMPIInstance* inner = nullptr;
    std::map<CMPIType, CMPIArray*> arrays;
};

} // namespace

TEST_F(InstanceTable, AnAbsentPropertyIsRc12) {
    const CMPIData data = get(instance(), "Missing", CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(data.type, CMPI_null);
    EXPECT_EQ(data.state, absentState);
    EXPECT_EQ(get(instance(), nullptr, CMPI_RC_ERR_NO_SUCH_PROPERTY).state, absentState);
}

TEST_F(InstanceTable, APropertyNeverSetIsANullOfItsType) {
    const CMPIData data = get(instance(), "level");
    EXPECT_EQ(data.type, CMPI_uint16);
    EXPECT_EQ(data.state, CMPI_nullValue);
}

TEST_F(InstanceTable, ANullValueIsANullOfItsType) {
    const CMPIInstance* made = instance();
    const CMPIString* none = nullptr;
    const CMPIUint16 seven = 7;
    EXPECT_EQ(set(made, "Level", &seven, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Level", nullptr, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(get(made, "Level").state, CMPI_nullValue);
    EXPECT_EQ(get(made, "Level").type, CMPI_uint16);
    EXPECT_EQ(set(made, "Text", &none, CMPI_string), CMPI_RC_OK);
    EXPECT_EQ(get(made, "Text").state, CMPI_nullValue);
    EXPECT_EQ(get(made, "Text").type, CMPI_string);
    EXPECT_EQ(set(made, "U8s", nullptr, CMPI_uint8A), CMPI_RC_OK);
    EXPECT_EQ(get(made, "U8s").type, CMPI_uint8A);
}

TEST_F(InstanceTable, EveryPropertyTakesItsOwnTypeOnly) {
    const CMPIInstance* made = instance();
    const cimhost::ClassDeclaration& declared = *classes.find("root/test", "Test_Thing");
    const std::vector<Given> given = everyType();
    for (const cimhost::PropertyDeclaration& property : declared.properties()) {
        const bool isEmbedded = property.name == "Inner" || property.name == "Inners";
        const auto embedded = static_cast<CMPIType>(CMPI_instance | (property.type & CMPI_ARRAY));
        for (const Given& value : given) {
            const bool fits = inward(value.type) == property.type || (isEmbedded && value.type == embedded);
            EXPECT_EQ(set(made, property.name.c_str(), value.variable, value.type),
                      fits ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_DATA_TYPE)
                << property.name << " as " << value.type;
        }
    }
}

TEST_F(InstanceTable, AnArrayOfOtherElementsThanSaidIsRc61) {
    const CMPIArray* numbers = array(1, CMPI_uint16);
    EXPECT_EQ(set(instance(), "U8s", &numbers, CMPI_uint8A), CMPI_RC_ERR_INVALID_DATA_TYPE);
    const CMPIArray* texts = array(1, CMPI_chars);
    EXPECT_EQ(set(instance(), "Texts", &texts, CMPI_stringA), CMPI_RC_OK);
}

TEST_F(InstanceTable, ValuesComeBackAsTheyWereSet) {
    const CMPIInstance* made = instance();
    const CMPISint64 number64 = -5;
    const CMPIReal64 real = 1.5;
    EXPECT_EQ(set(made, "s64", &number64, CMPI_sint64), CMPI_RC_OK);
    EXPECT_EQ(set(made, "R64", &real, CMPI_real64), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Text", "chars", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(get(made, "S64").value.sint64, -5);
    EXPECT_EQ(get(made, "S64").state, CMPI_goodValue);
    EXPECT_EQ(get(made, "R64").value.real64, 1.5);
    EXPECT_EQ(get(made, "Text").type, CMPI_string);
    EXPECT_EQ(textOf(get(made, "Text").value.string), "chars");
}

TEST_F(InstanceTable, ValuesAreThoseOfTheMomentOfSetting) {
    CMPIInstance* made = instance();
    CMPIArray* numbers = array(1, CMPI_uint8);
    CMPIUint8 seven = 7;
    numbers->ft->setElementAt(numbers, 0, at(&seven), CMPI_uint8);
    CMPIObjectPath* thing = path();
    CMPIInstance* within = instance();
    set(thing, "Name", "before", CMPI_chars);
    set(within, "Name", "before", CMPI_chars);
    EXPECT_EQ(set(made, "U8s", &numbers, CMPI_uint8A), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Other", &thing, CMPI_ref), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Inner", &within, CMPI_instance), CMPI_RC_OK);

    numbers->ft->setElementAt(numbers, 0, nullptr, CMPI_null);
    set(thing, "Name", "after", CMPI_chars);
    set(within, "Name", "after", CMPI_chars);
    const CMPIArray* stored = get(made, "U8s").value.array;
    EXPECT_EQ(stored->ft->getElementAt(stored, 0, nullptr).value.uint8, 7);
    EXPECT_EQ(textOf(get(get(made, "Other").value.ref, "Name").value.string), "before");
    EXPECT_EQ(get(made, "Inner").type, CMPI_instance);
    EXPECT_EQ(textOf(get(get(made, "Inner").value.inst, "Name").value.string), "before");

    CMPIArray* handedOut = get(made, "U8s").value.array;
    handedOut->ft->setElementAt(handedOut, 0, nullptr, CMPI_null);
    set(get(made, "Inner").value.inst, "Name", "of the reader", CMPI_chars);
    const CMPIArray* again = get(made, "U8s").value.array;
    EXPECT_EQ(again->ft->getElementAt(again, 0, nullptr).value.uint8, 7);
    EXPECT_EQ(textOf(get(get(made, "Inner").value.inst, "Name").value.string), "before");
}

TEST_F(InstanceTable, AnInstanceCanHoldACopyOfItself) {
    CMPIInstance* made = instance();
    set(made, "Name", "outer", CMPI_chars);
    EXPECT_EQ(set(made, "Inner", &made, CMPI_instance), CMPI_RC_OK);
    set(made, "Name", "changed", CMPI_chars);
    const CMPIInstance* within = get(made, "Inner").value.inst;
    EXPECT_EQ(textOf(get(within, "Name").value.string), "outer");
    EXPECT_EQ(get(within, "Inner").state, CMPI_nullValue);
}

TEST_F(InstanceTable, APropertyThatTheClassLacksIsDroppedWithAWarning) {
    const CMPIInstance* made = instance();
    const CMPIUint16 seven = 7;
    EXPECT_EQ(set(made, "Colour", &seven, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Colour", &seven, CMPI_uint16), CMPI_RC_OK);
    get(made, "Colour", CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(broker->droppedProperties(), std::vector<std::string>{"Test_Thing.Colour"});
    EXPECT_EQ(messages(), std::vector<std::string>{"property dropped: the class does not declare Test_Thing.Colour"})
        << "warned of once";
}

TEST_F(InstanceTable, DroppedPropertiesAreRememberedUpToAThousand) {
    const CMPIInstance* made = instance();
    for (int count = 0; count < 1500; ++count) {
        EXPECT_EQ(set(made, ("P" + std::to_string(count)).c_str(), "x", CMPI_chars), CMPI_RC_OK);
    }
    EXPECT_EQ(broker->droppedProperties().size(), 1000U);
}

TEST_F(InstanceTable, AnInstanceOfAnUnknownClassTakesEverything) {
    const CMPIInstance* made = instance("Test_Unknown");
    ASSERT_NE(made, nullptr);
    const CMPIUint8 number8 = 3;
    EXPECT_EQ(set(made, "B", &number8, CMPI_uint8), CMPI_RC_OK);
    EXPECT_EQ(set(made, "A", "text", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(set(made, "b", "now a text", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(made->ft->getPropertyCount(made, nullptr), 2U);
    CMPIString* name = nullptr;
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const CMPIData first = made->ft->getPropertyAt(made, 0, &name, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOf(name), "B");
    EXPECT_EQ(textOf(first.value.string), "now a text");
    get(made, "C", CMPI_RC_ERR_NO_SUCH_PROPERTY);
    made->ft->getPropertyAt(made, 2, nullptr, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(set(made, "D", nullptr, CMPI_null), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_TRUE(broker->droppedProperties().empty());
}

TEST_F(InstanceTable, PropertiesAreReadByTheirPlaceInTheClass) {
    const CMPIInstance* made = instance("Test_Standard");
    EXPECT_EQ(made->ft->getPropertyCount(made, nullptr), 3U);
    CMPIString* name = nullptr;
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const CMPIData words = made->ft->getPropertyAt(made, 1, &name, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOf(name), "Words");
    EXPECT_EQ(words.type, CMPI_stringA);
    EXPECT_EQ(made->ft->getPropertyAt(made, 3, &name, &status).state, absentState);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(InstanceTable, ANewInstanceHasTheDefaultsOfItsClass) {
    const CMPIInstance* made = instance("Test_Standard");
    EXPECT_EQ(get(made, "Level").value.uint16, 7);
    const CMPIArray* words = get(made, "Words").value.array;
    ASSERT_EQ(words->ft->getSize(words, nullptr), 2U);
    EXPECT_EQ(textOf(words->ft->getElementAt(words, 0, nullptr).value.string), "a");
    EXPECT_EQ(words->ft->getElementAt(words, 1, nullptr).state, CMPI_nullValue);
    const CMPIDateTime* day = get(made, "When").value.dateTime;
    EXPECT_NE(day->ft->isInterval(day, nullptr), 0);
}

TEST_F(InstanceTable, TheObjectPathHasTheKeyPropertiesAsKeys) {
    const CMPIInstance* made = instance();
    set(made, "Name", "one", CMPI_chars);
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    CMPIObjectPath* found = made->ft->getObjectPath(made, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOf(found->ft->toString(found, nullptr)), "root/test:Test_Thing.Name=\"one\"");
    set(found, "Name", "of the reader", CMPI_chars);
    EXPECT_EQ(textOf(get(made, "Name").value.string), "one");
}

TEST_F(InstanceTable, AKeyThatIsNotSetIsTakenFromThePathOfTheMaking) {
    CMPIObjectPath* origin = path("Test_Keys");
    const CMPIUint32 number32 = 17;
    set(origin, "Text", "from the path", CMPI_chars);
    set(origin, "U32", &number32, CMPI_uint32);
    const CMPIInstance* made = cmpi->eft->newInstance(cmpi, origin, nullptr);
    set(origin, "Text", "changed later", CMPI_chars);
    set(made, "Text", "from the property", CMPI_chars);
    CMPIObjectPath* found = made->ft->getObjectPath(made, nullptr);
    EXPECT_EQ(textOf(get(found, "Text").value.string), "from the property");
    EXPECT_EQ(get(found, "U32").value.sint64, 17);
    EXPECT_EQ(get(made, "U32").state, CMPI_nullValue) << "the property itself stays unset";
}

TEST_F(InstanceTable, AnotherPathOfTheSameClassCanBeSet) {
    CMPIInstance* made = instance();
    CMPIObjectPath* other1 = path("test_thing", "root/elsewhere");
    set(other1, "Name", "two", CMPI_chars);
    EXPECT_RC(made->ft->setObjectPath(made, other1), CMPI_RC_OK);
    const CMPIObjectPath* found = made->ft->getObjectPath(made, nullptr);
    EXPECT_EQ(textOf(found->ft->toString(found, nullptr)), "root/elsewhere:test_thing.Name=\"two\"");
    EXPECT_EQ(set(made, "Level", "x", CMPI_chars), CMPI_RC_ERR_INVALID_DATA_TYPE) << "still of its class";
    EXPECT_RC(made->ft->setObjectPath(made, path("Test_Keys")), CMPI_RC_ERR_FAILED);
    EXPECT_RC(made->ft->setObjectPath(made, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(InstanceTable, TheOriginThatAProviderNamesChangesNothing) {
    const CMPIInstance* made = instance();
    const CMPIUint16 seven = 7;
    EXPECT_RC(made->ft->setPropertyWithOrigin(made, "Level", at(&seven), CMPI_uint16, "Some_Class"), CMPI_RC_OK);
    EXPECT_EQ(get(made, "Level").value.uint16, 7);
    EXPECT_RC(made->ft->setPropertyWithOrigin(made, "Level", at(&seven), CMPI_uint32, nullptr),
              CMPI_RC_ERR_INVALID_DATA_TYPE);
}

TEST_F(InstanceTable, NoInstanceIsMadeWithoutAPath) {
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newInstance(cmpi, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(InstanceTable, BrokenObjectsAreRc60) {
    CMPIInstance broken = *instance();
    broken.hdl = nullptr;
    CMPIStatus status{};
    EXPECT_EQ(set(&broken, "Level", nullptr, CMPI_uint16), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(get(&broken, "Level", CMPI_RC_ERR_INVALID_HANDLE).state, absentState);
    EXPECT_EQ(broken.ft->getPropertyCount(&broken, &status), 0U);
    broken.ft->getPropertyAt(&broken, 0, nullptr, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broken.ft->getObjectPath(&broken, &status), nullptr);
    EXPECT_RC(broken.ft->setPropertyFilter(&broken, nullptr, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    const CMPIInstance* pointer = &broken;
    EXPECT_EQ(set(instance(), "Inner", &pointer, CMPI_instance), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(set(instance(), nullptr, "x", CMPI_chars), CMPI_RC_ERR_INVALID_PARAMETER);
}
