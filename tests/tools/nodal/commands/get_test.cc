#include "tests/tools/nodal/program.h"

namespace {

TEST(Get, Record) {
  EXPECT_EQ(OnSample("get /sched/groups/10/memAllocationInKB").out,
            "min       3145728  KB\n"
            "max            -1  KB\n"
            "shares      40960\n"
            "minLimit  5242880  KB\n");
  EXPECT_EQ(OnSample("get -v /memory/pmem/volumes/b81d4c36-7e52-4f0b-8a49-2c90d7e4f502/regionStore/regions/"
                     "e45a7b90-62cf-4d13-a7e8-18b3f0c95d23/info")
                .out,
            "size              1342177280  bytes        size\n"
            "reservedBlocks           768  2 MB blocks  reserved\n"
            "flags                   0x83               state of the region, as HVC_REGION_... bits\n"
            "openCount                  4               open handles\n"
            "allocatedBlocks          640  2 MB blocks  allocated\n"
            "managementTag             33               management tag\n"
            "numaAffinityMask         0x2               one bit per NUMA node\n");
  EXPECT_EQ(OnSample("get /sched/groups/13/groupTag").out, "tag  prod-io-\n");
  EXPECT_TRUE(OnSample("get /system/buddy/heap-large/comprehensive").out.starts_with("sizes[0].free   1\n"));
}

TEST(Get, List) {
  EXPECT_EQ(OnSample("get /sched/groups/0/members/groups").out, "1\n2\n3\n");
  EXPECT_EQ(OnSample("get /system/heaps").out, "main\nnet\nstorage\n");
}

TEST(Get, Json) {
  EXPECT_EQ(OnSample("get --json /sched/groups/0/groupName").out, "{\n  \"name\": \"host\"\n}\n");
  EXPECT_EQ(OnSample("get --json /system/heaps").out, "[\n  \"main\",\n  \"net\",\n  \"storage\"\n]\n");
}

TEST(Get, Raw) {
  EXPECT_EQ(OnSample("get --raw /worldGroups/1001/vmmLeaderID").out, std::string("\xea\x03\0\0", 4));
  EXPECT_EQ(OnSample("get --raw /system/heaps").out, std::string("main\0net\0storage\0", 17));
  EXPECT_EQ(OnSample("get --raw /hardware/nvd/dimm").out, std::string("\x11\0\0\0\0\0\0\0\x21\0\0\0\0\0\0\0", 16));
}

TEST(Get, NothingThere) {
  EXPECT_EQ(OnSample("get /sched/groups/99/groupName").err, "nodal: /sched/groups/99/groupName: Not found\n");
  EXPECT_EQ(OnSample("get /sched/groups").err, "nodal: /sched/groups: No such system-information node\n");
  EXPECT_EQ(OnSample("get /sched/groups/99/groupName").status, 1);
}

}  // namespace
