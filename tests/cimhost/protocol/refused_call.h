// Requests that end with a CIM error before the provider hears of them.
#pragma once

#include "fake_provider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace cimhost::testing_support {

struct RefusedCall {
    std::string name; ///< of the test
    std::string method;
    std::string parameters;
    int code; ///< of the CIM error (DSP0200)
    std::string nameSpace = "root/ns";
};

inline void PrintTo(const RefusedCall& call, std::ostream* out) { *out << call.name; }

inline std::string nameOfCall(const testing::TestParamInfo<RefusedCall>& row) { return row.param.name; }

/// How an answer begins that is the error with this code.
inline std::string error(int code) { return "<ERROR CODE=\"" + std::to_string(code) + "\""; }

inline void expectRefusal(FakeHost& host, const RefusedCall& row) {
    const std::string answer = host.call(row.method, row.parameters, row.nameSpace);
    EXPECT_THAT(answer, testing::StartsWith(error(row.code)));
    EXPECT_THAT(answer, testing::HasSubstr(" DESCRIPTION=\""));
    EXPECT_THAT(host.provider.calls, testing::IsEmpty());
}

} // namespace cimhost::testing_support
