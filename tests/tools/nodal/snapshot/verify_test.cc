#include <cdb.h>

#include <algorithm>

#include "tests/platkit/snapshot/colliding_keys.h"
#include "tests/tools/nodal/program.h"

namespace {

// The output of verify without the summary.
std::string Problems(const std::string &snapshot) {
  const Outcome outcome = Nodal("verify " + snapshot);
  EXPECT_EQ(outcome.err, "");
  const size_t summary = outcome.out.find(snapshot + ": ");
  EXPECT_NE(summary, std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.status, summary == 0 ? 0 : 1);
  return outcome.out.substr(0, summary);
}

std::string ProblemsOf(const std::string &nodes) {
  const Scratch scratch;
  return Problems(Built(scratch, HostOf(nodes)));
}

TEST(Verify, Summary) {
  EXPECT_EQ(Nodal("verify " + kSample).out, SAMPLE_SNAPSHOT ": 275 records, 73 lists, no problems\n");
  const Scratch scratch;
  const std::string host = Built(scratch, HostOf(R"("/system/heaps": ["main"])"));
  EXPECT_EQ(Nodal("verify " + host).out,
            "/system/heaps: lists heap 'main', which has no entry\n" + host + ": 0 records, 1 list, 1 problem\n");
}

TEST(Verify, Values) {
  EXPECT_EQ(ProblemsOf(R"("/what": {"type": "R", "hex": ""},
                          "/memory/memInfo": {"type": "R", "hex": "00"},
                          "/memory/pshare/stats": {"type": "I", "hex": ""},
                          "/system/heaps": {"type": "I", "hex": ""},
                          "/system/buddy": {"type": "T", "hex": "61"},
                          "/hardware/nvd/dimm": {"type": "T", "hex": ""},
                          "/hardware/pci/seg": {"type": "I", "hex": "00"})"),
            "/hardware/nvd/dimm: not a list of integers\n"
            "/hardware/pci/seg: last integer is truncated\n"
            "/memory/memInfo: 1 byte (expected 24)\n"
            "/memory/pshare/stats: not a record\n"
            "/system/buddy: last text is truncated\n"
            "/system/heaps: not a list of texts\n"
            "/what: unknown node\n");
}

TEST(Verify, Failures) {
  EXPECT_EQ(ProblemsOf(R"("/system/heaps": [],
                          "failed:/hardware/nvd/dimm": {"type": "R", "hex": "00000000"},
                          "failed:/memory/memInfo": {"status": "No permission"},
                          "failed:/memory/pshare/stats": {"type": "R", "hex": "01"},
                          "failed:/system/heaps": {"status": "Not found"},
                          "failed:/what": {"status": "Not found"})"),
            "failed:/hardware/nvd/dimm: invalid status\n"
            "failed:/memory/pshare/stats: invalid status\n"
            "failed:/system/heaps: saved both as unreadable and with a value\n"
            "failed:/what: unknown node\n");
}

TEST(Verify, Time) {
  const Scratch scratch;
  EXPECT_EQ(Problems(Built(scratch, R"({"format": 1, "time": "2026-03-14T09:26:53Z"})")), "");
  EXPECT_EQ(Problems(Built(scratch, R"({"format": 1, "time": "2026-03-14 09:26:53"})")),
            "time: invalid time (expected a form such as 2026-03-14T09:26:53Z)\n");
}

TEST(Verify, WhatIsNamedIsThere) {
  EXPECT_EQ(ProblemsOf(R"("/sched/groups/0/members/groups": [1], "/sched/groups/0/members/memClients": [7, 7],
                          "/sched/groups/0/groupFlags": {"flags": 8}, "/sched/groups/0/groupLeaderID": {"leaderID": 9},
                          "/memory/pmem/volumes": ["v"], "/memory/pmem/volumes/v/extents": [3],
                          "/memory/pmem/volumes/v/regionStore/regions": ["r"],
                          "/memory/lpage/nodeList/0/vmPools": ["p"], "/memory/memInfo": {"numNodes": 1},
                          "/system/buddy": ["memmap-05-lo", "other"])"),
            "/memory/lpage/nodeList/0/vmPools: lists pool 'p', which has no entry\n"
            "/memory/pmem/volumes/v/extents: lists extent 3, which has no entry\n"
            "/memory/pmem/volumes/v/regionStore/regions: lists region 'r', which has no entry\n"
            "/sched/groups/0/groupLeaderID: names client 9, which has no entry\n"
            "/sched/groups/0/members/groups: lists group 1, which has no entry\n"
            "/sched/groups/0/members/memClients: lists client 7, which has no entry\n"
            "/sched/groups/0/members/memClients: lists client 7 twice\n"
            "/sched/groups/0/members/memClients: lists client 7, which has no entry\n"
            "/system/buddy: lists buddy 'memmap-05-lo', which has no entry\n"
            "/system/buddy: buddy 'memmap-05-lo' serves memNode 5, which has no entry\n"
            "/system/buddy: lists buddy 'other', which has no entry\n");
}

TEST(Verify, WhatIsThereIsNamed) {
  EXPECT_EQ(ProblemsOf(R"("/system/heaps": [], "/system/heaps/h/stats": {},
                          "/system/buddy/b/comprehensive": {},
                          "/sched/groups/5/groupName": {}, "/sched/groups/5/groupTag": {},
                          "/sched/memClients/6/swapInfo": {}, "/memory/memNodes/3": {},
                          "/sched/globalStats/memory/stateTransitions/odd": {})"),
            "/memory/memNodes/3: memNode 3: unknown instance\n"
            "/sched/globalStats/memory/stateTransitions/odd: state 'odd': unknown instance\n"
            "/sched/groups/5: group 5: not reachable from group 0\n"
            "/sched/memClients/6: client 6: unknown instance\n"
            "/system/buddy/b: buddy 'b': not listed in /system/buddy\n"
            "/system/heaps/h: heap 'h': not listed in /system/heaps\n");
}

// Each look-up of one of these keys would visit all others.
TEST(Verify, KeysThatCollide) {
  const Scratch scratch;
  const std::string snapshot = scratch.Path("host.nodal");
  std::vector<std::string> keys = platkit::snapshot::CollidingKeys("/x/", 512);
  std::ranges::sort(keys);
  platkit::snapshot::WriteWithoutLimit(snapshot, keys);
  const std::string complaint =
      "nodal: " + snapshot + ": Snapshot is damaged: too many keys collide in the index (hash collisions)\n";
  for (const std::string &command : std::vector<std::string>{"verify ", "dump ", "diff " + kSample + " "}) {
    const Outcome outcome = Nodal(command + snapshot);
    EXPECT_NE(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, complaint);
  }
}

TEST(Verify, Hierarchy) {
  EXPECT_EQ(ProblemsOf(R"("/sched/groups/0/members/groups": [1, 2], "/sched/groups/1/members/groups": [2, 0],
                          "/sched/groups/1/parentGroupID": {"parentGroupID": 0},
                          "/sched/groups/2/parentGroupID": {"parentGroupID": 7})"),
            "/sched/groups/0/parentGroupID: group 0 is the top group, but group 1 lists it\n"
            "/sched/groups/2/parentGroupID: groups 0 and 1 both list group 2\n"
            "/sched/groups/2/parentGroupID: names group 7, but group 0 lists group 2\n");
}

class Damaged : public testing::Test {
 protected:
  Damaged()
      : bytes_(Contents(Built(scratch_, HostOf(R"("/hardware/nvd/dimm": [1], "/sched/globalStats/numVMs": {})")))) {}

  size_t PositionOf(std::string_view key) const { return bytes_.find(key) - 8; }
  uint32_t EndOfRecords() const { return cdb_unpack(reinterpret_cast<const unsigned char *>(bytes_.data())); }

  Scratch scratch_;
  std::string bytes_;
};

TEST_F(Damaged, Value) {
  bytes_[PositionOf("/hardware/nvd/dimm") + 8 + 20] ^= 1;
  EXPECT_EQ(Problems(scratch_.Write("damaged", bytes_)), "/hardware/nvd/dimm: damaged value\n");
}

TEST_F(Damaged, EveryByteIsFound) {
  for (size_t i = 2048 + 23; i < bytes_.size(); i += 7) {
    std::string bytes = bytes_;
    bytes[i] ^= 0x10;
    EXPECT_EQ(Nodal("verify " + scratch_.Write("damaged", bytes)).status, 1) << i;
  }
}

TEST_F(Damaged, RecordThatReachesTooFar) {
  bytes_[PositionOf("time") + 4 + 1] ^= 1;
  // The header cannot be read either, so the file does not open.
  const Outcome outcome = Nodal("verify " + scratch_.Write("damaged", bytes_));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.ends_with(": Snapshot is damaged\n"));
  bytes_[PositionOf("time") + 4 + 1] ^= 1;
  bytes_[PositionOf("/hardware/nvd/dimm") + 4 + 3] ^= 1;
  EXPECT_EQ(Problems(scratch_.Write("damaged", bytes_)), "entry 1: entry runs past the end of the records\n");
}

TEST_F(Damaged, SlotThatLeadsNowhere) {
  // verify does not look up the last two keys, but the index contains them.
  for (const std::string key : {"/hardware/nvd/dimm", "nodal-snapshot", "index-check"}) {
    const uint32_t hash = cdb_hash(key.data(), static_cast<unsigned>(key.size()));
    unsigned char slot[4];
    cdb_pack(hash, slot);
    const size_t place = bytes_.find(std::string(reinterpret_cast<const char *>(slot), sizeof slot), EndOfRecords());
    ASSERT_NE(place, std::string::npos);
    for (const size_t byte : {place, place + sizeof slot, place + sizeof slot + 3}) {
      std::string bytes = bytes_;
      bytes[byte] ^= 1;
      EXPECT_EQ(Problems(scratch_.Write("damaged", bytes)),
                key + ": not found through the index\nindex: damaged hash table\n");
    }
  }
}

TEST_F(Damaged, KeysThatAreNotInOrder) {
  // The new key has the same length, so only the order and the index are wrong.
  bytes_.replace(bytes_.find("/hardware/nvd/dimm"), 18, "zhardware/nvd/dimm");
  EXPECT_EQ(Problems(scratch_.Write("damaged", bytes_)),
            "zhardware/nvd/dimm: not found through the index\n"
            "zhardware/nvd/dimm: unknown node\n"
            "/sched/globalStats/numVMs: key out of order\n");
}

}  // namespace
