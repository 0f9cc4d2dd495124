// What other clients see while an adapter is being written.
#include "method_test.h"

#include <future>

namespace {

class WaitingClientsTest : public MethodTest {
protected:
    /// Runs the method beside the test's thread up to where it passes the gate, looks at what other clients see, and
    /// lets it go on.
    void expectOthersToWait(Gate& update, const std::string& service, const char* method) {
        auto caller = std::async(std::launch::async, [&] {
            services.adoptThisThread();
            cimhost::RequestScope ownScope(*broker);
            return invoke(service, method);
        });
        update.waitForArrival();

        EXPECT_EQ(createInstance(controller).rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(deleteInstance(controller).rc, CMPI_RC_ERR_NOT_SUPPORTED);
        auto read = std::async(std::launch::async, [&] { return enumerateInstances(controller); });
        auto change = std::async(std::launch::async, [&] { return modifyInstance(controller); });
        EXPECT_EQ(read.wait_for(aMoment), std::future_status::timeout);
        EXPECT_EQ(change.wait_for(aMoment), std::future_status::timeout);
        services.wake(3600);
        EXPECT_FALSE(services.becomesIdle(aMoment)) << "the polling thread stands still";

        update.open();
        ASSERT_EQ(caller.wait_for(longEnough), std::future_status::ready);
        EXPECT_EQ(caller.get(), returned(0));
        ASSERT_EQ(read.wait_for(longEnough), std::future_status::ready);
        EXPECT_EQ(read.get().objects.size(), 1U);
        ASSERT_EQ(change.wait_for(longEnough), std::future_status::ready);
        EXPECT_EQ(change.get().rc, CMPI_RC_ERR_NOT_SUPPORTED);
        services.waitUntilIdle();
    }

    static constexpr const char* controller = "Merolt_FCHBA_PortController";
};

TEST_F(WaitingClientsTest, RequestsWaitForTheUpdateAndThenSucceedWhileRefusalsAnswerAtOnce) {
    Gate update;
    tavikLibrary.onUpdateFlash = [&](std::uint32_t, const void*) {
        update.pass();
        return 0U;
    };
    setPath("Target", "Merolt_NIC_PortController", "CNA0001");
    setBytes("Image", 5, CMPI_ARRAY);
    expectOthersToWait(update, "Merolt_NIC_SoftwareInstallationService", "InstallFromByteStream");
}

TEST_F(WaitingClientsTest, RequestsWaitForTheFiveSecondsOfAStorageUpdateToo) {
    Gate lastSecond;
    const unsigned long before = services.sleptHere();
    services.afterSleep = [&] {
        if (services.sleptHere() == before + 5000) lastSecond.pass();
    };
    tavikLibrary.onOptionRomUpdate = [](TAVIK_DeviceRecord*, const char*) { return 0U; };
    writeFile("image.bin", "image");
    setText("URI", std::filesystem::absolute("image.bin").string());
    setPath("Target", controller, "CNA0001");
    arguments.setNull("InstallOptions", CMPI_uint16A);
    expectOthersToWait(lastSecond, "Merolt_FCHBA_SoftwareInstallationService", "InstallFromURI");
    EXPECT_EQ(services.sleptHere(), before + 5000);
    services.afterSleep = nullptr;
}

} // namespace
