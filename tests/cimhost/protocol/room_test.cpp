#include "cimhost/http/room.h"

#include <gtest/gtest.h>

#include <deque>

namespace cimhost::http {
namespace {

using namespace std::chrono_literals;
using Phase = Standing::Phase;

Source v4(std::uint8_t first, std::uint8_t last) {
    return {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, first, 0, 2, last};
}

TEST(SourceOfAConnection, IsTheSameForAllOfThisMachine) {
    EXPECT_EQ(sourceOf(v4(127, 1)), sourceOf(v4(127, 99)));
    EXPECT_EQ(sourceOf(v4(127, 1)), sourceOf({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(SourceOfAConnection, IsTheAddressInIPv4AndTheNetworkInIPv6) {
    EXPECT_NE(sourceOf(v4(192, 1)), sourceOf(v4(192, 2)));
    const Source one = {0x20, 1, 0xd, 0xb8, 0, 0, 0, 1, 1, 2, 3, 4, 5, 6, 7, 8};
    Source sameNetwork = one;
    sameNetwork[15] = 99;
    Source otherNetwork = one;
    otherNetwork[7] = 2;
    EXPECT_EQ(sourceOf(one), sourceOf(sameNetwork));
    EXPECT_NE(sourceOf(one), sourceOf(otherNetwork));
}

class RoomTest : public testing::Test {
protected:
    // One that entered that long ago.
    Standing& add(bool known, Phase phase, std::chrono::milliseconds age, const Source& source = v4(192, 1)) {
        Standing& standing = standings.emplace_back();
        standing.isKnown = known;
        standing.phase = phase;
        standing.since = now - age;
        standing.source = source;
        room.enter(standing);
        return standing;
    }
    Standing& newcomer(std::chrono::milliseconds age, const Source& source = v4(192, 1)) {
        return add(false, Phase::reading, age, source);
    }

    const Source newComing = v4(192, 99);
    const Standing::Clock::time_point now = Standing::Clock::now();
    std::deque<Standing> standings;
    Room room{{8, 4, 1000}};
};

TEST_F(RoomTest, NewcomersAndKnownClientsAreCountedApart) {
    for (int index = 0; index < 8; ++index)
        newcomer(1s);
    EXPECT_TRUE(room.isFullOfNewcomers());
    EXPECT_FALSE(room.isFullOfKnown());
    standings.front().isClosed = true;
    EXPECT_FALSE(room.isFullOfNewcomers());
}

TEST_F(RoomTest, TheOldestNewcomerGivesWay) {
    newcomer(1s);
    Standing& oldest = newcomer(3s);
    newcomer(2s);
    EXPECT_EQ(room.newcomerToGiveWay(now), &oldest);
    oldest.isClosed = true;
    EXPECT_NE(room.newcomerToGiveWay(now), &oldest);
}

TEST_F(RoomTest, AClientThatSendsFastIsNotLate) {
    Standing& upload = newcomer(10s);
    upload.moved = 20'000;
    Standing& drip = newcomer(1s);
    drip.moved = 10;
    EXPECT_EQ(room.newcomerToGiveWay(now), &drip);
}

TEST_F(RoomTest, AnAddressWithMoreThanItsShareGivesWayFirst) {
    newcomer(60s, v4(192, 2));
    for (int index = 0; index < 2; ++index)
        newcomer(1s, v4(192, 1));
    EXPECT_EQ(room.newcomerToGiveWay(now), &standings.front()) << "nobody has more than a quarter";
    newcomer(1s, v4(192, 1));
    EXPECT_EQ(room.newcomerToGiveWay(now)->source, v4(192, 1));
}

TEST_F(RoomTest, KnownClientsNeverGiveWayToNewcomers) {
    add(true, Phase::waiting, 30s);
    EXPECT_EQ(room.newcomerToGiveWay(now), nullptr);
}

TEST_F(RoomTest, KnownClientsThatAreLateGiveWayBeforeIdleOnes) {
    Standing& answering = add(true, Phase::answering, 60s);
    Standing& fresh = add(true, Phase::reading, 10ms);
    Standing& idle = add(true, Phase::waiting, 20s);
    Standing& late = add(true, Phase::writing, 2s);
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &late);
    late.isClosed = true;
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &idle);
    idle.isClosed = true;
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &fresh);
    fresh.isClosed = true;
    EXPECT_EQ(room.knownToGiveWay(now, newComing), nullptr);
    EXPECT_FALSE(answering.isClosed);
}

TEST_F(RoomTest, AClientThatReadsNoAnswerGivesWayBeforeIdleOnes) {
    Standing& idle = add(true, Phase::waiting, 20s);
    Standing& stalled = add(true, Phase::writing, 100ms);
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &stalled);
    stalled.moved = 100; // a tenth of a second's worth at the least rate
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &idle);
}

TEST_F(RoomTest, AClientThatDoesNotReadItsLastAnswerGivesWayBeforeIdleOnes) {
    Standing& idle = add(true, Phase::waiting, 20s);
    Standing& untaken = add(true, Phase::waiting, 100ms);
    untaken.hasUntaken = true;
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &untaken);
    untaken.since = now;
    EXPECT_EQ(room.knownToGiveWay(now, newComing), &idle);
}

TEST_F(RoomTest, AnAddressBeyondItsShareTakesNoIdleClientsPlace) {
    Standing& idle = add(true, Phase::waiting, 20s, v4(192, 1));
    add(true, Phase::answering, 1s, v4(192, 2));
    EXPECT_EQ(room.knownToGiveWay(now, v4(192, 2)), &idle) << "one of four is its share";
    add(true, Phase::answering, 1s, v4(192, 2));
    EXPECT_EQ(room.knownToGiveWay(now, v4(192, 2)), nullptr);
    EXPECT_EQ(room.knownToGiveWay(now, v4(192, 3)), &idle);
    Standing& late = add(true, Phase::writing, 2s, v4(192, 1));
    EXPECT_EQ(room.knownToGiveWay(now, v4(192, 2)), &late) << "who is late gives way to everybody";
}

TEST_F(RoomTest, GuestsMayBeAQuarterAsManyAndLateOnesGiveWay) {
    EXPECT_FALSE(room.isFullOfGuests());
    Standing& guest = add(false, Phase::answering, 60s);
    guest.isGuest = true;
    EXPECT_TRUE(room.isFullOfGuests());
    EXPECT_EQ(room.guestToGiveWay(now), nullptr) << "the server keeps it waiting";
    guest.phase = Phase::writing;
    EXPECT_EQ(room.guestToGiveWay(now), &guest);
    guest.isClosed = true;
    EXPECT_FALSE(room.isFullOfGuests());
}

TEST_F(RoomTest, ClosedConnectionsDoNotGiveWay) {
    Standing gone;
    const Room::Place place = room.enter(gone);
    room.leave(place);
    EXPECT_EQ(room.newcomerToGiveWay(now), nullptr);
}

} // namespace
} // namespace cimhost::http
