#include "platkit/linux/kernel/cgroup_mount.h"

#include <utility>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Takes the first word off `text`, up to `separator`.
std::string_view TakeWord(std::string_view &text, char separator) {
  const size_t end = text.find(separator);
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return word;
}

bool HasWord(std::string_view list, std::string_view wanted) {
  while (!list.empty()) {
    if (TakeWord(list, ',') == wanted) return true;
  }
  return false;
}

bool IsOctalDigit(char c) { return c >= '0' && c <= '7'; }

// Mount tables write blanks, line ends and backslashes as a backslash and three octal digits.
std::string Unescape(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && IsOctalDigit(text[i + 1]) && IsOctalDigit(text[i + 2]) &&
        IsOctalDigit(text[i + 3])) {
      plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

std::string BelowRoot(std::string_view mountPoint) {
  std::string folder = Unescape(mountPoint);
  folder.erase(0, folder.find_first_not_of('/'));
  return folder.empty() ? "." : folder;
}

struct Mount {
  std::string_view device, root, point, type, options;
};

// id parent device root point options [optional words] - type source super-options
bool ParseMount(std::string_view line, Mount &mount) {
  const size_t separator = line.find(" - ");
  if (separator == std::string_view::npos) return false;
  std::string_view tail = line.substr(separator + 3);
  TakeWord(line, ' ');
  TakeWord(line, ' ');
  mount.device = TakeWord(line, ' ');
  mount.root = TakeWord(line, ' ');
  mount.point = TakeWord(line, ' ');
  mount.type = TakeWord(tail, ' ');
  TakeWord(tail, ' ');
  mount.options = TakeWord(tail, ' ');
  return mount.root.starts_with('/') && mount.point.starts_with('/');
}

bool ParseDevice(std::string_view text, DeviceNumber &device) {
  uint64_t major = 0, minor = 0;
  if (!ParseNumber(TakeWord(text, ':'), major) || !ParseNumber(text, minor)) return false;
  device = major << 32 | minor;
  return true;
}

bool HoldsMemory(const Mount &mount) { return mount.type == "hugetlbfs" || mount.type == "tmpfs"; }

// How well a mount serves; 0 if it shows no control groups.
int Rank(const Mount &mount) {
  if (mount.type == "cgroup2") return 3;
  if (mount.type != "cgroup") return 0;
  if (HasWord(mount.options, "memory")) return 4;
  return HasWord(mount.options, "name=systemd") ? 2 : 1;
}

MemoryFiles MemoryFilesOfRank(int rank) {
  if (rank == 4) return MemoryFiles::kV1;
  return rank == 3 ? MemoryFiles::kV2 : MemoryFiles::kNone;
}

// The part of `group` below the group that the mount shows.
std::string_view BelowMounted(std::string_view group, std::string_view mounted) {
  if (mounted == "/") mounted = {};
  if (!group.starts_with(mounted)) return {};
  group.remove_prefix(mounted.size());
  if (!group.starts_with('/')) return {};
  group.remove_prefix(1);
  // A process outside the reader's control-group namespace.
  return group == ".." || group.starts_with("../") ? std::string_view() : group;
}

}  // namespace

Hierarchy FindHierarchy(HostFiles &files) {
  Hierarchy best;
  int bestRank = 0;
  std::vector<DeviceNumber> memoryDevices;
  LineReader lines(files, HostPath("proc/self/mountinfo"));
  std::string_view line;
  Mount mount;
  while (lines.Next(line)) {
    if (!ParseMount(line, mount)) continue;
    DeviceNumber device = 0;
    if (HoldsMemory(mount) && ParseDevice(mount.device, device)) memoryDevices.push_back(device);
    const int rank = Rank(mount);
    if (rank <= bestRank) continue;
    bestRank = rank;
    best = {.exists = true,
            .memoryFiles = MemoryFilesOfRank(rank),
            .top = BelowRoot(mount.point),
            .mounted = Unescape(mount.root),
            .v1Options = std::string(mount.type == "cgroup" ? mount.options : std::string_view()),
            .memoryDevices = {}};
  }
  best.memoryDevices = std::move(memoryDevices);
  return best;
}

std::string FolderOfProcess(HostFiles &files, const Hierarchy &hierarchy, int64_t pid) {
  LineReader lines(files, HostPath("proc/", pid, "/cgroup"));
  std::string_view line;
  while (lines.Next(line)) {
    TakeWord(line, ':');
    std::string_view controllers = TakeWord(line, ':');
    const bool ours = hierarchy.v1Options.empty()
                          ? controllers.empty()
                          : !controllers.empty() && HasWord(hierarchy.v1Options, TakeWord(controllers, ','));
    if (ours) return std::string(BelowMounted(line, hierarchy.mounted));
  }
  return {};
}

}  // namespace platkit
