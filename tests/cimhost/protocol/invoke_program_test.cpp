// The command cimhost invoke.
#include "answer_source.h"
#include "program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing_support::AnswerSource;
using testing_support::answerSources;
using testing_support::askedOf;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::nameOfSource;
using testing_support::TemporaryFile;

const std::string storage = "Merolt_FCHBA_SoftwareInstallationService";
const std::string nic = "Merolt_NIC_SoftwareInstallationService";
const std::string nicTarget = "Target=Merolt_NIC_PortController.DeviceID=\"MC1020R4K00317\"";

Ended invoke(AnswerSource source, const std::vector<std::string>& words) {
    std::vector<std::string> arguments = {"invoke"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return askedOf(source, arguments);
}

class InvokeProgram : public testing::TestWithParam<AnswerSource> {
protected:
    static Ended invoke(const std::vector<std::string>& words) { return cimhost::invoke(GetParam(), words); }
};

INSTANTIATE_TEST_SUITE_P(Of, InvokeProgram, testing::ValuesIn(answerSources), nameOfSource);

TEST_P(InvokeProgram, AMethodThatFailsTellsWhatItsAnswerMeansAndWhereToLook) {
    const Ended ended = invoke({nic, "InstallFromURI", "URI=/nonexistent/image.bin", nicTarget});
    EXPECT_EQ(ended.status, 4) << ended.errors;
    EXPECT_EQ(ended.output, "ReturnValue: 2 (Unspecified Error)\n");
    EXPECT_THAT(ended.errors, HasSubstr("cimhost: InstallFromURI answered 2 (Unspecified Error); the provider's log "
                                        "tells why"));
}

TEST_P(InvokeProgram, WithJsonPrintsJsonAndNothingElse) {
    const Ended ended = invoke({"--json", nic, "InstallFromByteStream", "Image=1,2,255", nicTarget});
    EXPECT_EQ(ended.status, 4) << ended.errors;
    EXPECT_EQ(ended.output, "{\n  \"ReturnValue\": 2\n}\n");
    EXPECT_THAT(ended.errors, HasSubstr("{\"error\":{\"message\":\"InstallFromByteStream answered 2 (Unspecified"));
}

TEST_P(InvokeProgram, AnInstanceAnArrayAndNullStandAsTheyAreWritten) {
    const Ended names = cimhost({"--fleet", FLEET, "names", storage});
    const std::string service = names.output.substr(0, names.output.find('\n'));
    const std::string target = "Target=Merolt_FCHBA_PortController.DeviceID=\"MC1020R4K00317\"";
    const Ended ended = invoke({service, "InstallFromURI", "URI=file:///nonexistent", target, "InstallOptions=3,4"});
    EXPECT_EQ(ended.output, "ReturnValue: 2 (Unspecified Error)\n") << ended.errors;
    const Ended null = invoke({service, "installfromuri", "URI=", "Target=", "InstallOptions="});
    EXPECT_EQ(null.output, "ReturnValue: 2 (Unspecified Error)\n") << null.errors;
}

struct BadCall {
    std::string name;
    std::vector<std::string> words;
    int status;
    std::string message;
};

void PrintTo(const BadCall& bad, std::ostream* out) { *out << bad.name; }

class RefusedCall : public testing::TestWithParam<std::tuple<AnswerSource, BadCall>> {};

TEST_P(RefusedCall, SaysWhyAndPrintsNothing) {
    const auto& [source, call] = GetParam();
    const Ended ended = invoke(source, call.words);
    EXPECT_EQ(ended.status, call.status) << ended.errors;
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr(call.message));
}

std::vector<BadCall> badCalls() {
    return {
        {"NoMethod", {nic}, 2, "METHOD is required"},
        {"UnknownMethod", {nic, "Restart"}, 1, "cimhost: CIM_ERR_METHOD_NOT_FOUND (17): "},
        {"ClassWithoutMethods", {"Merolt_FCHBA_FCPort", "InstallFromURI"}, 1, "CIM_ERR_METHOD_NOT_FOUND (17)"},
        {"UnknownClass", {"Merolt_Nothing", "InstallFromURI"}, 1, "CIM_ERR_INVALID_CLASS (5)"},
        {"UnknownNamespace", {nic, "InstallFromURI", "--namespace", "root/none"}, 1, "CIM_ERR_INVALID_NAMESPACE (3)"},
        {"BadPath", {nic + ".=1", "InstallFromURI"}, 2, "an instance path reads"},
        {"NoValue", {nic, "InstallFromURI", "URI"}, 2, "cimhost: URI: an argument is written NAME=VALUE"},
        {"UnknownArgument",
         {nic, "InstallFromURI", "Color=red"},
         1,
         "CIM_ERR_INVALID_PARAMETER (4): parameter Color: method InstallFromURI does not take it"},
        {"TargetIsNoPath", {nic, "InstallFromURI", "Target=card 1"}, 1, "CIM_ERR_INVALID_PARAMETER (4)"},
        {"NoByte",
         {nic, "InstallFromByteStream", "Image=1,256"},
         1,
         "CIM_ERR_INVALID_PARAMETER (4): parameter Image: \"256\" is no uint8"},
        {"GivenTwice",
         {nic, "InstallFromURI", "URI=/tmp/one.bin", "uri=/tmp/two.bin"},
         1,
         "CIM_ERR_INVALID_PARAMETER (4): parameter URI: given twice"},
        {"NoFile",
         {nic, "InstallFromByteStream", "Image=@/nonexistent/image.bin"},
         2,
         "cimhost: /nonexistent/image.bin: cannot be read"},
        {"AFolder", {nic, "InstallFromByteStream", "Image=@/"}, 2, "cimhost: /: cannot be read"},
        {"LeftOut", {nic, "InstallFromURI", "URI=/tmp/image.bin"}, 1, "CIM_ERR_NO_SUCH_PROPERTY (12)"},
    };
}

INSTANTIATE_TEST_SUITE_P(Calls, RefusedCall,
                         testing::Combine(testing::ValuesIn(answerSources), testing::ValuesIn(badCalls())),
                         [](const auto& row) {
                             const bool isServer = std::get<0>(row.param) == AnswerSource::server;
                             return std::get<1>(row.param).name + (isServer ? "AtAServer" : "");
                         });

} // namespace
} // namespace cimhost
