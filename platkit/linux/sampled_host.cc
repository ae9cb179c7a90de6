#include "platkit/linux/sampled_host.h"

#include "platkit/linux/files/printable.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/linux/linux_source.h"

namespace platkit {
namespace {

constexpr size_t kMaxOwnDescriptors = 16;
constexpr size_t kMaxText = 255;

}  // namespace

SampledHost::SampledHost(const char *root, Reach reach, size_t maxDescriptors)
    : files_(FilesOf(root, reach, kMaxOwnDescriptors)), source_(OpenLinuxHost(FilesOf(root, reach, maxDescriptors))) {}

HostFiles SampledHost::FilesOf(const char *root, Reach reach, size_t maxDescriptors) const {
  HostFiles files(root, reach);
  files.KeepOpen(maxDescriptors);
  files.UseClock(clock_.clock());
  files.ReuseSettings(settingsAge_);
  return files;
}

Figure SampledHost::AvailableBytes() { return ReadMeminfo(files_).available * 1024; }

std::string SampledHost::Name() { return PrintableName(ReadLineOf("proc/sys/kernel/hostname"), kMaxText); }

std::string SampledHost::KernelRelease() { return ReadLineOf("proc/sys/kernel/osrelease"); }

// Parses a line such as "6c5c3d3e-8f0b-4c53-9a5e-5d9a1b8e9f10".
std::array<std::byte, 16> SampledHost::BootID() {
  std::array<std::byte, 16> id = {};
  std::string digits = ReadLineOf("proc/sys/kernel/random/boot_id");
  std::erase(digits, '-');
  if (digits.size() != 2 * id.size()) return id;
  for (size_t i = 0; i < id.size(); ++i) {
    uint8_t byte = 0;
    TextScanner scanner(std::string_view(digits).substr(2 * i, 2));
    if (!scanner.TakeNumber(byte, 16) || !scanner.AtEnd()) return {};
    id[i] = std::byte{byte};
  }
  return id;
}

std::string SampledHost::ReadLineOf(const char *path) {
  char buffer[kMaxText + 1];
  std::string_view text;
  if (files_.ReadShort(HostPath(std::string_view(path)), buffer, text) != HVC_OK) return "";
  return std::string(text.substr(0, text.find_first_of(std::string_view("\n\0", 2))));
}

}  // namespace platkit
