// What each association writes to the log: on its way in and out, and when a call of the server's tables fails.
#include "expected_texts.h"
#include "fleets.h"
#include "request_hooks.h"
#include "world_test.h"

#include "log/log.h"

#include <algorithm>

namespace {

using Messages = std::vector<std::string>;

class LogTextsTest : public WorldTest {
protected:
    LogTextsTest() {
        serve(manyCards());
        learn(manyCards());
    }

    /// What associations wrote, without the lines that only one of them has.
    Messages takeFamilyMessages() {
        Messages own;
        for (const std::string& message : takeMessages()) {
            const bool isOwn = message.find("Assoc") != std::string::npos &&
                               message.find("Merolt_CNA_Provider") == std::string::npos &&
                               message.find(": Comparing ") == std::string::npos &&
                               message.find(":findMatchedRole1InstancesOrReferences()") == std::string::npos;
            if (isOwn) own.push_back(message);
        }
        return own;
    }

    void expectMessages(const std::vector<std::string>& slots, Sink sink = Sink::debug) {
        Messages wanted;
        for (const std::string& slot : slots) {
            for (const std::string& text : textAt(family, slot, sink))
                wanted.push_back(text);
        }
        EXPECT_EQ(takeFamilyMessages(), wanted);
    }

    Path pairPath() {
        const auto [left, right] = pairsOf(family, world).at(0);
        return associationPath(family, left.path, right.path);
    }

    /// The errors on one log while a request is made; the log that is not asked for is off.
    Messages errorsOn(Sink sink, const std::function<void()>& request) {
        merolt::gDebugLog = sink == Sink::debug;
        merolt::gErrorLog = sink == Sink::error;
        takeMessages();
        request();
        Messages errors;
        for (const std::string& message : takeMessages()) {
            const bool isError = message.find("Error") != std::string::npos && message.find("Merolt_") != 0;
            if (isError) errors.push_back(message);
        }
        return errors;
    }

    /// A request must leave exactly that slot's text, on its own log and on no other.
    void expectErrors(const std::vector<std::string>& slots, unsigned number, const std::function<void()>& request) {
        for (const Sink sink : {Sink::debug, Sink::error}) {
            SCOPED_TRACE(sink == Sink::debug ? "debug log" : "error log");
            Messages wanted;
            for (const std::string& slot : slots) {
                for (const std::string& text : textAt(family, slot, sink, number))
                    wanted.push_back(text);
            }
            EXPECT_EQ(errorsOn(sink, request), wanted);
        }
    }

    /// Lets the first, the second, ... call of a kind fail in turn, until no more calls of that kind are made.
    /// @return how many failed
    unsigned failEachCall(unsigned RequestHooks::*failing, unsigned most,
                          const std::function<void(unsigned)>& request) {
        for (unsigned call = 1; call <= most; ++call) {
            RequestHooks hooks(*broker);
            hooks.associationClass = family.associationClass;
            hooks.*failing = call;
            requestHooks = &hooks;
            request(call);
            requestHooks = nullptr;
            if (!hooks.hasRefused()) return call - 1;
        }
        return most;
    }

    void expectReadErrors(unsigned RequestHooks::*failing, const std::vector<std::string>& slots,
                          const std::function<Reply()>& request) {
        expectErrors(slots, RequestHooks::refusal, [&] {
            failEachCall(failing, 10, [&](unsigned) {
                const Reply reply = request();
                EXPECT_EQ(reply.doneCount, 1U);
            });
        });
    }

    bool searchesByTable() const {
        return family.isFiltered ||
               family.associationClass == "Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService";
    }
};

TEST_F(LogTextsTest, EnumerationsAndGetInstanceTellTheirWayInAndOut) {
    logFromHere();
    forEachFamily([&] {
        instanceNames(classPath(family.associationClass));
        expectMessages({"names.open", "names.close"});
        instances(classPath(family.associationClass));
        expectMessages({"instances.open", "instances.close"});
        const Path pair = pairPath();
        instance(pair);
        expectMessages({"get.open", "get.close"});
    });
}

TEST_F(LogTextsTest, SearchesTellTheirWayIn) {
    logFromHere();
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            for (const Operation operation : allOperations) {
                SCOPED_TRACE(nameOf(operation) + (" from " + source.text()));
                takeMessages();
                ask(operation, source, ofFamily());
                expectMessages({nameOf(operation), sourceIsLeft ? "right.open" : "left.open"});
            }
        }
    });
}

TEST_F(LogTextsTest, NothingIsWrittenWithBothLogsOff) {
    takeMessages();
    forEachFamily([&] {
        instanceNames(classPath(family.associationClass));
        instances(classPath(family.associationClass));
        instance(pairPath());
        instance(pairPath().without(family.role1));
        for (const Operation operation : allOperations)
            ask(operation, sources(true).at(0).path, ofFamily());
        EXPECT_EQ(takeMessages(), Messages{});
    });
}

TEST_F(LogTextsTest, UnreadableNamespaceIsToldAndEndsTheRequest) {
    const auto failing = &RequestHooks::failingNameSpaceRead;
    forEachFamily([&] {
        expectReadErrors(failing, {"names.namespace"}, [&] {
            const Reply reply = instanceNames(classPath(family.associationClass));
            EXPECT_EQ(reply.rc, CMPI_RC_OK);
            return reply;
        });
        expectReadErrors(failing, {"instances.namespace"},
                         [&] { return instances(classPath(family.associationClass)); });
        const Path pair = pairPath();
        expectReadErrors(failing, {"get.namespace"}, [&] { return instance(pair); });
        for (const bool sourceIsLeft : {true, false}) {
            SCOPED_TRACE(sourceIsLeft ? "from the left" : "from the right");
            const Path source = fruitfulSource(sourceIsLeft).value();
            expectReadErrors(failing, {sourceIsLeft ? "right.namespace" : "left.namespace"},
                             [&] { return ask(Operation::associatorNames, source, ofFamily()); });
        }
    });
}

TEST_F(LogTextsTest, UnreadableClassNameIsToldAndEndsTheRequest) {
    const auto failing = &RequestHooks::failingClassNameRead;
    forEachFamily([&] {
        const Path pair = pairPath();
        expectReadErrors(failing, {"get.classname"}, [&] { return instance(pair); });
    });
}

TEST_F(LogTextsTest, UnreadableClassNameOfASourceIsToldByTheConformancesOnly) {
    forEachFamily([&] {
        const bool isConformance = family.role1 == "ConformantStandard";
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            for (const Operation operation : {Operation::associators, Operation::referenceNames}) {
                SCOPED_TRACE(nameOf(operation) + (" from " + source.className));
                // Asked for the class of the source, and once more by the search from an element.
                const std::vector<std::string> slots = !isConformance ? Messages{}
                                                       : sourceIsLeft ? Messages{"left.classname"}
                                                                      : Messages{"left.classname", "left.classname"};
                expectReadErrors(&RequestHooks::failingClassNameRead, slots,
                                 [&] { return ask(operation, source, ofFamily()); });
            }
        }
    });
}

TEST_F(LogTextsTest, KeysOfAnAssociationThatAreMissingOrNoReferencesAreTold) {
    constexpr unsigned notFound = CMPI_RC_ERR_NOT_FOUND;
    forEachFamily([&] {
        const Path pair = pairPath();
        for (const std::string number : {"1", "2"}) {
            const std::string role = number == "1" ? family.role1 : family.role2;
            SCOPED_TRACE(role);
            expectErrors({"get.key" + number}, notFound, [&] { instance(pair.without(role)); });
            expectErrors({"get.type" + number}, CMPI_string, [&] { instance(pair.with(role, "a text")); });
        }
    });
}

TEST_F(LogTextsTest, FirstMissingKeyOfAnAssociationEndsGetInstance) {
    forEachFamily([&] {
        const Path pair = pairPath();
        expectErrors({"get.key1"}, CMPI_RC_ERR_NOT_FOUND,
                     [&] { instance(pair.without(family.role1).without(family.role2)); });
    });
}

TEST_F(LogTextsTest, KeysOfASourceAreReadInOrderAndTestedWhenAllAreRead) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            const std::vector<std::string> read = keysReadOf(family, source.className, sourceIsLeft);
            if (read.empty()) continue;
            SCOPED_TRACE(source.className);
            const std::string slot = sourceIsLeft ? "right.key." : "left.key.";
            Path bare = source;
            bare.keys.clear();
            expectErrors({slot + read.front()}, 0, [&] { ask(Operation::references, bare, ofFamily()); });
            if (read.size() < 2) continue;
            const Path foreign = source.with(read.front(), "elsewhere").without(read.back());
            expectErrors({slot + read.back()}, 0, [&] { ask(Operation::references, foreign, ofFamily()); });
        }
    });
}

TEST_F(LogTextsTest, EnumerationOfConformancesAddsTheProfileAlsoWhereNoRowFollows) {
    family = familyOf("Merolt_NIC_ElementConformsToRegisteredProfile");
    constexpr unsigned profiles = 8;
    constexpr unsigned ports = 4;
    constexpr unsigned rows = 3 * ports;
    const unsigned added = failEachCall(&RequestHooks::failingAddKey, 100,
                                        [&](unsigned) { instanceNames(classPath(family.associationClass)); });
    EXPECT_EQ(added, profiles * ports + rows);
}

TEST_F(LogTextsTest, SourceKeysThatAreMissingAreToldInTheEthernetDialect) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            for (const std::string& key : keysReadOf(family, source.className, sourceIsLeft)) {
                SCOPED_TRACE(source.className + '.' + key);
                const std::string slot = (sourceIsLeft ? "right.key." : "left.key.") + key;
                expectErrors({slot}, 0, [&] { ask(Operation::associators, source.without(key), ofFamily()); });
            }
        }
    });
}

TEST_F(LogTextsTest, SourceKeysThatAreNoTextsAreToldWhereTheirTypeIsTested) {
    forEachFamily([&] {
        if (!searchesByTable()) return;
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            const auto tested = typeTestedKeys(family, source.className, sourceIsLeft);
            for (const std::string& key : keysReadOf(family, source.className, sourceIsLeft)) {
                SCOPED_TRACE(source.className + '.' + key);
                const auto found = tested.find(key);
                const std::string named = found == tested.end() ? "none" : found->second;
                expectErrors({(sourceIsLeft ? "right.key." : "left.key.") + named}, 0, [&] {
                    const Reply reply = ask(Operation::associators, source.with(key, std::uint32_t{7}), ofFamily());
                    EXPECT_EQ(reply.rc, CMPI_RC_OK);
                    EXPECT_EQ(reply.texts(), Rows{});
                });
            }
        }
    });
}

TEST_F(LogTextsTest, KeyThatCannotBeAddedEndsAnEnumerationBehindTheRowsSoFar) {
    forEachFamily([&] {
        if (textsOf(family).count("names.add1") == 0) return;
        const bool hasSecondRow = textsOf(family).count("names.second1") > 0;
        const std::vector<std::string> slots =
            hasSecondRow ? Messages{"names.add1", "names.add2", "names.second1", "names.second2"}
                         : Messages{"names.add1", "names.add2"};
        expectErrors(slots, 0, [&] {
            failEachCall(&RequestHooks::failingAddKey, static_cast<unsigned>(slots.size()), [&](unsigned call) {
                const Reply reply = instanceNames(classPath(family.associationClass));
                EXPECT_EQ(reply.rc, CMPI_RC_OK);
                EXPECT_EQ(reply.rows.size(), (call - 1) / 2);
                EXPECT_EQ(reply.doneCount, 1U);
            });
        });
    });
}

TEST_F(LogTextsTest, KeyThatCannotBeAddedEndsReferenceNamesBehindTheRowsSoFar) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::string side = sourceIsLeft ? "right" : "left";
            if (textsOf(family).count(side + ".add1") == 0) continue;
            const Path source = fruitfulSource(sourceIsLeft).value();
            SCOPED_TRACE(source.text());
            const std::size_t found = expectedFrom(source, sourceIsLeft).size();
            std::vector<std::string> slots;
            for (std::size_t row = 0; row < std::min<std::size_t>(found, 2); ++row) {
                slots.push_back(side + ".add1");
                slots.push_back(side + ".add2");
            }
            expectErrors(slots, 0, [&] {
                failEachCall(&RequestHooks::failingAddKey, static_cast<unsigned>(slots.size()), [&](unsigned call) {
                    const Reply reply = ask(Operation::referenceNames, source, ofFamily());
                    EXPECT_EQ(reply.rc, CMPI_RC_OK);
                    EXPECT_EQ(reply.rows.size(), (call - 1) / 2);
                });
            });
        }
    });
}

} // namespace
