// Each association against its golden text, on several hosts.
#include "golden_test.h"
#include "fleets.h"

#include "log/log.h"

#include <algorithm>
#include <sstream>
#include <utility>

using namespace adapters;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The lines that the other text has not, under the headings that they stand below, and how many lines there are.
std::string linesBesides(const std::string& text, const std::string& known) {
    if (text == known) return "details: the same as with many cards\n";
    const std::vector<std::string> knownLines = linesOf(known);
    const std::vector<std::string> lines = linesOf(text);
    std::string besides = "details: " + std::to_string(lines.size()) + " lines, other than with many cards:\n";
    std::string heading;
    for (const std::string& line : lines) {
        if (line.rfind("  ", 0) != 0)
            heading = line + '\n';
        else if (std::count(knownLines.begin(), knownLines.end(), line) == 0)
            besides += std::exchange(heading, "") + line + '\n';
    }
    return besides;
}

class AssociationGoldenTest : public GoldenTest, public testing::WithParamInterface<std::string> {
protected:
    std::string chapter(const std::string& title) {
        const std::string heading = "\n== " + title + '\n';
        const std::string text = pairsAndSearches();
        if (firstChapter.empty())
            firstChapter = text;
        else if (text == firstChapter)
            return heading + "pairs and searches: the same as with many cards\n";
        return heading + text;
    }

    /// One association's paths have its roles the other way round than its class.
    void takeRolesInOrderOfPaths() {
        if (first(family.associationClass).keys.at(0).name == family.role1) return;
        std::swap(family.role1, family.role2);
        std::swap(family.leftClass, family.rightClass);
    }

    /// The details where they differ from those of the first host.
    std::string otherDetails() { return linesBesides(details(), firstDetails); }

    std::string firstChapter;
    std::string firstDetails;
};

TEST_P(AssociationGoldenTest, AnswersAndLogAreThoseOfTheText) {
    family = familyOf("Merolt_" + GetParam());
    serveAnew(manyCards());
    takeRolesInOrderOfPaths();
    std::string text = family.associationClass + " : " + family.baseClass + "\n  " + family.role1 + " -> " +
                       family.leftClass + "\n  " + family.role2 + " -> " + family.rightClass + '\n';
    text += "\n== asked without its name\n" + placesInOrder();
    text += chapter("many cards");
    firstDetails = details();
    text += firstDetails + "\n== log, many cards\n" + logTexts();
    serveAnew(cardsWithUuids());
    text += chapter("cards with UUIDs") + otherDetails();
    serveAnew(manyCards(), true);
    text += chapter("many cards after a refresh") + otherDetails();
    serveAnew(fleet({}));
    text += chapter("no cards") + otherDetails();
    compareWithGolden(family.associationClass, text);
    EXPECT_EQ(broker->droppedProperties(), Rows{}) << "a class does not declare what is set";
}

std::string testName(const testing::TestParamInfo<std::string>& tested) { return tested.param; }

INSTANTIATE_TEST_SUITE_P(Of, AssociationGoldenTest, testing::ValuesIn(goldenNames()), testName);

class GoldenTextsTest : public GoldenTest {};

TEST_F(GoldenTextsTest, EveryAssociationHasOneAndEveryTextItsAssociation) {
    std::vector<std::string> declared;
    for (const Family& each : families())
        declared.push_back(each.associationClass.substr(std::string("Merolt_").size()));
    std::sort(declared.begin(), declared.end());
    EXPECT_EQ(declared, goldenNames()) << "tests/provider/associations/write_golden.sh NAME writes one that is missing";
}

TEST_F(GoldenTextsTest, NothingIsWrittenToTheLogWithBothLogsOff) {
    serveAnew(manyCards());
    takeMessages();
    forEachFamily([&] {
        instanceNames(classPath(family.associationClass));
        instances(classPath(family.associationClass));
        const Path pair = names(family.associationClass).at(0);
        instance(pair);
        instance(pair.without(family.role1));
        for (const Operation operation : allOperations)
            ask(operation, fruitfulSource(true).value(), ofFamily());
        EXPECT_EQ(takeMessages(), std::vector<std::string>{});
    });
}

} // namespace
