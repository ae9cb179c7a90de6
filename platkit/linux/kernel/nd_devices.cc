#include "platkit/linux/kernel/nd_devices.h"

#include <algorithm>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

constexpr std::string_view kNdDevices = "sys/bus/nd/devices";

}  // namespace

HVC_ReturnStatus ListNdDevices(HostFiles &files, std::vector<std::string> &devices) {
  devices.clear();
  FolderReader folder(files, HostPath(kNdDevices));
  for (FolderReader::Entry entry; folder.Next(entry);)
    devices.emplace_back(entry.name);
  if (folder.status() != HVC_OK && folder.status() != HVC_NOT_FOUND) return folder.status();
  // region2 comes before region10.
  std::sort(devices.begin(), devices.end(), [](const std::string &a, const std::string &b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return HVC_OK;
}

bool NdDeviceExists(HostFiles &files, std::string_view device) {
  return files.Exists(HostPath(kNdDevices, "/", device));
}

bool ParseNdNumber(std::string_view device, std::string_view kind, uint64_t &number) {
  TextScanner scanner(device);
  if (!scanner.Take(kind) || scanner.rest().find_first_not_of("0123456789.") != std::string_view::npos) return false;
  return ParseNumber(scanner.TakeUntil('.'), number);
}

std::string ReadNdText(HostFiles &files, std::string_view device, std::string_view file) {
  char buffer[256];
  std::string_view text;
  if (files.ReadShort(HostPath(kNdDevices, "/", device, "/", file), buffer, text) != HVC_OK) return {};
  return std::string(text.substr(0, text.find('\n')));
}

Figure ReadNdFigure(HostFiles &files, std::string_view device, std::string_view file) {
  const Figure figure = ReadAmount(files, HostPath(kNdDevices, "/", device, "/", file));
  return figure == Figure::Unlimited() ? Figure::Unreadable() : figure;
}

Figure ReadNdNumaNode(HostFiles &files, std::string_view device) {
  uint64_t node = 0;
  return ParseNumber(ReadNdText(files, device, "numa_node"), node) && node <= INT32_MAX ? Figure(node) : Figure();
}

}  // namespace platkit
