#include "cimhost/cli/table.h"
#include "cimhost/cli/values_text.h"
#include "cimhost/model/printable.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <utility>

namespace cimhost::cli {
namespace {

TEST(Table, ColumnsStandUnderTheirHeaders) {
    EXPECT_EQ(renderTable({"Name", "Status"}, {{"port-1", "OK"}, {"ü", "Error"}}, {100}), "Name    Status\n"
                                                                                          "port-1  OK\n"
                                                                                          "ü       Error\n");
}

TEST(Table, NoLineIsLongerThanTheTerminal) {
    const std::string text = renderTable({"A", "B", "C"}, {{std::string(80, 'a'), std::string(70, 'b'), "c"}}, {100});
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        EXPECT_LE(length(line), 100U) << line;
    EXPECT_NE(text.find("a…  b"), std::string::npos) << text;
}

TEST(Table, WithoutATerminalNothingIsCut) {
    const std::string wide(300, 'a');
    EXPECT_EQ(renderTable({"A"}, {{wide}}, {}), "A\n" + wide + "\n");
}

TEST(Table, HeadersStandOutWhereThereAreColours) {
    EXPECT_EQ(renderTable({"A", "B"}, {{"1", "2"}}, {80, true}), "\033[1mA  B\033[0m\n1  2\n");
}

TEST(Table, ColumnsThatDoNotFitAreLeftOut) {
    const Row headers(40, "header");
    const std::string text = renderTable(headers, {Row(40, "value")}, {100});
    EXPECT_LE(text.find('\n'), 100U);
}

TEST(Table, ControlCharactersOfADeviceAreNotPrinted) {
    EXPECT_EQ(printable("a\x1B[31mb\tc\x7F"), "a [31mb c ");
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m"),
              "  31m");
}

CMPIData number(CMPIType type, std::uint64_t value) {
    CMPIData data{};
    data.type = type;
    data.value.uint64 = value;
    return data;
}

PropertyDeclaration declared(std::vector<Qualifier> qualifiers) {
    PropertyDeclaration property;
    property.qualifiers = std::move(qualifiers);
    return property;
}

Qualifier qualifier(std::string name, std::vector<std::optional<std::string>> texts) {
    const CMPIType type = texts.size() == 1 ? CMPI_string : CMPI_stringA;
    return {std::move(name), {type, false, std::move(texts)}, {}, false};
}

TEST(ValuesText, BitsPerSecondAreShownInTheLargestUnitThatFits) {
    const PropertyDeclaration speed = declared({qualifier("PUnit", {"bit / second"})});
    EXPECT_EQ(shortText(&speed, number(CMPI_uint64, 16'000'000'000)), "16 Gbit/s");
    EXPECT_EQ(shortText(&speed, number(CMPI_uint64, 10'625'000'000)), "10.625 Gbit/s");
    EXPECT_EQ(shortText(&speed, number(CMPI_uint64, 100'000'000)), "100 Mbit/s");
    EXPECT_EQ(shortText(&speed, number(CMPI_uint64, 1'000'000'001)), "1 Gbit/s");
    EXPECT_EQ(shortText(&speed, number(CMPI_uint64, 0)), "0 bit/s");
    EXPECT_EQ(fullText(&speed, number(CMPI_uint64, 2'000)), "2000 (2 kbit/s)");
}

TEST(ValuesText, SpeedsInAnotherUnitAreShownAlike) {
    const PropertyDeclaration megabits = declared({qualifier("PUnit", {"bit / second * 10^6"})});
    EXPECT_EQ(shortText(&megabits, number(CMPI_uint64, 10'000)), "10 Gbit/s");
    EXPECT_EQ(shortText(&megabits, number(CMPI_uint64, 1)), "1 Mbit/s");
    EXPECT_EQ(fullText(&megabits, number(CMPI_uint64, 25'000)), "25000 (25 Gbit/s)");
    EXPECT_EQ(shortText(&megabits, number(CMPI_uint64, 18'446'744'073'709)), "18446744073.709 Gbit/s");
    EXPECT_EQ(shortText(&megabits, number(CMPI_uint64, 18'446'744'073'710)), "18446744073710") << "beyond 64 bits";
    for (const auto* unit :
         {"byte", "bit / seconds", "bit / second * 10^", "bit / second * 10^x", "bit / second * 8"}) {
        const PropertyDeclaration other = declared({qualifier("PUnit", {unit})});
        EXPECT_EQ(shortText(&other, number(CMPI_uint64, 10'000)), "10000") << unit;
    }
}

TEST(ValuesText, NumbersAreShownInTheWordsOfTheirDeclaration) {
    const PropertyDeclaration status =
        declared({qualifier("ValueMap", {"2", "10"}), qualifier("Values", {"OK", "Stopped"})});
    EXPECT_EQ(shortText(&status, number(CMPI_uint16, 2)), "OK");
    EXPECT_EQ(shortText(&status, number(CMPI_uint16, 4711)), "4711");
    EXPECT_EQ(fullText(&status, number(CMPI_uint16, 10)), "10 (Stopped)");
    const PropertyDeclaration plain;
    EXPECT_EQ(fullText(&plain, number(CMPI_uint64, 512)), "512");
    EXPECT_EQ(fullText(nullptr, number(CMPI_uint64, 512)), "512");
}

} // namespace
} // namespace cimhost::cli
