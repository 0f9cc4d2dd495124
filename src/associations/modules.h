// The associations that deviate so far that each has a module of its own.
#pragma once

#include "associations/association.h"

#define STORAGE_MODULES(MODULE)                                                                                        \
    MODULE(computerSystemLogicalPortGroup)                                                                             \
    MODULE(computerSystemSoftwareIdentity)                                                                             \
    MODULE(fcPortFCPortStatistics)                                                                                     \
    MODULE(logicalPortGroupFCPort)                                                                                     \
    MODULE(physicalPackagePortController)                                                                              \
    MODULE(portControllerSoftwareInstallationService)                                                                  \
    MODULE(softwareIdentityPortController)                                                                             \
    MODULE(softwareIdentitySoftwareInstallationService)                                                                \
    MODULE(softwareInstallationServiceCapabilities)

#define ETHERNET_MODULES(MODULE)                                                                                       \
    MODULE(computerSystemLANEndPoint)                                                                                  \
    MODULE(computerSystemNetworkPort)                                                                                  \
    MODULE(computerSystemPortController)                                                                               \
    MODULE(elementConformsToRegisteredProfile)                                                                         \
    MODULE(physicalConnectorEthernetPort)                                                                              \
    MODULE(physicalPackagePortController)                                                                              \
    MODULE(physicalPortEthernetPort)                                                                                   \
    MODULE(softwareIdentityPortController)

#define DECLARE_MODULE(name) extern const association::Family name;

namespace merolt::storage {
STORAGE_MODULES(DECLARE_MODULE)
} // namespace merolt::storage

namespace merolt::ethernet {
ETHERNET_MODULES(DECLARE_MODULE)
} // namespace merolt::ethernet

#undef DECLARE_MODULE
