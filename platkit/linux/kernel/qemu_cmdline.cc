#include "platkit/linux/kernel/qemu_cmdline.h"

#include <algorithm>
#include <memory>

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Management tools generate several KB, with the name and the memory near the start.
constexpr size_t kMaxCommandLine = 32 * 1024;

// Further digits of a fraction are less than 1 KB in any unit.
constexpr size_t kMaxFractionDigits = 15;

// Removes the first property from an option's value. A comma ends the property; two commas mean a literal comma.
std::string TakeProperty(std::string_view &text) {
  std::string property;
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c == ',') {
      if (!text.starts_with(',')) break;
      text.remove_prefix(1);
    }
    property += c;
  }
  return property;
}

enum class KeyOfFirst { kOptional, kRequired };

// The value of the property `key`. If the key is optional, the first property may lack it.
std::string PropertyOf(std::string_view text, std::string_view key, KeyOfFirst keyOfFirst) {
  std::string found;
  bool isFirst = true;
  for (; !text.empty(); isFirst = false) {
    const std::string property = TakeProperty(text);
    const size_t equals = property.find('=');
    const bool isWanted = equals == std::string::npos ? isFirst && keyOfFirst == KeyOfFirst::kOptional
                                                      : property.compare(0, equals, key) == 0;
    if (isWanted) found = property.substr(equals + 1);
  }
  return found;
}

// The unit of a size's suffix, in bytes; MB without a suffix, 0 for any other suffix.
uint64_t UnitOfSuffix(std::string_view suffix) {
  if (suffix.empty()) return uint64_t{1} << 20;
  if (suffix.size() > 1) return 0;
  constexpr std::string_view kSuffixes = "bkmgtpe";
  const size_t index = kSuffixes.find(static_cast<char>(suffix[0] | 0x20));
  return index == std::string_view::npos ? 0 : uint64_t{1} << (10 * index);
}

// The fraction of `unit` that the digits after a decimal point give.
uint64_t FractionOf(uint64_t unit, std::string_view digits) {
  uint64_t sum = 0;
  uint64_t place = 1;
  for (const char digit : digits.substr(0, kMaxFractionDigits))
    sum += unit * static_cast<uint64_t>(digit - '0') / (place *= 10);
  return sum;
}

// Parses "4096", "4G" or "1.5g". Absent if the text is not a size.
Figure ParseSizeInKB(std::string_view text) {
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
  const uint64_t unit = UnitOfSuffix(suffix);
  if (unit == 0) return {};
  const Figure bytes = Figure(whole) * unit + Figure(FractionOf(unit, fraction));
  return bytes == Figure(0) || bytes == Figure::Unreadable() ? Figure() : bytes / 1024;
}

// The device, as properties or as JSON. An identifier that looks like a balloon is too rare to matter.
bool IsBalloon(std::string_view device) { return device.find("virtio-balloon") != std::string_view::npos; }

}  // namespace

bool IsQemuProgram(std::string_view program) {
  program.remove_prefix(program.rfind('/') + 1);
  return program.starts_with("qemu-system-") || program == "qemu-kvm" || program == "kvm";
}

QemuOptions ParseQemuCommandLine(std::string_view commandLine) {
  QemuOptions options;
  TextScanner arguments(commandLine);
  options.isQemu = IsQemuProgram(arguments.TakeUntil('\0'));
  bool hasBalloon = false;
  bool hasOtherOptions = false;
  while (!arguments.AtEnd()) {
    std::string_view option = arguments.TakeUntil('\0');
    if (option.starts_with("--")) option.remove_prefix(1);
    if (option == "-name") {
      std::string name = PropertyOf(arguments.TakeUntil('\0'), "guest", KeyOfFirst::kOptional);
      if (!name.empty()) options.name = std::move(name);
    } else if (option == "-m") {
      const std::string_view sizes = arguments.TakeUntil('\0');
      options.memory = ParseSizeInKB(PropertyOf(sizes, "size", KeyOfFirst::kOptional)).IfAbsent(options.memory);
      options.maxMemory = ParseSizeInKB(PropertyOf(sizes, "maxmem", KeyOfFirst::kRequired)).IfAbsent(options.maxMemory);
    } else if (option == "-device") {
      hasBalloon = IsBalloon(arguments.TakeUntil('\0')) || hasBalloon;
    } else if (option == "-readconfig") {
      hasOtherOptions = true;
    }
  }
  if (hasBalloon || (options.isQemu && !hasOtherOptions)) options.hasBalloon = Figure(hasBalloon ? 1 : 0);
  return options;
}

QemuOptions ReadQemuCommandLine(HostFiles &files, int64_t pid) {
  const std::unique_ptr<char[]> buffer(new char[kMaxCommandLine]);
  std::string_view commandLine;
  if (files.Read(HostPath("proc/", pid, "/cmdline"), {buffer.get(), kMaxCommandLine}, commandLine) != HVC_OK) {
    return {};
  }
  QemuOptions options = ParseQemuCommandLine(commandLine);
  const bool isTruncated = commandLine.size() == kMaxCommandLine;
  if (isTruncated && options.hasBalloon == Figure(0)) options.hasBalloon = Figure();
  return options;
}

}  // namespace platkit
