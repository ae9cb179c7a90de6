#include "tools/guests/text.h"

#include <gtest/gtest.h>

namespace guests {
namespace {

constexpr uint64_t kUpdated = 1'800'000'000;
const std::chrono::system_clock::time_point kTime{std::chrono::seconds(kUpdated)};

Guest Web() {
  Guest guest{.monitor = "libvirt", .id = "0d8c", .name = "web", .hasAnswered = true, .hasBalloon = Figure(1)};
  guest.pollingSeconds = Figure(10);
  guest.lastUpdate = Figure(kUpdated - 3);
  guest.figures.pid = 4242;
  guest.figures[GuestFigure::kMemory] = Figure(262144);
  guest.figures[GuestFigure::kBalloon] = Figure(0);
  guest.figures[GuestFigure::kTotal] = Figure(200000);
  return guest;
}

std::string AdviceOn(const Guest &guest) { return Advice(std::span(&guest, 1), kTime); }

TEST(Text, Table) {
  Guest other{.name = "a name\033[31m"};
  Settle(other, kTime);
  Guest web = Web();
  Settle(web, kTime);
  EXPECT_EQ(Table(std::vector<Guest>{web, other}, kTime),
            "NAME          PID  MEMORY  BALLOON  DRIVER   TOTAL  USABLE  FREE  CACHES  AGE\n"
            "web          4242  262144        0     yes  200000       -     -       -    3\n"
            "a name?[31m     -       -        -       -       -       -     -       -    -\n");
}

TEST(Text, NoAdviceOnAGuestThatTellsEverything) { EXPECT_EQ(AdviceOn(Web()), ""); }

TEST(Text, HowToTurnOnPolling) {
  Guest guest = Web();
  guest.pollingSeconds = Figure(0);
  EXPECT_EQ(AdviceOn(guest),
            "web: its statistics are not polled. To poll them every 10 seconds, run:\n"
            "  virsh dommemstat --period 10 web --live\n");
  guest.monitor = "/run/web.qmp";
  guest.id = "/machine/peripheral/balloon0";
  EXPECT_EQ(AdviceOn(guest),
            "web: its statistics are not polled. To poll them every 10 seconds, send this to its QMP socket:\n"
            "  {\"arguments\":{\"path\":\"/machine/peripheral/balloon0\",\"property\":\"guest-stats-polling-interval\","
            "\"value\":10},\"execute\":\"qom-set\"}\n");
}

// The printed command must not execute anything in a guest's name.
TEST(Text, AnUnusualNameIsReplacedByTheUuid) {
  Guest guest = Web();
  guest.pollingSeconds = Figure(0);
  for (const char *name : {"$(reboot)", "a b", "-x", "a;b", "'", "", "\xff", "web\n"}) {
    guest.name = name;
    EXPECT_NE(AdviceOn(guest).find("\n  virsh dommemstat --period 10 0d8c --live\n"), std::string::npos) << name;
  }
}

TEST(Text, WhyFiguresAreMissing) {
  Guest guest = Web();
  guest.lastUpdate = Figure(kUpdated - 100);
  EXPECT_EQ(AdviceOn(guest), "web: its balloon driver last reported figures 100 seconds ago.\n");
  guest.lastUpdate = Figure(0);
  EXPECT_EQ(AdviceOn(guest), "web: its balloon driver has never reported figures.\n");
  guest.hasBalloon = Figure(0);
  EXPECT_EQ(AdviceOn(guest), "web: it has no balloon device, so it cannot report figures.\n");
  guest.hasAnswered = false;
  EXPECT_EQ(AdviceOn(guest), "web: its monitor does not answer.\n");
}

}  // namespace
}  // namespace guests
