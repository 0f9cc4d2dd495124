#include "cimhost/indications/query.h"

#include "indication_world.h"

#include "cimhost/service/request_values.h"

#include <gtest/gtest.h>

using cimhost::Query;
using cimhost::QueryError;
using cimhost::testing_support::World;

namespace {

class QueryTest : public testing::Test {
protected:
    bool selects(const std::string& where) {
        cimhost::RequestScope scope(*world.broker);
        auto& path = *scope.make().path("root/merolt_cmpi", "CIM_AlertIndication");
        auto& alert = *scope.make().instance(path);
        const auto set = [&](const char* name, CMPIType type, const char* text) {
            alert.setProperty(name, *scope.make().value(type, text));
        };
        set("PerceivedSeverity", CMPI_uint16, "6");
        set("SequenceNumber", CMPI_sint64, "-5");
        set("EventID", CMPI_string, "it's up");
        set("IndicationTime", CMPI_dateTime, "20260101120000.000000+060");
        const Query query = Query::parse("SELECT * FROM CIM_AlertIndication WHERE " + where);
        query.checkAgainst(*world.repository.find("root/merolt_cmpi", "CIM_AlertIndication"));
        return query.selects(alert);
    }

    std::string errorOf(const std::string& text) {
        try {
            Query::parse(text).checkAgainst(*world.repository.find("root/merolt_cmpi", "CIM_AlertIndication"));
        } catch (const QueryError& error) {
            return error.what();
        }
        return {};
    }

    World world;
};

} // namespace

TEST_F(QueryTest, ComparesNumbersTextsAndTimes) {
    EXPECT_TRUE(selects("PerceivedSeverity = 6"));
    EXPECT_TRUE(selects("perceivedseverity >= 6.0"));
    EXPECT_TRUE(selects("5 < PerceivedSeverity"));
    EXPECT_FALSE(selects("PerceivedSeverity > 6"));
    EXPECT_TRUE(selects("SequenceNumber < 18446744073709551615"));
    EXPECT_TRUE(selects("SequenceNumber > -6"));
    EXPECT_TRUE(selects("EventID = 'it''s up'"));
    EXPECT_TRUE(selects("EventID <> \"it's down\""));
    EXPECT_TRUE(selects("IndicationTime = '20260101110000.000000+000'"));
}

TEST_F(QueryTest, JoinsComparisonsWithTheUsualPrecedence) {
    EXPECT_TRUE(selects("PerceivedSeverity = 6 OR PerceivedSeverity = 7 AND EventID = 'x'"));
    EXPECT_FALSE(selects("(PerceivedSeverity = 6 OR PerceivedSeverity = 7) AND EventID = 'x'"));
    EXPECT_TRUE(selects("NOT PerceivedSeverity = 7 AND NOT (EventID = 'x')"));
    EXPECT_TRUE(selects("CIM_AlertIndication.PerceivedSeverity = 6"));
}

TEST_F(QueryTest, APropertyWithoutAValueMatchesNeitherAComparisonNorItsOpposite) {
    EXPECT_FALSE(selects("Message = 'x'"));
    EXPECT_FALSE(selects("NOT Message = 'x'"));
    EXPECT_TRUE(selects("Message IS NULL AND EventID IS NOT NULL"));
    EXPECT_TRUE(selects("Message = 'x' OR PerceivedSeverity = 6"));
}

TEST_F(QueryTest, ASyntaxErrorIsRefusedWithItsPlace) {
    const std::string from = "SELECT * FROM CIM_AlertIndication";
    EXPECT_EQ(errorOf(""), "character 1: SELECT is expected, found the end");
    EXPECT_EQ(errorOf("SELECT Message FROM X"),
              "character 8: * is expected: filters here select whole indications, found \"Message\"");
    EXPECT_EQ(errorOf(from + " WHERE Message LIKE 'x'"),
              "character 49: a comparison such as = or <> is expected, found \"LIKE\"");
    EXPECT_EQ(errorOf(from + " WHERE Message = 'x"), "character 51: the quote is not closed");
    EXPECT_EQ(errorOf(from + " WHERE PerceivedSeverity = 1x"), "character 61: a number is expected, found \"1x\"");
    EXPECT_EQ(errorOf(from + " ORDER"), "character 35: WHERE is expected, found \"ORDER\"");
    EXPECT_NE(errorOf(from + " WHERE " + std::string(2000, '(')), "");
    EXPECT_NE(errorOf(from + " WHERE Message = '" + std::string(9000, 'x') + "'"), "");
}

TEST_F(QueryTest, ConditionsThatDoNotFitTheClassAreRefused) {
    const std::string where = "SELECT * FROM CIM_AlertIndication WHERE ";
    EXPECT_EQ(errorOf(where + "Colour = 1"), "class CIM_AlertIndication has no property Colour");
    EXPECT_EQ(errorOf(where + "PerceivedSeverity = 'x'"),
              "property PerceivedSeverity is uint16, which is not compared with such a value");
    EXPECT_EQ(errorOf(where + "MessageArguments = 'x'"),
              "property MessageArguments is string[], which is not compared with such a value");
    EXPECT_NE(errorOf(where + "IndicationTime = 'noon'"), "");
}
