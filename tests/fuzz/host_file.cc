// Parses one file of a host, which is faster than a whole host. An input is a letter that selects the file, and the
// contents of the file.
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platkit/linux/linux_source.h"
#include "tests/fuzz/byte_reader.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/tree/walk.h"

namespace {

using platkit::ArchiveEntry;

struct Parser {
  const char *host;   // in tests/linux/hosts
  const char *file;   // the file that the input replaces
  std::string below;  // the path whose nodes are read
};

// The letter 'A' selects the first parser. Add new parsers at the end, so that inputs in the corpus keep their meaning.
const Parser kParsers[] = {
    {"two-nodes", "proc/meminfo", "/memory/comprehensive"},
    {"two-nodes", "proc/zoneinfo", "/sched/globalStats"},
    {"two-nodes", "proc/buddyinfo", "/system/buddy"},
    {"two-nodes", "proc/zoneinfo", "/memory/memNodes"},
    {"two-nodes", "proc/vmstat", "/sched/globalStats/memory"},
    {"two-nodes", "proc/iomem", "/memory/comprehensive"},
    {"two-nodes", "proc/slabinfo", "/system/heaps"},
    {"two-nodes", "sys/devices/system/node/node0/hugepages/hugepages-2048kB/free_hugepages", "/memory/lpage/nodeList"},
    {"two-nodes", "sys/devices/LNXSYSTM:00/ndbus0/region0/mapping0", "/memory/pmem"},
    {"two-nodes", "sys/devices/LNXSYSTM:00/ndbus0/region0/namespace0.0/uuid", "/memory/pmem"},
    {"two-nodes", "sys/devices/LNXSYSTM:00/ndbus0/region0/size", "/memory/pmem"},
    {"two-nodes", "sys/devices/LNXSYSTM:00/ndbus0/nmem0/nfit/flags", "/memory/pmem"},
    {"two-nodes", "proc/self/auxv", "/memory/comprehensive"},
    {"clients", "proc/310/status", "/sched/memClients"},
    {"clients", "proc/310/cmdline", "/sched"},
    {"clients", "proc/310/ksm_stat", "/sched/memClients"},
    {"clients", "proc/310/sched", "/sched/memClients"},
    {"clients", "proc/310/cgroup", "/sched/groups"},
    {"clients", "proc/320/maps", "/memory/lpage/vmLPage"},
    {"clients", "proc/320/limits", "/sched/memClients"},
    {"clients", "proc/swaps", "/sched/memClients"},
    {"clients", "proc/self/mountinfo", "/sched/groups"},
    {"clients", "sys/fs/cgroup/machine.slice/web.scope/guest/memory.stat", "/sched"},
    {"clients", "sys/fs/cgroup/machine.slice/web.scope/guest/memory.max", "/sched/groups"},
    {"clients", "sys/fs/cgroup/machine.slice/web.scope/guest/cgroup.procs", "/sched/groups"},
    {"clients", "sys/kernel/mm/ksm/pages_sharing", "/memory/pshare"},
    {"v1", "sys/fs/cgroup/memory/limited/memory.stat", "/sched"},
    {"v1", "proc/self/mountinfo", "/sched/groups"},
    {"kvm-list", "proc/400/status", "/sched/groups"},
    {"persistent-memory", "proc/cpuinfo", "/hardware/cpu"},
    {"persistent-memory", "sys/bus/pci/devices/0000:3a:0a.2/config", "/hardware/pci"},
    {"persistent-memory", "sys/bus/pci/devices/0000:3a:0a.2/vendor", "/hardware/pci"},
    {"clients", "run/libvirt/qemu/web.xml", "/sched/memClients"},
    {"clients", "run/kestrel/guests.nodal", "/sched/memClients"},
};

// A host whose original file is restored after each input.
class Host {
 public:
  explicit Host(const std::string &name) : root_(name) {
    std::ifstream in(std::string(SAVED_HOSTS) + "/" + name + ".host");
    REQUIRE(in);
    for (const ArchiveEntry &entry : platkit::ReadArchive(in)) {
      root_.Put(entry);
      files_[entry.path] = entry;
    }
  }

  const std::string &root() const { return root_.path(); }
  void Replace(const std::string &file, std::string_view content) {
    root_.Put({ArchiveEntry::Kind::kFile, file, std::string(content)});
  }
  void Restore(const std::string &file) {
    std::filesystem::remove(root() + "/" + file);
    if (const auto known = files_.find(file); known != files_.end()) root_.Put(known->second);
  }

 private:
  fuzz::RootFolder root_;
  std::map<std::string, ArchiveEntry> files_;
};

Host &HostNamed(const std::string &name) {
  static std::map<std::string, std::unique_ptr<Host>> hosts;
  std::unique_ptr<Host> &host = hosts[name];
  if (host == nullptr) host = std::make_unique<Host>(name);
  return *host;
}

void ReadNodes(const std::string &root, const std::string &below) {
  std::unique_ptr<platkit::Source> source;
  REQUIRE(platkit::OpenSavedRoot(root.c_str(), platkit::Writes::kRefused, source) == HVC_OK);
  nodal::SourceTree tree(*source);
  const nodal::PathFilter filter({below});
  const auto read = [&](const nodal::Node &node, bool asRecord, const nodal::Arguments &arguments) {
    nodal::Arguments entries;
    std::vector<std::byte> record(asRecord ? node.record->size : 0);
    static_cast<void>(asRecord ? tree.Get(node, arguments, record) : tree.List(node, arguments, entries));
  };
  try {
    nodal::Walk(tree, filter).Visit([](const std::string &, size_t) {}, read);
  } catch (const nodal::Failure &) {
    // the list cannot be read
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::ByteReader input(fuzz::Text(data, size));
  const size_t letter = input.Take<unsigned char>() - size_t{'A'};
  const Parser &parser = kParsers[letter % std::size(kParsers)];
  Host &host = HostNamed(parser.host);
  host.Replace(parser.file, input.rest());
  ReadNodes(host.root(), parser.below);
  host.Restore(parser.file);
  return 0;
}
