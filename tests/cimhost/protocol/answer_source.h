// One question to the provider here, or to a CIM server that has the same adapters.
#pragma once

#include "program.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace cimhost::testing_support {

enum class AnswerSource { library, server };

inline constexpr std::array answerSources = {AnswerSource::library, AnswerSource::server};

/// "Library" or "Server".
std::string nameOfSource(const testing::TestParamInfo<AnswerSource>& parameter);

/// Runs a command of cimhost about the demonstration fleet. Of a server's answer its name and the time that it took are
/// left out, so that both sources answer alike.
Ended askedOf(AnswerSource source, std::vector<std::string> question);

} // namespace cimhost::testing_support
