#include "tools/nodal/top/session.h"

#include <algorithm>
#include <fstream>

#include "platkit/history/segment_reader.h"
#include "tests/tools/nodal/history/recorded.h"
#include "tests/tools/nodal/top/fake_host.h"
#include "tools/nodal/support/output.h"

namespace nodal::top {
namespace {

// Replaces several blanks with one, except in the indentation.
std::string Squeezed(const std::string &line) {
  std::string text;
  for (const char c : line) {
    const bool isIndented = text.find_first_not_of(' ') == std::string::npos;
    if (c != ' ' || isIndented || text.back() != ' ') text += c;
  }
  return text;
}

std::string BatchText(const Session &session) {
  std::string text;
  session.WriteBatch([&](std::string_view line) { text += line; });
  return text;
}

// The rows of the table and the line of sums, without the headings.
std::vector<std::string> Table(const Session &session) {
  std::vector<std::string> lines = testing_support::Lines(BatchText(session));
  lines.erase(lines.begin(), lines.begin() + 2);
  std::ranges::transform(lines, lines.begin(), Squeezed);
  return lines;
}

std::vector<std::string> Shown(Session &session, size_t width = 80, size_t height = 24) {
  std::vector<std::string> lines;
  for (const Line &line : session.Paint(width, height).lines)
    lines.push_back(TextOf(line));
  return lines;
}

void Type(Session &session, std::string_view keys) {
  for (const char key : keys)
    EXPECT_TRUE(session.Press(static_cast<unsigned char>(key)));
}

using Strings = std::vector<std::string>;

TEST(TopSession, ATreeIsSortedAmongTheMembersOfEachGroup) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed", "max"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session), (Strings{"- host 0.98M max",     //
                                     "    user 600K 700K",   //
                                     "  - system 300K max",  //
                                     "      mail 200K max",  //
                                     "      web 100K 150K",  //
                                     "sum: 5 groups 0.98M"}));
}

TEST(TopSession, TheSumCountsAGroupBelowAnotherOneOnce) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  Type(session, "t/e");  // web is below no other match; system contains mail, which does not match
  session.Press(kKeyEnter);
  EXPECT_EQ(session.view().matches(), 3u);
  EXPECT_EQ(Table(session).back(), "sum: 3 of 5 groups 900K");
  Type(session, "/b");  // narrows the filter to "eb"
  EXPECT_EQ(Table(session).back(), "sum: 1 of 5 groups 100K");
}

TEST(TopSession, AFilterInATreeShowsTheWayToItsMatches) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  Type(session, "/WEB\n");
  EXPECT_EQ(Table(session), (Strings{"- host 0.98M",     //
                                     "  - system 300K",  //
                                     "      web 100K",   //
                                     "sum: 1 of 5 groups 100K"}));
  Type(session, "\x1b");
  EXPECT_EQ(session.view().matches(), 5u);
}

TEST(TopSession, AFoldedGroupHidesItsMembers) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyDown);
  session.Press(kKeyDown);
  EXPECT_EQ(session.settings().selected, "1");
  Type(session, "-");
  EXPECT_EQ(Table(session), (Strings{"- host 0.98M",     //
                                     "    user 600K",    //
                                     "  + system 300K",  //
                                     "sum: 3 of 5 groups 0.98M"}));
  Type(session, "+");
  EXPECT_EQ(session.view().rows().size(), 5u);
}

TEST(TopSession, OneSubtree) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyDown);
  session.Press(kKeyDown);
  session.Press(kKeyEnter);
  EXPECT_EQ(Table(session), (Strings{"- system 300K",  //
                                     "    mail 200K",  //
                                     "    web 100K",   //
                                     "sum: 3 of 5 groups 300K"}));
  EXPECT_NE(Shown(session)[2].find("below system"), std::string::npos);
  session.Press(kKeyBackspace);
  EXPECT_EQ(session.view().rows().size(), 5u);
  EXPECT_EQ(session.settings().selected, "1");
}

TEST(TopSession, ASubtreeThatHasEndedSaysSo) {
  FakeHost smaller;
  smaller.Add({0, "host", -1, 1000}).Add({2, "user", 0, 600});
  FakeFeed feed({SmallHost(), smaller});
  SessionOptions options = OptionsWith(ScreenId::kGroups, {"consumed"});
  options.settings[0].subtree = "1";
  Session session(feed, options);
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.view().rows().size(), 3u);
  ASSERT_TRUE(session.TakeSample());
  EXPECT_TRUE(session.view().rows().empty());
  EXPECT_EQ(Shown(session).back().substr(0, 19), "the group has ended");
  session.Press(kKeyBackspace);
  EXPECT_EQ(session.view().rows().size(), 2u);
}

TEST(TopSession, IdleRowsAreHidden) {
  FakeHost host = SmallHost();
  host.Add({12, "idle", 1, 0}).Add({13, "limited", 1, 0, 500});
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed", "max"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.view().matches(), 7u);
  Type(session, "i");
  EXPECT_EQ(session.view().matches(), 5u) << "a limit is no activity";
  Type(session, "i");
  EXPECT_EQ(session.view().matches(), 7u);
}

TEST(TopSession, MembersAddUpWhereAGroupHasNoFigure) {
  FakeHost host = SmallHost();
  host.AddProcess({100, "sshd", 1, 10}, 7).AddProcess({101, "cron", 1, 10}, 8);
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed", "swapped", "withSwap"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session), (Strings{"- host 0.98M 15K 0.99M",    //
                                     "    user 600K . 600K",      //
                                     "  - system 300K 15K 315K",  //
                                     "      mail 200K . 200K",    //
                                     "      web 100K . 100K",     //
                                     "      sshd 10K 7K 17K",     //
                                     "      cron 10K 8K 18K",     //
                                     "sum: 7 groups 0.98M 15K 0.99M"}));
}

TEST(TopSession, UnavailableIsNotZero) {
  FakeHost host = SmallHost();
  host.Add({12, "gone", 1, 0, kAllOnes, false});
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed", "touched", "conResv"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session), (Strings{"- host 0.98M - .",     //
                                     "    user 600K - .",    //
                                     "  - system 300K - .",  //
                                     "      mail 200K - .",  //
                                     "      web 100K - .",   //
                                     "      gone . . .",     //
                                     "sum: 6 groups 0.98M -"}));
}

TEST(TopSession, RatesNeedTwoSamplesAndACounterThatGrows) {
  const auto hostAt = [](uint64_t web, uint64_t mail) {
    FakeHost host;
    host.Add({0, "host", -1, 1000}).AddMachine({1, "web", 0, 1}, web).AddMachine({2, "mail", 0, 1}, mail);
    return host;
  };
  FakeFeed feed({hostAt(10, 10), hostAt(30, 15), hostAt(30, 5)});
  Session session(feed, OptionsWith(ScreenId::kMachines, {"swapIn", "swapIn/s"}));
  const auto rates = [&] {
    EXPECT_TRUE(session.TakeSample());
    return Table(session);
  };
  EXPECT_EQ(rates(), (Strings{"web 10K -",   //
                              "mail 10K -",  //
                              "sum: 2 machines 20K -"}));
  EXPECT_EQ(rates(), (Strings{"web 30K 20K",  //
                              "mail 15K 5K",  //
                              "sum: 2 machines 45K 25K"}));
  EXPECT_EQ(rates(), (Strings{"web 30K 0K",  //
                              "mail 5K -",   //
                              "sum: 2 machines 35K >0K"}));
}

TEST(TopSession, FiguresOfTheHostDoNotAddUpOverItsMachines) {
  FakeHost host;
  host.Add({0, "host", -1, 1000}).AddMachine({1, "web", 0, 1}, 0).AddMachine({2, "mail", 0, 1}, 0);
  FakeFeed feed({host, host});
  Session session(feed, OptionsWith(ScreenId::kMachines, {"swapIn", "gblSwapIn", "gblSwapIn/s", "totalReg"}));
  ASSERT_TRUE(session.TakeSample());
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session), (Strings{"web 0K 500K 0K 900K",   //
                                     "mail 0K 500K 0K 900K",  //
                                     "sum: 2 machines 0K"}));
  Type(session, "i");
  EXPECT_EQ(session.view().matches(), 0u) << "swapping by the host does not make a machine active";
}

TEST(TopSession, WhatIsFirstReadDuringASampleGivesNoRateYet) {
  FakeHost host;
  host.Add({0, "host", -1, 1000}).AddMachine({1, "web", 0, 1}, 5);
  FakeFeed feed({host, host, host});
  SessionOptions options = OptionsWith(ScreenId::kMachines, {"swapIn/s"});
  options.screen = ScreenId::kGroups;
  Session session(feed, options);
  ASSERT_TRUE(session.TakeSample());
  Type(session, "2");
  EXPECT_EQ(Table(session)[0], "web -");
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session)[0], "web -") << "the first reading was later than its sample";
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session)[0], "web 0K");
  Type(session, "cq");
  EXPECT_EQ(Table(session)[0], "web 0K") << "nothing else was read";
}

TEST(TopSession, NoTextOfASnapshotControlsTheTerminal) {
  EXPECT_EQ(ShellWord("a\x1b]0;'\\\n\xff"), "$'a\\033]0;\\'\\\\\\012\\377'");
  EXPECT_EQ(ShellWord("caf\u00e9"), "'caf\u00e9'");
  EXPECT_EQ(ShellWord("\u202e"), "$'\\342\\200\\256'");
  FakeFeed feed({SmallHost()});
  SessionOptions options = UsualOptions();
  options.screen = ScreenId::kNodes;
  options.settings[static_cast<size_t>(ScreenId::kNodes)].filter = "a\nb\x1b";
  Session session(feed, options);
  ASSERT_TRUE(session.TakeSample());
  Type(session, "w");
  for (const std::string &line : Shown(session, 200))
    EXPECT_EQ(line.find_first_of("\n\x1b"), std::string::npos) << line;
}

TEST(TopSession, TheCommandLineOfAViewWithoutColumnsIsValid) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.CommandLine(), "nodal top --columns name");
}

TEST(TopSession, TheCommandLineNamesTheShownMoment) {
  Recorded recorded;
  recorded.AddGroups(0, 15);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path(), "");
  Session session(*feed, UsualOptions());
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyLeft);
  EXPECT_EQ(session.CommandLine(), "nodal --cache " + recorded.path() + "@2025-11-21T03:12:05Z top");
}

TEST(TopSession, LongNamesAreCutInAFile) {
  FakeHost host;
  host.Add({0, "host", -1, 1});
  for (int64_t id = 1; id <= 30; ++id)
    host.Add({id, std::string(60, 'x'), id - 1, 1});
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session)[30], std::string(42, ' ') + std::string(37, 'x') + "~ 1K");
}

TEST(TopSession, ASubtreeThatNeverWasIsAFailure) {
  FakeFeed feed({SmallHost()});
  SessionOptions options = UsualOptions();
  options.settings[0].subtree = "77";
  Session session(feed, options);
  EXPECT_THROW(session.TakeSample(), Failure);
}

TEST(TopSession, TheLimitsOfAMachineAreThoseOfItsMonitor) {
  FakeHost host;
  host.Add({0, "host", -1, 1000})
      .AddMachine({1, "web", 0, 1, 800}, 0)
      .Add({10, "other", 1, 1, 100})
      .AddMonitor({11, "vmm", 1, 1, 600})
      .AddMachine({2, "mail", 0, 1, 700}, 0);
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kMachines, {"max"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(Table(session), (Strings{"web 600K", "mail -", "2 machines"}));
}

TEST(TopSession, TheCursorFollowsItsRowAndStaysIfTheRowEnds) {
  FakeHost swapped;
  swapped.Add({0, "host", -1, 1000}).Add({1, "system", 0, 700}).Add({2, "user", 0, 200});
  FakeHost ended;
  ended.Add({0, "host", -1, 1000}).Add({2, "user", 0, 200}).Add({3, "new", 0, 100});
  FakeFeed feed({SmallHost(), swapped, ended});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyDown);
  session.Press(kKeyDown);
  EXPECT_EQ(session.settings().selected, "1");
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.settings().selected, "1");
  EXPECT_EQ(session.settings().cursor, 1u);
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.settings().cursor, 1u);
  EXPECT_EQ(session.settings().selected, "2");
}

TEST(TopSession, OnTheFirstLineTheCursorStays) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  Type(session, "tr");  // flat, ascending
  EXPECT_EQ(session.settings().cursor, 0u);
  EXPECT_EQ(session.settings().selected, "10");
}

TEST(TopSession, GroupsInACycleAreShownOnce) {
  FakeHost host = SmallHost();
  host.AddMember(10, 1).AddMember(11, 0).AddMember(2, 2);
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.view().matches(), 5u);
}

TEST(TopSession, MembersThatDoNotExistAreNotShown) {
  FakeHost host = SmallHost();
  host.AddMember(2, 77);
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.view().matches(), 5u);
}

TEST(TopSession, ADeepTreeStillShowsNames) {
  FakeHost host;
  host.Add({0, "host", -1, 1000});
  for (int64_t id = 1; id < 60; ++id)
    host.Add({id, "level " + std::to_string(id), id - 1, 10});
  FakeFeed feed({host});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyEnd);
  const std::vector<std::string> lines = Shown(session, 40, 12);
  EXPECT_NE(lines[9].find("level 59"), std::string::npos) << lines[9];
}

TEST(TopSession, SortsByAnyColumn) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed", "max"}));
  ASSERT_TRUE(session.TakeSample());
  const auto names = [&] {
    Strings found;
    for (const std::string &line : Table(session))
      found.push_back(line.substr(0, line.find(' ')));
    found.pop_back();
    return found;
  };
  Type(session, "t");
  EXPECT_EQ(names(), (Strings{"host", "user", "system", "mail", "web"}));
  Type(session, "r");
  EXPECT_EQ(names(), (Strings{"web", "mail", "system", "user", "host"}));
  Type(session, "r>");  // unlimited is the largest limit
  EXPECT_EQ(names(), (Strings{"host", "system", "mail", "user", "web"}));
  EXPECT_EQ(Shown(session)[3].substr(60), "    consumed    maxv");
  Type(session, "s");
  session.Press(kKeyHome);
  session.Press(kKeyEnter);
  EXPECT_EQ(names(), (Strings{"host", "mail", "system", "user", "web"}));
}

TEST(TopSession, ColumnsAreChosenFromAList) {
  FakeFeed feed({SmallHost()});
  Session session(feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  Type(session, "c");
  EXPECT_EQ(Shown(session)[3].substr(0, 7), "[ ] gid");
  EXPECT_EQ(Shown(session)[6].substr(0, 12), "[x] consumed");
  Type(session, " \n");
  EXPECT_EQ(Table(session)[0], "- host 0 0.98M");
  Type(session, "c \n");
  EXPECT_EQ(Table(session)[0], "- host 0.98M");
}

TEST(TopSession, OtherScreensReadOtherRecords) {
  FakeFeed feed({SmallHost()});
  Session session(feed, UsualOptions());
  ASSERT_TRUE(session.TakeSample());
  for (const char key : std::string_view("2345")) {
    Type(session, {&key, 1});
    EXPECT_NE(Shown(session)[2].find("[" + std::string(1, key)), std::string::npos);
  }
  session.Press(kKeyTab);
  EXPECT_EQ(session.view().matches(), 5u);
}

TEST(TopSession, SpaceStopsAndTheKeysOfAHistoryAreExplained) {
  FakeFeed feed({SmallHost()});
  Session session(feed, UsualOptions());
  ASSERT_TRUE(session.TakeSample());
  EXPECT_TRUE(session.isRunning());
  Type(session, " ");
  EXPECT_FALSE(session.isRunning());
  EXPECT_NE(Shown(session)[0].find("[stopped]"), std::string::npos);
  session.Press(kKeyLeft);
  EXPECT_EQ(Shown(session).back().substr(0, 14), "only a history");
  EXPECT_FALSE(session.Press('q'));
}

TEST(TopSession, TheCommandLineGivesTheSameView) {
  FakeFeed feed({SmallHost()});
  SessionOptions options = OptionsWith(ScreenId::kGroups, {"consumed", "max"});
  options.source = " --cache 'a b'";
  Session session(feed, options);
  ASSERT_TRUE(session.TakeSample());
  Type(session, "ti>ru/it's\n");
  EXPECT_EQ(session.CommandLine(),
            "nodal --cache 'a b' top --columns consumed:max --sort max --reverse --flat --hide-idle "
            "--filter='it'\\''s' --unit b");
  EXPECT_FALSE(session.wantsCommandLine());
  Type(session, "w");
  EXPECT_TRUE(session.wantsCommandLine());
}

TEST(TopSession, ATypedFilterIsTextAndCanBeTakenBack) {
  FakeFeed feed({SmallHost()});
  Session session(feed, UsualOptions());
  ASSERT_TRUE(session.TakeSample());
  Type(session, "/q");
  session.Press(0xe9);
  session.Press(0x732b);
  EXPECT_EQ(session.settings().filter, "q\u00e9\u732b");
  session.Press(0x202e);  // changes the direction of text
  session.Press(kKeyBackspace);
  EXPECT_EQ(session.settings().filter, "q\u00e9");
  EXPECT_TRUE(session.Paint(80, 24).hasCursor);
  session.Press(kKeyEscape);
  EXPECT_EQ(session.settings().filter, "");
}

// Every screen of the example host, in every mode, has exactly the size of the terminal.
TEST(TopSession, EveryScreenFitsTheTerminal) {
  const std::unique_ptr<Feed> feed = OpenFeed(SAMPLE_SNAPSHOT, "");
  for (const auto &[width, height] : {std::pair(80, 24), {200, 60}, {40, 10}, {7, 3}, {1, 1}, {0, 0}}) {
    const std::unique_ptr<Feed> fresh = OpenFeed(SAMPLE_SNAPSHOT, "");
    Session session(*fresh, UsualOptions());
    ASSERT_TRUE(session.TakeSample());
    for (const char *keys : {"1", "2", "3", "4", "5", "?", "x", "c", "q", "1s", "\x1b", "/x"}) {
      Type(session, keys);
      const Frame frame = session.Paint(static_cast<size_t>(width), static_cast<size_t>(height));
      EXPECT_EQ(frame.lines.size(), static_cast<size_t>(height)) << keys;
      for (const Line &line : frame.lines) {
        const std::string text = TextOf(line);
        EXPECT_TRUE(text.empty() || WidthOf(text) == static_cast<size_t>(width)) << width << " " << keys << text;
      }
    }
  }
}

TEST(TopSession, StepsThroughAHistory) {
  Recorded recorded;
  recorded.AddGroups(0, 15);
  recorded.host().bootId[0] = std::byte{1};
  recorded.AddGroups(7200, 7210);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path() + "@-1h", "");
  Session session(*feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_FALSE(session.isRunning());
  const auto time = [&] { return Shown(session)[0].substr(18, 20); };
  EXPECT_EQ(time(), "2025-11-21T03:12:10Z");
  session.Press(kKeyLeft);
  EXPECT_EQ(time(), "2025-11-21T03:12:05Z");
  session.Press(kKeyLeft);
  EXPECT_EQ(time(), "2025-11-21T03:12:00Z");
  session.Press(kKeyLeft);
  EXPECT_EQ(time(), "2025-11-21T03:12:00Z");
  EXPECT_EQ(Shown(session).back().substr(0, 24), "this is the first sample");
  for (int i = 0; i < 3; ++i)
    session.Press(kKeyRight);
  EXPECT_EQ(time(), "2025-11-21T05:12:00Z") << "the next segment";
  EXPECT_EQ(feed->Seconds(), 0) << "after a reboot";
  session.Press(kKeyRight);
  EXPECT_EQ(time(), "2025-11-21T05:12:05Z");
  EXPECT_EQ(feed->Seconds(), 5);
  session.Press(kKeyRight);
  EXPECT_EQ(Shown(session).back().substr(0, 23), "this is the last sample");
  recorded.AddGroups(7210, 7215);
  session.Press(kKeyRight);
  EXPECT_EQ(time(), "2025-11-21T05:12:10Z") << "recorded in the meantime";
}

TEST(TopSession, SpacePlaysAHistoryToItsEnd) {
  Recorded recorded;
  recorded.AddGroups(0, 10);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path() + "@2025-11-21T03:12:00Z", "");
  Session session(*feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  Type(session, " ");
  EXPECT_TRUE(session.isRunning());
  EXPECT_TRUE(session.TakeSample());
  EXPECT_FALSE(session.TakeSample());
  EXPECT_FALSE(session.isRunning());
}

// Changes the last byte of a frame.
void Damage(const Recorded &recorded, size_t frame) {
  const std::string file = recorded.Segment(0);
  platkit::history::SegmentReader reader;
  platkit::history::HistoryFolder folder;
  ASSERT_EQ(folder.Open(recorded.path().c_str()), HVC_OK);
  ASSERT_EQ(reader.Open(folder.fd(), file.substr(file.rfind('/') + 1).c_str()), HVC_OK);
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  const auto &damaged = reader.frames()[frame];
  stream.seekp(static_cast<std::streamoff>(damaged.start + damaged.bytes - 1));
  stream.put('\x55');
}

TEST(TopSession, DamagedSamplesAreLeftOut) {
  Recorded recorded;
  recorded.AddGroups(0, 15);
  Damage(recorded, 1);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path() + "@2025-11-21T03:12:00Z", "");
  Session session(*feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  session.Press(kKeyRight);
  EXPECT_NE(Shown(session).back().find("damaged"), std::string::npos) << Shown(session).back();
}

TEST(TopSession, ADamagedMomentIsRefused) {
  Recorded recorded;
  recorded.AddGroups(0, 15);
  Damage(recorded, 2);
  EXPECT_THROW(OpenFeed(recorded.path() + "@2025-11-21T03:12:10Z", ""), Failure);
  EXPECT_NO_THROW(OpenFeed(recorded.path() + "@2025-11-21T03:12:05Z", ""));
}

TEST(TopSession, ADamagedEndOfAHistoryIsTold) {
  Recorded recorded;
  recorded.AddGroups(0, 15);
  Damage(recorded, 2);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path() + "@2025-11-21T03:12:05Z", "");
  Session session(*feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.problem(), "");
  EXPECT_FALSE(session.TakeSample());
  EXPECT_EQ(session.problem(), "left out: 1 damaged sample");
  const std::unique_ptr<Feed> last = OpenFeed(recorded.path(), "");
  Session atEnd(*last, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(atEnd.TakeSample());
  EXPECT_EQ(Table(atEnd).back(), "left out: 1 damaged sample");
}

TEST(TopSession, SamplesOfOtherDefinitionsAreLeftOut) {
  Recorded recorded;
  recorded.AddGroups(0, 10);
  std::ranges::reverse(recorded.host().definitions.signature);
  recorded.AddGroups(3600, 3610);
  std::ranges::reverse(recorded.host().definitions.signature);
  recorded.AddGroups(7200, 7205);
  const std::unique_ptr<Feed> feed = OpenFeed(recorded.path() + "@2025-11-21T03:12:05Z", "");
  Session session(*feed, OptionsWith(ScreenId::kGroups, {"consumed"}));
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(session.problem(), "");
  ASSERT_TRUE(session.TakeSample());
  EXPECT_EQ(feed->Time(), "2025-11-21T05:12:00Z");
  EXPECT_EQ(session.problem(), "left out: 2 samples of another version");
  session.Press(kKeyLeft);
  EXPECT_EQ(feed->Time(), "2025-11-21T03:12:05Z");
  EXPECT_EQ(session.problem(), "left out: 2 samples of another version");
  EXPECT_THROW(OpenFeed(recorded.path() + "@2025-11-21T04:12:05Z", ""), Failure);
}

}  // namespace
}  // namespace nodal::top
