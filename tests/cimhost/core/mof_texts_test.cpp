// What a legal MOF text declares.
#include <gtest/gtest.h>

#include <string>

#include "cimhost/model/class_repository.h"
#include "mof_prelude.h"

using namespace cimhost;

namespace {

class MofTexts : public testing::Test {
protected:
    const ClassDeclaration& load(const std::string& text, const char* className = "A") {
        repository.loadText("root/test", withQualifiers(text));
        const ClassDeclaration* found = repository.find("root/test", className);
        if (!found) throw std::runtime_error(std::string("no class ") + className);
        return *found;
    }

    ClassRepository repository;
};

std::string defaultOf(const ClassDeclaration& declaration, const char* property) {
    const DeclaredValue& value = declaration.property(property)->defaultValue;
    if (value.isNull) return "NULL";
    std::string text = value.isArray() ? "{" : "";
    for (const auto& element : value.texts) {
        if (value.isArray() && text.size() > 1) text += ",";
        text += element ? *element : "NULL";
    }
    return text + (value.isArray() ? "}" : "");
}

} // namespace

TEST_F(MofTexts, AClassHasItsPropertiesInTheirOrderAndTypes) {
    const ClassDeclaration& a = load(R"(
        class A {
            [Key] string Name;
            boolean b; char16 c; datetime d; real32 e; real64 f;
            uint8 g; uint16 h; uint32 i; uint64 j; sint8 k; sint16 l; sint32 m; sint64 n;
            string o[]; uint8 p[4];
            A REF q;
        };)");
    const CMPIType types[] = {CMPI_string, CMPI_boolean, CMPI_char16,  CMPI_dateTime, CMPI_real32, CMPI_real64,
                              CMPI_uint8,  CMPI_uint16,  CMPI_uint32,  CMPI_uint64,   CMPI_sint8,  CMPI_sint16,
                              CMPI_sint32, CMPI_sint64,  CMPI_stringA, CMPI_uint8A,   CMPI_ref};
    ASSERT_EQ(a.properties().size(), std::size(types));
    for (std::size_t position = 0; position < std::size(types); ++position) {
        EXPECT_EQ(a.properties()[position].type, types[position]) << a.properties()[position].name;
        EXPECT_EQ(a.properties()[position].classOrigin, "A");
        EXPECT_FALSE(a.properties()[position].isPropagated);
    }
    EXPECT_EQ(a.property("p")->arraySize, 4U);
    EXPECT_EQ(a.property("o")->arraySize, std::nullopt);
    EXPECT_EQ(a.property("q")->referenceClass, "A");
    ASSERT_EQ(a.keys().size(), 1U);
    EXPECT_EQ(a.properties()[a.keys()[0]].name, "Name");
    EXPECT_TRUE(a.property("NAME")->isKey);
    EXPECT_EQ(a.property("r"), nullptr);
}

TEST_F(MofTexts, DefaultsReadAsCimXmlWritesThem) {
    const ClassDeclaration& a = load(R"(
        class A {
            boolean t = TRUE; boolean f = false; uint16 hex = 0x1F; sint16 octal = -017; uint8 binary = 101b;
            real32 real = -1.5E2; real64 whole = 3; char16 letter = '\x20AC'; string none = NULL;
            string joined = "one " "\"two\"" /* and */ "\tthree\n\x41";
            string words[] = {"a", NULL, "b"}; uint8 empty[] = {}; datetime when = "20260131120000.000000+060";
            string unsaid;
        };)");
    const std::pair<const char*, const char*> rows[] = {
        {"t", "true"},
        {"f", "false"},
        {"hex", "31"},
        {"octal", "-15"},
        {"binary", "5"},
        {"real", "-1.5E2"},
        {"whole", "3"},
        {"none", "NULL"},
        {"letter", "\xe2\x82\xac"},
        {"words", "{a,NULL,b}"},
        {"empty", "{}"},
        {"joined", "one \"two\"\tthree\nA"},
        {"when", "20260131120000.000000+060"},
        {"unsaid", "NULL"},
    };
    for (const auto& [property, text] : rows)
        EXPECT_EQ(defaultOf(a, property), text) << property;
    EXPECT_TRUE(a.hasDefaults());
}

TEST_F(MofTexts, InheritedPropertiesComeFirst) {
    const ClassDeclaration& b = load(R"(
        class A { [Key] string K; uint8 N = 1; uint8 M = 1; [Description("a")] string D; };
        class B : A { uint8 Own; [Override("N")] uint8 N; [Override("A.M")] uint8 M = NULL;
                      [Override("D"), Description("b")] string D; };)",
                                     "B");
    std::string order;
    for (const PropertyDeclaration& property : b.properties())
        order += property.name + " ";
    EXPECT_EQ(order, "K N M D Own ");
    EXPECT_TRUE(b.property("K")->isKey);
    EXPECT_TRUE(b.property("K")->isPropagated);
    EXPECT_FALSE(b.property("N")->isPropagated);
    EXPECT_EQ(b.property("N")->classOrigin, "A");
    EXPECT_EQ(b.property("Own")->classOrigin, "B");
    EXPECT_EQ(defaultOf(b, "N"), "1") << "a redeclaration that says nothing keeps the default";
    EXPECT_EQ(defaultOf(b, "M"), "NULL") << "= NULL takes it away";
    EXPECT_EQ(findQualifier(b.property("D")->qualifiers, "Description")->value.text(), "b");
    EXPECT_FALSE(findQualifier(b.property("D")->qualifiers, "description")->isPropagated);
    EXPECT_EQ(findQualifier(b.property("K")->qualifiers, "Override"), nullptr);
}

TEST_F(MofTexts, QualifiersPassToSubclassesAsTheirFlavorSays) {
    const ClassDeclaration& c = load(R"(
        [Abstract, Association, Description("a")] class A { [Description("n")] string N; };
        class B : A { };
        class C : B { [Override("N")] string N; };)",
                                     "C");
    const ClassDeclaration& a = *repository.find("root/test", "A");
    EXPECT_TRUE(a.isAbstract());
    EXPECT_TRUE(a.isAssociation());
    EXPECT_FALSE(c.isAbstract()) << "restricted";
    EXPECT_TRUE(c.isAssociation());
    EXPECT_FALSE(c.isIndication());
    EXPECT_TRUE(findQualifier(c.qualifiers(), "Description")->isPropagated);
    EXPECT_TRUE(findQualifier(c.property("N")->qualifiers, "Description")->isPropagated);
    const ClassDeclaration& b = *repository.find("root/test", "B");
    EXPECT_EQ(findQualifier(c.property("N")->qualifiers, "Override")->value.text(), "N");
    EXPECT_EQ(findQualifier(b.property("N")->qualifiers, "Override"), nullptr);
}

TEST_F(MofTexts, AFlavorInUseCountsMoreThanTheDeclaredOne) {
    const ClassDeclaration& b = load("class A { [Description(\"n\") : Restricted] string N; };\nclass B : A { };", "B");
    EXPECT_EQ(findQualifier(b.property("N")->qualifiers, "Description"), nullptr);
}

TEST_F(MofTexts, AReferenceMayBeNarrowedAndItsTargetStandLater) {
    const ClassDeclaration& b = load(R"(
        class A { [Key] Thing REF Left; };
        class B : A { [Key, Override("Left")] Special REF Left; };
        class Thing { };
        class Special : Thing { };)",
                                     "B");
    EXPECT_EQ(b.property("Left")->referenceClass, "Special");
    EXPECT_TRUE(b.property("Left")->isReference());
    EXPECT_EQ(b.keys().size(), 1U);
}

TEST_F(MofTexts, MethodsHaveTheirParametersAndDirections) {
    const ClassDeclaration& b = load(R"(
        class A { uint32 Do([In] string Text, [In(false), Out] uint8 Codes[], [In, Out] A REF Others[], sint8 Plain);
                  boolean Nothing(); };
        class B : A { [Override("Do")] uint32 Do(string Text); };)",
                                     "B");
    const MethodDeclaration& inherited = *repository.find("root/test", "A")->method("do");
    ASSERT_EQ(inherited.parameters.size(), 4U);
    EXPECT_EQ(inherited.returnType, CMPI_uint32);
    const ParameterDeclaration& codes = *inherited.parameter("codes");
    EXPECT_EQ(codes.type, CMPI_uint8A);
    EXPECT_FALSE(codes.isIn);
    EXPECT_TRUE(codes.isOut);
    const ParameterDeclaration& others = *inherited.parameter("Others");
    EXPECT_EQ(others.type, CMPI_refA);
    EXPECT_TRUE(others.isReference());
    EXPECT_TRUE(others.isIn);
    EXPECT_TRUE(others.isOut);
    EXPECT_TRUE(inherited.parameter("Plain")->isIn);
    EXPECT_FALSE(inherited.parameter("Plain")->isOut);
    EXPECT_EQ(inherited.parameter("Missing"), nullptr);
    EXPECT_EQ(b.method("Do")->parameters.size(), 1U);
    EXPECT_EQ(b.method("Do")->classOrigin, "A");
    EXPECT_TRUE(b.method("Nothing")->isPropagated);
    EXPECT_EQ(b.method("Something"), nullptr);
}

TEST_F(MofTexts, CommentsAndPragmasOfOtherToolsChangeNothing) {
    load(
        "#pragma locale (\"en_US\")\n// class Not {};\n/* class Not2 {}; ** / */class A { /**/ string N; // end\n};//");
    EXPECT_EQ(repository.classes("root/test").size(), 1U);
}

TEST_F(MofTexts, KeywordsAndTypesHaveNoCase) {
    const ClassDeclaration& a = load("CLASS A { UINT16 N = Null; a ref Other; BOOLEAN B = True; };");
    EXPECT_EQ(a.property("N")->type, CMPI_uint16);
    EXPECT_EQ(a.property("Other")->referenceClass, "a");
    EXPECT_EQ(defaultOf(a, "B"), "true");
}

TEST_F(MofTexts, APragmaPutsWhatFollowsIntoAnotherNamespace) {
    repository.loadText("root/one", "class A {};\n#pragma namespace (\"/root/two/\")\nclass B {};");
    EXPECT_NE(repository.find("root/one", "A"), nullptr);
    EXPECT_EQ(repository.find("root/one", "B"), nullptr);
    EXPECT_NE(repository.find("root/two", "B"), nullptr);
    EXPECT_EQ(repository.namespaces(), (std::vector<std::string_view>{"root/one", "root/two"}));
}

TEST_F(MofTexts, QualifierDeclarationsKeepTypeScopeAndFlavor) {
    repository.loadText("root/q", "Qualifier Units : string = \"none\", Scope(Property, METHOD), "
                                  "Flavor(DisableOverride, Restricted, Translatable);\n"
                                  "Qualifier Plain : uint8[] = {1, 2};");
    const auto declared = repository.qualifierDeclarations("root/q");
    ASSERT_EQ(declared.size(), 2U);
    EXPECT_EQ(declared[0].name, "Units");
    EXPECT_EQ(declared[0].defaultValue.text(), "none");
    EXPECT_EQ(declared[0].scopes, (std::vector<std::string>{"property", "method"}));
    EXPECT_FALSE(declared[0].flavor.isOverridable);
    EXPECT_FALSE(declared[0].flavor.isToSubclass);
    EXPECT_TRUE(declared[0].flavor.isTranslatable);
    EXPECT_EQ(declared[1].defaultValue.texts.size(), 2U);
    EXPECT_TRUE(declared[1].flavor.isOverridable);
    EXPECT_TRUE(declared[1].flavor.isToSubclass);
}
