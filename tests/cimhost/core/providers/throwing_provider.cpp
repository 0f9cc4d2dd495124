// A provider whose functions throw.
#include <stdexcept>

#include "cmpidt.h"
#include "cmpift.h"

namespace {

CMPIStatus cleanUp(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) { throw std::runtime_error("still busy"); }

CMPIStatus enumerateInstanceNames(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    throw 1;
}

CMPIStatus getInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char**) {
    throw std::runtime_error("tree is broken");
}

CMPIInstanceMIFT table = {
    CMPICurrentVersion,
    CMPICurrentVersion,
    "instance",
    cleanUp,
    enumerateInstanceNames,
    nullptr,
    getInstance,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};
CMPIInstanceMI made = {nullptr, &table};

} // namespace

CMPI_EXTERN_C CMPIInstanceMI* Throwing_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    return &made;
}

CMPI_EXTERN_C CMPIInstanceMI* ThrowingFactory_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    throw std::runtime_error("no tree");
}
