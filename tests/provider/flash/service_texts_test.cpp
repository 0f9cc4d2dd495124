// The log lines of the installation services' request operations, as they stand in the file.
#include "method_test.h"

#include "../family_call.h"

#include "classes/ethernet/software_installation_service.h"
#include "classes/ethernet/software_installation_service_capabilities.h"
#include "software/software_installation_service.h"
#include "software/software_installation_service_capabilities.h"

namespace {

using cimhost::ResultKind;
using Lines = std::vector<std::string>;

constexpr const char* installer = "CNA_SW_INSTALLER";

struct Operations {
    const char* name;
    merolt::EnumInstanceNames enumInstanceNames;
    merolt::EnumInstances enumInstances;
    merolt::GetInstance getInstance;
    bool hasSystemName; ///< in its path
};

void PrintTo(const Operations& operations, std::ostream* stream) { *stream << operations.name; }

#define OPERATIONS(side, X) #X, side::enumInstanceNames_##X, side::enumInstances_##X, side::getInstance_##X

const Operations storageOperations[] = {
    {OPERATIONS(merolt::software, SoftwareInstallationService), true},
    {OPERATIONS(merolt::software, SoftwareInstallationServiceCapabilities), false},
};
const Operations ethernetOperations[] = {
    {OPERATIONS(merolt::ethernet, SoftwareInstallationService), true},
    {OPERATIONS(merolt::ethernet, SoftwareInstallationServiceCapabilities), false},
};

#undef OPERATIONS

class ServiceTextsTest : public MethodTest, public testing::WithParamInterface<Operations> {
protected:
    explicit ServiceTextsTest(const std::string& side) : className(side + GetParam().name) { path.keyText = installer; }

    FamilyAnswer names() { return callFamily(*broker, ResultKind::paths, path, GetParam().enumInstanceNames); }
    FamilyAnswer instances() {
        return callFamily(*broker, ResultKind::instances, path, [](auto& context, auto& result, auto& cop) {
            return GetParam().enumInstances(context, result, cop, nullptr);
        });
    }
    FamilyAnswer one() {
        return callFamily(*broker, ResultKind::instances, path, [](auto& context, auto& result, auto& cop) {
            return GetParam().getInstance(context, result, cop, nullptr, true);
        });
    }

    /// The operation ends with the status of the failed read, nothing to return and these lines.
    void expectFailure(const FamilyAnswer& answer, const Lines& lines) {
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_FALSE(answer.thrown);
        EXPECT_EQ(answer.returned, 0U);
        EXPECT_EQ(takeLogLines(), lines);
    }

    KeyValues keys() const {
        KeyValues keys = {{GetParam().hasSystemName ? "Name" : "InstanceID", installer}};
        if (GetParam().hasSystemName) keys.emplace_back("SystemName", "192.0.2.10");
        return keys;
    }

    const std::string className;
    WatchedPath path{*broker, className, implementationNamespace};
};

const auto nameOfOperations = [](const auto& test) { return std::string(test.param.name); };

class StorageServiceTextsTest : public ServiceTextsTest {
protected:
    StorageServiceTextsTest() : ServiceTextsTest("Merolt_FCHBA_") {}

    const std::string name = GetParam().name;
};

INSTANTIATE_TEST_SUITE_P(Classes, StorageServiceTextsTest, testing::ValuesIn(storageOperations), nameOfOperations);

TEST_P(StorageServiceTextsTest, BothEnumerationsNameTheFirstOneInTheirErrors) {
    const std::string classError = "enumInstanceNames_" + name + ": Error getting classname, status.rc=2!";
    const std::string nameSpaceError = "enumInstanceNames_" + name + ": Error getting namespace, status.rc=2!";
    path.classNameStatus = CMPI_RC_ERR_ACCESS_DENIED;
    expectFailure(names(), {"Entering enumInstanceNames_" + name, classError});
    expectFailure(instances(), {"Entering enumInstances_" + name, classError});
    path.classNameStatus = CMPI_RC_OK;
    path.nameSpaceStatus = CMPI_RC_ERR_ACCESS_DENIED;
    expectFailure(names(), {"Entering enumInstanceNames_" + name, nameSpaceError});
    expectFailure(instances(), {"Entering enumInstances_" + name, nameSpaceError});
}

TEST_P(StorageServiceTextsTest, OperationsLogTheirNamesWhereTheyBeginAndEnd) {
    EXPECT_EQ(names().returned, 1U);
    EXPECT_EQ(takeLogLines(), (Lines{"Entering enumInstanceNames_" + name, "Exiting  enumInstanceNames_" + name}));
    EXPECT_EQ(instances().returned, 1U);
    EXPECT_EQ(takeLogLines(), (Lines{"Entering enumInstances_" + name, "Exiting  enumInstances_" + name}));
    EXPECT_EQ(getInstance(className, keys()).objects.size(), 1U);
    EXPECT_EQ(takeLogLines(), (Lines{"Entering Merolt_CNA_Provider getInstance: classname = " + className,
                                     "Entering getInstance_" + name, "Exiting  getInstance_" + name,
                                     "Exiting  Merolt_CNA_Provider getInstance", ""}));
}

class EthernetServiceTextsTest : public ServiceTextsTest {
protected:
    EthernetServiceTextsTest() : ServiceTextsTest("Merolt_NIC_") {}

    /// What getInstance calls itself.
    std::string getInstanceName() const {
        return GetParam().hasSystemName ? "getInstance" : "getInstance_SoftwareInstallationServiceCapabilities";
    }
    /// The line behind that of makeInstance.
    std::string behindMakeInstance() const { return GetParam().hasSystemName ? "" : "."; }
};

INSTANTIATE_TEST_SUITE_P(Classes, EthernetServiceTextsTest, testing::ValuesIn(ethernetOperations), nameOfOperations);

TEST_P(EthernetServiceTextsTest, OperationsAndMakersLogThatTheyWereCalled) {
    const std::string makeInstance = className + " makeInstance was called";
    EXPECT_EQ(names().returned, 1U);
    EXPECT_EQ(takeLogLines(),
              (Lines{className + " enumInstanceNames was called", "", className + " makePath was called", ""}));
    EXPECT_EQ(instances().returned, 1U);
    EXPECT_EQ(takeLogLines(), (Lines{className + " enumInstances was called", "", makeInstance, behindMakeInstance()}));
    EXPECT_EQ(getInstance(className, keys()).objects.size(), 1U);
    EXPECT_EQ(takeLogLines(), (Lines{"Entering Merolt_CNA_Provider getInstance: classname = " + className,
                                     className + ' ' + getInstanceName() + " was called", "", makeInstance,
                                     behindMakeInstance(), "Exiting  Merolt_CNA_Provider getInstance", ""}));
}

TEST_P(EthernetServiceTextsTest, KeysThatCannotBeReadAreLogged) {
    path.nameSpaceStatus = CMPI_RC_ERR_ACCESS_DENIED;
    path.classNameStatus = CMPI_RC_ERR_ACCESS_DENIED;
    // The namespace is read first.
    for (const std::string what : {"namespace", "ClassName"}) {
        const std::string error = className + ": Error getting " + what + " in ";
        expectFailure(names(), {className + " enumInstanceNames was called", "", error + "enumInstanceNames", ""});
        expectFailure(instances(), {className + " enumInstances was called", "", error + "enumInstances", ""});
        expectFailure(one(), {className + ' ' + getInstanceName() + " was called", "", error + "getInstance", ""});
        path.nameSpaceStatus = CMPI_RC_OK;
    }
}

} // namespace
