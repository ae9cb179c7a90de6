#include "platkit/linux/kernel/qemu_cmdline.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/qemu_properties.h"

namespace platkit {
namespace {

// Management tools generate several KB, with the name and the memory near the start.
constexpr size_t kMaxCommandLine = 32 * 1024;

// Digits of a fraction after these change a size by less than 1 KB in any unit.
constexpr size_t kMaxFractionDigits = 15;

// QEMU's machines have this much memory by default.
constexpr uint64_t kDefaultMemoryKB = 128 * 1024;

// Units of sizes without a suffix, in bytes.
constexpr uint64_t kByte = 1;
constexpr uint64_t kMegabyte = 1 << 20;

// The unit that a size's suffix names, in bytes; 0 for an unknown suffix. `unitWithout` is the unit without a suffix.
uint64_t UnitOfSuffix(std::string_view suffix, uint64_t unitWithout) {
  if (suffix.empty()) return unitWithout;
  if (suffix.size() > 1) return 0;
  constexpr std::string_view kSuffixes = "bkmgtpe";
  const size_t index = kSuffixes.find(static_cast<char>(suffix[0] | 0x20));
  return index == std::string_view::npos ? 0 : uint64_t{1} << (10 * index);
}

// The fraction of `unit` that the digits after a decimal point denote.
uint64_t FractionOf(uint64_t unit, std::string_view digits) {
  uint64_t sum = 0;
  uint64_t place = 1;
  for (const char digit : digits.substr(0, kMaxFractionDigits))
    sum += unit * static_cast<uint64_t>(digit - '0') / (place *= 10);
  return sum;
}

// Parses "4096", "4G" or "1.5g". Absent if the text is not a size, or if the size is 0.
Figure ParseSizeInKB(std::string_view text, uint64_t unitWithoutSuffix) {
  TextScanner scanner(text);
  uint64_t whole = 0;
  if (!scanner.TakeNumber(whole)) return {};
  std::string_view fraction;
  std::string_view suffix = scanner.rest();
  if (scanner.Take(".")) {
    const size_t end = std::min(scanner.rest().find_first_not_of("0123456789"), scanner.rest().size());
    fraction = scanner.rest().substr(0, end);
    suffix = scanner.rest().substr(end);
  }
  const uint64_t unit = UnitOfSuffix(suffix, unitWithoutSuffix);
  if (unit == 0) return {};
  const Figure bytes = Figure(whole) * unit + Figure(FractionOf(unit, fraction));
  return bytes == Figure(0) || bytes == Figure::Unreadable() ? Figure() : bytes / 1024;
}

// Whether the device, given as properties or as JSON, is a balloon. An identifier that contains the name of a balloon
// is too rare to matter.
bool IsBalloon(std::string_view device) { return device.find("virtio-balloon") != std::string_view::npos; }

// A memory backend: the memory of the machine, or of a memory device.
struct Backend {
  std::string id;
  Figure size;            // in KB
  bool isPrivate = true;  // anonymous pages
  bool isHuge = false;    // huge pages of a pool; unknown for a file
  std::string file = {};  // empty: none
  bool isShared = false;  // of a file

  bool isFile() const { return !file.empty(); }
};

// memfd and shm are shared by default; the other types are private by default.
Backend BackendOf(const QemuProperties &properties) {
  const std::string_view type = properties.ValueOf("qom-type");
  const bool isMemfd = type == "memory-backend-memfd";
  const bool isShared = properties.IsOn("share") || (isMemfd && properties.ValueOf("share").empty());
  Backend backend = {.id = std::string(properties.ValueOf("id")),
                     .size = ParseSizeInKB(properties.ValueOf("size"), kByte)};
  if (isMemfd) backend.isHuge = properties.IsOn("hugetlb");
  if (isMemfd) backend.isPrivate = !isShared && !backend.isHuge;
  if (type == "memory-backend-ram") backend.isPrivate = !isShared;
  if (type == "memory-backend-shm") backend.isPrivate = false;
  if (type == "memory-backend-file" && !properties.ValueOf("mem-path").empty()) {
    backend.isPrivate = false;
    backend.file = properties.ValueOf("mem-path");
    backend.isShared = isShared;
  }
  return backend;
}

// Collects options in any order: an option may name a backend that a later option defines.
class OptionParser {
 public:
  using Handler = void (OptionParser::*)(std::string_view value);
  // Returns null if the option has no value that describes the guest or its memory.
  static Handler HandlerOf(std::string_view option);

  void TakePreallocation() { options_.isPopulated = true; }

  QemuOptions Finish(bool isQemu);

 private:
  void TakeName(std::string_view value);
  void TakeMemory(std::string_view value);
  void TakeMachine(std::string_view value);
  void TakeObject(std::string_view value);
  void TakeDevice(std::string_view value);
  void TakeNuma(std::string_view value);
  void TakeOvercommit(std::string_view value);
  void TakeMemPath(std::string_view value) { memPath_ = value; }
  void TakeConfigurationFile(std::string_view) { hasConfigurationFile_ = true; }
  void TakeIncoming(std::string_view) { options_.isPopulated = true; }

  const Backend *Find(const std::string &id) const;
  Figure SizeOf(const std::string &backend) const;
  void FillBacking();
  void AddBacking(const std::string &backend);

  QemuOptions options_;
  std::string machineBackend_;
  std::vector<Backend> backends_;
  std::vector<std::string> dimms_;  // the backends of memory devices
  std::vector<std::string> parts_;  // the backends of virtio-mem devices and of virtual NUMA nodes
  bool hasNumaBackend_ = false;
  std::string memPath_;
  Figure requested_;      // of virtio-mem devices
  bool hasSize_ = false;  // a size was given, even if it could not be parsed
  bool hasConfigurationFile_ = false;
  bool hasBalloon_ = false;
  bool hasPersistentMemory_ = false;
};

OptionParser::Handler OptionParser::HandlerOf(std::string_view option) {
  static constexpr struct {
    std::string_view name;
    Handler handler;
  } kHandlers[] = {
      {"-name", &OptionParser::TakeName},
      {"-m", &OptionParser::TakeMemory},
      {"-machine", &OptionParser::TakeMachine},
      {"-M", &OptionParser::TakeMachine},
      {"-object", &OptionParser::TakeObject},
      {"-device", &OptionParser::TakeDevice},
      {"-readconfig", &OptionParser::TakeConfigurationFile},
      {"-numa", &OptionParser::TakeNuma},
      {"-overcommit", &OptionParser::TakeOvercommit},
      {"-mem-path", &OptionParser::TakeMemPath},
      {"-incoming", &OptionParser::TakeIncoming},
      {"-loadvm", &OptionParser::TakeIncoming},
  };
  const auto *found = std::ranges::find(kHandlers, option, [](const auto &known) { return known.name; });
  return found == std::end(kHandlers) ? nullptr : found->handler;
}

void OptionParser::TakeName(std::string_view value) {
  const QemuProperties properties(value, "guest");
  const std::string_view name = properties.ValueOf("guest");
  if (!name.empty()) options_.name = name;
}

void OptionParser::TakeMemory(std::string_view value) {
  const QemuProperties properties(value, "size");
  hasSize_ |= !properties.ValueOf("size").empty();
  options_.memory = ParseSizeInKB(properties.ValueOf("size"), kMegabyte).IfAbsent(options_.memory);
  options_.maxMemory = ParseSizeInKB(properties.ValueOf("maxmem"), kMegabyte).IfAbsent(options_.maxMemory);
}

void OptionParser::TakeMachine(std::string_view value) {
  const QemuProperties properties(value, "type");
  if (const std::string_view id = properties.ValueOf("memory-backend"); !id.empty()) machineBackend_ = id;
}

void OptionParser::TakeObject(std::string_view value) {
  const QemuProperties properties(value, "qom-type");
  if (!properties.ValueOf("qom-type").starts_with("memory-backend-")) return;
  backends_.push_back(BackendOf(properties));
  if (properties.IsOn("prealloc")) options_.isPopulated = true;
}

void OptionParser::TakeNuma(std::string_view value) {
  const QemuProperties properties(value, "type");
  if (properties.ValueOf("memdev").empty()) return;
  parts_.emplace_back(properties.ValueOf("memdev"));
  hasNumaBackend_ = true;
}

void OptionParser::TakeOvercommit(std::string_view value) {
  if (QemuProperties(value, "").IsOn("mem-lock")) options_.isPopulated = true;
}

void OptionParser::TakeDevice(std::string_view value) {
  const QemuProperties properties(value, "driver");
  const std::string_view driver = properties.ValueOf("driver");
  if (IsBalloon(value)) hasBalloon_ = true;
  if (driver == "nvdimm" || driver.starts_with("virtio-pmem")) hasPersistentMemory_ = true;
  if (driver == "pc-dimm") dimms_.emplace_back(properties.ValueOf("memdev"));
  if (driver.starts_with("vfio-")) options_.isPopulated = true;
  if (driver.starts_with("virtio-mem-")) {
    parts_.emplace_back(properties.ValueOf("memdev"));
    requested_ = requested_ + ParseSizeInKB(properties.ValueOf("requested-size"), kByte);
  }
  for (const std::string_view prefix : {"virtio-mem-", "virtio-pmem-", "nvdimm", "ivshmem", "qxl"})
    options_.mapsOtherMemory |= driver.starts_with(prefix);
}

const Backend *OptionParser::Find(const std::string &id) const {
  const auto found = std::ranges::find(backends_, id, &Backend::id);
  return found == backends_.end() ? nullptr : &*found;
}

Figure OptionParser::SizeOf(const std::string &backend) const {
  const Backend *found = Find(backend);
  return found == nullptr ? Figure() : found->size;
}

void OptionParser::AddBacking(const std::string &backend) {
  const Backend *found = Find(backend);
  if (found == nullptr || found->isPrivate) {
    options_.hasPrivateMemory = true;
  } else if (found->isFile()) {
    options_.files.push_back({found->file, found->isShared});
  } else if (!found->isHuge) {
    options_.hasSharedMemory = true;
  }
}

// -mem-path applies to a machine without a backend; QEMU maps the file privately.
void OptionParser::FillBacking() {
  options_.hasPrivateMemory = hasConfigurationFile_;
  if (!machineBackend_.empty()) {
    AddBacking(machineBackend_);
  } else if (!memPath_.empty()) {
    options_.files.push_back({.path = memPath_, .isShared = false});
  } else if (!hasNumaBackend_) {
    options_.hasPrivateMemory = true;
  }
  for (const std::vector<std::string> &backends : {std::cref(dimms_), std::cref(parts_)})
    std::ranges::for_each(backends, [this](const std::string &backend) { AddBacking(backend); });
}

// Memory devices add to the machine's own memory. If the command line gives no size, the machine's memory has the size
// of its backend.
QemuOptions OptionParser::Finish(bool isQemu) {
  options_.isQemu = isQemu;
  if (isQemu) FillBacking();
  const auto device = [&](bool isListed) {
    return isListed || (isQemu && !hasConfigurationFile_) ? Figure(isListed ? 1 : 0) : Figure();
  };
  options_.hasBalloon = device(hasBalloon_);
  options_.hasPersistentMemory = device(hasPersistentMemory_);
  Figure plugged = requested_;
  for (const std::string &dimm : dimms_)
    plugged = plugged + SizeOf(dimm);
  const Figure base = options_.memory.IfAbsent(SizeOf(machineBackend_));
  const Figure standard = isQemu && !hasSize_ && !hasConfigurationFile_ ? Figure(kDefaultMemoryKB) : Figure();
  if (base.isAbsent() && !standard.isAbsent()) options_.defaultMemory = standard + plugged;
  options_.memory = base.isAbsent() ? base : base + plugged;
  return std::move(options_);
}

}  // namespace

bool IsQemuProgram(std::string_view program) {
  program.remove_prefix(program.rfind('/') + 1);
  return program.starts_with("qemu-system-") || program == "qemu-kvm" || program == "kvm";
}

QemuOptions ParseQemuCommandLine(std::string_view commandLine) {
  TextScanner arguments(commandLine);
  const bool isQemu = IsQemuProgram(arguments.TakeUntil('\0'));
  OptionParser parser;
  while (!arguments.AtEnd()) {
    std::string_view option = arguments.TakeUntil('\0');
    if (option.starts_with("--")) option.remove_prefix(1);
    if (option == "-mem-prealloc") parser.TakePreallocation();
    if (const auto handler = OptionParser::HandlerOf(option); handler != nullptr) {
      (parser.*handler)(arguments.TakeUntil('\0'));
    }
  }
  return parser.Finish(isQemu);
}

QemuOptions ReadQemuCommandLine(HostFiles &files, int64_t pid) {
  const std::unique_ptr<char[]> buffer(new char[kMaxCommandLine]);
  std::string_view commandLine;
  if (files.Read(HostPath("proc/", pid, "/cmdline"), {buffer.get(), kMaxCommandLine}, commandLine) != HVC_OK) {
    return {};
  }
  QemuOptions options = ParseQemuCommandLine(commandLine);
  const bool isTruncated = commandLine.size() == kMaxCommandLine;
  for (Figure *device : {&options.hasBalloon, &options.hasPersistentMemory})
    if (isTruncated && *device == Figure(0)) *device = Figure();
  return options;
}

}  // namespace platkit
