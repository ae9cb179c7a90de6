#include "platkit/linux/kernel/nvdimm.h"

#include <algorithm>
#include <string>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/nd_devices.h"

namespace platkit {
namespace {

// Parses "nmem12". The kernel prints numbers without leading zeros, so "nmem012" is not a module.
bool ParseModule(std::string_view name, uint32_t &number) {
  TextScanner scanner(name);
  if (!scanner.Take("nmem")) return false;
  const std::string_view digits = scanner.rest();
  return scanner.TakeNumber(number) && digits == std::to_string(number);
}

}  // namespace

HVC_ReturnStatus ListNvdimms(HostFiles &files, std::vector<uint32_t> &numbers) {
  numbers.clear();
  FolderReader folder(files, HostPath("sys/bus/nd/devices"));
  for (FolderReader::Entry entry; folder.Next(entry);) {
    uint32_t number = 0;
    if (ParseModule(entry.name, number)) numbers.push_back(number);
  }
  std::sort(numbers.begin(), numbers.end());
  return folder.status() == HVC_NOT_FOUND ? HVC_OK : folder.status();
}

Figure ReadFreeLabelSlots(HostFiles &files, std::string_view module) {
  char buffer[64];
  std::string_view text;
  const HVC_ReturnStatus status =
      files.ReadShort(HostPath("sys/bus/nd/devices/", module, "/available_slots"), buffer, text);
  if (status == HVC_NO_PERMISSION) return Figure::Unreadable();
  return status == HVC_OK ? ParseAmount(text) : Figure(0);
}

bool HasNvdimmFailed(HostFiles &files, std::string_view module) {
  return ReadNdText(files, module, "nfit/flags").find("_fail") != std::string::npos;
}

}  // namespace platkit
