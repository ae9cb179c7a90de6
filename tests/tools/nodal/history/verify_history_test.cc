// nodal verify, for the folder of a history.
#include "tests/tools/nodal/history/recorded.h"

namespace nodal {
namespace {

TEST(VerifyHistory, FindsNoProblem) {
  Recorded history;
  history.AddGroups(0, 100);
  history.AddEnd(ClocksAt(100));
  history.AddGroups(3600, 3700);
  const Outcome outcome = Nodal("verify " + history.path());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, history.path() + ": 2 segments, 40 samples, no problems\n");
}

TEST(VerifyHistory, FindsDamage) {
  Recorded history;
  history.AddGroups(0, 200);
  platkit::history::SegmentReader reader;
  platkit::history::HistoryFolder folder;
  ASSERT_EQ(folder.Open(history.path().c_str()), HVC_OK);
  ASSERT_EQ(reader.Open(folder.fd(), "2025-11-21T03Z.history"), HVC_OK);
  const auto &frames = reader.frames();
  std::string bytes = Contents(history.Segment(0));
  bytes[frames[2].start] ^= 1;                          // the magic
  bytes[frames[13].start + frames[13].bytes - 1] ^= 1;  // the last chunk
  bytes.resize(bytes.size() - 1);
  testing_support::WriteFile(history.Segment(0), bytes);
  const Outcome outcome = Nodal("verify " + history.path());
  EXPECT_EQ(outcome.status, 1);
  const std::string name = "2025-11-21T03Z.history: ";
  EXPECT_EQ(outcome.out, name + "byte " + std::to_string(frames[2].start) + ": " + std::to_string(frames[2].bytes) +
                             " damaged bytes\n" + name + "byte " + std::to_string(frames.back().start) + ": " +
                             std::to_string(frames.back().bytes - 1) +
                             " bytes of an incomplete frame (it is being written, or the recorder was killed)\n" +
                             name + "lost 9 samples, from 2025-11-21T03:12:15Z to 2025-11-21T03:12:55Z\n" + name +
                             "lost 11 samples, from 2025-11-21T03:13:05Z to 2025-11-21T03:13:55Z\n" + history.path() +
                             ": 1 segment, 18 samples, 20 lost samples, 3 problems\n");
}

TEST(VerifyHistory, AcceptsAnIncompleteEnd) {
  Recorded history;
  history.AddGroups(0, 10);
  const std::string bytes = Contents(history.Segment(0));
  testing_support::WriteFile(history.Segment(0), bytes.substr(0, bytes.size() - 10));
  const Outcome outcome = Nodal("verify " + history.path());
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.out.ends_with("1 segment, 1 sample, no problems\n")) << outcome.out;
}

TEST(VerifyHistory, RefusesOtherFiles) {
  Recorded history;
  history.AddGroups(0, 10);
  testing_support::WriteFile(history.path() + "/2020-01-01T00Z.history", std::string(200, 'x'));
  const Outcome outcome = Nodal("verify " + history.path());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.out.starts_with("2020-01-01T00Z.history: Not a system-information snapshot\n")) << outcome.out;
}

}  // namespace
}  // namespace nodal
