// Rules about cards, software and names.
#pragma once

#include "cimhost/doctor/rules.h"

namespace cimhost::doctor {

void examineNoAdapters(const Look& look, std::vector<Sign>& signs);
void examineRefusals(const Look& look, std::vector<Sign>& signs);
void examineSilentCards(const Look& look, std::vector<Sign>& signs);
void examineSilentPorts(const Look& look, std::vector<Sign>& signs);
void examineFirmwareOfModel(const Look& look, std::vector<Sign>& signs);
void examineFirmwareInUse(const Look& look, std::vector<Sign>& signs);
void examineSerialNumbers(const Look& look, std::vector<Sign>& signs);
void examinePortNames(const Look& look, std::vector<Sign>& signs);
void examineMacAddresses(const Look& look, std::vector<Sign>& signs);
void examineSystemNames(const Look& look, std::vector<Sign>& signs);

} // namespace cimhost::doctor
