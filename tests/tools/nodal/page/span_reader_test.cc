#include "tools/nodal/page/span_reader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/tools/nodal/history/recorded.h"
#include "tools/nodal/page/figure_budget.h"
#include "tools/nodal/page/span_json.h"

namespace nodal {
namespace {

PageSpan SpanOfHistory(const Recorded &history, const std::string &from = "", const std::string &to = "") {
  return ReadSpan({.folder = history.path(), .from = from, .to = to}, nullptr).span;
}

const SpanColumn &ColumnOf(const SpanFamily &family, const Node &node, std::string_view name) {
  for (const SpanRecords &records : family.records) {
    if (records.node != &node) continue;
    for (const SpanColumn &column : records.columns) {
      if (column.column.name == name) return column;
    }
  }
  throw std::runtime_error("no column " + std::string(name));
}

const SpanColumn &Consumed(const PageSpan &span) {
  return ColumnOf(span.groups, nodes::sched_groups_stats_memoryStats, "consumed");
}

size_t RowOfGroup(const PageSpan &span, int64_t id) {
  const auto found = std::ranges::find(span.groups.rows, id, &PageRow::id);
  EXPECT_NE(found, span.groups.rows.end());
  return static_cast<size_t>(found - span.groups.rows.begin());
}

// A sample in which group 0 has these members, and each of them consumes 100 KB.
Sample GroupsOf(const std::vector<int64_t> &members) {
  Sample sample;
  sample.Add("/sched/groups/0/members/groups", platkit::history::ValueType::kIntegers,
             std::as_bytes(std::span(members)));
  for (const int64_t group : members) {
    GroupMemoryStatsRecord stats = {};
    stats.consumed = 100;
    AddRecord(sample, "/sched/groups/" + std::to_string(group) + "/stats/memoryStats", stats);
  }
  sample.Sort();
  return sample;
}

TEST(StepOfSpan, IsAMinuteForADay) {
  constexpr int64_t kHours = 3600;
  EXPECT_EQ(StepOfSpan(24 * kHours, 5), 60);
  EXPECT_EQ(StepOfSpan(kHours, 5), 5);
  EXPECT_EQ(StepOfSpan(kHours, 1), 5);
  EXPECT_EQ(StepOfSpan(600, 1), 1);
  EXPECT_EQ(StepOfSpan(600, 60), 60);
  EXPECT_EQ(StepOfSpan(31 * 24 * kHours, 5), 1800);
  EXPECT_EQ(StepOfSpan(0, 5), 5);
  EXPECT_LT(INT64_MAX / StepOfSpan(INT64_MAX, 5), 1500);
  EXPECT_EQ(StepOfSpan(600, INT32_MAX / 1000), 600);
}

TEST(StepOfSpan, GivesAtMostAsManySteps) {
  for (int64_t seconds = 1; seconds < 100'000'000; seconds += 1 + seconds / 500) {
    const int64_t step = StepOfSpan(seconds, 1);
    // In the worst case, the span starts at the last second of a step.
    EXPECT_LE((step - 1 + seconds) / step + 1, 1500) << seconds;
  }
}

TEST(SpanReader, ReadsTheFirstSampleOfEachStep) {
  Recorded history;
  history.AddGroups(0, 9000);
  const PageSpan span = SpanOfHistory(history);
  EXPECT_EQ(span.step, 10);
  EXPECT_EQ(span.samples, 1800u);
  ASSERT_EQ(span.seconds.size(), 900u);
  EXPECT_EQ(span.seconds[1], kStart + 10);
  const SpanColumn &consumed = Consumed(span);
  const size_t row = RowOfGroup(span, 1);
  EXPECT_EQ(ValueAt(consumed.values[row], 7), NumberValue(1000 + 700));
  // The second sample of a step has 50 KB more.
  EXPECT_EQ(ValueAt(consumed.below[row], 7), NumberValue(0));
  EXPECT_EQ(ValueAt(consumed.above[row], 7), NumberValue(50));
}

TEST(SpanReader, ReadsTheLastSampleOfASecond) {
  Recorded history;
  for (const int64_t millis : {0, 300, 600, 1000, 1500}) {
    SampleInfo info = {.time = ClocksAt(0)};
    info.time.wall += millis * 1'000'000;
    info.time.boot += millis * 1'000'000;
    history.Add(GroupsAt(millis), info);
  }
  history.host().intervalMillis = 300;
  history.AddGroups(2, 3);
  const PageSpan span = SpanOfHistory(history);
  ASSERT_EQ(span.step, 1);
  EXPECT_EQ(span.seconds, (std::vector<int64_t>{kStart, kStart + 1, kStart + 2}));
  const SpanColumn &consumed = Consumed(span);
  const size_t row = RowOfGroup(span, 1);
  EXPECT_EQ(ValueAt(consumed.values[row], 0), NumberValue(1000 + 6000));
  EXPECT_EQ(ValueAt(consumed.below[row], 0), NumberValue(6000));
  EXPECT_EQ(ValueAt(consumed.values[row], 1), NumberValue(1000 + 15000));
}

// A sample in which group 1 consumes this much memory.
Sample GroupOfSize(uint64_t consumed) {
  Sample sample = GroupsOf({1});
  Sample changed;
  for (size_t i = 0; i < sample.size(); ++i) {
    if (!sample[i].key.ends_with("memoryStats")) changed.Add(sample[i].key, sample[i].type, sample[i].payload);
  }
  GroupMemoryStatsRecord stats = {};
  stats.consumed = consumed;
  AddRecord(changed, "/sched/groups/1/stats/memoryStats", stats);
  changed.Sort();
  return changed;
}

// A span in steps of ten seconds, with two samples per step. In each sample, group 1 consumes one of these amounts.
PageSpan SpanOfSizes(Recorded &history, std::initializer_list<uint64_t> sizes) {
  int64_t second = 0;
  for (const uint64_t size : sizes)
    history.Add(GroupOfSize(size), 5 * second++);
  history.AddGroups(8995, 9000);
  return SpanOfHistory(history);
}

TEST(SpanReader, HasBandsOfStepsThatStartWithoutTheFigure) {
  Recorded history;
  const PageSpan span = SpanOfSizes(history, {100, 100, UINT64_MAX, 700, UINT64_MAX, UINT64_MAX});
  ASSERT_EQ(span.step, 10);
  const SpanColumn &consumed = Consumed(span);
  const size_t row = RowOfGroup(span, 1);
  EXPECT_EQ(ValueAt(consumed.values[row], 1).kind, FigureValue::kAllOnes);
  EXPECT_EQ(ValueAt(consumed.below[row], 1), NumberValue(-700));
  EXPECT_EQ(ValueAt(consumed.above[row], 1), NumberValue(700));
  EXPECT_EQ(ValueAt(consumed.above[row], 2), FigureValue());
}

// Only a forged history contains amounts that are this large.
TEST(SpanReader, BoundsAmounts) {
  Recorded history;
  const PageSpan span = SpanOfSizes(history, {UINT64_MAX - 1, 1, 1, UINT64_MAX - 1});
  const SpanColumn &consumed = Consumed(span);
  const size_t row = RowOfGroup(span, 1);
  EXPECT_EQ(ValueAt(consumed.values[row], 0), NumberValue(INT64_MAX));
  EXPECT_EQ(ValueAt(consumed.below[row], 0), NumberValue(INT64_MAX - 1));
  EXPECT_EQ(ValueAt(consumed.above[row], 0), NumberValue(0));
  EXPECT_EQ(ValueAt(consumed.above[row], 1), NumberValue(INT64_MAX - 1));
}

TEST(SpanReader, ReadsARange) {
  Recorded history;
  history.AddGroups(0, 7300);
  const PageSpan span = SpanOfHistory(history, "2025-11-21T03:12:10Z", "2025-11-21T03:12:20Z");
  EXPECT_EQ(span.seconds, (std::vector<int64_t>{kStart + 10, kStart + 15, kStart + 20}));
}

TEST(SpanReader, ReadsFiguresThatAreNotAvailable) {
  Recorded history;
  history.AddGroups(0, 20);
  const PageSpan span = SpanOfHistory(history);
  const SpanColumn &touched = ColumnOf(span.groups, nodes::sched_groups_stats_memoryStats, "touched");
  EXPECT_EQ(ValueAt(touched.values[RowOfGroup(span, 1)], 2).kind, FigureValue::kAllOnes);
  EXPECT_EQ(ValueAt(touched.values[0], 2).kind, FigureValue::kNoRecord);
}

TEST(SpanReader, TellsWhenGroupsAreThere) {
  Recorded history;
  history.Add(GroupsOf({1}), 0);
  history.Add(GroupsOf({1, 2}), 5);
  history.Add(GroupsOf({1}), 10);
  history.Add(GroupsOf({1, 2}), 15);
  const PageSpan span = SpanOfHistory(history);
  EXPECT_EQ(span.groups.rows.size(), 3u);
  EXPECT_EQ(span.groups.lives[RowOfGroup(span, 1)], (FigureChanges{{0, NumberValue(1)}}));
  EXPECT_EQ(span.groups.lives[RowOfGroup(span, 2)],
            (FigureChanges{{1, NumberValue(1)}, {2, NumberValue(0)}, {3, NumberValue(1)}}));
}

TEST(SpanReader, GivesAReusedIdentifierARowOfItsOwn) {
  Recorded history;
  for (const auto &[second, name] : {std::pair(0, "first"), {5, "second"}}) {
    Sample sample = GroupsOf({1});
    GroupNameRecord record = {};
    std::strncpy(record.name, name, sizeof record.name - 1);
    AddRecord(sample, "/sched/groups/1/groupName", record);
    sample.Sort();
    history.Add(std::move(sample), second);
  }
  const PageSpan span = SpanOfHistory(history);
  ASSERT_EQ(span.groups.rows.size(), 3u);
  EXPECT_EQ(span.groups.rows[1].name, "first");
  EXPECT_EQ(span.groups.rows[2].name, "second");
  EXPECT_EQ(ValueAt(span.groups.lives[1], 1), NumberValue(0));
  EXPECT_EQ(ValueAt(Consumed(span).values[2], 0), FigureValue());
  EXPECT_EQ(ValueAt(Consumed(span).values[2], 1), NumberValue(100));
}

TEST(SpanReader, NamesTheHostWhenItsNameCanBeRead) {
  Recorded history;
  history.Add(GroupsOf({1}), 0);
  Sample sample = GroupsOf({1});
  const GroupNameRecord record = {.name = "host"};
  AddRecord(sample, "/sched/groups/0/groupName", record);
  sample.Sort();
  history.Add(std::move(sample), 5);
  const PageSpan span = SpanOfHistory(history);
  ASSERT_EQ(span.groups.rows.size(), 2u);
  EXPECT_EQ(span.groups.rows[0].name, "host");
}

TEST(SpanReader, TellsWhatCouldNotBeRead) {
  Recorded history;
  history.Add(GroupsOf({1}), 0);
  Sample sample;
  constexpr HVC_ReturnStatus kStatus = HVC_NO_PERMISSION;
  const int64_t member = 1;
  sample.Add("/sched/groups/0/members/groups", platkit::history::ValueType::kIntegers,
             std::as_bytes(std::span(&member, 1)));
  AddRecord(sample, "failed:/sched/groups/1/stats/memoryStats", kStatus);
  AddRecord(sample, "failed:/system/heaps", kStatus);
  history.Add(std::move(sample), 5);
  history.Add(GroupsOf({1}), 10);
  const PageSpan span = SpanOfHistory(history);
  const SpanColumn &consumed = Consumed(span);
  EXPECT_EQ(ValueAt(consumed.values[1], 0), NumberValue(100));
  EXPECT_EQ(ValueAt(consumed.values[1], 1).kind, FigureValue::kUnreadable);
  EXPECT_EQ(ValueAt(consumed.values[1], 2), NumberValue(100));
  ASSERT_EQ(span.unreadableLists.size(), 1u);
  EXPECT_EQ(span.unreadableLists[0].path, "/system/heaps");
  EXPECT_EQ(span.unreadableLists[0].instants, (std::vector<std::pair<uint32_t, uint32_t>>{{1, 2}}));
}

// A sample with one group. The read of the group's memory figures returned this status, so the sample has these figures
// only if the status is HVC_OK.
Sample GroupReadWith(HVC_ReturnStatus status) {
  if (status == HVC_OK) return GroupsOf({1});
  Sample sample;
  const int64_t member = 1;
  sample.Add("/sched/groups/0/members/groups", platkit::history::ValueType::kIntegers,
             std::as_bytes(std::span(&member, 1)));
  AddRecord(sample, "failed:/sched/groups/1/stats/memoryStats", status);
  sample.Sort();
  return sample;
}

TEST(SpanReader, KeepsTheReasonsOfFailedReadsByTime) {
  Recorded history;
  int64_t second = 0;
  for (const HVC_ReturnStatus status : {HVC_NO_PERMISSION, HVC_NO_PERMISSION, HVC_OK, HVC_IO_ERROR})
    history.Add(GroupReadWith(status), 5 * second++);
  const PageSpan span = SpanOfHistory(history);
  const auto records = std::ranges::find(span.groups.records, nodes::sched_groups_stats_memoryStats.id(),
                                         [](const SpanRecords &each) { return each.node->id; });
  ASSERT_NE(records, span.groups.records.end());
  EXPECT_EQ(records->unreadable.at(1),
            (FigureChanges{{0, NumberValue(HVC_NO_PERMISSION)}, {3, NumberValue(HVC_IO_ERROR)}}));
}

TEST(SpanReader, TellsOfDamageOnce) {
  Recorded history;
  history.AddGroups(0, 600);
  std::fstream file(history.Segment(0), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(std::filesystem::file_size(history.Segment(0)) / 2));
  file.write("damage", 6);
  file.close();
  testing::internal::CaptureStderr();
  SpanOfHistory(history);
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("damaged"), std::string::npos) << told;
  EXPECT_EQ(told.find("damaged part"), told.rfind("damaged part")) << told;
}

TEST(SpanReader, TellsOfGaps) {
  Recorded history;
  history.AddGroups(0, 20);
  history.AddGroups(100, 120);
  const PageSpan span = SpanOfHistory(history);
  ASSERT_EQ(span.events.size(), 1u);
  EXPECT_EQ(span.events[0].from, kStart + 15);
  EXPECT_EQ(span.events[0].to, kStart + 100);
  EXPECT_EQ(span.events[0].reasons, "no samples were taken");
}

// Records of another version may differ in size from this program's.
TEST(SpanReader, LeavesOutSamplesOfOtherDefinitions) {
  Recorded history;
  history.AddGroups(0, 10);
  const platkit::Definitions own = history.host().definitions;
  history.host().definitions.signature += "x";
  history.AddGroups(10, 20);
  history.host().definitions = own;
  history.AddGroups(20, 30);
  const PageSpan span = SpanOfHistory(history);
  EXPECT_EQ(span.seconds, (std::vector<int64_t>{kStart, kStart + 5, kStart + 20, kStart + 25}));
  ASSERT_EQ(span.events.size(), 1u);
  EXPECT_EQ(span.events[0].reasons, "samples of another version were left out");
}

TEST(SpanReader, TellsOfOtherDefinitionsAtTheEnds) {
  Recorded history;
  const platkit::Definitions own = history.host().definitions;
  history.host().definitions.signature += "x";
  history.AddGroups(0, 10);
  EXPECT_THROW(
      try { SpanOfHistory(history); } catch (const Failure &failure) {
        EXPECT_NE(std::string(failure.what()).find("another version"), std::string::npos) << failure.what();
        throw;
      },
      Failure);
  history.host().definitions = own;
  history.AddGroups(10, 20);
  history.host().definitions.signature += "x";
  history.AddGroups(20, 30);
  const PageSpan span = SpanOfHistory(history);
  EXPECT_EQ(span.seconds, (std::vector<int64_t>{kStart + 10, kStart + 15}));
  ASSERT_EQ(span.events.size(), 2u);
  EXPECT_EQ(span.events[0].from, kStart);
  EXPECT_EQ(span.events[0].to, kStart + 10);
  EXPECT_EQ(span.events[1].from, kStart + 15);
  EXPECT_EQ(span.events[1].to, kStart + 25);
}

TEST(SpanReader, RefusesTooManyFigures) {
  FigureBudget budget("folder", 100);
  budget.TakeRow(160);
  budget.Take(58);
  EXPECT_THROW(budget.Take(), Failure);
}

TEST(PackedSpan, IsExactIfItIsSmall) {
  Recorded history;
  history.AddGroups(0, 600);
  const PageSpan span = SpanOfHistory(history);
  EXPECT_EQ(Packed(span, 100'000).tolerance, 0);
  EXPECT_GT(Packed(span, 1).tolerance, 0);
}

}  // namespace
}  // namespace nodal
