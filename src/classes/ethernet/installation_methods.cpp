#include "classes/ethernet/installation_methods.h"

#include "classes/request.h"
#include "classes/wrapper_access.h"
#include "flash/flash_update.h"
#include "flash/installer.h"
#include "inventory/cna_list.h"
#include "log/log.h"
#include "platform/platform.h"
#include "text/text.h"

#include <functional>
#include <memory>

namespace merolt::ethernet {

namespace {

using flash::isNull;

/// What a method does with its arguments. Throws CmpiStatus; any code becomes a failed method.
using Installation = std::function<std::uint32_t()>;

struct BlockOwner {
    void operator()(void* block) const { CoreFree(block); }
};
using Bytes = std::unique_ptr<CMPIUint8, BlockOwner>;

/// The key of the controller that Target names: a serial number, alone or with "_NIC" behind it.
const char* targetDeviceID(const CmpiData& target) {
    const CmpiObjectPath path = target;
    const char* className = "";
    if (path.isNull()) throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    readClassName(path, className);
    if (!equalsIgnoringCase(className, "Merolt_NIC_PortController")) throw CmpiStatus(CMPI_RC_ERR_INVALID_CLASS);
    const RequestKey key = readKey(path, "DeviceID");
    if (key.status.rc != CMPI_RC_OK) {
        ERROR_LOG("Merolt_NIC_SoftwareInstallationService: Error getting Name key invokeMethod\n");
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    if (key.type != CMPI_string) {
        ERROR_LOG("Merolt_NIC_SoftwareInstallationService: Invalid key type in invokeMethod\n");
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    return key.text;
}

CNACard* findTargetCard(const CmpiData& target) { return FindCNAFromSerialNumber(targetDeviceID(target)); }

[[noreturn]] void refuseURI(const char* text) {
    ERROR_LOG("Merolt_NIC_SoftwareInstallationService: Error: %s", text);
    throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER, text);
}

/// The name of an existing file. A remote location never gets past here.
const char* flashFileName(const char* uri) {
    if (!uri) refuseURI("URI argument is NULL!");
    const char* name = flash::behindFileScheme(uri);
    if (name) {
        DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: Detected the leading 'file://' tag.  After removing the "
                  "tag, flashFileName=%s",
                  name);
    } else {
        name = uri;
    }
    if (!platform::services().fileExists(name)) refuseURI("Invalid or unsupported URI!");
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: URI=%s.  File exists.", name);
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: flashFileName = %s", name);
    return name;
}

std::uint32_t installFromURI(const CmpiData& uri, const CmpiData& target) {
    if (isNull(uri) || isNull(target) || OpenData(uri).type() != CMPI_string)
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    const char* deviceID = targetDeviceID(target);
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: NIC_PortController.DeviceID = %s", deviceID);
    CNACard* card = FindCNAFromSerialNumber(deviceID);
    if (!card) {
        DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: pCNACard is NULL after FindCNAFromSerialNumber() call");
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    const CmpiString uriText = uri;
    const char* fileName = flashFileName(uriText.charPtr());
    char localFile[flash::localNameRoom];
    const unsigned long long imageSize = flash::downloadFlashFile(fileName, localFile);
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: imageSize = %llu, localFile= %s", imageSize, localFile);
    if (imageSize == 0 || imageSize > flash::largestImage) {
        DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: Image did not pass the size check");
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    const std::uint32_t outcome = flash::UpdateCNAFlashImage(card, localFile, imageSize);
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService: UpdateCNAFlashImage returns %u", outcome);
    return outcome;
}

std::uint32_t installFromByteStream(const CmpiData& image, const CmpiData& target) {
    // The bare array flag alone: an array that the server tags with its element type is refused.
    if (isNull(image) || isNull(target) || OpenData(image).type() != CMPI_ARRAY)
        throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    CNACard* card = findTargetCard(target);
    if (!card) throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    const CmpiArray array = image;
    const CMPICount size = array.size();
    if (size == 0 || size > flash::largestImage) throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    // The library takes bytes that begin with a slash for a path, and finds its end in the zero behind them.
    const Bytes bytes(static_cast<CMPIUint8*>(CoreAlloc(std::size_t{size} + 1)));
    if (!bytes) throw CmpiStatus(CMPI_RC_ERR_FAILED);
    for (CMPICount index = 0; index < size; ++index)
        bytes.get()[index] = array[index];
    return flash::UpdateCNAFlashImage(card, bytes.get(), size);
}

/// Judges its arguments and fails: no identity that the server knows can be installed from.
std::uint32_t installFromSoftwareIdentity(const CmpiData& source, const CmpiData& target) {
    if (isNull(source) || isNull(target)) throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    [[maybe_unused]] const CmpiObjectPath identity = source; // throws if it is none
    findTargetCard(target);
    throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
}

/// Judges its arguments and fails: exactly one of target and collection has to be there.
std::uint32_t checkSoftwareIdentity(const CmpiData& source, const CmpiData& target, const CmpiData& collection) {
    if (isNull(target) == isNull(collection) || isNull(source)) throw CmpiStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    [[maybe_unused]] const CmpiObjectPath identity = source; // throws if it is none
    throw CmpiStatus(findTargetCard(target) ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_TYPE_MISMATCH);
}

/// Reads the arguments: what the server says about an absent one leaves the method.
using Preparation = Installation (*)(const CmpiArgs& in);

struct MethodRow {
    const char* name;
    Preparation prepare;
    const char* exceptionName; ///< of its line in the log
};

// clang-format off
constexpr MethodRow methodRows[] = {
    {"InstallFromURI",
     [](const CmpiArgs& in) -> Installation {
         return [uri = in.getArg("URI"), target = in.getArg("Target")] { return installFromURI(uri, target); };
     },
     "INSTALL_FROM_URI"},
    {"InstallFromSoftwareIdentity",
     [](const CmpiArgs& in) -> Installation {
         return [source = in.getArg("Source"), target = in.getArg("Target")] {
             return installFromSoftwareIdentity(source, target);
         };
     },
     "INSTALL_FROM_SOFTWAREIDENTITY"},
    {"InstallFromByteStream",
     [](const CmpiArgs& in) -> Installation {
         return [image = in.getArg("Image"), target = in.getArg("Target")] {
             return installFromByteStream(image, target);
         };
     },
     "INSTALL_FROM_BYTESTREAM"},
    {"CheckSoftwareIdentity",
     [](const CmpiArgs& in) -> Installation {
         return [source = in.getArg("Source"), target = in.getArg("Target"), collection = in.getArg("Collection")] {
             return checkSoftwareIdentity(source, target, collection);
         };
     },
     "CHECK_SOFTWARE_IDENTITY"},
};
// clang-format on

std::uint32_t run(const MethodRow& method, const CmpiArgs& in) {
    return flash::runGuarded(method.prepare(in), [&method](const CmpiStatus& failure) {
        DEBUG_LOG("Merolt_NIC_Provider %s exception: %d %s", method.exceptionName, failure.rc(),
                  loggedMessage(failure));
    });
}

} // namespace

CmpiStatus invokeMethod_SoftwareInstallationService(const CmpiContext&, CmpiResult& result, const CmpiObjectPath&,
                                                    const char* methodName, const CmpiArgs& in, CmpiArgs&) {
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService invokeMethod was called\n");
    for (const MethodRow& method : methodRows) {
        if (equalsIgnoringCase(methodName, method.name)) return flash::returnOutcome(result, run(method, in));
    }
    return flash::returnOutcome(result, flash::installUnknownMethod);
}

} // namespace merolt::ethernet
