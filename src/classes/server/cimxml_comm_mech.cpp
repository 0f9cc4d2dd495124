#include "classes/server/cimxml_comm_mech.h"

#include "classes/instance.h"
#include "classes/server/single_object.h"

#include "CmpiBooleanData.h"

namespace merolt::server {

namespace {

constexpr const char* cimClass = "Merolt_FCHBA_CIMXMLCommMech";
constexpr const char* mechanismName = "CIMXML Communication Mechanism";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

const ListClass descriptor = singleObject<makePath_CIMXMLCommMech, makeInstance_CIMXMLCommMech>(
    "CIMXMLCommMech", [](int) { return mechanismName; });

} // namespace

CmpiObjectPath makePath_CIMXMLCommMech(const char* className, const char* nameSpace) {
    return systemScopedPath(className, nameSpace, cimClass, "Name", mechanismName);
}

CmpiInstance makeInstance_CIMXMLCommMech(const char* className, const char* nameSpace, const char** properties) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    setSystemScope(instance, cimClass);
    instance.setProperty("Name", CmpiData(mechanismName));
    instance.setProperty("ElementName", CmpiData(mechanismName));
    instance.setProperty("CommunicationMechanism", CmpiData(CMPIUint16{2}));
    instance.setProperty("OtherCommunicationMechanismDescription", CmpiData(""));
    instance.setProperty("Version", CmpiData("1.0"));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    instance.setProperty("StatusDescriptions", CmpiData(stringArray({"OK"})));
    instance.setProperty("FunctionalProfilesSupported", CmpiData(uint16Array({2, 6, 9})));
    instance.setProperty("FunctionalProfileDescriptions",
                         CmpiData(stringArray({"Basic Read", "Association Traversal", "Indications"})));
    instance.setProperty("AuthenticationMechanismsSupported", CmpiData(uint16Array({3})));
    instance.setProperty("AuthenticationMechanismDescriptions", CmpiData(stringArray({"Basic"})));
    instance.setProperty("MultipleOperationsSupported", CmpiTrue);
    instance.setProperty("CIMValidated", CmpiFalse);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(CIMXMLCommMech, descriptor)

} // namespace merolt::server
