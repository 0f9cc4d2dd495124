// The text that Prometheus reads, and which of its two forms a client gets.
#include "cimhost/metrics/exposition.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

namespace cimhost::metrics {
namespace {

std::string written(Format format, void (*write)(Exposition&)) {
    ByteBuffer text;
    Exposition out(text, format);
    write(out);
    out.end();
    return std::string(text.view());
}

void writeOfEachType(Exposition& out) {
    out.family("a_reading", Type::gauge, "A reading.").sample({}, 1.5);
    out.family("a_event", Type::counter, "Events.").sample(Labels().add("kind", "x"), std::uint64_t{7});
    out.family("a_thing", Type::info, "A thing.").sample(Labels().add("name", "y"), std::uint64_t{1});
    out.family("a_wait_seconds", Type::histogram, "Waits.");
    out.bucket({}, "0.1", 2);
    out.bucket({}, "+Inf", 3);
    out.countAndSum({}, 3, 4.25);
}

TEST(Exposition, WritesTheTextFormat) {
    EXPECT_EQ(written(Format::prometheus, writeOfEachType),
              "# HELP a_reading A reading.\n# TYPE a_reading gauge\na_reading 1.5\n"
              "# HELP a_event_total Events.\n# TYPE a_event_total counter\na_event_total{kind=\"x\"} 7\n"
              "# HELP a_thing_info A thing.\n# TYPE a_thing_info gauge\na_thing_info{name=\"y\"} 1\n"
              "# HELP a_wait_seconds Waits.\n# TYPE a_wait_seconds histogram\n"
              "a_wait_seconds_bucket{le=\"0.1\"} 2\na_wait_seconds_bucket{le=\"+Inf\"} 3\n"
              "a_wait_seconds_sum 4.25\na_wait_seconds_count 3\n");
}

TEST(Exposition, WritesOpenMetrics) {
    const std::string text = written(Format::openMetrics, writeOfEachType);
    EXPECT_NE(text.find("# TYPE a_event counter\na_event_total{kind=\"x\"} 7\n"), std::string::npos) << text;
    EXPECT_NE(text.find("# TYPE a_thing info\na_thing_info{name=\"y\"} 1\n"), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.size() - 6), "# EOF\n");
}

TEST(Exposition, LeavesOutValuesThatAreNoNumbersAndEmptyFamilies) {
    EXPECT_EQ(written(Format::prometheus,
                      [](Exposition& out) {
                          out.family("nothing", Type::gauge, "Nothing.");
                          out.family("broken", Type::gauge, "Broken.");
                          out.sample({}, std::numeric_limits<double>::quiet_NaN());
                          out.sample({}, std::numeric_limits<double>::infinity());
                      }),
              "");
}

TEST(Exposition, ShowsNumbersWithoutRoundingErrors) {
    EXPECT_EQ(
        written(Format::prometheus, [](Exposition& out) { out.family("n", Type::gauge, "N.").sample({}, 3.3 * 1.1); }),
        "# HELP n N.\n# TYPE n gauge\nn 3.63\n");
}

TEST(Labels, EscapeBackslashesQuotesAndNewlines) {
    EXPECT_EQ(Labels().add("a", "back\\slash \"quote\" new\nline").add("b", "").text(),
              "a=\"back\\\\slash \\\"quote\\\" new\\nline\",b=\"\"");
}

TEST(Labels, ReplaceInvalidUtf8) { EXPECT_EQ(Labels().add("a", "\xC3\xA4 \xFF \xC3").text(), "a=\"\xC3\xA4 ? ?\""); }

struct Preference {
    const char* accept;
    Format format;
};

void PrintTo(const Preference& preference, std::ostream* out) { *out << preference.accept; }

class Preferred : public testing::TestWithParam<Preference> {};

TEST_P(Preferred, IsTheFormatThatTheClientPrefers) { EXPECT_EQ(preferredFormat(GetParam().accept), GetParam().format); }

INSTANTIATE_TEST_SUITE_P(
    Accept, Preferred,
    testing::Values(Preference{"", Format::prometheus}, Preference{"*/*", Format::prometheus},
                    Preference{"text/plain", Format::prometheus},
                    Preference{"application/openmetrics-text", Format::openMetrics},
                    Preference{"application/openmetrics-text; version=1.0.0; charset=utf-8", Format::openMetrics},
                    Preference{"application/openmetrics-text;version=0.0.1", Format::prometheus},
                    Preference{
                        "application/openmetrics-text;version=1.0.0,application/openmetrics-text;version=0.0.1;q=0.75,"
                        "text/plain;version=0.0.4;q=0.5,*/*;q=0.1",
                        Format::openMetrics},
                    Preference{"application/openmetrics-text;q=0.2,text/plain;q=0.3", Format::prometheus},
                    Preference{"application/openmetrics-text;q=0", Format::prometheus},
                    Preference{"application/openmetrics-text;q=much", Format::prometheus},
                    Preference{"application/openmetrics-text;q=0.99999999999999999999,,;;=,", Format::openMetrics}));

} // namespace
} // namespace cimhost::metrics
