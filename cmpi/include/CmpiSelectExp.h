// The query of an indication filter.
#pragma once

#include "CmpiObject.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// A select expression of the server; a provider can only hand it on.
class CMPI_PROVIDER_LINKAGE CmpiSelectExp : public CmpiObject {
    friend class CmpiBroker;
    friend class CmpiResult;
    friend class CmpiIndicationMI;

protected:
    CmpiSelectExp(const CMPISelectExp* expression) : CmpiObject(expression) {}
    CMPISelectExp* getEnc() const { return static_cast<CMPISelectExp*>(enc); }

private:
    CmpiSelectExp() = default;
};
