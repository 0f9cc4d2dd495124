#include "broker_fixture.h"

#include <stdexcept>

using cimhost::BrokerOptions;
using cimhost::ContextObject;
using cimhost::InstanceObject;

namespace {

class Indication : public BrokerTest {
protected:
    CMPIStatus deliver(const CMPIInstance* indication, const char* nameSpace = "root/test") {
        const CMPIContext* context = ContextObject::make(scope->arena());
        return cmpi->bft->deliverIndication(cmpi, context, nameSpace, indication);
    }
    void startWith(cimhost::IndicationSink sink) {
        BrokerOptions options;
        options.indicationSink = std::move(sink);
        start(std::move(options));
    }
};

} // namespace

TEST_F(Indication, WithoutSubscribersIsRc1WithoutAMessage) {
    const CMPIStatus status = deliver(instance());
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg, nullptr);
    EXPECT_EQ(broker->deliveredIndications(), 1U);
}

TEST_F(Indication, ReachesTheServerWithItsNamespace) {
    std::string seen;
    startWith([&](std::string_view nameSpace, const InstanceObject& indication) {
        seen = std::string(nameSpace) + " " + std::string(indication.className());
        return CMPI_RC_OK;
    });
    EXPECT_RC(deliver(instance(), "root/PG_InterOp"), CMPI_RC_OK);
    EXPECT_EQ(seen, "root/PG_InterOp Test_Thing");
    EXPECT_RC(deliver(instance(), nullptr), CMPI_RC_OK);
    EXPECT_EQ(seen, " Test_Thing");
    EXPECT_EQ(broker->deliveredIndications(), 2U);
}

TEST_F(Indication, TheServersCodeGoesBackToTheProvider) {
    startWith([](std::string_view, const InstanceObject&) { return CMPI_RC_ERR_ACCESS_DENIED; });
    EXPECT_RC(deliver(instance()), CMPI_RC_ERR_ACCESS_DENIED);
}

TEST_F(Indication, AServerThatFailsIsRc1AndLogged) {
    startWith([](std::string_view, const InstanceObject&) -> CMPIrc { throw std::runtime_error("queue full"); });
    EXPECT_RC(deliver(instance()), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(messages().back(), "an indication was not delivered: queue full");
    startWith([](std::string_view, const InstanceObject&) -> CMPIrc { throw 1; });
    EXPECT_RC(deliver(instance()), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(messages().back(), "an indication was not delivered");
}

TEST_F(Indication, BrokenIndicationsAreRc60) {
    EXPECT_RC(deliver(nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(cmpi->bft->deliverIndication(cmpi, nullptr, "root/test", instance()), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broker->deliveredIndications(), 0U);
}
