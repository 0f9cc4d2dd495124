// CIM booleans. A CMPIBoolean alone is taken for a uint8, which servers refuse for a boolean property.
#pragma once

#include "CmpiData.h"
#include "Linkage.h"

/// A CmpiData of type boolean.
class CMPI_PROVIDER_LINKAGE CmpiBooleanData : public CmpiData {
public:
    /// Needs no server.
    constexpr CmpiBooleanData(const CMPIBoolean value) : CmpiData(CMPIData{CMPI_boolean, CMPI_goodValue, {value}}) {}
};

/// True as a CIM value; usable from the first static initialiser on.
extern const CmpiBooleanData CmpiTrue CMPI_PROVIDER_LINKAGE;

/// False as a CIM value; usable from the first static initialiser on.
extern const CmpiBooleanData CmpiFalse CMPI_PROVIDER_LINKAGE;
