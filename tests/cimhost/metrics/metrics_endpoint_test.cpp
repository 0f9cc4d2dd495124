// GET /metrics, with adapters that answer and with such that do not.
#include "cimhost/metrics/metrics_endpoint.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace cimhost::metrics {
namespace {

using namespace std::chrono_literals;

class OneMetric final : public Reading {
public:
    void write(Exposition& out) const override { out.family("adapters", Type::gauge, "Adapters.").sample({}, 3.0); }
};

class PromisedReply final : public http::Reply {
public:
    void send(http::Response answer) override {
        if (!isSent.exchange(true)) promise.set_value(std::move(answer));
    }
    bool isAwaited() const override { return true; }

    std::promise<http::Response> promise;

private:
    std::atomic<bool> isSent = false;
};

void writeOwn(Exposition& out) { out.family("own", Type::gauge, "Own.").sample({}, 1.0); }

http::Request get(std::string target, std::vector<http::Field> fields = {}) {
    return {"GET", std::move(target), std::move(fields), {}, {}};
}

std::string scrape(MetricsEndpoint& endpoint, std::vector<http::Field> fields = {}) {
    const auto reply = std::make_shared<PromisedReply>();
    auto answer = reply->promise.get_future();
    endpoint.answerTo(get("/metrics", std::move(fields)), reply);
    return std::string(answer.get().body.view());
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(MetricsEndpoint, TellsAdaptersAndItself) {
    Readings readings([] { return std::make_shared<OneMetric>(); });
    MetricsEndpoint endpoint(readings, writeOwn, 60s);
    const std::string text = scrape(endpoint);
    EXPECT_TRUE(holds(text, "\nmerolt_cna_adapters_readable 1\n")) << text;
    EXPECT_TRUE(holds(text, "\nadapters 3\n")) << text;
    EXPECT_TRUE(holds(text, "\nown 1\n")) << text;
}

TEST(MetricsEndpoint, TellsItselfAloneWhenTheAdaptersHangForAsLongAsTheClientWaits) {
    std::promise<void> release;
    Readings readings([wait = release.get_future().share()]() -> SharedReading {
        wait.wait();
        return nullptr;
    });
    MetricsEndpoint endpoint(readings, writeOwn, 60s);
    const auto begun = std::chrono::steady_clock::now();
    const std::string text = scrape(endpoint, {{"X-Prometheus-Scrape-Timeout-Seconds", "0.2"}});
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 30s);
    EXPECT_TRUE(holds(text, "\nmerolt_cna_adapters_readable 0\n")) << text;
    EXPECT_FALSE(holds(text, "\nadapters ")) << text;
    EXPECT_TRUE(holds(text, "\nown 1\n")) << text;
    release.set_value();
}

TEST(MetricsEndpoint, IgnoresAnInvalidTimeout) {
    Readings readings([] { return std::make_shared<OneMetric>(); });
    MetricsEndpoint endpoint(readings, writeOwn, 60s);
    for (const char* text : {"", "soon", "-1", "0", "nan", "inf", "1e999", "10 s"}) {
        EXPECT_TRUE(holds(scrape(endpoint, {{"X-Prometheus-Scrape-Timeout-Seconds", text}}), "\nadapters 3\n")) << text;
    }
}

TEST(MetricsEndpoint, AnswersInTheFormThatIsAskedFor) {
    Readings readings([] { return nullptr; });
    MetricsEndpoint endpoint(readings, writeOwn, 60s);
    EXPECT_TRUE(holds(scrape(endpoint, {{"Accept", "application/openmetrics-text"}}), "# EOF\n"));
    EXPECT_FALSE(holds(scrape(endpoint, {{"Accept", "text/plain"}}), "# EOF\n"));
}

TEST(MetricsEndpoint, RefusesOtherPlacesAndMethods) {
    Readings readings([] { return nullptr; });
    const MetricsEndpoint endpoint(readings, writeOwn, 60s);
    EXPECT_FALSE(endpoint.refuse(get("/metrics")));
    EXPECT_FALSE(endpoint.refuse(get("/metrics?name[]=up")));
    EXPECT_EQ(endpoint.refuse(get("/"))->status, 404U);
    EXPECT_EQ(endpoint.refuse(get("/metrics/../cimom"))->status, 404U);
    http::Request post = get("/metrics");
    post.method = "POST";
    EXPECT_EQ(endpoint.refuse(post)->status, 405U);
}

} // namespace
} // namespace cimhost::metrics
