#include "indication_world.h"

#include "../protocol/temporary_file.h"
#include "cimhost/storage/atomic_file.h"
#include "cimhost/storage/descriptor.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

using cimhost::testing_support::Properties;
using cimhost::testing_support::World;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const std::string alerts = "SELECT * FROM CIM_AlertIndication";
const std::string linkUp = "Merolt_NIC_IndicationEthernetPortLinkUp";
const std::string nowhere = "http://127.0.0.1:1/";

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "cimhost_state_XXXXXX").string();
        path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path path;
};

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

TEST(Subscriptions, MissingKeysAndPropertiesAreFilledIn) {
    World world;
    const std::string filter = world.create("CIM_IndicationFilter", {{"Name", "f"}, {"Query", alerts}});
    EXPECT_EQ(filter, "root/PG_InterOp:CIM_IndicationFilter.SystemCreationClassName=\"CIM_ComputerSystem\","
                      "SystemName=\"host\",CreationClassName=\"CIM_IndicationFilter\",Name=\"f\"");
    EXPECT_EQ(world.property(filter, "SourceNamespace"), "root/PG_InterOp");
    EXPECT_EQ(world.property(filter, "QueryLanguage"), "WQL");
    const std::string handler =
        world.create("CIM_ListenerDestinationCIMXML", {{"Name", "h"}, {"Destination", nowhere}});
    EXPECT_EQ(world.property(handler, "PersistenceType"), "2");
}

TEST(Subscriptions, TheSourceNamespaceMayBeAListOfOne) {
    World world;
    const std::string filter = world.create(
        "CIM_IndicationFilter", {{"Name", "f"}, {"Query", alerts}, {"SourceNamespace", "root/merolt_cmpi"}});
    EXPECT_EQ(world.property(filter, "SourceNamespaces"), "root/merolt_cmpi");
    const std::string listed = world.create(
        "CIM_IndicationFilter", {{"Name", "g"}, {"Query", alerts}, {"SourceNamespaces", "root/merolt_cmpi"}});
    EXPECT_EQ(world.property(listed, "SourceNamespace"), "root/merolt_cmpi");
    EXPECT_EQ(world.property(listed, "SourceNamespaces"), "root/merolt_cmpi");
    const auto statusOf = [&](const Properties& properties) {
        return World::statusOf([&] { world.create("CIM_IndicationFilter", properties); });
    };
    EXPECT_EQ(statusOf({{"Name", "h"}, {"Query", alerts}, {"SourceNamespaces", "root/merolt_cmpi,root/PG_InterOp"}}),
              CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(statusOf({{"Name", "i"},
                        {"Query", alerts},
                        {"SourceNamespace", "root/PG_InterOp"},
                        {"SourceNamespaces", "root/merolt_cmpi"}}),
              CMPI_RC_ERR_INVALID_PARAMETER);
    world.subscribe(listed, world.destination("d", nowhere));
}

TEST(Subscriptions, BadFiltersAreRefused) {
    World world;
    const auto statusOf = [&](const cimhost::testing_support::Properties& properties) {
        return World::statusOf([&] { world.create("CIM_IndicationFilter", properties); });
    };
    EXPECT_EQ(statusOf({{"Query", alerts}}), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(statusOf({{"Name", "f"}}), CMPI_RC_ERR_INVALID_QUERY);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", "SELECT Message FROM CIM_AlertIndication"}}),
              CMPI_RC_ERR_INVALID_QUERY);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", "SELECT * FROM No_Class"}}), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", "SELECT * FROM CIM_FCPort"}}), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", alerts}, {"SourceNamespace", "root/x"}}),
              CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", alerts}, {"QueryLanguage", "SQL"}}),
              CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED);
    EXPECT_EQ(statusOf({{"Name", "f"}, {"Query", alerts}, {"CreationClassName", "Other"}}),
              CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_THAT(world.names("CIM_IndicationFilter"), IsEmpty());
}

TEST(Subscriptions, ADestinationIsAnHttpUrl) {
    World world;
    for (const char* url : {"", "listener", "ftp://host/", "http://", "http://user@host/", "http://host:0/",
                            "http://host:65536/", "http://ho st/", "http://[::1/", "file:///etc/passwd"}) {
        EXPECT_EQ(World::statusOf([&] { world.destination("h", url); }), CMPI_RC_ERR_INVALID_PARAMETER) << url;
    }
    for (const char* url : {"http://host", "https://host:5990/path?x", "http://[::1]:80", "HTTP://10.0.0.1/"})
        world.destination(url, url);
    EXPECT_THAT(world.names("CIM_ListenerDestinationCIMXML"), SizeIs(4));
}

TEST(Subscriptions, DuplicatesAndTheRemovalOfObjectsInUseAreRefused) {
    World world;
    const std::string filter = world.filter("f", alerts);
    const std::string handler = world.destination("h", nowhere);
    EXPECT_EQ(World::statusOf([&] { world.filter("f", alerts); }), CMPI_RC_ERR_ALREADY_EXISTS);
    EXPECT_EQ(World::statusOf([&] { world.destination("h", nowhere); }), CMPI_RC_ERR_ALREADY_EXISTS);
    const std::string subscription = world.subscribe(filter, handler);
    EXPECT_EQ(World::statusOf([&] { world.subscribe(filter, handler); }), CMPI_RC_ERR_ALREADY_EXISTS);
    EXPECT_EQ(World::statusOf([&] { world.remove(filter); }), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(World::statusOf([&] { world.remove(handler); }), CMPI_RC_ERR_FAILED);
    world.remove(subscription);
    world.remove(filter);
    world.remove(handler);
    EXPECT_EQ(World::statusOf([&] { world.remove(filter); }), CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(World::statusOf([&] { world.property(filter, "Name"); }), CMPI_RC_ERR_NOT_FOUND);
}

TEST(Subscriptions, ASubscriptionNeedsAFilterAndAHandlerThatExist) {
    World world;
    const std::string filter = world.filter("f", alerts);
    const std::string handler = world.destination("h", nowhere);
    const auto statusOf = [&](const std::string& one, const std::string& other) {
        return World::statusOf([&] { world.subscribe(one, other); });
    };
    EXPECT_EQ(statusOf(handler, filter), CMPI_RC_ERR_INVALID_PARAMETER);
    world.remove(handler);
    EXPECT_EQ(statusOf(filter, handler), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_THAT(world.filters.calls, IsEmpty());
}

TEST(Subscriptions, AClassThatNoProviderServesCannotBeSubscribedTo) {
    World world;
    const std::string filter = world.filter("f", alerts, "root/PG_InterOp");
    const std::string handler = world.destination("h", nowhere);
    EXPECT_EQ(World::statusOf([&] { world.subscribe(filter, handler); }), CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST(Subscriptions, TheProviderIsToldOfTheFirstAndTheLastFilterAndEnabledOnce) {
    World world;
    const std::string up = world.filter("up", "select * from " + linkUp);
    const std::string all = world.filter("all", alerts);
    const std::string handler = world.destination("h", nowhere);
    const std::string other = world.destination("other", nowhere);
    const std::string first = world.subscribe(up, handler);
    const std::string second = world.subscribe(up, other);
    EXPECT_THAT(world.filters.calls,
                ElementsAre("authorize " + linkUp + " " + linkUp, "mustPoll " + linkUp + " " + linkUp,
                            "activate first " + linkUp + " " + linkUp, "enable", "authorize " + linkUp + " " + linkUp,
                            "mustPoll " + linkUp + " " + linkUp, "activate " + linkUp + " " + linkUp));
    world.filters.calls.clear();
    world.remove(first);
    world.remove(second);
    world.subscribe(all, handler);
    EXPECT_THAT(world.filters.calls,
                ElementsAre("deactivate " + linkUp + " " + linkUp, "deactivate last " + linkUp + " " + linkUp,
                            "authorize CIM_AlertIndication MeroltCNA_AlertIndication_AdapterStatusChange",
                            "mustPoll CIM_AlertIndication MeroltCNA_AlertIndication_AdapterStatusChange",
                            "activate first CIM_AlertIndication MeroltCNA_AlertIndication_AdapterStatusChange"));
}

TEST(Subscriptions, AProviderThatRefusesAFilterLeavesNoSubscription) {
    World world;
    const std::string filter = world.filter("f", alerts);
    const std::string handler = world.destination("h", nowhere);
    world.filters.refusal = cimhost::CimError{CMPI_RC_ERR_ACCESS_DENIED, "no"};
    EXPECT_EQ(World::statusOf([&] { world.subscribe(filter, handler); }), CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_THAT(world.names("CIM_IndicationSubscription"), IsEmpty());
    EXPECT_EQ(world.deliver(linkUp), CMPI_RC_ERR_FAILED);
}

TEST(Subscriptions, ADisabledSubscriptionTellsNobody) {
    World world;
    world.subscribe(world.filter("f", alerts), world.destination("h", nowhere), "4");
    EXPECT_THAT(world.filters.calls, IsEmpty());
    EXPECT_EQ(world.deliver(linkUp), CMPI_RC_ERR_FAILED);
}

TEST(Subscriptions, AllButTransientOnesSurviveARestart) {
    const TemporaryFolder folder;
    const auto file = folder.path / "new" / "state.json";
    std::string kept;
    {
        World world(file);
        const std::string filter = world.filter("a \"quoted\" name", alerts + " WHERE Message <> '\xc3\xa4'");
        kept = world.subscribe(filter, world.destination("lasting", nowhere));
        world.subscribe(filter, world.destination("passing", nowhere, "3"));
    }
    World again(file);
    again.server->subscriptions().restore();
    EXPECT_THAT(again.names("CIM_IndicationSubscription"), ElementsAre(kept));
    EXPECT_THAT(again.names("CIM_ListenerDestinationCIMXML"), SizeIs(1));
    EXPECT_THAT(again.filters.calls, SizeIs(4));
    EXPECT_EQ(again.deliver(linkUp, {{"Message", "x"}}), CMPI_RC_OK);
    again.remove(kept);
    World third(file);
    third.server->subscriptions().restore();
    EXPECT_THAT(third.names("CIM_IndicationSubscription"), IsEmpty());
    EXPECT_THAT(third.names("CIM_IndicationFilter"), SizeIs(1));
}

TEST(Subscriptions, ADamagedFileIsRefusedWithItsPlaceAndLeftAlone) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    const auto errorOf = [&](const std::string& content) -> std::string {
        std::ofstream(file) << content;
        World world(file);
        try {
            world.server->subscriptions().restore();
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(contentOf(file), content);
            return error.what();
        }
        return "";
    };
    EXPECT_THAT(errorOf("{\"format\": "), HasSubstr("state.json: "));
    EXPECT_THAT(errorOf(""), HasSubstr("line 1"));
    EXPECT_THAT(errorOf("[]"), HasSubstr("\"format\": a text is expected"));
    EXPECT_THAT(errorOf(R"({"format": "cimhost subscriptions 1", "instances": [{"class": "X", "properties": {}}]})"),
                HasSubstr("/instances/0: \"class\": there is no class X"));
    EXPECT_THAT(errorOf(R"({"format": "cimhost subscriptions 1", "instances": [)"
                        R"({"class": "CIM_IndicationFilter", "properties": {"Name": "f", "Query": "SELECT"}}]})"),
                HasSubstr("/instances/0: Query: character 7"));
    EXPECT_THAT(errorOf("[[[[[[[[[[[[]]]]]]]]]]]]"), HasSubstr("nested too deeply"));
}

TEST(Subscriptions, AFileThatSomebodyElseChangedIsNotOverwritten) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    World world(file);
    world.filter("f", alerts);
    std::ofstream(file) << "mine";
    EXPECT_EQ(World::statusOf([&] { world.filter("g", alerts); }), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(contentOf(file), "mine");
    EXPECT_THAT(world.names("CIM_IndicationFilter"), SizeIs(1));
}

TEST(Subscriptions, AnObjectThatWouldMakeTheFileTooLongIsRefused) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    std::string escaped;
    for (int count = 0; count < 16384; ++count)
        escaped += "\\u0001";
    const std::vector<std::string> longProperties = {"SystemName", "Caption", "Description", "ElementName"};
    {
        // Almost as long as may be.
        std::ofstream stream(file);
        stream << R"({"format": "cimhost subscriptions 1", "instances": [)";
        for (int number = 0; number < 42; ++number) {
            stream << (number > 0 ? ",\n" : "") << R"({"class": "CIM_IndicationFilter", "properties": {"Name": ")"
                   << number << R"(", "Query": ")" << alerts << '"';
            for (const std::string& name : longProperties)
                stream << ", \"" << name << "\": \"" << escaped << '"';
            stream << "}}";
        }
        stream << "]}\n";
    }
    World world(file);
    world.server->subscriptions().restore();
    const std::string before = contentOf(file);
    Properties next = {{"Name", "next"}, {"Query", alerts}};
    for (const std::string& name : longProperties)
        next.emplace_back(name, std::string(16384, '\1'));
    try {
        world.create("CIM_IndicationFilter", next);
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("more than 16777216 bytes"));
    }
    EXPECT_TRUE(contentOf(file) == before);
    const std::vector<std::string> made = world.names("CIM_IndicationFilter");
    EXPECT_THAT(made, SizeIs(42));
    world.remove(made.front());
    EXPECT_LT(std::filesystem::file_size(file), before.size());
}

TEST(Subscriptions, AnObjectThatCannotBeStoredIsRefused) {
    World world("/proc/cimhost/state.json");
    const std::string filter = "f";
    EXPECT_EQ(World::statusOf([&] { world.filter(filter, alerts); }), CMPI_RC_ERR_FAILED);
    EXPECT_THAT(world.names("CIM_IndicationFilter"), IsEmpty());
}

TEST(Subscriptions, OneUserCannotUseUpTheLimitOfAll) {
    World world;
    std::string last;
    for (int number = 0; number < 128; ++number)
        last = world.destination(std::to_string(number), nowhere);
    EXPECT_EQ(World::statusOf([&] { world.destination("more", nowhere); }), CMPI_RC_ERR_FAILED);
    EXPECT_THAT(world.names("CIM_ListenerDestinationCIMXML"), SizeIs(128));
    world.remove(last);
    EXPECT_EQ(World::statusOf([&] { world.destination("more", nowhere); }), CMPI_RC_OK);
}

TEST(Subscriptions, LimitsOfUsersHoldAfterARestart) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    {
        World world(file);
        for (int number = 0; number < 128; ++number)
            world.destination(std::to_string(number), nowhere);
    }
    World again(file);
    again.server->subscriptions().restore();
    EXPECT_EQ(World::statusOf([&] { again.destination("more", nowhere); }), CMPI_RC_ERR_FAILED);
    EXPECT_THAT(again.names("CIM_ListenerDestinationCIMXML"), SizeIs(128));
}

TEST(Subscriptions, AFileOfAnOlderVersionThatTellsNoOwnersIsRead) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    std::ofstream(file) << R"({"format": "cimhost subscriptions 1", "instances": [
        {"class": "CIM_ListenerDestinationCIMXML", "properties": {"Name": "d", "Destination": "http://127.0.0.1:1/",
         "SystemName": "host", "SystemCreationClassName": "CIM_ComputerSystem", "PersistenceType": "2",
         "CreationClassName": "CIM_ListenerDestinationCIMXML"}}]})";
    World world(file);
    world.server->subscriptions().restore();
    EXPECT_THAT(world.names("CIM_ListenerDestinationCIMXML"), SizeIs(1));
    world.destination("e", nowhere);
    World again(file);
    again.server->subscriptions().restore();
    EXPECT_THAT(again.names("CIM_ListenerDestinationCIMXML"), SizeIs(2));
}

TEST(Subscriptions, FilesLeftByKilledServersAreRemovedAtTheStart) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    const auto left = folder.path / "state.json.unfinished.aB3xYz";
    const auto written = folder.path / "state.json.unfinished.bbbbbb";
    const std::vector<std::string> others = {"state.json.backup", "state.json.unfinished.", "state.json.unfinished.old",
                                             "other.json.unfinished.aB3xYz"};
    for (const std::string& other : others)
        std::ofstream(folder.path / other) << "kept";
    std::filesystem::create_symlink(folder.path / others.front(), folder.path / "state.json.unfinished.link12");
    std::ofstream(left) << "{";
    std::ofstream(written) << "{";
    const cimhost::Descriptor writer(::open(written.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
    World world(file);
    world.server->subscriptions().restore();
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_TRUE(std::filesystem::exists(written)) << "somebody writes it at this moment";
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path / "state.json.unfinished.link12"));
    for (const std::string& other : others)
        EXPECT_EQ(contentOf(folder.path / other), "kept") << other;
}

TEST(Subscriptions, AFileLeftByAKilledServerIsRemovedByTheNext) {
    const TemporaryFolder folder;
    const auto file = folder.path / "state.json";
    cimhost::replaceFile(file, "first");
    const std::string text(std::size_t{1} << 20, 'x');
    for (int killed = 0; killed < 8; ++killed) {
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (;;)
                cimhost::replaceFile(file, text);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 7 * killed));
        ::kill(writer, SIGKILL);
        ASSERT_EQ(::waitpid(writer, nullptr, 0), writer);
        cimhost::removeUnfinished(file);
        const std::filesystem::directory_iterator names(folder.path);
        EXPECT_EQ(std::distance(begin(names), end(names)), 1) << "the file itself";
        const std::string content = contentOf(file);
        EXPECT_TRUE(content == "first" || content == text) << content.size() << " bytes";
    }
}
