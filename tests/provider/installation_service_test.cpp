// What a client sees of the two installation services and their capabilities, methods apart.
#include "class_support.h"

namespace {

constexpr const char* storageService = "Merolt_FCHBA_SoftwareInstallationService";
constexpr const char* storageCapabilities = "Merolt_FCHBA_SoftwareInstallationServiceCapabilities";
constexpr const char* nicService = "Merolt_NIC_SoftwareInstallationService";
constexpr const char* nicCapabilities = "Merolt_NIC_SoftwareInstallationServiceCapabilities";

class InstallationServiceTest : public ClassTest {
protected:
    void SetUp() override {
        switchLogsOn();
        start();
    }
};

TEST_F(InstallationServiceTest, StorageServiceNamesItselfFirst) {
    EXPECT_EQ(asSet(storageService), R"text(
Name: string "CNA_SW_INSTALLER"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SoftwareInstallationService"
Caption: string "CNA Flash Image Update Service"
Description: string "Updating CNA flash(boot code, firmwares...)"
ElementName: string "Updating Merolt CNA flash Image"
)text");
    EXPECT_EQ(pathAsSet(storageService), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SoftwareInstallationService"
Name: string "CNA_SW_INSTALLER"
)");
}

TEST_F(InstallationServiceTest, StorageCapabilitiesTellActionsAndOptions) {
    EXPECT_EQ(asSet(storageCapabilities), R"(
InstanceID: string "CNA_SW_INSTALLER"
Caption: string "CNA Flash Image Update Capabilities"
CanAddToCollection: boolean false
SupportedAsynchronousActions: uint16[] {2}
SupportedSynchronousActions: uint16[] {4, 5}
SupportedInstallOptions: uint16[] {5}
ElementName: string "Merolt CNA Flash Image Update"
Description: string "Flash image includes boot code, ASIC and MPI Firmware"
)");
}

TEST_F(InstallationServiceTest, EthernetServiceLeavesABracketOpen) {
    EXPECT_EQ(asSet(nicService), R"(
Name: string "CNA_SW_INSTALLER"
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_SoftwareInstallationService"
Caption: string "Update flash"
Description: string "Updating CNA flash(boot code, firmwares..."
ElementName: string "Updating Merolt CNA flash Image"
)");
}

TEST_F(InstallationServiceTest, EthernetCapabilitiesTellNoActions) {
    EXPECT_EQ(asSet(nicCapabilities), R"(
InstanceID: string "CNA_SW_INSTALLER"
Caption: string "Update Capabilities"
ElementName: string "Merolt CNA Flash Image Update"
Description: string "Flash image includes boot code, ASIC and MPI Firmware"
)");
}

TEST_F(InstallationServiceTest, ServicesAreFoundByNameAndSystemNameInAnyLetterCase) {
    for (const char* service : {storageService, nicService}) {
        EXPECT_EQ(getInstance(service, {{"Name", "cna_sw_installer"}, {"SystemName", "192.0.2.10"}}).objects.size(),
                  1U);
        const Answer otherHost = getInstance(service, {{"Name", "CNA_SW_INSTALLER"}, {"SystemName", "192.0.2.99"}});
        EXPECT_EQ(otherHost.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(otherHost.message, "CNA_SW_INSTALLER");
    }
}

TEST_F(InstallationServiceTest, StorageServiceWithoutAMatchLogsTheFirstKeyTwice) {
    getInstance(storageService, {{"Name", "x"}, {"SystemName", "y"}});
    EXPECT_TRUE(logHas("getInstance_SoftwareInstallationService: Error no matching instance found,                "
                       "KeyValue=x, MatchingElement=CNA_SW_INSTALLER, KeyValue2=x, MatchingElement2=192.0.2.10!"));
}

TEST_F(InstallationServiceTest, MissingKeysAreErrorsThatNameTheKeyInTheLog) {
    EXPECT_TRUE(getInstance(storageService, {{"Name", "CNA_SW_INSTALLER"}}).isOk());
    EXPECT_TRUE(logHas("getInstance_SoftwareInstallationService: Error getting key data 2, status.rc=6!"));
    getInstance(nicService, {});
    EXPECT_TRUE(logHas("Merolt_NIC_SoftwareIdentity: Error getting Name key in getInstance"));
    getInstance(nicService, {{"Name", "CNA_SW_INSTALLER"}});
    EXPECT_TRUE(logHas("Merolt_NIC_SoftwareIdentity: Error getting SystemName key in getInstance"));
}

TEST_F(InstallationServiceTest, NumericKeysEndInSuccessWithoutAnInstance) {
    const Answer storage = getInstanceByNumber(storageService, "Name", 5);
    EXPECT_TRUE(storage.isOk());
    EXPECT_TRUE(storage.objects.empty());
    EXPECT_TRUE(logHas("getInstance_SoftwareInstallationService: Error invalid key data type, keyData.type=240!"));
    const Answer nic = getInstanceByNumber(nicService, "Name", 5);
    EXPECT_TRUE(nic.isOk());
    EXPECT_TRUE(nic.objects.empty());
    EXPECT_TRUE(logHas("Merolt_NIC_SoftwareIdentity: Error invalid key data type(240)"));
}

TEST_F(InstallationServiceTest, EthernetCapabilitiesTestNeitherKeyNorType) {
    EXPECT_EQ(getInstanceByNumber(nicCapabilities, "InstanceID", 5).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(getInstance(nicCapabilities, {}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(getInstance(nicCapabilities, {{"InstanceID", "cna_sw_installer"}}).objects.size(), 1U);
}

TEST_F(InstallationServiceTest, StorageCapabilitiesWithoutAMatchNameWhatTheyAre) {
    const Answer answer = getInstance(storageCapabilities, {{"InstanceID", "x"}});
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(answer.message, "x");
    EXPECT_TRUE(logHas("getInstance_SoftwareInstallationServiceCapabilities: Error no matching instance found, "
                       "KeyValue=x, MatchingElement=CNA_SW_INSTALLER!"));
}

} // namespace
