// Figures of memory clients: processes and VMMs.
#include <algorithm>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

const std::string kOwn = kTop + "machine.slice/web.scope/guest";
const std::string kShared = kTop + "shared.slice";
using Types = std::vector<std::string>;

uint64_t MB(uint64_t amount) { return amount * 1024; }

VmmMemoryStatsRecord Vmm(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::sched_memClients_kestrel_vmm, {pid});
}
UwMemoryStatsRecord Uw(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::sched_memClients_kestrel_uw, {pid});
}
GuestStatsRecord Guest(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::sched_memClients_kestrel_guest, {pid});
}
ZipStatsRecord Zip(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::sched_memClients_memzipInfo, {pid});
}
VmSwapInfoRecord Swap(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::sched_memClients_swapInfo, {kFirstVm + pid});
}
LPageStatsRecord LargePages(SavedHost &host, int64_t pid) {
  return host.ask().Record(nodes::memory_lpage_vmLPage, {kFirstVm + pid});
}

Types RemapTypes(SavedHost &host, int64_t client) {
  return host.ask().Names(nodes::sched_memClients_remapTypes, {client});
}

HVC_ReturnStatus RemapStatus(SavedHost &host, int64_t client, const std::string &type) {
  return host.ask().Status(nodes::sched_memClients_remapTypes, {client, type});
}

RemapStatsRecord Remap(SavedHost &host, int64_t client, const std::string &type) {
  return host.ask().Record(nodes::sched_memClients_remapTypes, {client, type});
}

uint64_t Remapped(SavedHost &host, int64_t client, const std::string &type) {
  const RemapStatsRecord record = Remap(host, client, type);
  EXPECT_CELL(record.added, record.remapped + record.filtered);
  return record.remapped;
}

// The consumed memory, as a report computes it.
template <typename Record>
uint64_t Consumed(const Record &record) {
  return record.zipped + record.mapped - record.sharedSaved - record.zipSaved;
}

TEST(ClientRecords, EachClientHasTheRecordsOfItsKind) {
  SavedHost host("clients.host");
  const struct {
    const Node &node;
    bool ofProcess, ofMachine, ofMonitor;
  } cases[] = {
      {nodes::sched_memClients_kestrel_vmm, false, true, false},
      {nodes::sched_memClients_kestrel_uw, true, true, false},
      {nodes::sched_memClients_kestrel_guest, false, true, false},
      {nodes::sched_memClients_kestrel_totalCommon, true, true, true},
      {nodes::sched_memClients_swapInfo, false, false, true},
      {nodes::sched_memClients_memzipInfo, false, true, false},
      {nodes::memory_lpage_vmLPage, false, false, true},
      {nodes::worldGroups_vmmLeaderID, false, true, false},
  };
  const auto expected = [](bool has) { return has ? HVC_OK : HVC_NOT_FOUND; };
  for (const auto &[node, ofProcess, ofMachine, ofMonitor] : cases) {
    EXPECT_EQ(host.ask().Status(node, {400}), expected(ofProcess)) << node.name;
    EXPECT_EQ(host.ask().Status(node, {310}), expected(ofMachine)) << node.name;
    EXPECT_EQ(host.ask().Status(node, {kFirstVm + 310}), expected(ofMonitor)) << node.name;
    for (const int64_t nobody :
         {int64_t{0}, int64_t{-1}, int64_t{2}, int64_t{311}, int64_t{999}, int64_t{5'000'000}, host.ControlGroup(kOwn),
          kFirstVm, kFirstVm + 400, kFirstVm + 999, INT64_MAX, INT64_MIN}) {
      EXPECT_EQ(host.ask().Status(node, {nobody}), HVC_NOT_FOUND) << node.name << " " << nobody;
    }
  }
  EXPECT_CELL(host.ask().Record(nodes::worldGroups_vmmLeaderID, {310}).vmmLeaderID, kFirstVm + 310);
}

TEST(ClientRecords, AVmWithItsOwnControlGroup) {
  SavedHost host("clients.host");
  const VmmMemoryStatsRecord vmm = Vmm(host, 310);
  EXPECT_CELL(vmm.memSize, MB(2048));
  EXPECT_CELL(vmm.memSizeLimit, MB(8192));
  EXPECT_CELL(vmm.mapped, 1440000u + 2000) << "anonymous and shared memory, and the page of zeros";
  EXPECT_CELL(vmm.shared, 10000u + 2000);
  EXPECT_CELL(vmm.sharedSaved, 10000u + 2000);
  EXPECT_CELL(vmm.zero, 2000u);
  EXPECT_CELL(vmm.touched, kNoFigure) << "nothing tells";
  EXPECT_CELL(vmm.zipped, MB(200));
  EXPECT_CELL(vmm.zipSaved, MB(150));
  EXPECT_CELL(Consumed(vmm), 1440000u - 10000 + MB(50)) << "what is not shared, and compressed memory as it is kept";
  EXPECT_CELL(vmm.allocTgt, MB(1536)) << "it is throttled there";
  EXPECT_CELL(vmm.ballooned, 0u);
  EXPECT_CELL(vmm.vpmemRO, 0u);
  EXPECT_CELL(vmm.llswapped, kNoFigure) << "zram holds a part of what the host has swapped";
  EXPECT_CELL(vmm.llswapUsed, kNoFigure);

  Asker ask = host.ask();
  EXPECT_CELL(ask.Alloc(310).min, MB(1024));
  EXPECT_CELL(ask.Stats(310).bMin, MB(1024));
  EXPECT_CELL(ask.Alloc(kFirstVm + 310).min, MB(1024)) << "the VM's reservation";
  EXPECT_CELL(ask.Stats(kFirstVm + 310).bMin, 0u) << "the reservation of the VM covers its monitor";
  for (const int64_t group : {int64_t{310}, kFirstVm + 310}) {
    EXPECT_CELL(ask.Alloc(group).max, MB(4096));
    EXPECT_CELL(ask.Alloc(group).shares, 0);
    EXPECT_CELL(ask.Alloc(group).minLimit, kNoFigure);
    EXPECT_CELL(ask.Stats(group).bMax, MB(4096));
  }
  EXPECT_CELL(ask.Stats(310).ovhd, 60000u + 4000) << "what is not the guest's, and page tables";
  EXPECT_CELL(ask.Stats(kFirstVm + 310).consumed, 64000u);
  EXPECT_CELL(ask.Stats(310).sharedSaved, 12000u);
}

TEST(ClientRecords, AVmThatSharesItsControlGroup) {
  SavedHost host("clients.host");
  const VmmMemoryStatsRecord vmm = Vmm(host, 320);
  EXPECT_CELL(vmm.memSize, MB(4096)) << "the largest mapping of memory, of two pieces";
  EXPECT_CELL(vmm.memSizeLimit, MB(4096));
  EXPECT_CELL(vmm.mapped, 120000u + 100000 + 3145728);
  EXPECT_CELL(vmm.touched, kNoFigure);
  EXPECT_CELL(vmm.zipped, 0u) << "a kernel without zswap";
  EXPECT_CELL(vmm.zipSaved, 0u);
  EXPECT_CELL(vmm.shared, 0u);
  EXPECT_CELL(vmm.allocTgt, MB(1)) << "the limit that it shares";
  EXPECT_CELL(Consumed(vmm), vmm.mapped);
  Asker ask = host.ask();
  EXPECT_CELL(ask.Alloc(320).min, 0u);
  EXPECT_CELL(ask.Alloc(320).max, MB(1));
  EXPECT_CELL(ask.Alloc(kFirstVm + 320).max, MB(1));
  EXPECT_CELL(Uw(host, 320).max, MB(1));
  EXPECT_CELL(Uw(host, 321).max, kNoFigure) << "a process has no limit of its own";
  EXPECT_CELL(ask.Stats(320).memSize, MB(4096));
  EXPECT_CELL(ask.Stats(320).memSizePeak, MB(4096));
  EXPECT_CELL(ask.Stats(320).ovhd, 80000u + 2000);
  EXPECT_EQ(host.Opens(kShared + "/memory.stat"), 0);
}

TEST(ClientRecords, MemoryBeyondTheGuestsIsOverhead) {
  SavedHost host("clients.host");
  host.Write("proc/310/status",
             "Name:\tqemu-kvm\nUid:\t0\t0\t0\t0\nVmSize: 3000000 kB\nVmData: 9 kB\nVmStk: 0 kB\nVmRSS: 2097252 "
             "kB\nRssAnon: 2097252 kB\nVmPTE: 5 kB\n");
  EXPECT_CELL(Vmm(host, 310).mapped, MB(2048));
  EXPECT_CELL(host.ask().Stats(310).ovhd, 100u + 5);
}

// A process can claim any size on its command line, but a monitor maps all memory of its guest.
TEST(ClientRecords, MoreMemoryThanTheProcessHasMappedIsNoGuests) {
  SavedHost host("clients.host");
  std::string words = host.Read("proc/310/cmdline");
  for (const char *claim : {"5000001k", "8388607T", "8388608T", "17179869184T"}) {
    SavedHost forged("clients.host");
    forged.Write("proc/310/cmdline", words.substr(0, words.find("size=")) + claim + '\0');
    EXPECT_CELL(Vmm(forged, 310).memSize, 5000000u) << claim << ": the process' size, without mappings to read";
    EXPECT_CELL(Vmm(forged, 310).memSizeLimit, 5000000u) << claim;
    EXPECT_CELL(forged.ask().Stats(310).memSize, 5000000u) << claim;
    EXPECT_EQ(forged.ask().Status(nodes::sched_memClients_kestrel_guest, {310}), HVC_NOT_FOUND) << claim;
    forged.Write("proc/310/maps", "7f0000000000-7f0080000000 rw-p 00000000 00:00 0 \n");
    EXPECT_CELL(Vmm(forged, 310).memSize, MB(2048)) << claim << ": the largest mapping";
    EXPECT_CELL(Guest(forged, 310).memTotal, MB(2048)) << claim;
  }
  host.Write("proc/310/cmdline", words.substr(0, words.find("size=")) + "5000000k" + '\0');
  EXPECT_CELL(Vmm(host, 310).memSize, 5000000u) << "all that is mapped";
}

// Appends arguments to a command line.
void AddWords(SavedHost &host, int64_t pid, const Types &words) {
  const std::string path = "proc/" + std::to_string(pid) + "/cmdline";
  std::string line = host.Read(path);
  for (const std::string &word : words)
    line += word + '\0';
  host.Write(path, line);
}

TEST(ClientRecords, MemoryDevicesOfTheCommandLine) {
  SavedHost host("clients.host");
  AddWords(host, 310,
           {"-object", R"({"qom-type":"memory-backend-ram","id":"m0","size":536870912})", "-device",
            R"({"driver":"pc-dimm","memdev":"m0","id":"d0"})"});
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2560));
  EXPECT_CELL(Vmm(host, 310).memSizeLimit, MB(8192));
  EXPECT_CELL(Guest(host, 310).memTotal, MB(2560));
  EXPECT_CELL(host.ask().Stats(310).memSize, MB(2560));
  AddWords(host, 310, {"-object", "memory-backend-ram,id=m1,size=4G", "-device", "pc-dimm,memdev=m1"});
  host.ask().Members(host.ControlGroup(kOwn));
  EXPECT_CELL(Vmm(host, 310).memSize, 5000000u) << "more than the process has mapped";
}

TEST(ClientRecords, MemoryThatWasPluggedInLater) {
  SavedHost host("clients.host");
  const std::string machine = "7f0000000000-7f0080000000 rw-p 00000000 00:00 0 \n";
  host.Write("proc/310/maps", machine + "7f0080200000-7f00c0200000 rw-p 00000000 00:00 0 \n");
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2048 + 1024));
  host.Write("proc/310/maps", machine + "7f0080200000-7f1080200000 rw-p 00000000 00:00 0 \n");
  EXPECT_CELL(Vmm(host, 310).memSize, MB(8192)) << "at most maxmem";
  host.Write("proc/310/maps", "7f0000000000-7f0040000000 rw-p 00000000 00:00 0 \n");
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2048)) << "at least what the command line gives";
  host.Write("proc/310/maps", machine + "7f0080200000-7f00c0200000 rw-p 00000000 00:00 0 \n");
  AddWords(host, 310, {"-device", "nvdimm,memdev=n"});
  host.ask().Members(host.ControlGroup(kOwn));
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2048)) << "the other mapping may be of another device";
  AddWords(host, 310, {"-m", "size=2G,maxmem=2G"});
  host.ask().Members(host.ControlGroup(kOwn));
  const int64_t opens = host.Opens("proc/310/maps");
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2048));
  EXPECT_EQ(host.Opens("proc/310/maps"), opens) << "there is no room for more";
}

TEST(ClientRecords, WithoutASizeTheMappingsOrQemusDefaultCount) {
  SavedHost host("clients.host");
  host.Write("proc/320/maps", "7f0000000000-7f0010000000 rw-p 00000000 00:00 0 \n");
  EXPECT_CELL(Vmm(host, 320).memSize, MB(256));
  host.Remove("proc/320/maps");
  EXPECT_CELL(Vmm(host, 320).memSize, 9000000u) << "the process', since huge pages exceed QEMU's default";
  std::string status = host.Read("proc/320/status");
  host.Write("proc/320/status", status.replace(status.find("3145728 kB"), 7, "     96"));
  EXPECT_CELL(Vmm(host, 320).memSize, MB(128));
  EXPECT_CELL(Guest(host, 320).memTotal, MB(128));
}

TEST(ClientRecords, AUsersMaximumOfMemoryIsNotShown) {
  SavedHost host("clients.host");
  EXPECT_CELL(Vmm(host, 310).memSizeLimit, MB(8192)) << "of root's machine";
  std::string status = host.Read("proc/310/status");
  host.Write("proc/310/status", status.replace(status.find("Uid:\t0\t0"), 8, "Uid:\t7\t7"));
  host.MakeFolder("sys/kernel/debug/kvm/310-11");
  host.MakeLink("proc/310/fd/11", "anon_inode:kvm-vm");
  host.ask().Members(host.ControlGroup(kOwn));
  EXPECT_EQ(host.ask().Name(310), "web (uid 7)");
  EXPECT_CELL(Vmm(host, 310).memSize, MB(2048));
  EXPECT_CELL(Vmm(host, 310).memSizeLimit, MB(2048));
}

// Makes KVM list these numbers of pages that the guest of machine 310 has mapped.
void ListInKvm(SavedHost &host, const char *small, const char *large, const char *gigantic) {
  const std::string folder = "sys/kernel/debug/kvm/310-11/";
  host.Remove("proc/310/fd");
  host.MakeLink("proc/310/fd/11", "anon_inode:kvm-vm");
  host.Write(folder + "pages_4k", small);
  host.Write(folder + "pages_2m", large);
  host.Write(folder + "pages_1g", gigantic);
}

TEST(ClientRecords, AGuestInSharedMemoryIsToldFromItsMonitor) {
  SavedHost host("clients.host");
  AddWords(host, 310, {"-machine", "q35,memory-backend=ram", "-object", "memory-backend-memfd,id=ram,size=2G"});
  EXPECT_CELL(Vmm(host, 310).mapped, 40000u + 2000) << "shared memory, and the page of zeros";
  EXPECT_CELL(host.ask().Stats(310).ovhd, 1460000u + 4000);
  EXPECT_CELL(host.ask().Stats(kFirstVm + 310).consumed, 1464000u);
}

TEST(ClientRecords, AGuestInHugePagesHasNoSharedMemory) {
  SavedHost host("clients.host");
  std::string status = host.Read("proc/310/status");
  host.Write("proc/310/status",
             status.replace(status.find("HugetlbPages:\t       0 kB"), 25, "HugetlbPages:  512000 kB"));
  AddWords(host, 310,
           {"-machine", "q35,memory-backend=ram", "-object", "memory-backend-memfd,id=ram,size=2G,hugetlb=on"});
  EXPECT_CELL(Vmm(host, 310).mapped, 512000u + 2000) << "huge pages, and the page of zeros";
  EXPECT_CELL(host.ask().Stats(310).ovhd, 1500000u + 4000);
}

TEST(ClientRecords, KvmTellsWhatAnAnonymousGuestHasMapped) {
  SavedHost host("clients.host");
  std::string status = host.Read("proc/310/status");
  host.Write("proc/310/status", status.replace(status.find("4999868 kB"), 7, "4097020"));
  ListInKvm(host, "1000\n", "50\n", "0\n");
  EXPECT_CELL(Vmm(host, 310).mapped, 4000u + 102400 + 2000);
  EXPECT_CELL(host.ask().Stats(310).ovhd, 1500000u - 106400 + 4000);
  AddWords(host, 310, {"-mem-prealloc"});
  host.ask().Members(host.ControlGroup(kOwn));
  EXPECT_CELL(Vmm(host, 310).mapped, 1442000u) << "the monitor has mapped all of it";
}

TEST(ClientRecords, Swapping) {
  SavedHost host("clients.host");
  const VmSwapInfoRecord swap = Swap(host, 310);
  EXPECT_CELL(swap.swapped, MB(400 - 200) - 4000) << "less what is in memory, compressed or read again";
  EXPECT_CELL(swap.swapRead, 4000u);
  EXPECT_CELL(swap.swapIn, 400u);
  EXPECT_CELL(swap.swapOut, 20000u);
  EXPECT_CELL(swap.hvcSwapOn, 3u);
  EXPECT_CELL(swap.totalReg, 9000000u) << "a compressed memory disk is no swap file";
  EXPECT_CELL(swap.freeReg, 8999000u);
  EXPECT_CELL(swap.currentSwapper, 1u);
  EXPECT_CELL(swap.isSwapping, UINT8_MAX) << "this kernel does not measure pressure";
  EXPECT_CELL(swap.totalMig, 0u);
  const VmSwapInfoRecord other = Swap(host, 320);
  EXPECT_CELL(other.swapped, 5000u);
  EXPECT_CELL(other.swapRead, 0u) << "the host has swapped nothing";
  EXPECT_CELL(other.swapIn, 0u);
  EXPECT_CELL(other.gblSwapIn, 0u);
  EXPECT_CELL(other.hvcSwapOn, UINT32_MAX);
  EXPECT_CELL(other.totalReg, 9000000u);
}

// The only swap space is zram, so all swapped memory is in zram.
TEST(ClientRecords, MemoryInZram) {
  SavedHost host("clients.host");
  const uint64_t swapped = MB(400 - 200) - 4000;
  host.Write("proc/swaps", "/dev/zram0 partition 4000000 400000 100\n/a file 9 0 -2\n");
  host.Write("sys/block/zram0/mm_stat", "409600000 100000000 204800000 0 204800000 0 0 0\n");
  EXPECT_CELL(Vmm(host, 310).llswapped, swapped);
  EXPECT_CELL(Vmm(host, 310).llswapUsed, swapped / 2) << "its share of 200,000 KB";
  host.Remove("sys/block/zram0/mm_stat");
  EXPECT_CELL(Vmm(host, 310).llswapped, swapped);
  EXPECT_CELL(Vmm(host, 310).llswapUsed, kNoFigure);
  host.Write("proc/swaps", "/dev/zram0 partition 4000000 1000 100\n");
  EXPECT_CELL(Vmm(host, 310).llswapped, 1000u) << "at most what is there";
  host.Write("proc/swaps", "/dev/zram0 partition 4000000 0 100\n/a file 9 5 -2\n");
  EXPECT_CELL(Vmm(host, 310).llswapped, 0u);
  EXPECT_CELL(Vmm(host, 310).llswapUsed, 0u);
  host.Write("proc/swaps", "/dev/zram0 partition 4000000 7 100\n/a file 9 5 -2\n");
  EXPECT_CELL(Vmm(host, 310).llswapped, kNoFigure) << "in either";
  std::string status = host.Read("proc/320/status");
  host.Write("proc/320/status", status.replace(status.find("VmSwap:\t    5000 kB"), 19, "VmSwap:\t       0 kB"));
  EXPECT_CELL(Vmm(host, 320).llswapped, 0u) << "in neither";
  host.Forbid("proc/swaps");
  OrdinaryUser user;
  EXPECT_CELL(Vmm(host, 310).llswapped, kNoFigure);
}

std::string Pressure(int some, int full) {
  const std::string rest = ".99 avg60=0.00 avg300=0.00 total=0\n";
  return "some avg10=" + std::to_string(some) + rest + "full avg10=" + std::to_string(full) + rest;
}

TEST(ClientRecords, AMachineThatWaitsForMemoryIsSwapping) {
  SavedHost host("clients.host");
  EXPECT_CELL(Swap(host, 310).isSwapping, UINT8_MAX) << "nothing tells";
  host.Write("proc/pressure/memory", Pressure(1, 0));
  EXPECT_CELL(Swap(host, 310).isSwapping, 1u) << "the host's pressure";
  host.Write(kOwn + "/memory.pressure", Pressure(0, 0));
  EXPECT_CELL(Swap(host, 310).isSwapping, 0u) << "its own";
  host.Write(kOwn + "/memory.pressure", Pressure(12, 3));
  EXPECT_CELL(Swap(host, 310).isSwapping, 1u);
  EXPECT_CELL(host.ask().Stats(310).throttlePct, 97u);
  EXPECT_CELL(host.ask().Stats(host.ControlGroup(kOwn)).throttlePct, 97u);
  EXPECT_CELL(host.ask().Stats(0).throttlePct, 100u);
  EXPECT_CELL(host.ask().Stats(320).throttlePct, 100u) << "it has no group of its own";
  host.Write(kOwn + "/memory.pressure", "some avg10=x\nfull avg10=x\n");
  EXPECT_CELL(Swap(host, 310).isSwapping, UINT8_MAX);
  EXPECT_CELL(host.ask().Stats(310).throttlePct, UINT8_MAX);
  host.Write(kOwn + "/memory.swap.current", "0\n");
  EXPECT_CELL(Swap(host, 310).isSwapping, 0u) << "none of it is swapped";
}

TEST(ClientRecords, GroupsAndOldKernelsDoNotTellWhatIsSharedByMerging) {
  SavedHost host("clients.host");
  EXPECT_CELL(host.ask().Stats(host.ControlGroup(kOwn)).sharedSaved, kNoFigure);
  host.Write("sys/kernel/mm/ksm/pages_sharing", "0\n");
  host.Write("sys/kernel/mm/ksm/ksm_zero_pages", "0\n");
  EXPECT_CELL(host.ask().Stats(host.ControlGroup(kOwn)).sharedSaved, 0u);
}

TEST(ClientRecords, PersistentMemoryOfAGuestIsNotTold) {
  SavedHost host("clients.host");
  AddWords(host, 310, {"-device", "nvdimm,memdev=n"});
  for (const uint64_t figure : {Vmm(host, 310).vpmemRO, Vmm(host, 310).vpmemRW, Vmm(host, 310).vpmemUC})
    EXPECT_EQ(figure, kNoFigure);
}

TEST(ClientRecords, WhatTheHostCountsIsNotAGroupsFigure) {
  SavedHost host("clients.host");
  host.Write("proc/vmstat",
             "pswpin 1000\npswpout 6000\nswpin_zero 10\nthp_fault_alloc 7\nthp_swpout_fallback 9\n"
             "thp_fault_fallback 1\nthp_scan_exceed_swap_pte 2\n");
  host.Write("proc/meminfo", "MemTotal: 8000000 kB\nSwapCached: 5000 kB\nZswapped: 300000 kB\n");
  const VmSwapInfoRecord own = Swap(host, 310);
  EXPECT_CELL(own.swapIn, 400u);
  EXPECT_CELL(own.gblSwapIn, 4040u) << "pages of zeros are swapped too";
  EXPECT_CELL(own.gblSwapOut, 24000u);
  EXPECT_CELL(own.gblSwapRead, 5000u);
  const VmSwapInfoRecord shared = Swap(host, 320);
  EXPECT_CELL(shared.gblSwapIn, 4040u);
  EXPECT_CELL(shared.gblSwapRead, 5000u);
  for (const uint64_t unknown :
       {shared.swapIn, shared.swapOut, shared.swapRead, Vmm(host, 320).zipped, Vmm(host, 320).zipSaved,
        LargePages(host, 320).allocSuccess, LargePages(host, 320).broken, LargePages(host, 310).failNoMem,
        LargePages(host, 310).failSwapped}) {
    EXPECT_EQ(unknown, kNoFigure);
  }
  EXPECT_CELL(Consumed(Vmm(host, 320)), Vmm(host, 320).mapped) << "what is not known cancels out";
}

// A control group that is older than its machine also counts what earlier machines in it did.
TEST(ClientRecords, CountsOfAGroupThatIsOlderThanTheMachine) {
  SavedHost host("clients.host");
  host.Write(kShared + "/cgroup.procs", "320\n");
  host.Write(kShared + "/memory.stat",
             "pswpin 5\npswpout 0\nzswap 4096\nzswapped 8192\nzswpout 9\nthp_fault_alloc 3\n");
  host.ask().Members(host.ControlGroup(kShared));
  EXPECT_CELL(Swap(host, 320).swapIn, kNoFigure);
  EXPECT_CELL(Swap(host, 320).swapOut, 0u) << "no machine did";
  EXPECT_CELL(Zip(host, 320).zipped, kNoFigure);
  EXPECT_CELL(Zip(host, 320).usedCache, 4u) << "what is kept now is the machine's";
  EXPECT_CELL(Vmm(host, 320).zipped, 8u);
  EXPECT_CELL(LargePages(host, 320).allocSuccess, kNoFigure);
}

TEST(ClientRecords, SwapSpaceWithinTheLimit) {
  SavedHost host("clients.host");
  host.Write(kOwn + "/memory.swap.max", "1048576000\n");
  EXPECT_CELL(Swap(host, 310).totalReg, MB(1000));
  EXPECT_CELL(Swap(host, 310).freeReg, MB(600));
  host.Write("proc/swaps", "/a file 500000 400000 -2\n");
  EXPECT_CELL(Swap(host, 310).totalReg, 500000u);
  EXPECT_CELL(Swap(host, 310).freeReg, 100000u);
}

TEST(ClientRecords, LargePages) {
  SavedHost host("clients.host");
  const LPageStatsRecord own = LargePages(host, 310);
  EXPECT_CELL(own.backings2M, 500u + 2) << "those of files are not the guest's";
  EXPECT_CELL(own.backings1G, 0u);
  EXPECT_CELL(own.allocSuccess, 510u);
  EXPECT_CELL(own.broken, 8u);
  EXPECT_CELL(own.failNoMem, 0u) << "of the whole host";
  EXPECT_CELL(own.maxSwapThreshold, 0u);
  const LPageStatsRecord shared = LargePages(host, 320);
  EXPECT_CELL(shared.backings2M, UINT32_MAX) << "nothing tells its transparent huge pages";
  EXPECT_CELL(shared.backings1G, 0u);
  EXPECT_CELL(shared.allocSuccess, 0u);
  host.Write("sys/kernel/mm/transparent_hugepage/khugepaged/max_ptes_swap", "64\n");
  EXPECT_CELL(LargePages(host, 320).maxSwapThreshold, 64u);
}

TEST(ClientRecords, LargePagesThatKvmCounts) {
  SavedHost host("clients.host");
  ListInKvm(host, "1000\n", "50\n", "0\n");
  EXPECT_CELL(LargePages(host, 310).backings2M, 50u) << "without the monitor's";
  EXPECT_CELL(LargePages(host, 310).backings1G, 0u);
  ListInKvm(host, "1000\n", "x\n", "0\n");
  EXPECT_CELL(LargePages(host, 310).backings2M, 502u) << "those of its control group";
  ListInKvm(host, "1000\n", "5000\n", "0\n");
  EXPECT_CELL(LargePages(host, 310).backings2M, 1024u) << "at most all of its memory";
  std::string status = host.Read("proc/310/status");
  host.Write("proc/310/status",
             status.replace(status.find("HugetlbPages:\t       0 kB"), 25, "HugetlbPages: 1048576 kB"));
  ListInKvm(host, "1000\n", "700\n", "0\n");
  EXPECT_CELL(LargePages(host, 310).backings2M, 700u) << "512 of them are of a pool";
  host.Remove(kOwn + "/hugetlb.1GB.current");
  ListInKvm(host, "1000\n", "7\n", "1\n");
  EXPECT_CELL(LargePages(host, 310).backings1G, 1u);
  EXPECT_CELL(LargePages(host, 310).backings2M, 7u);
}

TEST(ClientRecords, AHostWithoutTransparentHugePages) {
  SavedHost host("clients.host");
  EXPECT_CELL(LargePages(host, 320).backings2M, UINT32_MAX);
  host.Write("proc/meminfo", "MemTotal: 16000000 kB\nAnonHugePages: 2048 kB\nShmemHugePages: 0 kB\n");
  EXPECT_CELL(LargePages(host, 320).backings2M, UINT32_MAX) << "some process has one";
  for (const char *none : {"AnonHugePages: 0 kB\nShmemHugePages: 0 kB\n", ""}) {
    host.Write("proc/meminfo", std::string("MemTotal: 16000000 kB\n") + none);
    EXPECT_CELL(LargePages(host, 320).backings2M, 1536u) << "those of pools: " << none;
    EXPECT_CELL(LargePages(host, 310).backings2M, 0u) << none;
  }
}

TEST(ClientRecords, LargePagesOfPools) {
  SavedHost host("clients.host");
  const std::string status =
      "Name:\tqemu-kvm\nUid:\t0\t0\t0\t0\nVmSize: 9 kB\nVmData: 9 kB\nVmStk: 0 kB\nVmRSS: 9 kB\nHugetlbPages: ";
  host.Write("proc/320/status", status + "3145728 kB\nTHP_enabled: 0\n");
  EXPECT_CELL(LargePages(host, 320).backings2M, 1536u) << "in pages of 2 MB, where nothing tells their size";
  host.Write("proc/320/status", status + "4194304 kB\nTHP_enabled: 1\n");
  EXPECT_CELL(LargePages(host, 320).backings2M, 2048u) << "nothing of the guest is left for transparent ones";
  host.Write(kShared + "/cgroup.procs", "320\n");
  host.ask().Members(host.ControlGroup(kShared));
  const LPageStatsRecord own = LargePages(host, 320);
  EXPECT_CELL(own.backings1G, 3u);
  EXPECT_CELL(own.backings2M, 512u);
  for (const char *bad : {"", "x\n"}) {
    host.Write(kShared + "/hugetlb.1GB.current", bad);
    EXPECT_CELL(LargePages(host, 320).backings1G, 0u);
    EXPECT_CELL(LargePages(host, 320).backings2M, 2048u) << "in all they are known";
  }
  host.Remove(kShared + "/hugetlb.1GB.current");
  EXPECT_CELL(LargePages(host, 320).backings2M, 2048u);
}

TEST(ClientRecords, Compression) {
  SavedHost host("clients.host");
  EXPECT_CELL(Zip(host, 310).totalCache, 0u) << "zswap is off";
  host.Write("sys/module/zswap/parameters/enabled", "Y\n");
  host.Write("sys/module/zswap/parameters/max_pool_percent", "20\n");
  host.Write("proc/meminfo", "MemTotal: 16000000 kB\n");
  const ZipStatsRecord zip = Zip(host, 310);
  EXPECT_CELL(zip.totalCache, MB(1024));
  EXPECT_CELL(zip.maxCache, MB(1024));
  EXPECT_CELL(zip.usedCache, MB(50));
  EXPECT_CELL(zip.zipped, 240000u);
  EXPECT_CELL(zip.unZipped, 4000u);
  EXPECT_CELL(zip.zipRejected, 20000u) << "written to swap space, and nothing written back";
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_memzipInfo, {320}), HVC_NOT_FOUND);
  host.Write(kOwn + "/memory.zswap.max", "x\n");
  EXPECT_CELL(Zip(host, 310).totalCache, kNoFigure);
  host.Write(kOwn + "/memory.zswap.max", "max\n");
  EXPECT_CELL(Zip(host, 310).totalCache, 3200000u) << "a fifth of the host's memory";
  host.Remove(kOwn + "/memory.zswap.max");
  EXPECT_CELL(Zip(host, 310).maxCache, 3200000u);
  host.Write("sys/module/zswap/parameters/enabled", "N\n");
  EXPECT_CELL(Zip(host, 310).maxCache, 0u);
  EXPECT_CELL(Zip(host, 310).zipRejected, 0u) << "it is off";
  host.Write(kOwn + "/memory.stat", "anon 1\nzswap x\n");
  EXPECT_CELL(Zip(host, 310).usedCache, kNoFigure);
  host.Write(kOwn + "/memory.stat", "anon 1\n");
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_memzipInfo, {310}), HVC_NOT_FOUND) << "a kernel without it";
}

TEST(ClientRecords, FiguresThatOnlyTheGuestKnows) {
  SavedHost host("clients.host");
  const GuestStatsRecord guest = Guest(host, 310);
  EXPECT_CELL(guest.memTotal, MB(2048));
  EXPECT_CELL(guest.lpageTotal, UINT32_MAX);
  EXPECT_CELL(guest.memNeeded, kNoFigure);
  EXPECT_CELL(Guest(host, 320).memTotal, MB(4096));
  SavedHost unknown("clients.host");
  unknown.Remove("proc/320/maps");
  EXPECT_EQ(unknown.ask().Status(nodes::sched_memClients_kestrel_guest, {320}), HVC_NOT_FOUND);
}

TEST(ClientRecords, UserWorlds) {
  SavedHost host("clients.host");
  const UwMemoryStatsRecord uw = Uw(host, 400);
  EXPECT_CELL(uw.min, 0u);
  EXPECT_CELL(uw.max, kNoFigure);
  EXPECT_CELL(uw.minLimit, kNoFigure);
  EXPECT_EQ(static_cast<int>(uw.memSizeLimit), 1 << 20);
  EXPECT_CELL(uw.memSize, 800000u);
  EXPECT_CELL(uw.touched, kNoFigure);
  EXPECT_CELL(uw.mapped, 502400u + 40);
  EXPECT_CELL(uw.sharedSaved, 200u + 40);
  EXPECT_CELL(uw.cow, 240u);
  EXPECT_CELL(Consumed(uw), 502400u - 200);
  EXPECT_CELL(uw.memBStore, 502400u);
  EXPECT_CELL(uw.swapBStore, 30000u);
  EXPECT_CELL(uw.swapped, 30000u);
  EXPECT_CELL(uw.swappable, 150000u - 25000);
  EXPECT_CELL(uw.shm, 200000u);
  EXPECT_CELL(uw.pageable, 350000u - 25000);
  EXPECT_CELL(uw.pageableUnacct, 50000u);
  EXPECT_CELL(uw.pinned, 25000u + 102400);
  EXPECT_CELL(uw.prealloced, 102400u);
  EXPECT_CELL(uw.pinnedResv, 25000u + 102400);
  EXPECT_CELL(uw.totalResv, 25000u + 102400);
  EXPECT_CELL(uw.allocTgt, 800000u) << "no group above limits it";

  EXPECT_CELL(Uw(host, 310).min, MB(1024));
  EXPECT_CELL(Uw(host, 310).max, MB(4096));
  EXPECT_CELL(Uw(host, 310).totalResv, MB(1024)) << "nothing is locked";
  EXPECT_CELL(Uw(host, 310).allocTgt, MB(1536));
  EXPECT_CELL(Uw(host, 320).allocTgt, MB(1));
  EXPECT_CELL(Uw(host, 320).totalResv, 3145728u) << "huge pages";
  EXPECT_EQ(static_cast<int>(Uw(host, 310).memSizeLimit), -1) << "unlimited";
  EXPECT_EQ(static_cast<int>(Uw(host, 320).memSizeLimit), 16 << 20);
  EXPECT_EQ(static_cast<int>(Uw(host, 321).memSizeLimit), -1) << "more than the field takes";
}

TEST(ClientRecords, LockedMemoryIsBoundedByConsumedMemory) {
  SavedHost host("clients.host");
  host.Write("proc/400/status",
             "VmData: 900 kB\nVmStk: 0 kB\nVmRSS: 100 kB\nRssAnon: 60 kB\nRssFile: 40 kB\nVmLck: 500 kB\n");
  const UwMemoryStatsRecord uw = Uw(host, 400);
  EXPECT_CELL(uw.pinned, 100u);
  EXPECT_CELL(uw.pinnedResv, 500u);
  EXPECT_CELL(uw.swappable, 0u);
  EXPECT_CELL(uw.pageable, 0u);
  EXPECT_CELL(uw.swapped, kNoFigure) << "no such line";
}

TEST(ClientRecords, MovedPages) {
  SavedHost host("clients.host");
  EXPECT_EQ(RemapTypes(host, 310), (Types{"numa", "promotion", "demotion"}));
  EXPECT_EQ(Remapped(host, 310, "numa"), 600u) << "without those that went to faster memory";
  EXPECT_EQ(Remapped(host, 310, "promotion"), 100u);
  EXPECT_EQ(Remapped(host, 310, "demotion"), 42u);
  EXPECT_EQ(host.Opens("proc/310/sched"), 0);
  EXPECT_EQ(RemapTypes(host, 321), Types{"numa"});
  EXPECT_EQ(Remapped(host, 321, "numa"), 12u);
  EXPECT_EQ(RemapTypes(host, 400), Types{}) << "nothing counts";
  EXPECT_EQ(RemapTypes(host, kFirstVm + 310), Types{});
  for (const char *type : {"demotion", "", "other"})
    EXPECT_EQ(RemapStatus(host, 321, type), HVC_NOT_FOUND) << type;
  EXPECT_EQ(RemapStatus(host, 400, "numa"), HVC_NOT_FOUND);
  EXPECT_EQ(RemapStatus(host, 999, "numa"), HVC_NOT_FOUND);
  EXPECT_EQ(RemapStatus(host, kFirstVm + 310, "numa"), HVC_NOT_FOUND);
}

TEST(ClientRecords, PagesThatStayedWhereTheyWere) {
  SavedHost host("clients.host");
  host.Write(kOwn + "/memory.stat", "numa_hint_faults 1000\nnuma_pages_migrated 700\npgpromote_success 100\n");
  RemapStatsRecord record = Remap(host, 310, "numa");
  EXPECT_CELL(record.remapped, 600u);
  EXPECT_CELL(record.filtered, 300u);
  EXPECT_CELL(record.added, 900u);
  record = Remap(host, 310, "promotion");
  EXPECT_CELL(record.filtered, 0u);
  host.Write(kOwn + "/memory.stat", "numa_hint_faults x\nnuma_pages_migrated 700\npgpromote_success 100\n");
  record = Remap(host, 310, "numa");
  EXPECT_CELL(record.filtered, kNoFigure);
  EXPECT_CELL(record.remapped, 600u);
}

TEST(ClientRecords, MovedPagesAreTakenAsTheKernelWritesThem) {
  const struct {
    const char *text;
    uint64_t pages;
  } lines[] = {{"numa_pages_migrated : 7\n", 7},
               {"numa_pages_migrated: 7", 7},
               {"x\nnuma_pages_migrated\t7\nnuma_pages_migrated : 8\n", 7},
               {"numa_pages_migrated : many\n", kNoFigure}};
  SavedHost host("clients.host");
  for (const auto &line : lines) {
    host.Write("proc/321/sched", line.text);
    EXPECT_EQ(Remapped(host, 321, "numa"), line.pages) << line.text;
  }
  host.Forbid("proc/321/sched");
  {
    OrdinaryUser user;
    EXPECT_EQ(Remapped(host, 321, "numa"), kNoFigure);
  }
  SavedHost without("clients.host");
  without.Write("proc/321/sched", "numa_preferred_nid : -1\n");
  EXPECT_EQ(RemapTypes(without, 321), Types{});
}

TEST(ClientRecords, AddressSpaceLimits) {
  const struct {
    const char *text;
    int32_t limit;
  } lines[] = {{"Max address space 1048576 2097152 bytes\n", 1024},
               {"Max address space         2199023254528        unlimited bytes", INT32_MAX},
               {"Max address space         2199023255552        unlimited bytes", -1},
               {"Max address space         0                    0 bytes", 0},
               {"Max address space         much\n", -1},
               {"Max address space ", -1},
               {"", -1}};
  SavedHost host("clients.host");
  for (const auto &line : lines) {
    host.Write("proc/400/limits", line.text);
    EXPECT_EQ(static_cast<int>(Uw(host, 400).memSizeLimit), line.limit) << line.text;
  }
  host.Remove("proc/400/limits");
  EXPECT_EQ(static_cast<int>(Uw(host, 400).memSizeLimit), -1);
  EXPECT_CELL(Uw(host, 400).memSize, 800000u);
  host.Remove("proc/400");
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_kestrel_uw, {400}), HVC_NOT_FOUND);
}

TEST(ClientRecords, SwapFiles) {
  const struct {
    const char *text;
    uint64_t total, free;
  } tables[] = {
      {"", 0, 0},
      {"Filename Type Size Used Priority\n", 0, 0},
      {"Filename Type Size Used\n/a file 10 4\n/b partition 5 5 -2 more\n", 15, 6},
      {"/a file 10 11 -2\n", 10, 0},
      {"/a file ten 4 -2\n", kNoFigure, kNoFigure},
      {"/a file 10\n", 10, kNoFigure},
      {"/a file\n/b\n\n  \n", kNoFigure, kNoFigure},
  };
  SavedHost host("clients.host");
  for (const auto &table : tables) {
    host.Write("proc/swaps", table.text);
    EXPECT_CELL(Swap(host, 320).totalReg, table.total) << table.text;
    EXPECT_CELL(Swap(host, 320).freeReg, table.free) << table.text;
  }
  host.Forbid("proc/swaps");
  {
    OrdinaryUser user;
    EXPECT_CELL(Swap(host, 320).freeReg, kNoFigure);
  }
  host.Remove("proc/swaps");
  EXPECT_CELL(Swap(host, 320).totalReg, 0u);
}

TEST(ClientRecords, SharingOfAProcess) {
  const auto saved = [](SavedHost &host) -> uint64_t { return Uw(host, 400).sharedSaved; };
  SavedHost unused("clients.host");
  unused.Write("sys/kernel/mm/ksm/pages_sharing", "0\n");
  unused.Write("sys/kernel/mm/ksm/ksm_zero_pages", "0\n");
  EXPECT_EQ(saved(unused), 0u) << "nothing is shared on the host";
  EXPECT_EQ(unused.Opens("proc/400/ksm_stat"), 0);
  SavedHost old("clients.host");
  old.Write("proc/400/ksm_stat", "ksm_rmap_items 5\n");
  old.Write("proc/400/ksm_merging_pages", "3\n");
  EXPECT_EQ(saved(old), 12u) << "a kernel that has the merged pages elsewhere";
  old.Remove("proc/400/ksm_stat");
  EXPECT_EQ(saved(old), 12u);
  old.Remove("proc/400/ksm_merging_pages");
  EXPECT_EQ(saved(old), kNoFigure) << "a kernel that does not tell";
  old.Write("proc/400/ksm_stat", "ksm_zero_pages x\nksm_merging_pages 5\n");
  EXPECT_EQ(saved(old), kNoFigure);
  SavedHost forbidden("clients.host");
  forbidden.Forbid("proc/310/ksm_stat");
  OrdinaryUser user;
  const VmmMemoryStatsRecord vmm = Vmm(forbidden, 310);
  EXPECT_CELL(vmm.sharedSaved, kNoFigure);
  EXPECT_CELL(vmm.shared, kNoFigure);
  EXPECT_CELL(vmm.zero, kNoFigure);
  EXPECT_CELL(vmm.mapped, 1440000u);
}

// A bad line affects only the fields of the record that come from it.
TEST(ClientRecords, MemoryStatOfAVm) {
  SavedHost host("clients.host");
  host.Write(kOwn + "/memory.stat", "zswapped x\nzswap 4096\nanon_thp\npswpin -1\nswapcached y\n");
  EXPECT_CELL(Vmm(host, 310).zipped, kNoFigure);
  EXPECT_CELL(Vmm(host, 310).zipSaved, kNoFigure);
  EXPECT_CELL(Swap(host, 310).swapped, kNoFigure);
  EXPECT_CELL(Swap(host, 310).swapIn, kNoFigure);
  EXPECT_CELL(Swap(host, 310).swapOut, 0u);
  EXPECT_CELL(Swap(host, 310).swapRead, kNoFigure);
  EXPECT_CELL(LargePages(host, 310).backings2M, UINT32_MAX);
  host.ask().Members(0);
  host.Remove(kOwn + "/memory.stat");
  EXPECT_CELL(Vmm(host, 310).zipped, 0u);
  EXPECT_CELL(Swap(host, 310).swapped, MB(400));
  host.Remove(kOwn + "/memory.swap.current");
  EXPECT_CELL(Swap(host, 310).swapped, 300000u) << "without swap accounting, the process' own";
  host.Remove(kOwn + "/memory.high");
  host.Remove(kOwn + "/memory.max");
  EXPECT_CELL(Vmm(host, 310).allocTgt, MB(2048));
  EXPECT_CELL(host.ask().Alloc(310).max, kNoFigure);
}

TEST(ClientRecords, AStatusThatCannotBeReadCostsTheCells) {
  SavedHost host("clients.host");
  host.Forbid("proc/400/status");
  OrdinaryUser user;
  const UwMemoryStatsRecord uw = Uw(host, 400);
  EXPECT_CELL(uw.memSize, kNoFigure);
  EXPECT_CELL(uw.mapped, kNoFigure);
  EXPECT_CELL(uw.swapped, kNoFigure);
  EXPECT_CELL(uw.pinned, kNoFigure);
  EXPECT_EQ(static_cast<int>(uw.memSizeLimit), 1 << 20);
}

TEST(ClientRecords, Version1) {
  SavedHost host("v1.host");
  const std::string folder = kTop + "memory/limited";
  host.Write("proc/100/status",
             "Name:\tqemu-kvm\nUid:\t0\t0\t0\t0\nVmSize: 20000 kB\nVmData: 8000 kB\nVmStk: 0 kB\nVmRSS: 5000 "
             "kB\nRssAnon: 4000 kB\nVmSwap: 7 kB\n");
  host.MakeLink("proc/100/exe", "/usr/bin/qemu-kvm");
  host.Write("proc/100/cmdline", std::string("qemu-kvm\0-m\00016", 14) + '\0');
  host.Write(folder + "/memory.stat",
             "rss 1\ntotal_rss 1048576\ntotal_swap 2048\ntotal_rss_huge 4194304\ntotal_swapcached 1024\n");
  EXPECT_CELL(Vmm(host, 100).memSize, MB(16));
  EXPECT_CELL(Vmm(host, 100).allocTgt, MB(12)) << "the soft limit";
  EXPECT_CELL(Swap(host, 100).swapped, 2u) << "the swap cache is not in total_swap";
  EXPECT_CELL(Swap(host, 100).swapRead, 1u);
  EXPECT_CELL(LargePages(host, 100).backings2M, 2u);
  EXPECT_CELL(host.ask().Alloc(100).max, MB(16));
  EXPECT_CELL(host.ask().Alloc(100).min, 0u);
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_memzipInfo, {100}), HVC_NOT_FOUND);
}

TEST(ClientRecords, AnOldKernel) {
  SavedHost host("kernel-5.10.host");
  const UwMemoryStatsRecord uw = Uw(host, 100);
  EXPECT_CELL(uw.mapped, 8000u);
  EXPECT_CELL(uw.sharedSaved, kNoFigure) << "it does not tell";
  EXPECT_EQ(RemapTypes(host, 100), Types{});
}

// The files that a report reads.

// Reads the same nodes as the reports on clients, group by group.
void Walk(SavedHost &host, int64_t group, bool vmsOnly) {
  Asker ask = host.ask();
  const std::vector<int64_t> members = ask.Members(group);
  const uint32_t flags = ask.Flags(group);
  if ((flags & HVC_GROUP_VM) != 0) {
    for (const int64_t either : {group, kFirstVm + group})
      ask.Alloc(either);
    Vmm(host, group);
    Swap(host, group);
    LargePages(host, group);
    static_cast<void>(host.ask().Status(nodes::sched_memClients_kestrel_guest, {group}));
    static_cast<void>(host.ask().Status(nodes::sched_memClients_memzipInfo, {group}));
    ask.Stats(group);
  }
  if ((flags & HVC_GROUP_USER_WORLD) != 0 && !vmsOnly) {
    Uw(host, group);
    for (const std::string &type : RemapTypes(host, group))
      Remapped(host, group, type);
  }
  for (const int64_t member : members)
    Walk(host, member, vmsOnly);
}

std::vector<std::string> TwiceOpened(std::vector<std::string> opened) {
  std::sort(opened.begin(), opened.end());
  std::vector<std::string> twice;
  for (size_t i = 1; i < opened.size(); ++i) {
    if (opened[i] == opened[i - 1]) twice.push_back(opened[i]);
  }
  return twice;
}

TEST(ClientReads, AWalkReadsEachFileOnceAndNoneThatIsCostly) {
  for (const char *archive : {"clients.host", "v2.host", "v1.host", "kernel-5.10.host", "kvm-descriptors.host"}) {
    SavedHost host(archive);
    Walk(host, 0, false);
    EXPECT_EQ(TwiceOpened(host.opened()), Types{}) << archive;
    for (const std::string &path : host.opened()) {
      for (const char *costly : {"smaps", "smaps_rollup", "numa_maps", "pagetypeinfo"})
        EXPECT_FALSE(path.ends_with(costly)) << path;
    }
  }
}

TEST(ClientReads, ASecondWalkSeesChanges) {
  SavedHost host("clients.host");
  Walk(host, 0, false);
  host.Write("proc/swaps", "/a file 10 4 -2\n");
  host.Write("proc/400/status", "VmData: 9 kB\nVmStk: 0 kB\nVmRSS: 7 kB\n");
  host.Write("proc/310/ksm_stat", "ksm_merging_pages 1\n");
  host.Write(kOwn + "/memory.stat", "swapcached 4096\n");
  host.ask().Members(0);
  EXPECT_CELL(Swap(host, 310).totalReg, 10u);
  EXPECT_CELL(Uw(host, 400).memBStore, 7u);
  EXPECT_CELL(Vmm(host, 310).sharedSaved, 4u);
  EXPECT_CELL(Swap(host, 310).swapRead, 4u);
}

TEST(ClientReads, ARecordIsReadAgainAfterAChange) {
  SavedHost host("clients.host");
  Walk(host, 0, false);
  host.Write("proc/swaps", "");
  host.Write(kOwn + "/memory.stat", "swapcached 4096\nnuma_pages_migrated 1\nzswap 2048\n");
  host.Write("proc/321/sched", "numa_pages_migrated : 13\n");
  host.Write("proc/400/limits", "Max address space 4096 4096 bytes\n");
  EXPECT_CELL(Swap(host, 310).totalReg, 0u);
  EXPECT_CELL(Swap(host, 310).swapRead, 4u);
  EXPECT_CELL(Zip(host, 310).usedCache, 2u);
  EXPECT_EQ(Remapped(host, 310, "numa"), 1u);
  EXPECT_EQ(Remapped(host, 321, "numa"), 13u);
  EXPECT_EQ(static_cast<int>(Uw(host, 400).memSizeLimit), 4);
}

TEST(ClientReads, OnlyWhatIsAskedForIsRead) {
  SavedHost host("clients.host");
  Walk(host, 0, true);
  for (const char *path : {"proc/400/limits", "proc/400/ksm_stat", "proc/400/sched", "proc/400/maps", "proc/310/limits",
                           "proc/310/sched"}) {
    EXPECT_EQ(host.Opens(path), 0) << path;
  }
  EXPECT_EQ(host.Opens("proc/320/maps"), 1);
  EXPECT_EQ(host.Opens("proc/310/maps"), 1) << "its command line leaves room for more memory";
  EXPECT_EQ(host.Opens("proc/swaps"), 1);
  EXPECT_EQ(host.Opens(kOwn + "/memory.stat"), 1);
  EXPECT_EQ(host.Opens(kTop + "app.slice/memory.stat"), 0);
}

TEST(ClientReads, AVanishedVmIsNotFound) {
  SavedHost host("clients.host");
  host.ask().Members(host.ControlGroup(kOwn));
  host.Remove("proc/310");
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_kestrel_vmm, {310}), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_swapInfo, {kFirstVm + 310}), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(nodes::sched_memClients_kestrel_uw, {310}), HVC_NOT_FOUND);
}

}  // namespace
}  // namespace platkit
