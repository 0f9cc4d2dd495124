// The methods of the Ethernet side's installation service: two write an image to a converged card, two only judge their
// arguments.
#pragma once

#include "CmpiArgs.h"
#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

namespace merolt::ethernet {

/// Runs a method and returns 0 updated, 1 unknown method or 2 failed into the result. A failed method is a success for
/// the server: why it failed stands in the log. An argument that cannot be read is thrown as CmpiStatus.
CmpiStatus invokeMethod_SoftwareInstallationService(const CmpiContext& context, CmpiResult& result,
                                                    const CmpiObjectPath& path, const char* methodName,
                                                    const CmpiArgs& in, CmpiArgs& out);

} // namespace merolt::ethernet
