// What other clients see while an adapter is being written.
#include "method_test.h"

#include <future>

namespace {

class WaitingClientsTest : public MethodTest {};

TEST_F(WaitingClientsTest, RequestsWaitForTheUpdateAndThenSucceedWhileRefusalsAnswerAtOnce) {
    Gate update;
    tavikLibrary.onUpdateFlash = [&](std::uint32_t, const void*) {
        update.pass();
        return 0U;
    };
    setPath("Target", "Merolt_NIC_PortController", "CNA0001");
    setBytes("Image", 5, CMPI_ARRAY);
    auto method = std::async(std::launch::async, [&] {
        services.adoptThisThread();
        cimhost::RequestScope ownScope(*broker);
        return invoke("Merolt_NIC_SoftwareInstallationService", "InstallFromByteStream");
    });
    update.waitForArrival();

    EXPECT_EQ(createInstance("Merolt_FCHBA_PortController").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(deleteInstance("Merolt_FCHBA_PortController").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    auto read = std::async(std::launch::async, [&] { return enumerateInstances("Merolt_FCHBA_PortController"); });
    auto change = std::async(std::launch::async, [&] { return modifyInstance("Merolt_FCHBA_PortController"); });
    EXPECT_EQ(read.wait_for(aMoment), std::future_status::timeout);
    EXPECT_EQ(change.wait_for(aMoment), std::future_status::timeout);

    update.open();
    ASSERT_EQ(method.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(method.get(), returned(0));
    ASSERT_EQ(read.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(read.get().objects.size(), 1U);
    ASSERT_EQ(change.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(change.get().rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

} // namespace
