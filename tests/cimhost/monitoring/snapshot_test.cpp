// What is read where a server refuses questions. What it reads of one that answers is seen in
// cimhost_optics_program_test.
#include "cimhost/monitoring/snapshot.h"

#include "cimhost/service/cim_failure.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace cimhost::monitoring {
namespace {

using Instances = std::vector<const InstanceObject*>;

/// Refuses the classes whose names hold the text, and has no instances of the others.
Enumerate refusing(const std::string& text) {
    return [text](const char* className) -> Instances {
        if (std::string(className).find(text) != std::string::npos) {
            throw CimFailure(CMPI_RC_ERR_INVALID_CLASS, "it is not known");
        }
        return {};
    };
}

TEST(Snapshot, NotesARefusedQuestionAndGoesOn) {
    const Snapshot snapshot = readSnapshot(refusing("SoftwareIdentityPortController"));
    ASSERT_EQ(snapshot.failures.size(), 2U);
    EXPECT_EQ(snapshot.failures[0].className, "Merolt_FCHBA_SoftwareIdentityPortController");
    EXPECT_EQ(snapshot.failures[0].reason, "CIM_ERR_INVALID_CLASS: it is not known");
}

TEST(Snapshot, OfAServerThatRefusesEverythingIsAFailure) { EXPECT_THROW(readSnapshot(refusing("Merolt")), CimFailure); }

TEST(Snapshot, OfAServerThatGivesNoAnswerIsAFailure) {
    const Enumerate gone = [](const char*) -> Instances { throw std::runtime_error("the connection broke"); };
    EXPECT_THROW(readSnapshot(gone), std::runtime_error);
}

TEST(Snapshot, OfModulesAloneFailsWhereAnyQuestionIsRefused) {
    EXPECT_TRUE(readModules(refusing("Statistics")).modules.empty());
    EXPECT_THROW(readModules(refusing("PhysicalConnector")), CimFailure);
}

TEST(CardSerialNumbers, AreTheSameInTheirLongAndTheirShortForm) {
    EXPECT_TRUE(isSameCard("MC1020R4K00317", "MC1020R4K00317"));
    EXPECT_TRUE(isSameCard("11S00MD102YK50AP23X00D", "YK50AP23X00D"));
    EXPECT_FALSE(isSameCard("11S00MD102YK50AP23X00", "YK50AP23X00")) << "one character short of the long form";
    EXPECT_FALSE(isSameCard("", ""));
}

} // namespace
} // namespace cimhost::monitoring
