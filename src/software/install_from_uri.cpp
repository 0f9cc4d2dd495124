#include "software/install_from_uri.h"

#include "classes/request.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/port_controller.h"
#include "classes/wrapper_access.h"
#include "flash/flash_update.h"
#include "flash/installer.h"
#include "log/log.h"
#include "platform/platform.h"
#include "software/software_identity.h"
#include "text/text.h"

#include <cstdarg>

namespace merolt::software {

namespace {

constexpr const char* targetClass = "Merolt_FCHBA_PortController";
constexpr const char* targetKey = "DeviceID";
constexpr unsigned settlingSeconds = 5;

using LogWriter = void (*)(const char* text);

void toErrorLog(const char* text) { ERROR_LOG("invokeMethod_SoftwareInstallationService: Error: %s", text); }

// Failures of the card itself, as against mistakes of the caller.
void toDebugLog(const char* text) { DEBUG_LOG("invokeMethod_SoftwareInstallationService: Error: %s", text); }

/// Logs the text and ends the update with it.
[[noreturn]] __attribute__((format(printf, 3, 4))) void fail(LogWriter log, CMPIrc code, const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    log(text);
    throw CmpiStatus(code, text);
}

void logInstallOptions(const CmpiData& argument) {
    const CmpiArray options = argument;
    const CMPICount count = options.size();
    for (CMPICount index = 0; index < count; ++index) {
        const CMPIUint16 option = options[index];
        DEBUG_LOG("invokeMethod_SoftwareInstallationService: installOptions[%d]=%d", static_cast<int>(index), option);
    }
}

/// The key of the card's controller.
const char* targetDeviceID(const CmpiObjectPath& target) {
    const char* className = "";
    readClassName(target, className);
    if (!equalsIgnoringCase(className, targetClass)) {
        fail(toErrorLog, CMPI_RC_ERR_INVALID_CLASS, "Invalid Target class name, ClassName=%s, expect %s!", className,
             targetClass);
    }
    const RequestKey key = readKey(target, targetKey);
    if (key.status.rc != CMPI_RC_OK) {
        // The server's own words go to the client as they are, past the guard of the method.
        if (key.status.msg) throw key.status;
        fail(toErrorLog, key.status.rc, "Unable to get Key data from the object class, Key=%s!", targetKey);
    }
    if (key.type != CMPI_string)
        fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid Key data type, expect %s!", "CMPI_string");
    DEBUG_LOG("pTargetKeyValue or DeviceID=%s", key.text);
    return key.text;
}

/// The name of an existing file.
const char* flashFileName(const char* uri) {
    if (!uri) fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "URI argument is NULL!");
    const char* name = flash::behindFileScheme(uri);
    if (name) {
        DEBUG_LOG("invokeMethod_SoftwareInstallationService: Detected the leading 'file://' tag.  After removing the "
                  "tag, flashFileName=%s",
                  name);
    } else {
        name = uri;
    }
    if (!platform::services().fileExists(name))
        fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid or unsupported URI!");
    DEBUG_LOG("invokeMethod_SoftwareInstallationService: URI=%s.  File exists.", name);
    return name;
}

TAVIK_DeviceRecord* findDevice(const char* deviceID) {
    DEBUG_LOG("Check to see if the Device in in the PortControllerList...");
    auto index = static_cast<std::uint32_t>(-1);
    if (!storage::findPortControllerByDeviceID(deviceID, &index)) {
        fail(toDebugLog, CMPI_RC_ERR_NOT_FOUND, "Device with serial number %s is not found in PortController list!",
             deviceID);
    }
    if (static_cast<std::int32_t>(index) < 0) {
        fail(toDebugLog, CMPI_RC_ERR_NOT_FOUND, "Device with serial number %s is not found in Device list!", deviceID);
    }
    DEBUG_LOG("Found device in PortControllerList");
    return storage::g_portControllerList[index].device;
}

/// The new versions show at once, without a refresh of everything.
void rebuildVersions() {
    clearSoftwareIdentityList();
    buildSoftwareIdentityList();
    storage::clearFCPortList();
    storage::buildFCPortList();
}

/// Throws CmpiStatus.
std::uint32_t install(const CmpiData& uri, const CmpiData& target) {
    if (flash::isNull(target)) fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "Target argument is NULL!");
    if (flash::isNull(uri)) fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "URI argument is NULL!");
    const CmpiObjectPath targetPath = target;
    if (targetPath.isNull()) fail(toErrorLog, CMPI_RC_ERR_INVALID_PARAMETER, "Target argument is NULL!");
    const char* deviceID = targetDeviceID(targetPath);
    const CmpiString uriText = uri;
    const char* fileName = flashFileName(uriText.charPtr());
    TAVIK_DeviceRecord* device = findDevice(deviceID);
    DEBUG_LOG("Updating flash. Please wait....");
    const std::uint32_t status = TAVIK_doOptionROMUpdate(device, fileName, 0);
    if (status != 0) {
        fail(toDebugLog, CMPI_RC_ERR_NOT_FOUND, "Failed to update flash image, ErrorCode=%d!",
             static_cast<int>(status));
    }
    DEBUG_LOG("****** Successfully updated flash image for Device with serial number %s", deviceID);
    platform::sleepSeconds(settlingSeconds);
    rebuildVersions();
    return flash::installDone;
}

std::uint32_t installFromURI(const CmpiArgs& in) {
    DEBUG_LOG("invokeMethod_SoftwareInstallationService: INSTALL_FROM_URI");
    const CmpiData uri = in.getArg("URI");
    const CmpiData target = in.getArg("Target");
    logInstallOptions(in.getArg("InstallOptions"));
    return flash::runGuarded([&] { return install(uri, target); },
                             [](const CmpiStatus& failure) {
                                 DEBUG_LOG("Merolt_FCHBA_Provider INSTALL_FROM_URI exception: %s %s",
                                           cmpiRcToString(failure.rc()), loggedMessage(failure));
                             });
}

} // namespace

const char* cmpiRcToString(CMPIrc code) {
    static constexpr const char* names[] = {
        "CMPI_RC_OK",
        "CMPI_RC_ERR_FAILED",
        "CMPI_RC_ERR_ACCESS_DENIED",
        "CMPI_RC_ERR_INVALID_NAMESPACE",
        "CMPI_RC_ERR_INVALID_PARAMETER",
        "CMPI_RC_ERR_INVALID_CLASS",
        "CMPI_RC_ERR_NOT_FOUND",
        "CMPI_RC_ERR_NOT_SUPPORTED",
        "CMPI_RC_ERR_CLASS_HAS_CHILDREN",
        "CMPI_RC_ERR_CLASS_HAS_INSTANCES",
        "CMPI_RC_ERR_INVALID_SUPERCLASS",
        "CMPI_RC_ERR_ALREADY_EXISTS",
        "CMPI_RC_ERR_NO_SUCH_PROPERTY",
        "CMPI_RC_ERR_TYPE_MISMATCH",
        "CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED",
        "CMPI_RC_ERR_INVALID_QUERY",
        "CMPI_RC_ERR_METHOD_NOT_AVAILABLE",
        "CMPI_RC_ERR_METHOD_NOT_FOUND",
        "CMPI_RC_NO_MORE_ELEMENTS",
    };
    const auto number = static_cast<unsigned>(code);
    if (number < std::size(names)) return names[number];
    static FixedText<32> unnamed;
    unnamed.format("Errorcode: %d", static_cast<int>(code));
    return unnamed.text();
}

CmpiStatus invokeMethod_SoftwareInstallationService(const CmpiContext&, CmpiResult& result, const CmpiObjectPath&,
                                                    const char* methodName, const CmpiArgs& in, CmpiArgs&) {
    DEBUG_LOG("Entering invokeMethod_SoftwareInstallationService");
    const bool isKnown = equalsIgnoringCase(methodName, "InstallFromURI");
    const CmpiStatus status = flash::returnOutcome(result, isKnown ? installFromURI(in) : flash::installUnknownMethod);
    DEBUG_LOG("Exiting  invokeMethod_SoftwareInstallationService");
    return status;
}

} // namespace merolt::software
