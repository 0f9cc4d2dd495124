// setPropertyFilter really filters: the listed properties and the keys stay.
#include "broker_fixture.h"

namespace {

class PropertyFilter : public BrokerTest {
protected:
    CMPIInstance* filled(const char* className = "Test_Thing") {
        CMPIInstance* made = instance(className);
        set(made, "Name", "one", CMPI_chars);
        set(made, "Text", "two", CMPI_chars);
        const CMPIUint16 seven = 7;
        set(made, "Level", &seven, CMPI_uint16);
        return made;
    }
    static void filter(CMPIInstance* made, std::vector<const char*> properties, const char** keys = nullptr) {
        properties.push_back(nullptr);
        EXPECT_RC(made->ft->setPropertyFilter(made, properties.data(), keys), CMPI_RC_OK);
    }
    static std::string names(const CMPIInstance* made) {
        std::string all;
        for (CMPICount place = 0; place < made->ft->getPropertyCount(made, nullptr); ++place) {
            CMPIString* name = nullptr;
            made->ft->getPropertyAt(made, place, &name, nullptr);
            all += textOf(name) + " ";
        }
        return all;
    }
};

} // namespace

TEST_F(PropertyFilter, KeepsListedPropertiesAndKeys) {
    CMPIInstance* made = filled();
    filter(made, {"LEVEL"});
    EXPECT_EQ(names(made), "Name Level ");
    EXPECT_EQ(get(made, "Level").value.uint16, 7);
    EXPECT_EQ(textOf(get(made, "Name").value.string), "one");
    EXPECT_EQ(get(made, "Text", CMPI_RC_ERR_NO_SUCH_PROPERTY).state, absentState);
}

TEST_F(PropertyFilter, DropsPropertiesThatAreSetLater) {
    CMPIInstance* made = instance();
    filter(made, {"Level"});
    const CMPIUint16 seven = 7;
    EXPECT_EQ(set(made, "Text", "two", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Level", &seven, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(set(made, "Name", "one", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(names(made), "Name Level ");
    EXPECT_EQ(set(made, "Text", &seven, CMPI_uint16), CMPI_RC_ERR_INVALID_DATA_TYPE) << "types count all the same";
}

TEST_F(PropertyFilter, AnEmptyListKeepsTheKeys) {
    CMPIInstance* made = filled();
    filter(made, {});
    EXPECT_EQ(names(made), "Name ");
}

TEST_F(PropertyFilter, NoListKeepsEverything) {
    CMPIInstance* made = filled();
    filter(made, {"Level"});
    EXPECT_RC(made->ft->setPropertyFilter(made, nullptr, nullptr), CMPI_RC_OK);
    EXPECT_EQ(get(made, "Level").value.uint16, 7);
    EXPECT_EQ(get(made, "Text").state, CMPI_nullValue) << "what an earlier filter dropped is gone";
    EXPECT_EQ(set(made, "Text", "two", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(textOf(get(made, "Text").value.string), "two");
}

TEST_F(PropertyFilter, NamesOfKeysAreKeptToo) {
    const char* keys[] = {"Text", nullptr};
    CMPIInstance* made = filled();
    filter(made, {"Level", "Missing"}, keys);
    EXPECT_EQ(names(made), "Name Level Text ");
}

TEST_F(PropertyFilter, AnUnknownClassKeepsTheListedOnes) {
    const char* keys[] = {"Name", nullptr};
    CMPIInstance* made = filled("Test_Unknown");
    filter(made, {"text"}, keys);
    EXPECT_EQ(names(made), "Name Text ");
    EXPECT_EQ(set(made, "Colour", "red", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(names(made), "Name Text ");
}

TEST_F(PropertyFilter, TheListNeedNotOutliveTheCall) {
    CMPIInstance* made = instance("Test_Unknown");
    {
        std::string name = "Text";
        filter(made, {name.c_str()});
        name = "Gone";
    }
    set(made, "Text", "two", CMPI_chars);
    EXPECT_EQ(names(made), "Text ");
}

TEST_F(PropertyFilter, HoldsForCopies) {
    for (const char* className : {"Test_Thing", "Test_Unknown"}) {
        CMPIInstance* made = filled(className);
        filter(made, {"Name", "Level"});
        CMPIInstance* copy = made->ft->clone(made, nullptr);
        EXPECT_EQ(names(copy), "Name Level ");
        EXPECT_EQ(set(copy, "Text", "two", CMPI_chars), CMPI_RC_OK);
        EXPECT_EQ(names(copy), "Name Level ");
        EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
    }
}
