#include "classes/storage/scsi_endpoint.h"

#include "classes/instance.h"

namespace merolt::storage {

namespace {

const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

} // namespace

CmpiInstance makeInstance_SCSIEndpoint(const char* className, const char* nameSpace, const char** properties,
                                       const char* creationClassName, CMPIUint16 role, const SCSIEndpointEntry& entry) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    setSystemScope(instance, creationClassName);
    instance.setProperty("Name", CmpiData(entry.name.text()));
    instance.setProperty("ProtocolIFType", CmpiData(CMPIUint16{56}));
    instance.setProperty("ConnectionType", CmpiData(CMPIUint16{2}));
    instance.setProperty("Role", CmpiData(role));
    instance.setProperty("ElementName", CmpiData(entry.name.text()));
    instance.setProperty("OtherTypeDescription", CmpiData(""));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    return instance;
}

} // namespace merolt::storage
