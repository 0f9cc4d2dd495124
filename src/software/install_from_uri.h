// The method of the storage side's installation service: InstallFromURI writes a flash file to a storage card.
#pragma once

#include "CmpiArgs.h"
#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

namespace merolt::software {

/// The name of a return code, for the log. Codes without a name print into a buffer that the next call overwrites.
const char* cmpiRcToString(CMPIrc code);

/// Runs a method and returns 0 updated, 1 unknown method or 2 failed into the result. A failed method is a success for
/// the server: why it failed stands in the log. What is thrown here is an argument that cannot be read, as CmpiStatus,
/// and a key that the server refuses with a message, as CMPIStatus.
CmpiStatus invokeMethod_SoftwareInstallationService(const CmpiContext& context, CmpiResult& result,
                                                    const CmpiObjectPath& path, const char* methodName,
                                                    const CmpiArgs& in, CmpiArgs& out);

} // namespace merolt::software
