#include "tavik/hand_outs.h"

#include <gtest/gtest.h>

namespace tavik {

namespace {

TEST(HandOuts, ATextIsACopyThatEndsInZero) {
    HandOuts handOuts;
    std::string original = "text";
    const char* copy = handOuts.text(original);
    original = "gone";
    EXPECT_STREQ(copy, "text");
}

TEST(HandOuts, AnEmptyTextIsABlockTooAndAnEmptyArrayIsNone) {
    HandOuts handOuts;
    EXPECT_STREQ(handOuts.text(""), "");
    EXPECT_EQ(handOuts.array(std::vector<int>()), nullptr);
    EXPECT_EQ(handOuts.count(), 1U);
}

TEST(HandOuts, GivingBackReleasesTheOwner) {
    HandOuts handOuts;
    const auto owner = std::make_shared<int>(7);
    handOuts.keep(owner.get(), owner);
    EXPECT_EQ(owner.use_count(), 2);
    EXPECT_EQ(handOuts.giveBack(owner.get()), statusOk);
    EXPECT_EQ(owner.use_count(), 1);
    EXPECT_EQ(handOuts.giveBack(owner.get()), statusInvalidArgument);
}

} // namespace

} // namespace tavik
