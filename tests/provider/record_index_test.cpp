// Records that are found by a number or a text of theirs.
#include "classes/record_index.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string_view>
#include <vector>

using namespace merolt;

namespace {

bool any(std::int32_t) { return true; }

TEST(RecordIndexTest, FindsTheFirstRecordOfANumberThatFits) {
    static RecordIndex index;
    EXPECT_EQ(index.find(7, any), -1) << "nothing was added";
    index.startAnew(4);
    index.add(7, 10);
    index.add(8, 11);
    index.add(7, 12);
    EXPECT_EQ(index.find(7, any), 10);
    EXPECT_EQ(index.find(7, [](std::int32_t record) { return record != 10; }), 12);
    EXPECT_EQ(index.find(8, any), 11);
    EXPECT_EQ(index.find(9, any), -1);
    index.startAnew(4);
    EXPECT_EQ(index.find(7, any), -1) << "an index that starts anew is empty";
}

TEST(RecordIndexTest, KeepsItsOrderWhileItGrowsBeyondWhatWasExpected) {
    static RecordIndex index;
    index.startAnew(1);
    constexpr std::int32_t records = 5000;
    // Three records a number; the numbers differ in their high halves alone.
    const auto numberOf = [](std::int32_t record) { return static_cast<std::uint64_t>(record % (records / 3)) << 32; };
    for (std::int32_t record = 0; record < records; ++record)
        index.add(numberOf(record), record);
    for (std::int32_t record = 0; record < records; ++record) {
        std::vector<std::int32_t> seen;
        EXPECT_EQ(index.find(numberOf(record),
                             [&](std::int32_t other) {
                                 seen.push_back(other);
                                 return other == record;
                             }),
                  record);
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end())) << "of record " << record;
    }
}

TEST(RecordIndexTest, IsEmptyAndUsableAgainWhenItsMemoryWasGivenBack) {
    static RecordIndex index;
    index.startAnew(2);
    index.add(1, 5);
    KeptMemory::releaseAll();
    EXPECT_EQ(index.find(1, any), -1);
    index.add(1, 6);
    EXPECT_EQ(index.find(1, any), 6);
}

struct Record {
    FixedText<8> tag;
};

Record tagged(std::string_view tag) {
    Record record;
    record.tag.assign(tag);
    return record;
}

TEST(RecordsByTextTest, TextsAreFoundInTheirLetterCaseAmongTheRecordsThatAreThere) {
    static RecordsByText tags;
    const Record list[] = {tagged("A_1"), tagged("a_1"), tagged("B")};
    tags.startAnew(3);
    for (std::int32_t record = 0; record < 3; ++record)
        tags.add(list[record].tag.view(), record);
    EXPECT_EQ(tags.find("A_1", list, 3, &Record::tag), 0);
    EXPECT_EQ(tags.find("a_1", list, 3, &Record::tag), 1);
    EXPECT_EQ(tags.find("b", list, 3, &Record::tag), -1);
    EXPECT_EQ(tags.find("B", list, 2, &Record::tag), -1) << "the list ends before it";
}

} // namespace
