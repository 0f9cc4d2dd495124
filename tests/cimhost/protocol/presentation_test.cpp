// The file that tells how objects are shown: what it chooses, and what is said of a line that nobody can follow.
#include "fake_provider.h"
#include "temporary_file.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/json_output.h"
#include "cimhost/cli/labels.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/text_output.h"
#include "cimhost/cli/tree_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace cimhost::cli {
namespace {

using testing_support::FakeHost;
using testing_support::TemporaryFile;

class PresentationTest : public testing::Test {
protected:
    Presentation read(const std::string& text) {
        const TemporaryFile file(text);
        return readPresentation(file.path, host.repository, "root/ns");
    }

    const InstanceObject& firstOf(RequestScope& scope, std::string_view className) {
        return *all(scope, className).front();
    }

    std::vector<const InstanceObject*> all(RequestScope& scope, std::string_view className) {
        const ClassDeclaration& declaration = *host.repository.find("root/ns", className);
        host.registration.add(declaration, ProviderKind::instance);
        return host.operations->enumerateInstances(scope, {}, declaration, true, std::nullopt);
    }

    FakeHost host;
};

TEST_F(PresentationTest, ALabelHasAWordAndTheValuesThatThereAre) {
    const Presentation chosen = read("[T_FibrePort]\nlabel = port | {Id} | fibre {Topology} | at {Speed} # bits\n");
    RequestScope scope(*host.broker);
    EXPECT_EQ(labelOf(firstOf(scope, "T_FibrePort"), chosen), "port a, at 16000000000");
    EXPECT_EQ(labelOf(firstOf(scope, "T_EtherPort"), chosen), "T_EtherPort e");
}

TEST_F(PresentationTest, APropertyWithoutAValueGivesWayToAnother) {
    const Presentation chosen = read("[T_FibrePort]\nlabel = port | {Topology or Id} | {Id or Speed}\n"
                                     "columns = Port {Topology or Id} | Bits {Speed or Id} | Fibre {Topology}\n");
    RequestScope scope(*host.broker);
    EXPECT_EQ(labelOf(firstOf(scope, "T_FibrePort"), chosen), "port a, a");
    const ClassDeclaration* fibre = host.repository.find("root/ns", "T_FibrePort");
    EXPECT_EQ(tableOf(all(scope, "T_FibrePort"), fibre, chosen, {}), "Port  Bits\n"
                                                                     "a     16000000000\n"
                                                                     "b     8000000000\n"
                                                                     "2 instances\n");
}

TEST_F(PresentationTest, ColumnsCountForSubclassesThatHaveNoneOfTheirOwn) {
    const Presentation chosen = read("[T_Port]\ncolumns = Port {Id} | Bits {Speed} | Mtu {Mtu}\n"
                                     "[T_EtherPort]\ncolumns = Which {Id}\n");
    RequestScope scope(*host.broker);
    const ClassDeclaration* fibre = host.repository.find("root/ns", "T_FibrePort");
    const ClassDeclaration* ether = host.repository.find("root/ns", "T_EtherPort");
    EXPECT_EQ(tableOf(all(scope, "T_FibrePort"), fibre, chosen, {}), "Port  Bits\n"
                                                                     "a     16000000000\n"
                                                                     "b     8000000000\n"
                                                                     "2 instances\n");
    EXPECT_EQ(tableOf(all(scope, "T_EtherPort"), ether, chosen, {}), "Which\n"
                                                                     "e\n"
                                                                     "1 instance\n");
}

TEST_F(PresentationTest, AUnitCountsForItsClassAlone) {
    const Presentation chosen = read("[T_EtherPort]\nunit = {Speed} bit / second * 10^1\nlabel = port | {Speed}\n");
    RequestScope scope(*host.broker);
    const ClassDeclaration* ports = host.repository.find("root/ns", "T_Port");
    std::vector<const InstanceObject*> both = all(scope, "T_EtherPort");
    both.push_back(all(scope, "T_FibrePort").front());
    EXPECT_EQ(tableOf(both, ports, chosen, {}), "Class        System  Id  Speed\n"
                                                "T_EtherPort  s       e   100 Gbit/s\n"
                                                "T_FibrePort  s       a   16000000000\n"
                                                "2 instances\n");
    EXPECT_EQ(labelOf(*both.front(), chosen), "port 100 Gbit/s");
    EXPECT_THAT(listOf({both.front()}, chosen), testing::HasSubstr("\n  Speed: 10000000000 (100 Gbit/s)\n"));
}

/// One of a class that is not declared here, whose property Limits holds other instances.
const InstanceObject& holder(RequestScope& scope, const CMPIData& limits) {
    InstanceObject& instance = *scope.make().instance(*scope.make().path("root/ns", "T_Holder"));
    instance.setProperty("Name", *scope.make().value(CMPI_string, "h"));
    instance.setProperty("Limits", limits);
    return instance;
}

TEST_F(PresentationTest, AZeroThatTellsThatNobodyKnowsIsShownInWords) {
    const Presentation chosen = read("[T_EtherPort]\nzero = {Speed} speed unknown unless {Id} down, gone\n"
                                     "label = port | {Id} | {Speed}\ncolumns = Port {Id} | Speed {Speed}\n");
    RequestScope scope(*host.broker);
    const auto labelWith = [&](const char* id, const char* speed) {
        InstanceObject& port = *scope.make().instance(*scope.make().path("root/ns", "T_EtherPort"));
        port.setProperty("Id", *scope.make().value(CMPI_string, id));
        port.setProperty("Speed", *scope.make().value(CMPI_uint64, speed));
        return labelOf(port, chosen);
    };
    EXPECT_EQ(labelWith("up", "0"), "port up, speed unknown");
    EXPECT_EQ(labelWith("up", "10"), "port up, 10");
    EXPECT_EQ(labelWith("down", "0"), "port down, 0");
    EXPECT_EQ(labelWith("gone", "0"), "port gone, 0");
    EXPECT_EQ(labelWith("do", "0"), "port do, speed unknown");
}

TEST_F(PresentationTest, AnInstanceInAPropertyIsShownWithItsValues) {
    const Presentation chosen = read("[T_EtherPort]\nunit = {Speed} bit / second\n");
    RequestScope scope(*host.broker);
    const InstanceObject& inner = firstOf(scope, "T_EtherPort");
    const InstanceObject& instance = holder(scope, ObjectMaker::value(inner));
    EXPECT_EQ(tableOf({&instance}, nullptr, chosen, {}), "Name  Limits\n"
                                                         "h     T_EtherPort {System: s, Id: e, Speed: 10 Gbit/s}\n"
                                                         "1 instance\n");
    EXPECT_THAT(listOf({&instance}, chosen),
                testing::HasSubstr("Limits: T_EtherPort {System: s, Id: e, Speed: 10000000000 (10 Gbit/s)}\n"));
    const Json json = Json::parse(jsonOf(instance));
    EXPECT_EQ(
        json.at("properties").at("Limits").dump(),
        R"({"class":"T_EtherPort","properties":{"Caption":null,"System":"s","Id":"e","Speed":10000000000,"Mtu":null}})");
}

TEST_F(PresentationTest, AnInstanceInAnInstanceAndOneOfAnUnknownClassAreShownToo) {
    RequestScope scope(*host.broker);
    const InstanceObject& innermost = holder(scope, ObjectMaker::null(CMPI_instance));
    const InstanceObject& instance = holder(scope, ObjectMaker::value(holder(scope, ObjectMaker::value(innermost))));
    EXPECT_THAT(listOf({&instance}, {}),
                testing::HasSubstr("Limits: T_Holder {Name: h, Limits: T_Holder {Name: h}}\n"));
    EXPECT_EQ(Json::parse(jsonOf(instance)).at("properties").at("Limits").dump(),
              R"({"class":"T_Holder","properties":{"Name":"h","Limits":{"class":"T_Holder","properties":{"Name":"h",)"
              R"("Limits":null}}}})");
}

TEST_F(PresentationTest, WithoutAFileATableHasTheFirstColumnsThatFit) {
    RequestScope scope(*host.broker);
    const ClassDeclaration* ether = host.repository.find("root/ns", "T_EtherPort");
    EXPECT_EQ(tableOf(all(scope, "T_EtherPort"), ether, {}, {}), "System  Id  Speed\n"
                                                                 "s       e   10000000000\n"
                                                                 "1 instance\n");
}

TEST_F(PresentationTest, PlacesMakeTheTree) {
    const Presentation chosen = read("root = T_Box\n"
                                     "[T_FibrePort]\nbelow = T_Box through T_Link\n"
                                     "[T_EtherPort]\nbelow = T_Box through T_FibreLink, T_Link\n"
                                     "below = T_FibrePort where System begins with Id\n");
    EXPECT_EQ(chosen.tree.rootClass, "T_Box");
    ASSERT_EQ(chosen.tree.placements.size(), 3U);
    EXPECT_EQ(chosen.tree.placements[0].child, "T_FibrePort");
    EXPECT_EQ(chosen.tree.placements[0].parent, "T_Box");
    EXPECT_THAT(chosen.tree.placements[0].road, testing::ElementsAre("T_Link", ""));
    EXPECT_THAT(chosen.tree.placements[1].road, testing::ElementsAre("T_FibreLink", "T_Link"));
    EXPECT_THAT(chosen.tree.placements[2].road, testing::ElementsAre("", ""));
    EXPECT_EQ(chosen.tree.placements[2].childKey, "System");
    EXPECT_EQ(chosen.tree.placements[2].parentKey, "Id");
}

TEST_F(PresentationTest, AlarmingValuesMakeALineRed) {
    const Presentation chosen = read("alarming = down, 10000000000\n[T_EtherPort]\nlabel = port | {Id} | {Speed}\n");
    RequestScope scope(*host.broker);
    const ObjectTree tree{{{&firstOf(scope, "T_EtherPort"), {}}}, {}};
    EXPECT_EQ(textOf(tree, chosen, {0, true}), "\033[31mport e, 10000000000\033[0m\n");
    EXPECT_EQ(textOf(tree, chosen, {}), "port e, 10000000000\n");
}

struct BadLine {
    const char* line;
    const char* reason;
};

TEST_F(PresentationTest, ABadLineIsNamedWithItsPlace) {
    constexpr BadLine rows[] = {
        {"colour = red",
         "a line reads [CLASS], or begins with root =, alarming =, label =, below =, columns =, unit =, zero ="},
        {"port",
         "a line reads [CLASS], or begins with root =, alarming =, label =, below =, columns =, unit =, zero ="},
        {"[T_None]", "there is no class \"T_None\""},
        {"root = T_None", "there is no class \"T_None\""},
        {"label =", "a label begins with a word"},
        {"label = box | Id", "\"Id\" is not written TEXT {PROPERTY}"},
        {"label = box | {Id", "\"{Id\" is not written TEXT {PROPERTY}"},
        {"label = box | {Colour}", "class T_Box has no property \"Colour\""},
        {"unit = Id bit / second", "\"Id bit / second\" is not written {PROPERTY} UNIT"},
        {"unit = {Id bit / second", "\"{Id bit / second\" is not written {PROPERTY} UNIT"},
        {"unit = {Colour} bit / second", "class T_Box has no property \"Colour\""},
        {"zero = {Speed} none", "\"{Speed} none\" is not written {PROPERTY} WORDS unless {PROPERTY} VALUE, VALUE"},
        {"zero = {Speed} unless {Id} a",
         "\"{Speed} unless {Id} a\" is not written {PROPERTY} WORDS unless {PROPERTY} VALUE, VALUE"},
        {"zero = {Colour} none unless {Id} a", "class T_Box has no property \"Colour\""},
        {"unit = {Speed} knots", "\"knots\" is no unit that is known: bit / second, or a power of ten of it, such as "
                                 "bit / second * 10^6"},
        {"columns = Colour {Colour}", "class T_Box has no property \"Colour\""},
        {"columns = Id {Id or Colour}", "class T_Box has no property \"Colour\""},
        {"columns = Id {Id or }", "class T_Box has no property \"\""},
        {"below = T_Port", "\"T_Port\" is neither CLASS through ASSOCIATION nor CLASS where KEY begins with KEY"},
        {"below = T_None through T_Link", "there is no class \"T_None\""},
        {"below = T_Port through T_Counter", "T_Counter is no association"},
        {"below = T_EtherPort through T_Link, T_Link, T_Link", "a way has one association or two"},
        {"below = T_Counter through T_Link", "T_Link has no reference to T_Counter"},
        {"below = T_Port where Id begins with Colour", "class T_Port has no property \"Colour\""},
    };
    for (const BadLine& row : rows) {
        SCOPED_TRACE(row.line);
        const TemporaryFile file(std::string("# first\n[T_Box]\n") + row.line + "\n");
        try {
            readPresentation(file.path, host.repository, "root/ns");
            ADD_FAILURE() << "it was taken";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), file.path.string() + ":3: " + row.reason);
        }
    }
}

TEST_F(PresentationTest, RepeatedLinesAndUnknownClassesAreRefused) {
    EXPECT_THROW(read("[T_Box]\nlabel = box\n[T_Link]\n[T_Box]\nlabel = case\n"), std::runtime_error);
    EXPECT_THROW(read("[T_Box]\ncolumns = {Id}\ncolumns = {Id}\n"), std::runtime_error);
    EXPECT_THROW(read("[T_Box]\nunit = {Speed} bit / second\nunit = {speed} bit / second\n"), std::runtime_error);
    EXPECT_THROW(read("[T_Box]\nzero = {Speed} none unless {Id} a\nzero = {Speed} no unless {Id} b\n"),
                 std::runtime_error);
    EXPECT_THROW(read("label = box\n"), std::runtime_error);
    EXPECT_THROW(readPresentation("/nonexistent/file", host.repository, "root/ns"), std::runtime_error);
}

} // namespace
} // namespace cimhost::cli
