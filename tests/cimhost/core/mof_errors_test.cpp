// What is wrong in a MOF text is told with its place: "file:line:column: text".
#include <gtest/gtest.h>

#include <string>

#include "cimhost/model/class_repository.h"
#include "mof_prelude.h"

using namespace cimhost;
using namespace std::string_literals;

namespace {

// The message without the file's name; "read" if there was none.
std::string messageOf(const std::string& text) {
    ClassRepository repository;
    try {
        repository.loadText("root/test", text, "a.mof");
    } catch (const MofError& error) {
        const std::string message = error.what();
        const SourcePosition& place = error.position();
        EXPECT_EQ(place.file, "a.mof");
        EXPECT_EQ(message.rfind("a.mof:" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": ", 0),
                  0U)
            << message;
        return message.substr(std::string("a.mof:").size());
    }
    return "read";
}

struct Row {
    std::string text;
    std::string message;
};

void expectMessages(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(messageOf(withQualifiers(row.text)), row.message) << row.text;
    }
}

} // namespace

TEST(MofErrors, OfNames) {
    expectMessages({
        {"class A {};\nclass a {};", R"(3:7: class "a" is declared twice in namespace "root/test")"},
        {"class A : B {};", R"(2:11: superclass "B" of class "A" is unknown)"},
        {"class A : A {};", R"(2:11: superclass "A" of class "A" is unknown)"},
        {"class A {\n  B REF Other;\n};", R"(3:3: reference "Other" of class "A" refers to the unknown class "B")"},
        {"class A { uint8 M([In] B REF p); };",
         R"(2:24: parameter "p" of method "M" of class "A" refers to the unknown class "B")"},
        {"[Kye] class A {};", R"(2:2: qualifier "Kye" is not declared)"},
        {"class A { [Kye] string Name; };", R"(2:12: qualifier "Kye" is not declared)"},
        {"[Abstract, abstract] class A {};", R"(2:12: qualifier "abstract" stands here twice)"},
        {"[Key] class A {};", R"(2:2: qualifier "Key" may not stand on a class)"},
        {"class A { [Abstract] string N; };", R"(2:12: qualifier "Abstract" may not stand on a property)"},
        {"class A { [EmbeddedInstance(\"A\")] A REF r; };",
         R"(2:12: qualifier "EmbeddedInstance" may not stand on a reference)"},
        {"class A { string N; uint8 n; };", R"(2:27: property "n" of class "A" is declared twice)"},
        {"class A { uint8 M(); uint8 m(); };", R"(2:28: method "m" of class "A" is declared twice)"},
        {"class A { uint8 M(uint8 p, uint8 P); };",
         R"(2:34: parameter "P" of method "M" of class "A" is declared twice)"},
        {"Qualifier key : boolean;", R"(2:11: qualifier "key" is declared twice in namespace "root/test")"},
        {"Qualifier Q : boolean, Scope(classes);", R"(2:30: unknown scope "classes")"},
        {"Qualifier Q : boolean, Flavor(Sweet);", R"(2:31: unknown flavor "Sweet")"},
        {"class A { [Key : Sweet] string N; };", R"(2:18: unknown flavor "Sweet")"},
        {"#pragma namespace (\"//\")", "2:20: a namespace without a name"},
        {"#pragma include (\"b.mof\")", "2:18: a text in memory cannot include files"},
    });
}

TEST(MofErrors, OfInheritance) {
    expectMessages({
        {"class A { uint8 N; };\nclass B : A { uint16 N; };",
         R"(3:22: property "N" of class "B" is uint16, but its superclass declares it as uint8)"},
        {"class A { uint8 N; };\nclass B : A { [Override(\"N\")] uint8 N[]; };",
         R"(3:37: property "N" of class "B" is uint8[], but its superclass declares it as uint8)"},
        {"class A { uint8 N; };\nclass B : A { A REF N; };",
         R"(3:21: reference "N" of class "B" is reference, but its superclass declares it as uint8)"},
        {"class A { [Key] string K; };\nclass B : A { [Key] string L; };",
         R"(3:28: property "L" of class "B" is a new key, but its superclass "A" has keys already)"},
        {"class A { [Key] string K; string L; };\nclass B : A { [Key, Override(\"L\")] string L; };",
         R"(3:43: property "L" of class "B" is a new key, but its superclass "A" has keys already)"},
        {"class A { [Key] string K; };\nclass B : A { [Key(false), Override(\"K\")] string K; };",
         R"(3:50: qualifier "Key" of property "K" of class "B" is inherited with another value and cannot be overridden)"},
        {"class A { string N; };\nclass B : A { [Override(\"M\")] string N; };",
         R"(3:38: property "N" of class "B" overrides "M", which is not what it inherits)"},
        {"class A { [Override(\"N\")] string N; };",
         R"(2:34: property "N" of class "A" overrides "N", which is not what it inherits)"},
        {"class A { uint8 M(); };\nclass B : A { uint16 M(); };",
         R"(3:22: method "M" of class "B" returns uint16, but its superclass declares it as returning uint8)"},
        {"class X {}; class Y {}; class A { X REF R; };\nclass B : A { [Override(\"R\")] Y REF R; };",
         R"(3:31: reference "R" of class "B" refers to "Y", but its superclass demands a "X")"},
        {"[Association] class A {};\n[Association(false)] class B : A {};",
         R"(3:28: qualifier "Association" of class "B" is inherited with another value and cannot be overridden)"},
    });
}

TEST(MofErrors, OfValues) {
    expectMessages({
        {"class A { uint8 N = 256; };", R"(2:21: the value of property "N" of class "A" is no uint8)"},
        {"class A { uint8 N = -1; };", R"(2:21: the value of property "N" of class "A" is no uint8)"},
        {"class A { uint8 N = \"1\"; };", R"(2:21: the value of property "N" of class "A" is no uint8)"},
        {"class A { uint8 N[] = {1, 2, 300}; };", R"(2:30: the value of property "N" of class "A" is no uint8)"},
        {"class A { uint8 N = {1}; };", R"(2:21: property "N" of class "A" is uint8, but its value is an array)"},
        {"class A { uint8 N[] = 1; };",
         R"(2:23: property "N" of class "A" is uint8[], but its value is a single value)"},
        {"class A { boolean N = 1; };", R"(2:23: the value of property "N" of class "A" is no boolean)"},
        {"class A { string N = 1; };", R"(2:22: the value of property "N" of class "A" is no string)"},
        {"class A { string N = 'a'; };", R"(2:22: the value of property "N" of class "A" is no string)"},
        {"class A { char16 N = \"a\"; };", R"(2:22: the value of property "N" of class "A" is no char16)"},
        {"class A { char16 N = '\xf0\x9f\x98\x80'; };", R"(2:22: the value of property "N" of class "A" is no char16)"},
        {"class A { real32 N = 1e300; };", R"(2:22: the value of property "N" of class "A" is no real32)"},
        {"class A { real64 N = 1.2.3; };", R"(2:22: the value of property "N" of class "A" is no real64)"},
        {"class A { datetime N = \"today\"; };", R"(2:24: the value of property "N" of class "A" is no datetime)"},
        {"class A { A REF N = \"A.x=1\"; };", R"(2:21: the value of reference "N" of class "A" is no reference)"},
        {"class A { A REF N[]; };", R"(2:17: reference "N" of class "A" is an array: only parameters can be that)"},
        {"class A { [Key(\"yes\")] string N; };", R"(2:16: the value of qualifier "Key" is no boolean)"},
        {"class A { [ValueMap(\"1\")] string N; };",
         R"(2:21: qualifier "ValueMap" is string[], but its value is a single value)"},
        {"Qualifier Q : uint8 = 300;", R"(2:23: the value of qualifier "Q" is no uint8)"},
        {"class A { uint8 N = 18446744073709551616; };",
         R"(2:21: "18446744073709551616" is no integer of at most 64 bits)"},
        {"class A { uint8 N = 12abc; };", R"(2:21: "12abc" is no integer of at most 64 bits)"},
        {"class A { uint8 N = " + std::string(100, '9') + "; };",
         "2:21: a word of 100 bytes is no integer of at most 64 bits"},
    });
}

TEST(MofErrors, OfCharacters) {
    expectMessages({
        {"class A { string N = \"open; };", "2:22: text without its closing quote on the same line"},
        {"class A { string N = \"open\n\"; };", "2:22: text without its closing quote on the same line"},
        {"class A { char16 N = 'a", "2:22: text without its closing quote on the same line"},
        {"class A { string N = \"end\\", "2:26: unknown escape in a text"},
        {"class A { string N = \"\\q\"; };", "2:23: unknown escape in a text"},
        {"class A { string N = \"\\xg\"; };", "2:23: \\x without hexadecimal digits"},
        {"class A { string N = \"\\x0\"; };", "2:23: \\x with a code that is no character"},
        {"class A { string N = \"\\xD800\"; };", "2:23: \\x with a code that is no character"},
        {"class A { string N = \"a\xff\"; };", "2:24: text that is not UTF-8"},
        {"class A { string N = \"a\0\"; };"s, "2:24: a NUL in a text"},
        {"class A { char16 N = ''; };", "2:22: expected one character between single quotes, found ''"},
        {"class A { char16 N = 'ab'; };", "2:22: expected one character between single quotes, found 'ab'"},
        {"class A {};\n/* open", "3:1: comment without its closing \"*/\""},
        {"/*/", "2:1: comment without its closing \"*/\""},
        {"class A\xff {};", "2:7: a name that is not UTF-8"},
        {"class " + std::string(257, 'A') + " {};", "2:7: a name of more than 256 bytes"},
        {"class A {}\0;"s, "2:11: unexpected byte 0x00"},
        {"class A { @ };", R"(2:11: unexpected "@")"},
        {"/", R"(2:1: unexpected "/")"},
        {"class A { uint8 N = - 1; };", R"(2:21: unexpected "-")"},
        {"#include (\"b.mof\")", R"(2:1: expected #pragma, found "#include")"},
    });
}

TEST(MofErrors, OfGrammar) {
    const std::string longText(100, 'x');
    expectMessages({
        {"klass A {};", R"(2:1: expected a class, a qualifier declaration or #pragma, found "klass")"},
        {"\"text\"", R"(2:1: expected a class, a qualifier declaration or #pragma, found "text")"},
        {"\"" + longText + "\"",
         "2:1: expected a class, a qualifier declaration or #pragma, found a text of 102 bytes"},
        {longText, "2:1: expected a class, a qualifier declaration or #pragma, found a word of 100 bytes"},
        {"[Abstract] Qualifier Q : boolean;", R"(2:12: expected "class", found "Qualifier")"},
        {"class", "2:6: expected a class name, found the end of the file"},
        {"class 3A {};", "2:7: \"3A\" is no integer of at most 64 bits"},
        {"class A", R"(2:8: expected "{", found the end of the file)"},
        {"class A as $A {};", "2:9: aliases are not supported here"},
        {"class A : {};", R"(2:11: expected a superclass, found "{")"},
        {"class A {}", R"(2:11: expected ";", found the end of the file)"},
        {"class A { string };", R"(2:18: expected a name, found "}")"},
        {"class A { strings N; };", R"(2:11: expected a type or a class before "REF", found "strings")"},
        {"class A { 17 };", R"(2:11: expected a property, a reference, a method or "}", found "17")"},
        {"class A { string N };", R"(2:20: expected ";", found "}")"},
        {"class A { string N[0]; };", R"(2:20: expected an array size from 1 on, found "0")"},
        {"class A { string N[-1]; };", R"(2:20: expected an array size from 1 on, found "-1")"},
        {"class A { string N[4294967296]; };", R"(2:20: expected an array size from 1 on, found "4294967296")"},
        {"class A { string N[\"1\"]; };", R"(2:20: expected "]", found "1")"},
        {"class A { string N = ; };", R"(2:22: expected a value, found ";")"},
        {"class A { string N = $A; };", "2:22: aliases are not supported here"},
        {"class A { uint8 N[] = {1,}; };", R"(2:26: expected a value, found "}")"},
        {"class A { uint8 N[] = {1 2}; };", R"(2:26: expected "}", found "2")"},
        {"class A { uint8 N[] = {{1}}; };", R"(2:24: expected a value, found "{")"},
        {"class A { A REF M(); };", "2:18: a method cannot return a reference"},
        {"class A { uint8 M(uint8); };", R"~(2:24: expected a name, found ")")~"},
        {"class A { uint8 M(uint8 p,); };", R"~(2:27: expected a parameter, found ")")~"},
        {"class A { uint8 M(uint8 p = 1); };", R"~(2:27: expected ")", found "=")~"},
        {"class A { [] string N; };", R"~(2:12: expected a qualifier's name, found "]")~"},
        {"class A { [Key string N; };", R"~(2:16: expected "]", found "string")~"},
        {"class A { [Key(true] string N; };", R"~(2:20: expected ")", found "]")~"},
        {"class A { [Key :] string N; };", R"~(2:17: expected a flavor, found "]")~"},
        {"Qualifier Q boolean;", R"~(2:13: expected ":", found "boolean")~"},
        {"Qualifier Q : CIM_X;", R"~(2:15: expected a type, found "CIM_X")~"},
        {"Qualifier Q : boolean, Scopes(any);", R"~(2:24: expected "Scope" or "Flavor", found "Scopes")~"},
        {"Qualifier Q : boolean, Scope any;", R"~(2:30: expected "(", found "any")~"},
        {"#pragma (\"x\")", R"~(2:9: expected a pragma's name, found "(")~"},
        {"#pragma locale (en_US)", R"~(2:17: expected a text, found "en_US")~"},
        {"instance of A { };", "2:1: instances are not supported here"},
        {"[Description(\"x\")] instance of A { };", "2:20: instances are not supported here"},
    });
}

TEST(MofErrors, ColumnsAreCountedInBytesFromTheLastNewline) {
    EXPECT_EQ(messageOf("\xef\xbb\xbf"
                        "klass"),
              R"(1:1: expected a class, a qualifier declaration or #pragma, found "klass")")
        << "a byte order mark counts for nothing";
    EXPECT_EQ(messageOf("/* \xc3\xa4 */ klass"),
              R"(1:10: expected a class, a qualifier declaration or #pragma, found "klass")");
    EXPECT_EQ(messageOf("/* a\n b\n*/ // c\r\n\r\n  klass"),
              R"(5:3: expected a class, a qualifier declaration or #pragma, found "klass")");
}

TEST(MofErrors, DeepNestingIsRefusedWhereItBegins) {
    const std::string message = messageOf("class A { uint8 N[] = " + std::string(1000000, '{'));
    EXPECT_EQ(message, R"(1:24: expected a value, found "{")");
    EXPECT_EQ(messageOf(std::string(1000000, '[')), R"(1:2: expected a qualifier's name, found "[")");
}

TEST(MofErrors, ADeclarationOfTooManyPartsIsRefused) {
    const auto repeated = [](const std::string& begin, const std::string& part) {
        std::string text = begin;
        for (int count = 0; count < 30000; ++count)
            text += part;
        return messageOf(text);
    };
    const std::string expected = ": a declaration of more than 20000 parts";
    for (const std::string& message : {
             repeated("class A {", "uint8 N;"),
             repeated("class A { uint8 N[] = {0", ",0"),
             repeated("class A { uint8 M(uint8 a", ",uint8 b"),
             repeated("[Key", ",Key"),
             repeated("[Key: ToSubclass", " ToSubclass"),
             repeated("Qualifier Q : boolean, Scope(any", ",any"),
         }) {
        EXPECT_NE(message.find(expected), std::string::npos) << message;
    }
}

TEST(MofErrors, ANamespaceHasAThousandQualifiersAtMost) {
    std::string text;
    for (int count = 0; count < 1001; ++count)
        text += "Qualifier Q" + std::to_string(count) + " : boolean;\n";
    EXPECT_EQ(messageOf(text), R"(1001:11: more than 1000 qualifiers in namespace "root/test")");
}

TEST(MofErrors, MemoryOfInheritedMembersIsBounded) {
    std::string text = "Qualifier Description : string, Scope(any);\nclass C0 { [Description(\"";
    text += std::string(1U << 20, 'x') + "\")] string N; };\n";
    for (int count = 1; count < 300; ++count) {
        text += "class C" + std::to_string(count) + " : C" + std::to_string(count - 1) + " {};\n";
    }
    const std::string message = messageOf(text);
    EXPECT_NE(message.find(": the classes take more than 256 MiB"), std::string::npos) << message.substr(0, 200);
}
