#include "tools/guests/guest.h"

#include <gtest/gtest.h>

namespace guests {
namespace {

using std::chrono::seconds;
using std::chrono::system_clock;

constexpr uint64_t kNow = 1'800'000'000;

system_clock::time_point At(uint64_t time) { return system_clock::time_point(seconds(time)); }

// A guest that reported its figures `age` seconds ago.
Guest Polled(uint64_t polling, uint64_t age) {
  Guest guest{.hasAnswered = true, .hasBalloon = Figure(1)};
  guest.pollingSeconds = Figure(polling);
  guest.lastUpdate = Figure(kNow - age);
  guest.figures[GuestFigure::kTotal] = Figure(100);
  guest.figures[GuestFigure::kMajorFaults] = Figure(5);
  guest.figures[GuestFigure::kBalloon] = Figure(0);
  return guest;
}

TEST(Guest, StatisticsAreCurrentForOnePeriod) {
  EXPECT_TRUE(HasCurrentStatistics(Polled(10, 0), At(kNow)));
  EXPECT_TRUE(HasCurrentStatistics(Polled(10, 12), At(kNow)));
  EXPECT_FALSE(HasCurrentStatistics(Polled(10, 13), At(kNow)));
  EXPECT_FALSE(HasCurrentStatistics(Polled(0, 0), At(kNow))) << "frozen since the guest booted";
  EXPECT_FALSE(HasCurrentStatistics(Polled(10, kNow), At(kNow))) << "never";
  Guest guest = Polled(10, 0);
  guest.lastUpdate = Figure(kNow + 1);
  EXPECT_TRUE(HasCurrentStatistics(guest, At(kNow)));
  guest.lastUpdate = Figure(kNow + 2);
  EXPECT_FALSE(HasCurrentStatistics(guest, At(kNow))) << "the clock was set back";
  guest.lastUpdate = Figure();
  EXPECT_FALSE(HasCurrentStatistics(guest, At(kNow)));
  guest = Polled(10, 0);
  guest.pollingSeconds = Figure();
  EXPECT_FALSE(HasCurrentStatistics(guest, At(kNow))) << "unknown polling";
}

TEST(Guest, OldStatisticsAreDropped) {
  Guest guest = Polled(10, 0);
  Settle(guest, At(kNow));
  EXPECT_EQ(guest.figures[GuestFigure::kTotal], Figure(100));
  guest = Polled(10, 100);
  Settle(guest, At(kNow));
  EXPECT_EQ(guest.figures[GuestFigure::kTotal], Figure());
  EXPECT_EQ(guest.figures[GuestFigure::kMajorFaults], Figure());
  EXPECT_EQ(guest.figures[GuestFigure::kBalloon], Figure(0)) << "from the monitor";
}

Figure DriverOf(Guest guest) {
  Settle(guest, At(kNow));
  return guest.figures[GuestFigure::kBalloonDriver];
}

TEST(Guest, WhatShowsABalloonDriver) {
  EXPECT_EQ(DriverOf(Polled(10, 1000)), Figure(1)) << "it told something once";
  EXPECT_EQ(DriverOf(Polled(10, kNow)), Figure(0)) << "it never answered";
  EXPECT_EQ(DriverOf(Polled(0, kNow)), Figure()) << "it was never asked";
  Guest filled = Polled(0, kNow);
  filled.figures[GuestFigure::kBalloon] = Figure(1);
  EXPECT_EQ(DriverOf(filled), Figure(1));
  Guest without = Polled(0, kNow);
  without.hasBalloon = Figure(0);
  EXPECT_EQ(DriverOf(without), Figure(0));
}

TEST(Guest, TheBalloonIsWhatTheGuestLacks) {
  const auto balloon = [](Figure memory, Figure left, uint64_t hasBalloon = 1) {
    Guest guest{.hasBalloon = Figure(hasBalloon)};
    TakeBalloon(guest, memory, left);
    return guest.figures[GuestFigure::kBalloon];
  };
  EXPECT_EQ(balloon(Figure(100), Figure(70)), Figure(30));
  EXPECT_EQ(balloon(Figure(100), Figure(100)), Figure(0));
  EXPECT_EQ(balloon(Figure(100), Figure(101)), Figure());
  EXPECT_EQ(balloon(Figure(100), Figure()), Figure());
  EXPECT_EQ(balloon(Figure(), Figure(70)), Figure());
  EXPECT_EQ(balloon(Figure(UINT64_MAX - 1), Figure(0)), Figure());
  EXPECT_EQ(balloon(Figure(), Figure(), 0), Figure(0)) << "there is none";
}

TEST(Guest, ImplausibleFiguresAreIgnored) {
  Guest guest;
  TakeBytes(guest, GuestFigure::kTotal, UINT64_MAX);
  TakeKB(guest, GuestFigure::kFree, UINT64_MAX);
  TakeCount(guest, GuestFigure::kMajorFaults, UINT64_MAX);
  for (const Figure figure : guest.figures.figures)
    EXPECT_EQ(figure, Figure());
  TakeBytes(guest, GuestFigure::kTotal, 4096);
  EXPECT_EQ(guest.figures[GuestFigure::kTotal], Figure(4));
}

TEST(Guest, LaterFiguresReplaceEarlierOnes) {
  Guest guest{.monitor = "libvirt"};
  guest.figures.pid = 7;
  guest.figures[GuestFigure::kMemory] = Figure(1);
  guest.figures[GuestFigure::kBalloon] = Figure(1);
  Guest later{.hasAnswered = true};
  later.figures.pid = 8;
  later.figures[GuestFigure::kMemory] = Figure(2);
  later.figures[GuestFigure::kTotal] = Figure(3);
  Merge(guest, later);
  EXPECT_TRUE(guest.hasAnswered);
  EXPECT_EQ(guest.figures.pid, 7) << "it was read before the monitor answered";
  EXPECT_EQ(guest.figures[GuestFigure::kMemory], Figure(2));
  EXPECT_EQ(guest.figures[GuestFigure::kBalloon], Figure(1));
  EXPECT_EQ(guest.figures[GuestFigure::kTotal], Figure(3));
}

TEST(Guest, Json) {
  Guest guest = Polled(10, 3);
  guest.monitor = "libvirt";
  guest.id = "uuid";
  guest.name = "web";
  guest.figures.pid = 42;
  guest.figures.startTicks = 77;
  const Guest read = FromJson(ToJson(guest));
  EXPECT_EQ(ToJson(read), ToJson(guest));
  EXPECT_EQ(read.figures.figures, guest.figures.figures);
  EXPECT_EQ(read.lastUpdate, guest.lastUpdate);
  EXPECT_EQ(ToJson(guest)["guest-total-kb"], 100);
  EXPECT_FALSE(ToJson(guest).contains("guest-free-kb"));
}

}  // namespace
}  // namespace guests
