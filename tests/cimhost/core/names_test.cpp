#include "cimhost/model/names.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cimhost;

TEST(Names, CompareWithoutTheCaseOfAsciiLetters) {
    EXPECT_TRUE(equalNames("CIM_FCPort", "cim_fcPORT"));
    EXPECT_TRUE(equalNames("", ""));
    EXPECT_FALSE(equalNames("CIM_FCPort", "CIM_FCPorts"));
    EXPECT_FALSE(equalNames("a@", "a`")) << "only letters fold";
    EXPECT_FALSE(equalNames("Gr\xc3\x84\xc3\x9f", "Gr\xc3\xa4\xc3\x9f")) << "other letters do not fold";
}

TEST(Names, EqualNamesHaveEqualHashes) {
    for (const std::string name : {"A", "Name", "DeviceID", "EightLtr", "SystemCreationClassName", "X_y-9"}) {
        std::string lower = name;
        std::string upper = name;
        for (std::size_t place = 0; place < name.size(); ++place) {
            lower[place] = static_cast<char>(std::tolower(name[place]));
            upper[place] = static_cast<char>(std::toupper(name[place]));
        }
        EXPECT_EQ(hashName(lower), hashName(upper)) << name;
        EXPECT_EQ(hashName(lower), hashName(name)) << name;
    }
}

TEST(Names, AreLegalWithLettersUnderscoresAndDigitsBehind) {
    for (const char* legal : {"A", "_", "CIM_X2",
                              "Gr\xc3\xb6\xc3\x9f"
                              "e"})
        EXPECT_TRUE(isLegalName(legal)) << legal;
    for (const char* illegal : {"", "2A", "A B", "A.B", "A-B", "\"A\"", " A"})
        EXPECT_FALSE(isLegalName(illegal));
}

TEST(Names, NamespacesLoseTheirOuterSlashes) {
    EXPECT_EQ(trimNamespace("root/cimv2"), "root/cimv2");
    EXPECT_EQ(trimNamespace("//root/cimv2/"), "root/cimv2");
    EXPECT_EQ(trimNamespace("///"), "");
    EXPECT_EQ(trimNamespace(""), "");
}

TEST(Names, AnIndexFindsEveryNameAmongMany) {
    std::vector<std::string> names;
    for (int number = 0; number < 5000; ++number)
        names.push_back("Property" + std::to_string(number));
    NameIndex index;
    EXPECT_EQ(index.find("Property1"), NameIndex::notFound);
    for (std::size_t position = 0; position < names.size(); ++position)
        index.add(names[position], position);
    for (std::size_t position = 0; position < names.size(); ++position) {
        ASSERT_EQ(index.find(names[position]), position);
    }
    EXPECT_EQ(index.find("PROPERTY4711"), 4711U);
    EXPECT_EQ(index.find("Property5000"), NameIndex::notFound);
    EXPECT_EQ(index.find(""), NameIndex::notFound);
}

TEST(Names, AnIndexKeepsNamesApartWhoseHashesAreEqual) {
    // The hash takes '_' and DEL for the same character.
    ASSERT_EQ(hashName("Property_"), hashName("Property\x7f"));
    NameIndex index;
    index.add("Property_", 1);
    EXPECT_EQ(index.find("Property\x7f"), NameIndex::notFound);
    index.add("Property\x7f", 2);
    EXPECT_EQ(index.find("Property_"), 1U);
    EXPECT_EQ(index.find("Property\x7f"), 2U);
}
