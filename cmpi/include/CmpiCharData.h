// CIM characters. A CMPIChar16 alone is taken for a uint16.
#pragma once

#include "CmpiData.h"
#include "Linkage.h"

/// A CmpiData of type char16.
class CMPI_PROVIDER_LINKAGE CmpiCharData : public CmpiData {
public:
    /// Needs no server.
    constexpr CmpiCharData(const CMPIChar16 value) : CmpiData(CMPIData{CMPI_char16, CMPI_goodValue, {value}}) {}
};
