// InstallFromURI of the storage side's installation service, as a client and the log see it.
#include "method_test.h"

#include "software/install_from_uri.h"

namespace {

constexpr const char* service = "Merolt_FCHBA_SoftwareInstallationService";
constexpr const char* controller = "Merolt_FCHBA_PortController";
constexpr const char* method = "InstallFromURI";
const std::string prefix = "invokeMethod_SoftwareInstallationService: ";
const std::string entry = "Entering Merolt_CNA_Provider invokeMethod: classname = " + std::string(service);

class StorageMethodTest : public MethodTest {
protected:
    void SetUp() override {
        MethodTest::SetUp();
        writeFile("image.bin", "image");
        image = std::filesystem::absolute("image.bin").string();
        setText("URI", image);
        setPath("Target", controller, "CNA0001");
        setOptions({});
        tavikLibrary.onOptionRomUpdate = [this](TAVIK_DeviceRecord* device, const char* fileName) {
            writtenDevice = device;
            writtenName = fileName;
            return libraryStatus;
        };
        tavikLibrary.clearCalls();
    }

    void setOptions(const std::vector<CMPIUint16>& options, CMPIType elementType = CMPI_uint16) {
        auto* array = cimhost::ArrayObject::make(scope->arena(), static_cast<CMPICount>(options.size()), elementType);
        for (CMPICount index = 0; index < options.size(); ++index) {
            CMPIData option{elementType, CMPI_goodValue, {}};
            option.value.uint16 = options[index];
            array->store(index, option);
        }
        CMPIValue value{};
        value.array = array;
        arguments.set("InstallOptions", static_cast<CMPIType>(elementType | CMPI_ARRAY), value);
    }

    /// The call fails with these lines between the method's own, and nothing reached the library.
    void expectRefusal(const std::vector<std::string>& lines) {
        EXPECT_EQ(invoke(service, method), returned(2));
        EXPECT_TRUE(inOrder(takeLogLines(), lines));
        EXPECT_EQ(tavikLibrary.callCount("TAVIK_doOptionROMUpdate"), 0U);
        expectNextRequestWorks();
    }

    static std::string exception(const std::string& text) {
        return "Merolt_FCHBA_Provider INSTALL_FROM_URI exception: " + text;
    }

    std::string image;
    TAVIK_DeviceRecord* writtenDevice = nullptr;
    std::string writtenName;
    std::uint32_t libraryStatus = 0;
};

TEST_F(StorageMethodTest, WritesTheNamedFileAndShowsTheNewVersionsAtOnce) {
    setOptions({3, 4});
    const unsigned long slept = services.sleptHere();
    tavikLibrary.onOptionRomUpdate = [this](TAVIK_DeviceRecord* device, const char* fileName) {
        writtenDevice = device;
        writtenName = fileName;
        tavikLibrary.storage(1).multiBootVersion = "V:2.02.03,D:09142012,A:Y,T:M";
        return 0U;
    };
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(writtenName, image);
    EXPECT_EQ(writtenDevice, &record(1));
    EXPECT_EQ(services.sleptHere() - slept, 5000U);
    EXPECT_EQ(occurrences(valuesOf("Merolt_FCHBA_SoftwareIdentity", "VersionString"), inQuotes("2.2.3")), 1U);
    EXPECT_TRUE(
        inOrder(takeLogLines(),
                {entry + ", MethodName=InstallFromURI", "Entering invokeMethod_SoftwareInstallationService",
                 prefix + "INSTALL_FROM_URI", prefix + "installOptions[0]=3", prefix + "installOptions[1]=4",
                 "pTargetKeyValue or DeviceID=CNA0001", prefix + "URI=" + image + ".  File exists.",
                 "Check to see if the Device in in the PortControllerList...", "Found device in PortControllerList",
                 "Updating flash. Please wait....",
                 "****** Successfully updated flash image for Device with serial number CNA0001",
                 "Exiting  invokeMethod_SoftwareInstallationService", "Exiting  Merolt_CNA_Provider invokeMethod"}));
}

TEST_F(StorageMethodTest, RebuildsSoftwareIdentitiesAndThenPortsAfterTheWait) {
    std::vector<std::string> callsBeforeWait;
    services.afterSleep = [&] { callsBeforeWait = tavikLibrary.calls(); };
    EXPECT_EQ(invoke(service, method), returned(0));
    services.afterSleep = nullptr;
    EXPECT_EQ(callsBeforeWait.back(), "TAVIK_doOptionROMUpdate");
    EXPECT_TRUE(inOrder(tavikLibrary.calls(),
                        {"TAVIK_doOptionROMUpdate", "TAVIK_GetMBIVersionString", "TAVIK_GetHbaDevicePortProperty"}));
}

TEST_F(StorageMethodTest, TakesTheMethodNameInAnyLetterCase) {
    EXPECT_EQ(invoke(service, "installfromuri"), returned(0));
}

TEST_F(StorageMethodTest, AnotherMethodGivesOneAndLogsNothingButEntryAndExit) {
    EXPECT_EQ(invoke(service, "InstallFromByteStream"), returned(1));
    const std::vector<std::string> expected = {
        entry + ", MethodName=InstallFromByteStream", "Entering invokeMethod_SoftwareInstallationService",
        "Exiting  invokeMethod_SoftwareInstallationService", "Exiting  Merolt_CNA_Provider invokeMethod", ""};
    EXPECT_EQ(takeLogLines(), expected);
}

TEST_F(StorageMethodTest, DropsALeadingFileSchemeInAnyLetterCase) {
    for (const char* scheme : {"file://", "FILE://", "File://"}) {
        writtenName.clear();
        setText("URI", scheme + image);
        EXPECT_EQ(invoke(service, method), returned(0)) << scheme;
        EXPECT_EQ(writtenName, image);
    }
    EXPECT_TRUE(logHas(prefix + "Detected the leading 'file://' tag.  After removing the tag, flashFileName=" + image));
}

TEST_F(StorageMethodTest, RemoteSchemesAndMissingFilesAreNoFiles) {
    std::filesystem::create_symlink("/nowhere/at/all", "dangling");
    for (const char* uri : {"http://192.0.2.1/image.bin", "HTTPS://192.0.2.1/image.bin", "ftp://192.0.2.1/image.bin",
                            "/nowhere/image.bin", "", "dangling"}) {
        setText("URI", uri);
        expectRefusal({prefix + "Error: Invalid or unsupported URI!",
                       exception("CMPI_RC_ERR_INVALID_PARAMETER Invalid or unsupported URI!")});
    }
}

TEST_F(StorageMethodTest, AFolderIsRefusedByTheLibrary) {
    libraryStatus = 15;
    std::filesystem::create_directory("folder");
    setText("URI", "folder");
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_EQ(writtenName, "folder");
}

TEST_F(StorageMethodTest, AFilesSizeIsCheckedByTheLibrary) {
    for (const std::uintmax_t size : {0U, 0x1000000U, 0x1000001U}) {
        writtenName.clear();
        setText("URI", fileOf("sized.bin", size));
        EXPECT_EQ(invoke(service, method), returned(0)) << size;
        EXPECT_EQ(std::filesystem::path(writtenName).filename(), "sized.bin") << size;
    }
    EXPECT_FALSE(std::filesystem::exists("flash.bin")) << "this side copies nothing";
}

TEST_F(StorageMethodTest, AFileRemovedBetweenTheChecksIsReportedByTheLibrary) {
    services.afterFileCheck = [] { std::filesystem::remove("image.bin"); };
    tavikLibrary.onOptionRomUpdate = [](TAVIK_DeviceRecord*, const char* fileName) {
        return std::filesystem::exists(fileName) ? 0U : 14U;
    };
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_TRUE(logHas(prefix + "URI=" + image + ".  File exists."));
    EXPECT_TRUE(logHas(prefix + "Error: Failed to update flash image, ErrorCode=14!"));
    expectNextRequestWorks();
}

TEST_F(StorageMethodTest, AMissingTargetOrURIIsNamedInTheLog) {
    arguments.setNull("Target", CMPI_ref);
    arguments.setNull("URI", CMPI_string);
    expectRefusal({prefix + "Error: Target argument is NULL!",
                   exception("CMPI_RC_ERR_INVALID_PARAMETER Target argument is NULL!")});
    setPath("Target", controller, "CNA0001");
    expectRefusal(
        {prefix + "Error: URI argument is NULL!", exception("CMPI_RC_ERR_INVALID_PARAMETER URI argument is NULL!")});
    arguments.set("URI", CMPI_string, CMPIValue{});
    expectRefusal(
        {prefix + "Error: URI argument is NULL!", exception("CMPI_RC_ERR_INVALID_PARAMETER URI argument is NULL!")});
}

TEST_F(StorageMethodTest, ATargetOfTheEthernetSideIsOfTheWrongClass) {
    setPath("Target", "Merolt_NIC_PortController", "CNA0001");
    const std::string text = "Invalid Target class name, ClassName=Merolt_NIC_PortController, expect "
                             "Merolt_FCHBA_PortController!";
    expectRefusal({prefix + "Error: " + text, exception("CMPI_RC_ERR_INVALID_CLASS " + text)});
}

TEST_F(StorageMethodTest, TheTargetsClassMatchesInAnyLetterCase) {
    setPath("Target", "merolt_fchba_PORTCONTROLLER", "cna0001");
    EXPECT_EQ(invoke(service, method), returned(0));
}

TEST_F(StorageMethodTest, ATargetWithoutItsKeyIsRefusedWithTheKeysName) {
    setReference("Target", scope->make().path(implementationNamespace, controller));
    const std::string text = "Unable to get Key data from the object class, Key=DeviceID!";
    expectRefusal({prefix + "Error: " + text, exception("CMPI_RC_ERR_NOT_FOUND " + text)});
}

TEST_F(StorageMethodTest, ANumericKeyIsOfTheWrongType) {
    setPathWithNumber("Target", controller);
    const std::string text = "Invalid Key data type, expect CMPI_string!";
    expectRefusal({prefix + "Error: " + text, exception("CMPI_RC_ERR_INVALID_PARAMETER " + text)});
}

TEST_F(StorageMethodTest, AnUnknownDeviceIsNotFound) {
    setPath("Target", controller, "NOSUCH");
    const std::string text = "Device with serial number NOSUCH is not found in PortController list!";
    expectRefusal({prefix + "Error: " + text, exception("CMPI_RC_ERR_NOT_FOUND " + text)});
}

TEST_F(StorageMethodTest, AFailingLibraryGivesTwoAndLeavesTheListsAsTheyWere) {
    libraryStatus = 99;
    const auto versions = valuesOf("Merolt_FCHBA_SoftwareIdentity", "VersionString");
    tavikLibrary.storage(1).multiBootVersion = "V:9.09.09,D:09142012,A:Y,T:M";
    const unsigned long slept = services.sleptHere();
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_EQ(services.sleptHere(), slept);
    EXPECT_EQ(valuesOf("Merolt_FCHBA_SoftwareIdentity", "VersionString"), versions);
    EXPECT_TRUE(inOrder(takeLogLines(), {prefix + "Error: Failed to update flash image, ErrorCode=99!",
                                         exception("CMPI_RC_ERR_NOT_FOUND Failed to update flash image, "
                                                   "ErrorCode=99!")}));
    expectNextRequestWorks();
}

TEST_F(StorageMethodTest, AnArgumentThatTheServerLacksLeavesTheMethodAndFreesBothLocks) {
    for (const char* name : {"URI", "Target", "InstallOptions"}) {
        const CMPIData kept = arguments.items[name];
        arguments.items.erase(name);
        EXPECT_EQ(invoke(service, method), (MethodAnswer{CMPI_RC_ERR_NO_SUCH_PROPERTY, name, {}, 0}));
        arguments.items[name] = kept;
        expectNextRequestWorks();
    }
}

TEST_F(StorageMethodTest, AnArgumentThatReadsAsAbsentCountsAsNull) {
    arguments.absent = CMPI_RC_ERR_NOT_FOUND;
    arguments.items.erase("URI");
    expectRefusal({prefix + "Error: URI argument is NULL!"});
}

TEST_F(StorageMethodTest, NullInstallOptionsCountAsNone) {
    arguments.setNull("InstallOptions", CMPI_uint16A);
    EXPECT_EQ(invoke(service, method), returned(0));
}

TEST_F(StorageMethodTest, InstallOptionsOfAnotherTypeLeaveTheMethodAndFreeBothLocks) {
    setOptions({1}, CMPI_uint32);
    EXPECT_EQ(invoke(service, method).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    expectNextRequestWorks();
    arguments.setNull("InstallOptions", CMPI_string);
    EXPECT_EQ(invoke(service, method).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    expectNextRequestWorks();
}

TEST_F(StorageMethodTest, AKeyThatTheServerRefusesWithAMessageReachesTheClientAndFreesBothLocks) {
    cimhost::ObjectPathObject* path = setPath("Target", controller, "CNA0001");
    CMPIObjectPathFT refusing = *path->ft;
    static CMPIString* message = nullptr;
    message = scope->make().string("the server's own words");
    refusing.getKey = [](const CMPIObjectPath*, const char*, CMPIStatus* status) {
        *status = {CMPI_RC_ERR_ACCESS_DENIED, message};
        return CMPIData{};
    };
    static CMPIString* className = nullptr;
    className = scope->make().string(controller);
    refusing.getClassName = [](const CMPIObjectPath*, CMPIStatus*) { return className; };
    path->ft = &refusing;
    EXPECT_EQ(invoke(service, method), (MethodAnswer{CMPI_RC_ERR_ACCESS_DENIED, "the server's own words", {}, 0}));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_doOptionROMUpdate"), 0U);
    expectNextRequestWorks();
}

TEST_F(StorageMethodTest, ArgumentsOfAnotherKindFailTheMethod) {
    setText("Target", "a text");
    expectRefusal({exception("CMPI_RC_ERR_TYPE_MISMATCH (null)")});
    setPath("Target", controller, "CNA0001");
    setPath("URI", controller, "CNA0001");
    expectRefusal({exception("CMPI_RC_ERR_TYPE_MISMATCH (null)")});
    CMPIValue none{};
    arguments.set("Target", CMPI_ref, none);
    expectRefusal({prefix + "Error: Target argument is NULL!"});
}

TEST(ReturnCodeNames, AreThoseOfTheHeaderAndANumberBeyond) {
    EXPECT_STREQ(merolt::software::cmpiRcToString(CMPI_RC_OK), "CMPI_RC_OK");
    EXPECT_STREQ(merolt::software::cmpiRcToString(CMPI_RC_ERR_TYPE_MISMATCH), "CMPI_RC_ERR_TYPE_MISMATCH");
    EXPECT_STREQ(merolt::software::cmpiRcToString(static_cast<CMPIrc>(18)), "CMPI_RC_NO_MORE_ELEMENTS");
    EXPECT_STREQ(merolt::software::cmpiRcToString(static_cast<CMPIrc>(19)), "Errorcode: 19");
}

} // namespace
