#include "platkit/history/history_folder.h"

#include <sys/stat.h>

#include "platkit/history/format.h"
#include "tests/platkit/history/recording.h"

namespace platkit::history {
namespace {

TEST(SegmentName, IsTheHourInUtc) {
  EXPECT_EQ(SegmentName::At(0).text(), "1970-01-01T00Z.history");
  EXPECT_EQ(SegmentName::At(-1).text(), "1970-01-01T00Z.history");
  EXPECT_EQ(SegmentName::At(kStart).text(), "2025-11-21T03Z.history");
  EXPECT_EQ(SegmentName::At(1'709'251'199 * kNanosInSecond).text(), "2024-02-29T23Z.history");
  EXPECT_EQ(SegmentName::At(INT64_MAX).text(), "2262-04-11T23Z.history");
}

TEST(SegmentName, ParsesItsOwnText) {
  for (const int64_t wall : {int64_t{0}, kStart, 1'709'251'199 * kNanosInSecond, INT64_MAX})
    EXPECT_EQ(SegmentName::Parse(SegmentName::At(wall).text()), SegmentName::At(wall));
}

TEST(SegmentName, RefusesOtherNames) {
  for (const char *name : {"", "2025-11-21T03Z", "2025-11-21T24Z.history", "2025-02-29T03Z.history",
                           "2025-13-01T03Z.history", "2025-00-01T03Z.history", "1969-12-31T23Z.history",
                           "2025-11-21T03Z.history~", " 2025-11-21T03Z.history", "2025-11-2\xb2T03Z.history"})
    EXPECT_FALSE(SegmentName::Parse(name)) << name;
}

TEST(HistoryFolder, ListsSegmentsInTheOrderOfTime) {
  const Scratch scratch;
  for (const char *name : {"2025-11-21T03Z.history", "2024-02-29T23Z.history", "2025-11-21T02Z.history", "lock",
                           "2025-11-21T02Z.history.tmp"})
    scratch.Write(name, "");
  HistoryFolder folder;
  ASSERT_EQ(folder.Open(scratch.folder().c_str()), HVC_OK);
  std::vector<SegmentName> names;
  ASSERT_EQ(folder.List(names), HVC_OK);
  ASSERT_EQ(folder.List(names), HVC_OK);  // once more
  std::string text;
  for (const SegmentName &name : names)
    text += name.text() + "\n";
  EXPECT_EQ(text, "2024-02-29T23Z.history\n2025-11-21T02Z.history\n2025-11-21T03Z.history\n");
}

TEST(SetAsideName, ParsesItsOwnText) {
  for (const uint32_t number : {1u, 2u, 10u, UINT32_MAX}) {
    const SetAsideName name = {.segment = SegmentName::At(kStart), .number = number};
    EXPECT_EQ(SetAsideName::Parse(name.text()), name);
  }
  EXPECT_EQ((SetAsideName{.segment = SegmentName::At(kStart)}.text()), "2025-11-21T03Z.history.damaged");
  EXPECT_EQ((SetAsideName{.segment = SegmentName::At(kStart), .number = 2}.text()), "2025-11-21T03Z.history.damaged.2");
}

TEST(SetAsideName, RefusesOtherNames) {
  for (const std::string name : {"", "2025-11-21T03Z", "2025-11-21T03Z.history", "2025-11-21T24Z.history.damaged"})
    EXPECT_FALSE(SetAsideName::Parse(name)) << name;
  for (const char *end : {".", ".0", ".1", ".02", ".-2", ".2x", "x2", ".4294967296", ".2.2", ".damaged"})
    EXPECT_FALSE(SetAsideName::Parse("2025-11-21T03Z.history.damaged" + std::string(end))) << end;
}

TEST(HistoryFolder, ListsFilesThatWereSetAside) {
  const Scratch scratch;
  for (const char *name :
       {"2025-11-21T03Z.history", "2025-11-21T03Z.history.damaged.10", "2025-11-21T03Z.history.damaged",
        "2025-11-21T02Z.history.damaged.2", "2025-11-21T03Z.history.damaged.2"})
    scratch.Write(name, "");
  HistoryFolder folder;
  ASSERT_EQ(folder.Open(scratch.folder().c_str()), HVC_OK);
  std::vector<SegmentName> segments;
  std::vector<SetAsideName> names;
  ASSERT_EQ(folder.List(segments, names), HVC_OK);
  EXPECT_EQ(segments, std::vector<SegmentName>{SegmentName::At(kStart)});
  std::string text;
  for (const SetAsideName &name : names)
    text += name.text() + "\n";
  EXPECT_EQ(text,
            "2025-11-21T02Z.history.damaged.2\n2025-11-21T03Z.history.damaged\n2025-11-21T03Z.history.damaged.2\n"
            "2025-11-21T03Z.history.damaged.10\n");
}

TEST(HistoryFolder, NeedsAFolder) {
  const Scratch scratch;
  EXPECT_EQ(HistoryFolder().Open(scratch.Path("none").c_str()), HVC_NOT_FOUND);
  EXPECT_EQ(HistoryFolder().Open(scratch.Write("file", "").c_str()), HVC_NOT_FOUND);
}

TEST(OpenSegmentFile, FollowsNoLink) {
  Recording recording;
  recording.scratch().Write("target", "text");
  ASSERT_EQ(symlinkat("target", recording.folder(), "link"), 0);
  ASSERT_EQ(mkfifoat(recording.folder(), "pipe", 0600), 0);
  ASSERT_EQ(mkdirat(recording.folder(), "folder", 0700), 0);
  for (const char *name : {"link", "pipe", "folder"}) {
    int fd = 0;
    EXPECT_EQ(OpenSegmentFile(recording.folder(), name, O_RDONLY, fd), HVC_NOT_A_SNAPSHOT) << name;
    EXPECT_EQ(fd, -1);
  }
  SegmentWriter writer;
  EXPECT_EQ(writer.Open(recording.folder(), "link"), HVC_NOT_A_SNAPSHOT);
  EXPECT_EQ(Contents(recording.scratch().Path("target")), "text");
}

}  // namespace
}  // namespace platkit::history
