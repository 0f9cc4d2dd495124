// The interfaces that tests call in place of the provider's.
#pragma once

#include "cmpift.h"

namespace foreign_server {

/// One of them; first what the test sees.
template <class Interface>
struct Passage {
    Interface shown{};
    Interface* provider = nullptr;
};

struct Interfaces {
    Passage<CMPIInstanceMI> instance;
    Passage<CMPIAssociationMI> association;
    Passage<CMPIMethodMI> method;
    Passage<CMPIIndicationMI> indication;
    CMPIInstanceMIFT instanceTable{};
    CMPIAssociationMIFT associationTable{};
    CMPIMethodMIFT methodTable{};
    CMPIIndicationMIFT indicationTable{};
};

} // namespace foreign_server
