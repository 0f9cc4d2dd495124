#include "cimhost/service/path_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace cimhost {
namespace {

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
class T_Port { [Key] string Id; [Key] string Name; };
class T_Counter { [Key] uint32 Number; };
[Association] class T_Link { [Key] T_Port ref Left; [Key] T_Counter ref Right; };
)";

class PathText : public testing::Test {
protected:
    PathText() { repository.loadText("root/ns", mof); }
    cimxml::ObjectPath parse(std::string_view text) { return parsePath(text, "root/ns", repository); }

    ClassRepository repository;
};

TEST_F(PathText, TheUsualFormIsRead) {
    const cimxml::ObjectPath path = parse(R"(T_Port.Id="a, \"b\" \\ =",Name="")");
    EXPECT_EQ(path.nameSpace, "root/ns");
    EXPECT_EQ(path.className, "T_Port");
    EXPECT_TRUE(path.namesInstance);
    ASSERT_EQ(path.keys.size(), 2U);
    EXPECT_EQ(path.keys[0].text, R"(a, "b" \ =)");
    EXPECT_EQ(path.keys[1].text, "");
}

TEST_F(PathText, ANamespaceAndAHostMayStandInFront) {
    for (const char* text :
         {R"(root/ns:T_Port.Id="a.b:c",Name="n")", R"(/root/ns:T_Port.Id="a.b:c",Name="n")",
          R"(//host/root/ns:T_Port.Id="a.b:c",Name="n")", "http://localhost:5988/root/ns:T_Port.Id=a.b:c,Name=n",
          R"(https://u:p@localhost/root/ns:T_Port.Id="a.b:c",Name="n")"}) {
        const cimxml::ObjectPath path = parse(text);
        EXPECT_EQ(path.nameSpace, "root/ns") << text;
        EXPECT_EQ(path.className, "T_Port") << text;
        EXPECT_EQ(path.keys[0].text, "a.b:c") << text;
        EXPECT_EQ(path.keys[1].text, "n") << text;
    }
    EXPECT_EQ(parse("root/other:T_Port.Id=1").nameSpace, "root/other");
}

TEST_F(PathText, KeysAreTypedAsTheirClassDeclaresThem) {
    EXPECT_EQ(parse("T_Port.Id=17").keys[0].type, cimxml::KeyType::text);
    EXPECT_EQ(parse("T_Counter.Number=17").keys[0].type, cimxml::KeyType::numeric);
    EXPECT_EQ(parse("T_Counter.Number=\"17\"").keys[0].type, cimxml::KeyType::numeric);
}

TEST_F(PathText, KeysOfAnUnknownClassAreWhatTheyLookLike) {
    EXPECT_EQ(parse("T_Unknown.Number=17").keys[0].type, cimxml::KeyType::numeric);
    EXPECT_EQ(parse("T_Unknown.Number=\"17\"").keys[0].type, cimxml::KeyType::text);
    EXPECT_EQ(parse("T_Unknown.A=\"x\",IsOn=TRUE").keys[1].type, cimxml::KeyType::boolean);
    EXPECT_EQ(parse("T_Unknown.Name=text").keys[0].type, cimxml::KeyType::text);
}

TEST_F(PathText, AReferenceIsAPathAgain) {
    const cimxml::ObjectPath path =
        parse(R"(T_Link.Left="T_Port.Id=\"a\",Name=\"n\"",Right="root/ns:T_Counter.Number=1")");
    ASSERT_EQ(path.keys[0].type, cimxml::KeyType::reference);
    EXPECT_EQ(path.keys[0].reference->keys[1].text, "n");
    EXPECT_EQ(path.keys[1].reference->className, "T_Counter");
}

TEST_F(PathText, BadPathsAreRefused) {
    for (const char* text : {"", "T_Port", "T_Port.", "T_Port.Id", "T_Port.=1", ".Id=1", "T_Port.Id=\"a",
                             "T_Port.Id=\"a\"b", "http://localhost", "root/ns:", R"(T_Link.Left="T_Port")"}) {
        EXPECT_THROW(parse(text), std::runtime_error) << text;
    }
}

} // namespace
} // namespace cimhost
