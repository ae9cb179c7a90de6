#include "platkit/linux/kernel/slabinfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

std::vector<SlabCache> Caches(std::string_view text) {
  KernelFiles kernel;
  const Slabinfo info = ReadSlabinfo(kernel.With("proc/slabinfo", text));
  EXPECT_EQ(info.status, HVC_OK);
  return info.caches;
}

TEST(Slabinfo, ACache) {
  const std::vector<SlabCache> caches = Caches(
      "slabinfo - version: 2.1\n# name <active_objs>\n"
      "an odd name  28  30  1088  29  8 : tunables  0  0  0 : slabdata  5  6  0\n");
  ASSERT_EQ(caches.size(), 1u);
  EXPECT_EQ(caches[0].name, "an odd name");
  EXPECT_EQ(caches[0].activeObjects, Figure(28));
  EXPECT_EQ(caches[0].objects, Figure(30));
  EXPECT_EQ(caches[0].objectSize, Figure(1088));
  EXPECT_EQ(caches[0].pagesPerSlab, Figure(8));
  EXPECT_EQ(caches[0].slabs, Figure(6));
}

TEST(Slabinfo, FieldsOfDebugKernelsAreSkipped) {
  const std::vector<SlabCache> caches = Caches("a 1 2 3 4 5 : tunables 0 0 0 : slabdata 6 7 0 : globalstat 8 9\n");
  ASSERT_EQ(caches.size(), 1u);
  EXPECT_EQ(caches[0].slabs, Figure(7));
}

TEST(Slabinfo, GarbageCostsItsFigureOrItsLine) {
  EXPECT_EQ(Caches("bad x 10 100 1 1 : tunables 0 0 0 : slabdata 1 2 0\n").front().activeObjects, kUnreadable);
  EXPECT_EQ(Caches("bad x 10 100 1 1 : tunables 0 0 0 : slabdata 1 2 0\n").front().objects, Figure(10));
  EXPECT_EQ(Caches("short 1 2 3 4 5 : tunables 0 0 0\n").front().slabs, kUnreadable);
  for (const char *text : {"", "\n", "no numbers\n", " : tunables\n", "1 2 3 4 5 : tunables 0 0 0 : slabdata 1 1 0\n"})
    EXPECT_TRUE(Caches(text).empty()) << text;
}

TEST(Slabinfo, AFileThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_EQ(ReadSlabinfo(kernel.files()).status, HVC_NOT_FOUND);
  kernel.host().Write("proc/slabinfo", "");
  kernel.host().Forbid("proc/slabinfo");
  OrdinaryUser user;
  EXPECT_EQ(ReadSlabinfo(kernel.files()).status, HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
