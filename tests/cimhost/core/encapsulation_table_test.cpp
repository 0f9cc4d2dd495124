#include "broker_fixture.h"

namespace {

class EncapsulationTable : public BrokerTest {
protected:
    CMPIBoolean isA(const CMPIObjectPath* object, const char* className, CMPIrc expected = CMPI_RC_OK) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        const CMPIBoolean answer = cmpi->eft->classPathIsA(cmpi, object, className, &status);
        EXPECT_EQ(status.rc, expected);
        return answer;
    }
    std::string typeOf(const void* object) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        std::string type = textOf(cmpi->eft->getType(cmpi, object, &status));
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(cmpi->eft->isOfType(cmpi, object, type.c_str(), &status), 1);
        EXPECT_EQ(cmpi->eft->isOfType(cmpi, object, "CMPIBroker", &status), 0);
        return type;
    }
};

} // namespace

TEST_F(EncapsulationTable, APathIsOfItsClassAndItsAncestors) {
    EXPECT_EQ(isA(path(), "Test_Thing"), 1);
    EXPECT_EQ(isA(path(), "TEST_BASE"), 1);
    EXPECT_EQ(isA(path(), "Test_Keys"), 0);
    EXPECT_EQ(isA(path("Test_Base"), "Test_Thing"), 0);
}

TEST_F(EncapsulationTable, APathOfAnUnknownClassIsOfItsOwnNameOnly) {
    EXPECT_EQ(isA(path("Test_Unknown"), "test_unknown"), 1);
    EXPECT_EQ(isA(path("Test_Unknown"), "Test_Base"), 0);
    EXPECT_EQ(isA(path("Test_Thing", "root/elsewhere"), "Test_Base"), 0) << "the namespace lacks the class";
}

TEST_F(EncapsulationTable, IllegalClassNamesAreRefused) {
    EXPECT_EQ(isA(path(), nullptr, CMPI_RC_ERR_INVALID_PARAMETER), 0);
    EXPECT_EQ(isA(path(), "", CMPI_RC_ERR_INVALID_CLASS), 0);
    EXPECT_EQ(isA(path(), "Test Thing", CMPI_RC_ERR_INVALID_CLASS), 0);
    EXPECT_EQ(isA(nullptr, "Test_Thing", CMPI_RC_ERR_INVALID_HANDLE), 0);
}

TEST_F(EncapsulationTable, ObjectsKnowTheirType) {
    EXPECT_EQ(typeOf(string("x")), "CMPIString");
    EXPECT_EQ(typeOf(array(1, CMPI_uint8)), "CMPIArray");
    EXPECT_EQ(typeOf(dateTime("00000001000000.000000:000")), "CMPIDateTime");
    EXPECT_EQ(typeOf(path()), "CMPIObjectPath");
    EXPECT_EQ(typeOf(instance()), "CMPIInstance");
    EXPECT_EQ(typeOf(arguments()), "CMPIArgs");
    EXPECT_EQ(typeOf(cimhost::ContextObject::make(scope->arena())), "CMPIContext");
    EXPECT_EQ(typeOf(cmpi->eft->newSelectExp(cmpi, "SELECT * FROM A", "WQL", nullptr, nullptr)), "CMPISelectExp");
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->getType(cmpi, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(cmpi->eft->isOfType(cmpi, nullptr, "CMPIString", &status), 0);
}

TEST_F(EncapsulationTable, ObjectsReadAsTexts) {
    const auto textOfObject = [&](const void* object) { return textOf(cmpi->eft->toString(cmpi, object, nullptr)); };
    CMPIInstance* made = instance("Test_Standard");
    EXPECT_EQ(textOfObject(string("text")), "text");
    EXPECT_EQ(textOfObject(dateTime("00000001000000.000000:000")), "00000001000000.000000:000");
    EXPECT_EQ(textOfObject(path()), "root/test:Test_Thing");
    EXPECT_EQ(textOfObject(made), "root/test:Test_Standard\n  Level = 7\n  Words = {...}\n"
                                  "  When = 00000001000000.000000:000");
    EXPECT_EQ(textOfObject(arguments()), "CMPIArgs");
    EXPECT_EQ(textOfObject(nullptr), "(none)");
}

TEST_F(EncapsulationTable, AQueryIsKeptAndNotEvaluated) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    CMPIArray* projection = array(1, CMPI_string);
    CMPISelectExp* made = cmpi->eft->newSelectExp(cmpi, "SELECT * FROM A", "WQL", &projection, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(projection, nullptr);
    EXPECT_EQ(textOf(made->ft->getString(made, &status)), "SELECT * FROM A");
    EXPECT_EQ(made->ft->evaluate(made, instance(), &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(made->ft->evaluateUsingAccessor(made, nullptr, nullptr, &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(made->ft->getDOC(made, nullptr), nullptr);
    EXPECT_EQ(made->ft->getCOD(made, nullptr), nullptr);
    EXPECT_EQ(cmpi->eft->newSelectExp(cmpi, nullptr, "WQL", nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(EncapsulationTable, MessagesAreTheirDefaultText) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    EXPECT_EQ(textOf(cmpi->eft->getMessage(cmpi, "id", "default", &status, 0)), "default");
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(textOf(cmpi->eft->getMessage2(cmpi, "id", nullptr, nullptr, &status, 0)), "");
    CMPIMsgFileHandle handle = &status;
    EXPECT_RC(cmpi->eft->openMessageFile(cmpi, "file", &handle), CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(handle, nullptr);
    EXPECT_RC(cmpi->eft->closeMessageFile(cmpi, handle), CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(EncapsulationTable, ProvidersWriteIntoTheServersLog) {
    EXPECT_RC(cmpi->eft->logMessage(cmpi, CMPI_SEV_ERROR, "id", "text", nullptr), CMPI_RC_OK);
    EXPECT_RC(cmpi->eft->logMessage(cmpi, CMPI_SEV_WARNING, nullptr, nullptr, string("string")), CMPI_RC_OK);
    EXPECT_RC(cmpi->eft->trace(cmpi, CMPI_LEV_INFO, "component", nullptr, nullptr), CMPI_RC_OK);
    EXPECT_RC(cmpi->eft->logMessage(nullptr, CMPI_SEV_INFO, "id", "text", nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(messages(), (std::vector<std::string>{"id: text", "string", "component: "}));
}

TEST_F(EncapsulationTable, ErrorObjectsAreNotMade) {
    CMPIStatus status{};
    EXPECT_EQ(cmpi->eft->newCMPIError(cmpi, "owner", "id", "text", ErrorSevLow, ErrorProbCauseUnknown,
                                      CMPI_RC_ERR_FAILED, &status),
              nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(EncapsulationTable, ABrokenBrokerIsRc60) {
    CMPIStatus status{};
    CMPIBroker broken = *cmpi;
    broken.hdl = nullptr;
    for (const CMPIBroker* none : {static_cast<const CMPIBroker*>(nullptr), static_cast<const CMPIBroker*>(&broken)}) {
        EXPECT_EQ(cmpi->eft->newObjectPath(none, "root/test", "Test_Thing", &status), nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(cmpi->eft->newInstance(none, path(), &status), nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    }
}

TEST_F(EncapsulationTable, ACopyOfTheBrokerStructServesAsWell) {
    const CMPIBroker copy = *cmpi;
    EXPECT_NE(copy.eft->newObjectPath(&copy, "root/test", "Test_Thing", nullptr), nullptr);
}
