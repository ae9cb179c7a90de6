#include "platkit/linux/kernel/meminfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

void ExpectLine(const std::string &key, Figure Meminfo::*figure, Figure ifMissing) {
  ExpectFigures(
      "proc/meminfo", [figure](HostFiles &files) { return ReadMeminfo(files).*figure; },
      {{key + ":  12 kB\n", Figure(12)}, {key + ": many kB\n", kUnreadable}, {"Other: 1 kB\n", ifMissing}}, kUnreadable,
      ifMissing);
}

TEST(Meminfo, EachLine) {
  ExpectLine("MemTotal", &Meminfo::total, kUnreadable);
  ExpectLine("MemFree", &Meminfo::free, kUnreadable);
  ExpectLine("MemAvailable", &Meminfo::available, kUnreadable);
  ExpectLine("Slab", &Meminfo::slab, kUnreadable);
  ExpectLine("HardwareCorrupted", &Meminfo::hardwareCorrupted, kAbsent);
  ExpectLine("SwapCached", &Meminfo::swapCached, kAbsent);
  ExpectLine("AnonHugePages", &Meminfo::transparent, kAbsent);
  ExpectLine("ShmemHugePages", &Meminfo::transparent, kAbsent);
  ExpectLine("Zswapped", &Meminfo::zswapped, kAbsent);
}

TEST(Meminfo, TheKernelsMemoryIsTheSumOfTheLinesThatThereAre) {
  for (const char *key :
       {"KernelStack", "ShadowCallStack", "PageTables", "SecPageTables", "Percpu", "NFS_Unstable", "Bounce"}) {
    const std::string line = std::string(key) + ": 30 kB\n";
    ExpectFigures(
        "proc/meminfo", [](HostFiles &files) { return ReadMeminfo(files).kernel; },
        {{"Slab: 4 kB\n", Figure(4)},
         {"Slab: 4 kB\n" + line, Figure(34)},
         {"Slab: x kB\n" + line, kUnreadable},
         {"Slab: 4 kB\n" + std::string(key) + ": x\n", kUnreadable}},
        kUnreadable, kUnreadable);
  }
}

}  // namespace
}  // namespace platkit
