// Association requests on several threads while the adapters change under them. Says most under ThreadSanitizer.
#include "association_test.h"

#include "fast_services.h"

#include <atomic>
#include <thread>

using namespace adapters;

namespace {

constexpr std::chrono::milliseconds duration{700};

tavik::Fleet fleetOf(std::uint32_t ports) {
    std::vector<tavik::Function> functions{nicFunction(1, 1)};
    for (std::uint32_t port = 1; port <= ports; ++port)
        functions.emplace_back(storageFunction(port, chips::chip7));
    return fleet({card("S1", std::move(functions)), card("S2", {nicFunction(2, 2)})});
}

class AssociationConcurrencyTest : public AssociationTest {
protected:
    void SetUp() override {
        merolt::platform::replaceServices(&fastServices);
        writeFile("meroltcna.properties", "ErrorLog=0\nLinkStatusPollIntervalSeconds=0\n");
        tavikLibrary.setFleet(fleetOf(2));
        tavikLibrary.setNextFleet(fleetOf(3));
        // Every check finds a change: the trees of two and three ports take turns.
        tavikLibrary.onUpdateBackup = [this] { tavikLibrary.setNextFleet(fleetOf(2 + ++updates % 2)); };
        instanceMI = createInstanceMI();
        associationMI = createAssociationMI();
        ASSERT_NE(associationMI, nullptr);
    }

    void TearDown() override {
        stop();
        merolt::platform::replaceServices(&services);
    }

    FastServices fastServices;
    std::atomic<std::uint32_t> updates = 0;
};

TEST_F(AssociationConcurrencyTest, RequestsAreAnsweredDuringRefreshes) {
    std::atomic<bool> isOver = false;
    std::atomic<unsigned> answered = 0;
    const auto askOn = [&](const Path& source) {
        while (!isOver) {
            for (const Operation operation : allOperations) {
                const Reply reply = ask(operation, source);
                EXPECT_EQ(reply.rc, CMPI_RC_OK) << reply.message;
                EXPECT_EQ(reply.doneCount, 1U);
                ++answered;
            }
        }
    };
    const Path host = classPath("Merolt_Adapter_ComputerSystem").with("Name", "nobody");
    const Path port = classPath("Merolt_FCHBA_FCPort")
                          .with("SystemName", "nobody")
                          .with("SystemCreationClassName", "Merolt_Adapter_ComputerSystem")
                          .with("DeviceID", "A00000_20000002C90000F1_20000002C9000001");
    std::thread first(askOn, host.with("CreationClassName", "Merolt_Adapter_ComputerSystem"));
    std::thread second(askOn, port);
    std::this_thread::sleep_for(duration);
    isOver = true;
    first.join();
    second.join();
    EXPECT_GT(answered, 8U);
    EXPECT_GT(updates, 1U);
}

} // namespace
