// The gate of all indications, driven by a server's filter operations.
#include "provider_host.h"
#include "test_support.h"

#include "indications/subscriptions.h"

namespace {

using cimhost::SelectExpObject;

class SubscriptionTest : public ProviderTest {
protected:
    void SetUp() override {
        switchLogsOn();
        start();
        indicationMI = createIndicationMI();
        ASSERT_NE(indicationMI, nullptr);
    }

    template <class Operation, class... Last>
    CMPIrc filter(Operation operation, Last... last) {
        cimhost::RequestScope scope(*broker);
        const CMPIContext* context = cimhost::ContextObject::make(scope.arena());
        const CMPISelectExp* query = SelectExpObject::make(scope.arena(), "SELECT * FROM CIM_AlertIndication", "WQL");
        const CMPIObjectPath* path = scope.make().path(implementationNamespace, "CIM_AlertIndication");
        return operation(indicationMI, context, query, "CIM_AlertIndication", path, last...).rc;
    }

    void activate() { EXPECT_EQ(filter(indicationMI->ft->activateFilter, CMPIBoolean{1}), CMPI_RC_OK); }
    void deactivate() { EXPECT_EQ(filter(indicationMI->ft->deActivateFilter, CMPIBoolean{1}), CMPI_RC_OK); }
};

TEST_F(SubscriptionTest, EveryFilterIsAuthorisedAndNoneNeedsPolling) {
    EXPECT_EQ(filter(indicationMI->ft->authorizeFilter, "somebody"), CMPI_RC_OK);
    EXPECT_EQ(filter(indicationMI->ft->mustPoll), CMPI_RC_OK);
    EXPECT_FALSE(merolt::gIndicationsEnabled);
    EXPECT_TRUE(inOrder(
        logLines(), {"Entering Merolt_CNA_Provider authorizeFilter", "", "Entering Merolt_CNA_Provider mustPoll", ""}));
}

TEST_F(SubscriptionTest, TheFirstFilterOpensTheGate) {
    activate();
    EXPECT_TRUE(merolt::gIndicationsEnabled);
    EXPECT_EQ(merolt::gSubscriptionCount, 1);
    EXPECT_TRUE(
        inOrder(logLines(), {"Entering Merolt_CNA_Provider activateFilter", "", "Number of subscriptions is: 1", ""}));
}

TEST_F(SubscriptionTest, OneOfTwoFiltersKeepsTheGateOpenAndTheLastClosesIt) {
    activate();
    activate();
    deactivate();
    EXPECT_TRUE(merolt::gIndicationsEnabled);
    EXPECT_EQ(merolt::gSubscriptionCount, 1);
    deactivate();
    EXPECT_FALSE(merolt::gIndicationsEnabled);
    EXPECT_EQ(merolt::gSubscriptionCount, 0);
    EXPECT_TRUE(inOrder(logLines(), {
                                        "Number of subscriptions is: 1",
                                        "Number of subscriptions is: 2",
                                        "Entering Merolt_CNA_Provider deActivateFilter",
                                        "",
                                        "Number of subscriptions still available is: 2",
                                        "",
                                        "Number of subscriptions still available is: 1",
                                    }));
}

TEST_F(SubscriptionTest, ASurplusDeactivationMakesTheCountNegativeAndLeavesTheGate) {
    deactivate();
    EXPECT_EQ(merolt::gSubscriptionCount, -1);
    EXPECT_FALSE(merolt::gIndicationsEnabled);
    activate();
    EXPECT_EQ(merolt::gSubscriptionCount, 0);
    EXPECT_TRUE(merolt::gIndicationsEnabled) << "an activation opens the gate whatever the count";
    deactivate();
    EXPECT_EQ(merolt::gSubscriptionCount, -1);
    EXPECT_TRUE(merolt::gIndicationsEnabled) << "only the step from exactly one closes it";
}

} // namespace
