// Rules about transceiver modules and their readings.
#pragma once

#include "cimhost/doctor/rules.h"

namespace cimhost::doctor {

void examineAlarms(const Look& look, std::vector<Sign>& signs);
void examineWarnings(const Look& look, std::vector<Sign>& signs);
void examineUnreadable(const Look& look, std::vector<Sign>& signs);
void examineUnbelievable(const Look& look, std::vector<Sign>& signs);
void examineReceivePower(const Look& look, std::vector<Sign>& signs);

} // namespace cimhost::doctor
