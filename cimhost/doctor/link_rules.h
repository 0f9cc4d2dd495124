// Rules about links, speeds, targets and what a port can carry.
#pragma once

#include "cimhost/doctor/rules.h"

namespace cimhost::doctor {

void examineLinkDownWithLight(const Look& look, std::vector<Sign>& signs);
void examineLinkDownInTheDark(const Look& look, std::vector<Sign>& signs);
void examineLinkDown(const Look& look, std::vector<Sign>& signs);
void examineSpeed(const Look& look, std::vector<Sign>& signs);
void examineTargets(const Look& look, std::vector<Sign>& signs);
void examineMtu(const Look& look, std::vector<Sign>& signs);

/// A jack where a module is plugged and some function has no link.
bool isLinkDown(const monitoring::Snapshot& snapshot, const std::string& jack);

} // namespace cimhost::doctor
