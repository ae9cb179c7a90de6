#include "platkit/linux/kernel/cgroup_mount.h"

#include <algorithm>
#include <utility>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

bool HasWord(std::string_view list, std::string_view wanted) {
  for (TextScanner words(list); !words.AtEnd();) {
    if (words.TakeUntil(',') == wanted) return true;
  }
  return false;
}

bool IsOctalDigit(char c) { return c >= '0' && c <= '7'; }

// The kernel escapes blanks, newlines and backslashes as a backslash and three octal digits.
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

// Parses "id parent device root point options [optional words] - type source super-options".
bool ParseMount(std::string_view line, Mount &mount) {
  constexpr std::string_view kSeparator = " - ";
  const size_t separator = line.find(kSeparator);
  if (separator == std::string_view::npos) return false;
  TextScanner head(line);
  head.TakeUntil(' ');
  head.TakeUntil(' ');
  mount.device = head.TakeUntil(' ');
  mount.root = head.TakeUntil(' ');
  mount.point = head.TakeUntil(' ');
  TextScanner tail(line.substr(separator + kSeparator.size()));
  mount.type = tail.TakeUntil(' ');
  tail.TakeUntil(' ');
  mount.options = tail.TakeUntil(' ');
  return mount.root.starts_with('/') && mount.point.starts_with('/');
}

bool ParseDevice(std::string_view text, DeviceNumber &device) {
  uint64_t major = 0, minor = 0;
  TextScanner scanner(text);
  if (!ParseNumber(scanner.TakeUntil(':'), major) || !ParseNumber(scanner.rest(), minor)) return false;
  device = major << 32 | minor;
  return true;
}

FileSystem TypeOf(const Mount &mount) {
  if (mount.type == "hugetlbfs") return FileSystem::kHugetlbfs;
  return mount.type == "tmpfs" ? FileSystem::kTmpfs : FileSystem::kOther;
}

using Folders = std::map<std::string, FileSystem, std::less<>>;

// The folder that contains `path`; empty for "/" and for a name without a slash.
std::string_view ParentOf(std::string_view path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || path.size() == 1) return {};
  return path.substr(0, slash == 0 ? 1 : slash);
}

// Returns the type of the deepest of `folders` that contains the path. Returns null if there is none within kMaxLevels
// of the path: a longer search could take too much time.
const FileSystem *FindMountOf(const Folders &folders, std::string_view path) {
  constexpr int kMaxLevels = 64;
  for (int level = 0; !path.empty() && level < kMaxLevels; ++level, path = ParentOf(path)) {
    const auto found = folders.find(path);
    if (found != folders.end()) return &found->second;
  }
  return nullptr;
}

// A mount below a memory file system hides a part of it. A later mount at the same place hides the earlier one.
void AddMemoryFolder(const Mount &mount, Folders &folders) {
  const FileSystem type = TypeOf(mount);
  const std::string path = Unescape(mount.point);
  if (type != FileSystem::kOther || FindMountOf(folders, path) != nullptr) folders.insert_or_assign(path, type);
}

// Ranks a mount: a higher rank is better, and 0 means that the mount contains no control groups.
int Rank(const Mount &mount) {
  if (mount.type == "cgroup2") return 3;
  if (mount.type != "cgroup") return 0;
  if (HasWord(mount.options, "memory")) return 4;
  return HasWord(mount.options, "name=systemd") ? 2 : 1;
}

CgroupVersion VersionOfRank(int rank) {
  if (rank == 4) return CgroupVersion::kV1;
  return rank == 3 ? CgroupVersion::kV2 : CgroupVersion::kNone;
}

// The part of `group` below `mounted`, the group that is visible at the mount.
std::string_view BelowMounted(std::string_view group, std::string_view mounted) {
  if (mounted == "/") mounted = {};
  if (!group.starts_with(mounted)) return {};
  group.remove_prefix(mounted.size());
  if (!group.starts_with('/')) return {};
  group.remove_prefix(1);
  // ".." is outside the control-group namespace of this process.
  return group == ".." || group.starts_with("../") ? std::string_view() : group;
}

}  // namespace

CgroupMount FindCgroupMount(HostFiles &files) {
  CgroupMount best;
  int bestRank = 0;
  std::vector<DeviceNumber> memoryDevices;
  Folders memoryFolders;
  LineReader lines(files, HostPath("proc/self/mountinfo"));
  std::string_view line;
  Mount mount;
  while (lines.Next(line)) {
    if (!ParseMount(line, mount)) continue;
    DeviceNumber device = 0;
    if (TypeOf(mount) != FileSystem::kOther && ParseDevice(mount.device, device)) memoryDevices.push_back(device);
    AddMemoryFolder(mount, memoryFolders);
    const int rank = Rank(mount);
    if (rank <= bestRank) continue;
    bestRank = rank;
    best = {.exists = true,
            .memoryFiles = VersionOfRank(rank),
            .top = BelowRoot(mount.point),
            .mounted = Unescape(mount.root),
            .v1Options = std::string(mount.type == "cgroup" ? mount.options : std::string_view()),
            .memoryDevices = {},
            .memoryFolders = {}};
  }
  std::ranges::sort(memoryDevices);
  memoryDevices.erase(std::unique(memoryDevices.begin(), memoryDevices.end()), memoryDevices.end());
  best.memoryDevices = std::move(memoryDevices);
  best.memoryFolders = std::move(memoryFolders);
  return best;
}

FileSystem FileSystemOf(const CgroupMount &mount, std::string_view path) {
  const FileSystem *found = FindMountOf(mount.memoryFolders, path);
  const bool isPlain = path.starts_with('/') && path.find("/../") == std::string_view::npos;
  return found == nullptr || !isPlain ? FileSystem::kOther : *found;
}

std::string FullCgroupOfFolder(const CgroupMount &mount, std::string_view folder) {
  std::string path = mount.mounted == "/" ? std::string() : mount.mounted;
  if (folder.starts_with(mount.top)) path += folder.substr(mount.top.size());
  return path;
}

// Lines are "id:controllers:folder", with no controllers in version 2.
std::string ReadFullCgroupOfProcess(HostFiles &files, const CgroupMount &mount, int64_t pid) {
  LineReader lines(files, HostPath("proc/", pid, "/cgroup"));
  for (std::string_view line; lines.Next(line);) {
    TextScanner scanner(line);
    scanner.TakeUntil(':');
    TextScanner controllers(scanner.TakeUntil(':'));
    const bool isMount = mount.v1Options.empty()
                             ? controllers.AtEnd()
                             : !controllers.AtEnd() && HasWord(mount.v1Options, controllers.TakeUntil(','));
    if (isMount) return std::string(scanner.rest());
  }
  return {};
}

std::string ReadCgroupOfProcess(HostFiles &files, const CgroupMount &mount, int64_t pid) {
  return std::string(BelowMounted(ReadFullCgroupOfProcess(files, mount, pid), mount.mounted));
}

}  // namespace platkit
