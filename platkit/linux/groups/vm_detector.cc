#include "platkit/linux/groups/vm_detector.h"

#include <algorithm>
#include <charconv>
#include <memory>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Management tools write command lines of several KB, with the name and the memory near the start.
constexpr size_t kMostCommandLine = 32 * 1024;

// More digits of a size's fraction than this are less than a KB of the largest unit that a guest can have.
constexpr size_t kMostFractionDigits = 15;

std::string_view TakeArgument(std::string_view &commandLine) {
  const size_t end = commandLine.find('\0');
  const std::string_view word = commandLine.substr(0, end);
  commandLine.remove_prefix(end == std::string_view::npos ? commandLine.size() : end + 1);
  return word;
}

// Takes one word off an option's value, in which a comma ends a word and a doubled comma stands for a comma.
std::string TakePropertyText(std::string_view &text) {
  std::string word;
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c == ',') {
      if (!text.starts_with(',')) break;
      text.remove_prefix(1);
    }
    word += c;
  }
  return word;
}

// The value that an option's text gives to `wanted`, which may also be the key of a first word without one.
std::string PropertyOf(std::string_view text, std::string_view wanted, bool mayLackKey = true) {
  std::string found;
  bool isFirst = true;
  for (; !text.empty(); isFirst = false) {
    std::string word = TakePropertyText(text);
    const size_t equals = word.find('=');
    const bool isWanted = equals == std::string::npos ? isFirst && mayLackKey : word.compare(0, equals, wanted) == 0;
    if (isWanted) found = word.substr(equals + 1);
  }
  return found;
}

// The unit that a size's suffix names, in bytes; 0 if there is no such suffix.
uint64_t UnitOfSuffix(std::string_view suffix) {
  if (suffix.empty()) return uint64_t{1} << 20;
  if (suffix.size() > 1) return 0;
  constexpr std::string_view kSuffixes = "bkmgtpe";
  const size_t index = kSuffixes.find(static_cast<char>(suffix[0] | 0x20));
  return index == std::string_view::npos ? 0 : uint64_t{1} << (10 * index);
}

// "4096", "4G", "1.5g": a number of MB unless a suffix says otherwise.
Figure ParseSizeInKB(std::string_view text) {
  uint64_t whole = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
  if (error != std::errc()) return {};
  text.remove_prefix(static_cast<size_t>(stop - text.data()));
  std::string_view fraction;
  if (text.starts_with('.')) {
    const size_t end = std::min(text.find_first_not_of("0123456789", 1), text.size());
    fraction = text.substr(1, end - 1);
    text.remove_prefix(end);
  }
  const uint64_t unit = UnitOfSuffix(text);
  if (unit == 0) return {};
  uint64_t rest = 0;
  uint64_t place = 1;
  for (const char digit : fraction.substr(0, kMostFractionDigits)) {
    rest += unit * static_cast<uint64_t>(digit - '0') / (place *= 10);
  }
  const Figure bytes = Figure(whole) * unit + Figure(rest);
  return bytes == Figure(0) || bytes == Figure::Unreadable() ? Figure() : bytes / 1024;
}

// The kernel keeps 15 characters of a program's name, enough to tell which command lines are worth a read.
bool MayBeQemu(std::string_view processName) { return processName.starts_with("qemu") || processName == "kvm"; }

bool IsQemu(std::string_view commandLine) {
  std::string_view program = TakeArgument(commandLine);
  program.remove_prefix(program.rfind('/') + 1);
  return program.starts_with("qemu-system-") || program == "qemu-kvm" || program == "kvm";
}

}  // namespace

VirtualMachine ParseCommandLine(std::string_view commandLine) {
  VirtualMachine machine;
  TakeArgument(commandLine);
  while (!commandLine.empty()) {
    std::string_view option = TakeArgument(commandLine);
    if (option.starts_with("--")) option.remove_prefix(1);
    if (option == "-name") {
      const std::string name = PropertyOf(TakeArgument(commandLine), "guest");
      if (!name.empty()) machine.name = name;
    } else if (option == "-m") {
      const std::string_view sizes = TakeArgument(commandLine);
      machine.guestMemory = ParseSizeInKB(PropertyOf(sizes, "size")).IfAbsent(machine.guestMemory);
      machine.mostMemory = ParseSizeInKB(PropertyOf(sizes, "maxmem", false)).IfAbsent(machine.mostMemory);
    }
  }
  return machine;
}

std::optional<VirtualMachine> VirtualMachineFinder::Find(int64_t pid, const ProcessStatus &status) {
  const bool mayBeQemu = MayBeQemu(status.name);
  if (!mayBeQemu && !OwnsKvmMachine(pid, status)) return std::nullopt;
  const std::unique_ptr<char[]> buffer(new char[kMostCommandLine]);
  std::string_view commandLine;
  if (files_.Read(HostPath("proc/", pid, "/cmdline"), {buffer.get(), kMostCommandLine}, commandLine) != HVC_OK) {
    commandLine = {};
  }
  if (mayBeQemu && !IsQemu(commandLine) && !OwnsKvmMachine(pid, status)) return std::nullopt;
  return ParseCommandLine(commandLine);
}

bool VirtualMachineFinder::OwnsKvmMachine(int64_t pid, const ProcessStatus &status) {
  if (!allOwnersKnown_) allOwnersKnown_ = ReadKvmOwners();
  if (std::binary_search(kvmOwners_.begin(), kvmOwners_.end(), pid)) return true;
  return !*allOwnersKnown_ && status.threads > 1 && IsKvmInUse() && HoldsKvmMachine(pid);
}

// KVM keeps a folder "<thread>-<descriptor>" for each machine. False if that does not tell all their processes: the
// list may not be for this user, and the thread that made a machine may have ended since.
bool VirtualMachineFinder::ReadKvmOwners() {
  bool all = true;
  FolderReader folder(files_, HostPath("sys/kernel/debug/kvm"));
  FolderReader::Entry entry;
  while (folder.Next(entry)) {
    int64_t thread = 0;
    const char *end = entry.name.data() + entry.name.size();
    const auto [stop, error] = std::from_chars(entry.name.data(), end, thread);
    if (error != std::errc() || stop == end || *stop != '-') continue;
    int64_t pid = 0;
    if (ReadProcessOfThread(files_, thread, pid) == HVC_OK) {
      kvmOwners_.push_back(pid);
    } else {
      all = false;
    }
  }
  std::sort(kvmOwners_.begin(), kvmOwners_.end());
  return all && folder.status() == HVC_OK;
}

bool VirtualMachineFinder::IsKvmInUse() {
  if (kvmInUse_) return *kvmInUse_;
  bool isModule = false;
  bool inUse = false;
  for (const std::string_view module : {"kvm_intel", "kvm_amd", "kvm"}) {
    const Figure users = ReadAmount(files_, HostPath("sys/module/", module, "/refcnt"));
    isModule = isModule || !users.isAbsent();
    inUse = inUse || users.Cell(0) > 0;
  }
  // Built into the kernel, KVM does not count its users.
  kvmInUse_ = isModule ? inUse : files_.Exists(HostPath("dev/kvm"));
  return *kvmInUse_;
}

bool VirtualMachineFinder::HoldsKvmMachine(int64_t pid) {
  FolderReader descriptors(files_, HostPath("proc/", pid, "/fd"));
  FolderReader::Entry entry;
  while (descriptors.Next(entry)) {
    char buffer[64];
    std::string_view target;
    const HVC_ReturnStatus status = files_.ReadLink(HostPath("proc/", pid, "/fd/", entry.name), buffer, target);
    if (status == HVC_NO_PERMISSION) return false;  // what holds for one descriptor holds for all
    if (status == HVC_OK && target == "anon_inode:kvm-vm") return true;
  }
  return false;
}

}  // namespace platkit
