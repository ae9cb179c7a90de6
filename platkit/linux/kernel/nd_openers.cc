#include "platkit/linux/kernel/nd_openers.h"

#include <string>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/nd_devices.h"

namespace platkit {
namespace {

Figure CountEntries(HostFiles &files, const HostPath &path, std::string &last) {
  uint64_t count = 0;
  FolderReader folder(files, path);
  for (FolderReader::Entry entry; folder.Next(entry); ++count)
    last = entry.name;
  return folder.status() == HVC_OK ? Figure(count) : Figure::Unreadable();
}

// The folder of the block device, relative to the root folder. If a device of another kind (pfn0.0, btt0.0) holds the
// namespace, the block device belongs to that device. Empty if there is no block device.
std::string FindBlockFolder(HostFiles &files, std::string_view nameSpace) {
  for (const std::string &device : {std::string(nameSpace), ReadNdText(files, nameSpace, "holder")}) {
    if (device.empty() || device.find('/') != std::string::npos) continue;
    const std::string folder = "sys/bus/nd/devices/" + device + "/block";
    std::string disk;
    if (CountEntries(files, HostPath(folder), disk) == Figure(1)) return std::string(folder).append("/").append(disk);
  }
  return {};
}

// Returns 1 if a line of the file has the word `wanted` at this place, counted from 0, else 0.
Figure IsListed(HostFiles &files, std::string_view path, size_t place, std::string_view wanted) {
  LineReader lines(files, HostPath(path));
  for (std::string_view line; lines.Next(line);) {
    TextScanner words(line);
    for (size_t i = 0; i < place; ++i)
      words.TakeWord();
    if (words.TakeWord() == wanted) return Figure(1);
  }
  return lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND ? Figure(0) : Figure::Unreadable();
}

}  // namespace

Figure CountNdOpeners(HostFiles &files, std::string_view nameSpace) {
  const std::string folder = FindBlockFolder(files, nameSpace);
  if (folder.empty()) return Figure::Unreadable();
  char buffer[32];
  std::string_view number;
  if (files.ReadShort(HostPath(folder, "/dev"), buffer, number) != HVC_OK) return Figure::Unreadable();
  std::string holder;
  const std::string disk = "/dev" + folder.substr(folder.rfind('/'));
  return CountEntries(files, HostPath(folder, "/holders"), holder) +
         IsListed(files, "proc/self/mountinfo", 2, Trim(number)) + IsListed(files, "proc/swaps", 0, disk);
}

}  // namespace platkit
