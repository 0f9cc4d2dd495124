// Enumerations that a client reads in several answers (DSP0200, pulled enumerations), as CIM-XML.
#include "fake_provider.h"
#include "refused_call.h"

#include "tests/becomes_true.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace cimhost {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;
using testing_support::className;
using testing_support::error;
using testing_support::expectRefusal;
using testing_support::FakeHost;
using testing_support::FakeObject;
using testing_support::instanceName;
using testing_support::nameOfCall;
using testing_support::parameter;
using testing_support::RefusedCall;

std::string value(const std::string& name, const std::string& text) {
    return parameter(name, "<VALUE>" + text + "</VALUE>");
}

std::string most(std::size_t count) { return value("MaxObjectCount", std::to_string(count)); }

std::string contextParameter(const std::string& context) { return value("EnumerationContext", context); }

/// Every outermost element of that name, in order, tags included.
std::vector<std::string> elements(std::string_view text, const std::string& name) {
    std::vector<std::string> found;
    const std::string close = "</" + name + ">";
    std::size_t begin = 0;
    int depth = 0;
    for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
        const std::string_view tag = text.substr(at, text.find('>', at) + 1 - at);
        const bool isOpen = tag == "<" + name + ">" || tag.starts_with("<" + name + " ");
        if (isOpen && depth++ == 0) begin = at;
        if (tag == close && --depth == 0) found.emplace_back(text.substr(begin, at + close.size() - begin));
    }
    return found;
}

/// The text of an output parameter; "none" if it is missing.
std::string output(const std::string& answer, const std::string& name, const std::string& type) {
    const std::string open = "<PARAMVALUE NAME=\"" + name + "\" PARAMTYPE=\"" + type + "\"><VALUE>";
    const std::size_t at = answer.find(open);
    if (at == std::string::npos) return "none";
    return answer.substr(at + open.size(), answer.find('<', at + open.size()) - at - open.size());
}

std::string contextOf(const std::string& answer) { return output(answer, "EnumerationContext", "string"); }
bool isEnd(const std::string& answer) { return output(answer, "EndOfSequence", "boolean") == "TRUE"; }

// An Open operation, what continues it, and the operation that answers the same at once.
struct Pair {
    std::string open;
    std::string pull;
    std::string plain;
    std::string source;      ///< of the Open operation
    std::string plainSource; ///< the same parameters by their other names
    std::string element;     ///< in which an object stands in both answers
    std::string wrapper;     ///< in which it stands in a pulled answer
};

std::vector<Pair> pairs() {
    const std::string port = instanceName("T_FibrePort", "System=s,Id=a");
    const std::string from = parameter("InstanceName", port);
    const std::string plainFrom = parameter("ObjectName", port);
    const auto instances = [](std::string open, std::string plain, std::string source, std::string plainSource) {
        return Pair{std::move(open),         "PullInstancesWithPath", std::move(plain),
                    std::move(source),       std::move(plainSource),  "INSTANCE",
                    "VALUE.INSTANCEWITHPATH"};
    };
    const auto paths = [](std::string open, std::string plain, std::string source, std::string plainSource) {
        return Pair{std::move(open),        "PullInstancePaths", std::move(plain), std::move(source),
                    std::move(plainSource), "INSTANCENAME",      "INSTANCEPATH"};
    };
    return {
        instances("OpenEnumerateInstances", "EnumerateInstances", className("T_Port"), className("T_Port")),
        paths("OpenEnumerateInstancePaths", "EnumerateInstanceNames", className("T_Port"), className("T_Port")),
        instances("OpenAssociatorInstances", "Associators", from, plainFrom),
        paths("OpenAssociatorInstancePaths", "AssociatorNames", from, plainFrom),
        instances("OpenReferenceInstances", "References", from, plainFrom),
        paths("OpenReferenceInstancePaths", "ReferenceNames", from, plainFrom),
    };
}

class PulledEnumeration : public testing::Test {
protected:
    PulledEnumeration() {
        for (const char* id : {"c", "d", "f", "g"}) {
            host.provider.objects.push_back({"T_EtherPort", id, 1'000});
            host.provider.links.push_back({"T_FibreLink", {"T_FibrePort", "a"}, {"T_EtherPort", id}});
        }
    }

    void useOptions(const PullOptions& options) {
        host.dispatcher =
            std::make_unique<Dispatcher>(*host.operations, *host.broker, nullptr, longestAnswerDocument, options);
    }

    /// Opens, and pulls until the end; all answers.
    std::vector<std::string> readAll(const Pair& pair, const std::string& more, std::size_t first, std::size_t then) {
        std::vector<std::string> answers = {host.call(pair.open, pair.source + more + most(first))};
        while (!isEnd(answers.back()) && answers.size() < 100) {
            answers.push_back(host.call(pair.pull, contextParameter(contextOf(answers.back())) + most(then)));
        }
        return answers;
    }

    std::string openPorts(const std::string& parameters = "") {
        return host.call("OpenEnumerateInstancePaths", className("T_Port") + parameters);
    }
    std::string pullPaths(const std::string& context, std::size_t count = 1) {
        return host.call("PullInstancePaths", contextParameter(context) + most(count));
    }
    std::string close(const std::string& context) { return host.call("CloseEnumeration", contextParameter(context)); }
    [[nodiscard]] std::size_t openCount() const { return host.dispatcher->pulls().figures().sessions; }

    FakeHost host;
};

TEST_F(PulledEnumeration, DeliversWhatThePlainOperationDoesInTheSameOrder) {
    const std::string list = parameter("PropertyList", "<VALUE.ARRAY><VALUE>Speed</VALUE><VALUE>Cost</VALUE>"
                                                       "<VALUE>Id</VALUE></VALUE.ARRAY>");
    for (const Pair& pair : pairs()) {
        const bool hasProperties = pair.element == "INSTANCE";
        for (const std::string& more : hasProperties
                                           ? std::vector<std::string>{"", list, value("IncludeClassOrigin", "true")}
                                           : std::vector<std::string>{""}) {
            const std::vector<std::string> expected =
                elements(host.call(pair.plain, pair.plainSource + more), pair.element);
            ASSERT_GE(expected.size(), 5U) << pair.plain;
            for (const auto& [first, then] : {std::pair{0, 1}, {1, 2}, {2, 100}, {100, 1}, {3, 3}}) {
                std::vector<std::string> found;
                for (const std::string& answer : readAll(pair, more, std::size_t(first), std::size_t(then))) {
                    const std::vector<std::string> wrapped = elements(answer, pair.wrapper);
                    EXPECT_LE(wrapped.size(), std::size_t(std::max(first, then)));
                    for (const std::string& element : wrapped)
                        found.push_back(elements(element, pair.element).at(0));
                }
                EXPECT_THAT(found, ElementsAreArray(expected)) << pair.open << more << " " << first << " " << then;
            }
        }
    }
    EXPECT_EQ(openCount(), 0U);
    EXPECT_EQ(host.dispatcher->pulls().figures().bytes, 0U);
}

TEST_F(PulledEnumeration, AsksTheProviderWhenItIsOpenedAndNeverAgain) {
    std::string answer = openPorts(most(0));
    const std::size_t asked = host.provider.calls.size();
    EXPECT_EQ(asked, 2U); // for each served class once
    host.provider.objects.clear();
    std::size_t count = 0;
    while (!isEnd(answer)) {
        answer = pullPaths(contextOf(answer), 2);
        count += elements(answer, "INSTANCEPATH").size();
    }
    EXPECT_EQ(count, 7U);
    EXPECT_EQ(host.provider.calls.size(), asked);
}

TEST_F(PulledEnumeration, CarriesPathsWithHostAndNamespace) {
    const std::string place = "<INSTANCEPATH><NAMESPACEPATH><HOST>";
    const std::string nameSpace =
        "</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH>"
        "</NAMESPACEPATH><INSTANCENAME CLASSNAME=\"T_FibrePort\">";
    const std::string path = openPorts(most(1));
    EXPECT_THAT(path, StartsWith("<IRETURNVALUE>" + place));
    EXPECT_THAT(path, HasSubstr(nameSpace));
    const std::string instance = host.call("OpenEnumerateInstances", className("T_Port") + most(1));
    EXPECT_THAT(instance, StartsWith("<IRETURNVALUE><VALUE.INSTANCEWITHPATH>" + place));
    EXPECT_THAT(instance, HasSubstr("</INSTANCENAME></INSTANCEPATH><INSTANCE CLASSNAME=\"T_FibrePort\">"));
}

TEST_F(PulledEnumeration, EndsAtOnceWhereEverythingFits) {
    const std::string end = "<PARAMVALUE NAME=\"EnumerationContext\" PARAMTYPE=\"string\"><VALUE></VALUE></PARAMVALUE>"
                            "<PARAMVALUE NAME=\"EndOfSequence\" PARAMTYPE=\"boolean\"><VALUE>TRUE</VALUE></PARAMVALUE>";
    EXPECT_THAT(openPorts(most(7)), HasSubstr("</IRETURNVALUE>" + end));
    EXPECT_EQ(host.call("OpenEnumerateInstances", className("T_Box")), "<IRETURNVALUE></IRETURNVALUE>" + end);
    EXPECT_EQ(openCount(), 0U);
}

TEST_F(PulledEnumeration, WithoutACountOpensWithNoElement) {
    for (const std::string& parameters :
         {std::string(), most(0), std::string("<IPARAMVALUE NAME=\"MaxObjectCount\"/>")}) {
        const std::string answer = openPorts(parameters);
        EXPECT_THAT(answer, StartsWith("<IRETURNVALUE></IRETURNVALUE><PARAMVALUE"));
        EXPECT_FALSE(isEnd(answer));
        EXPECT_THAT(contextOf(answer), MatchesRegex("[0-9a-f]{32}"));
    }
}

TEST_F(PulledEnumeration, APullOfNothingKeepsItOpen) {
    std::string answer = openPorts(most(2));
    for (int time = 0; time < 3; ++time) {
        answer = pullPaths(contextOf(answer), 0);
        EXPECT_THAT(answer, StartsWith("<IRETURNVALUE></IRETURNVALUE><PARAMVALUE"));
        EXPECT_FALSE(isEnd(answer));
    }
    EXPECT_THAT(elements(pullPaths(contextOf(answer), 100), "INSTANCEPATH"), SizeIs(5));
}

TEST_F(PulledEnumeration, EndsWhenTooManyPullsInARowAskForNothing) {
    PullOptions options;
    options.emptyPulls = 3;
    useOptions(options);
    std::string answer = openPorts();
    for (const std::size_t count : {0U, 0U, 1U, 0U, 0U, 0U})
        answer = pullPaths(contextOf(answer), count);
    const std::string context = contextOf(answer);
    EXPECT_THAT(pullPaths(context, 0), StartsWith(error(27)));
    EXPECT_THAT(pullPaths(context), StartsWith(error(21)));
    EXPECT_EQ(openCount(), 0U);
}

TEST_F(PulledEnumeration, IsClosedBeforeItsEnd) {
    const std::string context = contextOf(pullPaths(contextOf(openPorts())));
    EXPECT_EQ(close(context), "");
    EXPECT_EQ(openCount(), 0U);
    EXPECT_THAT(pullPaths(context), StartsWith(error(21)));
    EXPECT_THAT(close(context), StartsWith(error(21)));
}

TEST_F(PulledEnumeration, CannotBeReadBeyondItsEnd) {
    const std::string context = contextOf(openPorts());
    EXPECT_TRUE(isEnd(pullPaths(context, 100)));
    EXPECT_THAT(pullPaths(context), StartsWith(error(21)));
    EXPECT_THAT(close(context), StartsWith(error(21)));
    EXPECT_THAT(pullPaths(""), StartsWith(error(21)));
}

TEST_F(PulledEnumeration, EndsWithTheServer) {
    const std::string context = contextOf(openPorts());
    useOptions({});
    EXPECT_THAT(pullPaths(context), StartsWith(error(21)));
}

TEST_F(PulledEnumeration, EachAnswerHasAContextOfItsOwnThatIsGoodOnce) {
    const std::string first = contextOf(openPorts());
    const std::string second = contextOf(pullPaths(first));
    EXPECT_NE(first, second);
    EXPECT_THAT(pullPaths(first), StartsWith(error(21)));
    EXPECT_THAT(close(first), StartsWith(error(21)));
    EXPECT_THAT(elements(pullPaths(second, 100), "INSTANCEPATH"), SizeIs(6));
}

TEST_F(PulledEnumeration, OfPullsAtTheSameMomentOneIsAnswered) {
    for (int round = 0; round < 50; ++round) {
        const std::string context = contextOf(openPorts());
        std::atomic<int> answered = 0;
        std::atomic<int> refused = 0;
        std::array<std::thread, 4> clients;
        for (std::thread& client : clients) {
            client = std::thread([&] {
                const std::string answer = pullPaths(context);
                if (elements(answer, "INSTANCEPATH").size() == 1) ++answered;
                if (answer.starts_with(error(21))) ++refused;
            });
        }
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(answered, 1);
        EXPECT_EQ(refused, 3);
    }
}

TEST_F(PulledEnumeration, BelongsToOneUserOneNamespaceAndOneKindOfPull) {
    const std::string context = contextOf(openPorts());
    const std::string unknown = pullPaths("0123456789abcdef0123456789abcdef");
    EXPECT_THAT(unknown, StartsWith(error(21)));
    EXPECT_EQ(host.call("PullInstancePaths", contextParameter(context) + most(1), "root/io"), unknown);
    EXPECT_EQ(host.call("CloseEnumeration", contextParameter(context), "root/io"), unknown);
    EXPECT_EQ(host.call("PullInstancesWithPath", contextParameter(context) + most(1)), unknown);
    for (const char* other : {"", "berta"}) {
        host.user = other;
        EXPECT_EQ(pullPaths(context), unknown);
        EXPECT_EQ(close(context), unknown);
    }
    host.user = "anna";
    EXPECT_THAT(elements(pullPaths(context, 100), "INSTANCEPATH"), SizeIs(7));
}

TEST_F(PulledEnumeration, IsFoundUnderEachNameOfItsNamespace) {
    host.repository.addAlias("interop", "root/ns");
    const std::string context = contextOf(openPorts());
    const std::string answer = host.call("PullInstancePaths", contextParameter(context) + most(1), "interop");
    EXPECT_THAT(elements(answer, "INSTANCEPATH"), SizeIs(1));
}

TEST_F(PulledEnumeration, HasAContextThatCannotBeGuessed) {
    std::set<std::string> contexts;
    for (int count = 0; count < 500; ++count)
        contexts.insert(contextOf(openPorts()));
    EXPECT_THAT(contexts, SizeIs(500));
    // Each digit stands at each place: neither a counter nor a clock looks like that.
    for (std::size_t place = 0; place < 32; ++place) {
        std::set<char> digits;
        for (const std::string& context : contexts)
            digits.insert(context.at(place));
        EXPECT_THAT(digits, SizeIs(16)) << place;
    }
}

TEST_F(PulledEnumeration, GarbageIsNoContext) {
    const std::string context = contextOf(openPorts());
    for (const std::string& garbage : {std::string("0"), std::string(32, '0'), std::string(100'000, 'f'), context + "0",
                                       context.substr(1), " " + context, std::string("\xC3\xA4")}) {
        EXPECT_THAT(pullPaths(garbage), StartsWith(error(21)));
        EXPECT_THAT(close(garbage), StartsWith(error(21)));
    }
    EXPECT_EQ(openCount(), 1U);
}

TEST_F(PulledEnumeration, EndsAfterItsTimeout) {
    const std::string standard = contextOf(openPorts());
    const std::size_t bytes = host.dispatcher->pulls().figures().bytes;
    const std::string other = contextOf(openPorts(value("OperationTimeout", "300")));
    const auto begun = std::chrono::steady_clock::now();
    const std::string context = contextOf(openPorts(value("OperationTimeout", "1")));
    EXPECT_TRUE(tests::becomesTrue([&] { return openCount() <= 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 1s);
    EXPECT_EQ(openCount(), 2U);
    EXPECT_EQ(host.dispatcher->pulls().figures().bytes, 2 * bytes);
    EXPECT_THAT(pullPaths(context), StartsWith(error(21)));
    EXPECT_THAT(elements(pullPaths(other), "INSTANCEPATH"), SizeIs(1));
    EXPECT_THAT(elements(pullPaths(standard), "INSTANCEPATH"), SizeIs(1));
}

TEST_F(PulledEnumeration, ATimeoutBeginsAnewWithEachPull) {
    const auto ahead = std::make_shared<std::atomic<std::chrono::seconds>>(0s);
    PullOptions options;
    options.now = [ahead] { return std::chrono::steady_clock::now() + ahead->load(); };
    useOptions(options);
    std::string answer = openPorts(value("OperationTimeout", "300"));
    for (int time = 0; time < 5; ++time) {
        *ahead = ahead->load() + 200s;
        answer = pullPaths(contextOf(answer), 0);
        ASSERT_FALSE(isEnd(answer));
    }
    *ahead = ahead->load() + 300s;
    EXPECT_THAT(pullPaths(contextOf(answer), 0), StartsWith(error(21)));
    EXPECT_EQ(openCount(), 0U);
}

TEST_F(PulledEnumeration, IsLimitedInNumberForOneUserAndForAll) {
    PullOptions options;
    options.sessions = 5;
    options.sessionsOfOne = 3;
    useOptions(options);
    std::vector<std::string> contexts;
    for (int count = 0; count < 3; ++count)
        contexts.push_back(contextOf(openPorts()));
    EXPECT_THAT(openPorts(), StartsWith(error(27)));
    EXPECT_TRUE(isEnd(openPorts(most(100)))); // what fits into one answer needs no room
    host.user = "berta";
    EXPECT_FALSE(isEnd(openPorts()));
    EXPECT_FALSE(isEnd(openPorts()));
    EXPECT_THAT(openPorts(), AllOf(StartsWith(error(27)), HasSubstr("as may be, 5")));
    host.user = "anna";
    EXPECT_EQ(close(contexts.back()), "");
    EXPECT_FALSE(isEnd(openPorts()));
    EXPECT_EQ(openCount(), 5U);
}

TEST_F(PulledEnumeration, IsLimitedInTheMemoryOfAll) {
    PullOptions options;
    options.bytes = std::size_t{5} << 20;
    options.bytesOfOne = std::size_t{3} << 20;
    useOptions(options);
    for (FakeObject& object : host.provider.objects)
        object.id.append(std::size_t{100} << 10, 'x'); // about 0.7 MiB for all paths
    std::vector<std::string> contexts;
    for (int count = 0; count < 4; ++count)
        contexts.push_back(contextOf(openPorts()));
    const std::size_t held = host.dispatcher->pulls().figures().bytes;
    EXPECT_GT(held, std::size_t{4} * 7 * 100 << 10);
    EXPECT_LT(held, std::size_t{3} << 20);
    const std::string refused = openPorts();
    EXPECT_THAT(refused, AllOf(StartsWith(error(27)), HasSubstr("one user's may, 3 MiB")));
    EXPECT_EQ(host.dispatcher->pulls().figures().bytes, held);
    host.user = "berta";
    for (int count = 0; count < 3; ++count)
        EXPECT_FALSE(isEnd(openPorts()));
    EXPECT_THAT(openPorts(), AllOf(StartsWith(error(27)), HasSubstr("as they may, 5 MiB")));
    host.user = "anna";
    EXPECT_EQ(close(contexts.front()), "");
    EXPECT_FALSE(isEnd(openPorts()));
    EXPECT_EQ(openCount(), 7U);
}

TEST_F(PulledEnumeration, FreesMemoryAsItIsRead) {
    for (FakeObject& object : host.provider.objects)
        object.id.append(std::size_t{600} << 10, 'x');
    const std::vector<std::string> expected =
        elements(host.call("EnumerateInstanceNames", className("T_Port")), "INSTANCENAME");
    std::string answer = openPorts();
    std::size_t before = host.dispatcher->pulls().figures().bytes;
    EXPECT_GT(before, std::size_t{4} << 20);
    std::vector<std::string> found;
    for (const std::size_t count : {2U, 2U, 2U, 1U}) {
        answer = pullPaths(contextOf(answer), count);
        for (const std::string& path : elements(answer, "INSTANCEPATH"))
            found.push_back(elements(path, "INSTANCENAME").at(0));
        const std::size_t after = host.dispatcher->pulls().figures().bytes;
        EXPECT_LT(after, before - (std::size_t{500} << 10));
        before = after;
    }
    EXPECT_TRUE(isEnd(answer));
    EXPECT_EQ(before, 0U);
    EXPECT_TRUE(found == expected); // too long to be printed
}

TEST_F(PulledEnumeration, AnAnswerEndsEarlyWhereItWouldBecomeTooLong) {
    PullOptions options;
    options.bytesOfAnswer = std::size_t{1} << 20;
    useOptions(options);
    for (FakeObject& object : host.provider.objects)
        object.id.append(std::size_t{400} << 10, 'x');
    std::vector<std::size_t> counts;
    for (const std::string& answer : readAll(pairs()[1], "", 100, 100))
        counts.push_back(elements(answer, "INSTANCEPATH").size());
    EXPECT_THAT(counts, testing::ElementsAre(3, 3, 1));
}

TEST_F(PulledEnumeration, AnErrorOfTheProviderOpensNothing) {
    for (const Pair& pair : pairs()) {
        host.provider.failure = CimError{CMPI_RC_ERR_ACCESS_DENIED, "not you"};
        EXPECT_THAT(host.call(pair.open, pair.source), AllOf(StartsWith(error(2)), HasSubstr("not you"))) << pair.open;
    }
    EXPECT_EQ(openCount(), 0U);
}

TEST_F(PulledEnumeration, WithoutDeepInheritanceASubclassShowsWhatTheNamedClassHas) {
    const std::string shallow = className("T_Port") + value("DeepInheritance", "false") + most(100);
    const std::string answer = host.call("OpenEnumerateInstances", shallow);
    EXPECT_THAT(host.provider.calls.front(), StartsWith("enumerateInstances T_FibrePort [Caption,System,Id,Speed]"));
    EXPECT_THAT(answer, HasSubstr("NAME=\"Speed\""));
    EXPECT_THAT(answer, testing::Not(HasSubstr("NAME=\"Mtu\"")));
}

TEST_F(PulledEnumeration, HandsOnOnlyFlagsThatTheOperationHas) {
    host.call("OpenEnumerateInstances", className("T_EtherPort") + most(1));
    EXPECT_THAT(host.provider.calls.back(), HasSubstr("flags=2 "));
    host.call("OpenReferenceInstances", pairs()[4].source + value("IncludeClassOrigin", "TRUE"));
    EXPECT_THAT(host.provider.calls.back(), HasSubstr("flags=8 "));
}

TEST_F(PulledEnumeration, PullsWaitForNoProvider) {
    const auto needs = [&](const std::string& method) {
        cimxml::Request request;
        request.nameSpace = "root/ns";
        request.methodName = method;
        cimxml::ObjectPath path;
        path.className = "T_FibrePort";
        request.parameters.push_back({"ClassName", path});
        return host.dispatcher->needsProvider(request, {});
    };
    EXPECT_TRUE(needs("OpenEnumerateInstances"));
    EXPECT_TRUE(needs("OpenAssociatorInstancePaths"));
    for (const char* method : {"PullInstancesWithPath", "PullInstancePaths", "CloseEnumeration", "EnumerationCount"})
        EXPECT_FALSE(needs(method)) << method;
}

std::vector<RefusedCall> refusedCalls() {
    const std::string ports = className("T_Port");
    const std::string port = parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a"));
    const std::string context = contextParameter("0");
    const std::string open = "OpenEnumerateInstances";
    const std::string pull = "PullInstancesWithPath";
    const std::string bad = value("OperationTimeout", "0") + value("ContinueOnError", "TRUE");
    return {
        {"EnumerationCount", "EnumerationCount", context, 7},
        {"QueryInstances", "OpenQueryInstances", value("FilterQuery", "SELECT * FROM T_Port"), 7},
        {"PullInstances", "PullInstances", context + most(1), 7},
        {"UnknownNamespace", open, ports, 3, "root/other"},
        {"UnknownNamespaceFirst", open, className("T_None") + bad, 3, "root/other"},
        {"NamespaceOfPull", pull, context + most(1), 3, "root/other"},
        {"NamespaceOfClose", "CloseEnumeration", context, 3, "root/other"},
        {"UnknownClass", open, className("T_None"), 5},
        {"UnknownClassOfPaths", "OpenEnumerateInstancePaths", className("T_None"), 5},
        {"UnknownClassOfSource", "OpenAssociatorInstances", parameter("InstanceName", instanceName("T_None", "A=b")),
         5},
        {"UnknownAssociation", "OpenReferenceInstances",
         port + parameter("ResultClass", "<CLASSNAME NAME=\"T_None\"/>"), 4},
        {"NoClassName", open, "", 4},
        {"NoSource", "OpenReferenceInstancePaths", "", 4},
        {"ClassForInstance", "OpenAssociatorInstancePaths", parameter("InstanceName", "<CLASSNAME NAME=\"T_Port\"/>"),
         4},
        {"ObjectNameOfPlainOperation", "OpenAssociatorInstances",
         parameter("ObjectName", instanceName("T_FibrePort", "System=s,Id=a")), 4},
        {"LocalOnly", open, ports + value("LocalOnly", "FALSE"), 4},
        {"ClassOriginOfPaths", "OpenEnumerateInstancePaths", ports + value("IncludeClassOrigin", "TRUE"), 4},
        {"TimeoutOfNever", open, ports + value("OperationTimeout", "0"), 22},
        {"TimeoutTooLong", open, ports + value("OperationTimeout", "301"), 22},
        {"TimeoutAsLongAsCanBe", open, ports + value("OperationTimeout", "4294967295"), 22},
        {"TimeoutBeyondItsType", open, ports + value("OperationTimeout", "4294967296"), 4},
        {"TimeoutNegative", open, ports + value("OperationTimeout", "-1"), 4},
        {"TimeoutNoNumber", open, ports + value("OperationTimeout", "soon"), 4},
        {"TimeoutArray", open, ports + parameter("OperationTimeout", "<VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY>"), 4},
        {"TimeoutBeforeContinuation", open, ports + bad, 22},
        {"ContinueOnError", open, ports + value("ContinueOnError", "TRUE"), 26},
        {"ContinueOnErrorOfAssociators", "OpenAssociatorInstances", port + value("ContinueOnError", "true"), 26},
        {"ContinuationBeforeClass", open, className("T_None") + value("ContinueOnError", "TRUE"), 26},
        {"FilterQuery", open, ports + value("FilterQueryLanguage", "DMTF:FQL") + value("FilterQuery", "Speed = 1"), 25},
        {"FilterQueryOfReferences", "OpenReferenceInstances", port + value("FilterQuery", "Cost = 1"), 25},
        {"FilterLanguageAlone", "OpenEnumerateInstancePaths", ports + value("FilterQueryLanguage", "DMTF:FQL"), 25},
        {"ClassBeforeFilter", open, className("T_None") + value("FilterQuery", "Speed = 1"), 5},
        {"CountNegative", open, ports + value("MaxObjectCount", "-1"), 4},
        {"CountBeyondItsType", open, ports + value("MaxObjectCount", "4294967296"), 4},
        {"CountNoNumber", pull, context + value("MaxObjectCount", "all"), 4},
        {"PullWithoutCount", pull, context, 4},
        {"PullWithoutContext", pull, most(1), 4},
        {"PullWithContextNull", pull, "<IPARAMVALUE NAME=\"EnumerationContext\"/>" + most(1), 4},
        {"CloseWithoutContext", "CloseEnumeration", "", 4},
        {"PullOfNoContext", pull, context + most(1), 21},
        {"PullPathsOfNoContext", "PullInstancePaths", context + most(1), 21},
        {"CloseOfNoContext", "CloseEnumeration", context, 21},
    };
}

class PullRefusal : public PulledEnumeration, public testing::WithParamInterface<RefusedCall> {};

TEST_P(PullRefusal, HasItsStatusAndSaysWhy) {
    expectRefusal(host, GetParam());
    EXPECT_EQ(openCount(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Calls, PullRefusal, testing::ValuesIn(refusedCalls()), nameOfCall);

TEST_F(PulledEnumeration, TakesAnEmptyFilterForNone) {
    EXPECT_FALSE(isEnd(openPorts(value("FilterQueryLanguage", "") + value("FilterQuery", ""))));
}

} // namespace
} // namespace cimhost
