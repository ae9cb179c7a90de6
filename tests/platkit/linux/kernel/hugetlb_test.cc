#include "platkit/linux/kernel/hugetlb.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kPool = "sys/devices/system/node/node2/hugepages/hugepages-2048kB/";

TEST(Hugetlb, Pages) {
  ExpectFigures(
      kPool + "nr_hugepages",
      [](HostFiles &files) { return ReadHugetlbPool(files, HugetlbFolderOfNode(2), 2048).pages; },
      {{"12\n", Figure(12)}, {"x\n", kUnreadable}}, kUnreadable, kAbsent);
}

TEST(Hugetlb, FreePages) {
  KernelFiles kernel;
  kernel.host().Write(kPool + "nr_hugepages", "5\n");
  const auto free = [&kernel] { return ReadHugetlbPool(kernel.files(), HugetlbFolderOfNode(2), 2048).free; };
  EXPECT_EQ(free(), kUnreadable) << "missing";
  kernel.host().Write(kPool + "free_hugepages", "3\n");
  EXPECT_EQ(free(), Figure(3));
  kernel.host().Write("sys/kernel/mm/hugepages/hugepages-2048kB/resv_hugepages", "2\n");
  EXPECT_EQ(free(), Figure(1)) << "others have been promised two";
  kernel.host().Write("sys/kernel/mm/hugepages/hugepages-2048kB/resv_hugepages", "4\n");
  EXPECT_EQ(free(), Figure(0)) << "of all nodes";
  kernel.host().Write("sys/kernel/mm/hugepages/hugepages-2048kB/resv_hugepages", "x\n");
  EXPECT_EQ(free(), kUnreadable);
  kernel.host().Write(kPool + "free_hugepages", "few\n");
  EXPECT_EQ(free(), kUnreadable);
}

TEST(Hugetlb, SizesOfPools) {
  KernelFiles kernel;
  std::vector<uint64_t> sizes = {1};
  EXPECT_EQ(ListHugetlbSizes(kernel.files(), kHugetlbFolder, sizes), HVC_OK) << "a kernel without huge pages";
  EXPECT_TRUE(sizes.empty());
  for (const char *name :
       {"hugepages-2048kB", "hugepages-64kB", "hugepages-kB", "hugepages-xkB", "hugepages-5", "2048kB"})
    kernel.host().MakeFolder(std::string(kHugetlbFolder) + "/" + name);
  EXPECT_EQ(ListHugetlbSizes(kernel.files(), kHugetlbFolder, sizes), HVC_OK);
  EXPECT_EQ(sizes, (std::vector<uint64_t>{64, 2048}));
  kernel.host().Forbid(kHugetlbFolder);
  OrdinaryUser user;
  EXPECT_EQ(ListHugetlbSizes(kernel.files(), kHugetlbFolder, sizes), HVC_NO_PERMISSION);
}

TEST(Hugetlb, NumaNodes) {
  KernelFiles kernel;
  EXPECT_FALSE(HasNumaNodeFolders(kernel.files()));
  kernel.host().MakeFolder("sys/devices/system/node");
  EXPECT_TRUE(HasNumaNodeFolders(kernel.files()));
}

}  // namespace
}  // namespace platkit
