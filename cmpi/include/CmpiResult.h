// Where an operation puts what it returns.
#pragma once

#include "CmpiData.h"
#include "CmpiInstance.h"
#include "CmpiObject.h"
#include "CmpiObjectPath.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// The answer to a request. Servers refuse, with CMPI_RC_ERR_NOT_SUPPORTED, what does not fit the request: paths where
/// instances are due, and so on.
class CMPI_PROVIDER_LINKAGE CmpiResult : public CmpiObject {
    friend class CmpiInstanceMI;
    friend class CmpiAssociationMI;
    friend class CmpiMethodMI;
    friend class CmpiPropertyMI;
    friend class CmpiIndicationMI;

public:
    /// Adds a value: what a method returns. Throws CmpiStatus.
    void returnData(const CmpiData& data);

    /// Adds an instance. Throws CmpiStatus.
    void returnData(const CmpiInstance& instance);

    /// Adds a path. Throws CmpiStatus.
    void returnData(const CmpiObjectPath& path);

    /// Nothing more will come. Throws CmpiStatus.
    void returnDone();

protected:
    CmpiResult(CMPIResult* result) : CmpiObject(result) {}
    CMPIResult* getEnc() const { return static_cast<CMPIResult*>(enc); }

private:
    CmpiResult() = default;
};
