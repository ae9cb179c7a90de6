#include "tests/tools/nodal/program.h"

namespace {

std::string Listed(const std::string &path) {
  const Outcome outcome = OnSample("ls " + path);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return outcome.out;
}

TEST(Ls, Levels) {
  EXPECT_EQ(Listed(""), "hardware/\nmemory/\nsched/\nsystem/\nworldGroups/\n");
  EXPECT_EQ(Listed("/"), Listed(""));
  EXPECT_EQ(Listed("/sched"), "globalStats/\ngroups/\nmemClients/\n");
  EXPECT_EQ(Listed("/sched/groups/10"),
            "groupFlags\ngroupLeaderID\ngroupName\ngroupTag\nmemAllocationInKB\nmembers/\nparentGroupID\nstats/\n");
  EXPECT_EQ(Listed("/sched/groups/10/"), Listed("/sched/groups/10"));
  EXPECT_EQ(Listed("/memory/pmem"), "volumes/\n");
}

TEST(Ls, InstancesComeFromLists) {
  EXPECT_EQ(Listed("/system/heaps"), "main/\nnet/\nstorage/\n");
  EXPECT_EQ(Listed("/sched/memClients/3011/remapTypes"), "numa-affinity\npage-retire\n");
  EXPECT_EQ(Listed("/hardware/pci/seg/0/bus/58/slot"), "8/\n9/\n10/\n11/\n12/\n13/\n");
}

TEST(Ls, InstancesWithoutAListOfTheirOwn) {
  EXPECT_EQ(Listed("/sched/groups"),
            "0/\n1/\n4/\n5/\n6/\n2/\n10/\n11/\n12/\n13/\n20/\n21/\n22/\n3/\n30/\n31/\n32/\n33/\n");
  EXPECT_EQ(Listed("/sched/memClients"), "1001/\n1002/\n1003/\n2001/\n2002/\n3001/\n3011/\n3002/\n3003/\n");
  EXPECT_EQ(Listed("/memory/lpage/vmLPage"), "1002\n2002\n");
  EXPECT_EQ(Listed("/memory/memNodes"), "0\n1\n2\n");
  EXPECT_EQ(Listed("/memory/lpage/nodeList"), "0/\n1/\n");
  EXPECT_EQ(Listed("/sched/globalStats/memory/stateTransitions"), "high\nclear\nsoft\nhard\nlow\n");
  EXPECT_EQ(Listed("/hardware/cpu/cpuList"), "0\n");
}

TEST(Ls, Long) {
  EXPECT_EQ(OnSample("ls -l /memory").out,
            "record     88  /memory/comprehensive\n"
            "-           -  /memory/lpage/\n"
            "record     24  /memory/memInfo\n"
            "-           -  /memory/memNodes/\n"
            "-           -  /memory/pmem/\n"
            "-           -  /memory/pshare/\n");
  EXPECT_EQ(OnSample("ls -l /system").out,
            "list        5  /system/buddy/\n"
            "list        3  /system/heaps/\n");
  EXPECT_EQ(OnSample("ls -l /memory/memInfo").out, "record     24  /memory/memInfo\n");
}

TEST(Ls, NothingThere) {
  for (const char *path : {"/nowhere", "/sched/groups/99", "/sched/groups/010", "/memory/memInfo/below",
                           "/sched/groups/0/groupLeaderID", "/system/heaps/none/stats", "//"}) {
    const Outcome outcome = OnSample(std::string("ls ") + path);
    EXPECT_EQ(outcome.status, 1) << path;
    EXPECT_EQ(outcome.out, "") << path;
    EXPECT_TRUE(outcome.err.ends_with(": Not found\n")) << outcome.err;
  }
  EXPECT_EQ(OnSample("ls sched").err, "nodal: sched: path must begin with '/'\n");
}

TEST(Ls, CyclesEnd) {
  const Scratch scratch;
  const std::string host = Built(scratch, HostOf(R"("/sched/groups/0/members/groups": [1, 1],
    "/sched/groups/1/members/groups": [2, 1], "/sched/groups/2/members/groups": [0, 1])"));
  EXPECT_EQ(Nodal("ls /sched/groups --cache " + host).out, "0/\n1/\n2/\n");
}

TEST(Ls, AGroupWhoseMembersCannotBeListedHidesNoOthers) {
  const Scratch scratch;
  const std::string host = Built(scratch, HostOf(R"("/sched/groups/0/members/groups": [1, 2],
    "failed:/sched/groups/1/members/groups": {"status": "Name too long"}, "/sched/groups/2/members/groups": [3])"));
  const Outcome outcome = Nodal("ls /sched/groups --cache " + host);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "0/\n1/\n2/\n3/\n");
  EXPECT_EQ(outcome.err, "nodal: /sched/groups/1/members/groups: Name too long\n");
}

TEST(Ls, NamesAreShownSafely) {
  const Scratch scratch;
  const std::string host = Built(scratch, HostOf(R"("/system/heaps": ["a/b", "\u001b[1m", "caf\u00e9\u009b", ""])"));
  EXPECT_EQ(Nodal("ls /system/heaps --cache " + host).out, "a%2Fb/\n%1B[1m/\ncaf\xc3\xa9?/\n/\n");
  EXPECT_EQ(Nodal("get /system/heaps --cache " + host).out, "a/b\n?[1m\ncaf\xc3\xa9?\n\n");
}

TEST(Ls, ADamagedListIsReported) {
  const Scratch scratch;
  std::string bytes = Contents(Built(scratch, HostOf(R"("/system/heaps": ["main"])")));
  bytes[bytes.find("main")] = 'M';
  const Outcome outcome = Nodal("ls /system/heaps --cache " + scratch.Write("damaged", bytes));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: /system/heaps: Snapshot is damaged\n");
}

}  // namespace
