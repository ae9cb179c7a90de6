#include "platkit/linux/control_group.h"

#include "platkit/linux/figure_files.h"

namespace platkit {
namespace {

struct AmountFile {
  std::string_view v1, v2;  // empty: this version has none
};

// In the order of GroupAmount.
constexpr AmountFile kAmountFiles[] = {
    {"", "memory.min"},
    {"", "memory.low"},
    {"memory.soft_limit_in_bytes", "memory.high"},
    {"memory.limit_in_bytes", "memory.max"},
    {"memory.usage_in_bytes", "memory.current"},
    {"memory.max_usage_in_bytes", "memory.peak"},
    {"", "memory.swap.current"},
    {"memory.memsw.max_usage_in_bytes", ""},
    {"memory.kmem.usage_in_bytes", ""},
};

// A version 1 key without "total_" leaves the descendants out.
GroupStat ReadV1(HostFiles &files, const HostPath &path) {
  Figure activeAnon, activeFile, swap;
  const WantedFigure wanted[] = {
      {"total_active_anon", &activeAnon}, {"total_active_file", &activeFile}, {"total_swap", &swap}};
  ReadFigures(files, path, wanted);
  return {.active = activeAnon + activeFile, .swap = swap, .kernel = {}};
}

GroupStat ReadV2(HostFiles &files, const HostPath &path) {
  Figure activeAnon, activeFile, kernel, stack, pageTables, secondaryPageTables, perCpu, slab, sockets;
  const WantedFigure wanted[] = {{"active_anon", &activeAnon},
                                 {"active_file", &activeFile},
                                 {"kernel", &kernel},
                                 {"kernel_stack", &stack},
                                 {"pagetables", &pageTables},
                                 {"sec_pagetables", &secondaryPageTables},
                                 {"percpu", &perCpu},
                                 {"slab", &slab},
                                 {"sock", &sockets}};
  ReadFigures(files, path, wanted);
  // Kernels before 5.18 give the parts alone. Socket buffers are charged apart from kernel memory on all of them.
  const Figure parts = stack + pageTables + secondaryPageTables + perCpu + slab;
  return {.active = activeAnon + activeFile, .swap = {}, .kernel = kernel.IfAbsent(parts) + sockets};
}

}  // namespace

Figure ControlGroupFiles::Amount(HostFiles &files, MemoryFiles version, const std::string &folder, GroupAmount amount) {
  std::optional<Figure> &kept = amounts_[static_cast<size_t>(amount)];
  if (!kept) {
    const AmountFile &names = kAmountFiles[static_cast<size_t>(amount)];
    const std::string_view name = version == MemoryFiles::kV1 ? names.v1 : names.v2;
    kept = name.empty() || version == MemoryFiles::kNone ? Figure() : ReadAmount(files, HostPath(folder, "/", name));
  }
  return *kept;
}

const GroupStat &ControlGroupFiles::Stat(HostFiles &files, MemoryFiles version, const std::string &folder) {
  if (!stat_) {
    const HostPath path(folder, "/memory.stat");
    stat_ = version == MemoryFiles::kV1   ? ReadV1(files, path)
            : version == MemoryFiles::kV2 ? ReadV2(files, path)
                                          : GroupStat();
  }
  return *stat_;
}

}  // namespace platkit
