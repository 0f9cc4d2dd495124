// Updates for which there is not enough memory: the method fails, both locks are free, and the next update works.
#include "method_test.h"
#include "short_memory.h"

#include "classes/record_list.h"
#include "software/software_identity.h"

#include <limits>

namespace {

constexpr const char* storageService = "Merolt_FCHBA_SoftwareInstallationService";
constexpr const char* nicService = "Merolt_NIC_SoftwareInstallationService";
constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

class ShortMemoryTest : public MethodTest {
protected:
    void SetUp() override {
        MethodTest::SetUp();
        tavikLibrary.onUpdateFlash = [](std::uint32_t, const void*) { return 0U; };
        tavikLibrary.onOptionRomUpdate = [](TAVIK_DeviceRecord*, const char*) { return 0U; };
        tavikLibrary.clearCalls();
    }

    /// Fails without memory, with that line in the log, and works with it.
    void expectFailure(const std::string& service, const char* method, std::size_t from, std::size_t below,
                       const std::string& line) {
        {
            const ShortMemory memory(from, below);
            EXPECT_EQ(invoke(service, method), returned(2));
            EXPECT_GT(memory.refused(), 0U);
        }
        EXPECT_TRUE(inOrder(takeLogLines(), {line}));
        expectNextRequestWorks();
        EXPECT_EQ(invoke(service, method), returned(0));
    }
};

TEST_F(ShortMemoryTest, AnImageThatDoesNotFitIntoMemoryFailsTheMethod) {
    constexpr CMPICount size = 5'000'000;
    setPath("Target", "Merolt_NIC_PortController", "CNA0001");
    setBytes("Image", size, CMPI_ARRAY, "bytes");
    {
        const ShortMemory memory(size, unlimited);
        EXPECT_EQ(invoke(nicService, "InstallFromByteStream"), returned(2));
        EXPECT_EQ(memory.refused(), 1U);
        setBytes("Image", 1000, CMPI_ARRAY, "bytes");
        EXPECT_EQ(invoke(nicService, "InstallFromByteStream"), returned(0)) << "a smaller one fits";
        setBytes("Image", size, CMPI_ARRAY, "bytes");
    }
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 1U);
    expectFailure(nicService, "InstallFromByteStream", size, unlimited,
                  "Merolt_NIC_Provider INSTALL_FROM_BYTESTREAM exception: 1 (null)");
}

TEST_F(ShortMemoryTest, AFileNameThatCannotBeCopiedFailsTheMethod) {
    std::filesystem::path folder;
    for (const char letter : {'a', 'b', 'c', 'd', 'e'})
        folder /= std::string(200, letter);
    std::filesystem::create_directories(folder);
    writeFile((folder / "image.bin").string(), "image");
    const std::string image = std::filesystem::absolute(folder / "image.bin").string();
    setText("URI", image);
    setPath("Target", "Merolt_NIC_PortController", "CNA0001");
    expectFailure(nicService, "InstallFromURI", image.size() + 1, image.size() + 2,
                  "Merolt_NIC_Provider INSTALL_FROM_URI exception: 1 (null)");
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 1U) << "only with memory";
}

// A list keeps its memory from build to build, and needs some only where it has none or too little.
TEST_F(ShortMemoryTest, AListThatCannotBeBuiltAnewFailsTheMethodAndLeavesAnEmptyOne) {
    tavikLibrary.onOptionRomUpdate = [](TAVIK_DeviceRecord*, const char*) {
        merolt::software::clearSoftwareIdentityList();
        merolt::KeptMemory::releaseAll();
        return 0U;
    };
    writeFile("image.bin", "image");
    setText("URI", std::filesystem::absolute("image.bin").string());
    setPath("Target", "Merolt_FCHBA_PortController", "CNA0001");
    arguments.setNull("InstallOptions", CMPI_uint16A);
    {
        const ShortMemory memory(sizeof(merolt::software::SoftwareIdentityEntry), unlimited);
        EXPECT_EQ(invoke(storageService, "InstallFromURI"), returned(2));
        EXPECT_EQ(memory.refused(), 1U);
    }
    EXPECT_TRUE(
        inOrder(takeLogLines(), {"****** Successfully updated flash image for Device with serial number CNA0001",
                                 "Merolt_FCHBA_Provider INSTALL_FROM_URI exception: CMPI_RC_ERR_FAILED (null)"}));
    EXPECT_EQ(enumerateInstances("Merolt_FCHBA_SoftwareIdentity").objects.size(), 0U);
    expectNextRequestWorks();
    EXPECT_EQ(invoke(storageService, "InstallFromURI"), returned(0));
    EXPECT_GT(enumerateInstances("Merolt_FCHBA_SoftwareIdentity").objects.size(), 0U);
}

} // namespace
