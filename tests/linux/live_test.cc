// Reads the machine that the tests run on. Its groups come and go, so the tests check only the figures of this process.
#include <unistd.h>

#include <algorithm>

#include "platkit/linux/groups/process_memory.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/linux/kernel/process_status.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

void Collect(Asker &ask, int64_t group, int depth, std::vector<int64_t> &found) {
  ASSERT_LT(depth, 2000);
  found.push_back(group);
  std::vector<int64_t> members;
  const HVC_ReturnStatus status = ask.List(nodes::sched_groups_members_groups, {group}, members);
  ASSERT_TRUE(status == HVC_OK || status == HVC_NOT_FOUND) << status;
  for (const int64_t member : members)
    Collect(ask, member, depth + 1, found);
}

TEST(LiveHost, AWalkFindsThisProcess) {
  const std::unique_ptr<Source> source = OpenLinuxHost("/");
  Asker ask(*source);
  std::vector<int64_t> groups;
  Collect(ask, 0, 0, groups);
  EXPECT_NE(std::find(groups.begin(), groups.end(), getpid()), groups.end());
  const std::unique_ptr<Source> other = OpenLinuxHost("/");
  EXPECT_EQ(ask.Parent(getpid()), Asker(*other).Parent(getpid())) << "listed or looked up, it is in the same group";
}

TEST(LiveHost, FiguresAreThoseOfTheKernel) {
  const std::unique_ptr<Source> source = OpenLinuxHost("/");
  Asker ask(*source);
  HostFiles files("/", Reach::kHost);
  const Meminfo memory = ReadMeminfo(files);
  EXPECT_CELL(ask.Stats(0).memSize, memory.total.Cell(0));
  const uint64_t consumed = ask.Stats(0).consumed;
  const uint64_t byKernel = ask.Stats(5'000'000).memSize;
  EXPECT_LT(consumed, memory.total.Cell(0));
  EXPECT_GT(byKernel, 0u);

  const auto host = ask.Record(nodes::memory_comprehensive);
  EXPECT_CELL(host.managedByMemMap, memory.total.Cell(0));
  EXPECT_LT(uint64_t{host.free}, memory.total.Cell(0));
  EXPECT_GE(uint64_t{host.otherConsumed}, 1u);
  EXPECT_FALSE(ask.Names(nodes::system_buddy).empty());

  ProcessStatus status;
  ASSERT_EQ(ReadProcessStatus(files, getpid(), status), HVC_OK);
  const GroupMemoryStatsRecord own = ask.Stats(getpid());
  const auto near = [](uint64_t a, uint64_t b) { return (a > b ? a - b : b - a) < 16 * 1024; };
  EXPECT_TRUE(near(own.consumed, Consumed(status).Cell(0)));
  EXPECT_TRUE(near(own.memSize, status.size().Cell(0)));
  EXPECT_EQ(ask.Name(getpid()), status.name);
}

// The address of the first PCI function on the first bus; empty if this machine has none.
std::vector<int64_t> FirstFunction(Asker &ask) {
  std::vector<int64_t> function;
  for (const NodeRef<NoRecord> list : {nodes::hardware_pci_seg, nodes::hardware_pci_seg_bus,
                                       nodes::hardware_pci_seg_bus_slot, nodes::hardware_pci_seg_bus_slot_func}) {
    std::vector<int64_t> instances;
    EXPECT_EQ(ask.List(list, Given(function), instances), HVC_OK);
    if (instances.empty()) return {};
    function.push_back(instances.front());
  }
  return function;
}

TEST(LiveHost, AnOrdinaryUserReadsTheHeaderOfADeviceAlone) {
  const std::unique_ptr<Source> source = OpenLinuxHost("/");
  Asker ask(*source);
  std::vector<int64_t> where = FirstFunction(ask);
  if (where.empty()) GTEST_SKIP() << "no PCI devices on this machine";
  PciConfigHeaderRecord header = {};
  ASSERT_EQ(ask.Get(nodes::hardware_pci_seg_bus_slot_func_pciConfigHeader, Given(where), header), HVC_OK);
  constexpr auto kRegister = nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr;
  where.insert(where.end(), {2, 0});
  PciConfigRegRecord vendor = {};
  OrdinaryUser user;
  ASSERT_EQ(ask.Get(kRegister, Given(where), vendor), HVC_OK);
  EXPECT_CELL(vendor.value, header.vendorID);
  where.back() = 128;
  EXPECT_EQ(ask.Status(kRegister, Given(where)), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
