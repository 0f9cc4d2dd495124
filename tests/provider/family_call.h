// Calls a class's functions past the dispatcher, as the associations do, on a path that the test plays itself.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/broker/result_collector.h"

#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"
#include "cmpift.h"

#include <functional>
#include <string>
#include <vector>

/// A request's path that tells what was read of it, and that can refuse each read.
class WatchedPath : public CMPIObjectPath {
public:
    WatchedPath(cimhost::Broker& broker, std::string className, std::string nameSpace);
    WatchedPath(const WatchedPath&) = delete;
    WatchedPath& operator=(const WatchedPath&) = delete;

    std::string className;
    std::string nameSpace;
    /// What every key reads as.
    std::string keyText;
    /// CMPI_string for the text; for another type the key is the number 5.
    CMPIType keyType = CMPI_string;

    CMPIrc classNameStatus = CMPI_RC_OK;
    CMPIrc nameSpaceStatus = CMPI_RC_OK;
    CMPIrc keyStatus = CMPI_RC_OK;

    /// "class name", "namespace" and "key NAME", in the order of the reads.
    std::vector<std::string> reads;

private:
    friend struct WatchedPathCalls;

    const CMPIBroker* const broker;
};

/// What a family's function gave.
struct FamilyAnswer {
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    bool thrown = false; ///< the code and the message are those of a CmpiStatus that was thrown
    std::size_t returned = 0;
    std::size_t doneCount = 0;
};

using FamilyFunction = std::function<CmpiStatus(const CmpiContext&, CmpiResult&, const CmpiObjectPath&)>;

FamilyAnswer callFamily(cimhost::Broker& broker, cimhost::ResultKind kind, WatchedPath& path,
                        const FamilyFunction& function);
