// Each association against what is expected of it, from every object at both of its ends, on several hosts.
#include "fleets.h"
#include "request_hooks.h"
#include "world_test.h"

#include <algorithm>
#include <cctype>

namespace {

/// What the host looks like when the requests come.
enum class Situation { manyCards, uuids, refreshed, noCards };

const char* nameOf(Situation situation) {
    static constexpr const char* names[] = {"ManyCards", "Uuids", "Refreshed", "NoCards"};
    return names[static_cast<std::size_t>(situation)];
}

class FamilyTest : public WorldTest, public testing::WithParamInterface<Situation> {
protected:
    FamilyTest() {
        const tavik::Fleet fleet = GetParam() == Situation::noCards ? adapters::fleet({})
                                   : GetParam() == Situation::uuids ? cardsWithUuids()
                                                                    : manyCards();
        serve(fleet);
        if (GetParam() == Situation::refreshed) refreshTo(*fleet.cards);
        learn(fleet);
    }
};

void PrintTo(Situation situation, std::ostream* stream) { *stream << nameOf(situation); }

std::string testName(const testing::TestParamInfo<Situation>& tested) { return nameOf(tested.param); }

INSTANTIATE_TEST_SUITE_P(OnAHost, FamilyTest,
                         testing::Values(Situation::manyCards, Situation::uuids, Situation::refreshed,
                                         Situation::noCards),
                         testName);

void expectSuccess(const Reply& reply, const Rows& wanted) {
    EXPECT_EQ(reply.rc, CMPI_RC_OK) << reply.message;
    EXPECT_EQ(reply.doneCount, 1U);
    EXPECT_EQ(reply.texts(), wanted);
}

TEST_P(FamilyTest, EnumerationsGiveEveryPairInOrder) {
    forEachFamily([&] {
        Rows wantedNames;
        Rows wantedInstances;
        for (const auto& [left, right] : pairsOf(family, world)) {
            wantedNames.push_back(rowOf(associationPath(family, left.path, right.path)).text());
            Row row = associationInstance(family, left.path, right.path);
            if (family.further.isEnumerated) setFurtherProperty(family, row);
            wantedInstances.push_back(row.text());
        }
        expectSuccess(instanceNames(classPath(family.associationClass)), wantedNames);
        expectSuccess(instances(classPath(family.associationClass)), wantedInstances);
    });
}

TEST_P(FamilyTest, SearchesFromEveryObjectGiveWhatBelongsToIt) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            for (const End& end : sources(sourceIsLeft)) {
                const Ends found = expectedFrom(end.path, sourceIsLeft);
                for (const Operation operation : allOperations) {
                    SCOPED_TRACE(nameOf(operation) + (" from " + end.path.text()));
                    expectSuccess(ask(operation, end.path, ofFamily()),
                                  textsOf(expectedRows(operation, family, end.path, sourceIsLeft, found)));
                }
            }
        }
    });
}

/// What is found, as a request in another namespace has it; profiles and their elements stay in theirs.
Ends inNameSpace(Ends ends, const std::string& nameSpace, const Family& family) {
    if (family.role1 == "ConformantStandard") return ends;
    for (End& end : ends)
        end.path.nameSpace = nameSpace;
    return ends;
}

TEST_P(FamilyTest, AnswersStandInTheNamespaceOfTheRequest) {
    const std::string elsewhere = "root/elsewhere";
    forEachFamily([&] {
        Rows wanted;
        for (const auto& [left, right] : pairsOf(family, world)) {
            const Ends ends = inNameSpace({left, right}, elsewhere, family);
            wanted.push_back(rowOf(associationPath(family, ends.at(0).path, ends.at(1).path, elsewhere)).text());
        }
        Path requested = classPath(family.associationClass);
        requested.nameSpace = elsewhere;
        expectSuccess(instanceNames(requested), wanted);
        for (const Row& row : instances(requested).rows)
            EXPECT_EQ(row.nameSpace, elsewhere);
        for (const bool sourceIsLeft : {true, false}) {
            std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            source->nameSpace = elsewhere;
            const Ends found = inNameSpace(expectedFrom(*source, sourceIsLeft), elsewhere, family);
            for (const Operation operation :
                 {Operation::associatorNames, Operation::references, Operation::referenceNames}) {
                SCOPED_TRACE(nameOf(operation) + (" from " + source->text()));
                expectSuccess(ask(operation, *source, ofFamily()),
                              textsOf(expectedRows(operation, family, *source, sourceIsLeft, found)));
            }
        }
    });
}

/// One association delivers its left end ahead of itself.
bool showsLeftEndToo(const Family& family) { return family.role1 == "Capabilities"; }

TEST_P(FamilyTest, GetInstanceTakesAnyTwoExistingEnds) {
    forEachFamily([&] {
        Pairs pairs = pairsOf(family, world);
        if (!pairs.empty()) pairs.emplace_back(pairs.front().first, pairs.back().second);
        for (const auto& [left, right] : pairs) {
            const Path path = associationPath(family, left.path, right.path);
            SCOPED_TRACE(path.text());
            const Reply reply = instance(path);
            if (!canBeFetched(left.path) || !canBeFetched(right.path)) {
                EXPECT_EQ(reply.rc, CMPI_RC_ERR_NOT_FOUND);
                continue;
            }
            Rows wanted{associationInstance(family, left.path, right.path).text()};
            if (showsLeftEndToo(family)) wanted.insert(wanted.begin(), left.instance.text());
            expectSuccess(reply, wanted);
        }
    });
}

TEST_P(FamilyTest, GetInstanceOfAMissingEndIsNotFound) {
    forEachFamily([&] {
        const auto pair = somePair();
        if (!pair) return;
        const auto& [left, right] = *pair;
        const Path noLeft = left.path.with(lookedUpKey(left.path.className), "no such object");
        const Path noRight = right.path.with(lookedUpKey(right.path.className), "no such object");
        const Reply withoutLeft = instance(associationPath(family, noLeft, right.path));
        EXPECT_EQ(withoutLeft.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_TRUE(withoutLeft.rows.empty());
        const Reply withoutBoth = instance(associationPath(
            family, noLeft.with(lookedUpKey(noLeft.className), "the left is looked for first"), noRight));
        EXPECT_EQ(withoutBoth.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(withoutBoth.message, "the left is looked for first");
        const Path trusting = associationPath(family, left.path, noRight);
        const Reply withoutRight = instance(trusting);
        EXPECT_EQ(withoutRight.rc, family.rightEndIsTakenOnTrust ? CMPI_RC_OK : CMPI_RC_ERR_NOT_FOUND);
        // What the left end itself delivers is out before the right end is looked for.
        Rows wanted;
        if (showsLeftEndToo(family)) wanted = {left.instance.text()};
        if (family.rightEndIsTakenOnTrust) wanted = {associationInstance(family, left.path, noRight).text()};
        EXPECT_EQ(withoutRight.texts(), wanted);
    });
}

TEST_P(FamilyTest, GetInstanceWithoutItsTwoReferencesGivesNothing) {
    forEachFamily([&] {
        const auto pair = somePair();
        if (!pair) return;
        const auto& [left, right] = *pair;
        const Path path = associationPath(family, left.path, right.path);
        for (const std::string& role : {family.role1, family.role2}) {
            SCOPED_TRACE(role);
            expectSuccess(instance(path.without(role)), {});
            expectSuccess(instance(path.with(role, "a text")), {});
            expectSuccess(instance(path.with(role, std::uint32_t{5})), {});
        }
        expectSuccess(instance(path.ofClass(family.baseClass.empty() ? "CIM_Dependency" : family.baseClass)), {});
    });
}

TEST_P(FamilyTest, ClassesDeclareEveryPropertyThatIsSet) {
    forEachFamily([&] {
        instances(classPath(family.associationClass));
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            ask(Operation::associators, *source, ofFamily());
            ask(Operation::references, *source, ofFamily());
        }
        EXPECT_EQ(broker->droppedProperties(), Rows{});
    });
}

/// A text in the other case of letters.
std::string otherCase(std::string text) {
    for (char& character : text) {
        const auto letter = static_cast<unsigned char>(character);
        character = static_cast<char>(std::islower(letter) ? std::toupper(letter) : std::tolower(letter));
    }
    return text;
}

/// Whether the key is taken apart or searched by letter case: "_Driver" is.
bool mattersByCase(const Family& family, const std::string& key) {
    return key == "InstanceID" && family.rightClass == "Merolt_FCHBA_SoftwareIdentity";
}

TEST_P(FamilyTest, SearchesReadTheirKeysAndNoOthers) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            const std::vector<std::string> read = keysReadOf(family, source->className, sourceIsLeft);
            for (const Path::Key& key : source->keys) {
                const bool isRead = std::count(read.begin(), read.end(), key.name) > 0;
                const Path foreign = source->with(key.name, "elsewhere");
                SCOPED_TRACE(foreign.text());
                const Ends found = isRead ? Ends{} : expectedFrom(*source, sourceIsLeft);
                expectSuccess(ask(Operation::associatorNames, foreign, ofFamily()),
                              textsOf(expectedRows(Operation::associatorNames, family, foreign, sourceIsLeft, found)));
                if (!isRead || mattersByCase(family, key.name)) continue;
                const Path shouted = source->with(key.name, otherCase((*source)[key.name]));
                expectSuccess(ask(Operation::referenceNames, shouted, ofFamily()),
                              textsOf(expectedRows(Operation::referenceNames, family, shouted, sourceIsLeft,
                                                   expectedFrom(*source, sourceIsLeft))));
            }
        }
    });
}

/// The storage side leaves an absent key to the wrapper's exception, the Ethernet side answers with nothing.
bool failsWithoutKey(const Family& family) {
    return !family.isFiltered && family.associationClass != "Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService";
}

TEST_P(FamilyTest, SearchesWithoutAKeyThatTheyReadGiveNothing) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            const std::vector<std::string> read = keysReadOf(family, source->className, sourceIsLeft);
            for (const std::string& key : read) {
                SCOPED_TRACE(key);
                for (const Operation operation : allOperations) {
                    const Reply reply = ask(operation, source->without(key), ofFamily());
                    EXPECT_EQ(reply.rc, failsWithoutKey(family) ? CMPI_RC_ERR_NOT_FOUND : CMPI_RC_OK);
                    EXPECT_TRUE(reply.rows.empty());
                    EXPECT_EQ(reply.doneCount, 1U);
                }
            }
            if (!read.empty()) continue;
            Path bare = *source;
            bare.keys.clear();
            expectSuccess(ask(Operation::references, bare, ofFamily()),
                          textsOf(expectedRows(Operation::references, family, bare, sourceIsLeft,
                                               expectedFrom(*source, sourceIsLeft))));
        }
    });
}

TEST_P(FamilyTest, SearchesWithStrangeKeysGiveNothing) {
    forEachFamily([&] {
        const std::vector<Path::Value> strange{std::string(10000, 'x'),
                                               std::string(10000, '_'),
                                               "x_" + std::string(10000, '9') + "_x",
                                               std::string("_"),
                                               std::string(),
                                               std::uint32_t{5},
                                               std::vector<Path>{classPath("CIM_ManagedElement")}};
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            for (const std::string& key : keysReadOf(family, source->className, sourceIsLeft)) {
                for (const Path::Value& value : strange) {
                    SCOPED_TRACE(key);
                    const Reply reply = ask(Operation::associatorNames, source->with(key, value), ofFamily());
                    EXPECT_TRUE(reply.rc == CMPI_RC_OK || failsWithoutKey(family)) << reply.message;
                    EXPECT_EQ(reply.texts(), Rows{});
                }
            }
        }
    });
}

TEST_P(FamilyTest, SearchesWithKeysThatAreNullGiveNothing) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source || keysReadOf(family, source->className, sourceIsLeft).empty()) continue;
            for (const RequestHooks::Keys keys : {RequestHooks::Keys::null, RequestHooks::Keys::withoutText}) {
                RequestHooks hooks(*broker);
                hooks.keys = keys;
                requestHooks = &hooks;
                const Reply reply = ask(Operation::associatorNames, *source, ofFamily());
                requestHooks = nullptr;
                SCOPED_TRACE(source->className);
                EXPECT_EQ(reply.texts(), Rows{});
                EXPECT_EQ(reply.doneCount, 1U);
            }
        }
    });
}

TEST_P(FamilyTest, GetInstanceWithReferencesThatAreNullGivesNothing) {
    forEachFamily([&] {
        const auto pair = somePair();
        if (!pair) return;
        const auto& [left, right] = *pair;
        for (const RequestHooks::Keys keys : {RequestHooks::Keys::null, RequestHooks::Keys::withoutText}) {
            RequestHooks hooks(*broker);
            hooks.keys = keys;
            requestHooks = &hooks;
            const Reply reply = instance(associationPath(family, left.path, right.path));
            requestHooks = nullptr;
            EXPECT_EQ(reply.texts(), Rows{});
            EXPECT_EQ(reply.doneCount, 1U);
        }
    });
}

TEST_P(FamilyTest, GetInstanceTakesAnEndWithoutItsKeyOnTrust) {
    forEachFamily([&] {
        const auto pair = somePair();
        if (!pair) return;
        const auto& [left, right] = *pair;
        const Path noLeftKey = left.path.without(lookedUpKey(left.path.className));
        const Path noRightKey = right.path.without(lookedUpKey(right.path.className));
        expectSuccess(instance(associationPath(family, noLeftKey, noRightKey)),
                      {associationInstance(family, noLeftKey, noRightKey).text()});
    });
}

TEST_P(FamilyTest, ArgumentsOfAnyLengthAndSpellingEndInAnAnswer) {
    const std::string strange[] = {
        std::string(10000, 'x'), "Merolt_" + std::string(300, '_'), "not a name", "%s%s%n", "\xC3\xA4", "_"};
    forEachFamily([&] {
        const std::optional<Path> source = fruitfulSource(true);
        if (!source) return;
        for (const std::string& text : strange) {
            for (const Operation operation : allOperations) {
                SCOPED_TRACE(nameOf(operation) + (' ' + text.substr(0, 40)));
                const Reply unknown = ask(operation, *source, {.associationClass = text});
                EXPECT_EQ(unknown.doneCount, 1U);
                EXPECT_TRUE(unknown.rows.empty());
                const Reply longer = ask(operation, *source, {.associationClass = family.associationClass + text});
                EXPECT_TRUE(longer.rows.empty());
                Filters filters = ofFamily();
                filters.role = text;
                filters.resultRole = text;
                EXPECT_EQ(ask(operation, *source, filters).rows.empty(), family.isFiltered);
                filters = ofFamily();
                filters.properties = {text};
                EXPECT_EQ(ask(operation, *source, filters).rows.size(), expectedFrom(*source, true).size());
                if (operation == Operation::references || operation == Operation::referenceNames) continue;
                filters.resultClass = text;
                const Reply filtered = ask(operation, *source, filters);
                EXPECT_EQ(filtered.doneCount, 1U);
                EXPECT_EQ(filtered.rows.empty(), family.isFiltered);
            }
        }
    });
}

// Filters.

TEST_P(FamilyTest, FiltersThatFitChangeNothing) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            const Ends found = expectedFrom(*source, sourceIsLeft);
            const std::string nearRole = sourceIsLeft ? family.role1 : family.role2;
            const std::string farRole = sourceIsLeft ? family.role2 : family.role1;
            for (const Operation operation : allOperations) {
                SCOPED_TRACE(nameOf(operation) + (" from " + source->text()));
                const Rows wanted = textsOf(expectedRows(operation, family, *source, sourceIsLeft, found));
                Filters filters = ofFamily();
                filters.resultClass = found.front().path.className;
                filters.role = nearRole;
                filters.resultRole = farRole;
                expectSuccess(ask(operation, *source, filters), wanted);
                filters.resultClass = "";
                filters.role = otherCase(nearRole);
                filters.resultRole = "";
                expectSuccess(ask(operation, *source, filters), wanted);
                filters.role = "";
                filters.resultRole = otherCase(farRole);
                expectSuccess(ask(operation, *source, filters), wanted);
            }
        }
    });
}

TEST_P(FamilyTest, FiltersThatDoNotFitEmptyTheEthernetSideOnly) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            const Ends found = expectedFrom(*source, sourceIsLeft);
            const std::string farRole = sourceIsLeft ? family.role2 : family.role1;
            for (const Operation operation : allOperations) {
                SCOPED_TRACE(nameOf(operation) + (" from " + source->text()));
                const Rows all = textsOf(expectedRows(operation, family, *source, sourceIsLeft, found));
                const Rows wanted = family.isFiltered ? Rows{} : all;
                Filters role = ofFamily();
                role.role = farRole;
                expectSuccess(ask(operation, *source, role), wanted);
                if (operation == Operation::references || operation == Operation::referenceNames) continue;
                Filters resultRole = ofFamily();
                resultRole.resultRole = "NoSuchRole";
                expectSuccess(ask(operation, *source, resultRole), wanted);
                Filters resultClass = ofFamily();
                resultClass.resultClass = "Merolt_FCHBA_StorageExtent";
                const bool isExtent = found.front().path.className == *resultClass.resultClass;
                expectSuccess(ask(operation, *source, resultClass), isExtent ? all : wanted);
            }
        }
    });
}

/// What a property list leaves of an instance: what it names, and the keys.
Row narrowed(const End& end, const std::string& property) {
    Row row = end.instance;
    const auto isLeftOut = [&](const auto& value) {
        const auto isNamed = [&](const Path::Key& key) { return key.name == value.first; };
        return value.first != property && std::none_of(end.path.keys.begin(), end.path.keys.end(), isNamed);
    };
    row.values.erase(std::remove_if(row.values.begin(), row.values.end(), isLeftOut), row.values.end());
    return row;
}

TEST_P(FamilyTest, PropertyListNarrowsAssociatorsAndNotReferences) {
    forEachFamily([&] {
        for (const bool sourceIsLeft : {true, false}) {
            const std::optional<Path> source = fruitfulSource(sourceIsLeft);
            if (!source) continue;
            const Ends found = expectedFrom(*source, sourceIsLeft);
            const std::string property = found.front().instance.values.back().first;
            std::vector<Row> wanted;
            for (const End& end : found)
                wanted.push_back(narrowed(end, property));
            Filters filters = ofFamily();
            filters.properties = {property};
            expectSuccess(ask(Operation::associators, *source, filters), textsOf(wanted));
            expectSuccess(ask(Operation::references, *source, filters),
                          textsOf(expectedRows(Operation::references, family, *source, sourceIsLeft, found)));
        }
    });
}

} // namespace
