// Requests of servers that leave names and lists out where others give empty ones, or the other way round.
#include "poor_server_test.h"

#include <gmock/gmock.h>

namespace {

class MissingNamesTest : public PoorServerTest {
protected:
    void SetUp() override { loadAndBuild(); }

    /// Nothing above has left a lock or a list in a bad state.
    void TearDown() override { EXPECT_EQ(enumerate(fcPort), oneObject); }

    CMPIrc callFilter(CMPIStatus (*CMPIIndicationMIFT::*operation)(CMPIIndicationMI*, const CMPIContext*,
                                                                   const CMPISelectExp*, const char*,
                                                                   const CMPIObjectPath*, CMPIBoolean),
                      const char* className) {
        const PlainScope scope;
        return (filters->ft->*operation)(filters, plainContext(), nullptr, className, nullptr, 1).rc;
    }
};

TEST_F(MissingNamesTest, APathWithoutNamesIsOfNoClass) {
    switchLogsOn();
    for (const char* nameSpace : {static_cast<const char*>(nullptr), "", "root/merolt_cmpi"}) {
        for (const char* className : {static_cast<const char*>(nullptr), ""}) {
            EXPECT_EQ(enumerate(className, nullptr, nameSpace), noObject);
            const auto path = [&] { return plainPath(nameSpace, className); };
            EXPECT_EQ(ask(path,
                          [&](auto* context, auto* result, auto* cop) {
                              return instances->ft->enumerateInstanceNames(instances, context, result, cop);
                          }),
                      noObject);
            EXPECT_EQ(ask(path,
                          [&](auto* context, auto* result, auto* cop) {
                              return instances->ft->getInstance(instances, context, result, cop, nullptr);
                          }),
                      noObject);
            EXPECT_EQ(ask(path,
                          [&](auto* context, auto* result, auto* cop) {
                              return associations->ft->associators(associations, context, result, cop, nullptr, nullptr,
                                                                   nullptr, nullptr, nullptr);
                          })
                          .objects,
                      0U);
            EXPECT_EQ(ask(path,
                          [&](auto* context, auto* result, auto* cop) {
                              return associations->ft->references(associations, context, result, cop, nullptr, nullptr,
                                                                  nullptr);
                          })
                          .objects,
                      0U);
            EXPECT_EQ(invoke(className, "InstallFromURI", nullptr, nullptr), noObject);
        }
    }
}

TEST_F(MissingNamesTest, AClassIsShownWhateverTheNamespaceIsCalled) {
    EXPECT_EQ(enumerate(fcPort, nullptr, nullptr), oneObject);
    EXPECT_EQ(enumerate(fcPort, nullptr, ""), oneObject);
    EXPECT_EQ(enumerate(ethernetPort, nullptr, nullptr), oneObject);
}

TEST_F(MissingNamesTest, AnyPropertyListWillDo) {
    const char* empty[] = {nullptr};
    const char* nameless[] = {"", nullptr};
    const char* mixed[] = {"DeviceID", "", "NoSuchProperty", nullptr};
    for (const char** properties : {static_cast<const char**>(nullptr), empty, nameless, mixed}) {
        for (const char* className : {fcPort, ethernetPort, computerSystem})
            EXPECT_EQ(enumerate(className, properties), oneObject) << className;
    }
}

TEST_F(MissingNamesTest, AnEmptyNameInAnAssociationCallIsOneThatIsMissing) {
    const PlainAnswer all = associatorsOfPort();
    EXPECT_GT(all.objects, 3U);
    const char* missing[] = {nullptr, ""};
    for (const char* assocClass : missing) {
        for (const char* resultClass : missing) {
            for (const char* role : missing) {
                for (const char* resultRole : missing) {
                    EXPECT_EQ(associatorsOfPort(assocClass, resultClass, role, resultRole), all);
                }
            }
        }
    }
}

TEST_F(MissingNamesTest, AMethodWithoutANameIsUnknown) {
    for (const char* service : {"Merolt_FCHBA_SoftwareInstallationService", "Merolt_NIC_SoftwareInstallationService"}) {
        for (const char* name : {static_cast<const char*>(nullptr), ""}) {
            const PlainScope scope;
            CMPIResult* result = plainResult();
            const CMPIStatus status = methods->ft->invokeMethod(
                methods, plainContext(), result, plainPath(implementationNamespace, service), name, nullptr, nullptr);
            EXPECT_EQ(status.rc, CMPI_RC_OK);
            EXPECT_EQ(plainNumber(result), 1U);
        }
    }
}

TEST_F(MissingNamesTest, AMethodWithoutArgumentsFailsWithAStatus) {
    for (const char* service : {"Merolt_FCHBA_SoftwareInstallationService", "Merolt_NIC_SoftwareInstallationService"})
        EXPECT_NE(invoke(service, "InstallFromURI", nullptr, nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(install().rc, CMPI_RC_OK) << "both locks are free";
}

TEST_F(MissingNamesTest, FiltersNeedNoNames) {
    for (const char* className : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(callFilter(&CMPIIndicationMIFT::activateFilter, className), CMPI_RC_OK);
        EXPECT_EQ(callFilter(&CMPIIndicationMIFT::deActivateFilter, className), CMPI_RC_OK);
    }
    const PlainScope scope;
    EXPECT_EQ(filters->ft->authorizeFilter(filters, nullptr, nullptr, nullptr, nullptr, nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(filters->ft->mustPoll(filters, nullptr, nullptr, nullptr, nullptr).rc, CMPI_RC_OK);
}

TEST_F(MissingNamesTest, WithoutAPathTheParameterIsInvalid) {
    const auto nowhere = []() -> CMPIObjectPath* { return nullptr; };
    const auto status = [&](auto&& call) { return ask(nowhere, call).rc; };
    EXPECT_EQ(status([&](auto* context, auto* result, auto* path) {
                  return instances->ft->enumerateInstances(instances, context, result, path, nullptr);
              }),
              CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(status([&](auto* context, auto* result, auto* path) {
                  return associations->ft->referenceNames(associations, context, result, path, nullptr, nullptr);
              }),
              CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(status([&](auto* context, auto* result, auto* path) {
                  return methods->ft->invokeMethod(methods, context, result, path, "InstallFromURI", nullptr, nullptr);
              }),
              CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(MissingNamesTest, WithoutAPlaceForTheAnswerTheRequestFails) {
    const PlainScope scope;
    const CMPIObjectPath* path = plainPath(implementationNamespace, fcPort);
    EXPECT_NE(instances->ft->enumerateInstanceNames(instances, plainContext(), nullptr, path).rc, CMPI_RC_OK);
    EXPECT_NE(associations->ft->referenceNames(associations, plainContext(), nullptr, path, nullptr, nullptr).rc,
              CMPI_RC_OK);
}

TEST_F(MissingNamesTest, ARequestNeedsNoContext) {
    const PlainScope scope;
    CMPIResult* result = plainResult();
    const CMPIObjectPath* path = plainPath(implementationNamespace, fcPort);
    EXPECT_EQ(instances->ft->enumerateInstances(instances, nullptr, result, path, nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(plainReturned(result), 1U);
}

} // namespace
