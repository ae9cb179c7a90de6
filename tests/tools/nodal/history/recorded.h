// Histories that are recorded from snapshots, or from figures of a test.
#ifndef TESTS_TOOLS_NODAL_HISTORY_RECORDED_H
#define TESTS_TOOLS_NODAL_HISTORY_RECORDED_H

#include <string>

#include "platkit/history/history_folder.h"
#include "platkit/history/segment_writer.h"
#include "platkit/records.h"
#include "platkit/snapshot/snapshot_file.h"
#include "tests/tools/nodal/history/durations.h"
#include "tests/tools/nodal/program.h"

namespace nodal {

using platkit::history::HostHeader;
using platkit::history::Sample;
using platkit::history::SampleInfo;
using platkit::history::SampleTime;

inline constexpr int64_t kStart = 1'763'694'720;  // 2025-11-21T03:12:00Z

inline SampleTime ClocksAt(int64_t second) {
  return {
      .wall = (kStart + second) * kSecond, .boot = (1000 + second) * kSecond, .monotonic = (1000 + second) * kSecond};
}

// The entries of a snapshot.
inline Sample SampleOf(const std::string &snapshot) {
  Sample sample;
  platkit::snapshot::SnapshotFile file;
  EXPECT_EQ(file.Open(snapshot.c_str()), HVC_OK);
  platkit::snapshot::SnapshotFile::Cursor cursor(file);
  while (cursor.Next() == HVC_OK) {
    platkit::snapshot::Value value;
    EXPECT_EQ(cursor.Read(value), HVC_OK);
    if (!platkit::snapshot::IsHeaderKey(cursor.key())) sample.Add(cursor.key(), value.type, value.payload);
  }
  return sample;
}

template <typename Record>
void AddRecord(Sample &sample, const std::string &path, const Record &record) {
  sample.Add(path, platkit::history::ValueType::kRecord, std::as_bytes(std::span(&record, 1)));
}

// Groups 1 and 2, whose memory grows by 10 KB and 1 KB a second.
inline Sample GroupsAt(int64_t second) {
  Sample sample;
  const int64_t groups[] = {1, 2};
  sample.Add("/sched/groups/0/members/groups", platkit::history::ValueType::kIntegers,
             std::as_bytes(std::span(groups)));
  for (const int64_t group : groups) {
    const std::string path = "/sched/groups/" + std::to_string(group);
    GroupMemoryStatsRecord stats = {};
    stats.consumed = static_cast<uint64_t>(1000 + (group == 1 ? 10 : 1) * second);
    stats.touched = UINT64_MAX;
    AddRecord(sample, path + "/stats/memoryStats", stats);
    GroupAllocRecord allocation = {};
    allocation.shares = static_cast<int32_t>(-second);
    AddRecord(sample, path + "/memAllocationInKB", allocation);
  }
  return sample;
}

class Recorded {
 public:
  Recorded() {
    std::filesystem::create_directory(path());
    EXPECT_EQ(folder_.Open(path().c_str()), HVC_OK);
    host_.definitions = platkit::OwnDefinitions();
    host_.host = "alpha";
    host_.kernel = "6.1.0-18-amd64";
    host_.intervalMillis = 5000;
  }

  std::string path() const { return scratch_.Path("h"); }
  const Scratch &scratch() const { return scratch_; }
  HostHeader &host() { return host_; }
  std::string Segment(int64_t second) const { return path() + "/" + NameAt(ClocksAt(second)); }

  void Add(Sample sample, const SampleInfo &info) {
    Open(info.time);
    EXPECT_EQ(writer_.Append(host_, info, sample), HVC_OK);
  }
  void Add(Sample sample, int64_t second) { Add(std::move(sample), {.time = ClocksAt(second)}); }

  // Adds a sample of the groups every five seconds, from second `from` to before `to`.
  void AddGroups(int64_t from, int64_t to) {
    for (int64_t second = from; second < to; second += 5)
      Add(GroupsAt(second), second);
  }

  void AddEnd(const SampleTime &time) {
    Open(time);
    EXPECT_EQ(writer_.AppendEnd(time), HVC_OK);
  }

 private:
  static std::string NameAt(const SampleTime &time) { return platkit::history::SegmentName::At(time.wall).text(); }

  void Open(const SampleTime &time) {
    if (NameAt(time) == open_) return;
    open_ = NameAt(time);
    ASSERT_EQ(writer_.Open(folder_.fd(), open_.c_str()), HVC_OK);
  }

  Scratch scratch_;
  platkit::history::HistoryFolder folder_;
  platkit::history::SegmentWriter writer_;
  HostHeader host_;
  std::string open_;
};

}  // namespace nodal

#endif  // TESTS_TOOLS_NODAL_HISTORY_RECORDED_H
