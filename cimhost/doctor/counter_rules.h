// Rules about error counters.
#pragma once

#include "cimhost/doctor/rules.h"

namespace cimhost::doctor {

void examineGrowth(const Look& look, std::vector<Sign>& signs);
void examineLinkFailures(const Look& look, std::vector<Sign>& signs);
void examineLossOfSignal(const Look& look, std::vector<Sign>& signs);
void examineCrcErrors(const Look& look, std::vector<Sign>& signs);

} // namespace cimhost::doctor
