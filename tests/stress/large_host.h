// Writes large snapshots entry by entry, so that a list can have millions of entries.
#ifndef TESTS_STRESS_LARGE_HOST_H
#define TESTS_STRESS_LARGE_HOST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platkit/records.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tests/support/scratch.h"

namespace stress {

class LargeHost {
 public:
  LargeHost() {
    EXPECT_EQ(writer_.AddHeader({.definitions = platkit::OwnDefinitions(), .host = "large", .time = ""}), HVC_OK);
  }

  template <typename Record>
  void Add(const std::string &path, const Record &record) {
    EXPECT_EQ(writer_.AddRecord(path, std::as_bytes(std::span(&record, 1))), HVC_OK) << path;
  }
  void AddList(const std::string &path, const std::vector<int64_t> &entries) {
    EXPECT_EQ(writer_.AddIntegers(path, entries), HVC_OK) << path;
  }
  void AddList(const std::string &path, const std::vector<std::string> &entries) {
    EXPECT_EQ(writer_.AddTexts(path, entries), HVC_OK) << path;
  }

  // A group with all records that group-stats reads.
  void AddGroup(int64_t id, const std::vector<int64_t> &members) {
    const std::string path = "/sched/groups/" + std::to_string(id);
    Add(path + "/groupName", GroupNameRecord{.name = "a group"});
    Add(path + "/groupTag", GroupTagRecord{});
    Add(path + "/parentGroupID", ParentGroupIDRecord{});
    Add(path + "/groupFlags", GroupFlagsRecord{.flags = HVC_GROUP_CONTAINER});
    Add(path + "/memAllocationInKB", GroupAllocRecord{});
    Add(path + "/stats/capacity", GroupCapacityRecord{});
    Add(path + "/stats/memoryStats", GroupMemoryStatsRecord{});
    AddList(path + "/members/groups", members);
  }

  void AddHeap(std::string_view name) {
    HeapStatsRecord heap = {};
    name.copy(heap.name, sizeof heap.name - 1);
    Add("/system/heaps/" + std::string(name) + "/stats", heap);
  }

  // The path of the file, valid as long as this object.
  std::string Write() {
    EXPECT_EQ(writer_.Write(path_), HVC_OK);
    writer_ = {};
    return path_;
  }

 private:
  testing_support::ScratchDirectory scratch_;
  std::string path_ = scratch_.File("large.nodal");
  platkit::snapshot::SnapshotWriter writer_;
};

}  // namespace stress

#endif  // TESTS_STRESS_LARGE_HOST_H
