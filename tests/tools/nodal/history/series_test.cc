// nodal series.
#include <algorithm>

#include "tests/tools/nodal/history/recorded.h"
#include "tools/nodal/history/figure.h"

namespace nodal {
namespace {

using testing_support::Lines;

constexpr const char *kConsumed = " '/sched/groups/*/stats/memoryStats.consumed'";

TEST(SeriesCommand, ShowsEverySample) {
  Recorded history;
  history.AddGroups(0, 10);
  EXPECT_EQ(Nodal("series " + history.path() + kConsumed).out,
            "time,figure,value\n"
            "2025-11-21T03:12:00Z,/sched/groups/1/stats/memoryStats.consumed,1000\n"
            "2025-11-21T03:12:00Z,/sched/groups/2/stats/memoryStats.consumed,1000\n"
            "2025-11-21T03:12:05Z,/sched/groups/1/stats/memoryStats.consumed,1050\n"
            "2025-11-21T03:12:05Z,/sched/groups/2/stats/memoryStats.consumed,1005\n");
}

TEST(SeriesCommand, ShowsTheValuesOfSteps) {
  Recorded history;
  history.AddGroups(55, 100);
  EXPECT_EQ(Nodal("series --step 30s " + history.path() + " /sched/groups/1/memAllocationInKB.shares").out,
            "time,figure,samples,min,max,last\n"
            "2025-11-21T03:12:30Z,/sched/groups/1/memAllocationInKB.shares,1,-55,-55,-55\n"
            "2025-11-21T03:13:00Z,/sched/groups/1/memAllocationInKB.shares,6,-85,-60,-85\n"
            "2025-11-21T03:13:30Z,/sched/groups/1/memAllocationInKB.shares,2,-95,-90,-95\n");
}

TEST(SeriesCommand, ShowsJson) {
  Recorded history;
  history.AddGroups(0, 5);
  EXPECT_EQ(
      Nodal("series --json " + history.path() + " /sched/groups/1/stats/memoryStats.consumed" +
            " /sched/groups/1/stats/memoryStats.touched")
          .out,
      "[\n"
      R"(  {"time": "2025-11-21T03:12:00Z", "figure": "/sched/groups/1/stats/memoryStats.consumed", "value": 1000},)"
      "\n"
      R"(  {"time": "2025-11-21T03:12:00Z", "figure": "/sched/groups/1/stats/memoryStats.touched", "value": null})"
      "\n]\n");
  EXPECT_EQ(Nodal("series --step 1m --json " + history.path() + " /sched/groups/1/stats/memoryStats.touched").out,
            "[\n"
            R"(  {"time": "2025-11-21T03:12:00Z", "figure": "/sched/groups/1/stats/memoryStats.touched", )"
            R"("samples": 0, "min": null, "max": null, "last": null})"
            "\n]\n");
}

// A figure that is not available has no value.
TEST(SeriesCommand, LeavesOutWhatIsNotAvailable) {
  Recorded history;
  history.AddGroups(0, 5);
  EXPECT_EQ(Nodal("series " + history.path() + " /sched/groups/1/stats/memoryStats.touched").out,
            "time,figure,value\n2025-11-21T03:12:00Z,/sched/groups/1/stats/memoryStats.touched,\n");
}

TEST(SeriesCommand, HasARange) {
  Recorded history;
  history.AddGroups(0, 7300);
  const auto lines = [&](const std::string &words) {
    return Lines(Nodal("series " + words + " " + history.path() + " /sched/groups/1/stats/memoryStats.consumed").out)
               .size() -
           1;
  };
  EXPECT_EQ(lines(""), 1460u);
  EXPECT_EQ(lines("--from 2025-11-21T03:12:10Z --to 2025-11-21T03:12:20Z"), 3u);
  EXPECT_EQ(lines("--from=-1m"), 13u);
  EXPECT_EQ(lines("--from 2025-11-21T04:59:50Z --to 2025-11-21T05:00:10Z"), 5u);
}

TEST(SeriesCommand, RefusesUnknownWords) {
  Recorded history;
  history.AddGroups(0, 5);
  const auto error = [&](const std::string &words, int status = 1) {
    const Outcome outcome = Nodal("series " + words);
    EXPECT_EQ(outcome.status, status) << words;
    return outcome.err;
  };
  const std::string figure = " /sched/groups/1/stats/memoryStats.consumed";
  for (const char *name :
       {"/sched/groups/1/stats/memoryStats.what", "/sched/groups/1/stats/memoryStats", "/what.consumed",
        "/sched/groups/1/groupName.name", "memoryStats.consumed", "/sched/groups.consumed"}) {
    EXPECT_EQ(error(history.path() + " " + name),
              "nodal: " + std::string(name) +
                  ": no such figure (expected PATH.FIELD, such as /sched/groups/*/stats/memoryStats.consumed)\n");
  }
  EXPECT_EQ(error(history.path() + " /sched/groups/9/stats/memoryStats.consumed"),
            "nodal: " + history.path() + ": no sample in the range contains any of the figures\n");
  EXPECT_EQ(error(history.path() + " --step 10" + figure, 2),
            "nodal: --step 10: expected a number and s, m, h or d, such as 10s\n");
  EXPECT_NE(
      error(history.path() + " --from later" + figure, 2).find("nodal: --from later: invalid time (expected a form"),
      std::string::npos);
  EXPECT_EQ(error(history.path() + " --from=-0s --to=-1m" + figure, 2), "nodal: --from -0s: after --to -1m\n");
  EXPECT_EQ(error(history.path() + " --from 2030-01-01T00:00:00Z" + figure),
            "nodal: " + history.path() + ": the history ends before --from, at 2025-11-21T03:12:00Z\n");
  EXPECT_EQ(error(history.path() + " --to 2020-01-01T00:00:00Z" + figure),
            "nodal: " + history.path() + ": the history starts after --to, at 2025-11-21T03:12:00Z\n");
  EXPECT_EQ(error("no-such-folder" + figure), "nodal: no-such-folder: no such folder\n");
  EXPECT_EQ(error(history.scratch().folder() + figure),
            "nodal: " + history.scratch().folder() + ": no history in this folder\n");
}

// Damaged samples are omitted, with a message.
TEST(SeriesCommand, TellsOfDamage) {
  Recorded history;
  history.AddGroups(0, 100);
  std::string bytes = Contents(history.Segment(0));
  bytes[100] ^= 1;  // in the first key frame
  testing_support::WriteFile(history.Segment(0), bytes);
  const Outcome outcome = Nodal("series " + history.path() + " /sched/groups/1/stats/memoryStats.consumed");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(Lines(outcome.out).size(), 1u + 8);
  EXPECT_NE(outcome.err.find("left out"), std::string::npos) << outcome.err;
}

TEST(FigureNames, CanBeOfArrays) {
  const platkit::RecordLayout *withArray = nullptr;
  const platkit::Field *array = nullptr;
  for (const platkit::Node &node : platkit::Nodes()) {
    if (!node.isRecord()) continue;
    for (const platkit::Field &field : node.record->fields) {
      if (field.type == platkit::FieldType::kEntries) withArray = node.record, array = &field;
    }
  }
  ASSERT_NE(array, nullptr);
  const auto inner = std::ranges::find_if(array->entry->fields, [](const platkit::Field &field) {
    return field.type == platkit::FieldType::kU32 || field.type == platkit::FieldType::kU64;
  });
  ASSERT_NE(inner, array->entry->fields.end());
  const std::string name = std::string(array->name) + "[1]." + std::string(inner->name);
  const std::optional<FigureField> field = FindField(*withArray, name);
  ASSERT_TRUE(field);
  EXPECT_EQ(field->offset, array->offset + array->size + inner->offset);
  EXPECT_FALSE(FindField(
      *withArray, std::string(array->name) + "[" + std::to_string(array->count) + "]." + std::string(inner->name)));
  EXPECT_FALSE(FindField(*withArray, std::string(array->name)));
  EXPECT_FALSE(FindField(*withArray, std::string(array->name) + "[1]"));
  EXPECT_FALSE(FindField(*withArray, std::string(array->name) + "[x]." + std::string(inner->name)));
}

TEST(Pattern, MatchesWithinComponents) {
  EXPECT_TRUE(MatchesPattern("/a/*/c", "/a/b/c"));
  EXPECT_TRUE(MatchesPattern("/a/*/c", "/a//c"));
  EXPECT_FALSE(MatchesPattern("/a/*/c", "/a/b/b/c"));
  EXPECT_TRUE(MatchesPattern("/a/v*m*", "/a/vm-vm"));
  EXPECT_FALSE(MatchesPattern("/a/*", "/a/b/c"));
  EXPECT_TRUE(MatchesPattern("/*/x*y", "/ab/xxyxy"));
  EXPECT_FALSE(MatchesPattern("/a*/b", "/a/c/b"));
  EXPECT_TRUE(MatchesPattern("/a", "/a"));
  EXPECT_FALSE(MatchesPattern("/a", "/ab"));
  EXPECT_FALSE(MatchesPattern("/ab", "/a"));
  EXPECT_TRUE(MatchesPattern("/a**", "/a"));
  EXPECT_FALSE(MatchesPattern("/*a*a*a*a*a*a*a*a*b", "/" + std::string(4000, 'a')));
}

}  // namespace
}  // namespace nodal
