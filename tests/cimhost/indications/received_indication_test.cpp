#include "cimhost/cli/received_indication.h"

#include "cimhost/cimxml/request.h"

#include <gtest/gtest.h>

using cimhost::cimxml::Instance;
using cimhost::cli::SequenceWatch;

namespace {

Instance received(const std::string& properties) {
    const auto decoded = cimhost::cimxml::decodeExport(
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEEXPREQ>"
        "<EXPMETHODCALL NAME=\"ExportIndication\"><EXPPARAMVALUE NAME=\"NewIndication\"><INSTANCE "
        "CLASSNAME=\"T_Alert\">" +
        properties + "</INSTANCE></EXPPARAMVALUE></EXPMETHODCALL></SIMPLEEXPREQ></MESSAGE></CIM>");
    return std::get<cimhost::cimxml::ExportRequest>(decoded).indication;
}

Instance numbered(const std::string& context, const std::string& number) {
    return received("<PROPERTY NAME=\"SequenceContext\" TYPE=\"string\"><VALUE>" + context +
                    "</VALUE></PROPERTY><PROPERTY NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>" + number +
                    "</VALUE></PROPERTY>");
}

} // namespace

TEST(ReceivedIndication, IsShownWithoutControlCharacters) {
    EXPECT_EQ(cimhost::cli::textOf(received("<PROPERTY NAME=\"Message\" TYPE=\"string\"><VALUE>a&#10;b\x7f\xc2\x9b"
                                            "3</VALUE></PROPERTY>"
                                            "<PROPERTY NAME=\"Empty\" TYPE=\"string\"/>")),
              "T_Alert\n  Message  a b   3\n");
}

TEST(ReceivedIndication, IsOneLineForPeopleWithWordsForItsCodes) {
    const std::string common = "<PROPERTY NAME=\"PerceivedSeverity\" TYPE=\"uint16\"><VALUE>3</VALUE></PROPERTY>"
                               "<PROPERTY NAME=\"AlertType\" TYPE=\"uint16\"><VALUE>2</VALUE></PROPERTY>"
                               "<PROPERTY NAME=\"IndicationTime\" TYPE=\"datetime\"><VALUE>20260131120501.000000+060"
                               "</VALUE></PROPERTY><PROPERTY NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>4</VALUE>"
                               "</PROPERTY>";
    EXPECT_EQ(cimhost::cli::lineOf(received(
                  common + "<PROPERTY NAME=\"Message\" TYPE=\"string\"><VALUE>port&#10;down</VALUE></PROPERTY>")),
              "2026-01-31 12:05:01  Warning  Communications alert  T_Alert #4: port down\n");
    EXPECT_EQ(cimhost::cli::lineOf(
                  received("<PROPERTY NAME=\"PerceivedSeverity\" TYPE=\"uint16\"><VALUE>77</VALUE></PROPERTY>"
                           "<PROPERTY NAME=\"IndicationTime\" TYPE=\"datetime\"><VALUE>soon</VALUE></PROPERTY>")),
              "PerceivedSeverity 77  T_Alert\n");
    EXPECT_EQ(cimhost::cli::lineOf(received("")), "T_Alert\n");
}

TEST(ReceivedIndication, IsOneLineOfJsonForTools) {
    EXPECT_EQ(cimhost::cli::jsonLineOf(received(
                  "<PROPERTY NAME=\"N\" TYPE=\"uint64\"><VALUE>18446744073709551615</VALUE></PROPERTY>"
                  "<PROPERTY NAME=\"S\" TYPE=\"sint8\"><VALUE>-3</VALUE></PROPERTY>"
                  "<PROPERTY NAME=\"B\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></PROPERTY>"
                  "<PROPERTY NAME=\"Null\" TYPE=\"string\"/>"
                  "<PROPERTY.ARRAY NAME=\"A\" TYPE=\"string\"><VALUE.ARRAY><VALUE>x</VALUE><VALUE.NULL/></VALUE.ARRAY>"
                  "</PROPERTY.ARRAY>")),
              "{\"class\":\"T_Alert\",\"properties\":{\"N\":18446744073709551615,\"S\":-3,\"B\":true,\"Null\":null,"
              "\"A\":[\"x\",null]}}\n");
}

TEST(ReceivedIndication, AValueThatDoesNotFitItsTypeStaysText) {
    const auto jsonOf = [](const std::string& type, const std::string& text) {
        const std::string line = cimhost::cli::jsonLineOf(
            received("<PROPERTY NAME=\"P\" TYPE=\"" + type + "\"><VALUE>" + text + "</VALUE></PROPERTY>"));
        const std::size_t begin = line.find("\"P\":") + 4;
        return line.substr(begin, line.size() - begin - 3);
    };
    EXPECT_EQ(jsonOf("sint64", "-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(jsonOf("sint64", "-18446744073709551615"), "\"-18446744073709551615\"");
    EXPECT_EQ(jsonOf("uint8", "255"), "255");
    EXPECT_EQ(jsonOf("uint8", "999"), "\"999\"");
    EXPECT_EQ(jsonOf("uint16", "-1"), "\"-1\"");
    EXPECT_EQ(jsonOf("boolean", "FALSE"), "false");
    EXPECT_EQ(jsonOf("boolean", "maybe"), "\"maybe\"");
}

TEST(ReceivedIndication, GapsAndRepetitionsAreReported) {
    SequenceWatch watch;
    EXPECT_EQ(watch.judge(numbered("a", "5")), "");
    EXPECT_EQ(watch.judge(numbered("a", "6")), "");
    EXPECT_EQ(watch.judge(numbered("b", "0")), "");
    EXPECT_EQ(watch.judge(numbered("a", "9")), "2 missing between #6 and #9");
    EXPECT_EQ(watch.judge(numbered("a", "9")), "#9 came late or twice, after #9");
    EXPECT_EQ(watch.judge(numbered("a", "x")), "");
    EXPECT_EQ(watch.judge(received("")), "");
}
