// What the operator reads of changes, and of those who were not let.
#include "fake_provider.h"

#include "cimhost/service/audit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace cimhost {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing_support::className;
using testing_support::FakeHost;
using testing_support::instanceName;
using testing_support::parameter;

class Lines {
public:
    AuditLog::Sink sink() {
        return [this](std::string_view line) {
            const std::lock_guard lock(mutex);
            kept.emplace_back(line);
            changed.notify_all();
        };
    }

    std::vector<std::string> all() {
        const std::lock_guard lock(mutex);
        return kept;
    }

    bool waitFor(std::size_t count) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 30s, [&] { return kept.size() >= count; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> kept;
};

TEST(Audit, OneLineForEachChange) {
    Lines lines;
    AuditLog audit(lines.sink());
    audit.changed({"127.0.0.1:4", "anna", "DeleteInstance", "root/ns:T.Id=\"a\\b\"", "ok"});
    audit.changed({"[::1]:4", "", "Start", "root/ns:T", "ReturnValue 2"});
    EXPECT_THAT(
        lines.all(),
        ElementsAre(
            R"(audit: client=127.0.0.1:4 user=anna operation=DeleteInstance object="root/ns:T.Id=\"a\\b\"" result=ok)",
            R"(audit: client=[::1]:4 user="" operation=Start object=root/ns:T result="ReturnValue 2")"));
}

TEST(Audit, TextsOfAClientAreCutAndHaveNoControlCharacters) {
    Lines lines;
    AuditLog audit(lines.sink());
    const std::string bad = "x\nresult=ok\x1b[2J\xc2\x85 \xff" + std::string(100'000, '"');
    audit.changed({"127.0.0.1:4", bad, bad, bad, "ok"});
    audit.changed({"127.0.0.1:4", std::string(127, 'x') + "\xc3\xa4", "a", "b", "ok"});
    const std::vector<std::string> all = lines.all();
    ASSERT_THAT(all, SizeIs(2));
    EXPECT_LE(all[0].size(), 3072U);
    EXPECT_THAT(all, Each(Not(testing::MatchesRegex(".*[\x01-\x1f\x7f].*"))));
    EXPECT_THAT(all[0], HasSubstr(R"(user="x result=ok [2J   ?\"\")"));
    EXPECT_THAT(all[0], EndsWith(" result=ok"));
    EXPECT_THAT(all[1], HasSubstr(std::string(127, 'x') + "... operation")) << "not cut within a character";
}

TEST(Audit, ManyRefusalsAreCountedInOneLine) {
    Lines lines;
    {
        AuditLog audit(lines.sink(), {3, 3600s});
        for (int guess = 0; guess < 1000; ++guess)
            audit.refusedLogin("127.0.0.1:4", "anna");
        EXPECT_THAT(lines.all(), SizeIs(3));
        EXPECT_THAT(lines.all(),
                    Each(std::string("audit: client=127.0.0.1:4 user=anna operation=login result=refused")));
        audit.changed({"127.0.0.1:4", "anna", "Start", "T", "ok"});
        EXPECT_THAT(lines.all(), SizeIs(4)) << "who may is always told";
    }
    ASSERT_THAT(lines.all(), SizeIs(5));
    EXPECT_EQ(lines.all().back(), "audit: 997 more refused logins and changes, not told one by one");
}

TEST(Audit, TheCountIsWrittenWithoutAFurtherRefusal) {
    Lines lines;
    AuditLog audit(lines.sink(), {1, 50ms});
    for (int guess = 0; guess < 5; ++guess)
        audit.refusedLogin("127.0.0.1:4", "anna");
    ASSERT_TRUE(lines.waitFor(2));
    for (const std::string& line : lines.all())
        EXPECT_THAT(line, testing::StartsWith("audit: "));
    EXPECT_THAT(lines.all().back(), HasSubstr(" more refused logins and changes"));
}

class AuditedDispatcher : public testing::Test {
protected:
    AuditedDispatcher() { host.dispatcher = std::make_unique<Dispatcher>(*host.operations, *host.broker, &audit); }

    FakeHost host;
    Lines lines;
    AuditLog audit{lines.sink()};
};

TEST_F(AuditedDispatcher, LogsChangesAndNothingElse) {
    const std::string path = parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a"));
    host.call("GetInstance", path);
    host.call("EnumerateInstances", className("T_Element"));
    host.call("NoOperation", path);
    EXPECT_THAT(lines.all(), IsEmpty());
    host.call("DeleteInstance", path);
    ASSERT_THAT(lines.all(), SizeIs(1));
    EXPECT_THAT(lines.all()[0], HasSubstr("user=anna operation=DeleteInstance "
                                          R"(object="root/ns:T_FibrePort.System=\"s\",Id=\"a\"" result=)"));
    host.call("CreateInstance",
              parameter("NewInstance", "<INSTANCE CLASSNAME=\"T_FibrePort\"><PROPERTY NAME=\"System\" "
                                       "TYPE=\"string\"><VALUE>s</VALUE></PROPERTY><PROPERTY NAME=\"Id\" "
                                       "TYPE=\"string\"><VALUE>n</VALUE></PROPERTY></INSTANCE>"));
    ASSERT_THAT(lines.all(), SizeIs(2));
    EXPECT_THAT(lines.all()[1], HasSubstr(R"(operation=CreateInstance object="root/ns:T_FibrePort.)"));
    EXPECT_THAT(lines.all()[1], HasSubstr(R"(Id=\"n\")"));
}

TEST_F(AuditedDispatcher, LogsHowAChangeEnded) {
    const std::string path = parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a"));
    host.provider.failure = CimError{CMPI_RC_ERR_FAILED, "secret words"};
    host.call("DeleteInstance", path);
    host.call("DeleteInstance", parameter("InstanceName", instanceName("T_Nothing", "System=s,Id=a")));
    host.access = Access::read;
    host.call("DeleteInstance", path);
    const std::vector<std::string> all = lines.all();
    ASSERT_THAT(all, SizeIs(3));
    EXPECT_THAT(all[0], EndsWith(" result=CIM_ERR_FAILED"));
    EXPECT_THAT(all[1], EndsWith(" result=CIM_ERR_INVALID_CLASS"));
    EXPECT_THAT(all[2], EndsWith(" result=CIM_ERR_ACCESS_DENIED"));
}

} // namespace
} // namespace cimhost
